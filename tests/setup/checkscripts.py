#!/usr/bin/env python3
"""Tests of tools/setup.sh, run.sh and test.sh, in copies of their folder, with programs of the test's own in the place of
apt, sudo, cmake and ctest: checkscripts.py SOURCES [TEST]...

Nothing is installed and nothing is built. What a test waits for is an event: a line that is written, a pipe that is opened,
a process that has ended.
"""
import os
import pathlib
import pty
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

sources = pathlib.Path(sys.argv.pop(1)).resolve()
# What the scripts call besides the programs that a test replaces.
TOOLS = ("awk bash cat chmod cut date dirname echo env grep head id kill mkdir mktemp mv rm sed setarch sha256sum sleep sort tail tr uname "
         "xargs setsid").split()


class Scripts(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="setup"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.root = self.folder / "a project"
        shutil.copytree(sources / "tools", self.root / "tools")
        shutil.copy(sources / "CMakePresets.json", self.root)
        self.bin = self.folder / "bin"
        self.bin.mkdir()
        for tool in TOOLS:
            path = shutil.which(tool)
            self.assertTrue(path, tool)
            (self.bin / tool).symlink_to(path)
        self.calls = self.folder / "calls"
        self.calls.touch()
        self.release = self.folder / "os-release"
        self.release.write_text('PRETTY_NAME="Debian"\nID=debian\nVERSION_ID="12"\nID_LIKE=x\n')
        self.environment = {"PATH": str(self.bin), "HOME": str(self.folder), "VNBASE_OS_RELEASE": str(self.release),
                            "SOURCE_DATE_EPOCH": "1"}
        # Whoever ends the run of these tests ends what they have started, too.
        if "VNBASE_JOB" in os.environ:
            self.environment["VNBASE_JOB"] = os.environ["VNBASE_JOB"]

    def fake(self, name, body):
        """A program that writes down its call, and then does what the body says."""
        path = self.bin / name
        path.unlink(missing_ok=True)
        path.write_text(f'#!{self.bin}/bash\necho "{name} $*" >> "{self.calls}"\n{body}\n')
        path.chmod(0o755)

    def fake_packages(self, missing=()):
        """A Debian whose packages are there, but for some, and whose apt can install."""
        hidden = "|".join(missing) or "none"
        self.fake("dpkg-query", f"""
            shift 2
            for package; do
                case $package in {hidden}) ;; *) echo "$package install ok installed" ;; esac
            done""")
        self.fake("apt-get", 'echo "0 upgraded, 2 newly installed, 0 to remove and 0 not upgraded."')

    def command(self, *arguments):
        return [str(self.bin / "bash"), *arguments]

    def run_script(self, name, *arguments, **more):
        return subprocess.run(self.command(f"{self.root}/tools/{name}", *arguments), env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, check=False, **more)

    def assert_by_hand(self, result, *parts):
        """One line that names these parts, and exit code 2."""
        self.assertEqual(result.returncode, 2, result.stderr)
        lines = (result.stdout + result.stderr).splitlines()
        self.assertEqual(len(lines), 1, lines)
        for part in (*parts, "by hand", "VNBASE_NO_SETUP=1"):
            self.assertIn(part, lines[0])

    def make_pipe(self):
        """What a program writes there says that it is ready; its end says that all have ended instead."""
        self.ready = os.pipe()
        self.addCleanup(os.close, self.ready[0])

    def wait_until_ready(self):
        os.close(self.ready[1])
        self.assertEqual(os.read(self.ready[0], 1), b"\n", "all have ended")

    def call_lines(self):
        return self.calls.read_text().splitlines()


class Install(Scripts):
    def test_another_system_is_told_what_to_install(self):
        self.fake_packages(["ninja-build"])
        self.fake("uname", "echo Darwin")
        self.assert_by_hand(self.run_script("setup.sh", "run"), "Darwin", "g++ cmake ninja-build")

    def test_without_apt_one_is_told_what_to_install(self):
        self.assert_by_hand(self.run_script("setup.sh", "run"), "no apt", "g++ cmake ninja-build ccache libpng-dev")

    def test_another_distribution_is_told_what_is_missing(self):
        self.fake_packages(["ninja-build", "ccache"])
        self.release.write_text("ID=fedora\nVERSION_ID=40\n")
        self.assert_by_hand(self.run_script("setup.sh", "run"), "fedora 40", "(ninja-build ccache)")
        self.release.unlink()
        self.assert_by_hand(self.run_script("setup.sh", "run"), "unknown system")

    def test_another_distribution_that_has_all_goes_on(self):
        self.fake_packages()
        self.release.write_text("ID=ubuntu\nVERSION_ID=22.04\n")
        self.assertEqual(self.run_script("setup.sh", "test").returncode, 0)

    def test_without_root_and_sudo_one_is_told_what_root_has_to_do(self):
        self.fake_packages(["ccache"])
        self.fake("id", "echo 1000")
        self.assert_by_hand(self.run_script("setup.sh", "run"), "no sudo", "apt-get install ccache")

    def test_a_sudo_that_refuses_is_no_way(self):
        self.fake_packages(["ccache"])
        self.fake("id", "echo 1000")
        self.fake("sudo", "exit 1")
        self.assert_by_hand(self.run_script("setup.sh", "run"), "sudo refuses", "apt-get install ccache")

    def test_what_is_missing_is_installed_and_nothing_else(self):
        self.fake_packages(["ccache", "libpng-dev"])
        self.fake("id", "echo 0")
        result = self.run_script("setup.sh", "run")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("apt-get update -q", self.call_lines())
        self.assertIn("apt-get install -y -q ccache libpng-dev", self.call_lines())
        self.assertIn("installing: ccache libpng-dev\n", result.stdout)
        self.assertIn("(the log is build/logs/setup.run.install.log)", result.stdout)

    def test_without_root_sudo_installs(self):
        self.fake_packages(["ccache"])
        self.fake("id", "echo 1000")
        self.fake("sudo", 'case "$1" in -*) ;; *) exec "$@" ;; esac')
        self.assertEqual(self.run_script("setup.sh", "run").returncode, 0)
        installing = [line for line in self.call_lines() if line.startswith("sudo env")]
        self.assertEqual(len(installing), 2)
        self.assertIn("apt-get install -y -q ccache", installing[1])

    def test_a_failing_apt_is_told_with_its_log(self):
        self.fake_packages(["ccache"])
        self.fake("id", "echo 0")
        self.fake("apt-get", 'case $1 in update) ;; *) echo "E: no room"; exit 100 ;; esac')
        result = self.run_script("setup.sh", "run")
        self.assertEqual(result.returncode, 1)
        self.assertIn("E: no room\napt-get install has failed; the log is build/logs/setup.run.install.log\n", result.stderr)

    def test_where_all_is_there_nothing_is_said_or_done(self):
        self.fake_packages()
        result = self.run_script("setup.sh", "test")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        self.assertEqual([line.split()[0] for line in self.call_lines()], ["dpkg-query"])

    def test_who_has_set_up_by_hand_is_asked_nothing(self):
        self.environment["VNBASE_NO_SETUP"] = "1"
        self.assertEqual(self.run_script("setup.sh", "test").returncode, 0)
        self.assertEqual(self.call_lines(), [])

    def test_wrong_use_is_refused(self):
        result = self.run_script("setup.sh", "everything")
        self.assertEqual(result.returncode, 2)
        self.assertIn("tools/setup.sh -h tells more", result.stderr)


class Progress(Scripts):
    def progress(self, script, *arguments):
        return subprocess.run(self.command("-c", ". tools/progress.sh; " + script, "bash", *arguments), cwd=self.root,
                              env=self.environment, text=True, capture_output=True, check=False).stdout

    def counter(self, log):
        path = self.folder / "log"
        path.write_text(log)
        return self.progress('progress_counter "$1"', str(path)).strip()

    def test_the_counter_is_the_last_one_of_the_log(self):
        self.assertEqual(self.counter(""), "")
        self.assertEqual(self.counter("-- Configuring done\n"), "")
        self.assertEqual(self.counter("[1/176] Building a\n[57/176] Building b\nwarning: x[2]\n"), "57/176")
        self.assertEqual(self.counter(" 1/12 Test  #3: a ....   Passed\n      Start 4: b\n10/12 Test #4: b ...***Failed\n"),
                         "10/12")
        self.assertEqual(self.counter("ratio 3/4 Test\n[x/y] z\n"), "")

    def test_a_package_counts_as_fetched_unpacked_and_set_up(self):
        begin = "Reading\n0 upgraded, 4 newly installed, 0 to remove and 2 not upgraded.\n"
        self.assertEqual(self.counter(begin), "0/12")
        self.assertEqual(self.counter(begin + "Get:1 x\nGet:2 x\n"), "2/12")
        self.assertEqual(self.counter(begin + "Unpacking a (1) ...\n"), "5/12")
        self.assertEqual(self.counter(begin + "Get:1 x\nUnpacking a (1) ...\nSetting up a (1) ...\n"), "6/12")

    def test_times_read_as_a_clock(self):
        self.assertEqual(self.progress("for s in 0 7 62 3599 3600 3725; do progress_clock $s; echo; done").split(),
                         ["0:00", "0:07", "1:02", "59:59", "1:00:00", "1:02:05"])

    def test_the_last_time_counts_and_before_it_the_table(self):
        (self.root / "tools/times.txt").write_text("# text\na 40\nb 50\n")
        (self.root / "build/logs").mkdir(parents=True)
        (self.root / "build/logs/times").write_text("b 7\n")
        self.assertEqual(self.progress("for s in a b c; do echo $s $(progress_time_of $s); done"), "a 40\nb 7\nc\n")
        self.progress("progress_keep_time b 9; progress_keep_time c 1")
        self.assertEqual((self.root / "build/logs/times").read_text(), "b 9\nc 1\n")

    def test_the_counter_tells_the_time_once_a_tenth_is_done(self):
        log = self.folder / "log"
        log.write_text("[10/100] x\n")
        self.assertEqual(self.progress('progress_state "$1" 20 50', str(log)), "[10/100] 0:20 of about 3:20\n")
        log.write_text("[9/100] x\n")
        self.assertEqual(self.progress('progress_state "$1" 20 50', str(log)), "[9/100] 0:20 of about 0:50\n")
        self.assertEqual(self.progress('progress_state "$1" 60 50', str(log)), "[9/100] 1:00\n")
        log.write_text("")
        self.assertEqual(self.progress('progress_state "$1" 3 ""', str(log)), "0:03\n")

    def test_each_step_of_the_table_has_one_time(self):
        lines = [line.split() for line in (sources / "tools/times.txt").read_text().splitlines() if not line.startswith("#")]
        self.assertTrue(lines)
        self.assertEqual(len({step for step, _ in lines}), len(lines))
        for _, seconds in lines:
            self.assertGreater(int(seconds), 0)

    def test_a_step_gives_its_code_and_keeps_its_log(self):
        out = self.progress('set -e; progress_begin x; progress_step good "doing good" echo fine; '
                            'progress_step bad "doing bad" bash -c "echo worse; exit 7" || echo "code $?"; progress_end')
        self.assertEqual(out, "   doing good (the log is build/logs/good.log)\n"
                              "   doing bad (the log is build/logs/bad.log)\ncode 7\n")
        self.assertEqual((self.root / "build/logs/bad.log").read_text(), "worse\n")
        self.assertNotIn("bad", (self.root / "build/logs/times").read_text(), "a failure is no time to go by")

    def blocking_build(self, output):
        """A cmake that writes, says so through a pipe, and ends when the test lets it."""
        self.fake_packages()
        self.make_pipe()
        go = self.folder / "go"
        os.mkfifo(go)
        self.fake("cmake", f'case "$*" in *--build*) echo "{output}"; echo >&{self.ready[1]}; read < "{go}"; exit 1 ;; esac')
        return go

    @staticmethod
    def let_go(go):
        # For both, so that opening waits for nobody.
        end = os.open(go, os.O_RDWR)
        os.write(end, b"\n")
        return end

    def test_where_no_terminal_is_a_line_tells_the_counter(self):
        go = self.blocking_build("[5/10] Building")
        self.environment["VNBASE_PROGRESS_SECONDS"] = "1"
        with subprocess.Popen(self.command(f"{self.root}/tools/run.sh"), env=self.environment, text=True,
                              stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                              pass_fds=self.ready[1:]) as run:
            self.wait_until_ready()
            while "[5/10] " not in (line := run.stderr.readline()):
                self.assertTrue(line, "the script has ended")
            self.assertNotIn("\r", line)
            self.addCleanup(os.close, self.let_go(go))
            rest = run.stderr.read()
        self.assertIn("the build has failed; the log is build/logs/run.build.log", rest)
        self.assertEqual(run.returncode, 1)

    def test_on_a_terminal_one_line_changes(self):
        go = self.blocking_build("[5/10] Building")
        master, slave = pty.openpty()
        with subprocess.Popen(self.command(f"{self.root}/tools/run.sh"), env=self.environment, stderr=slave, stdout=slave,
                              stdin=subprocess.DEVNULL, pass_fds=self.ready[1:]) as run:
            os.close(slave)
            self.wait_until_ready()
            seen = b""
            while b"[5/10] " not in seen:
                seen += os.read(master, 1000)
            self.assertIn(b"\r\x1b[K", seen)
            self.addCleanup(os.close, self.let_go(go))
            try:
                while os.read(master, 1000):
                    pass
            except OSError:
                pass  # the other end is closed
        os.close(master)
        self.assertEqual(run.returncode, 1)


def is_running(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0] != "Z"
    except (FileNotFoundError, ProcessLookupError):  # the latter if it goes between the opening and the reading
        return False


def end_all(pids):
    """What a failing test would leave behind."""
    for pid in pids:
        try:
            os.kill(pid, signal.SIGKILL)
        except ProcessLookupError:
            pass


class Interrupt(Scripts):
    """A build with a child, one that has left for a session of its own, and one that doesn't listen to Ctrl-C."""

    def interrupted(self, signal_number, script, *arguments):
        self.fake_packages()
        self.make_pipe()
        pids = self.folder / "pids"
        self.fake("cmake", f"""
            sleep 1000 & echo $! >> "{pids}"
            setsid sleep 1000 & echo $! >> "{pids}"
            bash -c 'trap "" INT; sleep 1000 & sleep 1000' & echo $! >> "{pids}"
            echo $$ >> "{pids}"
            echo >&{self.ready[1]}
            wait""")
        with subprocess.Popen(self.command(f"{self.root}/tools/{script}", *arguments), env=self.environment, text=True,
                              stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL, start_new_session=True,
                              pass_fds=self.ready[1:],
                              preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL)) as run:
            self.wait_until_ready()
            started = [int(pid) for pid in pids.read_text().split()]
            self.addCleanup(end_all, started)
            self.assertEqual([is_running(pid) for pid in started], [True] * 4)
            os.kill(run.pid, signal_number)
            error = run.stderr.read()
        self.assertEqual(run.returncode, -signal_number)
        self.assertIn("stopped by a signal", error)
        self.assertEqual([pid for pid in started if is_running(pid)], [])
        for environ in pathlib.Path("/proc").glob("[0-9]*/environ"):
            try:
                self.assertNotIn(str(self.folder).encode(), environ.read_bytes(), environ)
            except OSError:
                pass  # it has ended, or is another user's

    def test_ctrl_c_ends_all_that_run_sh_has_started(self):
        self.interrupted(signal.SIGINT, "run.sh")

    def test_a_kill_ends_all_that_test_sh_has_started(self):
        self.interrupted(signal.SIGTERM, "test.sh", "release")


