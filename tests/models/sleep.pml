/* The reader goes to sleep while writers add messages, and while the log is stopped: ThreadLogEngine::rest() and wakeReader().
 *
 * No message waits for a reader that sleeps, and a stop wakes it. Writers have no fence of their own: the reader makes all threads
 * pass one, each in its own time, between its store and its look (fenceAllThreads()). Where a system has no such call the
 * reader looks again behind a tenth of a second, which is not modelled.
 */
#define T_reader 0
#define T_writer 1
#define T_stopper 2
#define NT 3
#define L_written 0
#define L_sleep 1
#define L_running 2
#define L_mutex 3
#define NL 4
#define D_message 0
#define ND 2
#define H 12
#include "memory.pml"

#define WEAK_SLEEP 1
#define WEAK_LOOK_RUNNING 2
#define WEAK_AWAKE 3
#define WEAK_LOOK_SLEEP 4
#define WEAK_LOOK_STOPPED 5
#define WEAK_WOKEN 6
#define WEAK_STOP 7
#define WEAK_WAKE 8
#define WEAK_FENCE 9  /* none at all */
#define WEAK_LOCK 10   /* wakeReader() doesn't pass through the lock */

#define AWAKE 0
#define ASLEEP 1
#define MESSAGES 1

bool isWaiting, isStopping;
byte taken, passed;

inline wakeReader(me) {
    CHANGE(me, L_sleep, SEQ_CST_UNLESS(NEVER, WEAK_WAKE), AWAKE, before);
    if
    :: before != AWAKE ->
        if
        :: weak != WEAK_LOCK -> LOCK(me, L_mutex); UNLOCK(me, L_mutex)
        :: else
        fi;
        isWaiting = false
    :: else
    fi
}

/* Each thread passes its fence between two of its steps. */
inline fenceAllThreads() {
    if
    :: weak != WEAK_FENCE ->
        FENCE(T_reader);
        FENCE(T_writer);
        FENCE(T_stopper);
        FENCE(T_reader)
    :: else
    fi
}

inline writeAll() {
    LOAD(T_reader, L_written, ACQUIRE, written);
    do
    :: taken < written -> READ(T_reader, D_message + taken); taken++
    :: else -> break
    od;
    skip
}

proctype reader() {
    byte running, written, sleep;
    do
    :: LOAD(T_reader, L_running, ACQUIRE, running);
        if
        :: !running -> break
        :: else
        fi;
        writeAll();
        STORE(T_reader, L_sleep, SEQ_CST_UNLESS(NEVER, WEAK_SLEEP), ASLEEP);
        fenceAllThreads();
        LOAD(T_reader, L_running, SEQ_CST_UNLESS(NEVER, WEAK_LOOK_RUNNING), running);
        LOAD(T_reader, L_written, ACQUIRE, written);
        if
        :: !running || written != taken -> STORE(T_reader, L_sleep, SEQ_CST_UNLESS(NEVER, WEAK_AWAKE), AWAKE)
        :: else
        fi;
        skip;
        LOCK(T_reader, L_mutex);
        do
        :: LOAD(T_reader, L_sleep, SEQ_CST_UNLESS(NEVER, WEAK_LOOK_SLEEP), sleep);
            LOAD(T_reader, L_running, SEQ_CST_UNLESS(NEVER, WEAK_LOOK_STOPPED), running);
            if
            :: sleep == AWAKE || !running -> break
            :: else ->
                atomic { UNLOCK(T_reader, L_mutex); isWaiting = true }
end_asleep:     !isWaiting;
                LOCK(T_reader, L_mutex)
            fi
        od;
        skip;
        UNLOCK(T_reader, L_mutex);
        STORE(T_reader, L_sleep, SEQ_CST_UNLESS(NEVER, WEAK_WOKEN), AWAKE)
    od;
    passed++
}

proctype writer() {
    byte message, sleep, before;
    for (message : 1 .. MESSAGES) {
        WRITE(T_writer, D_message + message - 1);
        STORE(T_writer, L_written, RELEASE, message);
        LOAD(T_writer, L_sleep, RELAXED, sleep);
        if
        :: sleep != AWAKE -> wakeReader(T_writer)
        :: else
        fi
    }
}

proctype stopper() {
    byte before;
    if
    :: true -> isStopping = true;
        STORE(T_stopper, L_running, SEQ_CST_UNLESS(NEVER, WEAK_STOP), 0);
        wakeReader(T_stopper)
    :: true
    fi
}

init {
    atomic { startMemory(); VALUE(L_running, 0) = 1; run reader(); run writer(); run stopper() }
    timeout; /* nobody can go on */
    assert(isStopping || taken == MESSAGES); /* no message waits for a sleeping reader */
    assert(!isStopping || passed == 1) /* a stop wakes the reader */
}
