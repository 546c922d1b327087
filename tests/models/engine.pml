/* HwCounter's engine: whoever asks first makes it, and who comes too late deletes his own. A third thread only looks.
 *
 * All use the same one, and find its fields.
 */
#define T_one 0
#define T_two 1
#define T_late 2
#define NT 3
#define L_engine 0
#define NL 1
#define D_engine 0
#define ND 4
#define H 3
#include "memory.pml"

#define WEAK_LOOK 1
#define WEAK_MADE 2
#define WEAK_MADE_ACQUIRE 3
#define WEAK_TOO_LATE 4

byte used;

inline use(me, which) {
    READ(me, D_engine + which);
    atomic { assert(used == 0 || used == which); /* one engine for all */ used = which }
}

proctype user(byte me) {
    byte engine, done;
    LOAD(me, L_engine, ACQUIRE_UNLESS(WEAK_LOOK), engine);
    if
    :: engine != 0 -> use(me, engine)
    :: engine == 0 && me != T_late ->
        WRITE(me, D_engine + me + 1);
        COMPARE_EXCHANGE(me, L_engine, ACQ_REL_UNLESS(WEAK_MADE_ACQUIRE, WEAK_MADE), ACQUIRE_UNLESS(WEAK_TOO_LATE), 0, me + 1,
            done, engine);
        if
        :: done -> use(me, me + 1)
        :: else ->
            WRITE(me, D_engine + me + 1); /* delete */
            use(me, engine)
        fi
    :: else
    fi
}

init { atomic { startMemory(); run user(T_one); run user(T_two); run user(T_late) } }
