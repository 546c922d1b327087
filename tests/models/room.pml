/* A writer that waits for room, and the reader that makes it: ThreadLogEngine::waitUntil() and tellWaiting().
 *
 * The writer doesn't wait while there is room. In the library it would look again behind a second; here it waits for ever.
 */
#define T_writer 0
#define T_reader 1
#define NT 2
#define L_removed 0
#define L_waiting 1
#define L_mutex 2
#define NL 3
#define D_entry 0
#define ND 1
#define H 10
#include "memory.pml"

#define WEAK_WAIT_ACQUIRE 1
#define WEAK_WAIT_RELEASE 2
#define WEAK_TELL_ACQUIRE 3
#define WEAK_TELL_RELEASE 4

bool isWaiting;

inline lookForRoom() {
    LOAD(T_writer, L_removed, ACQUIRE, removed)
}

proctype writer() {
    byte removed, before;
    lookForRoom();
    if
    :: removed
    :: else ->
        CHANGE(T_writer, L_waiting, ACQ_REL_UNLESS(WEAK_WAIT_ACQUIRE, WEAK_WAIT_RELEASE), NEWEST(L_waiting) + 1, before);
        LOCK(T_writer, L_mutex);
        do
        :: lookForRoom();
            if
            :: removed -> break
            :: else ->
                atomic { UNLOCK(T_writer, L_mutex); isWaiting = true }
                !isWaiting;
                LOCK(T_writer, L_mutex)
            fi
        od;
        skip;
        UNLOCK(T_writer, L_mutex);
        CHANGE(T_writer, L_waiting, RELAXED, NEWEST(L_waiting) - 1, before)
    fi;
    skip;
    WRITE(T_writer, D_entry) /* the room is the writer's */
}

proctype reader() {
    byte waiting;
    READ(T_reader, D_entry);
    STORE(T_reader, L_removed, RELEASE, 1);
    CHANGE(T_reader, L_waiting, ACQ_REL_UNLESS(WEAK_TELL_ACQUIRE, WEAK_TELL_RELEASE), NEWEST(L_waiting), waiting);
    if
    :: waiting ->
        LOCK(T_reader, L_mutex);
        UNLOCK(T_reader, L_mutex);
        isWaiting = false
    :: else
    fi
}

init { atomic { startMemory(); run writer(); run reader() } }
