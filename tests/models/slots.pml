/* The slots of src/base/lgregistry.cpp: a registry takes a free slot, or makes one, and gives it back in the end. Two threads,
 * each with two registries one behind the other.
 *
 * A slot has one owner at a time, who finds nothing of the owner before.
 */
#define T_one 0
#define T_two 1
#define NT 2
#define SLOTS 4
#define L_first 0
#define L_owner 1  /* of each slot; the first is none */
#define NL 6
#define D_slot 0   /* its `next`, and that it is complete */
#define D_places 5
#define ND 10
#define H 10
#include "memory.pml"

#define WEAK_FIND 1
#define WEAK_REUSE 2
#define WEAK_ADD 3
#define WEAK_DROP 4

byte next[5];
bool inUse[5];

/* findSlot(); the answer is in `slot`. */
inline find(me, wanted) {
    LOAD(me, L_first, ACQUIRE_UNLESS(WEAK_FIND), slot);
    do
    :: slot == 0 -> break
    :: slot != 0 ->
        READ(me, D_slot + slot);
        LOAD(me, L_owner + slot, RELAXED, owner);
        if :: owner == wanted -> break :: else -> slot = next[slot] fi
    od
}

proctype user(byte me) {
    byte registry, slot, owner, done, found;
    for (registry : 2 * me + 1 .. 2 * me + 2) {
        done = 0;
        do
        :: find(me, 0);
            if
            :: slot == 0 -> break
            :: slot != 0 ->
                COMPARE_EXCHANGE(me, L_owner + slot, ACQUIRE_UNLESS(WEAK_REUSE), RELAXED, 0, registry, done, found);
                if :: done -> break :: else fi
            fi
        od;
        if
        :: done
        :: else ->
            slot = registry;
            LOAD(me, L_first, RELAXED, found);
            atomic { WRITE(me, D_slot + slot); WRITE(me, D_places + slot); next[slot] = found }
            STORE(me, L_owner + slot, RELAXED, registry);
            do
            :: COMPARE_EXCHANGE(me, L_first, RELEASE_UNLESS(WEAK_ADD), RELAXED, found, slot, done, found);
                if
                :: done -> break
                :: else -> atomic { WRITE(me, D_slot + slot); next[slot] = found }
                fi
            od
        fi;
        find(me, registry);
        assert(slot != 0); /* an owner finds its slot */
        WRITE(me, D_places + slot);
        atomic { assert(!inUse[slot]); inUse[slot] = true }
        WRITE(me, D_places + slot);
        inUse[slot] = false;
        STORE(me, L_owner + slot, RELEASE_UNLESS(WEAK_DROP), 0);
        atomic { slot = 0; owner = 0; found = 0; done = 0 }
    }
}

init { atomic { startMemory(); run user(T_one); run user(T_two) } }
