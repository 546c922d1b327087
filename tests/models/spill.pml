/* A message that waits for room in a queue of its own, and the handler of a crash in another thread that may take it there:
 * ThreadLogWriter::move(), getWaiting() and takeWaiting(). The spill is made with its first message.
 *
 * Each message is written by one of the two, and whoever writes it sees it. What the thread has moved into its queue by the time
 * that the handler takes a message is written before that message.
 */
#define T_writer 0
#define T_handler 1
#define NT 2
#define L_spill 0
#define L_added 1    /* the write index of the spill's entries */
#define L_removed 2  /* their read index */
#define L_isTaken 3
#define L_queued 4   /* the write index of the thread's own queue */
#define NL 5
#define D_spill 0
#define D_message 1
#define ND 3
#define H 9
#include "memory.pml"

#define WEAK_MADE 1
#define WEAK_LOOK 2
#define WEAK_OFFER 3
#define WEAK_LOOK_TAKEN 4
#define WEAK_TAKE 5

byte written[2];
byte behind;  /* how many messages are in the file */

inline takeWaiting(me) {
    CHANGE(me, L_isTaken, SEQ_CST_UNLESS(NEVER, WEAK_TAKE), 1, isTaken)
}

/* The message is read before it is taken off. */
inline takeOff(me, number) {
    READ(me, D_message + number);
    atomic { written[number]++; assert(written[number] == 1); /* each message once */ }
    STORE(me, L_removed, RELEASE, number + 1)
}

/* Into the file, behind all earlier ones. */
inline writeInOrder(number) {
    atomic { assert(number == behind); behind = number + 1 }
}

/* From the queue, which has only what the thread has moved there; entries.pml is about its orders. */
inline writeQueue() {
    LOAD(T_handler, L_queued, ACQUIRE, queued);
    for (moved : 1 .. queued) {
        if :: moved > drained -> writeInOrder(moved - 1); drained = moved :: else fi
    }
}

proctype writer() {
    byte number, isTaken, removed;
    WRITE(T_writer, D_spill);
    STORE(T_writer, L_spill, RELEASE_UNLESS(WEAK_MADE), 1);
    for (number : 0 .. 1) {
        WRITE(T_writer, D_message + number);
        STORE(T_writer, L_added, RELEASE, number + 1);
        STORE(T_writer, L_isTaken, SEQ_CST_UNLESS(NEVER, WEAK_OFFER), 0);
        takeWaiting(T_writer);
        if
        :: !isTaken ->
            takeOff(T_writer, number);
            STORE(T_writer, L_queued, RELEASE, number + 1)
        :: else -> /* waitForHandler(): it is through when the message is removed */
            do
            :: LOAD(T_writer, L_removed, ACQUIRE, removed);
                if :: removed == number + 1 -> break :: else fi
            od
        fi
    }
}

proctype handler() {
    byte spill, isTaken, added, removed, queued, drained, moved, looks;
    for (looks : 1 .. 2) {
        LOAD(T_handler, L_spill, ACQUIRE_UNLESS(WEAK_LOOK), spill);
        if
        :: spill ->
            READ(T_handler, D_spill);
            LOAD(T_handler, L_isTaken, SEQ_CST_UNLESS(NEVER, WEAK_LOOK_TAKEN), isTaken);
            if
            :: !isTaken ->
                LOAD(T_handler, L_added, ACQUIRE, added);
                LOAD(T_handler, L_removed, ACQUIRE, removed);
                if
                :: added != removed ->
                    READ(T_handler, D_message + removed); /* its time stamp */
                    takeWaiting(T_handler);
                    if
                    :: !isTaken -> /* by now it may be the next message that waits: what is written is the head */
                        writeQueue();
                        LOAD(T_handler, L_removed, RELAXED, removed);
                        writeInOrder(removed);
                        takeOff(T_handler, removed)
                    :: else
                    fi
                :: else
                fi
            :: else
            fi
        :: else
        fi
    }
}

init { atomic { startMemory(); VALUE(L_isTaken, 0) = 1; run writer(); run handler() } }
