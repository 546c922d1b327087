/* LgQueue with its LgStream: a writer that logs more than there is room for, ends strings without a text, leaves, and is
 * outlived by its queue.
 *
 * The reader gets each accepted message once, in order and whole. The queue is deleted when nobody looks at it any more. What
 * overflow entries count is in entries.pml.
 */
#define TRIES 4
#define T_writer 0
#define T_reader 1
#define NT 2
#define L_read 0
#define L_end 1
#define L_entryRead 2
#define L_entryWrite 3
#define L_alive 4
#define NL 5
#define D_cell 0
#define D_entry 6
#define ND 10
#define H (2 * TRIES + 1)
#include "memory.pml"

#define WEAK_ROOM_TO_REMOVE 1
#define WEAK_END_REMOVED 2
/* Left out in stream.pml and entries.pml. */
#define WEAK_ROOM_TO_WRITE NEVER
#define WEAK_ROOM_TO_END NEVER
#define WEAK_ROOM_TO_ASK NEVER
#define WEAK_END NEVER
#define WEAK_END_NEAR_THE_END NEVER
#define WEAK_TAKE NEVER
#define WEAK_TAKEN NEVER
#define WEAK_FREE_ENTRY NEVER
#define WEAK_ADD NEVER
#define WEAK_LOSS NEVER
#define WEAK_REMOVE NEVER
#define WEAK_EMPTY NEVER
#define WEAK_EXIT NEVER
#define WEAK_GONE NEVER
#include "ring.pml"

#define ENTRIES 4
#define ENTRY(i) ((i) & 3)

/* Of the entries. */
bool overflow[ENTRIES];
byte number[ENTRIES];  /* for the time stamp */

byte messages, received;

byte writeEntry, cachedRead, before;  /* of the writer */

inline countLoss(try) {
    before = ENTRY(writeEntry + 3);
    READ(T_writer, D_entry + before);
    if
    :: overflow[before]
    :: else ->
        atomic { WRITE(T_writer, D_entry + writeEntry); number[writeEntry] = try; overflow[writeEntry] = true };
        writeEntry = ENTRY(writeEntry + 1);
        STORE(T_writer, L_entryWrite, RELEASE_UNLESS(WEAK_LOSS), writeEntry)
    fi;
    before = 0
}

#define HAS_TWO (ENTRY(cachedRead + ENTRIES - ENTRY(writeEntry + 1)) >= 2)

/* hasRoom() and hasFreeEntry(); the answer is in `room`. */
inline askForBoth() {
    askForRoom();
    if
    :: room && !HAS_TWO ->
        LOAD(T_writer, L_entryRead, ACQUIRE_UNLESS(WEAK_FREE_ENTRY), cachedRead);
        room = HAS_TWO
    :: else
    fi
}

proctype writer() {
    byte try, size, markedWrite, markedEnd;
    bool markedPending;
    room = 0;
    updateDirectEnd();
    for (try : 1 .. TRIES) {
        askForBoth();
        if
        :: room ->
            atomic { WRITE(T_writer, D_entry + writeEntry); number[writeEntry] = try; overflow[writeEntry] = false };
            d_step {
                textWritten = false;
                stringTerminated = false;
                markedWrite = writeIndex;
                markedEnd = stringEnd;
                markedPending = pendingAdvance;
                expected[try] = try
            };
            if :: size = 0 :: size = 2 fi;  /* 0: `ends` alone */
            if :: size != 0 -> makeText(try, size) :: else fi;
            completeString();
            if
            :: textWritten ->
                d_step { messages++; writeEntry = ENTRY(writeEntry + 1) };
                STORE(T_writer, L_entryWrite, RELEASE_UNLESS(WEAK_ADD), writeEntry)
            :: !textWritten && !markedPending -> /* removeEmptyString() */
                stringEnd = markedEnd;
                STORE(T_writer, L_end, RELEASE_UNLESS(WEAK_END_REMOVED), stringEnd);
                d_step { writeIndex = markedWrite; pendingAdvance = false };
                LOAD(T_writer, L_read, ACQUIRE_UNLESS(WEAK_ROOM_TO_REMOVE), room);
                updateDirectEnd()
            :: else
            fi;
            d_step { size = 0; markedWrite = 0; markedEnd = 0; markedPending = false }
        :: else -> countLoss(try)
        fi
    }
    skip;
    STORE(T_writer, L_alive, RELEASE_UNLESS(WEAK_EXIT), 0)
}

proctype reader() {
    byte entries, readEntry, alive = 1, latest;
    do
    :: LOAD(T_reader, L_entryWrite, ACQUIRE_UNLESS(WEAK_EMPTY), entries);
        if
        :: entries != readEntry ->
            READ(T_reader, D_entry + readEntry);
            assert(number[readEntry] > latest); /* each message once, in order */
            latest = number[readEntry];
            if
            :: overflow[readEntry]
            :: else ->
                takeText();
                assert(content == expected[latest]); /* a message has its own text, whole */
                received++
            fi;
            readEntry = ENTRY(readEntry + 1);
            STORE(T_reader, L_entryRead, RELEASE_UNLESS(WEAK_REMOVE), readEntry);
            content = 0
        :: entries == readEntry && !alive -> break
        :: entries == readEntry && alive -> LOAD(T_reader, L_alive, ACQUIRE_UNLESS(WEAK_GONE), alive)
        fi
    :: alive -> LOAD(T_reader, L_alive, ACQUIRE_UNLESS(WEAK_GONE), alive)
    od;
    assert(received == messages); /* no message is lost with its queue */
    for (latest : 0 .. ND - 1) { WRITE(T_reader, latest) } /* delete */
}

init { atomic { startMemory(); VALUE(L_alive, 0) = 1; run writer(); run reader() } }
