#!/usr/bin/python3
"""Builds the site: the guide from docs/ and the reference from the public headers.

buildsite.py ROOT SITE WORK DOXYGEN    writes the folder SITE anew, and WORK on the way; ends with 1 and says why if anything
is not as it should be

1. docs/index.md is read. Its lists are the navigation, in their order, a menu for each chapter; a page of docs/ that it
   doesn't list is an error, and so is a link to what isn't there (guide.py).
2. WORK/pages gets the pages in Doxygen's language, a page for each wing of the library from its map, and the layout with
   the menus.
3. Doxygen writes SITE. Any warning is an error.
4. The pages' HTML goes where Doxygen has left its place. Names in it become links, by the tag file that Doxygen has written
   (names.py); headings go into the search (searchwords.py); images are copied.

Nothing of the day, the machine or the folder goes into the site: equal sources give equal bytes.
"""
import html
import pathlib
import posixpath
import re
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True
from guide import Page, escaped  # noqa: E402
from names import Names  # noqa: E402
from searchwords import add_headings  # noqa: E402

ROOT, SITE, WORK = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
DOXYGEN = sys.argv[4]
AWESOME = pathlib.Path('/usr/share/doxygen-awesome-css')
PAGES, SHOWN, TAGS = WORK / 'pages', WORK / 'shown', WORK / 'site.tag'
SAMPLES = ('.cpp', '.h', '.imp')
CLASS = re.compile(r'^(?:class|struct)(?: VN_\w+)? ([A-Z]\w+)(?: final)?(?: :[^;{]*)?\n?\s*\{', re.M)
problems = []


class Site:
    """All pages, and where links between them lead."""

    def __init__(self):
        self.pages = {}  # path from the root -> Page
        self.images = {}  # path from the root -> name in the site
        self.sources = {}  # path from the root -> page's name, of sources that pages link to
        index = self.read('docs/index.md')
        self.menus = []
        for chapter, links in index.lists():
            entries = []
            for words, href in links:
                path = posixpath.normpath(posixpath.join('docs', href.split('#')[0]))
                if path.endswith('.md') and (ROOT / path).is_file():
                    entries.append((words, self.read(path)))
            if entries:
                self.menus.append((chapter, entries))
        for path in sorted((ROOT / 'docs').rglob('*.md')):
            name = path.relative_to(ROOT).as_posix()
            if name not in self.pages:
                problems.append(f'{name}: docs/index.md does not list this page')

    def read(self, path):
        if path not in self.pages:
            self.pages[path] = Page(path, (ROOT / path).read_text())
        return self.pages[path]

    def find(self, page, href):
        return posixpath.normpath(posixpath.join(posixpath.dirname(page.path), href))

    def target(self, page, href):
        """Where a link of the page leads in the site."""
        if re.match(r'(https|mailto):', href):
            return href
        path, _, anchor = href.partition('#')
        path = self.find(page, path) if path else page.path
        if path in self.pages:
            aim = self.pages[path]
            if anchor and anchor not in aim.anchors.values():
                problems.append(f'{page.path}: {path} has no heading #{anchor}')
            return f'{aim.name}.html' + (f'#{aim.label(anchor)}' if anchor else '')
        file = ROOT / path
        if file.is_dir() and path.startswith('examples'):
            return 'examples.html'
        if not file.is_file() or path.startswith('..'):
            problems.append(f'{page.path}: links to {href}, which is not there')
        elif file.suffix == '.md':
            problems.append(f'{page.path}: links to {href}, which docs/index.md does not list')
        elif path.startswith('examples/') and file.suffix in SAMPLES:
            return example_page(path)
        elif re.fullmatch(r'src/(base|threadlog)/\w+(?<!_p)\.h', path):
            return file.stem + '_8h.html'
        elif file.suffix in ('.svg', '.png'):
            return self.image(page, href)
        else:
            self.sources[path] = 'source-' + re.sub(r'[^\w]', '-', path)
            return self.sources[path] + '.html'
        return href

    def image(self, page, source):
        path = self.find(page, source)
        if not (ROOT / path).is_file():
            problems.append(f'{page.path}: shows {source}, which is not there')
        self.images[path] = 'images/' + path.removeprefix('docs/').replace('/', '-')
        return self.images[path]

    def width(self, page, source):
        """A drawing's own width in pixels, 0 for one that doesn't say it."""
        path = ROOT / self.find(page, source)
        if path.suffix == '.png':
            return int.from_bytes(path.read_bytes()[16:20], 'big')
        match = re.search(r'<svg[^>]*\swidth="([\d.]+)(pt|px|)"', path.read_text()) if path.is_file() else None
        return round(float(match.group(1)) * (4 / 3 if match.group(2) == 'pt' else 1)) if match else 0


