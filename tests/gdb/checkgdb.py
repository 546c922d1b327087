#!/usr/bin/env python3
"""Looks into programs with GDB, in batch mode, and compares what it prints.

checkgdb.py --gdb GDB --root ROOT --bin FOLDER --strip STRIP --work FOLDER --objects FILE TASK PROGRAM

The tasks are the functions named after them. Where GDB may not start a program (ptrace is refused in some containers), those
that need a running one end with code 77, which CTest knows as "skipped", and say why.
"""
import argparse
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import xml.etree.ElementTree

HERE = pathlib.Path(__file__).resolve().parent
parser = argparse.ArgumentParser()
for name in ("gdb", "root", "bin", "strip", "work", "objects"):
    parser.add_argument(f"--{name}", required=True)
parser.add_argument("task")
parser.add_argument("program")
ARGUMENTS = parser.parse_args()
ROOT, BIN, WORK = (pathlib.Path(getattr(ARGUMENTS, name)).resolve() for name in ("root", "bin", "work"))
SCRIPT = ROOT / "debugger" / "libVNbase-gdb.py"
OWN = re.compile(r"VN_|T4Q_|PALETTE_|LC_|LANG|LD_|LINES$|COLUMNS$")
ENVIRONMENT = {name: value for name, value in os.environ.items() if not OWN.match(name)}
ENVIRONMENT |= {"T4Q_TEST_DIR": str(WORK), "PALETTE_NAME": "warm", "LC_ALL": "C", "DEBUGINFOD_URLS": ""}
STOP = ["break standStill", "run"]
wrong = 0


def fail(text):
    global wrong
    wrong += 1
    print(text)


def run_gdb(commands, program=None, arguments=(), core=None, safe=BIN, libraries=BIN):
    """What GDB prints when it carries out the commands; a traceback is a failure in any test."""
    command = [ARGUMENTS.gdb, "-nx", "-batch", "-iex", f"add-auto-load-safe-path {safe}", "-iex", "set width 0",
               "-iex", "set print thread-events off", "-iex", "set print inferior-events off",
               "-iex", f"set env LD_LIBRARY_PATH={libraries}"]
    if core is not None:
        command += ["-iex", f"set solib-search-path {libraries}"]
    for line in commands:
        command += ["-ex", line]
    if program is not None:
        command += ["--args", str(program), *arguments]
    if core is not None:
        command[command.index("--args"):] = [str(program), str(core)]
    done = subprocess.run(command, cwd=WORK, env=ENVIRONMENT, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False, text=True, errors="backslashreplace")
    for sign in ("Traceback", "Python Exception", "Error while executing Python"):
        if sign in done.stdout:
            fail(f"{commands} prints a traceback:\n{done.stdout}")
    return done.stdout


def why_not():
    """Why GDB can't run a program here; "" if it can."""
    output = run_gdb(["run"], "/bin/true")
    return "" if "exited normally" in output else output.strip().splitlines()[-1]


def require_process():
    reason = why_not()
    if reason:
        print(f"skipped: GDB can't run a program here: {reason}")
        sys.exit(77)


def section(output, name):
    """What is printed between "echo <name>" and the next such mark."""
    found = re.search(rf"^<{re.escape(name)}>\n(.*?)(?=^<\w[^\n]*>\n|\Z)", output, re.M | re.S)
    if not found:
        fail(f"nothing was printed for {name}; the whole is\n{output}")
        return ""
    return found[1]


def marked(commands):
    """The commands, each behind a mark that section() finds."""
    return [line for command in commands for line in (f"echo <{command}>\\n", command)]


def expect(output, name, expected):
    got = section(output, name)
    if got != expected:
        fail(f"{name} prints\n{got}\nand not\n{expected}")


def expect_line(output, name, line):
    if line not in section(output, name).splitlines():
        fail(f"{name} doesn't print the line\n{line}\nbut\n{section(output, name)}")


def expect_setting(output, name, row):
    """As expect_line(); the columns are as wide as the settings of the moment need."""
    if row not in [re.sub(" {2,}", "  ", line) for line in section(output, name).splitlines()]:
        fail(f"{name} doesn't print the row\n{row}\nbut\n{section(output, name)}")


