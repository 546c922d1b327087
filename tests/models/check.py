#!/usr/bin/env python3
"""Checks the memory orders of the sources against models (Debian's package spin).

    check.py table SOURCE-FOLDER           each order in the sources stands in orders.txt, and the other way round
    check.py run MODEL BUILD-FOLDER        the model holds; without each of its orders it fails, or holds, as orders.txt says
    check.py trace MODEL ORDER BUILD-FOLDER    how the model fails without that order, step by step

MODEL is a name without the ending, ORDER the name behind WEAK_. README.md tells how to read and write orders.txt.
"""
import os
import re
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
OPERATIONS = r"load|store|exchange|fetch_add|fetch_sub|fetch_or|fetch_and|compare_exchange_strong|compare_exchange_weak"
ORDERS = {"acquire", "release", "acq_rel", "seq_cst"}
TIMEOUT = 300


# --- the sources ------------------------------------------------------------------------------------------------------

def arguments_from(text, start):
    """The text between the parentheses, of which the first one ends at `start`."""
    depth = 1
    for end in range(start, len(text)):
        depth += {"(": 1, ")": -1}.get(text[end], 0)
        if depth == 0:
            return text[start:end]
    return text[start:]


def without_comments(text):
    """The same number of lines, so that places stay."""
    return re.sub(r"//[^\n]*|/\*.*?\*/", lambda found: re.sub(r"[^\n]", " ", found.group()), text, flags=re.S)


def orders_of(operation, arguments):
    """The orders that an operation of std::atomic names, or the one that it has without a name."""
    own = arguments
    while re.search(r"\([^()]*\)", own):
        own = re.sub(r"\([^()]*\)", "", own)  # those of calls within the arguments are theirs
    named = re.findall(r"memory_order(?:_|::)(\w+)", own)
    return named or ["seq_cst"]


def operations_in(text):
    """(place, expression, orders) for each operation that is ordered more than relaxed."""
    for found in re.finditer(rf"([\w>.\-]*\w)(\([\w.]*\))?\s*\.\s*({OPERATIONS})\(", text):
        orders = orders_of(found.group(3), arguments_from(text, found.end()))
        if ORDERS & set(orders):
            yield found.start(), f"{found.group(1)}{'()' if found.group(2) else ''}.{found.group(3)}", orders
    for found in re.finditer(r"([\w>.\-]*\w)\s*\.\s*(loadAcquire|storeRelease)\(", text):
        yield found.start(), f"{found.group(1)}.{found.group(2)}", ["acquire" if "Acq" in found.group(2) else "release"]
    for found in re.finditer(r"(?<![\w.>])(loadAcquire|storeRelease)\((\w+)(?=[,)])", text):
        yield found.start(), f"{found.group(1)}({found.group(2)})", ["acquire" if "Acq" in found.group(1) else "release"]
    for found in re.finditer(r"__atomic_(\w+)\(", text):
        arguments = arguments_from(text, found.end())
        orders = [order.lower() for order in re.findall(r"__ATOMIC_(\w+)", arguments)]
        if ORDERS & set(orders):
            yield found.start(), f"{found.group(1)}({arguments.split(',')[0].strip()})", orders
    for found in re.finditer(r"atomic_(?:thread|signal)_fence\(", text):
        yield found.start(), "fence", orders_of("fence", arguments_from(text, found.end()))


def function_at(text, place):
    """The function that a place lies in, by the layout: its head begins further left than its body."""
    lines = text[:place].split("\n")
    indent = len(lines[-1]) - len(lines[-1].lstrip())
    if re.match(r"\s*(static |template |friend |inline )*[\w:<>*& ]+ [*&]?\w+\([^;]*\)( const)?( noexcept)?\s*\{", lines[-1]):
        indent += 1
    for line in reversed(lines):
        own = len(line) - len(line.lstrip())
        if line.strip() in ("", "{", "}", "};") or own >= indent:
            continue
        indent = own
        found = re.match(r"\s*(?!if|for|while|switch|return|else|do\b)[\w:<>*&\[\] ]*?([~\w:]*\w)\(", line)
        if found and not line.rstrip().endswith(";") and not re.match(r"\s*(if|for|while|switch|return)\b", line):
            return found.group(1)
    return "?"


