#!/usr/bin/env python3
"""Does what the first page of the guide says, to the letter, against an installed tree: puts its program and its
CMakeLists.txt side by side, and builds and runs it by its command lines.

checkfirst.py ROOT BUILD FOLDER COMPILER     installs BUILD below FOLDER, and fails if a command does, or if the program
                                             prints something else than the page shows
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

root, build, folder = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
compiler = sys.argv[4]
page = (root / "docs" / "first-program.md").read_text()


def run(command, **settings):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **settings)
    if done.returncode != 0:
        sys.exit(f"{command} ends with {done.returncode}:\n{done.stdout}")
    return done.stdout


def found(pattern):
    return re.search(pattern, page, re.M | re.S)[1]


shutil.rmtree(folder, ignore_errors=True)
prefix, work = folder / "prefix", folder / "work"
work.mkdir(parents=True)
run(["cmake", "--install", str(build), "--prefix", str(prefix)])
package = next(prefix.rglob("VNbase.pc")).parent
(work / "first.cpp").write_text(found(r"^```cpp\n(.*?)^```"))
(work / "CMakeLists.txt").write_text(found(r"^```cmake\n(.*?)^```"))
(work / "tools").mkdir()
(work / "tools" / "c++").symlink_to(compiler)

environment = {name: value for name, value in os.environ.items() if not re.match("GREETER_|VN_|CXX", name)}
environment |= {"CMAKE_PREFIX_PATH": str(prefix), "CXX": compiler, "PKG_CONFIG_PATH": str(package),
                "LD_LIBRARY_PATH": str(package.parent), "PATH": f"{work / 'tools'}:{os.environ['PATH']}"}
greeting = found(r"^```console\n\$ first\n(.*?)^\$ ")
for command in (found(r"^    (cmake -B [^\n]*)\n"), found(r"^    (c\+\+ [^\n]*)\n") + " && ./first"):
    printed = run(["sh", "-c", command], cwd=work, env=environment)
    if not printed.endswith(greeting):
        sys.exit(f"{command} prints\n{printed}\nand the page shows\n{greeting}")
    print(printed)
