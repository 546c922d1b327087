// The page: puts picture, list, search and keys together. What a hand does goes through here, so that picture and list stay in step:
// the list begins where the view begins, and the picture moves to where the list is scrolled.

const byId = id => document.getElementById(id);

class Page {
    constructor(model) {
        this.model = model;
        this.mask = 0xffff;
        this.hits = new Uint32Array(0);
        this.hit = -1;
        this.isOnly = false;
        model.setFilter(this.mask);
        byId('wait').hidden = true;
        this.list = new List(model, byId('list'), (what, row) => this.onList(what, row));
        this.picture = new Picture(model, byId('lanes'), byId('overview'), isByList => this.onView(isByList));
        this.tellFacts();
        this.makeLevels();
        this.makeSearch();
        this.makeTheme();
        this.makeSplit();
        this.makeHelp();
        this.listenToPointer();
        this.listenToOverview();
        byId('fit').onclick = () => this.picture.fit();
        document.addEventListener('keydown', event => this.onKey(event));
        this.onView(false);
    }

    // ---- in step ------------------------------------------------------------------------------------------------------------

    onView(isByList) {
        const {start, stop} = this.picture || {start: 0, stop: 0};
        if (!this.picture)
            return;
        this.list.within = [start, stop];
        if (isByList)
            this.list.ask();
        else if (this.picture.chosen >= 0 && this.isInView(this.picture.chosen) && this.isListed(this.picture.chosen))
            this.list.reveal(this.picture.chosen);
        else
            this.list.follow(start);
        this.tellListed();
        if (this.picture.chosen < 0)
            this.askForCalls();
    }

    isInView(row) { return this.model.times[row] >= this.picture.start && this.model.times[row] <= this.picture.stop; }

    isListed(row) { return !this.list.lines || this.list.lines[this.list.indexOf(row)] === row; }

    onList(what, row) {
        if (what === 'scroll') {
            if (!this.list.length)
                return;
            const [first, last] = this.list.range(), times = this.model.times, picture = this.picture;
            if (times[last] < picture.start || times[first] > picture.stop)
                picture.setView(times[first] - picture.span * .1, picture.span, true);
            this.tellListed();
        } else {
            this.choose(row, what === 'zoom');
        }
    }

    tellListed() {
        if (!this.list.length) {
            this.picture.listed = null;
        } else {
            const [first, last] = this.list.range();
            this.picture.listed = [this.model.times[first], this.model.times[last]];
        }
        this.picture.ask();
    }

    /** Chooses a row everywhere; -1 for none. */
    choose(row, zooms = false) {
        this.picture.choose(row);
        if (row >= 0) {
            this.picture.show(row, zooms);
            this.list.choose(row);
        } else {
            this.list.chosen = -1;
            this.list.ask();
        }
        this.tellDetails(row);
        this.tellListed();
    }

    // ---- what is told -------------------------------------------------------------------------------------------------------

    tellFacts() {
        const model = this.model, facts = byId('facts'), lost = model.lanes.reduce((sum, lane) => sum + lane.lostCount, 0);
        byId('title').textContent = document.title;
        byId('title').title = model.meta.sources.join('\n');
        let errors = 0;
        for (let row = 0; row < model.count; ++row)
            errors += model.levelOf(row) >= 0 && model.levelOf(row) <= 2 ? 1 : 0;
        const threads = model.lanes.filter(lane => lane.meta.thread !== null).length;
        const add = (count, noun, name) => {
            const fact = document.createElement('span');
            fact.className = name;
            fact.appendChild(document.createElement('b')).textContent = count.toLocaleString('en');
            fact.append(' ' + noun + (count === 1 || noun === 'lost' ? '' : 's'));
            facts.appendChild(fact);
        };
        add(model.count, 'line', '');
        add(threads, 'thread', '');
        add(model.calls.count, 'call', '');
        if (errors)
            add(errors, 'error', 'error');
        if (lost)
            add(lost, 'lost', 'lost');
    }

