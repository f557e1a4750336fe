#!/usr/bin/env python3
"""Where Scripts/mutate finds the place of a fault, and which faults it tries: mutate_test.py"""

import contextlib
import importlib.machinery
import importlib.util
import io
import os
import pathlib
import subprocess
import tempfile
import unittest
from unittest import mock

SCRIPT = pathlib.Path(__file__).resolve().parent.parent.parent / "Scripts" / "mutate"
loader = importlib.machinery.SourceFileLoader("mutate", str(SCRIPT))
mutate = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutate", loader))
loader.exec_module(mutate)

SOURCE = """#include "A.hpp"

namespace N {

namespace {

constexpr int limit = 1;
constexpr Range ranges[] = {
    {1, 2},
};

struct Point {
    int x = 1;
};

bool isSmall(int value) { return value < limit; }

template <class Kind, class = Rest<Kind>>
[[nodiscard]] int
grow(const Kind& kind) noexcept {
    if (isSmall(kind)) {
        return 1;
    }
    return 2;
}

}  // namespace

int Point::shrink(int by) const { return x - by; }

[[gnu::constructor(101)]] void begin() {
    grow(1);
}

std::size_t std::hash<Point>::operator()(const Point& point) const noexcept {
    return 1;
}

}  // namespace N
"""


class Definitions(unittest.TestCase):
    def test_have_the_names_that_they_are_defined_by(self):
        names = [mutate.name_of(SOURCE[slice(*span)]) for span in mutate.definitions(SOURCE)]
        self.assertEqual(names, ["limit", "ranges", "Point", "isSmall", "grow", "Point::shrink", "begin",
                                 "std::hash<Point>::operator()"])

    def test_reach_from_their_first_line_to_their_last(self):
        grow = mutate.spans(SOURCE, "grow")
        self.assertEqual(len(grow), 1)
        text = SOURCE[slice(*grow[0])]
        self.assertTrue(text.startswith("template <class Kind") and text.endswith("return 2;\n}"), text)


class Places(unittest.TestCase):
    def setUp(self):
        before = mutate.sources
        self.addCleanup(setattr, mutate, "sources", before)

    def places(self, files, *place):
        mutate.sources = lambda: files
        return list(mutate.occurrences(*place))

    def test_follow_a_function_to_another_file(self):
        place = SOURCE.index("return value < limit")
        for name in ("Old.cpp", "New/Place.cpp"):
            self.assertEqual(self.places({"Other.cpp": "return value < limit;\n", name: SOURCE},
                                         "return value < limit", "isSmall", ""), [(name, place)])

    def test_are_only_within_the_function(self):
        self.assertEqual(self.places({"A.cpp": SOURCE}, "return 1;", "grow", ""),
                         [("A.cpp", SOURCE.index("return 1;"))])
        self.assertEqual(self.places({"A.cpp": SOURCE}, "return 1;", "isSmall", ""), [])

    def test_are_several_where_several_functions_of_the_name_have_the_text(self):
        files = {"A.cpp": SOURCE, "B.cpp": SOURCE}
        self.assertEqual(len(self.places(files, "return 2;", "grow", "")), 2)
        self.assertEqual(len(self.places(files, "return 2;", "grow", "B.cpp")), 1)

    def test_of_a_whole_file_need_no_name(self):
        self.assertEqual(len(self.places({"A.cpp": SOURCE, "B.cpp": SOURCE}, "x - by", "", "A.cpp")), 1)


def fault(number, file="A.cpp", reason="", finder=""):
    return mutate.Fault(f"fault {number}", file, 0, "old", "new", reason, finder)


class Draw(unittest.TestCase):
    FAULTS = [fault(number, f"{number % 10}.cpp") for number in range(200)]

    def names(self, changed, seed):
        return [each.name for each in mutate.drawn(self.FAULTS, changed, seed)[0]]

    def test_of_one_seed_is_one_draw(self):
        self.assertEqual(self.names(set(), "a"), self.names(set(), "a"))
        self.assertNotEqual(self.names(set(), "a"), self.names(set(), "b"))

    def test_has_a_tenth_of_all_where_nothing_has_changed(self):
        self.assertEqual(len(self.names(set(), "a")), 20)

    def test_has_all_of_a_changed_file_first_and_a_tenth_of_the_others(self):
        found, count = mutate.drawn(self.FAULTS, {"3.cpp", "none.cpp"}, "a")
        self.assertEqual((count, len(found)), (20, 20 + 18))
        self.assertEqual({each.file for each in found[:count]}, {"3.cpp"})
        self.assertNotIn("3.cpp", {each.file for each in found[count:]})
        self.assertEqual(len(set(found)), len(found))

    def test_comes_to_every_fault_by_one_seed_or_another(self):
        met = {name for seed in range(200) for name in self.names(set(), str(seed))}
        self.assertEqual(len(met), 200)

    def test_keeps_together_what_the_same_tests_find(self):
        faults = [fault(number, ("Values.cpp", "Help.cpp", "Text/Text.cpp")[number % 3]) for number in range(200)]
        tests = [mutate.first_for(each)[0] for each in mutate.drawn(faults, set(), "a")[0]]
        changes = sum(one != other for one, other in zip(tests, tests[1:]))
        self.assertEqual((set(tests), changes), ({"value-tests", "policy-tests"}, 1))

    def test_leaves_out_what_no_test_can_find(self):
        faults = [fault(1), fault(2, reason="nobody sees it")]
        self.assertEqual(mutate.drawn(faults, {"A.cpp"}, "a"), ([faults[0]], 1))

    def test_has_one_fault_at_least(self):
        self.assertEqual(len(mutate.drawn([fault(1)], set(), "a")[0]), 1)


