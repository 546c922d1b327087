#!/usr/bin/env python3
"""Writes a log as a busy renderer would: generatelog.py LINES FILE [SEED].

A thread plans passes and reports on them; seven others render tiles, with nested calls, warnings, now and then an error, and messages
lost while their queues were full. The same arguments give the same bytes. What is in the log is told as JSON: counts of lines, calls,
losses, lost messages, errors and reports.
"""
import heapq
import json
import random
import sys


class Thread:
    """A thread's lines as (ticks, level, text), in order."""

    def __init__(self, number, chance):
        self.number, self.chance = number, chance
        self.now, self.depth = 1_100_000 + chance.randrange(400_000), 0

    def pause(self, least, most):
        self.now += self.chance.randrange(least, most)

    def line(self, level, text):
        self.pause(300, 2_400)
        return self.now, self.number, level, text

    def traced(self, text):
        return self.line('Tracing', '' if self.depth == 0 and not text else self.indent() + text)

    def indent(self):
        return '  ' + '| ' * (self.depth - 1) if self.depth else ''

    def enter(self, name):
        line = self.traced('+ ' + name)
        self.depth += 1
        return line

    def leave(self):
        line = self.traced('/')
        self.depth -= 1
        return line

    def tiles(self):
        chance, tile = self.chance, self.number
        while True:
            tile += 7
            yield self.enter('renderTile')
            yield self.traced(f'| tile {tile} at {tile % 40 * 48},{tile // 40 % 27 * 40}')
            for row in range(chance.randrange(2, 6)):
                yield self.enter('traceRays')
                for _ in range(chance.randrange(1, 4)):
                    yield self.enter(chance.choice(('intersect', 'intersect', 'shade', 'sampleSky')))
                    self.pause(2_000, 60_000)
                    if chance.random() < .3:
                        yield self.traced(f'| {chance.randrange(40, 900)} hits, nearest {chance.uniform(.1, 90):.3f}')
                    yield self.leave()
                yield self.line('Informational', f'Render row {row} of tile {tile}: {chance.randrange(900, 4000)} rays, '
                                                 f'{chance.uniform(.2, 3):.3f} ms')
                self.pause(1_000, 30_000)
                yield self.leave()
            kind = chance.random()
            if kind < .03:
                yield self.line('Warning', f'Render tile {tile} is noisy: variance {chance.uniform(.01, .4):.4f}')
            elif kind < .033:
                yield self.line('Error', f'Texture cannot read sky{chance.randrange(9)}.tex: file is truncated')
            elif kind < .037:
                lost = chance.randrange(3, 900)
                yield self.line('Informational', f'Event overflow [{lost}]')
                self.pause(200_000, 900_000)
            yield self.leave()
            self.pause(20_000, 120_000)

    def plans(self):
        chance, work = self.chance, 0
        while True:
            work += 1
            yield self.enter('renderPass')
            yield self.line('Informational', f'Pass starts, number {work}: source niederreiter, sampler hemisphere')
            for step in range(4):
                yield self.enter(('plan', 'distribute', 'gather', 'filter')[step])
                self.pause(4_000_000, 24_000_000)
                yield self.leave()
            total = chance.uniform(.02, .09)
            yield self.line('Profiling', f'Pass Profiler pass {work}:\n        Nb of cycles:   8\n        Total time  :   {total:.9f}\n'
                                         f'        Average time:   {total / 8:.9f}\n        Minimum time:   {total / 14:.9f}\n'
                                         f'        Maximum time:   {total / 5:.9f}\n        Standard dev:   {total / 40:.9f}\n')
            yield self.leave()
            self.pause(100_000, 2_000_000)


def count(counts, level, text):
    if text.startswith('Event overflow ['):
        counts['losses'] += 1
        counts['lost'] += int(text[16:-1])
    counts['calls'] += '+ ' in text
    counts['errors'] += level == 'Error'
    counts['reports'] += ' Profiler ' in text


def generate(lines, write, seed=1):
    counts = dict.fromkeys(('calls', 'losses', 'lost', 'errors', 'reports'), 0)
    written = 0

    def put(text):
        nonlocal written
        write((text + '\n').encode())
        written += 1 + text.count('\n')

    put('===== Message Logger Startup =====')
    put('===== Started on Sun Nov 22 17:21:21 2026\n')
    put('===== Clock Frequency: 0.000000001')
    threads = [Thread(number, random.Random(seed * 100 + number)) for number in range(1, 9)]
    flows = [thread.plans() if thread.number == 1 else thread.tiles() for thread in threads]
    heap = [(*next(flow), index) for index, flow in enumerate(flows)]
    heapq.heapify(heap)
    while written < lines - 1:
        ticks, number, level, text, index = heap[0]
        count(counts, level, text)
        put(f'{ticks >> 32:010} {ticks & 0xffffffff:010} (0x{number:08x}) {level}: {text}')
        heapq.heapreplace(heap, (*next(flows[index]), index))
    put('===== Message Logger Stopped =====')
    return dict(counts, lines=written)


if __name__ == '__main__':
    with open(sys.argv[2], 'wb') as file:
        print(json.dumps(generate(int(sys.argv[1]), file.write, int(sys.argv[3]) if len(sys.argv) > 3 else 1)))
