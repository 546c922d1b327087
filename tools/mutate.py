#!/usr/bin/python3
"""Makes small changes in the libraries' sources, one at a time, and tells which ones no test notices.

    tools/mutate.py                          600 changes, drawn evenly over the wings
    tools/mutate.py --count 50 --seed 7      others
    tools/mutate.py --only 'osfilepath'      all changes of the sources whose name contains this
    tools/mutate.py --change 1234            one of them
    tools/mutate.py --list                   what could be changed

Comparisons, limits, conditions and their parts, constants and arithmetic are changed; statements, calls, throws, breaks and
returns are dropped; functions return at once; two arguments of one type change places. All changes stand in one build, each
behind a question whether it is the one of this process (tests/mutants/mutant.h), so that a change costs no compilation: the
build is made in build/mutants once, with what the compiler refuses left out. Then every test tells which places it runs, and
a change is tried with the tests that run its place, in processes of their own, until one fails or takes ten times its time.

What the compiler computes is not changed, nor is what stands in a macro or an interface (defaults, enumerators); no wing of
Windows either. Memory orders are not changed here: tests/models/check.py does that, as no processor shows each of them.

build/mutants/results.json has what was found, also from runs before, as long as the sources stay as they are; those that
survived are printed at the end, but for those that tests/mutants/equal.txt lists with the reason why nobody could notice them. The
exit code is 0 when at least 95 % of the others were caught. Needs the package python3-clang-14.
"""
import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutants"
COPY = WORK / "source"
TREE = WORK / "tree"
RUNTIME = ROOT / "tests" / "mutants"
TARGETS = ["basetest", "threadlogtest", "bordertest", "endtest", "faulttest", "filefaulttest", "logfaulttest",
            "samplerfaulttest", "systemfaulttest", "exampletest", "groups", "soak"]
SKIPPED = 77
COMPARISONS = {"<": ("less", "<=", ">="), ">": ("greater", ">=", "<="), "<=": ("notGreater", "<", ">"),
               ">=": ("notLess", ">", "<"), "==": ("equal", "!="), "!=": ("different", "==")}
ARITHMETIC = {"+": ("plus", "-"), "-": ("minus", "+"), "*": ("times", "+"), "/": ("over", "*"), "%": ("remainder", "/"),
              "&": ("both", "|"), "|": ("either", "&"), "<<": ("up", ">>"), ">>": ("down", "<<")}


class Change:
    """A change: what it does at a line, and the pieces of text that put it there, with those that it shares a place with."""

    def __init__(self, file, line, text, site):
        self.file, self.line, self.text, self.site, self.number = file, line, text, site, 0

    def key(self):
        return f"{self.file}:{self.line}: {self.text}"


class Site:
    """A place: pieces of text to insert or put in place of others, in which @ stands for the number of its first change."""

    def __init__(self, file, line):
        self.file, self.line, self.pieces, self.changes = file, line, [], []


