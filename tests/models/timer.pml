/* PeriodicTimer: one thread starts, stops, and starts again with another interval; another one computes the count.
 *
 * Who sees the timer running computes with the start time and the interval of that start, or of a later one.
 */
#define T_owner 0
#define T_reader 1
#define NT 2
#define L_running 0
#define L_interval 1
#define L_start 2
#define NL 3
#define D_none 0
#define ND 1
#define H 6
#include "memory.pml"

#define WEAK_BEGIN 1
#define WEAK_LOOK 2

proctype owner() {
    byte start;
    for (start : 1 .. 2) {
        STORE(T_owner, L_interval, RELAXED, start);
        STORE(T_owner, L_start, RELAXED, start);
        STORE(T_owner, L_running, RELEASE_UNLESS(WEAK_BEGIN), start);  /* the number tells the starts apart */
        STORE(T_owner, L_running, RELAXED, 0)
    }
}

proctype reader() {
    byte running, start, interval, times;
    for (times : 1 .. 2) {
        LOAD(T_reader, L_running, ACQUIRE_UNLESS(WEAK_LOOK), running);
        if
        :: running ->
            LOAD(T_reader, L_start, RELAXED, start);
            LOAD(T_reader, L_interval, RELAXED, interval);
            assert(start >= running && interval >= running) /* no count from an older start */
        :: else
        fi
    }
}

init { atomic { startMemory(); run owner(); run reader() } }