def example_page(path):
    """Doxygen's name for the page of an example."""
    name = path.removeprefix('examples/').replace('_', '__').replace('.', '_8').replace('/', '_2')
    return f'{name}-example.html'


def read_wings():
    """Wings of the library: (name, public headers, what it is for, header to enter by, page)."""
    rows = {}
    for line in (ROOT / 'src/base/README.md').read_text().splitlines():
        cells = [cell.strip() for cell in line.strip().strip('|').split('|')]
        if len(cells) == 6 and cells[1].isdigit():
            page = re.search(r'\(\.\./\.\./(docs/[^)#]+)', cells[5])
            rows[cells[0]] = (cells[2], cells[3].strip('`'), page and page.group(1))
    wings = []
    text = re.sub(r'#.*', '', (ROOT / 'src/base/CMakeLists.txt').read_text())
    for name, rest in re.findall(r'vnbase_wing\(\s*"?([^"\n]+?)"?\s+LAYER([^)]*)\)', text):
        headers = ['src/base/' + word for word in rest.split() if word.endswith('.h') and not word.endswith('_p.h')]
        wings.append((name, headers, *rows[name]))
    headers = [path.relative_to(ROOT).as_posix() for path in sorted((ROOT / 'src/threadlog').glob('*.h'))
               if not path.name.endswith('_p.h')]
    wings.append(('thread layer', headers, 'one line in `main`, and what all threads log is written, whatever ends the process',
                  'threadlog.h', 'docs/logging.md'))
    return wings


def write_wings(site):
    """A group for each wing: its classes and its headers."""
    out = []
    for name, headers, purpose, entry, page in read_wings():
        label = 'wing-' + name.replace(' ', '-')
        purpose = purpose[0].upper() + purpose[1:]
        out.append(f'/** \\defgroup {label} {name[0].upper() + name[1:]}\n\n{purpose}. Enter by {entry}.')
        if page in site.pages:
            out.append(f'\nIn the guide: \\ref {site.pages[page].name} "{escaped(site.pages[page].title)}"')
        out.append('*/')
        for header in headers:
            text = (ROOT / header).read_text()
            out.append(f'/** \\file {header.removeprefix("src/")}\n\\ingroup {label} */')
            # Classes of the namespace; what lies in a class is reached through it.
            for each in CLASS.findall(text):
                out.append(f'/** \\class Vn::{each}\n\\ingroup {label} */')
    (PAGES / 'wings.dox').write_text('\n'.join(out) + '\n')


def write_headers():
    """Copies of the public headers, whose samples are marked as C++ so that they are coloured and lead to what they name."""
    for folder in ('base', 'threadlog'):
        (WORK / 'src' / folder).mkdir(parents=True)
        for path in sorted((ROOT / 'src' / folder).glob('*.h')):
            if not path.name.endswith('_p.h'):
                (WORK / 'src' / folder / path.name).write_text(mark_samples(path.read_text()))


def mark_samples(text):
    """A comment's indented block that ends a statement and is no table of results becomes a block of code."""
    def mark(match):
        indent, block = match.group(1), match.group(2)
        is_sample = re.search(r'[;{](\s*//.*)?$', block, re.M) and not re.search(r'  ->  |\.\.\.$', block, re.M)
        return f'{indent}/// @code{{.cpp}}\n{block}{indent}/// @endcode\n' if is_sample else match.group(0)
    # The empty lines around it are replaced, so that the others keep their numbers.
    return re.sub(r'^( *)///\n((?:\1///     .*\n|\1///\n(?=\1///     ))+)(?:\1///\n)?', mark, text, flags=re.M)


