/* The list of children that are still to be collected, src/base/osprocesslinux.cpp: two threads add, one takes all.
 *
 * Each child is taken once, and its `next` is that of its addition.
 */
#define T_one 0
#define T_two 1
#define T_taker 2
#define NT 3
#define L_first 0
#define NL 1
#define D_next 0
#define ND 3  /* the first is none */
#define H 7
#include "memory.pml"

#define WEAK_ADD 1
#define WEAK_TAKE 2

byte next[3];
byte taken[3];
byte through;

proctype adder(byte me) {
    byte child = me + 1, done, found;
    LOAD(me, L_first, RELAXED, found);
    do
    :: atomic { WRITE(me, D_next + child); next[child] = found }
        COMPARE_EXCHANGE(me, L_first, RELEASE_UNLESS(WEAK_ADD), RELAXED, found, child, done, found);
        if :: done -> break :: else fi
    od;
    through++
}

inline takeAll() {
    CHANGE(T_taker, L_first, ACQUIRE_UNLESS(WEAK_TAKE), 0, child);
    do
    :: child != 0 ->
        READ(T_taker, D_next + child);
        atomic { taken[child]++; assert(taken[child] == 1); /* each child once */ }
        child = next[child]
    :: child == 0 -> break
    od
}

proctype taker() {
    byte child, times;
    for (times : 1 .. 2) { takeAll() }
    through == 2; /* both adders */
    takeAll();
    assert(taken[1] == 1 && taken[2] == 1) /* no child is lost */
}

init { atomic { startMemory(); run adder(T_one); run adder(T_two); run taker() } }