def without_times(text):
    return re.sub(r"^\d{10} \d{10} ", "", text, flags=re.M)


# What the printers show, by the expression. 0x... stands for any address.
VALUES = {
    "number": "Vn::ObjPtr<int> owns an object = {_object = 0x...}",
    "*number._object": "42",
    "noNumber": "Vn::ObjPtr<int> owns nothing",
    "returned": "Vn::ObjPtrRet<Vn::Rational> owns an object = {_object = 0x...}",
    "*returned._object": "30000/1001",
    "text": r'"a \"text\""',
    "noText": "nothing",
    "numbers": "Vn::ArrayPtrRet<int> owns an array = {_first = 0x...}",
    "numbers._first[1]": "8",
    "vector": "Vn::Vector<int> of length 3, capacity 3 = {1, 2, 3}",
    "bits": "Vn::Vector<bool> of length 3, capacity 64 = {true, false, true}",
    "rates": "Vn::Vector<Vn::Rational> of length 2, capacity 2 = {25/1, 24/1}",
    "noVector": "Vn::Vector<int> of length 0, capacity 0",
    "doubles": "Vn::List<double> of length 2 = {0.5, 1.5}",
    "characters": "Vn::List<char> of length 2 = {97 'a', 98 'b'}",
    "noList": "Vn::List<int> of length 0",
    "rate": "30000/1001",
    "timeIndex": "-7",
    "timeOfFrame": "100 @ 25/1 = 4 s",
    "oddTime": "1 @ 30000/1001 = 0.0333666667 s",
    "interval": "[0.25, 2]",
    "frames": "[3, 9]",
    "path": '"/tmp/a file"',
    "failure": r'Vn::ExInternalError "it \"failed\"" at library.cpp:5',
    "badRate": 'Vn::DtEx::BadRate "Null rate not allowed in DtTime." at library.cpp:6',
    "paletteError": 'PaletteError "no such color" at palette.cpp:12 = {_color = 9}',
    "thrown": 'PaletteError "no such color" at palette.cpp:12',
    "depth": 'palette.depth = "5" from option -d',
    "name": 'palette.name = "warm" from environment variable PALETTE_NAME',
    "dither": 'palette.dither = "true" from default',
    "taken": 'palette.taken = "12" from override',
    "unset": "palette.unset = no value",
    "palettePackage": "package palette, running",
    "manager": "16 packages; 16 running",
    "queue": r"queue of thread 0x1a2b with 2 messages = {Warning: Cache evicted 17 pages, "
             r"Internal Error: Cache line\nfeed \x1b[31m \xff}",
    "queue._entries[0]": "Warning",
}

LOG = f"""(0x00001a2b) Warning: Cache evicted 17 pages
(0x00001a2b) Internal Error: Cache line\\nfeed \\x1b[31m \\xff
(0x00000002) Tracing: wrapped 1498{'.' * 18}
(0x00000002) Tracing: wrapped 1499{'.' * 18}
(0x00000002) Tracing: {'x' * 20500}across
(0x00000003) Informational: Event overflow [8]
(0x00000004) Fatal Error:   <the reader has its text>
(0x00000004) Error: left
(0x00000005) Profiling: finished
(0x00000005) Warning: begun 1  <not finished>
"""

OWN_PACKAGES = ["initialize", "heapMgr", "initArg", "osal", "initVars", "profiling", "logger", "debugging", "baseMath",
                "random", "discreteTime", "testing", "base"]


def packages_with(*states):
    """What "vn packages" prints: the library's own packages run, and the states are those of the program's."""
    names = [*OWN_PACKAGES, "palette", "threadlog", "swatches"]
    rows = zip(names, [*("running" for _ in OWN_PACKAGES), *states])
    return "".join(f"{i:3}  {name:12}  {state}\n" for i, (name, state) in enumerate(rows, 1))