def write_layout(site):
    """The menus, which are the tree at the side as well."""
    tabs = ['<tab type="mainpage" visible="yes" title="Start here"/>']
    for chapter, entries in site.menus:
        tabs.append(f'<tab type="usergroup" visible="yes" url="[none]" title="{html.escape(chapter)}">')
        tabs += [f'  <tab type="user" url="@ref {page.name}" title="{html.escape(words)}"/>' for words, page in entries]
        tabs.append('</tab>')
    tabs += ['<tab type="modules" visible="yes" title="Reference by subject" '
             'intro="The parts of the library, from the ground up."/>',
             '<tab type="classes" visible="yes" title="Classes">',
             '  <tab type="classlist" visible="yes" title="All classes" intro=""/>',
             '  <tab type="classindex" visible="yes" title="By letter"/>',
             '  <tab type="hierarchy" visible="yes" title="By base" intro=""/>',
             '  <tab type="classmembers" visible="yes" title="All members" intro=""/>',
             '</tab>',
             '<tab type="files" visible="yes" title="Headers">',
             '  <tab type="filelist" visible="yes" title="All headers" intro=""/>',
             '  <tab type="globals" visible="yes" title="Macros" intro=""/>',
             '</tab>',
             '<tab type="examples" visible="yes" title="Examples" '
             'intro="Whole programs that the build compiles and the tests run."/>']
    # Doxygen's own layout of a page, but for the menus. What a class or subject is for comes before its members, and headers
    # after the classes that they hold.
    subprocess.run([DOXYGEN, '-l', PAGES / 'layout.xml'], check=True, capture_output=True)
    layout = (PAGES / 'layout.xml').read_text()
    layout = re.sub(r'(?<=<navindex>).*?(?=</navindex>)', lambda _: '\n' + '\n'.join(tabs) + '\n', layout, flags=re.S)
    for kind in ('class', 'group'):
        part = re.search(rf'<{kind}>.*?</{kind}>', layout, re.S).group(0)
        changed = re.sub(r' *<detaileddescription [^>]*/>\n', '', part)
        changed = changed.replace('<briefdescription visible="yes"/>', '<detaileddescription title="What it is for"/>')
        if kind == 'group':
            changed = re.sub(r' *<files [^>]*/>\n', '', changed)
            changed = changed.replace('</memberdecl>', '<files visible="yes" title="Headers"/>\n    </memberdecl>')
        layout = layout.replace(part, changed)
    (PAGES / 'layout.xml').write_text(layout)


def write_pages(site):
    for page in list(site.pages.values()):
        (PAGES / f'{page.name}.dox').write_text(page.render(site))
    out = []
    for path in sorted((ROOT / 'examples').rglob('*')):
        if path.suffix in ('.cpp', '.h'):
            out.append(f'/** \\example {path.relative_to(ROOT / "examples").as_posix()} */')
    for path, name in sorted(site.sources.items()):
        # Copied, as Doxygen would otherwise look for it through all that tests leave in build folders meanwhile.
        copy = SHOWN / path
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(ROOT / path, copy)
        command = 'include' if path.endswith(SAMPLES) else 'verbinclude'
        out.append(f'/** \\page {name} {escaped(path)}\n\\{command} {path} */')
    (PAGES / 'sources.dox').write_text('\n'.join(out) + '\n')