def found_in_sources(folder):
    """Rows as the table has them: file, function, expression, orders."""
    rows = []
    for file in sorted(Path(folder).rglob("*")):
        if file.suffix not in (".h", ".cpp", ".imp"):
            continue
        text = without_comments(file.read_text())
        for place, expression, orders in sorted(operations_in(text), key=lambda operation: operation[0]):
            rows.append((file.relative_to(folder).as_posix(), function_at(text, place), expression, "/".join(orders)))
    return rows


# --- the table --------------------------------------------------------------------------------------------------------

class Row:
    def __init__(self, line):
        fields = [field.strip() for field in line.split("|")]
        if len(fields) != 6:
            sys.exit(f"orders.txt: not six fields: {line}")
        self.operation = tuple(fields[:4])
        self.model = fields[4]
        self.claims = fields[5]

    def orders(self, word):
        """What stands behind `fails` or `holds`: names of orders that the model is run without."""
        return re.findall(r"\b[A-Z][A-Z_]+\b", " ".join(re.findall(rf"\b{word}((?: [A-Z_]+,?)+)", self.claims)))


def table():
    lines = (HERE / "orders.txt").read_text().splitlines()
    return [Row(line) for line in lines if line.strip() and not line.startswith("#")]


def check_table(folder):
    faults = []
    rows = table()
    listed = [row.operation for row in rows]
    present = found_in_sources(folder)
    for operation in present:
        if present.count(operation) > listed.count(operation):
            faults.append("in the sources but not in orders.txt: " + " | ".join(operation))
    for operation in listed:
        if listed.count(operation) > present.count(operation):
            faults.append("in orders.txt but not in the sources: " + " | ".join(operation))
    for row in rows:
        if row.model == "-":
            if not row.claims.startswith("argued: "):
                faults.append("neither a model nor a reason: " + " | ".join(row.operation))
            continue
        path = Path(folder) / row.operation[0]
        if path.is_file() and f"model: tests/models/{row.model}.pml" not in path.read_text():
            faults.append(f"{row.operation[0]} doesn't name tests/models/{row.model}.pml")
        if not row.orders("fails") and not row.orders("holds"):
            faults.append("no order of the model: " + " | ".join(row.operation))
        for order in row.orders("fails") + row.orders("holds"):
            if order not in orders_of_model(row.model):
                faults.append(f"{row.model}.pml has no WEAK_{order}")
    for model in models():
        for order in orders_of_model(model):
            if not any(row.model == model and order in row.orders("fails") + row.orders("holds") for row in rows):
                faults.append(f"{model}.pml: WEAK_{order} stands for nothing in orders.txt")
    return sorted(set(faults))


# --- the models -------------------------------------------------------------------------------------------------------

def models():
    return sorted(file.stem for file in HERE.glob("*.pml") if "\ninit" in file.read_text())


def orders_of_model(model):
    return {name: int(number) for name, number in
            re.findall(r"^#define WEAK_(\w+) (\d+)", (HERE / f"{model}.pml").read_text(), flags=re.M)}


def build(model, folder, *options):
    """The verifier of a model, in a folder of its own. Spin's trails have the model's name."""
    place = Path(folder) / model
    place.mkdir(parents=True, exist_ok=True)
    for file in HERE.glob("*.pml"):
        (place / file.name).write_text(file.read_text())
    subprocess.run(["spin", "-a", f"{model}.pml"], cwd=place, check=True, stdout=subprocess.PIPE, timeout=TIMEOUT)
    subprocess.run(["cc", "-O2", "-w", "-DSAFETY", "-DCOLLAPSE", "-DMEMLIM=2000", *options, "-o", "pan", "pan.c"], cwd=place,
                   check=True, timeout=TIMEOUT)
    return place


def verify(place, weak, *options):
    """What the verifier says with the one order left out, or with none."""
    return subprocess.run(["./pan", "-m1000000", *options], cwd=place, env={**os.environ, "WEAK": str(weak)},
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=TIMEOUT).stdout


