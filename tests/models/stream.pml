/* LgStream by itself: one thread writes texts, another one takes them as they come.
 *
 * Of what the writer finds room for, the reader gets each text once, in order and whole.
 */
#define TRIES 4
#define T_writer 0
#define T_reader 1
#define NT 2
#define L_read 0
#define L_end 1
#define NL 2
#define D_cell 0
#define ND 6
#define H (TRIES + 1)
#include "memory.pml"

#define WEAK_ROOM_TO_WRITE 1
#define WEAK_ROOM_TO_END 2
#define WEAK_ROOM_TO_ASK 3
#define WEAK_END 4
#define WEAK_END_NEAR_THE_END 5
#define WEAK_TAKE 6
#define WEAK_TAKEN 7
#define WEAK_SIZE 8
#include "ring.pml"

byte messages, received;
bool isDone;

proctype writer() {
    byte try, size;
    room = 0;
    updateDirectEnd();
    for (try : 1 .. TRIES) {
        askForRoom();
        if
        :: room ->
            atomic { messages++; expected[messages] = messages };
            if :: size = 1 :: size = 2 :: size = 4 fi;
            makeText(messages, size);
            completeString()
        :: else
        fi
    }
    isDone = true
}

inline expectNext() {
    if
    :: content != 0 ->
        received++;
        assert(content == expected[received]); /* each message once, in order and whole */
    :: else
    fi
}

inline askForSize() {
    LOAD(T_reader, L_end, ACQUIRE_UNLESS(WEAK_SIZE), end);
    if :: end != readIndex -> findText() :: else fi;
    atomic { content = 0; end = 0; first = 0; length = 0 }
}

proctype reader() {
    do
    :: takeText(); expectNext()
    :: askForSize()
    :: isDone -> break
    od;
    skip;
    JOIN(T_reader, T_writer);
    do
    :: takeText();
        if :: content == 0 -> break :: else -> expectNext() fi
    od;
    assert(received == messages) /* no message is lost */
}

init { atomic { startMemory(); run writer(); run reader() } }
