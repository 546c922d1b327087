/* A memory with the orders of C++, for models of what threads do to each other without a lock.
 *
 * A location keeps all values that were stored, in order. A thread has a view: for each location the oldest value that it
 * may still read. A load picks any value from there on, so a thread may see a store late, and stores of different locations in
 * any order. A store with release leaves the thread's view beside the value; a load with acquire takes over the view that it
 * finds there. Read-modify-write operations take the newest value, and pass on the view of the store before (a release
 * sequence). Operations that are sequentially consistent agree on one order, which is that of the run.
 *
 * Data without an atomic type is only checked for races: `known` has a bit for each thing that a thread knows to be over,
 * the last write of a piece of data and the last read by each thread. Knowledge travels with the views. A read needs the
 * write's bit, a write needs all of the data's bits, or the model fails.
 *
 * Two things are not modelled: a load never sees a store that hasn't been made yet, and the stores of a location are ordered as
 * they are made. The first would show where plain data is read before an index is given on; the races that are looked for show that
 * as well. The second matters only where several threads store in one location without a read-modify-write operation, a lock or
 * sequential consistency, and none here does. So a model that fails is a proof, with the way there; one that holds without an
 * order tells that no failure is known, and is no reason by itself to take the order out.
 *
 * A model defines, before it includes this: T_... threads and NT, their number; L_... locations and NL; D_... plain data and ND;
 * H, how many values a location may be given. ND * (NT + 1) may be 31 at the most.
 *
 * `weak` is the number of the one order that this run leaves out, 0 for none: see WEAK_... in the models, and check.py.
 */
#define RELAXED 0
#define ACQUIRE 1
#define RELEASE 2
#define ACQ_REL 3
#define SEQ_CST 7

byte weak;
#define NEVER 255

/* The order `full`, or `less` in a run without it. */
#define UNLESS(number, full, less) (weak == (number) -> (less) : (full))
#define ACQUIRE_UNLESS(number) UNLESS(number, ACQUIRE, RELAXED)
#define RELEASE_UNLESS(number) UNLESS(number, RELEASE, RELAXED)
#define ACQ_REL_UNLESS(acquire, release) (weak == (acquire) -> RELEASE : (weak == (release) -> ACQUIRE : ACQ_REL))
#define SEQ_CST_UNLESS(agreement, all) (weak == (agreement) -> ACQ_REL : (weak == (all) -> RELAXED : SEQ_CST))

byte last[NL];            /* number of a location's newest value */
byte stored[(NL) * (H)];  /* the values */
byte seen[(NT) * (NL)];   /* the threads' views */
byte left[(NL) * (H) * (NL)];  /* the views beside the values */
byte agreed[NL];          /* what sequentially consistent operations have agreed on */
int known[NT];
int beside[(NL) * (H)];   /* what is known to who acquires a value */

/* Of the one step that uses them. */
byte pick;
byte each;
byte other;
byte fresh;

#define VALUE(l, i) stored[(l) * (H) + (i)]
#define LEFT(l, i, k) left[((l) * (H) + (i)) * (NL) + (k)]
#define BESIDE(l, i) beside[(l) * (H) + (i)]
#define SEEN(t, l) seen[(t) * (NL) + (l)]
#define NEWEST(l) VALUE(l, last[l])

#define WRITE_BIT(d) (1 << ((d) * ((NT) + 1)))
#define READ_BIT(d, t) (1 << ((d) * ((NT) + 1) + 1 + (t)))
#define ALL_BITS(d) (((1 << ((NT) + 1)) - 1) << ((d) * ((NT) + 1)))

/* All is known at first, as the threads were started behind it. */
inline startMemory() {
    for (each : 0 .. (NT) - 1) { known[each] = 2147483647 }
    for (each : 0 .. (NL) * (H) - 1) { beside[each] = 2147483647 }
    c_code { now.weak = getenv("WEAK") ? atoi(getenv("WEAK")) : 0; }
}

/* --- pieces; the caller is in a d_step --- */

#define TAKE_VIEW(me, l, i) \
    for (each : 0 .. (NL) - 1) { \
        if :: LEFT(l, i, each) > SEEN(me, each) -> SEEN(me, each) = LEFT(l, i, each) :: else fi \
    } \
    known[me] = known[me] | BESIDE(l, i)

#define PUT_VALUE(me, l, order, new) \
    assert(last[l] + 1 < (H)); \
    fresh = (new); \
    last[l] = last[l] + 1; \
    VALUE(l, last[l]) = fresh; \
    fresh = 0; \
    SEEN(me, l) = last[l]; \
    BESIDE(l, last[l]) = 0; \
    if \
    :: (order) & RELEASE -> \
        for (each : 0 .. (NL) - 1) { LEFT(l, last[l], each) = SEEN(me, each) } \
        BESIDE(l, last[l]) = known[me] \
    :: else \
    fi; \
    LEFT(l, last[l], l) = last[l]; \
    if :: (order) & 4 -> agreed[l] = last[l] :: else fi