class Libcxx(Scripts):
    """The library that tools/libcxx.sh unpacks, from packages of the test's own."""
    CONFIG = "usr/lib/llvm-16/include/c++/v1/__config"

    def setUp(self):
        super().setUp()
        self.place = self.folder / ".cache/vnbase/libcxx-16"
        self.fake("apt-get", "for package; do case $package in lib*) echo > $package.deb ;; esac; done")
        self.fake("dpkg-deb", f'mkdir -p "$3/{pathlib.Path(self.CONFIG).parent}"; echo > "$3/{self.CONFIG}"')

    def test_it_is_downloaded_and_unpacked_once(self):
        for calls in (7, 0):
            self.calls.write_text("")
            result = self.run_script("libcxx.sh")
            self.assertEqual((result.returncode, result.stdout), (0, f"{self.place}\n"), result.stderr)
            self.assertEqual(len(self.call_lines()), calls)
            self.assertTrue((self.place / self.CONFIG).exists())
            self.assertEqual([path.name for path in self.place.parent.iterdir()], ["libcxx-16"])

    def test_another_folder_can_be_named(self):
        self.environment["VNBASE_LIBCXX"] = f"{self.folder}/a place/of its own"
        self.assertEqual(self.run_script("libcxx.sh").stdout, f"{self.folder}/a place/of its own\n")
        self.assertTrue((self.folder / "a place/of its own" / self.CONFIG).exists())

    def test_a_failing_download_leaves_nothing_behind(self):
        self.fake("apt-get", "echo > half.deb; exit 100")
        result = self.run_script("libcxx.sh")
        self.assertEqual(result.returncode, 2)
        self.assertIn("apt-get download has failed", result.stderr)
        self.assertEqual(list(self.place.parent.iterdir()), [])

    def test_without_apt_one_is_told_what_to_do(self):
        (self.bin / "apt-get").unlink()
        result = self.run_script("libcxx.sh")
        self.assertEqual(result.returncode, 2)
        self.assertIn("by hand, and set VNBASE_LIBCXX", result.stderr)


