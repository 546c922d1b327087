#!/usr/bin/env python3
"""Makes timelines with vnlog and uses them in a headless Chromium: checktimeline.py CHROMIUM VNLOG WORK SHOTS.

What the page shows is compared with what this script finds in the logs by its own reading: texts, calls, losses, hits. Hands are
those of a reader: wheel, drag, keys, clicks. Each wait is for a frame or an event of the browser. Pictures are left in SHOTS.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / 'site'))
from browser import Browser  # noqa: E402
from generatelog import generate  # noqa: E402

CHROMIUM, VNLOG = sys.argv[1:3]
WORK, SHOTS = (pathlib.Path(argument).resolve() for argument in sys.argv[3:5])
failures = 0

STAMPED = re.compile(rb'^(\d{10}) (\d{10}) \(0x([0-9a-f]{8})\) ([A-Z][A-Za-z ]*): (.*)$', re.S)


def expect(what, is_right, found=''):
    global failures
    if not is_right:
        failures += 1
        print(f'not so: {what}' + (f'; found {found}' if found != '' else ''))


def same(what, found, expected):
    expect(what, found == expected, f'{found!r}, not {expected!r}')


def vnlog(*arguments, **options):
    return subprocess.run([VNLOG, 'timeline', *map(str, arguments)], capture_output=True, **options)


def page_of(log, *options):
    page = WORK / (log.stem + '.html')
    run = vnlog('-o', page, *options, log)
    same(f'{log.name}: exit code', run.returncode, 0)
    same(f'{log.name}: nothing is said', run.stdout + run.stderr, b'')
    return page


# ---- the log as this script reads it ----------------------------------------------------------------------------------------------

def read(log):
    """(ticks, thread, level, text) of each line but the empty one of the banner, in order; None for what is missing."""
    lines, ticks = [], 0
    for line in log.read_bytes().split(b'\n')[:-1]:
        found = STAMPED.match(line)
        if found:
            ticks = int(found[1]) << 32 | int(found[2])
            lines.append((ticks, int(found[3], 16), found[4].decode(), found[5].decode(errors='replace')))
        else:
            lines.append((ticks, None, None, line.decode(errors='replace')))
    if lines[0][3].startswith('====='):
        del lines[2]
    return lines


def calls_of(lines):
    """(thread, level, name, ticks of begin, ticks of end or None) of calls without losses among them."""
    calls, stacks = [], {}
    for ticks, thread, level, text in lines:
        if level != 'Tracing':
            continue
        stack, drawn = stacks.setdefault(thread, []), text.lstrip(' |')
        if drawn.startswith('+ '):
            stack.append(len(calls))
            calls.append([thread, len(stack) - 1, drawn[2:], ticks, None])
        elif drawn == '/':
            calls[stack.pop()][4] = ticks
    return sorted(map(tuple, calls), key=str)


MODEL_CALLS = '''(() => { const m = timeline.model, c = m.calls, calls = [];
    for (let i = 0; i < c.count; ++i)
        calls.push([m.lanes[m.laneOf[c.entered[i]]].meta.thread, c.level[i], m.nameOf(c.entered[i]), m.times[c.entered[i]],
                    c.left[i] === 0xffffffff ? null : m.times[c.left[i]]]);
    return calls; })()'''
# The colour of the lanes' canvas at a place: "r,g,b".
PIXEL = '''(x, y) => { const g = Object.assign(document.createElement('canvas'), {width: 1, height: 1}).getContext('2d', {willReadFrequently: true});
    g.drawImage(document.getElementById('lanes'), -Math.round(x), -Math.round(y));
    return [...g.getImageData(0, 0, 1, 1).data].slice(0, 3).join(); }'''


def colour(browser, name):
    """A colour of the style as "r,g,b"."""
    return browser.run(f'''(() => {{ const g = document.createElement('canvas').getContext('2d');
        g.fillStyle = getComputedStyle(document.documentElement).getPropertyValue('--{name}').trim(); g.fillRect(0, 0, 1, 1);
        return [...g.getImageData(0, 0, 1, 1).data].slice(0, 3).join(); }})()''')


class Reader:
    """A page in the browser, and the hands of who reads it."""

    def __init__(self, browser, page):
        self.browser = browser
        browser.open(page.as_uri())
        browser.run('ready.then(() => 1)')
        browser.settle()

    def run(self, script):
        return self.browser.run(script)

    def mouse(self, kind, x, y, **more):
        self.browser.call('Input.dispatchMouseEvent', type=kind, x=x, y=y, **more)

    def drag(self, path, **more):
        self.mouse('mousePressed', *path[0], button='left', clickCount=1, **more)
        for place in path[1:]:
            self.mouse('mouseMoved', *place, button='left', buttons=1, **more)
        self.mouse('mouseReleased', *path[-1], button='left', clickCount=1, **more)
        self.browser.settle()

    def click(self, x, y, count=1):
        for kind in ('mousePressed', 'mouseReleased'):
            self.mouse(kind, x, y, button='left', clickCount=count)
        self.browser.settle()

    def key(self, key, code=0, **more):
        text = {'text': key} if len(key) == 1 else {'text': '\r'} if key == 'Enter' else {}
        for kind in ('keyDown', 'keyUp'):
            self.browser.call('Input.dispatchKeyEvent', type=kind, key=key, windowsVirtualKeyCode=code,
                              **(text if kind == 'keyDown' else {}), **more)
        self.browser.settle()

    def view(self):
        return self.run('[timeline.picture.start, timeline.picture.span]')

    def canvas(self):
        """Left and top of the lanes' canvas, width and height."""
        return self.run('(() => { const b = document.getElementById("lanes").getBoundingClientRect(); '
                        'return [b.x, b.y, b.width, b.height]; })()')

    def search(self, text):
        self.run('document.getElementById("lanes").focus()')
        self.key('/')
        self.browser.call('Input.insertText', text=text)
        # The search is through when it has told its hits.
        self.browser.run_until(f'timeline.list.query === {json.dumps(text)} && document.getElementById("found").textContent !== "" '
                               '&& (timeline.hit >= 0 || timeline.hits.length === 0)')
        self.browser.settle()

    def listed(self):
        """Row numbers in sight of the list, from the top."""
        return self.run('[...document.querySelectorAll("#rows .row")].filter(row => row.style.display !== "none")'
                        '.map(row => [+row.dataset.index, +row.dataset.row]).sort((a, b) => a[0] - b[0]).map(pair => pair[1])')

    def is_quiet(self, what):
        """Nothing has been asked for but the page, and no script has failed or complained."""
        for event in self.browser.events:
            if event['method'] == 'Network.requestWillBeSent':
                url = event['params']['request']['url']
                expect(f'{what}: nothing is loaded but the page', url.startswith(('file:', 'data:')), url)
            expect(f'{what}: scripts are quiet',
                   event['method'] not in ('Runtime.exceptionThrown', 'Log.entryAdded', 'Runtime.consoleAPICalled'),
                   json.dumps(event.get('params'))[:500])

    def shoot(self, name):
        self.browser.settle()
        self.browser.shoot(SHOTS / f'{name}.png')


