#!/usr/bin/env python3
"""Tests of tools/coverage.py, with a source, an export and a list of exceptions of the test's own: checkcoverage.py SOURCES"""
import collections
import contextlib
import io
import json
import pathlib
import shutil
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(sys.argv.pop(1)).resolve() / "tools"))
import coverage  # pylint: disable=wrong-import-position  # noqa: E402

Result = collections.namedtuple("Result", "returncode stdout")

SOURCE = """\
int pace(int size)
{
    if (size < 0 || isLate())
        return 0;
    if (size < 0 && wasLate())
        return 1;
    return many(size,
                2) ? 2 : 3;
}
"""
# Line, column, and the line and the column of the end, as llvm-cov counts them.
LATE = [3, 21, 3, 29]
FIRST = [3, 9, 3, 17]
SECOND = [5, 9, 5, 17]
LONG = [7, 12, 8, 19]


class Coverage(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="coverage"))
        self.addCleanup(shutil.rmtree, self.root)
        (self.root / "src/base").mkdir(parents=True)
        (self.root / "src/base/pace.cpp").write_text(SOURCE)

    def run_tool(self, branches, exceptions=None, file="src/base/pace.cpp"):
        export = self.root / "export.json"
        rows = [[*where, *times, 0, 0, 4] for where, times in branches]
        export.write_text(json.dumps({"data": [{"files": [{"filename": f"{self.root}/{file}", "branches": rows}]}]}))
        more = []
        if exceptions is not None:
            (self.root / "exceptions.txt").write_text(exceptions)
            more = [str(self.root / "exceptions.txt")]
        output = io.StringIO()
        with contextlib.redirect_stdout(output):
            code = coverage.main(str(export), str(self.root), *more)
        return Result(code, output.getvalue())

    def assert_passes(self, result, *parts):
        self.assertEqual(result.returncode, 0, result.stdout)
        for part in parts:
            self.assertIn(part, result.stdout)

    def assert_fails(self, result, *parts):
        self.assertEqual(result.returncode, 1, result.stdout)
        for part in parts:
            self.assertIn(part, result.stdout)

    def test_all_branches_taken_are_100_percent(self):
        self.assert_passes(self.run_tool([(LATE, (1, 7)), (FIRST, (2, 8))], ""), "4 of 4 (100.00 %); listed are 0 out of reach, 0 of chance, 0 without")

    def test_a_branch_that_was_not_taken_fails_and_is_quoted(self):
        self.assert_fails(self.run_tool([(LATE, (1, 0))], ""), "1 of 2 (50.00 %)", "not covered and not listed:",
                          "src/base/pace.cpp:3:21 never false: isLate()\n    in: if (size < 0 || isLate())")

    def test_a_condition_of_several_lines_is_quoted_with_single_blanks(self):
        self.assert_fails(self.run_tool([(LONG, (0, 1))], ""), "never true: many(size, 2)\n")

    def test_one_instance_of_a_template_that_takes_it_is_enough(self):
        self.assert_passes(self.run_tool([(LATE, (1, 0)), (LATE, (0, 1))], ""), "2 of 2")

    def test_a_count_below_zero_is_no_proof(self):
        self.assert_fails(self.run_tool([(LATE, (1, 2**64 - 1))], ""), "never false: isLate()")

    def test_a_listed_branch_passes(self):
        self.assert_passes(self.run_tool([(LATE, (1, 0))],
                                         "# text\n\nsrc/base/pace.cpp\n  never false: isLate()\n    It always is.\n"),
                           "1 of 2 (50.00 %); listed are 1 out of reach")

    def test_the_other_side_is_not_listed_with_it(self):
        self.assert_fails(self.run_tool([(LATE, (0, 0))],
                                        "src/base/pace.cpp\n  never false: isLate()\n    It always is.\n"),
                          "never true: isLate()")

    def test_a_listed_branch_that_was_taken_fails(self):
        self.assert_fails(self.run_tool([(LATE, (1, 3))],
                                        "src/base/pace.cpp\n  never false: isLate()\n    It always is.\n"),
                          "line 2: src/base/pace.cpp:3:21 was false: isLate()")

    def test_a_branch_that_is_rarely_taken_may_be(self):
        for times in (0, 3):
            self.assert_passes(self.run_tool([(LATE, (1, times))],
                                             "src/base/pace.cpp\n  rarely false: isLate()\n    Two threads meet.\n"))

    def test_a_branch_whose_test_is_missing_is_counted_and_told_once_it_is_taken(self):
        entry = "src/base/pace.cpp\n  open false: isLate()\n"
        self.assertNotIn("remove it", self.run_tool([(LATE, (1, 0))], entry).stdout)
        self.assert_passes(self.run_tool([(LATE, (1, 0))], entry), "0 of chance, 1 without a test")
        self.assert_passes(self.run_tool([(LATE, (1, 1))], entry), "0 without a test",
                           "remove it from the list, line 2: src/base/pace.cpp false: isLate()")
        both = [(FIRST, (0, 1)), (SECOND, (1, 1))]
        self.assertNotIn("remove it", self.run_tool(both, "src/base/pace.cpp\n  open true: size < 0\n").stdout)

    def test_a_listed_branch_that_the_source_no_longer_has_fails(self):
        for entry in ("src/base/pace.cpp\n  rarely true: isSlow()\n    x\n", "src/base/gone.cpp\n  never true: isLate()\n    x\n"):
            self.assert_fails(self.run_tool([(LATE, (1, 3))], entry), "line 2: src/base/", "has no such place: is")

    def test_the_line_tells_one_place_from_another(self):
        branches = [(FIRST, (0, 1)), (SECOND, (1, 1))]
        entry = "src/base/pace.cpp\n  never true: size < 0\n"
        self.assert_fails(self.run_tool(branches, entry + "    A size.\n"), "line 2: src/base/pace.cpp:5:9 was true")
        self.assert_passes(self.run_tool(branches, entry + "    in: if (size < 0 || isLate())\n    A size.\n"))
        self.assert_fails(self.run_tool(branches, entry + "    in: if (size < 0)\n    A size.\n"), "no such place")

    def test_an_entry_without_a_reason_fails(self):
        self.assert_fails(self.run_tool([(LATE, (1, 0))], "src/base/pace.cpp\n  never false: isLate()\n"), "line 2: no reason")

    def test_a_line_of_another_form_fails(self):
        self.assert_fails(self.run_tool([(LATE, (1, 1))], "src/base/pace.cpp\n never false: isLate()\n"), "line 2 is neither")

    def test_without_a_list_every_branch_must_be_taken(self):
        self.assert_passes(self.run_tool([(LATE, (1, 1))]), "100.00 %")
        self.assert_fails(self.run_tool([(LATE, (1, 0))]), "never false")

    def test_an_export_of_nothing_fails(self):
        self.assert_fails(self.run_tool([], ""), "no branch has been measured")
        self.assert_fails(self.run_tool([(LATE, (1, 1))], "", "tests/base/pacetest.cpp"), "no branch has been measured")


if __name__ == "__main__":
    unittest.main()