class Finder:
    """Walks over the syntax tree of a source and of the headers that it includes."""

    def __init__(self, cindex):
        self.kinds = cindex.CursorKind
        self.types = cindex.TypeKind
        self.bytes, self.seen, self.sites = {}, set(), []
        k = self.kinds
        self.fixed = {k.CASE_STMT, k.ENUM_CONSTANT_DECL, k.STATIC_ASSERT, k.TEMPLATE_NON_TYPE_PARAMETER, k.PARM_DECL,
                      k.TYPE_REF, k.TEMPLATE_REF, k.ALIGNED_ATTR, k.TYPE_ALIAS_DECL, k.TYPEDEF_DECL,
                      k.TEMPLATE_TYPE_PARAMETER, k.CONCEPT_DECL if hasattr(k, "CONCEPT_DECL") else k.TYPEDEF_DECL}
        self.bodies = {k.FUNCTION_DECL, k.CXX_METHOD, k.CONSTRUCTOR, k.DESTRUCTOR, k.CONVERSION_FUNCTION,
                       k.FUNCTION_TEMPLATE}
        self.expressions = {getattr(k, name) for name in dir(k)
                            if name.endswith("_EXPR") or name.endswith("_OPERATOR") or name.endswith("_LITERAL")}
        self.droppable = {k.CALL_EXPR, k.BINARY_OPERATOR, k.COMPOUND_ASSIGNMENT_OPERATOR, k.UNARY_OPERATOR,
                          k.CXX_THROW_EXPR, k.CXX_DELETE_EXPR, k.UNEXPOSED_EXPR, k.BREAK_STMT, k.CONTINUE_STMT}

    def text(self, file):
        if file not in self.bytes:
            self.bytes[file] = (ROOT / file).read_bytes()
        return self.bytes[file]

    def span(self, cursor):
        """File and offsets of what stands in the source as it is; None of what macros made."""
        start, end = cursor.extent.start, cursor.extent.end
        if not start.file or not end.file or start.file.name != end.file.name or end.offset <= start.offset:
            return None
        name = os.path.normpath(start.file.name)
        if not name.startswith(str(ROOT) + "/src/"):
            return None
        return os.path.relpath(name, ROOT), start.offset, end.offset

    def source(self, span):
        return self.text(span[0])[span[1]:span[2]].decode()

    def site(self, span):
        line = self.text(span[0])[:span[1]].count(b"\n") + 1
        return Site(span[0], line)

    def add(self, site, depth, pieces, texts):
        """pieces: (from, to, text, opens)."""
        site.pieces = [(*piece, depth) for piece in pieces]
        site.changes = [Change(site.file, site.line, text, site) for text in texts]
        self.sites.append(site)

    @staticmethod
    def short(text):
        text = " ".join(text.split())
        return text if len(text) <= 60 else text[:57] + "..."

    def wrap(self, cursor, depth, before, after, text):
        span = self.span(cursor)
        if span:
            self.add(self.site(span), depth, [(span[1], span[1], before, True), (span[2], span[2], after, False)], [text])

    def clean(self, cursor, span):
        """False if a macro stands in it: then the offsets of what is inside may be those of the macro."""
        return not any(m[0] == span[0] and m[1] < span[2] and span[1] < m[2] for m in self.macros.get(span[0], ()))

    def walk(self, unit):
        self.macros = {}
        for cursor in unit.cursor.get_children():
            if cursor.kind == self.kinds.MACRO_INSTANTIATION:
                span = self.span(cursor)
                if span:
                    self.macros.setdefault(span[0], []).append(span)
        for cursor in unit.cursor.get_children():
            file = cursor.location.file
            if file and os.path.normpath(file.name).startswith(str(ROOT) + "/src/"):
                self.visit(cursor, None, 0)

    def visit(self, cursor, parent, depth):
        k = self.kinds
        if cursor.kind in self.fixed:
            return
        if cursor.kind == k.VAR_DECL:
            span = self.span(cursor)
            if not span or re.match(r"(\[\[\w+\]\] )?((static|inline) )*(constexpr|consteval)\b", self.source(span)):
                return
        if cursor.kind == k.FIELD_DECL and cursor.is_bitfield():
            return
        span = self.span(cursor)
        children = list(cursor.get_children())
        new = span and (span, cursor.kind) not in self.seen and self.clean(cursor, span)
        if new:
            self.seen.add((span, cursor.kind))
            self.changes_of(cursor, children, parent, span, depth)
        if cursor.kind in self.bodies and span and "= default" in self.source(span)[-16:]:
            return
        is_array = cursor.kind in (k.VAR_DECL, k.FIELD_DECL) and cursor.type.kind == self.types.CONSTANTARRAY
        for child in children:
            if is_array and child.kind in (k.INTEGER_LITERAL, k.DECL_REF_EXPR, k.BINARY_OPERATOR, k.CXX_UNARY_EXPR):
                continue  # its size
            if cursor.kind in self.bodies and child.kind != k.COMPOUND_STMT and cursor.kind != k.CONSTRUCTOR:
                continue  # the body alone
            if cursor.kind == k.CONSTRUCTOR and child.kind in (k.PARM_DECL, k.NAMESPACE_REF, k.MEMBER_REF):
                continue
            self.visit(child, cursor, depth + 1)

    def changes_of(self, cursor, children, parent, span, depth):
        k, kind, source = self.kinds, cursor.kind, self.source(span)
        if kind == k.BINARY_OPERATOR and len(children) == 2:
            self.operator(cursor, children, span, depth)
        elif kind == k.CALL_EXPR and len(children) == 3 and cursor.spelling.startswith("operator"):
            first, _, second = children
            self.operator(cursor, [first, second], span, depth)
        elif kind in (k.IF_STMT, k.WHILE_STMT, k.CONDITIONAL_OPERATOR, k.DO_STMT, k.FOR_STMT):
            self.condition(cursor, children, source, depth)
        elif kind == k.INTEGER_LITERAL and re.fullmatch(r"(0x[\da-fA-F']+|[\d']+)[uUlLzZ]*", source):
            self.wrap(cursor, depth, "vnmutant::oneMore(@, ", ")", f"{source} -> {source} + 1")
        elif kind == k.FLOATING_LITERAL and re.fullmatch(r"[\d.']+([eE][+-]?\d+)?[fFlL]?", source):
            self.wrap(cursor, depth, "vnmutant::oneMore(@, ", ")", f"{source} -> {source} + 1")
        elif kind == k.CXX_BOOL_LITERAL_EXPR and source in ("true", "false"):
            self.wrap(cursor, depth, "vnmutant::flip(@, ", ")", f"{source} -> {'false' if source == 'true' else 'true'}")
        elif kind == k.DECL_REF_EXPR and self.constant(cursor):
            self.wrap(cursor, depth, "vnmutant::oneMore(@, ", ")", f"{source} -> {source} + 1")
        elif kind in self.bodies:
            self.early(cursor, children, depth)
        if kind == k.CALL_EXPR:
            self.swap(cursor, depth)
        if parent and (parent.kind in (k.COMPOUND_STMT,) or self.body(cursor, parent)):
            self.drop(cursor, parent, span, source, depth)

    def constant(self, cursor):
        target = cursor.referenced
        return (target is not None and target.kind == self.kinds.VAR_DECL and target.type.is_const_qualified()
                and target.semantic_parent.kind in (self.kinds.NAMESPACE, self.kinds.TRANSLATION_UNIT)
                and target.type.get_canonical().kind.value in range(self.types.CHAR_U.value, self.types.LONGDOUBLE.value + 1))

    def operator(self, cursor, children, span, depth):
        left, right = (self.span(child) for child in children)
        if not left or not right or left[0] != span[0] or right[0] != span[0] or left[2] > right[1]:
            return
        between = self.text(span[0])[left[2]:right[1]].decode()
        sign = between.strip()
        if "//" in between:
            return
        site = self.site(span)
        place = left[2] + between.index(sign) if sign else 0
        if sign in ("&&", "||"):
            call = "yes" if sign == "&&" else "no"
            for child, side in zip(children, (left, right)):
                self.wrap(child, depth + 0.5, f"vnmutant::{call}(@, static_cast<bool>(", "))",
                          f"{self.short(self.source(side))} -> {'true' if sign == '&&' else 'false'}")
            return
        if sign in COMPARISONS:
            name, *others = COMPARISONS[sign]
        elif sign in ARITHMETIC and all(self.builtin(child) for child in children):
            name, *others = ARITHMETIC[sign]
        else:
            return
        whole = self.short(self.source(span))
        self.add(site, depth, [(span[1], span[1], f"vnmutant::{name}(@, ", True), (place, place + len(sign), ",", True),
                               (span[2], span[2], ")", False)],
                 [f"{whole}: {sign} -> {other}" for other in others])

    def builtin(self, cursor):
        number = cursor.type.get_canonical().kind.value
        return self.types.BOOL.value <= number <= self.types.LONGDOUBLE.value

    def condition(self, cursor, children, source, depth):
        k = self.kinds
        if re.match(r"if\s+(constexpr|consteval)", source):
            return
        if cursor.kind == k.DO_STMT:
            condition = children[-1]
        elif cursor.kind == k.FOR_STMT:
            return  # its comparison is changed as such
        elif cursor.kind == k.IF_STMT:
            if any(child.kind in (k.DECL_STMT, k.VAR_DECL) for child in children[:2]):
                return
            condition = children[0]
        else:
            condition = children[0]
        if condition.kind not in self.expressions or cursor.kind == k.WHILE_STMT and condition.kind == k.VAR_DECL:
            return
        span = self.span(condition)
        if span:
            text = self.source(span)
            if re.fullmatch(r"true|false", text) or any(f" {sign} " in text and "&&" not in text and "||" not in text
                                                        for sign in ("==", "!=")):
                return
            self.wrap(condition, depth + 0.5, "vnmutant::flip(@, static_cast<bool>(", "))", f"{self.short(text)} -> !(...)")

    def early(self, cursor, children, depth):
        k = self.kinds
        if not children or children[-1].kind != k.COMPOUND_STMT:
            return
        body = children[-1]
        span, statements = self.span(body), list(body.get_children())
        if not span or len(statements) < 2:
            return
        result = cursor.result_type.get_canonical()
        if cursor.kind in (k.CONSTRUCTOR, k.DESTRUCTOR) or result.kind == self.types.VOID:
            what = "return;"
        elif result.kind in (self.types.BOOL, self.types.POINTER) or self.types.BOOL.value <= result.kind.value <= self.types.LONGDOUBLE.value:
            what = "return {};"
        else:
            return
        self.add(self.site(span), depth, [(span[1] + 1, span[1] + 1, f" if (vnmutant::on(@)) {what}", True)],
                 [f"{cursor.spelling}: {what} at once"])

    def swap(self, cursor, depth):
        arguments = list(cursor.get_arguments())
        for first, second in zip(arguments, arguments[1:]):
            names = [self.plain(first), self.plain(second)]
            if not all(names) or names[0].type.get_canonical().spelling != names[1].type.get_canonical().spelling:
                continue
            spans = [self.span(name) for name in names]
            if not all(spans) or self.source(spans[0]) == self.source(spans[1]):
                continue
            texts = [self.source(span) for span in spans]
            if not all(re.fullmatch(r"\w+", text) for text in texts):
                continue
            self.add(self.site(spans[0]), depth,
                     [(spans[0][1], spans[0][2], f"vnmutant::one(@, {texts[0]}, {texts[1]})", True),
                      (spans[1][1], spans[1][2], f"vnmutant::one(@, {texts[1]}, {texts[0]})", True)],
                     [f"{cursor.spelling}(... {texts[0]}, {texts[1]} ...) -> {texts[1]}, {texts[0]}"])
            return

    def plain(self, cursor):
        while cursor.kind == self.kinds.UNEXPOSED_EXPR:
            children = list(cursor.get_children())
            if len(children) != 1:
                return None
            cursor = children[0]
        if cursor.kind != self.kinds.DECL_REF_EXPR or cursor.referenced is None:
            return None
        return cursor if cursor.referenced.kind in (self.kinds.VAR_DECL, self.kinds.PARM_DECL) and not self.constant(cursor) else None

    def body(self, cursor, parent):
        """Whether it is the statement behind an if, else or loop."""
        k = self.kinds
        children = list(parent.get_children())
        if parent.kind in (k.FOR_STMT, k.WHILE_STMT, k.CXX_FOR_RANGE_STMT):
            return children and children[-1] == cursor
        return parent.kind == k.IF_STMT and cursor in children[1:]

    def drop(self, cursor, parent, span, source, depth):
        k = self.kinds
        if cursor.kind == k.RETURN_STMT:
            if source != "return":
                return
        elif cursor.kind not in self.droppable:
            return
        rest = self.text(span[0])[span[2]:span[2] + 40].decode()
        end = re.match(r"\s*;", rest)
        if not end:
            return
        end = span[2] + end.end()
        self.add(self.site(span), depth, [(span[1], span[1], "{if (!vnmutant::on(@)) ", True), (end, end, "}", False)],
                 [f"{self.short(source)}; dropped"])