SETTINGS = """Vn::Tessola::debugging::buildInfoCheckStamps  "0"                                 default
Vn::Tessola::debugging::buildInfoNoValidate   "0"                                 default
nobody.takes                                  no setting                          override "this" waits
palette.depth                                 "5"                                 option -d
palette.dither                                "true"                              default
palette.name                                  "warm"                              environment variable PALETTE_NAME
palette.taken                                 "12"                                override
palette.unset                                 no value
threadlog.doze                                "1"                                 default
threadlog.flush                               "Error"                             default
threadlog.wait                                "Internal Error,Fatal Error,Error"  default
10 settings
"""


def check_values(output):
    for expression, expected in VALUES.items():
        got = re.sub(r"^\$\d+ = ", "", section(output, f"print {expression}").strip())
        if re.sub(r"0x[0-9a-f]{5,}", "0x...", got) != expected:
            fail(f"print {expression}: {got}\nand not: {expected}")


def check_commands(output):
    got = section(output, "vn log")
    if without_times(got) != LOG + "10 messages in 6 queues\n":
        fail(f"vn log prints\n{got[:3000]}")
    times = re.findall(r"^\d{10} \d{10} ", got, re.M)
    if len(times) != 10 or times != sorted(times):
        fail(f"the times don't rise: {times}")
    expect(output, "vn packages", packages_with("running", "running", "running") + "16 packages\n")
    expect(output, "vn settings", SETTINGS)


def values(program):
    """The printers, in a running program."""
    require_process()
    output = run_gdb([*STOP, *marked(f"print {expression}" for expression in VALUES)], program, ["values"])
    check_values(output)


def make_core(program):
    """A core dump of the program that reads null in the middle of a message; by GDB, or by the kernel if it may not."""
    core = WORK / "a core"
    if not why_not():
        run_gdb(["run", f"generate-core-file {core}"], program, ["crash"])
        return core
    pattern = pathlib.Path("/proc/sys/kernel/core_pattern").read_text().strip()
    if "/" in pattern or "|" in pattern:
        print(f"skipped: GDB can't run a program here, and cores go to {pattern!r}")
        sys.exit(77)
    subprocess.run([program, "crash"], cwd=WORK, env=ENVIRONMENT | {"LD_LIBRARY_PATH": str(BIN)}, check=False,
                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CORE, (-1, -1)))
    return max(WORK.glob(f"{pattern.split('%')[0]}*"), key=lambda path: path.stat().st_mtime)


CRASH = ("(0x00001a2b) Warning: Crash before\n(0x00001a2b) Warning: Crash reads   <not finished>\n"
         "12 messages in 6 queues\n")


def core(program):
    """Printers and commands on a core dump, where nothing can be called."""
    output = run_gdb(["frame function main", *marked(f"print {expression}" for expression in VALUES if expression != "queue"),
                      *marked(["vn log", "vn packages", "vn settings", "call (void) flushQueues()"])],
                     program, core=make_core(program))
    VALUES.pop("queue")
    check_values(output)
    got = without_times(section(output, "vn log"))
    if got != LOG + CRASH:
        fail(f"vn log prints\n{got[:3000]}")
    expect(output, "vn packages", packages_with("running", "running", "running") + "16 packages\n")
    expect(output, "vn settings", SETTINGS)
    if "without a process" not in section(output, "call (void) flushQueues()"):
        fail("this core dump can call functions, so that it shows nothing")


