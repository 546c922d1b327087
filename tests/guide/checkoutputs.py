#!/usr/bin/env python3
"""Fails if a page of the guide shows what its program doesn't print.

checkoutputs.py ROOT outputs PROGRAMS [EMULATOR]     runs the console blocks of the guide's pages
checkoutputs.py ROOT mistakes PROGRAMS [EMULATOR]    makes the mistakes in the pages' tables of messages
checkoutputs.py ROOT mend PROGRAMS                   writes what the programs print into the pages: read what has changed

A console block is fenced and marked console. A line that begins with "$ " is a command for the shell, and the lines behind it
are all that it prints, to the byte. The blocks of a page run in one folder, in their order. It is empty, but for the files of the folder
beside the page that has its name.

A table of messages stands under the heading "What goes wrong, and how it shows" and begins with "it prints". The first cell of
a row is a line that the command prints that stands in its place in mistakes.txt.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from pages import WITH_OUTPUTS, WITH_PROGRAMS

root, task, programs, emulator = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3]).resolve(), sys.argv[4:]
is_windows = any(programs.glob("*.exe"))
# The program of the pages with kept files is another's concern on Windows (tests/vnlog), and needs a library that other processors lack.
PAGES = [root / "docs" / name for name in (WITH_PROGRAMS if emulator else WITH_OUTPUTS)]
BLOCK = re.compile(r"^```console\n(.*?)^```", re.M | re.S)
TABLE = re.compile(r"^## What goes wrong, and how it shows\n(?:(?!## ).*\n)*?\| it prints .*\n\|---.*\n((?:\|.*\n)*)", re.M)
ROW = re.compile(r"^\| `(.*?)` \|", re.M)


class Shell:
    """Runs commands in a folder of its own, with the project's programs in the path."""

    def __init__(self, folder, page):
        self.folder, self.status = folder / "work", 0
        kept = page.with_suffix("")
        if kept.is_dir():
            shutil.copytree(kept, self.folder)
        else:
            self.folder.mkdir()
        path = f"{programs}:{programs.parent / 'programs' / 'bin'}"  # the second one has those that get installed
        if emulator:
            path = folder / "programs"
            path.mkdir()
            for program in [*programs.glob("*.exe"), *programs.glob("*.emulated")]:
                script = path / program.stem
                words = [program] if program.suffix == ".emulated" else [emulator[0], program]
                script.write_text("#!/bin/sh\nexec " + "".join(f"'{word}' " for word in words) + "\"$@\"\n")
                script.chmod(0o755)
        # The logger's default files are in the current folder, whatever the system's folder for temporary files is.
        own = re.compile(r"VN_|T4Q_|GREETER_|ABOUT_|COLUMNS$|TZ$|LC_|LANG")
        self.environment = {name: value for name, value in os.environ.items() if not own.match(name)}
        self.environment |= {"PATH": f"{path}:{os.environ['PATH']}", "T4Q_TEST_DIR": "."}

    def run(self, command):
        """What the command prints on both streams."""
        # Into a file: a pipe stays open as long as the services that Wine starts in the background.
        with tempfile.TemporaryFile() as output:
            done = subprocess.run(["sh", "-c", f"exec 2>&1; (exit {self.status})\n{command}"], cwd=self.folder,
                                  env=self.environment, stdin=subprocess.DEVNULL, stdout=output, check=False)
            self.status = done.returncode
            output.seek(0)
            text = output.read().decode("utf-8", "backslashreplace")
        return text.replace("\r\n", "\n") if emulator else text


def commands_of(block):
    """Each command of a block, and what the page shows behind it."""
    commands = []
    for line in block.splitlines(keepends=True):
        if line.startswith("$ "):
            commands.append([line[2:-1], ""])
        elif commands:
            commands[-1][1] += line
        else:
            sys.exit(f"A console block begins without a command:\n{block}")
    return commands


def check_outputs():
    commands, wrong = 0, 0
    for page in PAGES:
        with tempfile.TemporaryDirectory() as folder:
            shell = Shell(pathlib.Path(folder), page)
            for block in BLOCK.findall(page.read_text()):
                for command, shown in commands_of(block):
                    commands += 1
                    printed = shell.run(command)
                    if printed != shown:
                        wrong += 1
                        print(f"{page.name}: '{command}' prints\n{printed}\nand the page shows\n{shown}")
    print(commands, "commands")
    return wrong if commands else 1


def mend():
    for page in PAGES:
        with tempfile.TemporaryDirectory() as folder:
            shell = Shell(pathlib.Path(folder), page)

            def mended(match):
                return "```console\n" + "".join(f"$ {command}\n{shell.run(command)}"
                                                for command, _ in commands_of(match[1])) + "```"

            page.write_text(BLOCK.sub(mended, page.read_text()))
    return 0


def check_mistakes():
    wrong, expected = 0, {}
    for line in (root / "tests" / "guide" / "mistakes.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            page, system, command = line.split(None, 2)
            expected.setdefault(page, []).append((system, command))
    for page in PAGES:
        text = page.read_text()
        messages = ROW.findall("".join(TABLE.findall(text)))
        commands = expected.pop(page.name, [])
        if len(messages) != len(commands):
            wrong += 1
            print(f"{page.name}: {len(messages)} messages, and {len(commands)} commands in mistakes.txt")
        with tempfile.TemporaryDirectory() as folder:
            shell = Shell(pathlib.Path(folder), page)
            for message, (system, command) in zip(messages, commands):
                if system == "linux" and is_windows:
                    continue
                printed = shell.run(command)
                if "mistakes " in command and shell.status != 0:
                    wrong += 1
                    print(f"{page.name}: '{command}' ends with {shell.status}:\n{printed}")
                if message not in printed.splitlines():
                    wrong += 1
                    print(f"{page.name}: '{command}' doesn't print the line\n{message}\nbut\n{printed}")
    for page in expected:
        if emulator and page not in WITH_PROGRAMS:
            continue
        wrong += 1
        print(f"mistakes.txt: there is no page {page}")
    return wrong


sys.exit(1 if {"outputs": check_outputs, "mistakes": check_mistakes, "mend": mend}[task]() else 0)