# ---- checks -------------------------------------------------------------------------------------------------------------------------

def check_content(browser):
    """Texts, times, calls, losses and reports are those of the log; bars and losses have their colours in the picture."""
    log = WORK / 'content.log'
    with open(log, 'wb') as file:
        generate(60000, file.write, seed=3)
    lines = read(log)
    reader = Reader(browser, page_of(log))
    rows = reader.run('Array.from({length: timeline.model.count}, (_, row) => [timeline.model.times[row], '
                      'timeline.model.lanes[timeline.model.laneOf[row]].meta.thread, timeline.model.textOf(row)])')
    same('number of rows', len(rows), len(lines))
    wrong = [(row, line) for row, line in zip(rows, lines)
             if row[0] != line[0] or row[2] != line[3] or (line[1] is not None and row[1] != line[1])]
    same('rows that differ from their lines', wrong[:3], [])
    lost = [(ticks, thread, int(text[16:-1])) for ticks, thread, level, text in lines if text.startswith('Event overflow [')]
    expect('the log has losses', len(lost) > 0)
    same('losses', reader.run('[...timeline.model.losses].map(([row, lost]) => [timeline.model.times[row], '
                              'timeline.model.lanes[timeline.model.laneOf[row]].meta.thread, lost])'), [list(loss) for loss in lost])
    same('calls', sorted(map(tuple, reader.run(MODEL_CALLS)), key=str), calls_of(lines))
    reports = [(ticks, text) for ticks, _, _, text in lines if 'Profiler pass' in text]
    same('reports', reader.run('timeline.model.meta.reports.map(report => [timeline.model.times[report.row], report.name, report.cycles])'),
         [[ticks, text[len('Pass Profiler '):-1], 8] for ticks, text in reports])
    shown = reader.run('document.getElementById("facts").textContent')
    expect('facts tell what was lost', f'{sum(loss[2] for loss in lost):,} lost' in shown, shown)
    check_loss(reader, lost[0], lines)
    check_report(reader)
    reader.is_quiet('content')


