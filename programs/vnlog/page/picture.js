// The picture: lanes of threads below an axis of time, and an overview of the whole above it.
//
// A frame draws what lies in the view, and nothing else. What is narrower than a pixel is summed up by the pixel: a search finds
// the first call or mark of the next pixel, and prefix sums or unions tell what lies before it. So a frame's cost grows with the
// pixels and not with the lines. Frames are drawn on demand, one for all that has changed since the last one.

const laneGap = 10, headHeight = 24, marksHeight = 20, callHeight = 18, reportHeight = 17, axisHeight = 30, gutter = 132;
const shortestView = 20;  // nanoseconds
const monospace = '"DejaVu Sans Mono", ui-monospace, Consolas, monospace';

/** Colours of the page's style, and those of calls, which are ten hues of one lightness. */
class Colours {
    constructor() {
        const style = getComputedStyle(document.documentElement), get = name => style.getPropertyValue('--' + name).trim();
        for (const name of ['back', 'raised', 'band', 'line', 'grid', 'text', 'soft', 'accent', 'chosen', 'lost', 'error', 'warning', 'info',
                            'trace', 'profile', 'other', 'hit', 'hitback', 'shade'])
            this[name] = get(name);
        this.isDark = get('bars') === '46';
        const hues = [212, 28, 158, 268, 340, 48, 188, 96, 236, 308];
        this.calls = hues.map(hue => this.isDark ? `hsl(${hue} 48% 36%)` : `hsl(${hue} 62% 80%)`);
        this.callEdges = hues.map(hue => this.isDark ? `hsl(${hue} 50% 50%)` : `hsl(${hue} 50% 62%)`);
        this.callText = this.isDark ? '#f2f5f9' : '#16202c';
        this.callBytes = hues.map(hue => this.isDark ? bytesOf(hue, .50, .50) : bytesOf(hue, .55, .60));
        this.levels = [this.error, this.error, this.error, this.warning, this.info, this.trace, this.profile];
    }

    /** Of the most severe line whose bit is set. */
    ofBits(bits) {
        for (let level = 0; level < 7; ++level)
            if (bits & 2 << level)
                return this.levels[level];
        return this.other;
    }
}

function bytesOf(hue, saturation, lightness) {
    const part = n => {
        const k = (n + hue / 30) % 12, a = saturation * Math.min(lightness, 1 - lightness);
        return Math.round(255 * (lightness - a * Math.max(-1, Math.min(k - 3, 9 - k, 1))));
    };
    return part(4) << 16 | part(8) << 8 | part(0);
}

class Picture {
    constructor(model, canvas, overview, heard) {
        this.model = model;
        this.canvas = canvas;
        this.overview = overview;
        this.heard = heard;
        this.context = canvas.getContext('2d', {alpha: false});
        this.overviewContext = overview.getContext('2d', {alpha: false});
        this.scratch = document.createElement('canvas');
        this.start = 0;
        this.span = 1;
        this.top = 0;
        this.frames = 0;
        this.chosen = -1;
        this.hits = new Uint32Array(0);
        this.listed = null;
        this.pointer = null;
        this.measured = null;
        this.hover = null;
        this.colours = new Colours();
        this.fit();
        new ResizeObserver(() => this.resize()).observe(canvas);
        this.resize();
    }

    // ---- view -------------------------------------------------------------------------------------------------------------

    get plotWidth() { return Math.max(1, this.width - gutter); }
    get stop() { return this.start + this.span; }
    xOf(time) { return gutter + (time - this.start) * this.plotWidth / this.span; }
    timeAt(x) { return this.start + (x - gutter) * this.span / this.plotWidth; }

    resize() {
        const ratio = window.devicePixelRatio || 1;
        for (const canvas of [this.canvas, this.overview]) {
            canvas.width = Math.max(1, Math.round(canvas.clientWidth * ratio));
            canvas.height = Math.max(1, Math.round(canvas.clientHeight * ratio));
        }
        this.width = Math.max(gutter + 1, this.canvas.clientWidth);
        this.height = this.canvas.clientHeight;
        this.ratio = ratio;
        this.layOut();
        this.overviewCache = null;
        // A canvas that has a new size is empty until it is drawn.
        this.draw();
    }

    recolour() {
        this.colours = new Colours();
        this.overviewCache = null;
        this.ask();
    }

