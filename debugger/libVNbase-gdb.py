"""What GDB shows of a program that uses libVNbase: values as people read them, and the commands that "help vn" lists.

GDB loads this file by itself with the library (docs/debugging.md tells from where); "source" loads it by hand.

How it works:

1. GDB runs all such files in one namespace. So the last lines run this one again as a module of its own, register what that
   defines, and leave the namespace as it was.
2. Printers show values. They read the fields that the program's debug information describes.
3. The commands show what the library holds. They read memory alone and call nothing, so a core dump will do. They know where
   the fields are by LAYOUTS and need no debug information, and they start from symbols that the library exports, so a
   library without symbols will do as well. Layouts are part of the library's interface; tests/gdb compares these with what
   the compiler made of the headers.

Any memory may be damaged, and other threads may be in the middle of a step. So each count is checked before it is used, each
walk has an end, and what can't be read becomes an Unreadable, which is printed in its place.
"""
_before = dict(globals())

import fractions
import struct
import types

import gdb
import gdb.printing


class Unreadable(Exception):
    """Memory that can't be read or makes no sense. The text says what, and where."""


# ---------------------------------------------------------------------------------------------------------------- memory

PAGE = 4096


def read(address, size):
    try:
        return bytes(gdb.selected_inferior().read_memory(address, size))
    except (gdb.error, OverflowError, ValueError, MemoryError):
        raise Unreadable(f"no memory at 0x{address:x}") from None


def read_text(address, limit=65536):
    """The characters up to a zero. A page is read whole, as the one behind it may be missing."""
    if address == 0:
        raise Unreadable("a null pointer in place of a text")
    text = b""
    while len(text) < limit:
        at = address + len(text)
        part = read(at, min(PAGE - at % PAGE, limit - len(text)))
        end = part.find(b"\0")
        if end >= 0:
            return text + part[:end]
        text += part
    return text


def shown(text):
    """The bytes of a text as characters. Control characters are escaped: what a core holds must not drive the terminal."""
    return "".join(c if c.isprintable() or c == "\t" else c.encode("unicode_escape").decode()
                   for c in text.decode("utf-8", "backslashreplace"))


def quoted(text):
    return '"' + shown(text).replace('"', '\\"') + '"'


def byte_order():
    """As `struct` takes it. Asked for once: a second program of another kind in one session isn't looked into."""
    if not ORDER:
        ORDER.append("<" if "little" in gdb.execute("show endian", to_string=True) else ">")
    return ORDER[0]


ORDER = []


class Kind:
    """A kind of field that isn't a structure: as `struct` reads it."""

    def __init__(self, code):
        self.code, self.size = code, struct.calcsize("=" + code)
        self.alignment = 1 if code.endswith("s") else self.size

    def read(self, address):
        return struct.unpack(byte_order() + self.code, read(address, self.size))[0]


POINTER, U64, I32, U32, BOOL = Kind("Q"), Kind("Q"), Kind("i"), Kind("I"), Kind("B")


