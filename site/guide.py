"""Pages of the guide, from Markdown as a forge shows it to pages of the site.

A page is read by CommonMark's rules with tables. Its title and headings become Doxygen's own, so that they stand in the
search and can be linked; its C++ samples become Doxygen's code blocks, so that names in them lead to the reference. All else
becomes HTML here. Doxygen gets a mark in its place, and fill() puts it there at the end: so a page reads the same as on a
forge, whatever Doxygen's own Markdown would make of a quotation mark or an asterisk.

Links and anchors are those of a forge: a path relative to the page, "#give-help" for the heading "Give help". The Site says
where they lead. Names in code spans are marked, and linked once Doxygen has said where each one lies (names.py).
"""
import html
import posixpath
import re

from markdown_it import MarkdownIt

# HTML that may stand in a page; other angle brackets are text, such as those of templates outside code.
ALLOWED = re.compile(r'</?(?:a|b|br|code|details|div|em|i|kbd|p|pre|strong|sub|summary|sup|table|tbody|td|th|thead|tr)\b[^<>]*>|'
                     r'<!--.*?-->', re.S)

READABLE = 640  # pixels: a drawing isn't shown narrower than that, or than it is


def slug(text, taken):
    """The anchor that a forge gives a heading."""
    base = re.sub(r'[^\w\- ]', '', text.strip().lower()).replace(' ', '-')
    name, count = base, 0
    while name in taken:
        count += 1
        name = f'{base}-{count}'
    taken.add(name)
    return name


def plain(inline):
    """A heading's text without its marks."""
    return ''.join(child.content for child in inline.children if child.type in ('text', 'code_inline'))


def escaped(text):
    """Text for a title, in which Doxygen would look for commands, links and HTML."""
    text = re.sub(r'([\\@#%])', r'\\\1', text)
    return text.replace('&', '&amp;').replace('<', '&lt;').replace('>', '&gt;').replace('::', '\\::')


def mark_html(text):
    """HTML of a page: what is allowed stays, the rest is text."""
    parts, end = [], 0
    for match in ALLOWED.finditer(text):
        parts += [html.escape(text[end:match.start()]), match.group(0)]
        end = match.end()
    return ''.join(parts) + html.escape(text[end:])


