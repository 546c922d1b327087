/* The list of writers, src/threadlog/threadlogwriter.cpp, with one place in a chunk: two threads enter theirs while the reader walks
 * the list, takes out the writer that was there before, and frees it.
 *
 * Whoever finds a writer, or a chunk, finds it complete. A walk finds the writers that were counted before it (`_made`).
 */
#define T_reader 0
#define T_one 1
#define T_two 2
#define NT 3
#define L_first 0   /* the place of the first chunk */
#define L_next 1    /* the chunk behind it */
#define L_place 2   /* of the chunk that T_one or T_two has made */
#define L_last 4    /* the chunk behind those */
#define L_made 5
#define NL 6
#define D_writer 0  /* of the writer before, of T_one and of T_two */
#define D_chunk 3   /* of T_one and T_two */
#define ND 5
#define H 6
#include "memory.pml"

#define WEAK_ADD 1
#define WEAK_NEXT 2
#define WEAK_CHUNK 3
#define WEAK_CHUNK_ACQUIRE 4
#define WEAK_WALK 5
#define WEAK_WALK_NEXT 6
#define WEAK_REMOVE 7
#define WEAK_REMOVE_NEXT 8
#define WEAK_COUNT 9
#define WEAK_COUNTED 10

#define BEFORE 3  /* the number of the writer before */

/* addTo(); the answer is in `done`. */
inline addTo(me, place) {
    LOAD(me, place, RELAXED, found);
    done = 0;
    if
    :: found == 0 -> COMPARE_EXCHANGE(me, place, RELEASE_UNLESS(WEAK_ADD), RELAXED, 0, me, done, found)
    :: else
    fi
}

/* `L_next` is 1 or 2 for the chunk that T_one or T_two has made; a third chunk isn't needed. */
proctype adder(byte me) {
    byte found, done, next;
    WRITE(me, D_writer + me);
    addTo(me, L_first);
    if
    :: done
    :: else ->
        LOAD(me, L_next, ACQUIRE_UNLESS(WEAK_NEXT), next);
        if
        :: next == 0 ->
            WRITE(me, D_chunk + me - 1);
            COMPARE_EXCHANGE(me, L_next, ACQ_REL_UNLESS(NEVER, WEAK_CHUNK), ACQUIRE_UNLESS(WEAK_CHUNK_ACQUIRE), 0, me, done, next);
            if
            :: done -> next = me
            :: else -> WRITE(me, D_chunk + me - 1) /* delete */
            fi
        :: else
        fi;
        skip;
        READ(me, D_chunk + next - 1);
        addTo(me, L_place + next - 1);
        if
        :: done
        :: else -> /* two chunks are enough for three writers, if the first writer goes; if it doesn't, this one has come too early */
            LOAD(me, L_last, RELAXED, found);
            COMPARE_EXCHANGE(me, L_last, RELEASE_UNLESS(WEAK_ADD), RELAXED, 0, me, done, found)
        fi
    fi;
    skip;
    CHANGE(me, L_made, RELEASE_UNLESS(WEAK_COUNT), NEWEST(L_made) + 1, found)
}

inline visit(place) {
    LOAD(T_reader, place, ACQUIRE_UNLESS(WEAK_WALK), writer);
    if
    :: writer != 0 ->
        READ(T_reader, D_writer + (writer % 3));
        if :: writer != BEFORE -> isFound[writer] = true :: else -> hasBefore = true fi
    :: else
    fi
}

inline walk() {
    hasBefore = false;
    visit(L_first);
    LOAD(T_reader, L_next, ACQUIRE_UNLESS(WEAK_WALK_NEXT), next);
    if
    :: next != 0 ->
        READ(T_reader, D_chunk + next - 1);
        visit(L_place + next - 1);
        isBehind = isBehind || writer != 0;
        visit(L_last);
        isBehind = isBehind || writer != 0
    :: else
    fi
}

proctype reader() {
    byte made, writer, next, times;
    bool isFound[3], hasBefore, isRemoved, isBehind;
    for (times : 1 .. 2) {
        LOAD(T_reader, L_made, ACQUIRE_UNLESS(WEAK_COUNTED), made);
        walk();
        assert(isFound[1] + isFound[2] >= made); /* a walk finds the writers that were counted */
        if
        :: hasBefore && !isRemoved -> /* remove() and delete */
            STORE(T_reader, L_first, RELEASE_UNLESS(WEAK_REMOVE), 0);
            WRITE(T_reader, D_writer);
            isRemoved = true
        :: true
        fi
    }
    /* A writer of the second chunk goes, too: remove() walks to it. */
    if
    :: isBehind ->
        LOAD(T_reader, L_next, ACQUIRE_UNLESS(WEAK_REMOVE_NEXT), next);
        READ(T_reader, D_chunk + next - 1)
    :: else
    fi
}

init { atomic { startMemory(); VALUE(L_first, 0) = BEFORE; run reader(); run adder(T_one); run adder(T_two) } }