    /** Where each lane is, in pixels from the top of the lanes. */
    layOut() {
        this.places = [];
        let y = 4, group = null;
        const isMany = new Set(this.model.lanes.map(lane => lane.meta.source + '/' + lane.meta.run)).size > 1;
        for (const lane of this.model.shown) {
            const key = lane.meta.source + '/' + lane.meta.run;
            if (isMany && key !== group) {
                this.places.push({head: lane.meta, y, height: headHeight});
                y += headHeight;
                group = key;
            }
            const levels = lane.isFolded ? Math.min(1, lane.levels.length) : lane.levels.length;
            const hasReports = lane.reports.length > 0 && !lane.isFolded;
            const place = {lane, y, levels, marks: y + 4, calls: y + 4 + marksHeight};
            place.reports = hasReports ? place.calls + levels * callHeight : -1;
            place.height = 8 + marksHeight + levels * callHeight + (hasReports ? reportHeight : 0);
            this.places.push(place);
            y += place.height + laneGap;
        }
        this.lanesHeight = y;
        this.top = Math.max(0, Math.min(this.top, y - (this.height - axisHeight)));
    }

    fit() {
        this.setView(-this.model.end * .01, this.model.end * 1.02);
    }

    setView(start, span, isByList = false) {
        const end = this.model.end;
        this.span = Math.max(shortestView, Math.min(span, end * 1.5 + shortestView));
        this.start = Math.max(-this.span * .5, Math.min(start, end - this.span * .5));
        this.ask();
        if (this.heard)
            this.heard(isByList);
    }

    zoomAt(x, factor) {
        const time = this.timeAt(x), span = Math.max(shortestView, this.span * factor);
        this.setView(time - (time - this.start) * span / this.span, span);
    }

    panBy(pixels) { this.setView(this.start + pixels * this.span / this.plotWidth, this.span); }

    scrollBy(pixels) {
        this.top = Math.max(0, Math.min(this.top + pixels, this.lanesHeight - (this.height - axisHeight)));
        this.ask();
    }

    /** Brings a row into the view, with a fitting zoom for a call if it asks for one. */
    show(row, zooms = false) {
        const time = this.model.times[row], call = this.model.callAt(row);
        if (zooms && call >= 0)
            this.setView(time - this.model.durationOf(call) * .1, Math.max(shortestView, this.model.durationOf(call) * 1.2));
        else if (zooms)
            this.setView(time - this.span / 20, this.span / 10);
        else if (time < this.start || time > this.stop)
            this.setView(time - this.span * .3, this.span);
        const place = this.places.find(place => place.lane && place.lane.index === this.model.laneOf[row]);
        const view = this.height - axisHeight;
        if (place.y < this.top || place.y + place.height > this.top + view)
            this.top = Math.max(0, Math.min(place.y - 20, this.lanesHeight - view));
        this.ask();
    }

    choose(row) {
        this.chosen = row;
        this.ask();
    }

    ask() {
        if (!this.isAsked) {
            this.isAsked = true;
            requestAnimationFrame(() => { if (this.isAsked) this.draw(); });
        }
    }

    // ---- a frame ------------------------------------------------------------------------------------------------------------

    draw() {
        this.isAsked = false;
        ++this.frames;
        this.drawn = 0;
        const began = performance.now(), g = this.context, colours = this.colours;
        g.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
        g.imageSmoothingEnabled = false;
        g.fillStyle = colours.back;
        g.fillRect(0, 0, this.width, this.height);
        g.textBaseline = 'middle';
        const view = this.height - axisHeight;
        const visible = this.places.filter(place => place.y + place.height > this.top && place.y < this.top + view);
        g.save();
        g.beginPath();
        g.rect(0, axisHeight, this.width, view);
        g.clip();
        g.translate(0, axisHeight - Math.round(this.top));
        for (const place of visible) {
            g.fillStyle = place.head ? colours.raised : colours.band;
            g.fillRect(0, place.y, this.width, place.height);
        }
        g.restore();
        const ticks = this.ticks();
        g.fillStyle = colours.grid;
        for (const tick of ticks)
            g.fillRect(Math.round(this.xOf(tick)), axisHeight, 1, view);
        g.save();
        g.beginPath();
        g.rect(0, axisHeight, this.width, view);
        g.clip();
        g.translate(0, axisHeight - Math.round(this.top));
        g.save();
        g.beginPath();
        g.rect(gutter, 0, this.plotWidth, this.lanesHeight + view);
        g.clip();
        this.fillScratch(visible);
        for (const place of visible)
            if (place.lane)
                this.drawLane(place);
        this.drawHits(visible);
        for (const place of visible)
            if (place.lane)
                this.drawLosses(place);
        this.drawChosen();
        g.restore();
        for (const place of visible)
            this.drawLabel(place);
        g.restore();
        this.drawAxis(ticks);
        this.drawCursor();
        this.drawOverview();
        this.lastFrame = performance.now() - began;
    }