class Run(Scripts):
    def setUp(self):
        super().setUp()
        self.fake_packages()
        self.program = self.root / "build/run/bin/inventory"
        self.fake("cmake", f"""
            case "$*" in
            *--build*)
                mkdir -p "{self.program.parent}"
                echo 'echo "program: $PWD: $*: ${{VNBASE_JOB-none}}"' > "{self.program}"
                chmod +x "{self.program}" ;;
            *)
                mkdir -p build/run
                echo > build/run/build.ninja
                echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" > build/run/CMakeCache.txt ;;
            esac""")

    def test_only_the_program_is_built_and_it_gets_the_arguments(self):
        result = self.run_script("run.sh", "-a", "a folder", cwd="/")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout, "program: /: -a a folder: none\n", "the program's own output alone")
        built = [line for line in self.call_lines() if line.startswith("cmake --build")]
        self.assertEqual(built, ["cmake --build build/run --target inventory"])

    def test_without_arguments_it_looks_at_the_documentation(self):
        self.assertEqual(self.run_script("run.sh", cwd="/").stdout, "program: /: /usr/share/doc: none\n")

    def test_the_second_run_configures_nothing(self):
        self.run_script("run.sh")
        self.calls.write_text("")
        self.assertEqual(self.run_script("run.sh").returncode, 0)
        self.assertEqual([line for line in self.call_lines() if line.startswith("cmake")],
                         ["cmake --build build/run --target inventory"])

    def test_a_copied_folder_is_configured_anew(self):
        self.run_script("run.sh")
        (self.root / "build/run/CMakeCache.txt").write_text("CMAKE_HOME_DIRECTORY:INTERNAL=/elsewhere\n")
        self.calls.write_text("")
        self.assertEqual(self.run_script("run.sh").returncode, 0)
        self.assertTrue(any("--fresh" in line for line in self.call_lines()))

    def test_a_failing_build_shows_its_log(self):
        self.fake("cmake", 'echo "error: no"; exit 3')
        result = self.run_script("run.sh")
        self.assertEqual(result.returncode, 1)
        self.assertIn("error: no\nCMake has failed; the log is build/logs/run.configure.log\n", result.stderr)

    def test_help_comes_first_and_builds_nothing(self):
        result = self.run_script("run.sh", "-h")
        self.assertEqual(result.returncode, 0)
        self.assertTrue(result.stdout.startswith("tools/run.sh [ARGUMENT]...: "))
        self.assertEqual(self.call_lines(), [])


