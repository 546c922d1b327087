#!/usr/bin/env python3
"""Checks the guide as a path: each page has its parts, leads to the page before and behind it, and has no dead link.

checkpath.py ROOT           fails if a page lacks something
checkpath.py ROOT --mend    writes the links at the end of the pages

The pages of the path stand in pages.py, in their order. Each that shows programs begins with its title, with what the reader
will be able to do, and with a sample of C++ that a console block follows: its output. Then come its messages, its references
and its links.
"""
import pathlib
import re
import sys

from pages import PATH, WITH_PROGRAMS

ALL = "[Which class do I take?](which-class.md)"

root = pathlib.Path(sys.argv[1])
docs = root / "docs"
mending = sys.argv[2:] == ["--mend"]
wrong = 0


def fail(text):
    global wrong
    wrong += 1
    print(text)


def without_code(text):
    return re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)


def title_of(name):
    return (docs / name).read_text().splitlines()[0].removeprefix("# ")


def links_for(place):
    links = []
    if place > 0:
        links.append(f"Previous: [{title_of(PATH[place - 1])}]({PATH[place - 1]})")
    if place + 1 < len(PATH):
        links.append(f"Next: [{title_of(PATH[place + 1])}]({PATH[place + 1]})")
    return "\n---\n\n" + " · ".join([*links, ALL]) + "\n"


def check_page(place):
    name = PATH[place]
    text = (docs / name).read_text()
    links = links_for(place)
    if not text.endswith(links):
        if mending:
            (docs / name).write_text(re.sub(r"\n---\n\n[^\n]*which-class\.md\)\n$", "", text).rstrip() + "\n" + links)
        else:
            fail(f"{name} doesn't end with\n{links}")
    if name not in WITH_PROGRAMS:
        return
    parts = [r"\A# .+\n\n", r"After this page you can ", r"^```cpp\n", r"^```console\n",
             r"^## What goes wrong, and how it shows\n", r"^## Reference\n"]
    at = 0
    for part in parts:
        found = re.compile(part, re.M).search(text, at)
        if not found:
            fail(f"{name} has no {part!r} in its place")
            return
        at = found.end()


def anchors_of(text):
    """The anchors of the headings, as the usual viewers of Markdown make them."""
    headings = re.findall(r"^#+ (.*)$", without_code(text), re.M)
    return {re.sub(r"[^\w\- ]", "", re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading)).lower().replace(" ", "-")
            for heading in headings}


def check_links(page):
    for link in re.findall(r"\]\(([^)\s]+)\)", without_code(page.read_text())):
        target, _, anchor = link.partition("#")
        if re.match(r"[a-z]+:", target):
            continue
        path = (page.parent / target).resolve() if target else page
        if not path.exists():
            fail(f"{page.relative_to(root)}: {link} leads nowhere")
        elif anchor and path.suffix == ".md" and anchor not in anchors_of(path.read_text()):
            fail(f"{page.relative_to(root)}: {link} has no such heading")


for number in range(len(PATH)):
    if (docs / PATH[number]).exists():
        check_page(number)
    else:
        fail(f"There is no {PATH[number]}")
pages = [*root.glob("*.md"), *docs.glob("*.md"), *(root / "src").glob("*/README.md")]
for one in sorted(pages):
    check_links(one)
print(len(PATH), "pages on the path,", len(pages), "pages with links")
sys.exit(1 if wrong else 0)