    /** Calls narrower than a pixel: one line of pixels for each level, which drawCalls() stretches to its height. */
    fillScratch(visible) {
        const width = this.plotWidth, lines = visible.reduce((sum, place) => sum + (place.levels || 0), 0);
        this.dense = null;
        if (!lines)
            return;
        if (this.scratch.width !== width || this.scratch.height < lines) {
            this.scratch.width = width;
            this.scratch.height = Math.max(lines, 32);
            this.scratchContext = this.scratch.getContext('2d');
        }
        const image = this.scratchContext.createImageData(width, lines), pixels = new Uint32Array(image.data.buffer);
        this.dense = [];
        let line = 0;
        for (const place of visible)
            for (let level = 0; level < (place.levels || 0); ++level, ++line)
                this.dense.push(this.findCalls(place, level, line, pixels.subarray(line * width, (line + 1) * width)));
        this.scratchContext.putImageData(image, 0, 0);
        this.drawnDense = this.dense.length;
    }

    /** Splits a level's calls in the view into wide ones, which are told, and narrow ones, which become pixels. */
    findCalls(place, index, line, pixels) {
        const {start, end, busy, calls} = place.lane.levels[index], count = start.length, wide = [];
        const stop = this.stop, scale = this.plotWidth / this.span, perPixel = this.span / this.plotWidth;
        let at = firstAtLeast(end, this.start), hasDense = false;
        while (at < count && start[at] < stop) {
            const x = (start[at] - this.start) * scale;
            if ((end[at] - start[at]) * scale >= 2) {
                wide.push(at++);
                continue;
            }
            const pixel = Math.max(0, Math.floor(x)), boundary = this.start + (pixel + 1) * perPixel;
            let next = Math.max(at + 1, firstAtLeast(start, boundary, at));
            if (next - at > 1 && (end[next - 1] - start[next - 1]) * scale >= 2)
                --next;
            if (pixel < pixels.length) {
                const share = Math.min(1, (busy[next] - busy[at]) / perPixel), alpha = Math.round(90 + 165 * share);
                pixels[pixel] = alpha << 24 | this.colours.callBytes[this.model.colourOfCall(calls[at + next >> 1])];
                hasDense = true;
            }
            at = next;
            ++this.drawn;
        }
        return {place, index, line, wide, hasDense};
    }

    drawCalls({place, index, line, wide, hasDense}) {
        const g = this.context, model = this.model, {start, end, calls} = place.lane.levels[index], y = place.calls + index * callHeight;
        const height = callHeight - 2;
        if (hasDense)
            g.drawImage(this.scratch, 0, line, this.plotWidth, 1, gutter, y, this.plotWidth, height);
        g.font = '11px ' + monospace;
        for (const at of wide) {
            const call = calls[at], colour = model.colourOfCall(call);
            const left = Math.max(gutter - 4, this.xOf(start[at])), right = Math.min(this.width + 4, this.xOf(end[at]));
            const isOpen = model.calls.left[call] === 0xffffffff || model.calls.isCut[call];
            g.fillStyle = this.colours.calls[colour];
            g.fillRect(left, y, right - left - (right - left > 4 ? 1 : 0), height);
            g.fillStyle = this.colours.callEdges[colour];
            g.fillRect(left, y, Math.min(2, right - left), height);
            if (isOpen && right - left > 6) {
                // Its end isn't in the log.
                g.fillStyle = this.colours.lost;
                for (let dash = 0; dash < height; dash += 4)
                    g.fillRect(right - 3, y + dash, 2, 2);
            }
            const from = Math.max(left, gutter) + 6, room = right - from - 4;
            if (room > 20) {
                g.fillStyle = this.colours.callText;
                g.fillText(cut(model.nameOf(model.calls.entered[call]), room), from, y + height / 2 + .5);
            }
            ++this.drawn;
        }
    }

