#!/usr/bin/env python3
"""drawguide.py PROGRAMS FOLDER: draws the pictures that explain a subsystem each, as SVG files in FOLDER. With --check behind
them it fails if a picture in FOLDER isn't what it would draw.

    updown.svg        the packages of `inventory`, up and down, from what the program tells
    message.svg       the road of a message
    exact.svg         two rates on one scale, and what `withtimecode`, `withchrono` and `vnexacttime` are off after a year
    mark.svg          a mark, and the two questions that it answers
    samplingroad.svg  from a source to a histogram, from the numbers of `roaddata`

PROGRAMS is the folder of the built programs. Each function draws one picture: it runs the programs, reads what they print, and
places it by hand on 800 pixels. The pictures have a background of their own, so they are readable on any page; their colours
follow the reader's choice of light or dark.
"""
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile

STYLE = """
.bg{fill:#ffffff}text{fill:#1b1f24}.muted{fill:#57606a}.code{font-family:monospace}.head{font-weight:bold}
.blue{fill:#dbe8fb;stroke:#2f6db5}.green{fill:#dcf2dc;stroke:#2e7d32}.amber{fill:#ffe8c7;stroke:#a86400}
.grey{fill:#eef0f2;stroke:#8c959f}.line{stroke:#57606a;fill:none}.tip{fill:#57606a}.faint{stroke:#c4cad0;fill:none}
.badge{fill:#ffffff;font-weight:bold}
.dots{stroke:#14508c;fill:none;stroke-linecap:round}.bar{fill:#2f6db5}.red{fill:#b00020}.redline{stroke:#b00020;fill:none}
.greenline{stroke:#2e7d32;fill:none}.greentext{fill:#2e7d32}.bluetext{fill:#14508c}
@media (prefers-color-scheme: dark){
.bg{fill:#1b1f24}text{fill:#e6edf3}.muted{fill:#a8b1bb}
.blue{fill:#1d3557;stroke:#7fb0ee}.green{fill:#1e3d24;stroke:#82cf8a}.amber{fill:#4a3413;stroke:#f0b860}
.grey{fill:#2a3038;stroke:#8c959f}.line{stroke:#a8b1bb}.tip{fill:#a8b1bb}.faint{stroke:#4a525c}
.badge{fill:#1b1f24}.dots{stroke:#8fc1ff}.bar{fill:#7fb0ee}.red{fill:#ff8a96}.redline{stroke:#ff8a96}
.greenline{stroke:#82cf8a}.greentext{fill:#82cf8a}.bluetext{fill:#8fc1ff}}
"""


class Drawing:
    """A picture of 800 pixels' width."""

    def __init__(self, title, height):
        self.height = height
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" width="800" height="{height}" viewBox="0 0 800 {height}" '
            'font-family="sans-serif" font-size="13" role="img">',
            f"<title>{escaped(title)}</title>", f"<style>{STYLE.strip()}</style>",
            '<defs><marker id="tip" viewBox="0 0 10 10" refX="9" refY="5" markerWidth="8" markerHeight="8" '
            'orient="auto-start-reverse"><path class="tip" d="M0,0 L10,5 L0,10 z"/></marker></defs>',
            f'<rect class="bg" width="800" height="{height}" rx="8"/>']

    def box(self, kind, x, y, width, height, round_by=4):
        self.parts.append(f'<rect class="{kind}" x="{short(x)}" y="{short(y)}" width="{short(width)}" '
                          f'height="{short(height)}" rx="{round_by}"/>')

    def text(self, x, y, text, kind="", anchor="start", size=None):
        kind = f' class="{kind}"' if kind else ""
        anchor = f' text-anchor="{anchor}"' if anchor != "start" else ""
        size = f' font-size="{size}"' if size else ""
        self.parts.append(f'<text x="{short(x)}" y="{short(y)}"{kind}{anchor}{size}>{escaped(text)}</text>')

    def path(self, steps, kind="line", width=1.5, tip=False, extra=""):
        tip = ' marker-end="url(#tip)"' if tip else ""
        self.parts.append(f'<path class="{kind}" stroke-width="{width}" d="{steps}"{tip}{extra}/>')

    def dots(self, points, width=3):
        self.path("".join(f"M{x:.1f} {y:.1f}h0" for x, y in points), "dots", width)

    def badge(self, x, y, number, radius):
        self.parts.append(f'<circle class="bar" cx="{x}" cy="{y}" r="{radius}"/>')
        self.text(x, y + 4, number, "badge", "middle", 12)

    def save(self, path):
        path.write_text("\n".join(self.parts) + "\n</svg>\n")


