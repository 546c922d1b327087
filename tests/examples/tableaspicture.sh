#!/bin/sh
# tableaspicture.sh GROUPS PYTHON DRAWER: holds the drawer of timed runs to tables that a program has made, to tables whose
# verdicts are known, and to what is no table.
set -e
printf 'endian 2 10\nerrors -1\n' > drawn.list
"$1" -perf drawn.list > drawn.txt
"$2" "$3" drawn.txt > drawn.svg
"$2" - "$2" "$3" <<'END'
import subprocess
import sys
import xml.etree.ElementTree

NAMESPACE = '{http://www.w3.org/2000/svg}'


def texts_of(picture):
    return [' '.join(text.itertext()).strip() for text in xml.etree.ElementTree.fromstring(picture).iter(NAMESPACE + 'text')]


def table(name, rows):
    with open(name, 'w', encoding='utf-8') as file:
        for number in range(max(len(times) for times in rows.values())):
            print('what the program says\n\n\nGroup Name              nbCycles   average time    options', file=file)
            print('----------              --------   ------------    -------\n\n', file=file)
            for group, times in rows.items():
                if number < len(times):
                    print('%-24s %7d %14f    %s ' % (*group.split('/')[:1], 3, times[number], ' '.join(group.split('/')[1:])), file=file)
            print(file=file)


def run(*arguments):
    return subprocess.run([sys.argv[1], sys.argv[2], *arguments], capture_output=True, check=False)


drawn = texts_of(open('drawn.svg', 'rb').read())
assert 'endian 10' in drawn and 'errors' not in drawn, drawn  # a row of no cycles has no time

table('before.txt', {'slow/1': [1, 1.1, 1.2, 1.05, 1.15], 'fast': [2, 2.1, 2.2, 2.3, 2.4], 'touching': [1, 1, 1, 1, 1.5],
                     'little': [1, 1, 1, 1, 1], 'four': [1, 1, 1, 1]})
table('now.txt', {'slow/1': [1.21, 1.3, 1.4, 1.5, 1.6], 'fast': [1, 1.1, 1.2, 1.3, 1.9], 'touching': [1.5, 1.6, 1.7, 1.8, 1.9],
                  'little': [1.05, 1.05, 1.05, 1.05, 1.05], 'four': [9, 9, 9, 9], 'added': [0.001]})
first, second = (run('--before', 'before.txt', 'now.txt') for _ in range(2))
assert first.returncode == 0 and first.stdout == second.stdout, first.stderr
assert first.stderr.decode().splitlines() == ['slower: slow/1'], first.stderr
texts = texts_of(first.stdout)
for said in ('slow 1', '1.4 s, slower: 1.27 times as long', '1.2 s, faster: 0.545 times as long', '1.7 s', '1.05 s', '9 s', '1 ms, new'):
    assert said in texts, (said, texts)

for wrong, said in (([], 'usage'), (['nowhere.txt'], 'perf2svg.py: '), ([sys.argv[2]], 'there is no table')):
    ended = run(*wrong)
    assert ended.returncode == (1 if wrong else 2) and said in ended.stderr.decode() and not ended.stdout, (wrong, ended)
END
