#!/usr/bin/env python3
"""Checks the public headers as a program of users meets them: many, in any order, under the program's own warnings.

    checkheaders.py text ROOT                     they leave nothing behind that the next one could trip over
    checkheaders.py warnings ROOT COMPILER...     no warning, in both orders, in C++20 and C++23
    checkheaders.py pairs ROOT COMPILER           one behind the other, drawn by a seed
    checkheaders.py twice ROOT FOLDER LIBRARY THREAD-LIBRARY NM COMPILER [FLAG]...
                                                  in two libraries of one program

Each header compiles by itself: all_verify_interface_header_sets shows that. What is left to show for two of them is that the
first one harms no second one. The order of all and its reverse have each pair in both orders. Only what one header leaves and
one in between takes away could hide there: so none takes anything away, which `text` shows, and `pairs` tries.
"""
import pathlib
import random
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
WARNINGS = "-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Weffc++ -Werror".split()
# What each header may define: the export macros, and what a program writes by name.
MACRO = re.compile(r"VN_\w+")


def public_headers(root):
    """As programs name them; without those of the other platform."""
    found = [path for folder in ("base", "threadlog") for path in sorted((root / "src" / folder).glob("*.h"))]
    return [f"{path.parent.name}/{path.name}" for path in found
            if not path.name.endswith("_p.h") and path.name != "osregkeyhandle.h"]


def including(headers):
    return "".join(f"#include <{header}>\n" for header in headers)


def compile_text(compiler, root, text, *options, behind=()):
    """What the compiler says of a source with this text; nothing if all is well."""
    # No ccache here: the text is another one each time that a header changes, and the compiler's front end alone is fast.
    # What follows are libraries, and Clang refuses the change of language where nothing does.
    rest = ["-x", "none", *behind] if behind else []
    run = subprocess.run([compiler, "-x", "c++", f"-I{root}/src", f"-I{HERE}/headers", *options, "-", *rest], input=text, text=True,
                         capture_output=True, check=False)
    return run.stdout + run.stderr if run.returncode else ""


def check_text(root):
    faults = []
    for folder in ("base", "threadlog"):
        files = [*(root / "src" / folder).glob("*.h"), *(root / "src" / folder).glob("*.imp")]
        for path in sorted(path for path in files if not path.name.endswith("_p.h")):
            text = re.sub(r"//[^\n]*", "", path.read_text())
            own = f"{folder}/{path.name}"
            # A warning that is off within a header and as before behind it is no harm.
            pragmas = re.findall(r"^[ \t]*#[ \t]*pragma GCC diagnostic (push|pop|ignored)", text, flags=re.M)
            if "".join(pragmas) == "pushignoredpop" * (len(pragmas) // 3):
                text = re.sub(r"^[ \t]*#[ \t]*pragma GCC diagnostic .*$", "", text, flags=re.M)
            if path.suffix == ".h" and not text.startswith("#pragma once\n") and "\n#pragma once\n" not in text:
                faults.append(f"{own}: no #pragma once")
            for line in re.findall(r"^[ \t]*#[ \t]*(?:undef|pragma (?!once)|define)\b.*$|^using namespace .*$", text, flags=re.M):
                name = re.match(r"[ \t]*#[ \t]*define[ \t]+(\w+)", line)
                if not name or not MACRO.fullmatch(name.group(1)):
                    faults.append(f"{own} leaves behind: {line.strip()}")
    return faults


def check_warnings(root, compilers):
    faults = []
    headers = public_headers(root)
    for compiler in compilers:
        for order, text in (("in order", including(headers) + '#include "everytemplate.h"\n'),
                            ("in reverse", including(reversed(headers)))):
            for standard in ("c++20", "c++2b"):
                said = compile_text(compiler, root, text, f"-std={standard}", "-fsyntax-only", *WARNINGS)
                if said:
                    faults.append(f"{compiler} -std={standard}, {order}:\n{said}")
    return faults


def check_pairs(root, compiler, shuffles=2, pairs=4, seed=22):
    """Whole orders, in which other headers are neighbours; and two alone, with nothing in between or before."""
    faults = []
    headers = public_headers(root)
    draw = random.Random(seed)
    orders = [draw.sample(headers, len(headers)) for _ in range(shuffles)] + [draw.sample(headers, 2) for _ in range(pairs)]
    for order in orders:
        said = compile_text(compiler, root, including(order), "-std=c++20", "-fsyntax-only", "-Werror")
        if said:
            faults.append(f"{' '.join(order[:3])} ... with the seed {seed}:\n{said}")
    return faults


def strong_symbols(nm, path):
    """The names that a library defines so that a second definition clashes."""
    lines = subprocess.run([nm, "-D", "--defined-only", path], check=True, capture_output=True, text=True).stdout.splitlines()
    own = {fields[2] for fields in map(str.split, lines) if len(fields) == 3 and fields[1] in "TDBRSG"}
    return own - {"__bss_start", "_edata", "_end"}  # the linker's, and each library's own


def check_twice(root, folder, library, thread_library, nm, compiler, flags):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    libraries = [library, thread_library]
    names = ("one", "two")

    def build(text, output, *options, behind):
        return compile_text(compiler, root, text, "-std=c++20", "-O1", "-fPIC", *flags, "-o", str(folder / output), *options,
                            f"-Wl,-rpath,{folder}", f"-Wl,-rpath,{pathlib.Path(library).parent}", behind=behind)

    for name, order in zip(names, (1, -1)):
        # The second one has them in the other order: a program's libraries don't agree on that.
        said = build(including(public_headers(root)[::order]) +
                     f'#include "everytemplate.h"\n#define VN_TWICE_NAME {name}\n#include "twicelibrary.h"\n',
                     f"lib{name}.so", "-shared", behind=libraries)
        if said:
            return [f"lib{name}.so:\n{said}"]
    faults = [f"both libraries define {symbol}" for symbol in
              sorted(strong_symbols(nm, folder / "libone.so") & strong_symbols(nm, folder / "libtwo.so"))]
    said = build((HERE / "headers" / "twiceprogram.cpp").read_text(), "twice",
                 behind=[*(str(folder / f"lib{name}.so") for name in names), *libraries])
    if said:
        return [*faults, f"the program:\n{said}"]
    run = subprocess.run([folder / "twice"], capture_output=True, text=True, check=False)
    if run.returncode:
        faults.append(f"the program ended with {run.returncode}:\n{run.stdout}{run.stderr}")
    return faults


def main():
    part, root, *rest = sys.argv[1:]
    root = pathlib.Path(root).resolve()
    if part == "text":
        faults = check_text(root)
    elif part == "warnings":
        faults = check_warnings(root, rest)
    elif part == "pairs":
        faults = check_pairs(root, rest[0])
    elif part == "twice":
        faults = check_twice(root, *rest[:5], rest[5:])
    else:
        sys.exit(__doc__)
    print("\n".join(faults) if faults else f"{len(public_headers(root))} headers, no fault")
    sys.exit(1 if faults else 0)


main()
