#!/usr/bin/env python3
"""generate.py TABLE PLATFORM RESULT: writes the C++ source that compares the compiler's classes with structure.txt.

PLATFORM is POSIX or WINDOWS. generate.py --defaults TABLE SOURCES compares the table's default arguments with the headers
and writes nothing. A class that isn't there any more, or a field, is an error of the compiler in the line of the table.
"""
import itertools
import re
import sys


class Block:
    def __init__(self, line, name, header):
        self.line, self.name, self.header = line, name, header
        self.values = {}     # of "for": the parameter's name, and what it stands for
        self.platform = None
        self.rows = []       # (line, word, the rest)


def fail(path, line, what):
    sys.exit(f'{path}:{line}: {what}')


def read(path):
    blocks = []
    for line, text in enumerate(open(path, encoding='utf-8'), 1):
        text = text.split('#')[0].rstrip()
        if not text:
            continue
        if not text.startswith(' '):
            match = re.fullmatch(r'class (.+) in (\S+)', text)
            if not match:
                fail(path, line, 'not "class NAME in HEADER"')
            blocks.append(Block(line, match[1], match[2]))
            continue
        if not blocks:
            fail(path, line, 'stands before the first class')
        block, (word, rest) = blocks[-1], text.strip().split(None, 1) if ' ' in text.strip() else fail(path, line, 'one word')
        if word == 'for':
            parameter, values = (part.strip() for part in rest.split(' = ', 1))
            block.values.setdefault(parameter, []).extend(value.strip() for value in values.split(' | '))
        elif word == 'only':
            block.platform = rest
        elif word in ('base', 'slot', 'field', 'bits', 'static', 'enum', 'holds', 'default'):
            block.rows.append((line, word, rest))
        elif text.startswith('        ') and rest.startswith('= '):
            block.rows.append((line, 'enumerator', word + ' ' + rest))
        else:
            fail(path, line, f'unknown word {word}')
    return blocks


def split_member(path, line, text):
    """TYPE NAME"""
    match = re.fullmatch(r'(.+[\w>*&\]) ])(\b\w+)', text)
    return (match[1].strip(), match[2]) if match else fail(path, line, 'not "TYPE NAME"')


def split_function(path, line, text):
    """TYPE NAME(TYPES) const -> the name, and the type of a pointer to it, with CLASS for the class"""
    match = re.fullmatch(r'(.+?[ *&])(operator\(\)|\w+)\((.*)\)( const)?', text)
    if not match:
        fail(path, line, 'not "TYPE NAME(TYPES)"')
    return match[2], f'{match[1].strip()} (CLASS::*)({match[3]}){match[4] or ""}'