def find(commands):
    """All changes of the sources, in an order that stays."""
    from clang import cindex
    finder = Finder(cindex)
    index = cindex.Index.create()
    for entry in commands:
        arguments, words = [], shlex.split(entry["command"])
        words = words[[index for index, word in enumerate(words) if re.search(r"(g|clang)\+\+(-\d+)?$", word)][0] + 1:]
        skip = False
        for word in words:
            if skip or word in ("-c", entry["file"]):
                skip = False
            elif word == "-o":
                skip = True
            else:
                arguments.append(word)
        unit = index.parse(entry["file"], arguments + ["-w", "-resource-dir", resource()],
                           options=cindex.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
        errors = [note for note in unit.diagnostics if note.severity >= 3]
        if errors:
            sys.exit(f"{entry['file']}: {errors[0]}")
        finder.walk(unit)
    return finder


def resource():
    return subprocess.run(["clang-14", "-print-resource-dir"], capture_output=True, text=True, check=True).stdout.strip()


def configure():
    """A tree that is only looked at: for the compiler's options of each source."""
    tree = WORK / "plain"
    run(["cmake", "-S", ROOT, "-B", tree, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_COMPILER=clang++",
         "-DVNBASE_BUILD_TESTS=OFF", "-DVNBASE_BUILD_EXAMPLES=OFF", "-DVNBASE_BUILD_TARGETS=OFF"])
    commands = json.loads((tree / "compile_commands.json").read_text())
    return sorted((entry for entry in commands if entry["file"].startswith(str(ROOT / "src"))), key=lambda entry: entry["file"])


def run(command, **options):
    done = subprocess.run(command, capture_output=True, text=True, errors="replace", **options)
    if done.returncode:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stdout[-4000:]}{done.stderr[-4000:]}")
    return done.stdout


