"""Run by GDB in specimen's standStill("with values"): reads the expressions of the file NATVIS, and shows values by them."""
import fnmatch
import re
import xml.etree.ElementTree

import gdb

SPACE = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
EXPECTED = {
    "number": "owns 42", "noNumber": "owns nothing", "returned": "owns 30000/1001",
    "text": 'a "text"', "noText": "owns nothing", "numbers": "owns an array",
    "vector": "length 3", "rates": "length 2", "noVector": "length 0", "doubles": "length 2", "noList": "length 0",
    "rate": "30000/1001", "timeIndex": "-7", "timeOfFrame": "100 @ 25/1", "interval": "[0.25, 2]", "frames": "[3, 9]",
    "path": "/tmp/a file", "failure": 'it "failed" at library.cpp:5', "badRate": "Null rate not allowed in DtTime. at "
    "library.cpp:6", "depth": "palette.depth = 5 (-d LEVELS)", "unset": "palette.unset: no value",
    "palettePackage": "package palette", "queue": "thread 6699, 2 messages", "queue._entries[0]": "level 3 at",
}
ITEMS = {"vector": ["1", "2", "3"], "rates": ["25/1", "24/1"], "doubles": ["0.5", "1.5"], "noList": []}
types = [(element, [element.get("Name"), *(other.get("Name") for other in element.iter(f"{SPACE}AlternativeType"))])
         for element in xml.etree.ElementTree.parse(NATVIS).getroot()]
used, expressions, wrong = set(), 0, 0


def fail(text):
    global wrong
    wrong += 1
    print(text)


def evaluate(text, value, names=()):
    """The expression with `value` as its object."""
    global expressions
    expressions += 1
    gdb.set_convenience_variable("it", value.address)
    text = re.sub(r"(,s)$", "", text)
    text = re.sub(r"(?<![\w.>$])(_\w+)", r"$it->\1", text)
    text = re.sub(r"\bthis\b", "$it", text)
    for name in names:
        text = re.sub(rf"(?<![\w.>$]){name}\b", f"${name}", text)
    argument = value.type.strip_typedefs().strip_typedefs()
    if "$T1" in text:
        text = text.replace("$T1", TEMPLATE_ARGUMENT)
    return gdb.parse_and_eval(text)


def find(type_):
    """The element for a class: its own, or one of a base that is inheritable."""
    name = str(type_.strip_typedefs().unqualified())
    matches = [(element, names) for element, names in types
               if any(fnmatch.fnmatchcase(name, other) for other in names)]
    matches.sort(key=lambda match: match[0].get("Priority") == "Low")
    if matches:
        used.update(other for other in matches[0][1] if fnmatch.fnmatchcase(name, other))
        return matches[0][0]
    if type_.strip_typedefs().code == gdb.TYPE_CODE_STRUCT:
        for field in type_.strip_typedefs().fields():
            if field.is_base_class:
                element = find(field.type)
                if element is not None and element.get("Inheritable") == "true":
                    return element
    return None


def holds(element, value):
    condition = element.get("Condition")
    return condition is None or bool(evaluate(condition, value))


def show(value, as_text=False):
    """As the debugger would write it."""
    if as_text:
        return value.string()
    element = find(value.type)
    if element is None:
        return value.format_string(raw=True)
    for display in element.findall(f"{SPACE}DisplayString"):
        if holds(display, value):
            return re.sub(r"\{([^{}]*)\}", lambda match: show(evaluate(match[1], value), match[1].endswith(",s")), display.text)
    return ""


def items_of(element, value):
    """The elements of a container, as its rules give them."""
    for array in element.iter(f"{SPACE}ArrayItems"):
        first = evaluate(array.find(f"{SPACE}ValuePointer").text, value)
        return [show((first + i).dereference()) for i in range(int(evaluate(array.find(f"{SPACE}Size").text, value)))]
    for list_ in element.iter(f"{SPACE}LinkedListItems"):
        node = evaluate(list_.find(f"{SPACE}HeadPointer").text, value)
        items = []
        for _ in range(int(evaluate(list_.find(f"{SPACE}Size").text, value))):
            items.append(show(evaluate(list_.find(f"{SPACE}ValueNode").text, node.dereference())))
            node = evaluate(list_.find(f"{SPACE}NextPointer").text, node.dereference())
        return items
    return None


def walk(element, value):
    """The loop of a CustomListItems: how often it goes round."""
    for custom in element.iter(f"{SPACE}CustomListItems"):
        names = []
        for variable in custom.findall(f"{SPACE}Variable"):
            names.append(variable.get("Name"))
            gdb.set_convenience_variable(names[-1], evaluate(variable.get("InitialValue"), value))
        loop, rounds = custom.find(f"{SPACE}Loop"), 0
        while rounds < 2000:
            for step in loop:
                if step.tag == f"{SPACE}Break" and evaluate(step.get("Condition"), value, names):
                    return rounds
                if step.tag == f"{SPACE}Item":
                    show(evaluate(step.text, value, names))
                if step.tag == f"{SPACE}Exec":
                    evaluate(step.text, value, names)
            rounds += 1
    return None


for name, expected in EXPECTED.items():
    value = gdb.parse_and_eval(name)
    TEMPLATE_ARGUMENT = ""
    if "<" in str(value.type):
        TEMPLATE_ARGUMENT = str(value.type.strip_typedefs().template_argument(0))
    try:
        got = show(value)
        if not got.startswith(expected) or (name != "queue._entries[0]" and got != expected):
            fail(f"{name}: shows {got!r} and not {expected!r}")
        element = find(value.type)
        for part in element.iter():
            if part.tag in (f"{SPACE}Item", f"{SPACE}StringView") and part.get("Name") is not None and holds(part, value):
                show(evaluate(part.text, value), part.text.endswith(",s"))
        items = items_of(element, value)
        if name in ITEMS and items != ITEMS[name]:
            fail(f"{name}: has the items {items}")
        if name == "queue" and walk(element, value) != 2:
            fail("queue: the loop doesn't go round twice")
    except gdb.error as problem:
        fail(f"{name}: {problem}")
for _, names in types:
    for name in names:
        if name not in used and name not in ("Vn::ArrayPtrRet<char>", "Vn::ArrayPtr<*>"):
            fail(f"no value was shown by {name}")
print(f"{expressions} expressions, {wrong} wrong")
