"""Where the reference has each name, and the links of the guide that lead there.

Doxygen's tag file says which class, member, macro and header lies on which page. A code span of the guide is linked if it is
one of these names as people write them: `InVariable`, `Vn::InVariable`, `InVariable<T>`, `OsFile::exists()`, `VN_LOG`,
`osfile.h`; a member alone, `getDetailedReason()`, if one class only has it. In the reference, "docs/files.md" leads to the
page.
"""
import html
import re
import xml.etree.ElementTree

SPAN = re.compile(r'<code class="name">([^<]*)</code>')
PAGE = re.compile(r'(?<![\w/])docs/([\w-]+)\.md')


class Names:
    def __init__(self, tag_file, pages):
        self.linked = 0  # spans so far
        self.pages = pages  # docs/x.md -> page's file
        self.places = {}  # name -> where it lies
        self.short = {}  # last part of a name -> all places that it may mean
        for compound in xml.etree.ElementTree.parse(tag_file).getroot().iter('compound'):
            kind, name, file = compound.get('kind'), compound.findtext('name'), compound.findtext('filename')
            if kind in ('class', 'struct', 'union', 'namespace'):
                self.add(name.removeprefix('Vn::'), file)
            elif kind == 'file':
                file = file if file.endswith('.html') else file + '.html'
                self.places.setdefault(name, file)
            if kind not in ('class', 'struct', 'union', 'namespace', 'file'):
                continue
            owner = '' if kind == 'file' or name == 'Vn' else name.removeprefix('Vn::') + '::'
            for member in compound.findall('member'):
                page, anchor = member.findtext('anchorfile'), member.findtext('anchor')
                if page and anchor:
                    self.add(owner + member.findtext('name'), f'{page}#{anchor}', member.get('kind'))

    def add(self, name, place, kind=''):
        self.places.setdefault(name, place)
        owner, _, last = name.rpartition('::')
        if owner.split('::')[-1] == last:
            return  # a constructor: its name alone means the class
        if owner and kind not in ('variable', 'enumvalue'):
            self.short.setdefault(last, {}).setdefault(owner, place)

    def find(self, text):
        """Where a code span's name lies, or None."""
        name = re.sub(r'\s+', ' ', text.strip()).removeprefix('Vn::').removeprefix('<base/').removeprefix('base/')
        name = re.sub(r'^(?:src/)?(?:base|threadlog)/', '', 
                      name.removeprefix('<').rstrip('>') if name.endswith('.h>') else name)
        is_call = re.search(r'\([^()]*\)$', name) is not None
        name = re.sub(r'\([^()]*\)$', '', name)
        name = re.sub(r'<[\w:, *]*>', '', name)
        if name in self.places:
            return self.places[name]
        meant = self.short.get(name, {})
        # A plain word may be anybody's: only a type, a call or a camel is surely one of ours.
        if len(meant) == 1 and (is_call or re.search('[A-Z]', name)):
            return next(iter(meant.values()))
        return None

    def link_spans(self, text, own):
        def link(match):
            place = self.find(html.unescape(match.group(1)))
            if place is None or place.split('#')[0] == own:
                return f'<code>{match.group(1)}</code>'
            self.linked += 1
            return f'<a class="name" href="{place}"><code>{match.group(1)}</code></a>'
        # A link's own text stays as it is.
        parts = re.split(r'(<a\b[^>]*>.*?</a>)', text, flags=re.S)
        return ''.join(SPAN.sub(r'<code>\1</code>', part) if number % 2 else SPAN.sub(link, part)
                       for number, part in enumerate(parts))

    def link_pages(self, text):
        """Pages that comments of the headers name."""
        def link(match):
            page = self.pages.get(match.group(0))
            return f'<a href="{page}">{match.group(0)}</a>' if page else match.group(0)
        parts = re.split(r'(<a\b[^>]*>.*?</a>|<[^>]*>)', text, flags=re.S)
        return ''.join(part if number % 2 else PAGE.sub(link, part) for number, part in enumerate(parts))