    tellDetails(row) {
        const details = byId('details'), model = this.model;
        details.textContent = '';
        delete details.dataset.span;
        if (row < 0) {
            this.tellCalls();
            return;
        }
        const call = model.callAt(row), around = call >= 0 ? call : model.callAround(row), lane = model.lanes[model.laneOf[row]];
        const add = (tag, text, parent) => {
            const element = document.createElement(tag);
            element.textContent = text;
            return parent.appendChild(element);
        };
        add('h2', call >= 0 ? model.nameOf(row) : visibleText(model.textOf(row)).slice(0, 4000), details);
        const list = add('dl', '', details);
        const tell = (name, text) => { add('dt', name, list); return add('dd', text, list); };
        tell('Time', timeText(model, model.times[row], 9) + (model.meta.isOrdinal ? '' : `  (+${(model.times[row] / 1e9).toFixed(9)} s)`));
        if (call >= 0)
            tell('Duration', spanText(model.durationOf(call), 6) + (model.calls.left[call] === 0xffffffff ? ', to the end of the log: it has no end there' :
                model.calls.isCut[call] ? ', to the line that shows its end: its own was lost' : ''));
        tell('Thread', lane.name);
        if (model.levelOf(row) >= 0)
            tell('Level', levelNames[model.levelOf(row)]);
        if (model.kindOf(row) === Row.loss)
            tell('Lost', plural(model.losses.get(row), 'message') + ' from here to the next line of this thread');
        tell('Line', model.lineOf[row].toLocaleString('en') + ' of ' + model.meta.sources[lane.meta.source]);
        if (around >= 0) {
            const path = tell('Within', '');
            path.className = 'path';
            model.pathOf(around).forEach((outer, i) => {
                if (i)
                    path.append(' \u203a ');
                const button = add('button', model.nameOf(model.calls.entered[outer]), path);
                button.onclick = () => this.choose(model.calls.entered[outer], true);
            });
        }
        const report = model.meta.reports.find(report => report.row === row);
        if (report)
            this.tellReport(report, tell, details);
    }

    /** What the calls in the view took, by function; a click on a name leads to its longest call. */
    tellCalls() {
        const model = this.model, details = byId('details'), sums = model.sumCalls(this.picture.start, this.picture.stop), most = 12;
        details.textContent = '';
        details.dataset.span = this.picture.start + ' ' + this.picture.stop;
        if (!sums.length)
            return;
        const table = details.appendChild(document.createElement('table'));
        const addRow = (tag, texts) => {
            const row = table.appendChild(document.createElement('tr'));
            return texts.map(text => {
                const cell = row.appendChild(document.createElement(tag));
                cell.textContent = text;
                return cell;
            });
        };
        const heads = addRow('th', ['Calls in view', 'calls', 'total', 'itself', 'longest']);
        heads[3].title = 'without the calls within';
        const all = sums.reduce((sum, {self}) => sum + self, 0);
        for (const sum of sums.slice(0, most)) {
            const [name, , , self] = addRow('td', ['', sum.calls.toLocaleString('en'), spanText(sum.total), spanText(sum.self),
                                                   spanText(model.durationOf(sum.longest))]);
            const button = name.appendChild(document.createElement('button'));
            const chip = button.appendChild(document.createElement('i'));
            chip.style.background = this.picture.colours.callEdges[sum.colour];
            button.append(visibleText(sum.name));
            button.title = 'Show the longest call';
            button.onclick = () => this.choose(model.calls.entered[sum.longest], true);
            self.style.setProperty('--share', all > 0 ? (100 * Math.max(0, sum.self) / all).toFixed(1) + '%' : '0%');
            self.className = 'share';
        }
        if (sums.length > most)
            addRow('td', [`and ${sums.length - most} more`, '', '', '', '']);
    }

    /** Sums the calls up once the view rests. */
    askForCalls() {
        clearTimeout(this.callsAsked);
        this.callsAsked = setTimeout(() => {
            if (this.picture.chosen < 0)
                this.tellCalls();
        }, 120);
    }

    /** A profiler's figures, and a drawing of the range with the mean and a deviation on either side. */
    tellReport(report, tell, details) {
        tell('Total', spanText(report.total * 1e9));
        if (report.kind === 2)
            return;
        tell('Cycles', report.cycles.toLocaleString('en'));
        tell('Minimum', spanText(report.minimum * 1e9));
        tell('Average', spanText(report.average * 1e9));
        tell('Maximum', spanText(report.maximum * 1e9));
        if (report.kind === 0)
            tell('Deviation', report.deviation === null ? 'not a number' : spanText(report.deviation * 1e9));
        const range = report.maximum - report.minimum;
        if (!(range > 0))
            return;
        const drawing = document.createElement('div'), share = value => Math.max(0, Math.min(1, (value - report.minimum) / range)) * 100;
        drawing.className = 'whisker';
        const bar = (left, right, top, height, opacity) => {
            const part = drawing.appendChild(document.createElement('i'));
            part.style.cssText = `left:${left}%;width:calc(${right - left}% + 2px);top:${top}px;height:${height}px;opacity:${opacity}`;
        };
        bar(0, 100, 12, 2, .6);
        bar(0, 0, 6, 14, .6);
        bar(100, 100, 6, 14, .6);
        if (report.deviation)
            bar(share(report.average - report.deviation), share(report.average + report.deviation), 5, 16, .35);
        bar(share(report.average), share(report.average), 2, 22, 1);
        details.appendChild(drawing);
    }

