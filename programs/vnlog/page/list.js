// The list beside the picture: it holds elements for the lines in sight alone, whatever the log's length. A scroll bar's element can't
// be as high as millions of lines, so the bar has a height of its own, and places are mapped.

const lineHeight = 22, highestBar = 4000000;

class List {
    constructor(model, element, heard) {
        this.model = model;
        this.element = element;
        this.heard = heard;
        this.rows = element.querySelector('#rows');
        this.bar = element.querySelector('#bar');
        this.barHeight = element.querySelector('#height');
        this.top = 0;
        this.chosen = -1;
        this.within = [0, 0];
        this.query = '';
        this.pool = [];
        this.setLines(null);
        new ResizeObserver(() => this.resize()).observe(element);
        this.bar.addEventListener('scroll', () => {
            // A scroll of our own comes back as an event, too.
            if (Math.abs(this.bar.scrollTop - this.expected) < 1)
                return;
            this.expected = this.bar.scrollTop;
            const most = this.bar.scrollHeight - this.bar.clientHeight;
            this.scrollTo(most > 0 ? this.bar.scrollTop / most * this.last : 0, true, false);
        });
        element.addEventListener('wheel', event => {
            event.preventDefault();
            this.scrollTo(this.top + event.deltaY * (event.deltaMode === 1 ? lineHeight : 1) / lineHeight, true);
        }, {passive: false});
        this.rows.addEventListener('click', event => {
            const row = event.target.closest('.row');
            if (row)
                this.heard('choose', this.rowAt(+row.dataset.index));
        });
        this.rows.addEventListener('dblclick', event => {
            const row = event.target.closest('.row');
            if (row)
                this.heard('zoom', this.rowAt(+row.dataset.index));
        });
    }

    /** The rows to list, in order; null for all. */
    setLines(lines) {
        this.lines = lines;
        this.length = lines ? lines.length : this.model.count;
        this.measure();
        this.top = Math.min(this.top, this.last);
        this.draw();
    }

    /** The end stays the end, and what was chosen stays in sight. */
    resize() {
        const wasAtEnd = this.last > 0 && this.top > this.last - 1, index = this.chosen < 0 ? -1 : this.indexOf(this.chosen);
        const wasInSight = index >= this.top && index <= this.top + this.inSight;
        this.measure();
        this.scrollTo(wasAtEnd ? this.last : this.top);
        if (wasInSight)
            this.reveal(this.chosen);
        this.draw();
    }

    measure() {
        this.inSight = Math.max(1, Math.floor(this.element.clientHeight / lineHeight));
        this.last = Math.max(0, this.length - this.inSight);
        this.barHeight.style.height = Math.min(highestBar, this.length * lineHeight) + 'px';
    }

    rowAt(index) { return this.lines ? this.lines[index] : index; }

    /** Index of the first listed row that isn't before `row`. */
    indexOf(row) { return this.lines ? firstAtLeast(this.lines, row) : row; }

    scrollTo(top, isByUser = false, movesBar = true) {
        this.top = Math.max(0, Math.min(top, this.last));
        if (movesBar) {
            const most = this.bar.scrollHeight - this.bar.clientHeight;
            this.bar.scrollTop = this.last > 0 ? this.top / this.last * most : 0;
            this.expected = this.bar.scrollTop;
        }
        this.ask();
        if (isByUser)
            this.heard('scroll');
    }

    /** Begins with the first line at or behind that time. */
    follow(time) { this.scrollTo(this.indexOf(firstAtLeast(this.model.times, time))); }

    /** Brings a row into sight, if it isn't. */
    reveal(row) {
        const index = this.indexOf(row);
        if (index < this.top || index > this.top + this.inSight - 1)
            this.scrollTo(index - this.inSight * .35);
        else
            this.ask();
    }

    choose(row) {
        this.chosen = row;
        this.reveal(row);
    }