def number(sites, refused):
    """Numbers the changes of what the compiler takes."""
    changes = []
    for site in sites:
        for change in site.changes:
            change.number = 0
        if any(change.key() in refused for change in site.changes):
            continue
        for change in site.changes:
            change.number = len(changes) + 1
            changes.append(change)
    return changes


def write_if_new(path, data):
    if not path.exists() or path.read_bytes() != data:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)


def instrument(finder):
    """Writes the copy of the sources: pieces go in by place, those that close first, the inner ones before the outer ones."""
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split("\n")
    for file in filter(None, files):
        if (ROOT / file).is_file() and not (ROOT / file).is_symlink() and not file.startswith("src/"):
            write_if_new(COPY / file, (ROOT / file).read_bytes())
            shutil.copymode(ROOT / file, COPY / file)
    pieces = {}
    for site in finder.sites:
        if site.changes[0].number:
            for start, end, text, opens, depth in site.pieces:
                order = (start, 1, depth) if opens else (start, 0, -depth)
                pieces.setdefault(site.file, []).append((order, end, text.replace("@", str(site.changes[0].number)), start))
    for file in filter(lambda name: name.startswith("src/") and (ROOT / name).is_file(), files):
        data, result, done = (ROOT / file).read_bytes(), [], 0
        for _, end, text, start in sorted(pieces.get(file, [])):
            result += [data[done:start], text.encode()]
            done = max(end, start)
        write_if_new(COPY / file, b"".join(result + [data[done:]]))


