/* The entries of LgQueue, with room for any text: four of them instead of 1,024.
 *
 * The writer logs more than there are entries for, and leaves. The reader gets each accepted message once, in order, with its own
 * level and text. An overflow entry tells at least the losses that it was published with, and exactly all of them once the writer
 * has left. The queue is deleted when nobody looks at it any more.
 */
#define TRIES 5
#define T_writer 0
#define T_reader 1
#define NT 2
#define L_entryRead 0
#define L_entryWrite 1
#define L_alive 2
#define L_word 3
#define NL 7
#define D_entry 0
#define D_text 4
#define ND 9
#define H (TRIES + 2)
#include "memory.pml"

#define WEAK_FREE_ENTRY 1
#define WEAK_ADD 2
#define WEAK_LOSS 3
#define WEAK_REMOVE 4
#define WEAK_EMPTY 5
#define WEAK_EXIT 6
#define WEAK_GONE 7
#define WEAK_ASK 8

#define ENTRIES 4
#define ENTRY(i) ((i) & 3)

/* Of the entries, besides the word for level or count. */
bool overflow[ENTRIES];
byte number[ENTRIES];     /* for the time stamp */
byte published[ENTRIES];  /* the count that the overflow entry had then */

byte messages, received;
byte writeEntry, cachedRead, before, room;  /* of the writer */

#define HAS_TWO (ENTRY(cachedRead + ENTRIES - ENTRY(writeEntry + 1)) >= 2)

/* countLoss(). Intended: the count of an entry's last use stays. */
inline countLoss(try) {
    before = ENTRY(writeEntry + 3);
    READ(T_writer, D_entry + before);
    if
    :: overflow[before] -> STORE(T_writer, L_word + before, RELAXED, NEWEST(L_word + before) + 1)
    :: else ->
        atomic { WRITE(T_writer, D_entry + writeEntry); number[writeEntry] = try };
        if
        :: overflow[writeEntry]
        :: else -> overflow[writeEntry] = true; STORE(T_writer, L_word + writeEntry, RELAXED, 1)
        fi;
        atomic { published[writeEntry] = NEWEST(L_word + writeEntry); writeEntry = ENTRY(writeEntry + 1) };
        STORE(T_writer, L_entryWrite, RELEASE_UNLESS(WEAK_LOSS), writeEntry)
    fi;
    before = 0
}

proctype writer() {
    byte try;
    for (try : 1 .. TRIES) {
        if
        :: LOAD(T_writer, L_entryRead, ACQUIRE_UNLESS(WEAK_ASK), room); /* isFull() or isEmpty() */
            room = 0
        :: true
        fi;
        if
        :: HAS_TWO
        :: else -> LOAD(T_writer, L_entryRead, ACQUIRE_UNLESS(WEAK_FREE_ENTRY), cachedRead)
        fi;
        if
        :: HAS_TWO ->
            atomic { WRITE(T_writer, D_entry + writeEntry); number[writeEntry] = try; overflow[writeEntry] = false };
            STORE(T_writer, L_word + writeEntry, RELAXED, try);
            WRITE(T_writer, D_text + try - 1);
            atomic { messages++; writeEntry = ENTRY(writeEntry + 1) };
            STORE(T_writer, L_entryWrite, RELEASE_UNLESS(WEAK_ADD), writeEntry)
        :: else -> countLoss(try)
        fi
    }
    skip;
    STORE(T_writer, L_alive, RELEASE_UNLESS(WEAK_EXIT), 0)
}

proctype reader() {
    byte entries, readEntry, alive = 1, word, latest;
    do
    :: LOAD(T_reader, L_entryWrite, ACQUIRE_UNLESS(WEAK_EMPTY), entries);
        if
        :: entries != readEntry ->
            READ(T_reader, D_entry + readEntry);
            LOAD(T_reader, L_word + readEntry, RELAXED, word);
            assert(number[readEntry] > latest); /* each message once, in order */
            latest = number[readEntry];
            if
            :: overflow[readEntry] ->
                assert(word >= published[readEntry]); /* losses that were published are told */
                assert(alive || word == NEWEST(L_word + readEntry)) /* the count is exact once the writer has left */
            :: else ->
                assert(word == number[readEntry]); /* a message has its own level */
                READ(T_reader, D_text + word - 1);
                received++
            fi;
            readEntry = ENTRY(readEntry + 1);
            STORE(T_reader, L_entryRead, RELEASE_UNLESS(WEAK_REMOVE), readEntry);
            word = 0
        :: entries == readEntry && !alive -> break
        :: entries == readEntry && alive -> LOAD(T_reader, L_alive, ACQUIRE_UNLESS(WEAK_GONE), alive)
        fi
    :: alive -> LOAD(T_reader, L_alive, ACQUIRE_UNLESS(WEAK_GONE), alive)
    od;
    assert(received == messages); /* no message is lost with its queue */
    for (word : 0 .. ND - 1) { WRITE(T_reader, word) } /* delete */
}

init { atomic { startMemory(); VALUE(L_alive, 0) = 1; run writer(); run reader() } }
