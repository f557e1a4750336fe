#!/usr/bin/env python3
"""Where Scripts/mutate finds the place of a fault: mutate_test.py"""

import importlib.machinery
import importlib.util
import pathlib
import unittest

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


if __name__ == "__main__":
    unittest.main(verbosity=2)