def log(program):
    """The options of "vn log", and the line: it is the one that the log itself has."""
    require_process()
    full = "(0x00000004) Fatal Error:   <the reader has its text>\n"
    cases = {
        "vn log -last 1": "(0x00000005) Warning: begun 1  <not finished>\n1 of 10 messages in 6 queues\n",
        "vn log -last 0": "0 of 10 messages in 6 queues\n",
        "vn log -last 99 -thread 0x3": "(0x00000003) Informational: Event overflow [8]\n1 of 10 messages in 6 queues\n",
        "vn log -thread 4": full + "(0x00000004) Error: left\n2 of 10 messages in 6 queues\n",
        'vn log -level "fatal error"': "(0x00001a2b) Internal Error: Cache line\\nfeed \\x1b[31m \\xff\n" + full +
                                       "2 of 10 messages in 6 queues\n",
        "vn log -level 1 -last 1": full + "1 of 10 messages in 6 queues\n",
        "vn log -thread 77": "0 of 10 messages in 6 queues\n",
    }
    # The program's own reader writes what GDB has shown: all but what no reader can write.
    output = run_gdb([*STOP, *marked([*cases, "vn log -thread 0x1a2b"]), "call (void) flushQueues()"], program, ["values"])
    for command, expected in cases.items():
        got = without_times(section(output, command))
        if got != expected:
            fail(f"{command} prints\n{got}and not\n{expected}")
    shown = section(output, "vn log -thread 0x1a2b").splitlines()[0]
    written = [line for line in (WORK / "events.log").read_text(errors="replace").splitlines() if "evicted" in line]
    if written != [shown]:
        fail(f"GDB shows\n{shown}\nand the log has\n{written}")


def states(program):
    """The packages and settings at each moment of a program's life."""
    require_process()
    commands = marked(["vn packages", "vn settings", "vn log"])
    output = run_gdb([*STOP, *commands], program, ["waiting"])
    names = sorted([*OWN_PACKAGES, "palette", "threadlog", "swatches"])
    if sorted(line.split()[1:] for line in section(output, "vn packages").splitlines()[:-1]) != [
            [name, "waiting"] for name in names]:
        fail(f"before the start: {section(output, 'vn packages')}")
    expect_line(output, "vn packages", "16 packages; the program has not started them yet")
    expect_setting(output, "vn settings", "palette.depth  no value")
    # No reader sees the queue of a program without a thread layer; GDB does, by a symbol that isn't exported.
    expect_line(output, "vn log", "note: the logger has not started")
    if "(0x00000000) Warning: of a program without threads\n1 message in 1 queue" not in section(output, "vn log"):
        fail(f"before the start: {section(output, 'vn log')}")
    output = run_gdb([*STOP, "continue", *commands], program, ["waiting"])
    expect_setting(output, "vn settings", 'palette.taken  no value  override "12" waits')
    expect_setting(output, "vn settings", 'nobody.takes  no setting  override "this" waits')

    output = run_gdb([*STOP, *commands], program, ["start"])
    expect(output, "vn packages", packages_with("starting", "not started", "not started") + "16 packages; the program is starting them\n")
    expect_setting(output, "vn settings", 'palette.depth  "5"  option -d')
    output = run_gdb([*STOP, *commands], program, ["failed"])
    expect(output, "vn packages", packages_with("failed to start", "not started", "not started") + "16 packages\n")
    output = run_gdb([*STOP, *commands, "continue", "echo <behind>\\n", "vn packages", "echo <settings behind>\\n",
                      "vn settings"], program, ["stop"])
    expect(output, "vn packages", packages_with("stopping", "stopped", "stopped") + "16 packages; the program is stopping them\n")
    if not section(output, "behind").endswith("0 packages; the program has stopped what ran\n"):
        fail(f"behind the stop: {section(output, 'behind')}")
    expect_setting(output, "settings behind", "palette.depth  no value")


def stripped(program):
    """The commands need no debug information and no symbols but those that the library exports."""
    require_process()
    folder = WORK / "stripped"
    folder.mkdir()
    for path in (program, BIN / "libVNbase.so.0", BIN / "libVNthreadlog.so.0"):
        subprocess.run([ARGUMENTS.strip, "--strip-all", "-o", folder / path.resolve().name, path.resolve()], check=True)
    for library in ("libVNbase", "libVNthreadlog"):
        real = (BIN / f"{library}.so.0").resolve().name
        if real != f"{library}.so.0":
            (folder / f"{library}.so.0").symlink_to(real)
        if library == "libVNbase":
            # Where an installation has it: below a folder of such files, at the library's own path.
            place = WORK / "auto-load" / folder.relative_to("/")
            place.mkdir(parents=True)
            shutil.copy(SCRIPT, place / f"{real}-gdb.py")
    bare = folder / program.name
    # The program has no symbol to stop at: it is its own crash that stops it.
    output = run_gdb([f"set auto-load scripts-directory {WORK / 'auto-load'}", "run",
                      *marked(["vn log", "vn packages", "vn settings", "info sharedlibrary libVNbase"])],
                     bare, ["crash"], safe=WORK / "auto-load", libraries=folder)
    if f"(*)     {folder}" not in section(output, "info sharedlibrary libVNbase"):
        fail(f"the library isn't the stripped one: {section(output, 'info sharedlibrary libVNbase')}")
    got = without_times(section(output, "vn log"))
    if got != LOG + CRASH:
        fail(f"vn log prints\n{got[:3000]}")
    expect(output, "vn packages", packages_with("running", "running", "running") + "16 packages\n")
    expect(output, "vn settings", SETTINGS)