class Test(Scripts):
    def setUp(self):
        super().setUp()
        self.fake_packages()
        self.fake("cmake", "mkdir -p build/release/bin; echo library > build/release/bin/libVNbase.so.0.0.0")
        self.fake("cmp", "exit 0")
        (self.root / "tools/reproduce.sh").write_text(f'echo "reproduce $*" >> "{self.calls}"\n')
        self.ctest("100% tests passed, 0 tests failed out of 12", 0)

    def ctest(self, line, code):
        self.fake("ctest", f'echo "1/1 Test #1: a"; echo "{line}"; exit {code}')

    def test_the_last_line_counts_the_tests(self):
        result = self.run_script("test.sh", "tsan", "asan-ubsan")
        self.assertEqual(result.stdout.splitlines()[-1], "24 passed, 0 failed")
        self.assertEqual(result.returncode, 0)

    def test_failed_tests_are_shown_and_counted(self):
        self.ctest("75% tests passed, 3 tests failed out of 12", 8)
        result = self.run_script("test.sh", "tsan")
        self.assertEqual(result.stdout.splitlines()[-1], "9 passed, 3 failed")
        self.assertIn("1/1 Test #1: a\n", result.stdout)
        self.assertEqual(result.returncode, 1)

    def test_in_an_emulator_the_tests_of_suites_count_and_what_is_left_out(self):
        tree = self.root / "build/s390x"
        (tree / "tests").mkdir(parents=True)
        (tree / "tests/launchers.stamp").write_text("")
        (tree / "Testing/Temporary").mkdir(parents=True)
        suite = "[==========] Running 5 tests from 1 test suite.\n"
        (tree / "Testing/Temporary/LastTest.log").write_text(
            f"1/5 Testing: A\nCommand: \"a\"\n{suite}[  PASSED  ] 5 tests.\nTest Passed.\n"
            f"2/5 Testing: B\nCommand: \"b\"\n{suite}[  PASSED  ] 3 tests.\n"
            "[  FAILED  ] 2 tests, listed below:\nTest Failed.\n"
            f"3/5 Testing: C\nCommand: \"c\"\n{suite}Test Failed.\n"
            "4/5 Testing: d\nCommand: \"d\"\nTest Passed.\n"
            "5/5 Testing: E.e\nCommand: \"\"\nTest Passed.\n")
        self.ctest("1/5 Test #1: E.e ...***Not Run (Disabled)   0.00 sec", 8)
        result = self.run_script("test.sh", "s390x")
        self.assertEqual(result.stdout.splitlines()[-1],
                         "9 passed, 3 failed, 1 not run under emulation: see tests/emulation.txt")
        self.assertEqual(result.returncode, 1)

    def test_what_a_tree_leaves_out_is_told_and_not_run(self):
        (self.root / "tests").mkdir()
        (self.root / "tests/tsan-left-out.txt").write_text("# a comment\n^one\\.\tthe first reason\ntwo|three\tanother\n")
        result = self.run_script("test.sh", "tsan", "asan-ubsan")
        self.assertIn("   not run here: ^one\\.: the first reason\n   not run here: two|three: another\n", result.stdout)
        self.assertEqual([line for line in self.call_lines() if line.startswith("ctest")],
                         ["ctest --preset tsan -E ^one\\.|two|three", "ctest --preset asan-ubsan"])

    def test_a_failing_build_is_a_failure(self):
        self.fake("cmake", 'case $1 in --build) echo "error: no"; exit 1 ;; esac')
        result = self.run_script("test.sh", "dev")
        self.assertEqual(result.stdout.splitlines()[-3:],
                         ["error: no", "FAILED: dev.build; the log is build/logs/dev.build.log", "0 passed, 1 failed"])
        self.assertEqual(result.returncode, 1)

    def test_the_same_library_is_made_a_second_time_once(self):
        for library, expected in (("library", 1), ("library", 0), ("another", 1)):
            self.fake("cmake", f"mkdir -p build/release/bin; echo {library} > build/release/bin/libVNbase.so.0.0.0")
            self.calls.write_text("")
            self.assertEqual(self.run_script("test.sh", "release").returncode, 0)
            self.assertEqual(sum(line.startswith("reproduce") for line in self.call_lines()), expected, library)

    def test_unknown_presets_and_options_are_refused_before_anything_happens(self):
        for word in ("nonsense", "-q"):
            result = self.run_script("test.sh", word)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertIn(word, result.stderr)
        self.assertEqual(self.call_lines(), [])

    def test_help_names_each_preset_that_is_tested(self):
        text = self.run_script("test.sh", "-h").stdout
        for preset in ("release", "asan-ubsan", "tsan", "windows", "aarch64", "s390x", "coverage", "libcxx", "bench", "fuzz"):
            self.assertIn(f"\n  {preset} ", text)
        self.assertEqual(self.call_lines(), [])


if __name__ == "__main__":
    unittest.main()