def outcome(said):
    """`fails` with the claim, `holds`, or why nothing is known."""
    errors = re.search(r"errors: (\d+)", said)
    if errors is None or re.search(r"too small|MEMLIM|out of memory|interrupted|Search not completed(?!\n.*violated)", said) \
            and errors.group(1) == "0":
        return "unknown", said[-500:]
    if errors.group(1) == "0":
        return "holds", re.search(r"(\S+) states, stored", said).group(1) + " states"
    claim = re.search(r"pan:\d+: (.*) \(at depth", said)
    # What the model itself can't hold is no failure of the library.
    if "last[" in claim.group(1) and "<" in claim.group(1):
        return "unknown", "H is too small: " + claim.group(1)
    return "fails", claim.group(1)


def run(model, folder):
    faults = []
    place = build(model, folder)
    rows = [row for row in table() if row.model == model]
    expected = {order: "fails" for row in rows for order in row.orders("fails")}
    expected.update({order: "holds" for row in rows for order in row.orders("holds")})
    for order, number in [("", 0), *orders_of_model(model).items()]:
        result, why = outcome(verify(place, number))
        print(f"{model}{' without ' + order if order else ''} {result}: {why}", flush=True)
        if result != (expected.get(order) if order else "holds"):
            faults.append(f"{model} without {order or 'nothing'}: expected {expected.get(order, 'holds')}, and it {result}")
    return faults


def names_of(model):
    """Names of threads, locations and data, by their letter and number."""
    names = {}
    text = (HERE / f"{model}.pml").read_text()
    for letter, name, number in re.findall(r"^#define ([TLD])_(\w+) (\d+)", text, flags=re.M):
        names[letter, int(number)] = name
    return names


def name(names, letter, number):
    """Of an array's element, its array's name and the index."""
    first = max((known for kind, known in names if kind == letter and known <= number), default=None)
    if first is None:
        return str(number)
    behind = [known for kind, known in names if kind == letter and known > first]
    isArray = first != number or (not behind or min(behind) > first + 1)
    return names[letter, first] + (f"[{number - first}]" if isArray and letter != "T" and number != first else "")


ORDER_NAMES = {0: "relaxed", 1: "acquire", 2: "release", 3: "acq_rel", 7: "seq_cst", 5: "seq_cst", 6: "seq_cst"}


def trace(model, order, folder):
    """The last line is the one that breaks the claim."""
    place = build(model, Path(folder) / "trace", "-DBFS")  # breadth first: the shortest way
    number = orders_of_model(model)[order]
    result, why = outcome(verify(place, number))
    if result != "fails":
        sys.exit(f"{model} without {order} {result}")
    names = names_of(model)
    for line in verify(place, number, "-r", "-n").splitlines():
        found = re.search(r"@(\w+) ([\d ]+)", line)
        if not found:
            continue
        kind, values = found.group(1), [int(value) for value in found.group(2).split()]
        thread = name(names, "T", values[0])
        if kind in ("read", "write"):
            what = f"{kind}s {name(names, 'D', values[1])}"
        elif kind == "fence":
            what = "passes a fence"
        elif kind in ("lock", "unlock"):
            what = f"{kind}s {name(names, 'L', values[1])}"
        else:
            where, how = name(names, "L", values[1]), ORDER_NAMES[values[2]]
            if kind == "load":
                old = f", though {values[4]} newer" if values[4] else ""
                what = f"loads {where} = {values[3]} ({how}{old})"
            elif kind == "store":
                what = f"stores {where} = {values[3]} ({how})"
            else:
                what = f"changes {where} from {values[3]} to {values[4]} ({how})"
        print(f"{thread:>10}  {what}")
    print(f"broken: {why}")


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "table":
        faults = check_table(arguments[1])
    elif len(arguments) == 3 and arguments[0] == "run":
        faults = run(*arguments[1:])
    elif len(arguments) == 4 and arguments[0] == "trace":
        faults = trace(*arguments[1:]) or []
    elif len(arguments) == 2 and arguments[0] == "list":
        for row in found_in_sources(arguments[1]):
            print(" | ".join(row))
        return 0
    else:
        sys.exit(__doc__)
    print("\n".join(faults), file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