def damage(program):
    """Memory that makes no sense is told in its place, and what can be read is shown."""
    require_process()
    rest = {"(0x00000003) Informational: Event overflow [8]", "(0x00000005) Profiling: finished"}
    wild = "0x123456789000"
    cases = [
        # what is changed; a command; a line of what it prints; whether the other queues are there
        (f"queue._entries = (Vn::LgQueue::Entry*) {wild}", "vn log", "note: the queue at QUEUE can't be read: no memory at "
         f"{wild}", True),
        ("queue._readIndex._value = 5000", "vn log", "note: the queue at QUEUE can't be read: the queue at QUEUE makes no sense",
         True),
        (f"queue._stream._buffer = (char*) {wild}", "vn log", f"(0x00001a2b) Warning:   <no memory at {wild}>", True),
        ("queue._stream._stringEnd._value = 70000", "vn log", "(0x00001a2b) Warning:   <the stream at QUEUE makes no sense>",
         True),
        ("queue._stream._stringEnd._value = 30000", "vn log", "(0x00001a2b) Warning: Cache evicted 17 pages", True),
        ("queue._entries[0]._levelOrCount = 99", "vn log", "(0x00001a2b) level 99: Cache evicted 17 pages", True),
        (f"*(long*) &'Vn::LgLog::_registry' = {wild}", "vn log", f"note: queues may be missing: no memory at {wild}", False),
        (f"**(long**) &'Vn::LgLog::_registry' = {wild}", "vn log",
         "note: the queues of the registry, a class without symbols, can't be listed without a call", False),
        (f"(*(long**) &'Vn::LgLog::_registry')[1] = {wild}", "vn log", f"note: queues may be missing: no memory at "
         f"{int(wild, 16) + 16:#x}", False),
        ("(*(long**) &'Vn::LgLog::_registry')[3] = 2", "vn log",
         "note: queues may be missing: the registry's list is damaged, or is being changed", False),
        ("(*(long**) &'Vn::LgLog::_registry')[3] = 1L << 40, *(long*) (*(long**) &'Vn::LgLog::_registry')[1] = "
         "(*(long**) &'Vn::LgLog::_registry')[1]", "vn log",
         "note: queues may be missing: the registry's list is damaged, or is being changed", False),
        (f"*(long*) &'Vn::InInitMgr::_instance' = {wild}", "vn packages", f"vn packages: no memory at {wild}", False),
        (f"(**(long***) &'Vn::InInitMgr::_instance')[6] = {wild}", "vn packages", None, False),
        (f"(**(long***) &'Vn::InInitMgr::_instance')[7] += 1", "vn packages", None, False),
        (f"*(long*) (**(long***) &'Vn::InInitMgr::_instance')[6] = {wild}", "vn packages",
         f"  1  <no memory at {int(wild, 16) + 8:#x}>  running", False),
        (f"*(long*) &'Vn::InVariableBase::_registry' = {wild}", "vn settings", f"vn settings: no memory at {wild}", False),
        (f"(*(long**) &'Vn::InVariableBase::_registry')[1] += 8", "vn settings", None, False),
        (f"depth._handle._first = (char*) {wild}", "vn settings", "note: the setting at DEPTH can't be read: no memory at "
         f"{wild}", False),
        ("depth._handle._first = 0", "vn settings", "note: the setting at DEPTH can't be read: a null pointer in place of a text",
         False),
        (f"*(long*) &'Vn::InVariableBase::_pendingOverrides' = {wild}", "vn settings",
         f"note: overrides may be missing: no memory at {int(wild, 16) + 16:#x}", False),
        ("bits._M_impl._M_finish._M_p = 0", "print bits", None, False),
        ("vector._M_impl._M_finish = (int*) 1", "print vector", None, False),
        (f"vector._M_impl._M_start = (int*) {wild}", "print vector", None, False),
        (f"doubles._M_impl._M_node._M_next = (void*) {wild}", "print doubles",
         None, False),
        ("doubles._M_impl._M_node._M_size = 4", "print doubles", None, False),
        ("path._path._first = 0", "print path", None, False),
        (f"text._first = (char*) {wild}", "print text", None, False),
        (f"depth._contextAlias = (Vn::InContextAliasBase*) {wild}", "print depth", None, False),
        ("timeOfFrame._rate._numerator = 0", "print timeOfFrame", None, False),
    ]
    told = re.compile(r"can't be shown|can't be read|makes no sense|make no sense|no memory at|Cannot access|ends too early|"
                      r"100 @ 0/1$", re.M)
    # Each from the beginning of the program, in one session.
    commands = ["break standStill"]
    for i, (change, command, _, _) in enumerate(cases):
        commands += ["run", f"echo <where {i}>\\n", "print &queue", "print &depth", f"set var {change}", f"echo <case {i}>\\n",
                     command]
    output = run_gdb(commands, program, ["values"])
    for i, (change, command, line, is_rest_there) in enumerate(cases):
        addresses = re.findall(r"0x[0-9a-f]+", section(output, f"where {i}"))
        lines = without_times(section(output, f"case {i}")).splitlines()
        line = line and line.replace("QUEUE", addresses[0]).replace("DEPTH", addresses[1])
        told_of = line in lines if line is not None else told.search("\n".join(lines))
        if not told_of:
            fail(f"{change}: {command} doesn't print\n{line}\nbut\n" + "\n".join(line[:300] for line in lines))
        if is_rest_there and not rest <= set(lines):
            fail(f"{change}: the other queues are missing:\n" + "\n".join(line[:300] for line in lines))


