#!/usr/bin/python3
"""Opens the built site in a headless Chromium: checkbrowser.py CHROMIUM SITE SHOTS [PAGE]...

At 400, 900 and 1600 pixels, light and dark, for each page of the guide and a choice of the reference (or the PAGEs):

- the console stays empty, no script throws, and nothing is asked for but files of the site;
- nothing reaches beyond the screen: a wide sample, table or drawing scrolls in a box of its own;
- text stands out from what is behind it (contrast 4.5 at least).

Then as a reader would: the menu of a narrow screen leads to a page, the search finds a class, a
member and a page by any word of a heading, the switch between
light and dark works and is kept. Pictures of some pages are left in SHOTS for the eye.
"""
import os
import pathlib
import shutil
import sys

sys.dont_write_bytecode = True
from browser import Browser, BrowserError  # noqa: E402

CHROMIUM = sys.argv[1]
SITE, SHOTS = (pathlib.Path(argument).resolve() for argument in sys.argv[2:4])
WIDTHS, SCHEMES, HEIGHT = (400, 900, 1600), ('light', 'dark'), 1000
REFERENCE = ('modules', 'annotated', 'hierarchy', 'files', 'examples', 'functions', 'classVn_1_1OsFilePath', 'classVn_1_1ExBase',
             'classVn_1_1InVariable', 'classVn_1_1LgLog', 'classVn_1_1DtTime', 'classVn_1_1RnHistogram', 'classVn_1_1ThreadLog',
             'trace_8h', 'osfile_8h_source', 'first_2first_8cpp-example')
SHOWN = ('index', 'guide-logging', 'guide-performance', 'guide-design', 'modules', 'group__wing-settings', 'classVn_1_1OsFilePath',
         'classVn_1_1ExBase', 'first_2first_8cpp-example')

# What a reader can't see whole: elements with text of their own, and pictures, that end beyond the screen or beyond a box that
# cuts them off. What lies in a box that scrolls sideways can be reached, unless the box is the page itself.
OVERFLOWING = '''(() => {
    const content = document.getElementById('doc-content');
    const found = [];
    const tell = (element, why) => found.push(
        `<${element.tagName.toLowerCase()} id="${element.id}" class="${element.className}"> ${why}: ` +
        element.textContent.trim().slice(0, 60));
    for (const page of [document.scrollingElement, content])
        if (page && page.scrollWidth > page.clientWidth + 1)
            tell(page, `is ${page.scrollWidth} wide on ${page.clientWidth}`);
    for (const element of content.querySelectorAll('*')) {
        const own = [...element.childNodes].some(node => node.nodeType === 3 && node.data.trim());
        if (!own && !['IMG', 'IFRAME', 'OBJECT'].includes(element.tagName))
            continue;
        const box = element.getBoundingClientRect();
        const style = getComputedStyle(element);
        if (!box.width || style.visibility === 'hidden')
            continue;
        let limit = innerWidth;
        for (let outer = element; outer && outer !== content; outer = outer.parentElement) {
            const overflow = getComputedStyle(outer).overflowX;
            if (overflow === 'auto' || overflow === 'scroll') { limit = Infinity; break; }
            if (overflow !== 'visible' && outer !== element) limit = Math.min(limit, outer.getBoundingClientRect().right);
        }
        if (box.right > limit + 1)
            tell(element, `ends at ${Math.round(box.right)} of ${Math.round(limit)}`);
    }
    return found.slice(0, 5);
})()'''

# Text whose colour hardly differs from the first background behind it.
FAINT = '''(() => {
    const parse = colour => (colour.match(/[\\d.]+/g) || []).map(Number);
    const light = colour => {
        const [r, g, b] = colour.slice(0, 3).map(c => (c /= 255) <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
    };
    const found = new Set();
    for (const element of document.querySelectorAll('#top *, #side-nav *, #doc-content *')) {
        if (![...element.childNodes].some(node => node.nodeType === 3 && node.data.trim()))
            continue;
        const style = getComputedStyle(element);
        if (style.visibility === 'hidden' || style.opacity === '0' || !element.getClientRects().length)
            continue;
        let behind = [255, 255, 255];
        for (let outer = element; outer; outer = outer.parentElement) {
            const colour = parse(getComputedStyle(outer).backgroundColor);
            if (colour.length === 3 || colour[3] > 0.9) { behind = colour; break; }
        }
        const [bright, dark] = [light(parse(style.color)), light(behind)].sort((a, b) => b - a);
        const contrast = (bright + 0.05) / (dark + 0.05);
        if (contrast < 4.5)
            found.add(`${element.tagName.toLowerCase()}.${element.className} ${style.color} on ${behind}: ` +
                      `${contrast.toFixed(1)}: ${element.textContent.trim().slice(0, 30)}`);
    }
    return [...found].slice(0, 5);
})()'''