def build(finder):
    """Compiles the copy, and leaves out what the compiler refuses; a refused line leaves with all that it has."""
    TREE.mkdir(parents=True, exist_ok=True)
    library = WORK / "libvnmutant.so"
    run(["g++", "-O2", "-fPIC", "-shared", RUNTIME / "mutant.cpp", "-o", library])
    write_if_new(WORK / "mutant.h", (RUNTIME / "mutant.h").read_bytes())
    memory = WORK / "refused.json"
    refused = set(json.loads(memory.read_text())) if memory.exists() else set()
    link = f"-L{WORK} -Wl,--no-as-needed -lvnmutant -Wl,-rpath,{WORK}"
    for _ in range(60):
        changes = number(finder.sites, refused)
        instrument(finder)
        run(["cmake", "-S", COPY, "-B", TREE, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_COMPILER=g++",
             "-DCMAKE_CXX_FLAGS_RELEASE=-O1", f"-DCMAKE_CXX_FLAGS=-w -include {WORK}/mutant.h", "-DVNBASE_CCACHE=OFF",
             "-DVNBASE_WARNINGS_AS_ERRORS=OFF", f"-DCMAKE_SHARED_LINKER_FLAGS={link}", f"-DCMAKE_EXE_LINKER_FLAGS={link}"])
        print(f"compiling with {len(changes)} of {sum(len(site.changes) for site in finder.sites)} changes ...", flush=True)
        for targets in (["VNbase"], ["VNthreadlog"], TARGETS):
            done = subprocess.run(["cmake", "--build", TREE, "--target", *targets, "-j", str(os.cpu_count()), "--", "-k", "0"],
                                  capture_output=True, text=True, errors="replace")
            if done.returncode:
                break
        (WORK / "build.log").write_text(done.stdout)
        if done.returncode == 0:
            memory.write_text(json.dumps(sorted(refused), indent=0))
            return changes
        lines = {(os.path.relpath(os.path.normpath(os.path.join(TREE, file)), COPY), int(line)) for file, line in
                 re.findall(r"^([^\s:]+\.(?:cpp|h|imp)):(\d+):(?:\d+:)? (?:error|.*required from|.*in .constexpr. expansion)", done.stdout, re.M)}
        bad = {change.key() for change in changes if (change.file, change.line) in lines}
        # A statement that was opened on a line may end on another one: then the nearest place before it is at fault.
        for file, line in lines:
            near = [change for change in changes if change.file == file and change.line <= line]
            if near and not any((change.file, change.line) == (file, line) for change in changes):
                last = max(change.line for change in near)
                bad |= {change.key() for change in near if change.line == last}
        if not bad:
            print(done.stdout[-3000:])
            sys.exit("the compiler refuses what is no change")
        refused |= bad
        memory.write_text(json.dumps(sorted(refused), indent=0))
        print(f"  {len(bad)} left out", flush=True)
    sys.exit("the compiler refuses again and again")