def check_loss(reader, loss, lines):
    """Its lane is red from the loss to the thread's next line."""
    ticks, thread, _ = loss
    after = next(line[0] for line in lines if line[1] == thread and line[0] > ticks)
    reader.run(f'timeline.picture.setView({ticks - (after - ticks)}, {3 * (after - ticks)})')
    reader.browser.settle()
    x, y, height = reader.run(f'''(() => {{ const p = timeline.picture, place = p.places.find(place => place.lane && place.lane.meta.thread ===
        {thread}); return [p.xOf({ticks}), place.y + 30 - p.top, place.height]; }})()''')
    same('the line where messages were lost', reader.run(f'({PIXEL})({x}, {y} + 40)'), colour(reader.browser, 'lost'))
    inside = [int(part) for part in reader.run(f'({PIXEL})({x} + 40, {y} + 40)').split(',')]
    outside = [int(part) for part in reader.run(f'({PIXEL})({x} - 6, {y} + 40)').split(',')]
    expect('the span without messages is reddish', inside[0] - inside[1] > outside[0] - outside[1] + 25, (inside, outside))
    expect('the lane is high enough to be seen', height >= 24, height)
    reader.shoot('loss-light')


def check_report(reader):
    """A report is a bar as long as its total, which ends where it was told; a click on it tells its figures."""
    row, end, total = reader.run('(r => [r.row, timeline.model.times[r.row], r.total * 1e9])(timeline.model.meta.reports[0])')
    reader.run(f'timeline.picture.top = 0; timeline.picture.setView({end - total * 1.3}, {total * 1.6})')
    reader.browser.settle()
    found = reader.run(f'''(() => {{ const p = timeline.picture, place = p.places.find(place => place.reports >= 0),
        y = place.reports + 6 - p.top + 30;
        return [{total * .02}, {total * .5}, {total * .98}, {total * 1.05}, {-total * .05}].map(before => {{
            const found = p.find(p.xOf({end} - before), y); return found ? found.row : -1; }}); }})()''')
    same('rows found along the bar of a report, and beside it', found[:4], [row, row, row, -1])
    x, y, _, _ = reader.canvas()
    at = reader.run(f'''(() => {{ const p = timeline.picture, place = p.places.find(place => place.reports >= 0);
        return [p.xOf({end - total / 2}), place.reports + 6 - p.top + 30]; }})()''')
    reader.click(x + at[0], y + at[1])
    details = reader.run('document.getElementById("details").innerText')
    expect('details of a report', all(word in details for word in ('Cycles', 'Minimum', 'Maximum', 'Deviation')), details)
    reader.shoot('report-light')


NESTED = '''===== Message Logger Startup =====
===== Started on Sun Nov 22 17:21:21 2026

===== Clock Frequency: 0.000001000
0000000000 0000001000 (0x0000000a) Tracing: + outer
0000000000 0000002000 (0x0000000a) Tracing:   + inner
0000000000 0000003000 (0x0000000a) Tracing:   | | a text within
0000000000 0000003500 (0x0000000b) Warning: Net </script><script>document.title = 'broken'</script> &amp; <b>bold</b>
0000000000 0000004000 (0x0000000a) Tracing:   | /
0000000000 0000006000 (0x0000000a) Tracing:   + inner
0000000000 0000007000 (0x0000000a) Tracing:   | + innermost
0000000000 0000008000 (0x0000000a) Tracing:   | | /
0000000000 0000009000 (0x0000000a) Tracing:   | /
0000000000 0000010000 (0x0000000a) Tracing:   /
0000000000 0000011000 (0x0000000a) Tracing: + unended
0000000000 0000012000 (0x0000000b) Error: Net the end
'''


