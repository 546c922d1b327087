/* The handler of a crash keeps the reader from its next line and waits for the one it is writing, and a second thread that crashes
 * waits for the first: ThreadLogEngine::enterLine() and holdReader(), ThreadLogCrash::writeAll().
 *
 * The log is one thread's at a time: of the reader within a line, or of a handler.
 */
#define T_reader 0
#define T_one 1
#define T_two 2
#define NT 3
#define L_holds 0
#define L_inLine 1
#define L_writing 2
#define NL 3
#define D_log 0
#define ND 1
#define H 12
#include "memory.pml"

#define WEAK_ENTER 1
#define WEAK_ENTER_ALL 2
#define WEAK_ASK 3
#define WEAK_ASK_ALL 4
#define WEAK_AGAIN 5
#define WEAK_LEAVE 6
#define WEAK_STAND_BACK 7
#define WEAK_WAIT 8
#define WEAK_HOLD 9
#define WEAK_HOLD_ALL 10
#define WEAK_LOOK 11
#define WEAK_LOOK_ALL 12
#define WEAK_RELEASE 13
#define WEAK_FIRST 14
#define WEAK_FIRST_ALL 15
#define WEAK_THROUGH 16
#define WEAK_THROUGH_ALL 17
#define WEAK_AGAIN_ALL 18

proctype reader() {
    byte holds, line;
    for (line : 1 .. 2) {
        STORE(T_reader, L_inLine, SEQ_CST_UNLESS(WEAK_ENTER, WEAK_ENTER_ALL), 1);
        do
        :: LOAD(T_reader, L_holds, SEQ_CST_UNLESS(WEAK_ASK, WEAK_ASK_ALL), holds);
            if
            :: holds == 0 -> break
            :: else ->
                STORE(T_reader, L_inLine, SEQ_CST_UNLESS(NEVER, WEAK_STAND_BACK), 0);
                do
                :: LOAD(T_reader, L_holds, SEQ_CST_UNLESS(NEVER, WEAK_WAIT), holds);
                    if :: holds == 0 -> break :: else fi
                od;
                skip;
                STORE(T_reader, L_inLine, SEQ_CST_UNLESS(WEAK_AGAIN, WEAK_AGAIN_ALL), 1)
            fi
        od;
        skip;
        WRITE(T_reader, D_log);
        STORE(T_reader, L_inLine, RELEASE_UNLESS(WEAK_LEAVE), 0)
    }
}

proctype handler(byte me) {
    byte before, done, inLine;
    do
    :: COMPARE_EXCHANGE(me, L_writing, SEQ_CST_UNLESS(WEAK_FIRST, WEAK_FIRST_ALL), RELAXED, 0, me, done, before);
        if :: done -> break :: else fi
    od;
    skip;
    CHANGE(me, L_holds, SEQ_CST_UNLESS(WEAK_HOLD, WEAK_HOLD_ALL), NEWEST(L_holds) + 1, before);
    do
    :: LOAD(me, L_inLine, SEQ_CST_UNLESS(WEAK_LOOK, WEAK_LOOK_ALL), inLine);
        if :: inLine == 0 -> break :: else fi
    od;
    skip;
    WRITE(me, D_log);
    STORE(me, L_writing, SEQ_CST_UNLESS(WEAK_THROUGH, WEAK_THROUGH_ALL), 0);
    CHANGE(me, L_holds, SEQ_CST_UNLESS(NEVER, WEAK_RELEASE), NEWEST(L_holds) - 1, before)
}

init { atomic { startMemory(); run reader(); run handler(T_one); run handler(T_two) } }