class Changes(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        repository = mock.patch.object(mutate, "REPOSITORY", directory.name)
        repository.start()
        self.addCleanup(repository.stop)
        self.git("init", "-q")
        for name in ("Same.cpp", "Text/Changed.cpp", "Committed.hpp"):
            self.write(name, "before")
        self.commit()

    def git(self, *arguments):
        subprocess.run(["git", "-C", mutate.REPOSITORY, "-c", "user.name=T", "-c", "user.email=t@example.test",
                        *arguments], check=True)

    def commit(self):
        self.git("add", ".")
        self.git("commit", "-qm", "A commit")

    def write(self, name, text):
        path = pathlib.Path(mutate.REPOSITORY, mutate.SOURCES, name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def test_are_the_files_of_the_library_that_are_not_as_in_the_revision(self):
        self.write("Committed.hpp", "after")
        self.commit()
        self.write("Text/Changed.cpp", "after")
        self.write("New.cpp", "new")
        pathlib.Path(mutate.REPOSITORY, "other").write_text("no source of the library")
        self.assertEqual(mutate.changed_since("HEAD~1"), {"Committed.hpp", "Text/Changed.cpp", "New.cpp"})
        self.assertEqual(mutate.changed_since("HEAD"), {"Text/Changed.cpp", "New.cpp"})

    def test_since_a_revision_that_is_not_there_are_an_error(self):
        with self.assertRaises(SystemExit), contextlib.redirect_stderr(io.StringIO()) as said:
            mutate.changed_since("HEAD~7")
        self.assertEqual(said.getvalue(), "mutate: git diff fails\n")


class Trial(unittest.TestCase):
    """What is printed and returned, with a suite and a clock that play a script."""

    def play(self, results, minutes=mutate.math.inf, seconds_each=60):
        directory, before = tempfile.TemporaryDirectory(), os.getcwd()
        self.addCleanup(directory.cleanup)
        self.addCleanup(os.chdir, before)
        os.chdir(directory.name)
        clock = iter(range(0, 10**6, seconds_each // 2))
        faults = [fault(number) for number in range(len(results))]
        outcomes = dict(zip(faults, results))
        with mock.patch.multiple(mutate, quietly=mock.Mock(), Suite=mock.Mock(),
                                 outcome=lambda _, each: outcomes[each]), \
                mock.patch.object(mutate.time, "monotonic", lambda: next(clock)), \
                mock.patch.dict(os.environ), contextlib.redirect_stdout(io.StringIO()) as said:
            return mutate.try_all(faults, minutes), said.getvalue()

    KILLED = ("killed", "value-tests")

    def test_of_faults_that_are_all_found_succeeds(self):
        status, said = self.play([self.KILLED] * 3)
        self.assertEqual(status, 0)
        self.assertIn("3 of 3 faults found, 0 of the others explained\n", said)

    def test_fails_where_one_survives_or_does_not_build(self):
        for result in (("SURVIVES", ""), ("does not build", None), ("KILLED, THOUGH EXPLAINED", "t")):
            self.assertEqual(self.play([self.KILLED, result])[0], 1, result)

    def test_begins_no_fault_after_the_minutes_and_says_how_many_were_tried(self):
        status, said = self.play([self.KILLED] * 9, minutes=3)
        self.assertEqual(status, 0)
        self.assertIn("mutate: 3 of 9 faults tried, the others not, because 3 minutes have passed\n", said)
        self.assertIn("3 of 3 faults found", said)

    def test_tries_one_fault_however_few_the_minutes(self):
        status, said = self.play([("SURVIVES", "")] * 2, minutes=0)
        self.assertEqual(status, 1)
        self.assertIn("0 of 1 faults found", said)


class Order(unittest.TestCase):
    """The tests of a fault's unit come first, and the others only when they find nothing."""

    class Suite(mutate.Suite):
        def __init__(self, finds):  # pylint: disable=super-init-not-called
            self.targets = {name: [] for name in (*mutate.OTHERS_FIRST, "slow", "quick", "refused-tests")}
            self.seconds = {"slow": 9, "quick": 1, "refused-tests": 60}
            self.finds, self.run = finds, []

        def measure(self, names):
            pass

        def fails(self, name):
            self.run.append(name)
            return name == self.finds

    def play(self, finds, **of_fault):
        suite = self.Suite(finds)
        with mock.patch.multiple(mutate, planted=mock.MagicMock(), builds=lambda *_: True), \
                contextlib.redirect_stdout(io.StringIO()) as said:
            return mutate.outcome(suite, fault(1, **of_fault)), suite.run, said.getvalue()

    def test_ends_with_the_first_that_finds_it(self):
        self.assertEqual(self.play("author-tests"),
                         (("killed", "author-tests"), mutate.OTHERS_FIRST[:2], ""))

    def test_goes_on_with_the_quick_ones_and_says_what_would_have_found_it(self):
        said = 'mutate: looked for in all tests; found at once with "by: slow"\n'
        self.assertEqual(self.play("slow"),
                         (("killed", "slow"), [*mutate.OTHERS_FIRST, "quick", "slow"], said))

    def test_begins_with_the_one_that_is_named(self):
        self.assertEqual(self.play("slow", finder="slow"), (("killed", "slow"), ["slow"], ""))

    def test_has_what_compiles_the_headers_for_a_header_alone(self):
        self.assertEqual(self.play("refused-tests")[0], ("SURVIVES", ""))
        self.assertEqual(self.play("refused-tests", file="A.hpp")[0], ("killed", "refused-tests"))

    def test_of_what_is_explained_has_no_more_than_the_first(self):
        self.assertEqual(self.play(None, reason="nobody sees it"),
                         (("explained", ""), mutate.OTHERS_FIRST, ""))


if __name__ == "__main__":
    unittest.main(verbosity=2)