def check_bars(browser):
    """Calls lie where their times say, each below the one around it; texts are shown as texts, whatever is in them."""
    log = WORK / "nested <b>&amp;'\".log"
    log.write_text(NESTED)
    reader = Reader(browser, page_of(log))
    same('title', reader.run('document.title'), log.name)
    expect('no element comes from the log', reader.run('document.querySelectorAll("b:not(#facts b), header script").length') == 0)
    reader.run('timeline.picture.setView(0, 12.5e6)')  # a tick is a microsecond
    browser.settle()
    millisecond = 1e6
    cases = [  # time, level, what lies there
        (1.1, 0, 'outer'), (9.9, 0, 'outer'), (10.5, 0, None), (11.5, 0, 'unended'), (1.5, 1, None), (2.1, 1, 'inner'), (3.9, 1, 'inner'),
        (5.0, 1, None), (6.1, 1, 'inner'), (8.9, 1, 'inner'), (6.5, 2, None), (7.1, 2, 'innermost'), (7.9, 2, 'innermost'), (8.5, 2, None)]
    back = colour(browser, 'band')
    grid = colour(browser, 'grid')
    for time, level, name in cases:
        x, y, found, pixel = reader.run(f'''(() => {{ const p = timeline.picture, place = p.places.find(place => place.lane &&
            place.lane.meta.thread === 10), x = Math.round(p.xOf({time * millisecond})), y = 30 + place.calls + {level} * 18 + 14 - p.top;
            const found = p.find(x, y); return [x, y, found && found.call !== undefined ? timeline.model.nameOf(found.row) : null,
            ({PIXEL})(x, y)]; }})()''')
        same(f'call at {time} ms on level {level}', found, name)
        expect(f'a bar is drawn at {time} ms on level {level}: {name is not None}', (pixel not in (back, grid)) == (name is not None), pixel)
    # A click chooses the call, and tells its path; a double click zooms to it.
    left, top, _, _ = reader.canvas()
    place = reader.run('''(() => { const p = timeline.picture, place = p.places.find(place => place.lane && place.lane.meta.thread === 10);
        return [p.xOf(7.5e6), 30 + place.calls + 2 * 18 + 8 - p.top]; })()''')
    reader.click(left + place[0], top + place[1])
    details = reader.run('document.getElementById("details").innerText')
    expect('the path of a call', 'outer › inner › innermost' in details, details)
    expect('the duration of a call', 'Duration\n1\u202fms' in details, details)
    row = reader.run('timeline.picture.chosen')
    same('the list shows what was chosen', reader.run('document.querySelector("#rows .chosen").dataset.row'), str(row))
    reader.click(left + place[0], top + place[1], count=2)
    start, span = reader.view()
    expect('a double click zooms to the call', abs(span - 1.2e6) < 1 and abs(start - 6.9e6) < 1, (start, span))
    # Folded, only the outermost calls stay.
    before = reader.run('timeline.picture.lanesHeight')
    reader.key('f')
    expect('folded lanes are lower', reader.run('timeline.picture.lanesHeight') < before)
    reader.key('f')
    same('unfolded lanes are as before', reader.run('timeline.picture.lanesHeight'), before)
    reader.key('0')
    reader.shoot('nested-light')
    reader.is_quiet('nested')


def check_large(browser, log, counts):
    """A million lines: the page is small, each turn of the wheel draws a frame, and a frame draws what pixels can show."""
    page = page_of(log)
    share = page.stat().st_size / log.stat().st_size
    print(f'{log.stat().st_size:,} bytes of log, {page.stat().st_size:,} bytes of page: {share:.3f}')
    expect('the page has at most a third of the log\'s size', share <= 1 / 3, share)
    reader = Reader(browser, page)
    same('lines', reader.run('timeline.model.count'), counts['lines'] - 1)
    same('calls', reader.run('timeline.model.calls.count'), counts['calls'])
    same('lost', reader.run('timeline.model.lanes.reduce((sum, lane) => sum + lane.lostCount, 0)'), counts['lost'])
    same('reports', reader.run('timeline.model.meta.reports.length'), counts['reports'])
    reader.shoot('million-light')
    left, top, width, height = reader.canvas()
    most = reader.run('timeline.picture.plotWidth * timeline.picture.places.reduce((sum, place) => sum + (place.levels || 0) + 3, 0)')
    times, x, y = [], left + 600, top + 300
    at = reader.run('timeline.picture.timeAt(600)')
    for turn in range(60):
        frames, span = reader.run('[timeline.picture.frames, timeline.picture.span]')
        reader.mouse('mouseWheel', x, y, deltaX=0, deltaY=-120)
        browser.run_until(f'timeline.picture.frames > {frames} && timeline.picture.span < {span}')
        drawn, last = reader.run('[timeline.picture.drawn, timeline.picture.lastFrame]')
        times.append(last)
        expect(f'turn {turn}: no more is drawn than pixels show', drawn <= most, drawn)
    now = reader.run('timeline.picture.timeAt(600)')
    expect('the wheel keeps the time below the pointer', abs(now - at) <= max(1, abs(reader.view()[1])) / 100, (at, now))
    expect('the wheel has zoomed in', reader.view()[1] < reader.run('timeline.model.end') / 1000, reader.view())
    reader.shoot('million-close-light')
    for turn in range(60):
        frames = reader.run('timeline.picture.frames')
        reader.mouse('mouseWheel', x, y, deltaX=0, deltaY=120)
        browser.run_until(f'timeline.picture.frames > {frames}')
        times.append(reader.run('timeline.picture.lastFrame'))
    for _ in range(40):
        frames = reader.run('timeline.picture.frames')
        reader.mouse('mouseWheel', x, y, deltaX=60, deltaY=0)
        browser.run_until(f'timeline.picture.frames > {frames}')
        times.append(reader.run('timeline.picture.lastFrame'))
    times.sort()
    print(f'{len(times)} frames, one for each turn of the wheel; their scripts took {times[len(times) // 2]:.1f} ms (median), '
          f'{times[-1]:.1f} ms (longest)')
    same('elements of the list', reader.run('document.querySelectorAll("#rows .row").length < 100'), True)
    # To the end of the list, by its own bar: it ends at the last line.
    reader.run('(bar => { bar.scrollTop = bar.scrollHeight; })(document.getElementById("bar"))')
    last = counts['lines'] - 2
    browser.run_until(f'timeline.list.range()[1] === {last} && [...document.querySelectorAll("#rows .row")]'
                      f'.some(row => row.style.display !== "none" && +row.dataset.row === {last})')
    browser.run_until('document.getElementById("details").dataset.span === timeline.picture.start + " " + timeline.picture.stop')
    browser.settle()
    same('the list ends with the last line, also once there is less room for it', reader.listed()[-1], last)
    check_search(browser, reader, log)
    reader.is_quiet('a million lines')