    drawLane(place) {
        for (const level of this.dense || [])
            if (level.place === place)
                this.drawCalls(level);
        this.drawMarks(place);
        if (place.reports >= 0)
            this.drawReports(place);
    }

    drawMarks(place) {
        const g = this.context, {rows, times, bits} = place.lane.marks, count = times.length, middle = place.marks + marksHeight / 2 - 1;
        const lost = place.lane.lost.start;
        const perPixel = this.span / this.plotWidth, stop = this.stop + perPixel;
        g.font = '11px ' + monospace;
        for (let at = firstAtLeast(times, this.start - 300 * perPixel); at < count && times[at] < stop;) {
            const x = Math.floor(this.xOf(times[at])), boundary = this.timeAt(x + 1);
            const next = Math.max(at + 1, firstAtLeast(times, boundary, at)), gap = next < count ? this.xOf(times[next]) - x : Infinity;
            const loss = firstAtLeast(lost, times[at]), room = Math.min(gap, loss < lost.length ? this.xOf(lost[loss]) - x : Infinity);
            const union = bits.over(at, next), colour = this.colours.ofBits(union);
            g.fillStyle = colour;
            const number = next - at;
            if (gap >= 7 && number === 1) {
                g.beginPath();
                g.arc(x + .5, middle, 3.2, 0, 7);
                g.fill();
            } else {
                // Crowds are paler, unless something in them is a warning or worse.
                const height = Math.min(marksHeight - 2, 5 + 2 * Math.log2(number));
                g.globalAlpha = union & 30 ? 1 : .5;
                g.fillRect(x, middle - height / 2, 1, height);
                g.globalAlpha = 1;
            }
            if (room > 46) {
                const text = number === 1 ? this.model.textOf(rows[at]) : number + ' lines: ' + this.model.textOf(rows[at]);
                const shown = cut(plainText(this.model, rows[at], text), Math.min(room, this.width - x) - 16);
                g.fillStyle = colour === this.colours.trace || colour === this.colours.other ? this.colours.soft : this.colours.text;
                if (shown.length > 1)
                    g.fillText(shown, x + 8, middle + .5);
            }
            at = next;
            ++this.drawn;
        }
    }

    drawReports(place) {
        const g = this.context, y = place.reports, height = reportHeight - 3;
        g.font = '11px ' + monospace;
        let last = -Infinity;
        place.lane.reports.forEach((report, i) => {
            const next = place.lane.reports[i + 1], limit = next ? this.xOf(this.model.times[next.row] - next.total * 1e9) : Infinity;
            const end = this.model.times[report.row], begin = Math.max(0, end - report.total * 1e9);
            const left = Math.max(gutter - 4, this.xOf(begin)), right = Math.min(this.width + 4, Math.max(this.xOf(end), this.xOf(begin) + 2));
            if (!(this.model.mask & this.model.bitOf(report.row)) || right < gutter || left > this.width || (right <= last && right - left < 3))
                return;
            last = right;
            // A later report may reach back over an earlier one.
            g.fillStyle = this.colours.band;
            g.fillRect(left, y, right - left, height);
            g.fillStyle = this.colours.profile;
            g.globalAlpha = .22;
            g.fillRect(left, y, right - left, height);
            g.globalAlpha = 1;
            g.fillRect(left, y + height - 2, right - left, 2);
            g.fillRect(right - 2, y, 2, height);
            const from = Math.max(left, gutter) + 6, room = Math.min(right, limit) - from - 8;
            if (room > 24) {
                g.fillStyle = this.colours.text;
                g.fillText(cut(reportTitle(report), room), from, y + height / 2);
            }
            ++this.drawn;
        });
    }

    drawLosses(place) {
        const g = this.context, {start, end, sums} = place.lane.lost, count = start.length, perPixel = this.span / this.plotWidth;
        const top = place.y, height = place.height;
        for (let at = firstAtLeast(end, this.start); at < count && start[at] < this.stop;) {
            const left = this.xOf(start[at]), next = Math.max(at + 1, firstAtLeast(start, this.timeAt(Math.floor(left) + 2), at));
            const right = Math.max(left + 2, this.xOf(end[next - 1]));
            g.fillStyle = this.colours.lost;
            g.globalAlpha = .2;
            g.fillRect(left, top, right - left, height);
            g.globalAlpha = 1;
            g.fillRect(Math.round(left), top, 2, height);
            g.beginPath();
            g.moveTo(left - 4, top);
            g.lineTo(left + 6, top);
            g.lineTo(left + 1, top + 7);
            g.fill();
            const text = (sums[next] - sums[at]).toLocaleString('en') + ' lost', room = (next < count ? this.xOf(start[next]) : Infinity) - left;
            const width = 7 * text.length + 10;
            if (room > width + 8) {
                const start = left + 2 + width > this.width && left - width > gutter ? left - width : left + 2;
                g.font = '600 11px system-ui, "DejaVu Sans", sans-serif';
                g.fillRect(start, top + 3, width, 16);
                g.fillStyle = this.colours.isDark ? '#1a0508' : '#ffffff';
                g.fillText(text, start + 5, top + 11.5);
            }
            at = next;
            ++this.drawn;
        }
    }