def escaped(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def short(number):
    return f"{number:.1f}".rstrip("0").rstrip(".")


def output_of(programs, *command, **environment):
    """What a program prints, on both streams."""
    own = {name: value for name, value in os.environ.items() if not name.startswith("VN_")}
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.run([programs / command[0], *command[1:]], cwd=folder, env=own | environment, check=True,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return run.stdout


def draw_up_and_down(programs, path):
    told = output_of(programs, "inventory", ".", VN_DEBUG_INITIALIZE="1")
    up = re.findall(r"InInit<(\w+)>::performInitialize", told)
    down = re.findall(r"InInit<(\w+)>::performFinalize", told)
    assert up and down == up[::-1], (up, down)
    row, step, left = 20, 11, 24
    top = 64 + row * len(up)
    drawing = Drawing("The packages of a program come up in the order of their dependencies, and go down in reverse",
                      top + 66)
    stair = step * len(up)
    drawing.text(left, 28, "Vn::InInitGuard guard(argc, argv);", "code")
    drawing.text(left, 46, "the packages come up, one by one", "muted", size=12)
    drawing.text(400, 28, "main runs", "head", "middle")
    drawing.text(400, 46, "what a package depends on is below it", "muted", "middle", 12)
    drawing.text(800 - left, 28, "}", "code", "end")
    drawing.text(800 - left, 46, "and go down in reverse", "muted", "end", 12)
    base = up.index("base")
    for i, name in enumerate(up):
        y = top - row * (i + 1)
        drawing.box("blue" if i <= base else "green", left + step * i, y, 800 - 2 * (left + step * i), row - 3, 3)
        drawing.text(400, y + 13, f"{i + 1}. {name}", anchor="middle", size=12)
    drawing.path(f"M{left - 8} {top - 4}L{left + stair - 14} {top - row * len(up) - 2}", tip=True)
    drawing.path(f"M{800 - left - stair + 14} {top - row * len(up) - 2}L{800 - left + 6} {top - 10}", tip=True)
    drawing.path(f"M{left} {top + 8}H{800 - left}", tip=True)
    drawing.text(800 - left, top + 24, "time", "muted", "end", 12)
    drawing.box("blue", left, top + 36, 14, 14, 3)
    drawing.text(left + 20, top + 48, "libVNbase: a package that depends on base has all of it below", size=12)
    drawing.box("green", 446, top + 36, 14, 14, 3)
    drawing.text(466, top + 48, "the program's own, and the thread layer of the log", size=12)
    drawing.save(path)


def draw_message(path):
    drawing = Drawing("The road of a message: from a thread through its own queue to the output of its level", 372)
    for x, heading in ((20, "threads that log"), (250, "a queue for each"), (470, "one thread that reads"),
                       (662, "outputs")):
        drawing.text(x, 26, heading, "head")
    lanes = ((44, "thread 1", ("5", "9"), 'VN_LOG(cache, Warning, …)'),
             (112, "thread 2", ("6", "7"), 'VN_LOG(disk, Warning, …)'),
             (180, "thread 3", (), 'VN_LOG(ui, Tracing, …)'))
    for y, name, stamps, site in lanes:
        drawing.box("blue", 20, y, 190, 48)
        drawing.text(30, y + 19, name)
        drawing.text(30, y + 38, site, "code", size=11)
        for cell in range(5):
            drawing.box("amber" if cell < len(stamps) else "grey", 250 + 34 * cell, y + 9, 30, 30, 3)
        for cell, stamp in enumerate(stamps):
            drawing.text(265 + 34 * cell, y + 29, stamp, anchor="middle")
    for y in (68, 136):
        drawing.path(f"M210 {y}H246", tip=True)
        drawing.path(f"M418 {y}C444 {y} 440 136 466 136", tip=True)
    drawing.path("M210 204H232", "redline", 2)
    drawing.path("M226 198L238 210M238 198L226 210", "redline", 2)
    drawing.box("green", 470, 92, 150, 88)
    drawing.text(545, 116, "Vn::ThreadLog", anchor="middle")
    drawing.text(545, 138, "takes the earliest", "muted", "middle", 12)
    drawing.text(545, 154, "stamp of all queues:", "muted", "middle", 12)
    drawing.text(545, 172, "5, 6, 7, 9", anchor="middle")
    for y, name in ((58, "events.log"), (120, "prof.log"), (182, "standard output")):
        drawing.box("grey", 662, y, 118, 34)
        drawing.text(721, y + 22, name, anchor="middle", size=12)
        drawing.path(f"M620 136C644 136 634 {y + 17} 650 {y + 17}H658", tip=True)
    notes = ((20, "1", "The level is off: nothing", "is evaluated. It costs a", "load and a branch."),
             (215, "2", "It is on: a stamp and the text", "are copied. No lock, no", "allocation, no file."),
             (418, "3", "A full queue: an error waits", "for room, other messages", "are counted as lost."),
             (613, "4", "Whole lines, in the order of", "their stamps, to the output", "of each level."))
    drawing.path("M20 256H780", "faint", 1)
    for x, number, *lines in notes:
        drawing.badge(x + 10, 284, number, 10)
        for i, line in enumerate(lines):
            drawing.text(x, 314 + 18 * i, line, size=12)
    for x, y, number in ((218, 184, "1"), (228, 56, "2"), (430, 56, "3"), (640, 108, "4")):
        drawing.badge(x, y, number, 8)
    drawing.save(path)


def frames_off(text, hours, after):
    """How many frames a program tells to be off after that many hours, in the words before `after`."""
    line = next(line for line in text.splitlines() if line.lstrip().startswith(f"{hours} h:"))
    return abs(int(re.search(rf"(-?\d+)(?: frames off)? {after}", line).group(1)))


def draw_exact(programs, path):
    drawing = Drawing("Two rates on one scale of whole numbers, and how far other ways of counting are off after a year", 400)
    left, right, seconds = 130, 760, 0.2
    x_of = lambda count, rate: left + (right - left) * count / rate / seconds
    drawing.text(20, 28, "A position is a whole number and a rate. Two of them meet on a scale that both divide.", "head")
    rulers = ((70, 25, "25/1"), (190, 30, "30/1"))
    for y, rate, name in rulers:
        drawing.text(20, y + 5, f"frames at {name}")
        drawing.path(f"M{left} {y}H{right + 20}", tip=True)
        for count in range(int(rate * seconds) + 1):
            x = x_of(count, rate)
            drawing.path(f"M{short(x)} {y - 7}V{y + 7}", width=2)
            drawing.text(x, y - 12 if y < 100 else y + 24, str(count), anchor="middle", size=12)
    drawing.text(20, 135, "both at 750/1")
    drawing.path(f"M{left} 130H{right + 20}", tip=True)
    drawing.path("".join(f"M{short(x_of(i, 750))} {123 if i % 10 == 0 else 126}V{137 if i % 10 == 0 else 134}"
                         for i in range(151)), "line", 0.8)
    for count, rate, y_from, y_to, kind, text_kind, label in (
            (3, 25, 78, 120, "redline", "red", "3 at 25/1 = 90 at 750/1"),
            (4, 30, 182, 140, "greenline", "greentext", "4 at 30/1 = 100 at 750/1")):
        x = short(x_of(count, rate))
        drawing.path(f"M{x} {y_from}V{y_to}", kind, 2.5)
        drawing.parts.append(f'<circle class="{text_kind}" cx="{x}" cy="130" r="5"/>')
        drawing.text(float(x) + (-8 if rate == 25 else 8), 104 if rate == 25 else 165, label, text_kind,
                     "end" if rate == 25 else "start", 12)
    drawing.text(left, 236, "90 < 100, and the sum is 190 at 750/1: integers, so nothing is rounded.", size=12)

    off = (("30 frames to a second", frames_off(output_of(programs, "withtimecode", "year"), 8760, "by 30"), "red"),
            ("29.97 as a double", frames_off(output_of(programs, "withtimecode", "year"), 8760, "by 29.97"), "red"),
            ("seconds in a float", frames_off(output_of(programs, "withchrono", "year"), 8760, "by way of a float"), "red"),
            ("Vn::DtTime", frames_off(output_of(programs, "vnexacttime", "year"), 8760, "by way of 30000/1"), "greentext"))
    drawing.path("M20 254H780", "faint", 1)
    drawing.text(20, 278, "Frames off after a year at 30000/1001", "head")
    drawing.text(300, 278, "on a logarithmic scale", "muted", size=12)
    for i, (name, count, kind) in enumerate(off):
        y = 304 + 24 * i
        drawing.text(175, y + 4, name, anchor="end", size=12)
        width = 480 * math.log10(count + 1) / 6
        if width:
            drawing.box(kind, 190, y - 8, width, 16, 3)
        else:
            drawing.path(f"M190 {y - 8}V{y + 8}", "greenline", 3)
        drawing.text(198 + width, y + 5, f"{count:,}", kind, size=12)
    drawing.save(path)


def draw_mark(path):
    drawing = Drawing("A mark ties a moment of the stream to a reading of the clock", 290)
    stream, clock = 62, 232
    drawing.text(20, stream, "stream", "head")
    drawing.text(20, stream + 18, "25/1", "muted", size=12)
    drawing.text(20, clock, "clock", "head")
    drawing.text(20, clock + 18, "its own rate", "muted", size=12)
    for y in (stream, clock):
        drawing.path(f"M110 {y}H780", tip=True)
    for i in range(8):
        drawing.path(f"M{130 + 80 * i} {stream - 7}V{stream + 7}", width=2)
        drawing.text(130 + 80 * i, stream - 14, str(99 + i), anchor="middle", size=12)
    drawing.path("".join(f"M{120 + 10 * i} {clock - 4}V{clock + 4}" for i in range(65)), "line", 0.8)
    drawing.path(f"M210 {stream}V{clock}", "redline", 3)
    for y in (stream, clock):
        drawing.parts.append(f'<circle class="red" cx="210" cy="{y}" r="6"/>')
    drawing.text(200, 150, "the mark", "red", "end")
    drawing.text(210, clock + 28, "a reading", "red", "middle", 12)
    drawing.path(f"M450 {stream + 10}V{clock - 8}", "dots", 2.5, tip=True)
    drawing.text(460, 118, "evalTime(DtTime):", "bluetext code", size=12)
    drawing.text(460, 136, "when is 103 due?", "bluetext")
    drawing.path(f"M645 {clock - 8}L614 {stream + 10}", "greenline", 2.5, tip=True)
    drawing.text(640, 166, "evalTime(DtRefTime):", "greentext code", size=12)
    drawing.text(640, 184, "105, cut toward", "greentext")
    drawing.text(640, 202, "the mark", "greentext")
    drawing.text(645, clock + 28, "a later reading", "greentext", "middle", 12)
    drawing.save(path)


def draw_sampling(programs, path):
    data = {}
    for line in output_of(programs, "roaddata").splitlines():
        word, *numbers = line.split()
        data.setdefault(word, []).append([float(number) for number in numbers])
    drawing = Drawing("From a source of numbers through a sampler into a histogram, which becomes a source again", 470)
    columns, side = (40, 310, 580), 180

    def heads(y, names, arrows):
        for x, (name, what) in zip(columns, names):
            drawing.text(x, y, name, "code", size=12)
            drawing.text(x, y + 16, what, "muted", size=12)
        for x, name in zip(columns, arrows):
            drawing.path(f"M{x + side + 14} {y + 24 + 75}H{x + 270 - 14}", width=2, tip=True)

    drawing.text(20, 26, "Numbers", "head")
    drawing.text(95, 26, "a dot for each: from left to right by its value, downward in the order of the draws", "muted", size=12)
    heads(50, (("RnLecuyerUniformRng", "a source: an RnRng"), ("RnGaussianRng", "a sampler on it: an RnRng as well"),
               ("RnHistogram", "counts what is drawn")), ("", ""))
    top, height = 76, 100
    for x, word, low, high in ((columns[0], "uniform", 0, 1), (columns[1], "gaussian", -3, 3)):
        drawing.box("grey", x, top, side, height)
        points = []
        for i, (number,) in enumerate(data[word]):
            if low <= number <= high:
                points.append((x + 6 + (side - 12) * (number - low) / (high - low), top + 6 + (height - 12) * i / 59))
        drawing.dots(points, 4)
    drawing.box("grey", columns[2], top, side, height)
    most = max(bin for bin, in data["bin"])
    width = (side - 12) / len(data["bin"])
    for i, (bin,) in enumerate(data["bin"]):
        tall = (height - 12) * bin / most
        drawing.box("bar", columns[2] + 6 + width * i, top + height - 6 - tall, width - 1, tall, 0)
    drawing.path(f"M{columns[2] + side / 2} {top + height + 4}V{top + height + 26}H{columns[1] + side / 2}"
                 f"V{top + height + 8}", tip=True)
    drawing.text((columns[1] + columns[2] + side) / 2, top + height + 42, "RnHistogramRng: a histogram is a source again",
                 anchor="middle", size=12)

    drawing.text(20, 244, "Points and directions", "head")
    heads(268, (("RnHaltonBiRng", "a source of points: an RnBiRng"), ("RnCosineHemisphericalRng", "an RnSphericalRng on it"),
                ("RnHistogramHemispherical", "its scene, for a viewer")), ("", ""))
    top, height = 294, 150
    for x in columns:
        drawing.box("grey", x, top, side, height)
    drawing.dots([(columns[0] + 15 + 150 * a, top + 6 + 138 * (1 - b)) for a, b in data["point"]])

    def seen(x, y, z):
        """From a little above the ground."""
        return 0.9 * x + 0.44 * y, 0.4 * y - 0.2 * x + 0.9 * z

    places = [seen(*vertex) for vertex in data["direction"]]
    drawing.dots([(columns[1] + side / 2 + 84 * a, top + 108 - 88 * b) for a, b in places])
    scale = max(vertex[2] for vertex in data["vertex"])
    places = [seen(*(number / scale for number in vertex)) for vertex in data["vertex"]]
    drawing.dots([(columns[2] + side / 2 + 118 * a, top + 134 - 122 * b) for a, b in places])
    drawing.save(path)


def draw(programs, folder):
    draw_up_and_down(programs, folder / "updown.svg")
    draw_message(folder / "message.svg")
    draw_exact(programs, folder / "exact.svg")
    draw_mark(folder / "mark.svg")
    draw_sampling(programs, folder / "samplingroad.svg")


def check(programs, folder):
    with tempfile.TemporaryDirectory() as drawn:
        draw(programs, pathlib.Path(drawn))
        pictures = sorted(pathlib.Path(drawn).iterdir())
        wrong = [picture.name for picture in pictures if picture.read_bytes() != (folder / picture.name).read_bytes()]
    for name in wrong:
        print(f"{folder / name} isn't what the programs tell: tools/drawguide.sh draws it anew")
    print(len(pictures), "pictures")
    return 1 if wrong else 0


if __name__ == "__main__":
    arguments = sys.argv[1:]
    is_check = arguments[2:] == ["--check"]
    if len(arguments) != 2 and not is_check:
        sys.exit(__doc__)
    places = [pathlib.Path(argument).resolve() for argument in arguments[:2]]
    sys.exit(check(*places) if is_check else draw(*places))
