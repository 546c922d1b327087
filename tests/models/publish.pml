/* A flag or pointer that tells others that something is complete: whoever finds it set finds what was written before.
 *
 * Two things are published one behind the other, as a tracing manager replaces another one; who sees the second sees both.
 */
#define T_maker 0
#define T_user 1
#define NT 2
#define L_flag 0
#define NL 1
#define D_data 0
#define ND 2
#define H 3
#include "memory.pml"

#define WEAK_PUBLISH 1
#define WEAK_LOOK 2

proctype maker() {
    WRITE(T_maker, D_data);
    STORE(T_maker, L_flag, RELEASE_UNLESS(WEAK_PUBLISH), 1);
    WRITE(T_maker, D_data + 1);
    STORE(T_maker, L_flag, RELEASE_UNLESS(WEAK_PUBLISH), 2)
}

proctype user() {
    byte flag;
    LOAD(T_user, L_flag, ACQUIRE_UNLESS(WEAK_LOOK), flag);
    if
    :: flag == 0
    :: flag >= 1 ->
        READ(T_user, D_data);
        if :: flag == 2 -> READ(T_user, D_data + 1) :: else fi
    fi
}

init { atomic { startMemory(); run maker(); run user() } }