def check_search(browser, reader, log):
    """Finds what is there, with and without digits in the query; steps through it; picture and list come along."""
    texts = [line[3] for line in read(log)]
    for query in ('TRUNCATED', 'tile 4711 ', 'no such text', 'sky3.tex'):
        expected = [row for row, text in enumerate(texts) if query.lower() in text.lower()]
        reader.search(query)
        same(f'hits of "{query}"', reader.run('[...timeline.hits]'), expected)
        shown = reader.run('document.getElementById("found").textContent')
        expect(f'the count of "{query}" is told', shown.endswith(f'/ {len(expected):,}') if expected else shown == 'no hit', shown)
        reader.key('Escape')
    expected = [row for row, text in enumerate(texts) if 'truncated' in text]
    reader.key('0')
    reader.search('truncated')
    first = reader.run('timeline.picture.chosen')
    expect('the first hit is chosen', first in expected, first)
    for _ in range(3):
        reader.key('Enter', 13)
    chosen = reader.run('timeline.picture.chosen')
    same('three steps on', chosen, expected[(expected.index(first) + 3) % len(expected)])
    expect('the hit is in the view', reader.run(f'timeline.isInView({chosen})'))
    expect('the hit is in the list', chosen in reader.listed(), chosen)
    same('it is marked there', reader.run('document.querySelector("#rows .chosen mark").textContent'), 'truncated')
    reader.browser.click('#only')
    browser.settle()
    same('only hits are listed', reader.run('[...timeline.list.lines]'), expected)
    reader.shoot('search-light')
    reader.browser.click('#only')
    reader.run('document.getElementById("query").focus()')
    reader.key('Escape')


