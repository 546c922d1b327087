#!/usr/bin/env python3
"""coverage.py EXPORT ROOT: branch coverage by file, from llvm-cov's export, and every branch that wasn't taken."""
import json
import os.path
import pathlib
import sys

export, root = sys.argv[1:]
files = json.load(open(export))["data"][0]["files"]
open_branches, taken_all, count_all = [], 0, 0
for file in sorted(files, key=lambda entry: entry["filename"]):
    name = os.path.relpath(os.path.normpath(file["filename"]), root)
    if not name.startswith(("src/base/", "src/threadlog/")):
        continue  # a compiler cache may have changed how a path is written, and then the export is of all files
    source = pathlib.Path(root, name).read_text().splitlines()
    # A branch of a template or an inline function comes once for each instance: it is taken if any instance takes it.
    outcomes = {}
    for line, column, _, _, taken, missed, *_ in file["branches"]:
        if "if constexpr" in source[line - 1]:
            continue  # decided by the compiler
        for outcome, times in (("true", taken), ("false", missed)):
            key = (line, column, outcome)
            outcomes[key] = outcomes.get(key, 0) + times
    hit = sum(times > 0 for times in outcomes.values())
    taken_all += hit
    count_all += len(outcomes)
    open_branches += [f"  {name}:{line}:{column} never {outcome}"
                      for (line, column, outcome), times in sorted(outcomes.items()) if times == 0]
print(f"branch coverage of src/base and src/threadlog: {taken_all} of {count_all} ({100 * taken_all / max(count_all, 1):.1f} %)")
if open_branches:
    print("not covered:")
    print("\n".join(open_branches))