    /** A bar below the marks of each lane where the search has found lines. */
    drawHits(visible) {
        if (!this.hits.length)
            return;
        const g = this.context, perPixel = this.span / this.plotWidth, times = this.model.times, lanes = new Map();
        for (const place of visible)
            if (place.lane)
                lanes.set(place.lane.index, place);
        g.fillStyle = this.colours.hit;
        const from = firstAtLeast(this.hits, firstAtLeast(times, this.start)), until = firstAtLeast(this.hits, firstAtLeast(times, this.stop));
        if (until - from < 4000) {
            for (let i = from; i < until; ++i) {
                const place = lanes.get(this.model.laneOf[this.hits[i]]);
                if (place)
                    g.fillRect(Math.floor(this.xOf(times[this.hits[i]])) - 1, place.y, 3, place.height);
            }
        }
    }

    drawChosen() {
        if (this.chosen < 0)
            return;
        const g = this.context, row = this.chosen, place = this.places.find(place => place.lane && place.lane.index === this.model.laneOf[row]);
        const x = this.xOf(this.model.times[row]);
        g.fillStyle = this.colours.accent;
        g.fillRect(Math.round(x), 0, 1, this.lanesHeight + this.height);
        g.strokeStyle = this.colours.accent;
        g.lineWidth = 2;
        const call = this.model.callAt(row), level = call < 0 ? -1 : this.model.calls.level[call];
        if (call >= 0 && level < place.levels) {
            const right = Math.max(x + 3, this.xOf(this.model.endOf(call)));
            const left = Math.max(x, gutter - 6);
            g.strokeRect(left, place.calls + level * callHeight - 1, Math.min(right, this.width + 6) - left, callHeight);
        } else {
            g.beginPath();
            g.arc(x + .5, place.marks + marksHeight / 2 - 1, 6.5, 0, 7);
            g.stroke();
        }
    }

    drawLabel(place) {
        const g = this.context, colours = this.colours;
        if (place.head) {
            const run = this.model.meta.runs.find(run => run.source === place.head.source && run.run === place.head.run);
            let text = this.model.meta.sources[place.head.source].split(/[\\/]/).pop();
            g.font = '600 12px system-ui, "DejaVu Sans", sans-serif';
            g.fillStyle = colours.text;
            g.fillText(text, 10, place.y + headHeight / 2 + .5);
            const width = g.measureText(text).width;
            g.font = '12px system-ui, "DejaVu Sans", sans-serif';
            g.fillStyle = colours.soft;
            text = place.head.run < 0 ? 'before the first banner' : 'run ' + (place.head.run + 1);
            if (run && run.started !== null)
                text += ', started ' + dateText(run.started) + (run.isStopped ? '' : ', without an end');
            g.fillText(text, 22 + width, place.y + headHeight / 2 + .5);
            return;
        }
        const lane = place.lane, lines = lane.rows.length;
        g.fillStyle = colours.raised;
        g.fillRect(0, place.y, gutter, place.height);
        g.fillStyle = colours.line;
        g.fillRect(gutter - 1, place.y, 1, place.height);
        g.font = '600 12px ' + monospace;
        g.fillStyle = colours.text;
        if (lane.levels.length > 1) {
            g.beginPath();
            g.moveTo(8, place.y + (lane.isFolded ? 9 : 11));
            g.lineTo(lane.isFolded ? 14 : 16, place.y + (lane.isFolded ? 13 : 11));
            g.lineTo(lane.isFolded ? 8 : 12, place.y + 17);
            g.fill();
        }
        g.fillText(lane.name, 22, place.y + 14);
        if (place.height < 38)
            return;
        g.font = '11px system-ui, "DejaVu Sans", sans-serif';
        g.fillStyle = colours.soft;
        g.fillText(plural(lines, 'line'), 22, place.y + 30);
        if (lane.lostCount && place.height >= 54) {
            g.fillStyle = colours.lost;
            g.fillText(lane.lostCount.toLocaleString('en') + ' lost', 22, place.y + 45);
        } else if (lane.lostCount) {
            g.fillStyle = colours.lost;
            g.fillRect(gutter - 5, place.y, 4, place.height);
        }
    }