class Page:
    """One Markdown file."""

    def __init__(self, path, text):
        self.path = path  # from the project's root
        # What a page is called in the site; Doxygen has names such as files.html for itself.
        stem = posixpath.splitext(path)[0]
        folder, name = posixpath.split(stem)
        self.name = 'guide-' + name if folder == 'docs' else 'project-' + stem.lower().replace('/', '-')
        if path == 'docs/index.md':
            self.name = 'index'
        self.tokens = MarkdownIt('commonmark').enable('table').parse(text)
        self.anchors = {}  # of a heading's token -> anchor
        self.title = ''
        self.blocks = []  # HTML between headings and samples
        taken = set()
        for at, token in enumerate(self.tokens):
            if token.type == 'heading_open':
                words = plain(self.tokens[at + 1])
                self.anchors[at] = slug(words, taken)
                if token.tag == 'h1' and not self.title:
                    self.title = words
        if not self.title:
            raise SystemExit(f'{path}: has no title')

    def label(self, anchor):
        """A heading's label, which is one of a kind in the whole site."""
        return f'{self.name}-{anchor}'

    def headings(self):
        """What the search finds the page by: (text, place, scope)."""
        for at, anchor in self.anchors.items():
            words = plain(self.tokens[at + 1])
            is_title = words == self.title
            anchor = '' if is_title else '#' + self.label(anchor)
            yield html.escape(words), f'{self.name}.html{anchor}', '' if is_title else html.escape(self.title)

    def lists(self):
        """The lists of each chapter: (heading, [(link's text, link's target)]), a list for each item that begins with links."""
        chapters, depth = [], 0
        for at, token in enumerate(self.tokens):
            if token.type == 'heading_open' and token.tag == 'h2':
                chapters.append((plain(self.tokens[at + 1]), []))
            elif token.type in ('list_item_open', 'list_item_close'):
                depth += 1 if token.type.endswith('open') else -1
            elif token.type == 'inline' and depth and chapters:
                for number, child in enumerate(token.children):
                    if child.type == 'link_open':
                        words = token.children[number + 1].content
                        chapters[-1][1].append((words, child.attrs['href']))
        return chapters

    def render(self, site):
        """The page in Doxygen's language."""
        out = ['\\mainpage ' + escaped(self.title) if self.name == 'index' else f'\\page {self.name} {escaped(self.title)}', '']
        chapters = sum(token.type == 'heading_open' and token.tag == 'h2' for token in self.tokens)
        if chapters > 2 and self.name != 'index':
            out.extend(['\\tableofcontents', ''])
        raw, at, level, is_titled = [], 0, 0, False

        def flush():
            if raw:
                out.extend(['\\htmlonly[block]', f'<!--block {self.name} {len(self.blocks)}-->', '\\endhtmlonly', ''])
                self.blocks.append(''.join(raw))
                raw.clear()

        parser = MarkdownIt('commonmark')
        while at < len(self.tokens):
            token = self.tokens[at]
            if token.type == 'heading_open':
                words = plain(self.tokens[at + 1])
                if token.tag == 'h1' and not is_titled:
                    is_titled = True
                    # Its anchor leads to the page's beginning.
                    raw.append(f'<a id="{self.label(self.anchors[at])}"></a>\n')
                elif level == 0 and token.tag in ('h2', 'h3', 'h4') and self.name != 'index':
                    flush()
                    command = {'h2': 'section', 'h3': 'subsection', 'h4': 'subsubsection'}[token.tag]
                    out.extend([f'\\{command} {self.label(self.anchors[at])} {escaped(words)}', ''])
                else:
                    raw.append(f'<{token.tag} id="{self.label(self.anchors[at])}">{html.escape(words)}</{token.tag}>\n')
                at += 3
                continue
            level += token.nesting
            # The page is a comment for Doxygen: a sample with the end of one can't stand in it.
            if token.type == 'fence' and level == 0 and token.info.strip() in ('cpp', 'c++') and '*/' not in token.content:
                flush()
                out.extend(['\\code{.cpp}', token.content.rstrip('\n'), '\\endcode', ''])
            elif token.type in ('fence', 'code_block'):
                raw.append(f'<pre class="fragment">{html.escape(token.content)}</pre>\n')
            elif token.type == 'html_block':
                raw.append(mark_html(token.content))
            elif token.type == 'table_open':
                raw.append('<div class="tablebox"><table>\n')
            elif token.type == 'table_close':
                raw.append('</table></div>\n')
            elif token.type == 'inline':
                raw.append(self.render_inline(token.children, site))
            else:
                raw.append(parser.renderer.renderToken([token], 0, parser.options, {}))
            at += 1
        flush()
        return '/** ' + '\n'.join(out) + '*/\n'

    def fill(self, text):
        """Doxygen's page with the HTML in the place of its marks."""
        for number, block in enumerate(self.blocks):
            mark = f'<!--block {self.name} {number}-->'
            if text.count(mark) != 1:
                raise SystemExit(f'{self.path}: block {number} has not one place in the page')
            text = text.replace(mark, block)
        return text

    def render_inline(self, children, site):
        out = []
        for child in children:
            if child.type == 'code_inline':
                out.append(f'<code class="name">{html.escape(child.content)}</code>')
            elif child.type == 'link_open':
                out.append(f'<a href="{html.escape(site.target(self, child.attrs["href"]))}">')
            elif child.type == 'image':
                source, words = child.attrs['src'], html.escape(child.content)
                # A wide drawing scrolls on a narrow screen, rather than become too small to read; a click shows it alone.
                least = min(site.width(self, source), READABLE)
                place = html.escape(site.image(self, source))
                out.append(f'<a class="drawing" href="{place}"><img src="{place}" alt="{words}" style="min-width: {least}px"/></a>')
            elif child.type == 'html_inline':
                out.append(mark_html(child.content))
            elif child.type == 'text':
                out.append(html.escape(child.content))
            elif child.type == 'softbreak':
                out.append('\n')
            elif child.type == 'hardbreak':
                out.append('<br/>\n')
            elif child.type in ('em_open', 'strong_open', 'em_close', 'strong_close', 'link_close'):
                out.append(f'<{"/" if child.nesting < 0 else ""}{child.tag}>')
            else:
                raise SystemExit(f'{self.path}: {child.type} has no form in the site')
        return ''.join(out)