    say(text) { byId('said').textContent = text; }

    describe(found) {
        const model = this.model, row = found.row;
        if (found.call !== undefined)
            return [visibleText(model.nameOf(row)), spanText(model.durationOf(found.call)) + ', from ' + timeText(model, model.times[row])];
        if (found.report)
            return [reportTitle(found.report), found.report.kind === 2 ? '' :
                `${spanText(found.report.minimum * 1e9)} to ${spanText(found.report.maximum * 1e9)} a cycle; as long as the total, told at its end`];
        const level = model.levelOf(row);
        return [visibleText(plainText(model, row, model.textOf(row))).slice(0, 400),
                (level < 0 ? '' : levelNames[level] + ', ') + timeText(model, model.times[row])];
    }

    // ---- levels ---------------------------------------------------------------------------------------------------------------

    makeLevels() {
        const counts = new Array(8).fill(0), model = this.model;
        for (let row = 0; row < model.count; ++row)
            ++counts[model.levelOf(row) + 1];
        const colours = ['other', 'error', 'error', 'error', 'warning', 'info', 'trace', 'profile'];
        counts.forEach((count, bit) => {
            if (!count)
                return;
            const button = document.createElement('button'), name = bit ? levelNames[bit - 1] : 'no level';
            button.style.color = `var(--${colours[bit]})`;
            button.appendChild(document.createElement('i'));
            button.appendChild(document.createElement('span')).textContent = name;
            button.title = plural(count, 'line');
            button.setAttribute('aria-pressed', 'true');
            button.dataset.level = name;
            button.onclick = () => {
                this.mask ^= 1 << bit;
                button.setAttribute('aria-pressed', String((this.mask & 1 << bit) !== 0));
                model.setFilter(this.mask);
                this.listLines();
                this.picture.ask();
            };
            byId('levels').appendChild(button);
        });
    }

    /** Puts into the list what levels and search leave. */
    listLines() {
        const model = this.model, isAll = this.mask === 0xffff, isShown = row => (this.mask & model.bitOf(row)) !== 0;
        let lines = null;
        if (this.isOnly && byId('query').value)
            lines = isAll ? this.hits : this.hits.filter(isShown);
        else if (!isAll)
            lines = new Uint32Array(model.count).map((_, row) => row).filter(isShown);
        this.list.setLines(lines);
        this.onView(false);
    }

    // ---- search ---------------------------------------------------------------------------------------------------------------

    makeSearch() {
        byId('query').addEventListener('input', () => this.search(byId('query').value));
        byId('query').addEventListener('keydown', event => {
            if (event.key === 'Enter') {
                event.preventDefault();
                this.stepHit(event.shiftKey ? -1 : 1);
            } else if (event.key === 'Escape') {
                byId('query').value = '';
                this.search('');
                byId('lanes').focus();
            }
        });
        byId('next').onclick = () => this.stepHit(1);
        byId('previous').onclick = () => this.stepHit(-1);
        byId('only').onclick = () => {
            this.isOnly = !this.isOnly;
            byId('only').setAttribute('aria-pressed', String(this.isOnly));
            this.listLines();
        };
        this.tellHits();
    }

    /** Looks through all texts, some thousands between two frames. Resolves when it is through; a later search ends it. */
    async search(query) {
        const model = this.model, wanted = query.toLowerCase(), turn = this.turn = {}, hits = [];
        this.list.query = query;
        this.hit = -1;
        if (wanted) {
            // Without a digit in it, the query lies within one piece of a form, so each form is looked at once.
            const hasDigits = /[0-9]/.test(wanted), contains = text => text.toLowerCase().includes(wanted);
            const formHits = hasDigits ? null : model.forms.map(form => form.pieces.some(contains));
            for (let row = 0; row < model.count;) {
                for (const end = Math.min(model.count, row + (hasDigits ? 20000 : 500000)); row < end; ++row)
                    if (formHits ? formHits[model.formOf[row]] : contains(model.textOf(row)))
                        hits.push(row);
                if (row < model.count) {
                    await new Promise(done => requestAnimationFrame(done));
                    if (this.turn !== turn)
                        return;
                }
            }
        }
        this.hits = Uint32Array.from(hits);
        this.picture.hits = this.hits;
        this.tellHits();
        this.say(wanted ? plural(hits.length, 'hit') : '');
        if (this.isOnly)
            this.listLines();
        this.list.ask();
        this.picture.ask();
        if (hits.length)
            this.stepHit(1, true);
    }