def threads(program):
    """A queue of the thread layer that its reader hasn't seen: only this thread runs between the two places."""
    require_process()
    output = run_gdb([*STOP, *marked(["vn log"]), "set scheduler-locking on", "continue", "echo <behind>\\n", "vn log"],
                     program, ["thread"])
    expect_line(output, "vn log", "0 messages in 0 queues")
    got = without_times(section(output, "behind"))
    if not re.search(r"^\(0x0000000\d\) Warning: Thread not seen by the reader\n1 message in 1 queue\n\Z", got, re.M):
        fail(f"behind the message: {got}")


def registry(program):
    """A registry of the program's own lists its queues, too, if its class is known."""
    require_process()
    output = run_gdb([*STOP, *marked(["vn log"])], program, ["registry"])
    if without_times(section(output, "vn log")) != "(0x00001a2b) Warning: kept elsewhere\n1 message in 1 queue\n":
        fail(section(output, "vn log"))


def words(program):
    """The commands' help, and what they refuse; none needs a running program."""
    sourced = ["source " + str(SCRIPT)]
    output = run_gdb([*sourced, *marked(["vn", "help vn", "help vn log", "vn log", "vn packages", "vn settings", "vn nothing",
                                         "vn log -what", "vn log -last", "vn log -last x", "vn log -level Loud",
                                         "vn packages now", "vn settings now", "python print(sorted(globals()))"])], program)
    for name in ("vn", "help vn"):
        for command in ("vn log -- ", "vn packages -- ", "vn settings -- "):
            if command not in section(output, name):
                fail(f"{name} doesn't list {command}: {section(output, name)}")
    for word in ("Usage: vn log [-last COUNT] [-level LEVEL] [-thread NUMBER]", "core dump"):
        if word not in section(output, "help vn log"):
            fail(f"help vn log has no {word}")
    missing = "vn: there is no libVNbase in this program, or it isn't loaded yet\n"
    for name, expected in {
            "vn log": missing, "vn packages": missing, "vn settings": missing,
            "vn nothing": "vn: unknown word 'nothing'; \"help vn\" lists what there is\n",
            "vn log -what": "vn log: unknown word '-what'; \"help vn log\" tells more\n",
            "vn log -last": "vn log: -last needs a value behind it\n",
            "vn log -last x": "vn log: -last takes a number, and not 'x'\n",
            "vn log -level Loud": "vn log: there is no level 'Loud'; the levels are Internal Error, Fatal Error, Error, "
                                  "Warning, Informational, Tracing, Profiling\n",
            "vn packages now": "vn packages: unknown word 'now'; \"help vn packages\" tells more\n",
            "vn settings now": "vn settings: unknown word 'now'; \"help vn settings\" tells more\n"}.items():
        expect(output, name, expected)
    if "Printer" in section(output, "python print(sorted(globals()))"):
        fail("the file leaves its names in GDB's namespace")