    // ---- axis, cursor, overview -------------------------------------------------------------------------------------------------

    ticks() {
        const least = this.span * 92 / this.plotWidth, second = 1e9;
        let step;
        if (least <= second || this.model.meta.isOrdinal) {
            const power = 10 ** Math.floor(Math.log10(least));
            step = [1, 2, 5, 10].map(n => n * power).find(step => step >= least * .999);
        } else {
            const seconds = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 21600, 43200, 86400];
            step = second * (seconds.find(n => n * second >= least) || 86400 * Math.ceil(least / (86400 * second)));
        }
        step = Math.max(1, Math.round(step));
        if (this.model.meta.isOrdinal)
            step = Math.max(1000, step);
        this.step = step;
        const ticks = [];
        for (let tick = Math.ceil(this.start / step) * step; tick < this.stop; tick += step)
            ticks.push(tick);
        return ticks;
    }

    drawAxis(ticks) {
        const g = this.context, colours = this.colours, model = this.model;
        g.fillStyle = colours.raised;
        g.fillRect(0, 0, this.width, axisHeight);
        g.fillStyle = colours.line;
        g.fillRect(0, axisHeight - 1, this.width, 1);
        // Fractions of a unit count from the whole unit before them; the whole stands at the left.
        const unit = this.step >= 1e9 ? 0 : this.step >= 1e6 ? 1e9 : this.step >= 1e3 ? 1e6 : 1e3;
        const digits = unit === 0 ? 0 : unit === 1e9 ? 0 : unit === 1e6 ? 3 : 6;
        g.font = '11px system-ui, "DejaVu Sans", sans-serif';
        for (const tick of ticks) {
            const x = Math.round(this.xOf(tick));
            if (x < gutter)
                continue;
            g.fillStyle = colours.line;
            g.fillRect(x, axisHeight - 8, 1, 8);
            const isWhole = unit === 0 || model.meta.isOrdinal || tick % unit === 0;
            g.fillStyle = isWhole ? colours.text : colours.soft;
            const rest = ((tick % (unit || 1)) + (unit || 1)) % (unit || 1);
            g.fillText(isWhole ? timeText(model, tick, digits) : '+' + spanText(rest, 0), x + 4, axisHeight / 2 - 3);
        }
        // Where the list is.
        if (this.listed) {
            const left = Math.max(gutter, this.xOf(this.listed[0])), right = Math.min(this.width, Math.max(this.xOf(this.listed[1]), left + 3));
            if (right > gutter && left < this.width) {
                g.fillStyle = colours.accent;
                g.fillRect(left, axisHeight - 4, right - left, 3);
            }
        }
        g.fillStyle = colours.raised;
        g.fillRect(0, 0, gutter, axisHeight - 1);
        g.fillStyle = colours.text;
        g.font = '600 12px system-ui, "DejaVu Sans", sans-serif';
        g.fillText(timeText(model, Math.max(0, unit ? Math.floor(this.start / unit) * unit : this.start), digits), 10, axisHeight / 2);
    }

    drawCursor() {
        const g = this.context;
        if (this.measured) {
            const [a, b] = this.measured.map(time => this.xOf(time)).sort((left, right) => left - right);
            g.fillStyle = this.colours.accent;
            g.globalAlpha = .14;
            g.fillRect(a, axisHeight, b - a, this.height);
            g.globalAlpha = 1;
            g.font = '600 12px system-ui, "DejaVu Sans", sans-serif';
            const text = spanText(Math.abs(this.measured[1] - this.measured[0])), width = g.measureText(text).width + 12;
            g.fillRect((a + b - width) / 2, axisHeight + 6, width, 19);
            g.fillStyle = this.colours.back;
            g.fillText(text, (a + b - width) / 2 + 6, axisHeight + 16);
        } else if (this.pointer && this.pointer.x >= gutter) {
            g.fillStyle = this.colours.soft;
            g.globalAlpha = .5;
            g.fillRect(Math.round(this.pointer.x), axisHeight, 1, this.height);
            g.globalAlpha = 1;
        }
    }

    drawOverview() {
        const g = this.overviewContext, width = this.overview.clientWidth, height = this.overview.clientHeight, model = this.model;
        if (!this.overviewCache) {
            this.overviewCache = document.createElement('canvas');
            this.overviewCache.width = this.overview.width;
            this.overviewCache.height = this.overview.height;
            this.paintOverview(this.overviewCache.getContext('2d', {alpha: false}), width, height);
        }
        g.setTransform(1, 0, 0, 1, 0, 0);
        g.drawImage(this.overviewCache, 0, 0);
        g.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
        if (this.hits.length) {
            g.fillStyle = this.colours.hit;
            const perPixel = model.end / width;
            for (let x = 0; x < width; ++x) {
                const first = firstAtLeast(this.hits, firstAtLeast(model.times, x * perPixel));
                if (first < this.hits.length && model.times[this.hits[first]] < (x + 1) * perPixel)
                    g.fillRect(x, height - 4, 1, 4);
            }
        }
        const left = Math.max(0, this.start / model.end * width), right = Math.min(width, this.stop / model.end * width);
        g.fillStyle = this.colours.shade;
        g.fillRect(0, 0, left, height);
        g.fillRect(right, 0, width - right, height);
        g.fillStyle = this.colours.accent;
        g.fillRect(left, 0, 2, height);
        g.fillRect(Math.max(right - 2, left + 1), 0, 2, height);
        g.fillRect(left, 0, Math.max(right - left, 3), 2);
    }

    paintOverview(g, width, height) {
        const model = this.model, perPixel = model.end / width, counts = [];
        g.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
        g.fillStyle = this.colours.back;
        g.fillRect(0, 0, width, height);
        let at = 0, most = 1;
        for (let x = 0; x < width; ++x) {
            const next = x === width - 1 ? model.count : firstAtLeast(model.times, (x + 1) * perPixel, at);
            counts.push([at, next]);
            most = Math.max(most, next - at);
            at = next;
        }
        counts.forEach(([from, to], x) => {
            if (from === to)
                return;
            const bits = model.bits.over(from, to), tall = Math.max(2, (height - 10) * Math.log2(1 + to - from) / Math.log2(1 + most));
            g.fillStyle = this.colours.isDark ? '#3b4a5e' : '#b9c6d6';
            g.fillRect(x, height - tall, 1, tall);
            if (bits & 14 || bits & 16) {
                g.fillStyle = this.colours.ofBits(bits);
                g.fillRect(x, height - Math.min(tall, bits & 14 ? 10 : 6), 1, Math.min(tall, bits & 14 ? 10 : 6));
            }
            if (bits & 256) {
                g.fillStyle = this.colours.lost;
                g.fillRect(x, 0, 1, height);
            }
        });
    }

    // ---- what lies where ----------------------------------------------------------------------------------------------------

    /** What is drawn at a point: {row, call, report, count} or null. */
    find(x, y) {
        if (x < gutter || y < axisHeight)
            return null;
        const model = this.model, inside = y - axisHeight + this.top, perPixel = this.span / this.plotWidth, time = this.timeAt(x);
        const place = this.places.find(place => place.lane && inside >= place.y && inside < place.y + place.height);
        if (!place)
            return null;
        const lane = place.lane;
        const nearest = (times, reach) => {
            const from = firstAtLeast(times, time - reach * perPixel), to = firstAtLeast(times, time + reach * perPixel, from);
            let best = -1;
            for (let i = from; i < Math.min(to, from + 200); ++i)
                if (best < 0 || Math.abs(times[i] - time) < Math.abs(times[best] - time))
                    best = i;
            return [best, to - from];
        };
        const [lost, losses] = nearest(lane.lost.start, 5);
        if (lost >= 0 && inside < place.calls)
            return {row: lane.lost.rows[lost], count: losses};
        const level = Math.floor((inside - place.calls) / callHeight);
        if (inside >= place.calls && level < place.levels) {
            const {start, end, calls} = lane.levels[level];
            const from = firstAtLeast(end, time - perPixel), to = firstAtLeast(start, time + perPixel, from);
            if (from >= to)
                return null;
            let best = from;
            for (let i = from; i < Math.min(to, from + 200); ++i)
                if (end[i] - start[i] > end[best] - start[best])
                    best = i;
            return {row: model.calls.entered[calls[best]], call: calls[best], count: to - from};
        }
        if (place.reports >= 0 && inside >= place.reports) {
            const report = lane.reports.find(report => {
                const stop = model.times[report.row], begin = stop - report.total * 1e9;
                return time <= stop + 2 * perPixel && time >= Math.min(begin, stop - 2 * perPixel);
            });
            return report ? {row: report.row, report, count: 1} : null;
        }
        const [mark, count] = nearest(lane.marks.times, 5);
        return mark < 0 ? null : {row: lane.marks.rows[mark], count};
    }

    /** A lane, or the heading of a run; undefined between them. */
    placeAt(y) {
        const inside = y - axisHeight + this.top;
        return y < axisHeight ? undefined : this.places.find(place => inside >= place.y && inside < place.y + place.height);
    }

    /** Shows all of the run that a lane belongs to, and nothing else. */
    showRun(meta) {
        const lanes = this.model.lanes.filter(lane => lane.meta.source === meta.source && lane.meta.run === meta.run && lane.rows.length);
        const from = Math.min(...lanes.map(lane => this.model.times[lane.rows[0]]));
        const to = Math.max(...lanes.map(lane => this.model.times[lane.rows[lane.rows.length - 1]]));
        const head = this.places.find(place => place.head && place.head.source === meta.source && place.head.run === meta.run);
        if (head)
            this.top = Math.max(0, Math.min(head.y - 4, this.lanesHeight - (this.height - axisHeight)));
        this.setView(from - (to - from) * .02, Math.max(shortestView, (to - from) * 1.04));
    }

    fold(lanes, isFolded) {
        for (const lane of lanes)
            lane.isFolded = isFolded;
        this.layOut();
        this.ask();
    }
}