def tests():
    """Commands of all tests that are programs of the tree, as CTest would start them."""
    shown = json.loads(run(["ctest", "--test-dir", TREE, "--show-only=json-v1"]))
    found = []
    for test in shown["tests"]:
        command = test.get("command", [])
        if command and command[0].startswith(str(TREE / "bin")):
            properties = {entry["name"]: entry["value"] for entry in test["properties"]}
            found.append((test["name"], command, properties.get("WORKING_DIRECTORY", str(TREE)), properties.get("ENVIRONMENT", [])))
    return found


def start(test, variables, limit, folder):
    """Runs a test: 'passed', 'failed', 'skipped' or 'hung', and its seconds. What it leaves running is ended with it."""
    _, command, directory, environment = test
    environment = {**os.environ, **dict(entry.split("=", 1) for entry in environment), "TMPDIR": folder, **variables}
    begun = time.monotonic()
    process = subprocess.Popen(command, cwd=directory, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, start_new_session=True)
    try:
        code = process.wait(limit)
        result = "passed" if code in (0, SKIPPED) else "failed"
    except subprocess.TimeoutExpired:
        result = "hung"
    seconds = time.monotonic() - begun
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()
    if result != "passed":
        end_descendants(folder)
    return result, seconds


def end_descendants(folder):
    """What has left the test's group, as a session of its own: it bears the test's folder in its environment."""
    mark = f"TMPDIR={folder}\0".encode()
    for entry in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if mark in (entry / "environ").read_bytes() + b"\0":
                os.kill(int(entry.name), signal.SIGKILL)
        except OSError:
            pass  # it has ended, or is another user's