problems, requests = [], 0


def check(is_right, text):
    if not is_right:
        problems.append(text)


def look_at_events(browser, page):
    """What the browser said while it was on the page."""
    global requests
    for event in browser.events:
        method, values = event['method'], event['params']
        if method == 'Runtime.exceptionThrown':
            problems.append(f'{page}: a script threw: {values["exceptionDetails"]}')
        elif method == 'Runtime.consoleAPICalled':
            problems.append(f'{page}: the console has {values["type"]}: {values["args"]}')
        elif method == 'Log.entryAdded':
            problems.append(f'{page}: the console has {values["entry"]["text"]} ({values["entry"].get("url", "")})')
        elif method == 'Network.loadingFailed' and not values.get('canceled'):
            problems.append(f'{page}: could not load: {values["errorText"]}')
        elif method == 'Network.requestWillBeSent':
            requests += 1
            url = values['request']['url']
            check(url.startswith((SITE.as_uri() + '/', 'data:')), f'{page}: asks for {url}')
    browser.events.clear()


def check_page(browser, page):
    browser.set_view(WIDTHS[0], HEIGHT, SCHEMES[0])
    browser.open((SITE / f'{page}.html').as_uri())
    for scheme in SCHEMES:
        for width in WIDTHS:
            browser.set_view(width, HEIGHT, scheme)
            where = f'{page} at {width}, {scheme}'
            for found in browser.run(OVERFLOWING):
                problems.append(f'{where}: {found}')
            if width == WIDTHS[-1]:
                for found in browser.run(FAINT):
                    problems.append(f'{where}: hard to read: {found}')
            is_dark = browser.run('getComputedStyle(document.documentElement).colorScheme') == 'dark'
            check(is_dark == (scheme == 'dark'), f'{where}: has the colours of the other scheme')
            if page in SHOWN:
                browser.shoot(SHOTS / f'{page}-{width}-{scheme}.png')
    look_at_events(browser, page)


def check_menu(browser):
    """On a narrow screen the side is gone, and the menu leads to each page."""
    browser.set_view(400, HEIGHT, 'light')
    browser.open((SITE / 'index.html').as_uri())
    check(not browser.run('document.getElementById("side-nav").offsetWidth'), 'narrow: the tree is still there')
    browser.click('.main-menu-btn')
    at_rest = '!jQuery(":animated").length'
    browser.run_until(f'document.querySelector("#main-menu").offsetHeight > 200 && {at_rest}')
    entry = '[...document.querySelectorAll("#main-menu > li > a")].find(each => each.textContent.trim() === "Guide")'
    page = '[...document.querySelectorAll("#main-menu a[href^=guide-]")].find(each => each.getBoundingClientRect().height > 0)'
    # The menu drops a click that comes while it moves; a reader clicks again.
    for _ in range(5):
        browser.click_on(entry)
        browser.run_until(at_rest)
        if browser.run(f'!!({page})'):
            break
    check(browser.run(f'!!({page})'), 'narrow: the menu shows no page of the guide')
    browser.shoot(SHOTS / 'menu-400-light.png')
    aim = browser.run(f'({page}).href')
    browser.events.clear()
    browser.click_on(page)
    browser.wait_for_page(aim)
    look_at_events(browser, 'the menu')