    /** The rows in sight, first and last. */
    range() {
        if (!this.length)
            return [0, 0];
        return [this.rowAt(Math.floor(this.top)), this.rowAt(Math.min(this.length - 1, Math.floor(this.top) + this.inSight - 1))];
    }

    ask() {
        if (!this.isAsked) {
            this.isAsked = true;
            requestAnimationFrame(() => { if (this.isAsked) this.draw(); });
        }
    }

    draw() {
        this.isAsked = false;
        const first = Math.floor(this.top), count = Math.min(this.inSight + 2, this.length - first), model = this.model;
        while (this.pool.length < count)
            this.pool.push(this.makeRow());
        this.pool.forEach((element, i) => {
            element.hidden = i >= count;
            element.style.display = i >= count ? 'none' : '';
            if (i >= count)
                return;
            const index = first + i, row = this.rowAt(index);
            element.style.transform = `translateY(${(index - this.top) * lineHeight}px)`;
            this.fill(element, index, row);
        });
        const chosen = this.chosen >= 0 ? this.indexOf(this.chosen) - first : -1;
        if (chosen >= 0 && chosen < count)
            this.element.setAttribute('aria-activedescendant', this.pool[chosen].id);
        else
            this.element.removeAttribute('aria-activedescendant');
    }

    makeRow() {
        const element = document.createElement('div');
        element.id = 'row' + this.pool.length;
        element.setAttribute('role', 'option');
        for (const name of ['time', 'thread', 'level', 'text'])
            element.appendChild(document.createElement('span')).className = name;
        this.rows.appendChild(element);
        return element;
    }

    fill(element, index, row) {
        const model = this.model, [time, thread, level, text] = element.children, kind = model.kindOf(row), lane = model.lanes[model.laneOf[row]];
        const at = model.times[row], isChosen = row === this.chosen;
        let name = 'row';
        if (at >= this.within[0] && at <= this.within[1])
            name += ' within';
        if (isChosen)
            name += ' chosen';
        name += {[Row.loss]: ' lost-row', [Row.banner]: ' banner-row', [Row.plain]: ' plain-row', [Row.entered]: ' trace-row',
                 [Row.left]: ' trace-row', [Row.traceText]: ' trace-row'}[kind] || '';
        element.className = name;
        element.dataset.index = index;
        element.dataset.row = row;
        element.setAttribute('aria-selected', isChosen);
        element.setAttribute('aria-setsize', this.length);
        element.setAttribute('aria-posinset', index + 1);
        time.textContent = timeText(model, at, 9);
        thread.textContent = lane.meta.thread === null ? '\u2013' : lane.meta.thread.toString(16).padStart(this.threadWidth(), '0');
        const number = kind === Row.loss ? -1 : model.levelOf(row);
        level.textContent = number < 0 ? kind === Row.loss ? '!' : '' : 'IFEWITP'[number];
        level.title = number < 0 ? '' : levelNames[number];
        level.style.color = kind === Row.loss ? 'var(--lost)' : number < 0 ? '' :
            ['var(--error)', 'var(--error)', 'var(--error)', 'var(--warning)', 'var(--info)', 'var(--trace)', 'var(--profile)'][number];
        this.fillText(text, visibleText(model.textOf(row)));
    }

    threadWidth() {
        if (!this.width)
            this.width = Math.max(1, ...this.model.lanes.map(lane => (lane.meta.thread || 0).toString(16).length));
        return this.width;
    }

    fillText(element, text) {
        const query = this.query.toLowerCase(), shown = text.slice(0, 2000);
        element.textContent = '';
        let at = 0;
        if (query)
            for (let hit = shown.toLowerCase().indexOf(query); hit >= 0; hit = shown.toLowerCase().indexOf(query, at)) {
                element.append(shown.slice(at, hit));
                element.appendChild(document.createElement('mark')).textContent = shown.slice(hit, hit + query.length);
                at = hit + query.length;
            }
        element.append(shown.slice(at));
    }
}