def reach(all_tests, changes):
    """Which changes each test runs, and how long it takes; a test that fails without a change is left out."""
    memory = WORK / "reached.json"
    stamp = hashlib.sha256((json.dumps([change.key() for change in changes]) + "".join(
        hashlib.sha256(path.read_bytes()).hexdigest() for path in sorted((TREE / "bin").iterdir()) if path.is_file())).encode()).hexdigest()
    if memory.exists():
        kept = json.loads(memory.read_text())
        if kept["stamp"] == stamp:
            return kept["tests"]

    def ask(test):
        with tempfile.TemporaryDirectory(prefix="vnm") as folder:
            path = os.path.join(folder, "reached")
            result, seconds = start(test, {"VN_MUTANT_REACHED": path}, 300, folder)
            data = pathlib.Path(path).read_bytes() if os.path.exists(path) else b""
        return test[0], result, seconds, [place for place in range(1, len(changes) + 1) if place < len(data) and data[place]]

    known, failing, done = {}, [], 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for name, result, seconds, places in pool.map(ask, all_tests):
            done += 1
            if done % 200 == 0:
                print(f"  {done} of {len(all_tests)} tests have told what they run", flush=True)
            if result == "passed":
                known[name] = {"seconds": seconds, "places": places}
            else:
                failing.append(name)
    if failing:
        print(f"{len(failing)} tests fail without a change and are left out: {' '.join(failing[:20])}")
    memory.write_text(json.dumps({"stamp": stamp, "tests": known}))
    return known


def attempt(change, order, all_tests, known):
    """The test that catches the change, or None, and how many tests were tried."""
    tried = 0
    with tempfile.TemporaryDirectory(prefix="vnm") as folder:
        for name in order:
            result, _ = start(all_tests[name], {"VN_MUTANT": str(change.number)}, 10 * known[name]["seconds"] + 10, folder)
            tried += 1
            if result != "passed":
                return {"caught": name, "how": result, "tried": tried}
    return {"caught": None, "tried": tried}


def equal(changes):
    """Those that the list of changes which nobody could notice has."""
    listed = {tuple(line.split("\t")[:3]) for line in (ROOT / "tests/mutants/equal.txt").read_text().splitlines()
              if line and not line.startswith("#")}
    lines = {file: (ROOT / file).read_text().splitlines() for file in {change.file for change in changes}}
    return {change for change in changes
            if (change.file, lines[change.file][change.line - 1].strip(), change.text) in listed}


def wing_of():
    """The wing of each source, from the map."""
    wings, wing = {}, None
    for line in (ROOT / "src/base/CMakeLists.txt").read_text().splitlines():
        header = re.match(r'vnbase_wing\("([^"]+)"', line)
        wing = header.group(1) if header else wing
        for name in re.findall(r"\b([\w]+)\.(?:cpp|h|imp)\b", line):
            wings.setdefault(name, wing)
    return wings


def wing_name(change, wings):
    return "thread layer" if "threadlog/" in change.file else wings.get(pathlib.Path(change.file).stem, "?")