    tellHits() {
        const found = byId('found'), hasQuery = byId('query').value !== '', count = this.hits.length;
        found.textContent = !hasQuery ? '' : count === 0 ? 'no hit' : this.hit < 0 ? count.toLocaleString('en')
            : (this.hit + 1).toLocaleString('en') + ' / ' + count.toLocaleString('en');
        found.className = hasQuery && count === 0 ? 'none' : '';
        byId('next').disabled = byId('previous').disabled = count === 0;
    }

    /** The next hit behind the chosen row, or behind the start of the view. */
    stepHit(step, isFirst = false) {
        const count = this.hits.length;
        if (!count)
            return;
        if (this.hit < 0) {
            const from = this.picture.chosen >= 0 && this.isInView(this.picture.chosen) ? this.picture.chosen + (isFirst ? 0 : 1)
                : firstAtLeast(this.model.times, this.picture.start);
            const next = firstAtLeast(this.hits, from);
            this.hit = step > 0 ? next % count : (next - 1 + count) % count;
        } else {
            this.hit = (this.hit + step + count) % count;
        }
        this.choose(this.hits[this.hit]);
        this.tellHits();
    }

    // ---- colours, widths, help ---------------------------------------------------------------------------------------------

    makeTheme() {
        const system = matchMedia('(prefers-color-scheme: dark)'), names = ['as the system', 'light', 'dark'];
        this.theme = 0;
        const apply = () => {
            const isDark = this.theme === 2 || (this.theme === 0 && system.matches);
            document.documentElement.dataset.colours = isDark ? 'dark' : 'light';
            byId('theme').setAttribute('aria-label', 'Colours: ' + names[this.theme]);
            this.picture.recolour();
        };
        byId('theme').onclick = () => {
            // The first step is the one that shows.
            this.theme = this.theme === 0 ? (system.matches ? 1 : 2) : this.theme === (system.matches ? 1 : 2) ? 3 - this.theme : 0;
            apply();
            this.say('Colours: ' + names[this.theme]);
        };
        system.addEventListener('change', apply);
        apply();
    }

    makeSplit() {
        const split = byId('split');
        const set = percent => {
            percent = Math.max(15, Math.min(80, percent));
            byId('side').style.width = percent + '%';
            split.setAttribute('aria-valuenow', Math.round(percent));
        };
        split.addEventListener('pointerdown', event => split.setPointerCapture(event.pointerId));
        split.addEventListener('pointermove', event => {
            if (split.hasPointerCapture(event.pointerId))
                set(100 - 100 * event.clientX / innerWidth);
        });
        split.addEventListener('keydown', event => {
            const step = {ArrowLeft: 2, ArrowRight: -2}[event.key];
            if (step) {
                set(+split.getAttribute('aria-valuenow') + step);
                event.preventDefault();
                event.stopPropagation();
            }
        });
    }

    makeHelp() {
        const keys = [['Wheel', 'zoom where the pointer is'], ['Shift + wheel', 'move through time'], ['Wheel over names', 'move through the lanes'],
            ['Drag', 'move in both directions'], ['Shift + drag', 'measure a span, and zoom into it'], ['Click', 'choose a call, mark or loss'],
            ['Double click', 'zoom to it'], ['Click on a name', 'fold or unfold the lane'],
            ['Click on a run', 'show it alone'], ['r', 'show the next run'], ['f', 'fold or unfold all lanes'], ['\u2190 \u2192  a d', 'move through time'],
            ['\u2191 \u2193', 'move through the lanes, or the list'], ['+ \u2212  w s', 'zoom'], ['0', 'show all'],
            ['Enter', 'zoom to what is chosen'], [', .', 'the line before, the line behind'], ['[ ]', 'the loss before, the loss behind'],
            ['e', 'the next error'], ['/', 'search'], ['n p', 'next and previous hit'], ['t', 'light, dark, or as the system'], ['Esc', 'choose nothing']];
        const help = byId('help'), title = help.appendChild(document.createElement('h2')), list = help.appendChild(document.createElement('dl'));
        title.textContent = 'Keys';
        for (const [key, what] of keys) {
            list.appendChild(document.createElement('dt')).appendChild(document.createElement('kbd')).textContent = key;
            list.appendChild(document.createElement('dd')).textContent = what;
        }
        const close = help.appendChild(document.createElement('button'));
        close.textContent = 'Close';
        close.onclick = () => help.close();
        byId('keys').onclick = () => help.showModal();
    }

