#!/usr/bin/python3
"""Shows that the builder and the checks of the site find what is wrong: checkrefusals.py ROOT SITE WORK FOLDER DOXYGEN CHROMIUM

Each row makes one mistake in a copy of the sources or of the built site, and tells what must be said of it. Those of a table are
made together, but for a warning of Doxygen, which only runs if all before is right.
"""
import pathlib
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True
from sources import copy_sources  # noqa: E402

ROOT, SITE, WORK, FOLDER = (pathlib.Path(argument).resolve() for argument in sys.argv[1:5])
DOXYGEN, CHROMIUM = sys.argv[5:7]
HERE = pathlib.Path(__file__).resolve().parent
SOURCES, BUILT = FOLDER / 'sources', FOLDER / 'built'
PAGE = 'guide-testing.html'
END = '</div><!-- contents -->'

# What is built: (what is wrong, file, text, its replacement, what is said). None as text appends, and makes a new file.
BUILDER = (
    ('a page that no list has', 'docs/stray.md', None, '# Stray\n', 'docs/stray.md: docs/index.md does not list this page'),
    ('a link to no file', 'docs/testing.md', None, '\n[there](nowhere.md)\n', 'docs/testing.md: links to nowhere.md, which is not there'),
    ('a link to no heading', 'docs/testing.md', None, '\n[there](#nowhere)\n', 'docs/testing.md: docs/testing.md has no heading #nowhere'),
    ('a drawing that is not there', 'docs/testing.md', None, '\n![no](nowhere.svg)\n', 'docs/testing.md: shows nowhere.svg, which is not there'),
    ('a link to a page that is not in the site', 'docs/testing.md', None, '\n[there](../tests/stray.md)\n', 'links to ../tests/stray.md, which'),
    ('a warning of Doxygen', 'src/base/osfilepath.h', '/// The empty path.', '/// The empty path. \\ref nowhere', "unable to resolve reference to 'nowhere'"),
)
# What is looked through: (what is wrong, text of the page, its replacement, what is said).
LINKS = (
    ('a link to no file', END, '<a href="nowhere.html">x</a>' + END, f'{PAGE}: <a> nowhere.html: there is no such file'),
    ('a link to no anchor', END, '<a href="index.html#nowhere">x</a>' + END, f'{PAGE}: <a> index.html#nowhere: there is no such anchor'),
    ('a link out of the folder', END, '<a href="../sources/README.md">x</a>' + END, f'{PAGE}: <a> ../sources/README.md: there is no such file'),
    ('a script from elsewhere', END, '<script src="https://example.org/x.js"></script>' + END, 'https://example.org/x.js: lies outside the site'),
    ('a changed sample', 'Sorting', 'Sorted', 'docs/testing.md: the site does not show this sample as it is'),
)
# What is opened in the browser: the same.
BROWSER = (
    ('a box that is too wide', END, '<p style="width: 2000px">wide</p>' + END, 'is 2016 wide on '),
    ('a text that is cut off', END, '<div style="overflow: hidden"><span style="white-space: pre">' + 'cut ' * 200 + '</span></div>' + END, 'ends at'),
    ('a script that throws', END, '<script>throw new Error("thrown here")</script>' + END, 'a script threw: '),
    ('an error on the console', END, '<script>console.error("said here")</script>' + END, 'the console has error'),
    ('a picture from elsewhere', END, '<img src="http://127.0.0.1:9/x.png">' + END, 'asks for http://127.0.0.1:9/x.png'),
    ('a file that is not there', END, '<img src="nowhere.png">' + END, 'could not load: net::ERR_FILE_NOT_FOUND'),
    ('a text that is hardly seen', END, '<p style="color: #eee; background: white">faint</p>' + END, 'hard to read: p.'),
)
failures = []


def run(*arguments):
    return subprocess.run([sys.executable, *map(str, arguments)], capture_output=True, text=True, check=False)


def judge(table, ended):
    output = ended.stdout + ended.stderr
    for what, *_, said in table:
        if ended.returncode != 1 or said not in output:
            failures.append(f'{what}: ended with {ended.returncode}, and did not say: {said}\n{output[:3000]}')


def change(file, text, replacement):
    before = file.read_text() if file.exists() else ''
    after = before.replace(text, replacement, 1) if text else before + replacement
    assert after != before, f'{file} has no {text}'
    file.write_text(after)


shutil.rmtree(FOLDER, ignore_errors=True)
for table in (BUILDER[:-1], BUILDER[-1:]):
    copy_sources(ROOT, SOURCES)
    (SOURCES / 'tests/stray.md').write_text('# Stray\n')
    for _, name, text, replacement, _ in table:
        change(SOURCES / name, text, replacement)
    judge(table, run(SOURCES / 'site/buildsite.py', SOURCES, FOLDER / 'site', FOLDER / 'work', DOXYGEN))
for table, command in ((LINKS, (HERE / 'checksite.py', ROOT, BUILT, WORK)),
                       (BROWSER, (HERE / 'checkbrowser.py', CHROMIUM, BUILT, FOLDER / 'shots', PAGE[:-5]))):
    shutil.rmtree(BUILT, ignore_errors=True)
    shutil.copytree(SITE, BUILT)
    for _, text, replacement, _ in table:
        change(BUILT / PAGE, text, replacement)
    judge(table, run(*command))
print('\n'.join(failures) if failures else f'{len(BUILDER) + len(LINKS) + len(BROWSER)} mistakes found')
shutil.rmtree(FOLDER)
sys.exit(1 if failures else 0)