def draw(changes, count, seed):
    """The same number from each wing, as far as it has so many."""
    wings, groups = wing_of(), {}
    for change in changes:
        groups.setdefault(wing_name(change, wings), []).append(change)
    generator = random.Random(seed)
    queues = [generator.sample(group, len(group)) for _, group in sorted(groups.items(), key=lambda item: str(item[0]))]
    drawn = []
    while len(drawn) < count and any(queues):
        for queue in queues:
            if queue and len(drawn) < count:
                drawn.append(queue.pop())
    return drawn


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=600)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", help="changes of the files whose names this finds")
    parser.add_argument("--change", type=int, help="one change, by its number")
    parser.add_argument("--list", action="store_true", help="print the changes and end")
    parser.add_argument("--again", action="store_true", help="try those that survived once more")
    options = parser.parse_args()

    WORK.mkdir(parents=True, exist_ok=True)
    print("reading the sources ...", flush=True)
    finder = find(configure())
    changes = build(finder)
    if options.list:
        for change in changes:
            print(f"{change.number:6} {change.key()}")
        return 0
    all_tests = {test[0]: test for test in tests()}
    known = reach(list(all_tests.values()), changes)
    runs = {}
    for name, entry in known.items():
        for place in entry["places"]:
            runs.setdefault(place, []).append(name)
    if options.change:
        chosen = [change for change in changes if change.number == options.change]
    elif options.only:
        chosen = [change for change in changes if re.search(options.only, change.file)]
    else:
        chosen = draw(changes, options.count, options.seed)
        random.Random(options.seed).shuffle(chosen)
    memory = WORK / "results.json"
    results = json.loads(memory.read_text()) if memory.exists() else {}
    stamp = {file: hashlib.sha256((ROOT / file).read_bytes()).hexdigest()[:16] for file in {change.file for change in chosen}}

    # The same change may stand on a line twice.
    places, times = {}, {}
    for change in changes:
        times[change.key()] = places[change.number] = times.get(change.key(), 0) + 1

    def key(change):
        return f"{change.key()} ({places[change.number]}) {stamp[change.file]}"

    def wanted(change):
        result = results.get(key(change))
        return result is None or options.again and not result["caught"]

    def one(change):
        # The test that runs least else is the likeliest to notice; a slow one waits.
        order = sorted(runs.get(change.number, []), key=lambda name: len(known[name]["places"]) * (0.05 + known[name]["seconds"]))
        return change, attempt(change, order, all_tests, known) if order else {"caught": None, "tried": 0}

    todo, begun = [change for change in chosen if wanted(change)], time.monotonic()
    print(f"{len(chosen)} of {len(changes)} changes, {len(todo)} to try", flush=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for done, (change, result) in enumerate(pool.map(one, todo), 1):
            results[key(change)] = result
            if not result["caught"]:
                print(f"  survived ({result['tried']} tests): {change.number} {change.key()}", flush=True)
            if done % 20 == 0 or done == len(todo):
                memory.write_text(json.dumps(results, indent=0))
                spent = time.monotonic() - begun
                print(f"  {done} of {len(todo)}, about {spent / done * (len(todo) - done) / 60:.0f} minutes left", flush=True)
    wings = wing_of()
    for wing in sorted({wing_name(change, wings) for change in chosen}):
        of_wing = [results[key(change)]["caught"] for change in chosen if wing_name(change, wings) == wing]
        print(f"  {wing}: {sum(map(bool, of_wing))} of {len(of_wing)}")
    caught = sum(bool(results[key(change)]["caught"]) for change in chosen)
    nobodys = equal(chosen)
    missed = [change for change in chosen if not results[key(change)]["caught"]]
    survivors = [change for change in missed if change not in nobodys]
    seen = len(chosen) - (len(missed) - len(survivors))
    print(f"\n{caught} of {seen} caught ({100 * caught / max(seen, 1):.1f} %), {len(missed) - len(survivors)} more that nobody could "
          "notice (tests/mutants/equal.txt); survived:")
    for change in survivors:
        print(f"  {change.number} {change.key()} ({results[key(change)]['tried']} tests)")
    return 0 if caught >= 0.95 * seen else 1


if __name__ == "__main__":
    sys.exit(main())
