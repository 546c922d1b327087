/* The spare list of src/base/lgregistry.cpp: a thread takes it, or makes one, uses it, and puts it back; who finds another
 * list there frees that one.
 *
 * A list has one user at a time, who finds its elements as the one before has left them, and is freed once.
 */
#define T_one 0
#define T_two 1
#define NT 2
#define L_spare 0
#define NL 1
#define D_list 0
#define ND 5
#define H 9
#include "memory.pml"

#define WEAK_TAKE 1
#define WEAK_PUT 2
#define WEAK_PUT_ACQUIRE 3

bool isFreed[5];

proctype user(byte me) {
    byte list, times, found;
    for (times : 1 .. 2) {
        CHANGE(me, L_spare, ACQUIRE_UNLESS(WEAK_TAKE), 0, list);
        if :: list == 0 -> list = 2 * me + times :: else fi;
        assert(!isFreed[list]);
        WRITE(me, D_list + list); /* no list has two users */
        CHANGE(me, L_spare, ACQ_REL_UNLESS(WEAK_PUT_ACQUIRE, WEAK_PUT), list, found);
        if
        :: found != 0 ->
            WRITE(me, D_list + found); /* freed when nobody uses it */
            atomic { assert(!isFreed[found]); isFreed[found] = true }
        :: else
        fi
    }
}

init { atomic { startMemory(); run user(T_one); run user(T_two) } }