def check_hands(browser):
    """Keys and drags move the view; list and picture follow each other; all can be done without a mouse."""
    reader = Reader(browser, WORK / 'content.html')
    left, top, width, height = reader.canvas()
    end = reader.run('timeline.model.end')
    start, span = reader.view()
    expect('all is shown in the beginning', start <= 0 and start + span >= end, (start, span))
    for _ in range(8):
        reader.key('+')
    _, closer = reader.view()
    expect('plus zooms in', abs(closer - span * .6 ** 8) < 1, closer)
    first = reader.listed()[0]
    start, span = reader.view()
    times = reader.run('Array.from(timeline.model.times)')
    same('the list begins where the view does', first, next(row for row, time in enumerate(times) if time >= start))
    reader.key('ArrowRight', 39)
    expect('the right arrow moves on', reader.view()[0] > start, reader.view())
    same('the list has come along', reader.listed()[0], next(row for row, time in enumerate(times) if time >= reader.view()[0]))
    start, span = reader.view()
    reader.drag([(left + 700, top + 200), (left + 650, top + 200), (left + 500, top + 200)])
    moved = reader.view()[0] - start
    expect('a drag moves the view by its length', abs(moved / span * reader.run('timeline.picture.plotWidth') - 200) < 1.5, moved)
    from_time, to_time = reader.run('[timeline.picture.timeAt(300), timeline.picture.timeAt(600)]')
    reader.drag([(left + 300, top + 200), (left + 400, top + 200), (left + 600, top + 200)], modifiers=8)
    start, span = reader.view()
    expect('a drag with shift zooms to its span', abs(start - from_time) < 2 and abs(span - (to_time - from_time)) < 2, (start, span))
    # The list moves the picture.
    box = reader.run('(b => [b.x, b.y])(document.getElementById("list").getBoundingClientRect())')
    for _ in range(30):
        reader.mouse('mouseWheel', box[0] + 100, box[1] + 100, deltaX=0, deltaY=600)
    browser.settle()
    row = reader.listed()[0]
    start, span = reader.view()
    expect('the picture shows what the list was moved to', start <= times[row] <= start + span, (start, span, times[row]))
    # A click in the list chooses, and so do the arrows; the element is told to readers of the screen.
    reader.click(box[0] + 200, box[1] + 5 * 22 + 11)
    chosen = reader.run('timeline.picture.chosen')
    same('a click in the list chooses its line', chosen, row + 5)
    reader.run('document.getElementById("list").focus()')
    reader.key('ArrowDown', 40)
    same('the arrow chooses the next line', reader.run('timeline.picture.chosen'), chosen + 1)
    same('the active element of the list', reader.run('document.getElementById(document.getElementById("list")'
                                                      '.getAttribute("aria-activedescendant")).dataset.row'), str(chosen + 1))
    same('it is told as selected', reader.run('document.querySelector("#rows [aria-selected=true]").dataset.row'), str(chosen + 1))
    # What the calls in the view took, by function.
    reader.run('timeline.choose(-1); timeline.picture.setView(2e6, 4e6)')
    browser.run_until('document.getElementById("details").dataset.span === "2000000 6000000"')
    check_sums(reader, 2e6, 6e6)
    # Losses by key.
    reader.run('document.getElementById("lanes").focus()')
    reader.key('0')
    reader.key('Escape')
    reader.key(']')
    same('a key leads to a loss', reader.run('timeline.model.kindOf(timeline.picture.chosen)'), 1)
    # Levels.
    count = reader.run('timeline.list.length')
    informational = reader.run('Array.from({length: timeline.model.count}, (_, row) => timeline.model.levelOf(row)).filter(l => l === 4).length')
    browser.click('#levels [data-level=Informational]')
    browser.settle()
    same('a level that is switched off isn\'t listed', reader.run('timeline.list.length'), count - informational)
    browser.click('#levels [data-level=Informational]')
    # Every control can be reached and has a name; the help opens and closes by keys.
    nameless = reader.run('''[...document.querySelectorAll('button, input, canvas[tabindex], [role=listbox], [role=separator]')].filter(element =>
        !(element.getAttribute('aria-label') || element.textContent.trim())).map(element => element.outerHTML)''')
    same('controls without a name', nameless, [])
    reader.run('document.getElementById("lanes").focus()')
    reader.key('?')
    expect('the help is open', reader.run('document.getElementById("help").open'))
    reader.shoot('help-light')
    reader.key('Escape', 27)
    expect('the help is closed', not reader.run('document.getElementById("help").open'))
    reached = set()
    for _ in range(40):
        reader.key('Tab', 9)
        reached.add(reader.run('document.activeElement.id'))
    expect('Tab leads to all parts', {'lanes', 'list', 'query', 'split', 'fit', 'theme', 'keys'} <= reached, reached)
    reader.is_quiet('hands')


def check_sums(reader, start, stop):
    """Calls, total and own time of each function between two times, reckoned from the log."""
    lines = read(WORK / 'content.log')
    sums, stacks = {}, {}

    def add(thread, time):
        # The innermost call runs itself, those around it run as well.
        for depth, entry in enumerate(reversed(stacks.get(thread, []))):
            begun = max(entry['since'], start)
            if min(time, stop) > begun:
                sums[entry['name']]['total'] += min(time, stop) - begun 
                sums[entry['name']]['self'] += min(time, stop) - begun if depth == 0 else 0
            entry['since'] = time

    for ticks, thread, level, text in lines:
        if level != 'Tracing':
            continue
        drawn, stack = text.lstrip(' |'), stacks.setdefault(thread, [])
        if drawn.startswith('+ '):
            add(thread, ticks)
            sums.setdefault(drawn[2:], {'calls': 0, 'total': 0, 'self': 0})
            stack.append({'name': drawn[2:], 'since': ticks, 'begin': ticks})
        elif drawn == '/':
            add(thread, ticks)
            entry = stack.pop()
            sums[entry['name']]['calls'] += entry['begin'] < stop and ticks >= start
    for thread, stack in stacks.items():
        add(thread, lines[-1][0])
        for entry in stack:
            sums[entry['name']]['calls'] += entry['begin'] < stop
    expected = {name: (sum['calls'], sum['total'], sum['self']) for name, sum in sums.items() if sum['calls']}
    found = {sum['name']: (sum['calls'], sum['total'], sum['self']) for sum in reader.run(f'timeline.model.sumCalls({start}, {stop})')}
    same('sums of calls', {name: tuple(round(number) for number in sum) for name, sum in found.items()}, expected)
    shown = reader.run('[...document.querySelectorAll("#details td button")].map(button => button.textContent)')
    same('functions in the table, the one that took most itself first', shown, sorted(expected, key=lambda name: -expected[name][2])[:12])