    // ---- hands ------------------------------------------------------------------------------------------------------------------

    listenToPointer() {
        const canvas = byId('lanes'), picture = this.picture, at = event => ({x: event.offsetX, y: event.offsetY});
        let pressed = null;
        canvas.addEventListener('wheel', event => {
            event.preventDefault();
            const unit = event.deltaMode === 1 ? 20 : 1, {x, y} = at(event);
            if (x < gutter)
                picture.scrollBy(event.deltaY * unit);
            else if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY))
                picture.panBy((event.deltaX || event.deltaY) * unit);
            else
                picture.zoomAt(x, 1.0015 ** (event.deltaY * unit));
            byId('tip').hidden = true;
        }, {passive: false});
        canvas.addEventListener('pointerdown', event => {
            if (event.button !== 0)
                return;
            canvas.setPointerCapture(event.pointerId);
            pressed = {...at(event), start: picture.start, top: picture.top, moved: false, measures: event.shiftKey};
        });
        canvas.addEventListener('pointermove', event => {
            const {x, y} = picture.pointer = at(event);
            if (pressed && (pressed.moved || Math.abs(x - pressed.x) + Math.abs(y - pressed.y) > 3)) {
                pressed.moved = true;
                byId('tip').hidden = true;
                if (pressed.measures) {
                    picture.measured = [picture.timeAt(pressed.x), picture.timeAt(x)];
                } else {
                    canvas.classList.add('pans');
                    picture.top = pressed.top;
                    picture.scrollBy(pressed.y - y);
                    picture.setView(pressed.start + (pressed.x - x) * picture.span / picture.plotWidth, picture.span);
                }
            } else if (!pressed) {
                this.showTip(x, y);
            }
            picture.ask();
        });
        const release = event => {
            canvas.classList.remove('pans');
            if (!pressed)
                return;
            const {x, y} = at(event), was = pressed;
            pressed = null;
            if (picture.measured) {
                const [from, to] = [...picture.measured].sort((a, b) => a - b);
                picture.measured = null;
                if (to > from)
                    picture.setView(from, to - from);
                this.say(spanText(to - from) + ' shown');
            } else if (!was.moved && event.type === 'pointerup') {
                this.click(x, y);
            }
        };
        canvas.addEventListener('pointerup', release);
        canvas.addEventListener('pointercancel', release);
        canvas.addEventListener('dblclick', event => {
            const found = picture.find(event.offsetX, event.offsetY);
            if (found)
                this.choose(found.row, true);
        });
        canvas.addEventListener('pointerleave', () => {
            picture.pointer = null;
            byId('tip').hidden = true;
            picture.ask();
        });
    }

    click(x, y) {
        const picture = this.picture;
        const place = picture.placeAt(y);
        if (place && place.head)
            return picture.showRun(place.head);
        if (x < gutter) {
            if (place && place.lane.levels.length > 1)
                picture.fold([place.lane], !place.lane.isFolded);
            return;
        }
        const found = picture.find(x, y);
        this.choose(found ? found.row : -1);
        if (found)
            this.say(this.describe(found).join(', '));
    }

    showTip(x, y) {
        const tip = byId('tip'), found = this.picture.find(x, y);
        tip.hidden = !found;
        if (!found)
            return;
        const [title, more] = this.describe(found);
        tip.textContent = '';
        tip.appendChild(document.createElement('b')).textContent = title;
        tip.appendChild(document.createElement('span')).textContent = more;
        if (found.count > 1)
            tip.appendChild(document.createElement('span')).textContent = `the largest or nearest of ${found.count.toLocaleString('en')} here`;
        const box = tip.getBoundingClientRect(), host = byId('picture').getBoundingClientRect(), shift = byId('lanes').offsetTop;
        tip.style.left = Math.max(4, Math.min(x + 14, host.width - box.width - 8)) + 'px';
        tip.style.top = (y + shift + 18 + box.height > host.height ? y + shift - box.height - 10 : y + shift + 18) + 'px';
    }

    listenToOverview() {
        const overview = byId('overview'), picture = this.picture;
        const move = event => picture.setView(event.offsetX / overview.clientWidth * this.model.end - picture.span / 2, picture.span);
        overview.addEventListener('pointerdown', event => { overview.setPointerCapture(event.pointerId); move(event); });
        overview.addEventListener('pointermove', event => { if (overview.hasPointerCapture(event.pointerId)) move(event); });
        overview.addEventListener('wheel', event => {
            event.preventDefault();
            const factor = 1.0015 ** event.deltaY, middle = picture.start + picture.span / 2;
            picture.setView(middle - picture.span * factor / 2, picture.span * factor);
        }, {passive: false});
    }

    onKey(event) {
        if (event.ctrlKey || event.altKey || event.metaKey || byId('help').open || /^(INPUT)$/.test(event.target.tagName))
            return;
        if (event.target.tagName === 'BUTTON' && (event.key === 'Enter' || event.key === ' '))
            return;
        const picture = this.picture, middle = gutter + picture.plotWidth / 2, isList = document.activeElement === byId('list');
        const chosen = picture.chosen, step = event.shiftKey ? .6 : .15;
        const stepList = lines => {
            if (!this.list.length)
                return;
            const from = chosen >= 0 ? this.list.indexOf(chosen) : Math.floor(this.list.top) - Math.sign(lines);
            this.choose(this.list.rowAt(Math.max(0, Math.min(this.list.length - 1, from + lines))));
        };
        const stepTo = (is, direction) => {
            for (let row = (chosen < 0 ? firstAtLeast(this.model.times, picture.start) - (direction > 0 ? 1 : 0) : chosen) + direction;
                 row >= 0 && row < this.model.count; row += direction)
                if (is(row))
                    return this.choose(row);
            this.say('There is none in that direction');
        };
        const showNextRun = () => {
            const heads = picture.places.filter(place => place.head);
            if (heads.length) {
                this.run = ((this.run === undefined ? -1 : this.run) + 1) % heads.length;
                picture.showRun(heads[this.run].head);
                this.say('run ' + (heads[this.run].head.run + 1) + ' of ' + this.model.meta.sources[heads[this.run].head.source]);
            }
        };
        const isLoss = row => this.model.kindOf(row) === Row.loss;
        const isError = row => this.model.levelOf(row) >= 0 && this.model.levelOf(row) <= 2;
        const actions = {
            ArrowLeft: () => picture.panBy(-picture.plotWidth * step), ArrowRight: () => picture.panBy(picture.plotWidth * step),
            a: () => picture.panBy(-picture.plotWidth * step), d: () => picture.panBy(picture.plotWidth * step),
            ArrowUp: () => isList ? stepList(-1) : picture.scrollBy(-60), ArrowDown: () => isList ? stepList(1) : picture.scrollBy(60),
            PageUp: () => isList ? stepList(-this.list.inSight) : picture.scrollBy(-picture.height * .8),
            PageDown: () => isList ? stepList(this.list.inSight) : picture.scrollBy(picture.height * .8),
            Home: () => isList ? stepList(-this.list.length) : picture.fit(), End: () => stepList(this.list.length),
            '+': () => picture.zoomAt(middle, .6), '=': () => picture.zoomAt(middle, .6), w: () => picture.zoomAt(middle, .6),
            '-': () => picture.zoomAt(middle, 1 / .6), s: () => picture.zoomAt(middle, 1 / .6), 0: () => picture.fit(),
            ',': () => stepList(-1), '.': () => stepList(1), '[': () => stepTo(isLoss, -1), ']': () => stepTo(isLoss, 1),
            r: showNextRun, f: () => picture.fold(this.model.lanes, !this.model.lanes.some(lane => lane.isFolded)),
            e: () => stepTo(isError, 1), n: () => this.stepHit(1), p: () => this.stepHit(-1), t: () => byId('theme').click(),
            '/': () => { byId('query').focus(); byId('query').select(); }, '?': () => byId('help').showModal(),
            Enter: () => { if (chosen >= 0) this.choose(chosen, true); }, Escape: () => this.choose(-1)};
        const action = actions[event.key];
        if (action) {
            event.preventDefault();
            action();
        }
    }
}

async function begin() {
    if (typeof DecompressionStream === 'undefined')
        throw new Error('This browser cannot unpack the log: it is older than 2023.');
    const element = byId('data');
    const model = new Model(await unpack(element.textContent.trim()));
    element.remove();
    window.timeline = new Page(model);
}

window.ready = begin().catch(failure => {
    byId('wait').hidden = false;
    byId('wait').textContent = 'The page cannot be shown. ' + failure.message;
    throw failure;
});