/* A release sequence goes on through read-modify-write operations. */
#define PASS_ON(l) \
    for (each : 0 .. (NL) - 1) { \
        if \
        :: LEFT(l, last[l] - 1, each) > LEFT(l, last[l], each) -> LEFT(l, last[l], each) = LEFT(l, last[l] - 1, each) \
        :: else \
        fi \
    } \
    BESIDE(l, last[l]) = BESIDE(l, last[l]) | BESIDE(l, last[l] - 1)

/* Any value that the thread may see. */
#define PICK_VALUE(me, l, order) \
    pick = SEEN(me, l); \
    if :: ((order) & 4) && agreed[l] > pick -> pick = agreed[l] :: else fi; \
    do \
    :: pick < last[l] -> pick++ \
    :: break \
    od

#define GET_VALUE(me, l, order, result) \
    result = VALUE(l, pick); \
    SEEN(me, l) = pick; \
    if :: (order) & ACQUIRE -> TAKE_VIEW(me, l, pick) :: else fi

/* --- what the models use --- */

#define LOAD(me, l, order, result) \
    atomic { \
        PICK_VALUE(me, l, order); \
        d_step { \
            GET_VALUE(me, l, order, result); \
            printf("@load %d %d %d %d %d\n", me, l, order, VALUE(l, pick), last[l] - pick); \
            pick = 0 \
        } \
    }

#define STORE(me, l, order, new) \
    d_step { \
        printf("@store %d %d %d %d\n", me, l, order, new); \
        PUT_VALUE(me, l, order, new) \
    }

/* Exchange, and with an expression of NEWEST(l) also the additions. */
#define CHANGE(me, l, order, new, result) \
    d_step { \
        pick = last[l]; \
        GET_VALUE(me, l, order, result); \
        printf("@change %d %d %d %d %d\n", me, l, order, NEWEST(l), new); \
        pick = 0; \
        PUT_VALUE(me, l, order, new); \
        PASS_ON(l) \
    }

/* compare_exchange_strong(): `done` tells whether it has stored; if not, `found` is what it saw, which may be an old value. */
#define COMPARE_EXCHANGE(me, l, order, failure, expected, new, done, found) \
    atomic { \
        PICK_VALUE(me, l, failure); \
        d_step { \
            if :: VALUE(l, pick) == (expected) -> pick = last[l] :: else fi; \
            if \
            :: VALUE(l, pick) == (expected) -> \
                GET_VALUE(me, l, order, found); \
                printf("@change %d %d %d %d %d\n", me, l, order, expected, new); \
                PUT_VALUE(me, l, order, new); \
                PASS_ON(l); \
                done = 1 \
            :: else -> \
                GET_VALUE(me, l, failure, found); \
                printf("@load %d %d %d %d %d\n", me, l, failure, VALUE(l, pick), last[l] - pick); \
                done = 0 \
            fi; \
            pick = 0 \
        } \
    }

/* A sequentially consistent fence. */
#define FENCE(me) \
    d_step { \
        printf("@fence %d\n", me); \
        for (each : 0 .. (NL) - 1) { \
            if :: SEEN(me, each) > agreed[each] -> agreed[each] = SEEN(me, each) :: else fi; \
            SEEN(me, each) = agreed[each] \
        } \
    }

/* Plain data: a read, and a write. Its value, if it matters, is a variable of the model. */
#define READ(me, d) \
    d_step { \
        printf("@read %d %d\n", me, d); \
        assert(known[me] & WRITE_BIT(d)); /* no race of a read with a write */ \
        for (other : 0 .. (NT) - 1) { known[other] = known[other] & ~READ_BIT(d, me) } \
        for (other : 0 .. (NL) * (H) - 1) { beside[other] = beside[other] & ~READ_BIT(d, me) } \
        known[me] = known[me] | READ_BIT(d, me) \
    }

#define WRITE(me, d) \
    d_step { \
        printf("@write %d %d\n", me, d); \
        assert((known[me] & ALL_BITS(d)) == ALL_BITS(d)); /* no race of a write with a read or a write */ \
        for (other : 0 .. (NT) - 1) { known[other] = known[other] & ~WRITE_BIT(d) } \
        for (other : 0 .. (NL) * (H) - 1) { beside[other] = beside[other] & ~WRITE_BIT(d) } \
        known[me] = known[me] | WRITE_BIT(d) \
    }

/* A lock, as a location of its own: whoever takes it sees what was done under it before. It keeps one value. */
#define LOCK(me, l) \
    atomic { \
        VALUE(l, 0) == 0; \
        d_step { \
            printf("@lock %d %d\n", me, l); \
            VALUE(l, 0) = 1; \
            TAKE_VIEW(me, l, 0) \
        } \
    }

#define UNLOCK(me, l) \
    d_step { \
        printf("@unlock %d %d\n", me, l); \
        VALUE(l, 0) = 0; \
        for (each : 0 .. (NL) - 1) { LEFT(l, 0, each) = SEEN(me, each) } \
        BESIDE(l, 0) = known[me] \
    }

/* The end of a thread, for the one that has waited for it. */
#define JOIN(me, gone) \
    d_step { \
        for (each : 0 .. (NL) - 1) { if :: SEEN(gone, each) > SEEN(me, each) -> SEEN(me, each) = SEEN(gone, each) :: else fi } \
        known[me] = known[me] | known[gone] \
    }