CONTRAST = '''(() => {
    const light = c => { const [r, g, b] = c.map(v => (v /= 255) <= .03928 ? v / 12.92 : ((v + .055) / 1.055) ** 2.4);
                         return .2126 * r + .7152 * g + .0722 * b; };
    const canvas = document.createElement('canvas').getContext('2d', {willReadFrequently: true});
    const bytes = name => { canvas.fillStyle = getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim();
                            canvas.fillRect(0, 0, 1, 1); return [...canvas.getImageData(0, 0, 1, 1).data].slice(0, 3); };
    const faint = [];
    for (const text of ['text', 'soft', 'accent', 'lost', 'error', 'warning', 'info', 'trace', 'profile', 'other'])
        for (const back of ['back', 'raised', 'band', 'within']) {
            const [a, b] = [light(bytes(text)), light(bytes(back))].sort((x, y) => y - x);
            if ((a + .05) / (b + .05) < 4.5)
                faint.push(`${text} on ${back}: ${((a + .05) / (b + .05)).toFixed(2)}`);
        }
    return faint; })()'''


def check_colours(browser):
    """Light and dark as the system says, or as the reader says; text stands out in both."""
    backs = {}
    for scheme in ('light', 'dark'):
        browser.set_view(1600, 900, scheme)
        reader = Reader(browser, WORK / 'content.html')
        backs[scheme] = colour(browser, 'back')
        left, top, width, height = reader.canvas()
        same(f'{scheme}: the canvas has the colour', reader.run(f'({PIXEL})({int(width) - 3}, {int(height) - 3})'), backs[scheme])
        same(f'{scheme}: text that is hard to read', reader.run(CONTRAST), [])
        reader.run('timeline.picture.setView(4e6, 1.2e6)')
        reader.shoot(f'close-{scheme}')
    expect('dark is dark', sum(map(int, backs['dark'].split(','))) < 150 < 600 < sum(map(int, backs['light'].split(','))), backs)
    for _ in range(2):
        reader.run('timeline.choose(-1)')
    reader.key('t')
    same('the key changes to light', colour(browser, 'back'), backs['light'])
    reader.key('t')
    same('and to dark', colour(browser, 'back'), backs['dark'])
    browser.set_view(420, 800, 'light')
    reader = Reader(browser, WORK / 'content.html')
    same('nothing reaches beyond a narrow screen', reader.run('document.scrollingElement.scrollWidth'), 420)
    reader.shoot('narrow-light')
    browser.set_view(1600, 900, 'light')
    reader.is_quiet('colours')