class Writer:
    """One class after the other; facts are numbered, and the functions that compare them come last."""

    def __init__(self, path):
        self.path, self.facts, self.functions, self.calls, self.number = path, [], [], [], 0

    def fact(self, line, text):
        self.number += 1
        self.facts += [f'#line {line} "structure.txt"', f'template struct {text.replace("#", str(self.number))};']
        return f'fact(Key<{self.number}>{{}})'

    def type(self, line, text):
        return f'decltype({self.fact(line, f"TypeFact<#, {text}>")})::type'

    def write(self, block, name, substitute):
        rows = [(line, word, substitute(rest)) for line, word, rest in block.rows]
        # The class may be a private one of another.
        real = f'Class{self.number}'
        self.facts.append(f'using {real} = {self.type(block.line, name)};')
        body = [f'Layout layout = Layout::of<{real}>("{name}");']
        has_slots = False
        enum = None
        for line, word, rest in rows:
            if word == 'base':
                words = rest.split()
                base = ' '.join(w for w in words if w not in ('private', 'virtual'))
                flags = ', '.join(str(flag).lower() for flag in ('virtual' in words, 'private' not in words))
                body.append(f'layout.base<{base}>({line}, {flags});')
            elif word == 'slot' and rest == '~':
                has_slots = True
                body.append('layout.destructor();')
            elif word == 'slot':
                has_slots = True
                function, pointer = split_function(self.path, line, rest)
                pointer = pointer.replace('CLASS', real)
                got = self.fact(line, f'ValueFact<#, static_cast<{pointer}>(&{real}::{function})>')
                body.append(f'layout.slot({line}, "{function}", slotOf({got}));')
            elif word in ('field', 'bits', 'static'):
                if word == 'bits':
                    rest = rest.split(None, 1)[1]
                kind, member = split_member(self.path, line, rest)
                expected = self.type(line, kind)
                if word == 'field':
                    got = self.fact(line, f'FieldFact<#, offsetof({real}, {member}), decltype({real}::{member})>')
                else:
                    got = self.fact(line, f'TypeFact<#, decltype({real}::{member})>')
                call = {'field': 'field', 'bits': 'bits', 'static': 'type'}[word]
                body.append(f'layout.{call}<{expected}>({line}, "{member}", {got});')
            elif word == 'enum':
                enum, kind = rest.split(' : ')
                got = self.fact(line, f'TypeFact<#, std::underlying_type_t<{real}::{enum}>>')
                body.append(f'layout.type<{kind}>({line}, "{enum}", {got});')
            elif word == 'enumerator':
                item, value = rest.split(' = ')
                got = self.fact(line, f'ValueFact<#, static_cast<long long>({real}::{enum}::{item})>')
                body.append(f'layout.value({line}, "{item}", {value}, {got});')
            elif word == 'holds':
                body.append(f'layout.value({line}, "what holds", 1, ({rest}) ? 1 : 0);')
        slots = f'slotOf(&Behind<{real}>::behindTheLast)' if has_slots else '-1'
        body.append(f'layout.close({block.line}, sizeof({real}), alignof({real}), {slots});')
        self.functions += [f'void compare{real}()', '{'] + ['    ' + statement for statement in body] + ['}']
        self.calls.append(f'    compare{real}();')


def instances(blocks):
    """Each class of each block, with what its parameters stand for."""
    for block in blocks:
        for values in itertools.product(*block.values.values()):
            def substitute(text, names=tuple(block.values), values=values):
                for name, value in zip(names, values):
                    text = re.sub(rf'\b{name}\b', lambda _: value, text)
                return text
            yield block, substitute(block.name), substitute


def bases_first(all_instances):
    named = {name: (block, name, substitute) for block, name, substitute in all_instances}
    done, order = set(), []

    def visit(name):
        if name in done:
            return
        done.add(name)
        block, _, substitute = named[name]
        for _, word, rest in block.rows:
            if word == 'base' and (base := substitute(rest).split(' ', rest.count('virtual') + rest.count('private'))[-1]) in named:
                visit(base)
        order.append(named[name])

    for name in named:
        visit(name)
    return order


def write(path, platform, result):
    blocks = [block for block in read(path) if block.platform in (None, platform)]
    writer = Writer(path)
    for block, name, substitute in bases_first(instances(blocks)):
        writer.write(block, name, substitute)
    headers = sorted({block.header for block in blocks})
    lines = ['// Made by generate.py from structure.txt.', '#include "layout.h"', '', '#include <list>', '#include <stdexcept>',
             '#include <vector>'] + [f'#include <{header}>' for header in headers]
    lines += ['', 'namespace structure', '{', 'using namespace Vn;'] + writer.facts
    lines += ['#line 1 "structure.cpp"', 'namespace', '{'] + writer.functions + ['}  // namespace', '', 'void compareAll()', '{']
    lines += writer.calls + ['}', '}  // namespace structure', '']
    open(result, 'w', encoding='utf-8').write('\n'.join(lines))


def compare_defaults(path, sources):
    """The declarations stand in the headers word by word, whatever the lines they are broken into."""
    number = bad = 0
    for block in read(path):
        text = ' '.join(open(f'{sources}/{block.header}', encoding='utf-8').read().split())
        for line, word, rest in block.rows:
            if word == 'default':
                number += 1
                if ' '.join(rest.split()) not in text:
                    bad += 1
                    print(f'structure.txt:{line}: {block.header} does not have "{rest}"')
    print(f'{number} declarations with default arguments, {bad} of them changed')
    return number > 0 and bad == 0


if __name__ == '__main__':
    if sys.argv[1] == '--defaults':
        sys.exit(0 if compare_defaults(*sys.argv[2:4]) else 1)
    write(*sys.argv[1:4])