// ---- texts ------------------------------------------------------------------------------------------------------------------------

/** As much of a text as that many pixels take in the picture's small type. */
function cut(text, pixels) {
    const room = Math.floor(pixels / 6.65);
    return text.length <= room ? text : room > 1 ? text.slice(0, room - 1) + '\u2026' : '';
}

/** Characters that show nothing become visible ones; the drawing of the trace is left out. */
function plainText(model, row, text) {
    if (model.kindOf(row) === Row.traceText)
        text = text.replace(/^[^]*?(?:^| )\| (?:\| )*/, '');
    return visibleText(text);
}

function visibleText(text) {
    return text.replace(/[\x00-\x1f\x7f]/g, c => c === '\t' ? '  ' : String.fromCharCode(c === '\x7f' ? 0x2421 : 0x2400 + c.charCodeAt(0)));
}

function plural(count, noun) {
    return count.toLocaleString('en') + ' ' + noun + (count === 1 ? '' : 's');
}

function spanText(nanoseconds, digits = 3) {
    const units = [[86400e9, 'd'], [3600e9, 'h'], [60e9, 'min'], [1e9, 's'], [1e6, 'ms'], [1e3, '\u00b5s'], [1, 'ns']];
    const [size, name] = units.find(([size]) => Math.abs(nanoseconds) >= size) || units.at(-1);
    return String(+(nanoseconds / size).toFixed(size === 1 ? 0 : digits)) + '\u202f' + name;
}

/** Date and time of a second since 1970, as the writer's clock showed it. */
function dateText(seconds) {
    return new Date(seconds * 1000).toISOString().slice(0, 19).replace('T', ' ');
}

/** The time of day of a moment; without a date the time since the start; the line in logs without any times. */
function timeText(model, time, digits = 6) {
    if (model.meta.isOrdinal)
        return 'line ' + (Math.round(time / 1000) + 1).toLocaleString('en');
    const whole = Math.floor(time / 1e9), rest = Math.round(time - whole * 1e9);
    const fraction = digits ? '.' + String(rest).padStart(9, '0').slice(0, digits) : '';
    if (model.meta.start === null)
        return whole + fraction + '\u202fs';
    return dateText(model.meta.start + whole).slice(11) + fraction;
}

function reportTitle(report) {
    const name = ['', 'all profilers', 'timer '][report.kind] + report.name;
    return report.kind === 2 ? `${name}: ${spanText(report.total * 1e9)}`
        : `${name}: ${plural(report.cycles, 'cycle')}, ${spanText(report.total * 1e9)}, \u00f8 ${spanText(report.average * 1e9)}`;
}