def check_tree(browser):
    """On a wide screen the tree has each page of the guide in its order."""
    browser.set_view(1600, HEIGHT, 'light')
    guide = sorted(SITE.glob('guide-*.html'))
    browser.open(guide[0].as_uri())
    check(browser.run('document.getElementById("side-nav").offsetWidth') > 200, 'wide: there is no tree')
    listed = set(browser.run('[...document.querySelectorAll("#nav-tree a")].map(each => each.getAttribute("href"))'))
    check(any((each or '').startswith('guide-') for each in listed), f'wide: the tree shows no page of the guide: {listed}')
    selected = browser.run('document.querySelector("#nav-tree .selected a")?.getAttribute("href") ?? ""')
    check(selected == guide[0].name, f'wide: the tree marks "{selected}" for {guide[0].name}')
    look_at_events(browser, 'the tree')


def check_search(browser, width, words, expected):
    """What is typed finds a page, and the result leads there."""
    browser.set_view(width, HEIGHT, 'light')
    browser.open((SITE / 'index.html').as_uri())
    browser.events.clear()
    browser.run('document.getElementById("MSearchField").focus()')
    browser.type(words)
    browser.run_until(f'document.getElementById("MSearchField").value === "{words}"')
    frame = browser.wait(lambda event: event['method'] == 'Page.frameNavigated' and 'parentId' in event['params']['frame'])
    frame = frame['params']['frame']['id']
    browser.wait(lambda event: event['method'] == 'Page.frameStoppedLoading' and event['params']['frameId'] == frame)
    results = browser.run_in(frame, '''[...document.querySelectorAll(".SRResult")].filter(each => each.offsetHeight)
        .flatMap(each => [...each.querySelectorAll("a")].map(link => link.href.split("/").pop().split("#")[0]))''')
    browser.run_until('getComputedStyle(document.getElementById("MSearchResultsWindow")).opacity == 1')
    browser.shoot(SHOTS / f'search-{width}.png')
    check(expected in results, f'search at {width}: "{words}" finds {results}, and not {expected}')
    window = browser.run('''(() => { const box = document.getElementById("MSearchResultsWindow").getBoundingClientRect();
        return [box.left, box.right, innerWidth]; })()''')
    check(window[0] >= 0 and window[1] <= window[2], f'search at {width}: the results reach from {window[0]} to {window[1]}')
    look_at_events(browser, 'the search')


def check_switch(browser):
    """A click changes between light and dark, and the next page keeps it."""
    browser.set_view(1600, HEIGHT, 'light')
    browser.open((SITE / 'index.html').as_uri())
    colour = 'getComputedStyle(document.body).backgroundColor'
    light = browser.run(colour)
    browser.click('doxygen-awesome-dark-mode-toggle')
    browser.settle()
    dark = browser.run(colour)
    check(light != dark, f'the switch leaves the background {light}')
    browser.open((SITE / 'modules.html').as_uri())
    check(browser.run(colour) == dark, 'the next page has forgotten the switch')
    browser.click('doxygen-awesome-dark-mode-toggle')
    browser.settle()
    check(browser.run(colour) == light, 'the switch does not go back')
    look_at_events(browser, 'the switch')


def main():
    shutil.rmtree(SHOTS, ignore_errors=True)
    os.makedirs(SHOTS)
    pages = sys.argv[4:] or ['index', *sorted(path.stem for kind in ('guide-', 'project-', 'group__', 'source-')
                                              for path in SITE.glob(f'{kind}*.html')), *REFERENCE]
    with Browser(CHROMIUM) as browser:
        for page in pages:
            try:
                check_page(browser, page)
            except BrowserError as failure:
                raise BrowserError(f'{page}: {failure}') from failure
        if not sys.argv[4:]:
            for step, *arguments in ((check_menu,), (check_tree,),
                                     (check_search, 1600, 'InVariabl', 'classVn_1_1InVariable.html'),
                                     (check_search, 400, 'getDetailedR', 'classVn_1_1ExBase.html'),
                                     (check_search, 900, 'trace calls', 'guide-logging.html'),
                                     (check_switch,)):
                try:
                    step(browser, *arguments)
                except BrowserError as failure:
                    raise BrowserError(f'{step.__name__} {arguments}: {failure}') from failure
    print('\n'.join(problems[:100]))
    print(f'{len(pages)} pages at {len(WIDTHS)} widths, light and dark; {requests} files asked for; {len(problems)} problems')
    return 1 if problems or not requests else 0


if __name__ == '__main__':
    try:
        sys.exit(main())
    except BrowserError as failure:
        print('\n'.join([*problems, str(failure)]))
        sys.exit(1)
