// The log as columns of numbers: reads what timelinemodel.cpp has encoded, and answers questions about rows, lanes and calls.
//
// A row is a line of the log; rows are in the order of time, in nanoseconds since the first. Nothing here draws. Each lane keeps
// its calls by level and its marks in arrays that are sorted by time, with what is needed to sum up a range of them at once:
// whatever falls into one pixel is one query, however much it is.

const Row = {message: 0, loss: 1, entered: 2, left: 3, traceText: 4, banner: 5, plain: 6, profile: 7};
const levelNames = ['Internal Error', 'Fatal Error', 'Error', 'Warning', 'Informational', 'Tracing', 'Profiling'];

/** The first index from `from` on whose value is at least `value`; doubling steps, so that near ones are found at once. */
function firstAtLeast(sorted, value, from = 0, to = sorted.length) {
    let step = 1, low = from;
    while (low + step < to && sorted[low + step] < value)
        step *= 2;
    let high = Math.min(low + step, to);
    low += step >> 1;
    while (low < high) {
        const middle = (low + high) >>> 1;
        if (sorted[middle] < value)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

/** Bits of a sequence, whose union over a range takes some steps for each power of 16 of its length. */
class Bits {
    constructor(bits) {
        this.floors = [bits];
        while (this.floors.at(-1).length > 16) {
            const below = this.floors.at(-1), floor = new Uint16Array(Math.ceil(below.length / 16));
            for (let i = 0; i < below.length; ++i)
                floor[i >> 4] |= below[i];
            this.floors.push(floor);
        }
    }

    over(from, to) {
        let all = 0;
        for (const floor of this.floors) {
            if (to - from < 32 || floor === this.floors.at(-1)) {
                while (from < to)
                    all |= floor[from++];
                return all;
            }
            while (from & 15)
                all |= floor[from++];
            while (to & 15)
                all |= floor[--to];
            from >>= 4;
            to >>= 4;
        }
        return all;
    }
}

class Reader {
    constructor(bytes) {
        this.bytes = bytes;
        this.at = 0;
    }

    /** Seven bits a byte, the lowest first. Beyond 32 bits the sum is a double. */
    number() {
        const bytes = this.bytes;
        let byte = bytes[this.at++], value = byte & 127, factor = 128;
        while (byte & 128) {
            byte = bytes[this.at++];
            value += (byte & 127) * factor;
            factor *= 128;
        }
        return value;
    }

    folded() {
        const value = this.number();
        return value % 2 ? -(value + 1) / 2 : value / 2;
    }
}

async function unpack(text) {
    const packed = atob(text), bytes = new Uint8Array(packed.length);
    for (let i = 0; i < packed.length; ++i)
        bytes[i] = packed.charCodeAt(i);
    const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('deflate'));
    return new Uint8Array(await new Response(stream).arrayBuffer());
}

class Model {
    constructor(data) {
        const size = new DataView(data.buffer).getUint32(0, true);
        const meta = JSON.parse(new TextDecoder().decode(data.subarray(4, 4 + size)));
        const columns = {};
        let at = 4 + size;
        for (const [name, length] of meta.columns) {
            columns[name] = new Reader(data.subarray(at, at + length));
            at += length;
        }
        this.meta = meta;
        this.count = meta.rows;
        this.readForms(columns);
        this.readRows(columns);
        this.readNumbers(columns);
        this.makeLanes();
        this.readCalls(columns);
        this.end = this.count ? this.times[this.count - 1] : 0;
        for (const lane of this.lanes)
            lane.finish(this);
        this.end = Math.max(this.end, 1);
    }

    readForms(columns) {
        const decoder = new TextDecoder(), bytes = columns.pieces.bytes;
        this.forms = [];
        let at = 0;
        for (let i = 0; i < this.meta.forms; ++i) {
            const pieces = [];
            for (let count = columns.pieceCounts.number(); count > 0; --count) {
                const length = columns.pieceLengths.number();
                pieces.push(decoder.decode(bytes.subarray(at, at + length)));
                at += length;
            }
            this.forms.push({pieces, slots: [], count: 0});
        }
    }

    readRows(columns) {
        const count = this.count, starts = new Float64Array(this.meta.sources.length), sources = this.meta.lanes.map(lane => lane.source);
        this.times = new Float64Array(count);
        this.laneOf = new Uint16Array(count);
        if (this.meta.lanes.length > 65535)
            this.laneOf = new Uint32Array(count);
        this.kinds = columns.kinds.bytes;
        this.formOf = new Uint32Array(count);
        this.useOf = new Uint32Array(count);
        this.lineOf = new Uint32Array(count);
        this.losses = new Map();
        let time = 0;
        for (let row = 0; row < count; ++row) {
            this.times[row] = time += columns.times.number();
            const lane = this.laneOf[row] = columns.lanes.number();
            const form = this.formOf[row] = columns.texts.number();
            this.useOf[row] = this.forms[form].count++;
            this.lineOf[row] = starts[sources[lane]] += columns.lines.folded() + 1;
            if ((this.kinds[row] & 15) === Row.loss)
                this.losses.set(row, columns.losses.number());
        }
    }

    readNumbers(columns) {
        let slot = 0;
        for (const form of this.forms) {
            for (let i = 1; i < form.pieces.length; ++i) {
                const values = new Float64Array(form.count), isPlain = columns.modes.bytes[slot++] === 0;
                for (let use = 0, value = 0; use < form.count; ++use)
                    values[use] = value = isPlain ? columns.numbers.number() : value + columns.numbers.folded();
                form.slots.push(form.count && values.every(value => value <= 0xffffffff) ? Uint32Array.from(values) : values);
            }
        }
    }

    makeLanes() {
        this.lanes = this.meta.lanes.map((lane, index) => new Lane(this, lane, index));
        const counts = new Uint32Array(this.lanes.length);
        for (let row = 0; row < this.count; ++row)
            ++counts[this.laneOf[row]];
        this.lanes.forEach((lane, index) => { lane.rows = new Uint32Array(counts[index]); });
        counts.fill(0);
        for (let row = 0; row < this.count; ++row)
            this.lanes[this.laneOf[row]].rows[counts[this.laneOf[row]]++] = row;
        for (const report of this.meta.reports)
            this.lanes[this.laneOf[report.row]].reports.push(report);
        const order = lane => [lane.meta.source, lane.meta.run, lane.meta.thread === null ? -1 : lane.meta.thread];
        this.shown = [...this.lanes].sort((a, b) => {
            const left = order(a), right = order(b), i = left.findIndex((value, at) => value !== right[at]);
            return i < 0 ? 0 : left[i] - right[i];
        });
    }

    readCalls(columns) {
        const count = this.meta.calls, none = 0xffffffff;
        this.calls = {count, entered: new Uint32Array(count), left: new Uint32Array(count).fill(none), level: new Uint16Array(count),
                      isCut: new Uint8Array(count), name: new Uint32Array(count), parent: new Int32Array(count).fill(-1)};
        this.names = [];
        const uses = new Array(10).fill(0);
        const pickColour = name => {
            // The name's own colour, or the next one that fewer names have.
            const own = colourOf(name), least = Math.min(...uses), order = uses.map((_, i) => (own + i) % uses.length);
            const colour = order.find(i => uses[i] === least);
            ++uses[colour];
            return colour;
        };
        const calls = this.calls, indices = new Map(), last = this.lanes.map(() => []);
        for (let call = 0, row = 0; call < count; ++call) {
            calls.entered[call] = row += columns.entered.number();
            const length = columns.left.number();
            if (length > 1) {
                calls.left[call] = row + Math.floor(length / 2);
                calls.isCut[call] = length % 2;
            }
            calls.level[call] = columns.levels.number();
            const name = this.nameOf(row), level = calls.level[call], around = last[this.laneOf[row]];
            if (!indices.has(name)) {
                indices.set(name, this.names.length);
                this.names.push({name, colour: pickColour(name)});
            }
            calls.name[call] = indices.get(name);
            if (level > 0)
                calls.parent[call] = around[level - 1];
            around[level] = call;
            this.lanes[this.laneOf[row]].addCall(call, level);
        }
    }

    kindOf(row) { return this.kinds[row] & 15; }

    /** -1 if the line has none. */
    levelOf(row) { return (this.kinds[row] >> 4) - 1; }

    textOf(row) {
        const form = this.forms[this.formOf[row]], use = this.useOf[row], pieces = form.pieces;
        let text = pieces[0];
        for (let i = 1; i < pieces.length; ++i) {
            const stored = form.slots[i - 1][use];
            // An odd value has a 1 ahead of its digits, which keeps their zeros.
            text += (stored % 2 ? String((stored - 1) / 2).slice(1) : stored / 2) + pieces[i];
        }
        return text;
    }

    /** The function's name in the line that shows that it was entered. */
    nameOf(row) {
        const form = this.forms[this.formOf[row]];
        const isSame = form.pieces.length === 1;
        if (isSame && form.name !== undefined)
            return form.name;
        const text = this.textOf(row), found = /(?:^| )(?:\+|>>>) ([^]*)$/.exec(text);
        const name = found ? found[1] : text;
        if (isSame)
            form.name = name;
        return name;
    }

    callAt(row) {
        const call = firstAtLeast(this.calls.entered, row);
        return call < this.calls.count && this.calls.entered[call] === row ? call : -1;
    }

    endOf(call) {
        return this.calls.left[call] === 0xffffffff ? this.end : this.times[this.calls.left[call]];
    }

    durationOf(call) {
        return Math.max(0, this.endOf(call) - this.times[this.calls.entered[call]]);
    }

    /** The call that a row belongs to, or -1: the innermost one around it. */
    callAround(row) {
        const lane = this.lanes[this.laneOf[row]];
        for (let level = lane.levels.length; level-- > 0;) {
            const calls = lane.levels[level].calls;
            let low = 0, high = calls.length;
            while (low < high) {
                const middle = (low + high) >>> 1;
                if (this.calls.entered[calls[middle]] <= row)
                    low = middle + 1;
                else
                    high = middle;
            }
            if (low > 0 && this.calls.left[calls[low - 1]] >= row)
                return calls[low - 1];
        }
        return -1;
    }

    /** The calls around a call, the outermost first, and itself. */
    pathOf(call) {
        const path = [call];
        while (this.calls.parent[path[0]] >= 0)
            path.unshift(this.calls.parent[path[0]]);
        return path;
    }

    colourOfCall(call) { return this.names[this.calls.name[call]].colour; }

    /**
     * What functions did between two times, the one that took most itself first: their calls, the time within them, that without the
     * calls within those, and the longest call. Times are cut to the span.
     */
    sumCalls(from, to) {
        const sums = this.names.map(({name, colour}) => ({name, colour, calls: 0, total: 0, self: 0, longest: -1})), {name, parent} = this.calls;
        for (const lane of this.lanes)
            for (const {start, end, calls} of lane.levels) {
                const last = firstAtLeast(start, to);
                for (let i = firstAtLeast(end, from); i < last; ++i) {
                    const call = calls[i], sum = sums[name[call]], time = Math.min(end[i], to) - Math.max(start[i], from);
                    ++sum.calls;
                    sum.total += time;
                    sum.self += time;
                    if (parent[call] >= 0)
                        sums[name[parent[call]]].self -= time;
                    if (sum.longest < 0 || this.durationOf(call) > this.durationOf(sum.longest))
                        sum.longest = call;
                }
            }
        return sums.filter(sum => sum.calls).sort((a, b) => b.self - a.self);
    }

    /** Bit of a row for filters and marks: 0 for lines without a level, otherwise its level plus 1. */
    bitOf(row) { return 1 << (this.kinds[row] >> 4); }

    /** Builds what depends on the levels to show: marks of lanes, and the union over all rows. */
    setFilter(mask) {
        this.mask = mask;
        if (!this.bits) {
            const bits = new Uint16Array(this.count);
            for (let row = 0; row < this.count; ++row)
                bits[row] = this.kindOf(row) === Row.loss ? 256 : this.bitOf(row);
            this.bits = new Bits(bits);
        }
        for (const lane of this.lanes)
            lane.makeMarks(this, mask);
    }
}

/** One of ten colours; that of a name is mostly the same in every log. */
function colourOf(name) {
    let hash = 2166136261;
    for (let i = 0; i < name.length; ++i)
        hash = Math.imul(hash ^ name.charCodeAt(i), 16777619);
    return ((hash ^ hash >>> 15) >>> 0) % 10;
}

/** A thread of a run of a source, or the lines of a run that bear no thread. */
class Lane {
    constructor(model, meta, index) {
        this.meta = meta;
        this.index = index;
        this.levels = [];
        this.reports = [];
        this.isFolded = false;
    }

    get name() {
        return this.meta.thread === null ? 'no thread' : '0x' + this.meta.thread.toString(16).padStart(8, '0');
    }

    addCall(call, level) {
        while (this.levels.length <= level)
            this.levels.push({calls: []});
        this.levels[level].calls.push(call);
    }

    finish(model) {
        for (const level of this.levels) {
            const count = level.calls.length;
            level.calls = Uint32Array.from(level.calls);
            level.start = new Float64Array(count);
            level.end = new Float64Array(count);
            level.busy = new Float64Array(count + 1);
            for (let i = 0; i < count; ++i) {
                const call = level.calls[i];
                level.start[i] = model.times[model.calls.entered[call]];
                level.end[i] = Math.max(model.endOf(call), level.start[i]);
                level.busy[i + 1] = level.busy[i] + level.end[i] - level.start[i];
            }
        }
        const lost = [...this.rows].filter(row => model.kindOf(row) === Row.loss);
        this.lost = {rows: lost, start: Float64Array.from(lost, row => model.times[row]), end: new Float64Array(lost.length),
                     sums: new Float64Array(lost.length + 1)};
        lost.forEach((row, i) => {
            // Lost are the messages from this line's time on, until the thread's next line.
            const next = this.rows[firstAtLeast(this.rows, row + 1)];
            this.lost.end[i] = next === undefined ? model.times[row] : model.times[next];
            this.lost.sums[i + 1] = this.lost.sums[i] + model.losses.get(row);
        });
        this.lostCount = this.lost.sums[lost.length];
    }

    makeMarks(model, mask) {
        const isMark = row => {
            const kind = model.kindOf(row);
            return kind !== Row.entered && kind !== Row.left && kind !== Row.loss && kind !== Row.profile && (mask & model.bitOf(row)) !== 0;
        };
        const rows = this.rows.filter(isMark);
        this.marks = {rows, times: Float64Array.from(rows, row => model.times[row]),
                      bits: new Bits(Uint16Array.from(rows, row => model.bitOf(row)))};
    }
}
