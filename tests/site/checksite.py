#!/usr/bin/python3
"""Looks through the built site: checksite.py ROOT SITE WORK

- Each link, of pages, menus, the tree at the side, the search and the drawings, leads to a file of the site, and its anchor to
  a place in it. Nothing is loaded from elsewhere. A page of the guide may link to another site.
- Each C++ sample of a page stands in the site as it stands in the page.
- Each class of the library has a page, and stands under one subject.
"""
import collections
import html
import pathlib
import re
import sys
import textwrap
import urllib.parse
import xml.etree.ElementTree

ROOT, SITE, WORK = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
TAG = re.compile(r'<!--.*?-->|<(script)\b[^>]*>.*?</script>|'
                 r'<(/?)([a-zA-Z][\w:-]*)((?:[^<>"\']|"[^"]*"|\'[^\']*\')*)>', re.S)
ATTRIBUTE = re.compile(r'([\w:-]+)\s*=\s*(?:"([^"]*)"|\'([^\']*)\')')
problems = []


def attributes(path):
    """(tag, attribute, value) of a page or drawing; scripts are looked at by what they load."""
    for match in TAG.finditer(path.read_text()):
        text = match.group(4) if match.group(3) else match.group(0).split('>')[0] if match.group(1) else ''
        for attribute in ATTRIBUTE.finditer(text or ''):
            value = attribute.group(2) if attribute.group(2) is not None else attribute.group(3)
            yield match.group(3) or 'script', attribute.group(1), html.unescape(value)


def read_site():
    """Anchors of each file, and all links: (file, where to)."""
    anchors, links = collections.defaultdict(set), []
    for path in sorted(SITE.rglob('*')):
        if path.suffix in ('.html', '.svg'):
            is_drawing = path.suffix == '.svg'
            for tag, name, value in attributes(path):
                if name == 'id' or (name == 'name' and tag == 'a'):
                    anchors[path].add(value)
                elif name in ('href', 'src', 'xlink:href', 'data', 'srcset', 'poster') and not (is_drawing and value.startswith('#')):
                    links.append((path, tag, value))
        elif path.suffix == '.js':
            text = path.read_text()
            folder = 'search/' if path.parent.name == 'search' else ''
            # Menus, tree and search are lists of texts; those of other pages are their links.
            for value in re.findall(r'["\'\[,](?:\.\./)?([\w.-]+\.html(?:#[\w-]*)?)["\']', text):
                # What begins with navtreeindex says where a page stands in the tree, and no more.
                if folder or path.name in ('menudata.js', 'navtreedata.js') or path.with_suffix('.html').exists():
                    links.append((SITE / 'index.html', path.name, value))
    return anchors, links


def check_links(anchors, links):
    outside = 0
    for path, tag, value in links:
        where = f'{path.relative_to(SITE)}: <{tag}> {value}'
        parts = urllib.parse.urlsplit(value)
        if parts.scheme == 'data' or value.startswith('javascript:'):
            continue
        if parts.scheme or parts.netloc:
            if tag == 'a' and parts.scheme in ('https', 'mailto') and path.name.startswith(('guide-', 'project-', 'index')):
                outside += 1
            else:
                problems.append(f'{where}: lies outside the site')
            continue
        aim = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
        if SITE not in aim.parents or not aim.is_file():
            problems.append(f'{where}: there is no such file')
        elif parts.fragment and aim.suffix == '.html' and urllib.parse.unquote(parts.fragment) not in anchors[aim]:
            problems.append(f'{where}: there is no such anchor')
    for path in SITE.rglob('*.css'):
        for value in re.findall(r'url\(["\']?([^)"\']+)', path.read_text()):
            if not value.startswith('data:') and not (path.parent / value).is_file():
                problems.append(f'{path.name}: url({value}): there is no such file')
    return outside


def text_of(fragment):
    return html.unescape(re.sub(r'<[^>]*>', '', fragment))


def check_samples():
    count = 0
    pages = {'docs/' + path.name: 'guide-' + path.stem for path in (ROOT / 'docs').glob('*.md')}
    pages |= {'README.md': 'project-readme', 'docs/index.md': 'index'}
    for path, name in pages.items():
        samples = re.findall(r'^```cpp\n(.*?)^```', (ROOT / path).read_text(), re.M | re.S)
        page = (SITE / f'{name}.html').read_text()
        shown = set()
        for fragment in re.findall(r'<div class="fragment">(.*?)</div><!-- fragment -->', page, re.S):
            lines = re.findall(r'<div class="line">(.*?)</div>', fragment, re.S)
            shown.add('\n'.join(text_of(line).replace('\xa0', ' ').rstrip() for line in lines).strip('\n'))
        shown |= {text_of(block).strip('\n') for block in re.findall(r'<pre class="fragment">(.*?)</pre>', page, re.S)}
        for sample in samples:
            count += 1
            lines = '\n'.join(line.rstrip() for line in textwrap.dedent(sample).strip('\n').split('\n'))
            if not any(textwrap.dedent(each) == lines for each in shown):
                problems.append(f'{path}: the site does not show this sample as it is:\n{sample}')
    return count


def check_classes():
    tags = xml.etree.ElementTree.parse(WORK / 'site.tag').getroot()
    subjects = collections.Counter()
    for compound in tags.iter('compound'):
        if compound.get('kind') == 'group':
            subjects.update(each.text for each in compound.findall('class'))
    classes = set()
    for header in [*(ROOT / 'src/base').glob('*.h'), *(ROOT / 'src/threadlog').glob('*.h')]:
        if not header.name.endswith('_p.h'):
            text = re.sub(r'^namespace VnInit\n?\{.*?^\}', '', header.read_text(), flags=re.M | re.S)
            classes.update(re.findall(r'^(?:class|struct)(?: VN_\w+)? (\w+)(?: final)?(?: :[^;{]*)?\n?\s*\{', text, re.M))
    for name in sorted(classes):
        if subjects[f'Vn::{name}'] != 1:
            problems.append(f'{name}: stands under {subjects[f"Vn::{name}"]} subjects')
    return len(classes)


def main():
    anchors, links = read_site()
    outside = check_links(anchors, links)
    samples = check_samples()
    classes = check_classes()
    for problem in sorted(set(problems))[:200]:
        print(problem)
    print(f'{len(links)} links, {outside} of them to other sites; {samples} samples; {classes} classes; '
          f'{len(set(problems))} problems')
    return 1 if problems or not links or not samples or not classes else 0


if __name__ == '__main__':
    sys.exit(main())