def check_odd_logs(browser):
    """Whatever a file holds, the page opens."""
    chance = __import__('random').Random(5)
    banner = NESTED.split('0000000000', 1)[0]
    cases = {
        'empty': b'',
        'no-end': b'0000000000 0000001000 (0x0000000a) Warn',
        'bytes': bytes(chance.randrange(256) for _ in range(30000)),
        'crlf': NESTED.replace('\n', '\r\n').encode(),
        'plain': b'one\n+ f\n  | text\n  /\n+ echo of a shell\n',
        'runs': (NESTED + '===== Message Logger Stopped =====\n' + NESTED.replace('17:21:21', '17:31:21')).encode(),
        'long': (banner + '0000000000 0000001000 (0x0000000a) Warning: ' + 'x' * 700000 + '\n').encode(),
        'same-time': (banner + '0000000000 0000001000 (0x0000000a) Warning: a\n' * 3).encode(),
        'far': (banner + '4294967295 4294967295 (0xffffffff) Warning: far\n').encode(),
    }
    for name, content in cases.items():
        log = WORK / f'{name}.log'
        log.write_bytes(content)
        reader = Reader(browser, page_of(log))
        expect(f'{name}: the page is there', reader.run('document.getElementById("wait").hidden && timeline.picture.frames > 0'))
        for key in ('+', '-', 'ArrowRight', 'ArrowDown', ']', 'e', '.', 'Enter', '0', 'r', 'f', 'n'):
            reader.key(key)
        reader.is_quiet(name)
        if name == 'crlf':
            same('line ends of other systems are no text', reader.run('timeline.model.textOf(3)'), '+ outer')
            same('and calls are found', reader.run('timeline.model.calls.count'), 5)
        elif name == 'plain':
            same('calls between plain lines', reader.run(MODEL_CALLS), [[None, 0, 'f', 1000, 3000]])
            same('their axis counts lines', reader.run('timeText(timeline.model, timeline.model.times[1])'), 'line 2')
        elif name == 'runs':
            heads = reader.run('timeline.picture.places.filter(place => place.head).map(place => place.y)')
            same('a heading for each run', len(heads), 2)
            left, top, _, _ = reader.canvas()
            reader.run('timeline.picture.fit(); timeline.picture.top = 0')
            reader.browser.settle()
            reader.shoot('runs-light')
            reader.click(left + 400, top + 30 + heads[1] + 10)
            start, span = reader.view()
            expect('a click on a run shows it alone', 599e9 < start < 601e9 and span < 15e6, (start, span))
    two = vnlog('-o', WORK / 'two.html', WORK / 'runs.log', WORK / 'plain.log')
    same('two logs: exit code', two.returncode, 0)
    reader = Reader(browser, WORK / 'two.html')
    same('two logs: sources', reader.run('timeline.model.meta.sources'), [str(WORK / 'runs.log'), str(WORK / 'plain.log')])
    same('two logs: title', reader.run('document.title'), 'runs.log, plain.log')
    reader.is_quiet('two logs')
    run = vnlog('-o', WORK / 'input.html', '-t', 'A <title>', input=NESTED.encode())
    same('standard input: exit code', run.returncode, 0)
    same('standard input: title', Reader(browser, WORK / 'input.html').run('document.title'), 'A <title>')


def check_refusals():
    """What can't be done ends with a reason and a code, and harms no file."""
    log = WORK / 'kept.log'
    log.write_text(NESTED)
    os.symlink(log, WORK / 'symlink.html')
    os.link(log, WORK / 'hardlink.html')
    page = WORK / 'unwritten.html'
    cases = [  # arguments, code, part of what is said
        ([log], 2, b'-o PAGE'),
        (['-o', page, WORK / 'missing.log'], 1, b"missing.log'"),
        (['-o', page, WORK], 1, b"cannot read '"),
        (['-o', page, log, WORK / 'missing.log'], 1, b"missing.log'"),
        (['-o', WORK / 'no folder' / 'x.html', log], 1, b"cannot write '"),
        (['-o', log, log], 1, b'is the page as well'),
        (['-o', WORK / 'symlink.html', log], 1, b'is the page as well'),
        (['-o', WORK / 'hardlink.html', log], 1, b'is the page as well'),
        (['-o', page, '-z', 'Nowhere/Town', log], 2, b'-z'),
    ]
    for arguments, code, said in cases:
        run = vnlog(*arguments)
        same(f'{arguments}: exit code', run.returncode, code)
        expect(f'{arguments}: {said} is said', said in run.stderr and run.stderr.count(b'\n') == 1, run.stderr)
        same(f'{arguments}: the log is as it was', log.read_text(), NESTED)
        expect(f'{arguments}: no page is left', not page.exists())
    if os.path.exists('/dev/full'):
        os.symlink('/dev/full', WORK / 'full.html')
        run = vnlog('-o', WORK / 'full.html', log)
        same('a full disk: exit code', run.returncode, 1)
        expect('a full disk: it is said', b'cannot write' in run.stderr, run.stderr)
        expect('a device is left alone', (WORK / 'full.html').is_symlink() and os.path.exists('/dev/full'))


def main():
    for folder in (WORK, SHOTS):
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
    large = WORK / 'large.log'
    with open(large, 'wb') as file:
        counts = generate(1_000_000, file.write)
    check_refusals()
    with Browser(CHROMIUM) as browser:
        browser.set_view(1600, 900, 'light')
        check_content(browser)
        check_bars(browser)
        check_hands(browser)
        check_colours(browser)
        check_odd_logs(browser)
        check_large(browser, large, counts)
        browser.set_view(1600, 900, 'dark')
        Reader(browser, WORK / 'large.html').shoot('million-dark')
    large.unlink()
    (WORK / 'large.html').unlink()
    print(f'{failures} checks failed' if failures else 'all as it should be')
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