def layouts(_):
    """The layouts that the commands go by are those of the compiler."""
    print(run_gdb([f"python SCRIPT = {str(SCRIPT)!r}", f"source {HERE / 'layouts.py'}"], ARGUMENTS.objects), end="")
    output = run_gdb([f"python SCRIPT = {str(SCRIPT)!r}", f"source {HERE / 'layouts.py'}"], ARGUMENTS.objects)
    if not re.search(r"^[1-9]\d fields, 0 differ$", output, re.M):
        fail("the layouts differ")


def natvis(program):
    """The file for other debuggers is well-formed, and its expressions show what they should: GDB reads them."""
    tree = xml.etree.ElementTree.parse(ROOT / "debugger" / "libVNbase.natvis")
    if not tree.getroot().tag.endswith("AutoVisualizer"):
        fail("the root isn't an AutoVisualizer")
    require_process()
    output = run_gdb([*STOP, f"python NATVIS = {str(ROOT / 'debugger' / 'libVNbase.natvis')!r}",
                      f"source {HERE / 'natvis.py'}"], program, ["values"])
    print(output[-3000:])
    if not re.search(r"^[1-9]\d+ expressions, 0 wrong$", output, re.M):
        fail("the file doesn't fit the classes")


def normal(text):
    """Without what differs between two runs or two machines: addresses, times, folders of sources."""
    text = re.sub(r"0x[0-9a-f]{9,}", "0x...", text)
    text = re.sub(r"^\d{10} \d{10} ", "", text, flags=re.M)
    return re.sub(r"(?<= )[\w./-]*/([\w-]+\.cpp:)", r"\1", text)


def page(program):
    """The sessions in docs/debugging.md are what GDB prints. A line "..." stands for any lines."""
    require_process()
    shutil.copy(program, WORK / "mixdown")
    text = (ROOT / "docs" / "debugging.md").read_text()
    commands_checked = 0
    for words_, session in re.findall(r"^```console\n\$ gdb ([^\n]*)\n(.*?)^```", text, re.M | re.S):
        steps = re.findall(r"^\(gdb\) (.*)\n((?:(?!\(gdb\) ).*\n)*)", session, re.M)
        marks = [line for i, (command, _) in enumerate(steps) for line in (f"echo <step {i}>\\n", command)]
        name, *core_ = words_.split()
        output = run_gdb(marks, WORK / name, core=WORK / core_[0] if core_ else None)
        for i, (command, shown) in enumerate(steps):
            commands_checked += 1
            pattern = "".join(r"(?:.*\n)*?" if line == "..." else re.escape(line) + "\n" for line in normal(shown).splitlines())
            got = normal(section(output, f"step {i}"))
            if not re.fullmatch(pattern, got):
                fail(f"({words_}) {command} prints\n{got}\nand the page shows\n{shown}")
    if commands_checked < 5:
        fail("the page has no sessions")


shutil.rmtree(WORK, ignore_errors=True)
WORK.mkdir(parents=True)
globals()[ARGUMENTS.task](BIN / ARGUMENTS.program)
sys.exit(1 if wrong else 0)
