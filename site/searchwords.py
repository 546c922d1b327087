"""Puts the headings of the guide into the search, by each of their words.

Doxygen's search compares what is typed with the beginning of names, and knows a page by its title's first word only. Here a
heading gets a row for each word that it might be looked for by: "Rotate the files" is found by "rotate" and by "files".

The search is a script for each first letter, search/all_HEX.js, with rows [key, [text, [place, 1, scope]]]; searchdata.js has
the letters in the order of these numbers. A key is what is compared: the text in small letters, all but letters and digits as
_HEX, with _ and a number behind it.
"""
import json
import re

# Words that nobody looks for.
COMMON = set('a an and are as at be by do for from how in into is it its of on or so that the to up what when where which who '
             'with'.split())


def key_of(text):
    return ''.join(letter if letter.isascii() and letter.isalnum() else f'_{ord(letter):02x}' for letter in text.lower())


def add_headings(folder, headings):
    """`headings`: (text, place, scope) of each."""
    data = folder / 'searchdata.js'
    text = data.read_text()  # the first list in it has the letters of each kind of name; kind 0 is all
    letters = json.loads(re.search(r'\b0: ("[^"]*")', text).group(1))
    rows = {}
    for words, place, scope in headings:
        for match in re.finditer(r'\w+', words):
            if match.group(0).lower() not in COMMON and match.group(0).isascii():
                rest = words[match.start():]
                rows.setdefault(rest[0].lower(), []).append((key_of(rest), words, place, scope))
    for letter, entries in sorted(rows.items()):
        if letter not in letters:
            letters += letter
            model = folder / 'all_0.html'
            name = f'all_{len(letters) - 1:x}'
            (folder / f'{name}.html').write_text(model.read_text().replace('all_0.js', f'{name}.js'))
            (folder / f'{name}.js').write_text('var searchData=\n[\n];\n')
        file = folder / f'all_{letters.index(letter):x}.js'
        old = file.read_text().rstrip().removesuffix('];').rstrip().rstrip(',')
        lines = ['  ' + json.dumps([f'{key}_h{number}', [words, [f'../{place}', 1, scope]]])
                 for number, (key, words, place, scope) in enumerate(sorted(entries))]
        file.write_text(old + ('\n' if old.endswith('[') else ',\n') + ',\n'.join(lines) + '\n];\n')
    data.write_text(re.sub(r'\b0: "[^"]*"', lambda _: f'0: {json.dumps(letters)}', text, count=1))