class Layout:
    """Where a class has its fields: each behind the one before, at a multiple of its alignment."""

    def __init__(self, name, *fields):
        self.name, self.fields, self.size, self.alignment = name, {}, 0, 1
        for field, kind in fields:
            at = -(-self.size // kind.alignment) * kind.alignment
            self.fields[field] = at, kind
            self.size, self.alignment = at + kind.size, max(self.alignment, kind.alignment)
        self.size = -(-self.size // self.alignment) * self.alignment

    def read(self, address):
        return Object(self, address)


class Object:
    """A structure in memory. A field is read when it is asked for."""

    def __init__(self, layout, address):
        if address == 0:
            raise Unreadable(f"a null pointer in place of a {layout.name}")
        self.layout, self.address = layout, address

    def __getitem__(self, field):
        at, kind = self.layout.fields[field]
        return kind.read(self.address + at)


# The standard library's, of libstdc++.
VECTOR = Layout("std::vector", ("first", POINTER), ("last", POINTER), ("end", POINTER))
LIST = Layout("std::list", ("next", POINTER), ("previous", POINTER), ("size", U64))
TREE = Layout("std::map", ("compare", U64), ("color", I32), ("root", POINTER), ("left", POINTER), ("right", POINTER),
              ("count", U64))
TREE_NODE = Layout("std::_Rb_tree_node_base", ("color", I32), ("parent", POINTER), ("left", POINTER), ("right", POINTER))
STRING = Layout("std::string", ("text", POINTER), ("size", U64), ("local", U64), ("more", U64))

STREAM = Layout("Vn::LgStream", ("_buffer", POINTER), ("_readIndex", U32), ("_writeIndex", U32), ("_stringEnd", U32),
                ("_overflowed", BOOL), ("_pendingAdvance", BOOL), ("_outputFlags", BOOL), ("_directEnd", U32))
MARK = Layout("Vn::LgStream::Mark", ("writeIndex", U32), ("stringEnd", U32), ("pendingAdvance", BOOL))
ENTRY = Layout("Vn::LgQueue::Entry", ("_overflow", BOOL), ("_levelOrCount", I32), ("_timeStamp", U64))
QUEUE = Layout("Vn::LgQueue", ("_stream", STREAM), ("_entries", POINTER), ("_readIndex", U32), ("_writeIndex", U32),
               ("_creatorAlive", BOOL), ("_entryReserved", BOOL), ("_threadId", U32), ("_observer", POINTER),
               ("_suppressCount", I32), ("_cachedReadIndex", U32), ("_reservedAt", MARK))
REGISTRY = Layout("Vn::LgSimpleRegistry", ("_vptr", POINTER), ("_queues", LIST))
WRITER = Layout("Vn::ThreadLogWriter", ("_vptr", POINTER), ("_queue", POINTER), ("_current", POINTER),
                ("_entries", POINTER), ("_written", U32), ("_removed", U32), ("_spill", POINTER), ("_isTaken", BOOL),
                ("_isRegistered", BOOL))
CHUNK = Layout("Vn::ThreadLogWriters::Chunk", ("places", Kind("512s")), ("next", POINTER))

MANAGER = Layout("Vn::InInitMgr", ("_state", POINTER))
STATE = Layout("Vn::InInitMgr::State", ("_packagesWaiting", VECTOR), ("_packagesToInit", VECTOR),
               ("_packagesSaved", VECTOR), ("_cycleDetected", BOOL), ("_nbPckgs", I32), ("_dependencyMatrix", POINTER),
               ("_initialized", BOOL), ("_finalized", BOOL), ("_initializing", BOOL), ("_finalizing", BOOL),
               ("_reinitCount", I32))
PACKAGE_ENTRY = Layout("Vn::PackageEntry", ("package", POINTER), ("nbDependencies", I32), ("initialized", BOOL))
PACKAGE = Layout("Vn::InPackageInit", ("_vptr", POINTER), ("_name", Kind("128s")), ("_dependencies", VECTOR),
                 ("_variables", VECTOR))
ALIAS = Layout("Vn::InContextAliasBase", ("_vptr", POINTER), ("_initialized", BOOL), ("_value", POINTER),
               ("_description", POINTER), ("_key", POINTER))
EXCEPTION = Layout("Vn::ExBase", ("_vptr", POINTER), ("_detailedReason", Kind("1024s")), ("_reason", Kind("1024s")),
                   ("_fileName", Kind("128s")), ("_lineNo", I32))
VARIABLE = Layout("Vn::InVariableBase", ("_vptr", POINTER), ("_contextAlias", POINTER), ("_aliases", TREE),
                  ("_package", POINTER), ("_handle", POINTER))
TABLE = Layout("Vn::InTable<Vn::InTextKey, Vn::InVariableBase*>", ("_slots", VECTOR), ("_used", U64))
SLOT = Layout("Vn::InTable<Vn::InTextKey, Vn::InVariableBase*>::Slot", ("text", POINTER), ("length", U32), ("hash", U32),
              ("value", POINTER))

RING, TEXT_RING = 1024, 32768
LOG_START = "_ZN2Vn5LgLog6_startE"
MOST_ELEMENTS = 1 << 20  # of a vector; more are damage


def elements(vector, layout):
    first, last = vector["first"], vector["last"]
    size = last - first
    if size == 0:
        return []
    if size < 0 or size % layout.size or size // layout.size > MOST_ELEMENTS:
        raise Unreadable(f"the vector at 0x{vector.address:x} makes no sense")
    read(first, size)  # all or nothing
    return [Object(layout, first + i * layout.size) for i in range(size // layout.size)]


def address_of(symbol):
    """The address of what the library exports under that name; None if there is no such name."""
    try:
        return int(gdb.parse_and_eval(f"(unsigned long) &{symbol}"))
    except gdb.error:
        return None


def pointer_at(symbol):
    """The pointer that stands under that name; 0 if there is no such name."""
    place = address_of(symbol)
    return 0 if place is None else POINTER.read(place)


def table_name(object_):
    """The name of the object's virtual table, as the symbols have it: "Vn::LgSimpleRegistry"; "" if they don't."""
    text = gdb.execute(f"info symbol 0x{object_['_vptr']:x}", to_string=True)
    if text.startswith("vtable for "):
        return text.removeprefix("vtable for ").split(" + ")[0].split(" in section ")[0]
    for mangled, name in (("_ZTVN2Vn16LgSimpleRegistryE", "Vn::LgSimpleRegistry"),
                          *((SOURCES[source][0], source) for source in SOURCES)):
        if text.startswith(mangled):
            return name
    return ""


def require_library():
    if address_of(LOG_START) is None:
        raise gdb.GdbError("vn: there is no libVNbase in this program, or it isn't loaded yet")
    if gdb.lookup_type("void").pointer().sizeof != 8:
        raise gdb.GdbError("vn: only programs of 64 bits can be looked into")


# ------------------------------------------------------------------------------------------------------------------- log

LEVELS = ["Internal Error", "Fatal Error", "Error", "Warning", "Informational", "Tracing", "Profiling"]
INFORMATIONAL = 4


class Message:
    """An entry of a queue, with its text."""

    def __init__(self, thread, entry, text, remark=""):
        self.thread, self.stamp, self.remark = thread, entry["_timeStamp"], remark
        if entry["_overflow"]:
            self.level, self.text = INFORMATIONAL, f"Event overflow [{entry['_levelOrCount']}]"
        else:
            self.level, self.text = entry["_levelOrCount"], shown(text)

    def line(self, start):
        """As LgReader would write it, and the remark."""
        ticks = (self.stamp - start) % (1 << 64)
        level = LEVELS[self.level] if 0 <= self.level < len(LEVELS) else f"level {self.level}"
        return (f"{ticks >> 32:010} {ticks & 0xffffffff:010} (0x{self.thread:08x}) {level}: {self.text}"
                f"{'  <' + self.remark + '>' if self.remark else ''}")


def ring_of(stream):
    """The characters of a stream, and its indices. Another thread may be moving these: each is read once."""
    indices = [stream[name] for name in ("_readIndex", "_writeIndex", "_stringEnd")]
    if max(indices) >= TEXT_RING:
        raise Unreadable(f"the stream at 0x{stream.address:x} makes no sense")
    return read(stream["_buffer"], TEXT_RING), *indices


def text_from(ring, first):
    """The text that begins in the cell `first`. The writer keeps a zero behind it; without one the whole turn is text."""
    turned = ring[first:] + ring[:first]
    end = turned.find(b"\0")
    return turned[:end] if end >= 0 else turned[:-1]


def finished_texts(ring, read_index, string_end):
    """What operator>> would take, one after the other."""
    texts, index, walked = [], read_index, 0
    while index != string_end and walked < TEXT_RING:
        first = (index + 1) % TEXT_RING if ring[index] == 0 else index
        texts.append(text_from(ring, first))
        walked += (first - index) % TEXT_RING + len(texts[-1])
        index = (first + len(texts[-1])) % TEXT_RING
    return texts


def unfinished_text(ring, mark, write_index):
    """What the writer has written since its reservation."""
    first = (mark["writeIndex"] + (1 if mark["pendingAdvance"] else 0)) % TEXT_RING
    written = (ring[first:] + ring[:first])[:(write_index - first) % TEXT_RING]
    return written.split(b"\0")[0]


def messages_in(address):
    """The messages of the queue at `address`, the oldest first, the one that is being written included."""
    queue = Object(QUEUE, address)
    read_index, write_index, thread = queue["_readIndex"], queue["_writeIndex"], queue["_threadId"]
    if max(read_index, write_index) >= RING:
        raise Unreadable(f"the queue at 0x{address:x} makes no sense")
    first = queue["_entries"]
    entries = [Object(ENTRY, first + i % RING * ENTRY.size)
               for i in range(read_index, read_index + (write_index - read_index) % RING)]
    try:
        ring, text_read, text_written, string_end = ring_of(queue["_stream"])
        texts, remark = finished_texts(ring, text_read, string_end), ""
    except Unreadable as problem:
        ring, texts, remark = None, [], str(problem)
    with_text = [entry for entry in entries if not entry["_overflow"]]
    # The reader takes a text off the ring before it removes the entry: the head may be without one.
    taken = {entry.address for entry in with_text[:max(0, len(with_text) - len(texts))]}
    texts = iter(texts)
    messages = []
    for entry in entries:
        if entry["_overflow"]:
            messages.append(Message(thread, entry, b""))
        elif entry.address in taken:
            messages.append(Message(thread, entry, b"", remark or "the reader has its text"))
        else:
            messages.append(Message(thread, entry, next(texts)))
    if queue["_entryReserved"]:
        entry = Object(ENTRY, first + write_index * ENTRY.size)
        text = unfinished_text(ring, queue["_reservedAt"], text_written) if ring is not None else b""
        messages.append(Message(thread, entry, text, remark or "not finished"))
    return messages


class Queues:
    """The queues of the program, each once, in the registry's order, and notes on what couldn't be found."""

    def __init__(self):
        self.addresses, self.notes = [], []
        for find in (self.add_registered, self.add_unregistered, self.add_shared):
            try:
                find()
            except Unreadable as problem:
                self.notes.append(f"queues may be missing: {problem}")

    def add(self, address):
        if address != 0 and address not in self.addresses:
            self.addresses.append(address)

    def add_registered(self):
        """Those of the logger's registry."""
        registry = pointer_at("_ZN2Vn5LgLog9_registryE")
        if registry == 0:
            self.notes.append("the logger has not started")
            return
        registry = Object(REGISTRY, registry)
        name = table_name(registry)
        if name == "Vn::LgSimpleRegistry":
            self.add_list(registry["_queues"])
        elif not self.add_foreign(registry.address, name):
            self.notes.append(f"the queues of the registry, a {name or 'class without symbols'}, can't be listed without a call")

    def add_foreign(self, address, name):
        """Those of a registry of the program's own, if it has a List<LgQueue*> and the program debug information."""
        try:
            type_ = gdb.lookup_type(name)
            fields = [field for field in all_fields(type_) if type_name(field[1]) == "Vn::List<Vn::LgQueue*>"]
        except gdb.error:
            return False
        for at, _ in fields:
            self.add_list(Object(LIST, address + at))
        return bool(fields)

    def add_list(self, queues):
        node, seen = queues["next"], set()
        while node != queues.address and node not in seen:
            seen.add(node)
            self.add(POINTER.read(node + LIST.fields["size"][0]))  # the element stands where the list has its size
            node = POINTER.read(node)
        if node != queues.address or len(seen) != queues["size"]:
            self.notes.append("queues may be missing: the registry's list is damaged, or is being changed")

    def add_unregistered(self):
        """Of the thread layer: queues that its reader hasn't seen yet, and messages that wait for room."""
        address, seen = address_of("_ZN2Vn16ThreadLogWriters6_firstE") or 0, set()
        while address != 0 and address not in seen:
            seen.add(address)
            chunk = Object(CHUNK, address)
            for writer in struct.unpack(byte_order() + "64Q", chunk["places"]):
                if writer != 0:
                    self.add_writer(Object(WRITER, writer))
            address = chunk["next"]

    def add_writer(self, writer):
        self.add(writer["_queue"])
        # One that is being moved into the thread's queue may be in both.
        if not writer["_isTaken"]:
            self.add(writer["_spill"])

    def add_shared(self):
        """That of programs without a thread layer, which no reader sees. Only the library's own symbols have it."""
        queue = pointer_at("_ZZN2Vn12_GLOBAL__N_114getSharedQueueEvE5queue")
        self.add(queue)


def level_from(text):
    for level, name in enumerate(LEVELS):
        if text.lower() == name.lower() or text == str(level):
            return level
    raise gdb.GdbError(f"vn log: there is no level {text!r}; the levels are {', '.join(LEVELS)}")


class LogOptions:
    """The words behind "vn log"."""

    def __init__(self, argument):
        self.last = self.level = self.thread = None
        words = gdb.string_to_argv(argument or "")
        while words:
            word = words.pop(0)
            if word not in ("-last", "-level", "-thread"):
                raise gdb.GdbError(f"vn log: unknown word {word!r}; \"help vn log\" tells more")
            if not words:
                raise gdb.GdbError(f"vn log: {word} needs a value behind it")
            value = words.pop(0)
            if word == "-level":
                self.level = level_from(value)
            else:
                setattr(self, word[1:], self.number(word, value))

    @staticmethod
    def number(word, text):
        try:
            number = int(text, 0)
        except ValueError:
            number = -1
        if number < 0:
            raise gdb.GdbError(f"vn log: {word} takes a number, and not {text!r}")
        return number

    def wants(self, message):
        return (self.level is None or message.level <= self.level) and (
            self.thread is None or message.thread == self.thread)

    def cut(self, messages):
        return messages if self.last is None else messages[len(messages) - min(self.last, len(messages)):]


def counted(number, word):
    return f"{number} {word}{'' if number == 1 else 's'}"


class LogCommand(gdb.Command):
    """Print the messages that are still in the queues of all threads, in the order of their times.

Usage: vn log [-last COUNT] [-level LEVEL] [-thread NUMBER]

  -last COUNT      only the last COUNT of them
  -level LEVEL     only those of LEVEL and of more severe levels, such as -level Warning or -level "Fatal Error"
  -thread NUMBER   only those of the thread that lines show with this number, such as 0x00000002

A line is the one that the log would have had. A remark behind it says that a thread was still writing the message, or that
the reader had taken its text already. Nothing is removed, and nothing is called: this works on a core dump as well."""

    def invoke(self, argument, from_tty):
        options = LogOptions(argument)
        require_library()
        queues = Queues()
        messages, notes = [], queues.notes
        for queue in queues.addresses:
            try:
                messages += messages_in(queue)
            except Unreadable as problem:
                notes.append(f"the queue at 0x{queue:x} can't be read: {problem}")
        # Queues in the registry's order, as the reader has it: the sort is stable.
        messages.sort(key=lambda message: message.stamp)
        wanted = options.cut([message for message in messages if options.wants(message)])
        start = U64.read(address_of(LOG_START))
        for message in wanted:
            print(message.line(start))
        of = "" if len(wanted) == len(messages) else f"{len(wanted)} of "
        print(f"{of}{counted(len(messages), 'message')} in {counted(len(queues.addresses), 'queue')}")
        for note in notes:
            print(f"note: {note}")


# -------------------------------------------------------------------------------------------------------------- packages

def package_name(package):
    return shown(package["_name"].split(b"\0")[0])


def says_it_runs(package):
    """What the package's own flag says; None if it can't be found."""
    name = table_name(package)
    try:
        return bool(gdb.parse_and_eval(f"*(unsigned char*) &'{name}::_initialized'")) if name else None
    except gdb.error:
        return None


class Manager:
    """The packages with their states, in the order in which they start."""

    def __init__(self):
        require_library()
        address = pointer_at("_ZN2Vn9InInitMgr9_instanceE")
        self.state = Object(STATE, Object(MANAGER, address)["_state"]) if address != 0 else None
        self.rows = []
        if self.state is None:
            return
        self.is_stopping, self.is_starting = bool(self.state["_finalizing"]), bool(self.state["_initializing"])
        self.add_saved(self.entries("_packagesSaved"), [entry["package"] for entry in self.entries("_packagesToInit")])
        for entry in self.entries("_packagesWaiting"):
            self.add(entry["package"], "waiting")

    def entries(self, name):
        """Without the holes of packages that have been destroyed."""
        return [entry for entry in elements(self.state[name], PACKAGE_ENTRY) if entry["package"] != 0]

    def add(self, package, state):
        try:
            name = package_name(Object(PACKAGE, package))
        except Unreadable as problem:
            name = f"<{problem}>"
        self.rows.append((package, name, state))

    def add_saved(self, saved, batch):
        """Those that were taken up. The first of the batch that hasn't started is the one that the start has come to, or has
        ended with."""
        running = {entry["package"] for entry in saved if entry["initialized"]}
        reached = next((package for package in batch if package not in running), None)
        # The stop goes backwards: the first of those that say so is the one that it has come to.
        stopped = [entry["package"] for entry in saved if self.has_stopped(entry)]
        for entry in saved:
            package = entry["package"]
            if package in stopped:
                self.add(package, "stopping" if package == stopped[0] else "stopped")
            elif package in running:
                self.add(package, "running")
            elif package == reached:
                self.add(package, "starting" if self.is_starting else "failed to start")
            else:
                self.add(package, "not started")
        taken_up = {entry["package"] for entry in saved}
        for package in batch:
            if package not in taken_up:
                self.add(package, "not started: there is a cycle, or an unknown dependency")

    def has_stopped(self, entry):
        try:
            return self.is_stopping and entry["initialized"] and says_it_runs(Object(PACKAGE, entry["package"])) is False
        except Unreadable:
            return False

    def summary(self):
        if self.state is None:
            return "no package is known yet"
        count = counted(len(self.rows), "package")
        if self.is_stopping:
            return f"{count}; the program is stopping them"
        if self.is_starting:
            return f"{count}; the program is starting them"
        if self.state["_finalized"]:
            return f"{count}; the program has stopped what ran"
        return count if self.state["_initialized"] else f"{count}; the program has not started them yet"


class PackagesCommand(gdb.Command):
    """Print the packages with their states, in the order in which they start.

Usage: vn packages

The states: running, waiting (for InInitMgr::initialize() or the end of an InReinitGuard), starting (its hook has been called
and has not returned), not started, failed to start, stopping, stopped. Nothing is called: this works on a core dump as well."""

    def invoke(self, argument, from_tty):
        refuse_words("packages", argument)
        try:
            manager = Manager()
        except Unreadable as problem:
            raise gdb.GdbError(f"vn packages: {problem}") from None
        width = max((len(name) for _, name, _ in manager.rows), default=0)
        for number, (_, name, state) in enumerate(manager.rows, 1):
            print(f"{number:3}  {name:{width}}  {state}")
        print(manager.summary())


# -------------------------------------------------------------------------------------------------------------- settings

# By the class of the source: its virtual table's symbol, and how it is told.
SOURCES = {
    "Vn::InContextAlias<Vn::InInitOvr, 0>": ("_ZTVN2Vn14InContextAliasINS_9InInitOvrELi0EEE", "override"),
    "Vn::InContextAlias<Vn::InInitArg, 1>": ("_ZTVN2Vn14InContextAliasINS_9InInitArgELi1EEE", "option -{key}"),
    "Vn::InContextAlias<Vn::InInitEnv, 1>": ("_ZTVN2Vn14InContextAliasINS_9InInitEnvELi1EEE", "environment variable {key}"),
    "Vn::InContextAlias<Vn::InInitDef, 0>": ("_ZTVN2Vn14InContextAliasINS_9InInitDefELi0EEE", "default"),
}


def source_of(alias):
    name = table_name(alias)
    if name not in SOURCES:
        return name or "an unknown source"
    told = SOURCES[name][1]
    return told.format(key=shown(read_text(alias["_key"])).rstrip(":")) if "{" in told else told


def value_and_source(variable):
    """What the variable's getValue() would read, and where that comes from: ('"5"', 'option -d')."""
    alias = variable["_contextAlias"]
    if alias == 0:
        return "no value", ""
    alias = Object(ALIAS, alias)
    if not alias["_initialized"] or alias["_value"] == 0:
        return "no value", f"{source_of(alias)}, which is finalised"
    return quoted(read_text(alias["_value"])), source_of(alias)


def pending_overrides():
    """The texts that wait for their variables, by handle: what a std::map holds."""
    overrides, place = {}, pointer_at("_ZN2Vn14InVariableBase17_pendingOverridesE")
    if place == 0:
        return overrides
    map_ = Object(TREE, place)
    nodes, seen = [map_["root"]], {0}
    while nodes:
        node = nodes.pop()
        if node in seen:
            continue
        seen.add(node)
        handle = Object(STRING, node + TREE_NODE.size)
        alias = Object(ALIAS, POINTER.read(handle.address + STRING.size))
        overrides[read(handle["text"], min(handle["size"], 65536))] = read_text(alias["_key"])
        links = Object(TREE_NODE, node)
        nodes += [links["left"], links["right"]]
    return overrides


def all_variables():
    place = pointer_at("_ZN2Vn14InVariableBase9_registryE")
    if place == 0:
        return []
    return [slot["value"] for slot in elements(Object(TABLE, place)["_slots"], SLOT) if slot["text"] != 0]


class SettingsCommand(gdb.Command):
    """Print the settings with their values, and where each value comes from.

Usage: vn settings

A setting has a value from the start of its package to its stop. An override that no setting has taken yet stands behind it.
Nothing is called: this works on a core dump as well."""

    def invoke(self, argument, from_tty):
        refuse_words("settings", argument)
        require_library()
        rows, notes, overrides = [], [], {}
        try:
            overrides = pending_overrides()
        except Unreadable as problem:
            notes.append(f"overrides may be missing: {problem}")
        try:
            variables = all_variables()
        except Unreadable as problem:
            raise gdb.GdbError(f"vn settings: {problem}") from None
        for address in variables:
            try:
                variable = Object(VARIABLE, address)
                handle = read_text(variable["_handle"])
                waiting = overrides.pop(handle, None)
                value, source = value_and_source(variable)
                if waiting is not None:
                    source = f"{source + ', ' if source else ''}override {quoted(waiting)} waits"
                rows.append((handle, shown(handle), value, source))
            except Unreadable as problem:
                notes.append(f"the setting at 0x{address:x} can't be read: {problem}")
        rows += [(handle, shown(handle), "no setting", f"override {quoted(text)} waits")
                 for handle, text in overrides.items()]
        name_width = max((len(row[1]) for row in rows), default=0)
        value_width = max((len(row[2]) for row in rows), default=0)
        for _, name, value, source in sorted(rows):
            print(f"{name:{name_width}}  {value:{value_width}}  {source}".rstrip())
        print(counted(len(variables), "setting"))
        for note in notes:
            print(f"note: {note}")


class Commands(gdb.Command):
    """Look into a program that uses libVNbase."""

    def __init__(self):
        super().__init__("vn", gdb.COMMAND_DATA, prefix=True)

    def invoke(self, argument, from_tty):
        if argument:
            raise gdb.GdbError(f"vn: unknown word {argument.split()[0]!r}; \"help vn\" lists what there is")
        gdb.execute("help vn", from_tty)


def refuse_words(command, argument):
    if argument:
        raise gdb.GdbError(f"vn {command}: unknown word {argument.split()[0]!r}; \"help vn {command}\" tells more")


# -------------------------------------------------------------------------------------------------------------- printers

def plain(type_):
    return type_.strip_typedefs().unqualified()


def type_name(type_):
    """As a program spells it, without the blanks that compilers differ in."""
    return str(plain(type_)).replace(" *", "*").replace("> >", ">>")


def bases_of(type_):
    return [field for field in plain(type_).fields() if field.is_base_class]


def all_fields(type_, at=0):
    """The fields of a class and of its bases: pairs of a place in bytes and a type."""
    for field in plain(type_).fields():
        if not hasattr(field, "bitpos"):
            continue
        place = at + field.bitpos // 8
        if field.is_base_class:
            yield from all_fields(field.type, place)
        else:
            yield place, field.type


def as_base(value, name):
    """The part of the value that is the class `name`; None if it has none."""
    if type_name(value.type) == name:
        return value
    for base in bases_of(value.type):
        part = as_base(value[base], name)
        if part is not None:
            return part
    return None


def has_base(type_, name):
    return any(type_name(base.type) == name or has_base(base.type, name) for base in bases_of(type_))


class Printer:
    """Shows a value by its text(), and says in its place why it can't be read."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        try:
            return self.text()
        except (Unreadable, gdb.error, UnicodeError) as problem:
            return f"<can't be shown: {problem}>"

    def address(self):
        if self.value.address is None:
            raise Unreadable("it isn't in memory")
        return int(self.value.address)


class OwnerPrinter(Printer):
    """ObjPtr and ObjPtrRet: the pointer, which an expression can go on with."""

    def text(self):
        return f"{type_name(self.value.type)} {'owns an object' if int(self.value['_object']) else 'owns nothing'}"

    def children(self):
        if int(self.value["_object"]):
            yield "_object", self.value["_object"]


class ArrayOwnerPrinter(Printer):
    """ArrayPtr and ArrayPtrRet, but of characters: how many elements there are is known to nobody."""

    def text(self):
        return f"{type_name(self.value.type)} {'owns an array' if int(self.value['_first']) else 'owns nothing'}"

    def children(self):
        if int(self.value["_first"]):
            yield "_first", self.value["_first"]


class TextOwnerPrinter(Printer):
    """ArrayPtr<char>: its text."""

    def text(self):
        first = int(self.value["_first"])
        return quoted(read_text(first, 4096)) if first else "nothing"


class VectorPrinter(Printer):
    """Vector, as a standard vector is shown."""

    def __init__(self, value):
        super().__init__(value)
        self.storage = as_base(value, type_name(bases_of(value.type)[0].type))["_M_impl"]
        self.is_bits = type_name(value.type.template_argument(0)) == "bool"

    def count(self):
        if self.is_bits:
            start, finish = self.storage["_M_start"], self.storage["_M_finish"]
            words = int(finish["_M_p"]) - int(start["_M_p"])
            size, room = words * 8 + int(finish["_M_offset"]), int(self.storage["_M_end_of_storage"]) * 8
            room = room - int(start["_M_p"]) * 8 if int(start["_M_p"]) else 0
        else:
            width = self.value.type.template_argument(0).sizeof
            start = int(self.storage["_M_start"])
            size = int(self.storage["_M_finish"]) - start
            room = int(self.storage["_M_end_of_storage"]) - start
            if size % width or room % width:
                raise Unreadable("its pointers make no sense")
            size, room = size // width, room // width
        if not 0 <= size <= room:
            raise Unreadable("its pointers make no sense")
        return size, room

    def text(self):
        size, room = self.count()
        return f"{type_name(self.value.type)} of length {size}, capacity {room}"

    def children(self):
        try:
            size, _ = self.count()
        except (Unreadable, gdb.error):
            return
        for i in range(size):
            if self.is_bits:
                first = self.storage["_M_start"]["_M_p"]
                bits = 8 * first.type.target().sizeof
                yield f"[{i}]", bool((int((first + i // bits).dereference()) >> (i % bits)) & 1)
            else:
                yield f"[{i}]", (self.storage["_M_start"] + i).dereference()

    def display_hint(self):
        return "array"


class ListPrinter(Printer):
    """List, as a standard list is shown."""

    def __init__(self, value):
        super().__init__(value)
        self.head = as_base(value, type_name(bases_of(value.type)[0].type))["_M_impl"]["_M_node"]

    def text(self):
        return f"{type_name(self.value.type)} of length {int(self.head['_M_size'])}"

    def children(self):
        element = self.value.type.template_argument(0)
        end, node = int(self.head.address), self.head["_M_next"]
        for i in range(int(self.head["_M_size"])):
            if int(node) == end:
                yield f"[{i}]", "<the list ends too early>"
                return
            place = int(node) + node.type.target().sizeof
            place = -(-place // element.alignof) * element.alignof
            try:
                following = node["_M_next"]
                following.fetch_lazy()
            except gdb.error as problem:
                yield f"[{i}]", f"<can't be read: {problem}>"
                return
            yield f"[{i}]", gdb.Value(place).cast(element.pointer()).dereference()
            node = following

    def display_hint(self):
        return "array"


class RationalPrinter(Printer):
    def text(self):
        return f"{int(self.value['_numerator'])}/{int(self.value['_denominator'])}"


class TimeIndexPrinter(Printer):
    def text(self):
        return str(int(self.value["_count"]))


class TimePrinter(Printer):
    """Count and rate, and the seconds that they mean."""

    def text(self):
        count, rate = int(self.value["_count"]["_count"]), self.value["_rate"]
        numerator, denominator = int(rate["_numerator"]), int(rate["_denominator"])
        seconds = ""
        if numerator != 0:
            exact = fractions.Fraction(count * denominator, numerator)
            seconds = f" = {exact if exact.denominator == 1 else format(float(exact), '.9g')} s"
        return f"{count} @ {numerator}/{denominator}{seconds}"


class IntervalPrinter(Printer):
    def text(self):
        return f"[{self.value['_lower'].format_string()}, {self.value['_upper'].format_string()}]"


class PathPrinter(Printer):
    def text(self):
        place = int(self.value.address) if self.value.address is not None else 0
        return quoted(read_text(POINTER.read(place) if place else int(self.value["_path"]["_first"])))


class ExceptionPrinter(Printer):
    """Any class that derives from ExBase: its name, what it says, and where it was thrown."""

    def text(self):
        base = as_base(self.value, "Vn::ExBase")
        if base.address is not None:
            # By the layout: compilers leave the description of such a class to the library, which may have none.
            fields = Object(EXCEPTION, int(base.address))
            reason, file, line = fields["_reason"].split(b"\0")[0], fields["_fileName"].split(b"\0")[0], fields["_lineNo"]
        else:
            reason, file, line = (*(self.characters(base[name]) for name in ("_reason", "_fileName")), int(base["_lineNo"]))
        try:
            name = type_name(self.value.dynamic_type)
        except gdb.error:
            name = type_name(self.value.type)
        return f"{name} {quoted(reason)} at {shown(file)}:{line}"

    @staticmethod
    def characters(array):
        return bytes(int(array[i]) & 0xff for i in range(array.type.range()[1] + 1)).split(b"\0")[0]

    def children(self):
        for field in plain(self.value.type).fields():
            if hasattr(field, "bitpos") and not field.is_base_class and not field.artificial and (
                    type_name(self.value.type) != "Vn::ExBase"):
                yield field.name, self.value[field]


class SettingPrinter(Printer):
    """InVariable and InVariableBase."""

    def text(self):
        variable = Object(VARIABLE, self.address())
        value, source = value_and_source(variable)
        return f"{shown(read_text(variable['_handle']))} = {value}{' from ' + source if source else ''}"


class PackagePrinter(Printer):
    """Any class that derives from InPackageInit."""

    def text(self):
        package = Object(PACKAGE, int(as_base(self.value, "Vn::InPackageInit").address))
        states = {place: state for place, _, state in Manager().rows}
        return f"package {package_name(package)}, {states.get(package.address, 'not known to the manager')}"


class ManagerPrinter(Printer):
    def text(self):
        rows = Manager()
        return f"{rows.summary()}; {sum(1 for _, _, state in rows.rows if state == 'running')} running"


class EntryPrinter(Printer):
    def text(self):
        return Message(0, Object(ENTRY, self.address()), b"").line(0).split(") ")[1].rstrip(" :")


class QueuePrinter(Printer):
    """A queue: its messages, the oldest first."""

    def text(self):
        messages = messages_in(self.address())
        return f"queue of thread 0x{Object(QUEUE, self.address())['_threadId']:x} with {counted(len(messages), 'message')}"

    def children(self):
        try:
            start = U64.read(address_of(LOG_START) or 0)
            for i, message in enumerate(messages_in(self.address())):
                yield f"[{i}]", message.line(start).split(") ", 1)[1]
        except Unreadable:
            return

    def display_hint(self):
        return "array"


TEMPLATES = {
    "Vn::ObjPtr<": OwnerPrinter, "Vn::ObjPtrRet<": OwnerPrinter,
    "Vn::ArrayPtr<char>": TextOwnerPrinter, "Vn::ArrayPtrRet<char>": TextOwnerPrinter,
    "Vn::ArrayPtr<": ArrayOwnerPrinter, "Vn::ArrayPtrRet<": ArrayOwnerPrinter,
    "Vn::Vector<": VectorPrinter, "Vn::List<": ListPrinter, "Vn::Interval<": IntervalPrinter,
    "Vn::InVariable<": SettingPrinter,
}
CLASSES = {
    "Vn::Rational": RationalPrinter, "Vn::DtTimeIndex": TimeIndexPrinter, "Vn::DtTime": TimePrinter,
    "Vn::OsFilePath": PathPrinter, "Vn::ExBase": ExceptionPrinter, "Vn::InVariableBase": SettingPrinter,
    "Vn::InPackageInit": PackagePrinter, "Vn::InInitMgr": ManagerPrinter, "Vn::LgQueue": QueuePrinter,
    "Vn::LgQueue::Entry": EntryPrinter,
}
FAMILIES = {"Vn::ExBase": ExceptionPrinter, "Vn::InPackageInit": PackagePrinter}


class Printers(gdb.printing.PrettyPrinter):
    """Finds the printer of a value by the name of its class, or of a base."""

    def __init__(self):
        super().__init__("libVNbase")

    def __call__(self, value):
        type_ = value.type.strip_typedefs()
        if type_.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value, type_ = value.referenced_value(), type_.target()
        type_ = plain(type_)
        if type_.code != gdb.TYPE_CODE_STRUCT or type_.name is None:
            return None
        name = type_name(type_)
        if name in CLASSES:
            return CLASSES[name](value)
        if name.startswith("Vn::"):
            for beginning, printer in TEMPLATES.items():
                if name.startswith(beginning) and name.endswith(">"):
                    return printer(value)
        for base, printer in FAMILIES.items():
            if has_base(type_, base):
                return printer(value)
        return None


def register():
    """Called for each file of the library that GDB loads; a second call replaces what the first one made."""
    gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
    Commands()
    LogCommand("vn log", gdb.COMMAND_DATA)
    PackagesCommand("vn packages", gdb.COMMAND_DATA)
    SettingsCommand("vn settings", gdb.COMMAND_DATA)


if __name__ == "__main__":
    _module = types.ModuleType("vnbase_gdb")
    with open(__file__, encoding="utf-8") as _file:
        exec(compile(_file.read(), __file__, "exec"), _module.__dict__)
    _module.register()
    (lambda names, before: (names.clear(), names.update(before)))(globals(), _before)