def run_doxygen():
    version = re.search(r'project\(VNbase VERSION ([\d.]+)', (ROOT / 'CMakeLists.txt').read_text()).group(1)
    styles = [AWESOME / 'doxygen-awesome.css', AWESOME / 'doxygen-awesome-sidebar-only.css',
              AWESOME / 'doxygen-awesome-sidebar-only-darkmode-toggle.css', ROOT / 'site/site.css']
    scripts = [AWESOME / f'doxygen-awesome-{name}.js' for name in ('darkmode-toggle', 'fragment-copy-button', 'interactive-toc', 'paragraph-link')]
    settings = {
        'PROJECT_NUMBER': [version],
        'INPUT': [WORK / 'src/base', WORK / 'src/threadlog', PAGES],
        'FILE_PATTERNS': ['*.h', '*.dox'],
        'STRIP_FROM_PATH': [WORK / 'src', PAGES],
        'STRIP_FROM_INC_PATH': [WORK / 'src'],
        'INCLUDE_PATH': [WORK / 'src'],
        'EXAMPLE_PATH': [ROOT / 'examples', SHOWN],
        'EXAMPLE_PATTERNS': ['*.cpp', '*.h'],
        'LAYOUT_FILE': [PAGES / 'layout.xml'],
        'OUTPUT_DIRECTORY': [WORK],
        'HTML_OUTPUT': [SITE],
        'GENERATE_TAGFILE': [TAGS],
        'HTML_HEADER': [ROOT / 'site/header.html'],
        'HTML_FOOTER': [ROOT / 'site/footer.html'],
        'HTML_EXTRA_STYLESHEET': styles,
        'HTML_EXTRA_FILES': scripts,
    }
    # Folders may have blanks in their names.
    lines = [(ROOT / name).read_text() for name in ('docs/Doxyfile', 'site/Doxyfile')]
    lines += [f'{key} = ' + ' '.join(f'"{value}"' for value in values) for key, values in settings.items()]
    settings = '\n'.join(lines) + '\n'
    run = subprocess.run([DOXYGEN, '-'], input=settings, capture_output=True, text=True, cwd=PAGES, check=False)
    problems.extend(line for line in run.stderr.splitlines() if line.strip())
    if run.returncode:
        problems.append(f'doxygen ended with {run.returncode}')


def finish(site):
    (SITE / 'images').mkdir()
    for path, name in site.images.items():
        shutil.copyfile(ROOT / path, SITE / name)
    pages = {path: page.name + '.html' for path, page in site.pages.items()}
    names = Names(TAGS, pages)
    guide = {page.name + '.html': page for page in site.pages.values()}
    for file in sorted(SITE.glob('*.html')):
        before = file.read_text()
        if file.name in guide:
            text = names.link_spans(guide[file.name].fill(before), file.name)
        else:
            text = names.link_pages(before)
        if file.name.endswith('_8h_source.html'):
            text = re.sub(r'/// @(?:code\{\.cpp\}|endcode)(?=<)', '///', text)
        if text != before:
            file.write_text(text)
    drop_dead_links()
    pages = [page for page in site.pages.values() if page.name != 'index']
    add_headings(SITE / 'search', [heading for page in pages for heading in page.headings()])
    with open(SITE / 'search/search.css', 'a') as styles:
        styles.write('.SRPage .SREntry, .SRSymbol, .SRScope { font-size: 14px; line-height: 1.6; }\n')
    return names.linked


def drop_dead_links():
    """Doxygen points at lists and enumerators that it leaves out, having nothing to say of them: at the page then."""
    anchors = {file.name: set(re.findall(r'\b(?:id|name)="([^"]+)"', file.read_text())) for file in SITE.glob('*.html')}

    def shorten(match):
        page, anchor = match.group(1), match.group(2)
        return match.group(0) if anchor in anchors.get(page, {anchor}) else f'"{page}"'
    for file in SITE.glob('*.js'):
        file.write_text(re.sub(r'"([\w.-]+\.html)#([\w-]+)"', shorten, file.read_text()))
    for file in SITE.glob('*.html'):
        text = file.read_text()
        if '<a href="#nested-classes">' in text and 'nested-classes' not in anchors[file.name]:
            file.write_text(re.sub(r'<a href="#nested-classes">[^<]*</a>( &#124;\s*)?', '', text))


def main():
    if not AWESOME.is_dir():
        raise SystemExit(f'{AWESOME} is not there: install the package doxygen-awesome-css')
    for folder in (WORK, SITE):
        shutil.rmtree(folder, ignore_errors=True)
    for folder in (PAGES, SHOWN):
        folder.mkdir(parents=True)
    site = Site()
    write_pages(site)
    write_headers()
    write_wings(site)
    write_layout(site)
    if not problems:
        run_doxygen()
    if not problems:
        linked = finish(site)
        count = len(list(SITE.glob('*.html')))
        print(f'{count} pages, {len(site.pages)} of them written by hand; {linked} names of these lead to the reference')
    print('\n'.join(problems), end='\n' if problems else '')
    return 1 if problems else 0


if __name__ == '__main__':
    sys.exit(main())
