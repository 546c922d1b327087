/* What one of several threads does for all, behind a lock and a flag that saves the others the lock: provideReader(), in the
 * child of a fork.
 *
 * It is done once, and whoever goes on finds it done.
 */
#define T_one 0
#define T_two 1
#define NT 2
#define L_isForked 0
#define L_lock 1
#define NL 2
#define D_data 0
#define ND 1
#define H 5
#include "memory.pml"

#define WEAK_LOOK 1
#define WEAK_DONE 2

byte times;

proctype provider(byte me) {
    byte isForked;
    LOAD(me, L_isForked, ACQUIRE_UNLESS(WEAK_LOOK), isForked);
    if
    :: !isForked
    :: isForked ->
        LOCK(me, L_lock);
        LOAD(me, L_isForked, RELAXED, isForked);
        if
        :: isForked ->
            WRITE(me, D_data);
            times++;
            STORE(me, L_isForked, RELEASE_UNLESS(WEAK_DONE), 0)
        :: else
        fi;
        skip;
        UNLOCK(me, L_lock)
    fi;
    skip;
    READ(me, D_data);
    assert(times == 1) /* done once, and before anybody goes on */
}

init { atomic { startMemory(); VALUE(L_isForked, 0) = 1; run provider(T_one); run provider(T_two) } }
