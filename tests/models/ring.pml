/* The ring of characters, src/base/lgstream.h and lgstream.cpp, for stream.pml and queue.pml: six cells instead of 32,768.
 *
 * Names are those of the source. A text is its message's number in each cell; HASH is what stands for a text that didn't fit.
 * _writeIndex is no location: nobody but the writer reads it.
 */
#define CELLS 6
#define CELL(i) ((i) % CELLS)
#define HASH 9

byte text[CELLS];       /* _buffer */
byte expected[TRIES + 1];  /* what each message's text is to be, as the writer knows it */

/* Of the writer. */
byte writeIndex, stringEnd, directEnd;
bool pendingAdvance, textWritten, stringTerminated;
byte room, step;

/* Of the reader. */
byte readIndex, end, first, length, content;

#define IS_FULL_BEFORE(index) \
    (CELL(writeIndex + 1) == (index) || (pendingAdvance && CELL(writeIndex + 2) == (index)))
#define ROOM_BEFORE(index) \
    (IS_FULL_BEFORE(index) -> 0 : CELL((index) + CELLS - CELL(writeIndex + (pendingAdvance -> 2 : 1))))

inline updateDirectEnd() {
    d_step {
        if
        :: pendingAdvance -> directEnd = 0
        :: else ->
            directEnd = writeIndex + ROOM_BEFORE(room);
            if :: directEnd > CELLS - 1 -> directEnd = CELLS - 1 :: else fi
        fi
    }
}

inline putText(what, size) {
    step = 0;
    do
    :: step < size ->
        atomic { WRITE(T_writer, D_cell + CELL(writeIndex + step)); text[CELL(writeIndex + step)] = what; step++ }
    :: else -> break
    od;
    atomic { writeIndex = CELL(writeIndex + size); textWritten = true; step = 0 }
}

/* Unless it is one already, as the reader may be looking at it. */
inline putZero() {
    atomic {
        READ(T_writer, D_cell + writeIndex);
        if
        :: text[writeIndex] != 0 -> WRITE(T_writer, D_cell + writeIndex); text[writeIndex] = 0
        :: else
        fi
    }
}

inline makeText(what, size) {
    if
    :: size < directEnd && writeIndex + size < directEnd -> putText(what, size)
    :: else ->
        LOAD(T_writer, L_read, ACQUIRE_UNLESS(WEAK_ROOM_TO_WRITE), room);
        if
        :: IS_FULL_BEFORE(room) ->
            putZero();
            stringTerminated = true
        :: else ->
            d_step { if :: pendingAdvance -> writeIndex = CELL(writeIndex + 1); pendingAdvance = false :: else fi };
            if
            :: size > ROOM_BEFORE(room) ->
                expected[what] = HASH;
                putText(HASH, 1);
                atomic { WRITE(T_writer, D_cell + writeIndex); text[writeIndex] = 0 }
            :: else -> putText(what, size)
            fi;
            updateDirectEnd()
        fi
    fi
}

inline completeString() {
    if
    :: writeIndex + 1 < directEnd ->
        atomic { WRITE(T_writer, D_cell + writeIndex); text[writeIndex] = 0 };
        stringEnd = writeIndex;
        STORE(T_writer, L_end, RELEASE_UNLESS(WEAK_END), stringEnd);
        d_step { writeIndex = CELL(writeIndex + 1); stringTerminated = true }
    :: else ->
        LOAD(T_writer, L_read, ACQUIRE_UNLESS(WEAK_ROOM_TO_END), room);
        putZero();
        stringEnd = writeIndex;
        STORE(T_writer, L_end, RELEASE_UNLESS(WEAK_END_NEAR_THE_END), stringEnd);
        d_step {
            pendingAdvance = CELL(writeIndex + 1) == room;
            if :: !pendingAdvance -> writeIndex = CELL(writeIndex + 1) :: else fi;
            stringTerminated = true
        };
        updateDirectEnd()
    fi
}

/* hasRoom(); the answer is in `room`. */
inline askForRoom() {
    if
    :: writeIndex + 1 < directEnd -> room = 1
    :: else ->
        LOAD(T_writer, L_read, ACQUIRE_UNLESS(WEAK_ROOM_TO_ASK), room);
        room = !IS_FULL_BEFORE(room)
    fi
}

/* findNext() and getLengthFrom(): from `first` on there are `length` characters, all the same. */
inline findText() {
    atomic {
        READ(T_reader, D_cell + readIndex);
        first = (text[readIndex] == 0 -> CELL(readIndex + 1) : readIndex)
    };
    length = 0;
    do
    :: atomic { length < CELLS -> READ(T_reader, D_cell + CELL(first + length)); }
        if
        :: text[CELL(first + length)] == 0 -> break
        :: else ->
            assert(length == 0 || text[CELL(first + length)] == content); /* no torn message */
            d_step { content = text[CELL(first + length)]; length++ }
        fi
    :: length == CELLS -> break
    od;
    assert(length < CELLS) /* each string has its end */
}

/* take(): `content` is what the message holds, 0 if there is none. */
inline takeText() {
    content = 0;
    LOAD(T_reader, L_end, ACQUIRE_UNLESS(WEAK_TAKE), end);
    if
    :: end == readIndex
    :: else ->
        findText();
        readIndex = CELL(first + length);
        STORE(T_reader, L_read, RELEASE_UNLESS(WEAK_TAKEN), readIndex)
    fi;
    d_step { end = 0; first = 0; length = 0 }
}
