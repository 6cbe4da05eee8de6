"""From sources to answers: a small project is imported once, then asked.

Run with the path of the command in ZELKOR.
"""

import json
import re
import unittest

from support import CommandTest

SOURCES = {
    "shape.hpp": """
#pragma once
#define AREA(s) (s).area()
namespace geo {
struct Shape { virtual ~Shape(); virtual double area() const; int uses = 0; };
struct Square : Shape { double area() const override; double side = 1; };
template <class T> struct Box { T item; T& open() { return item; } };
double sum(Shape const& a, Shape const& b);
double sum(double a, double b);
}
""",
    "shape.cpp": """
#include "shape.hpp"
extern "C" void log_text(char const*);
static int count;
static double (*chosen)(double, double) = geo::sum;
namespace geo {
Shape::~Shape() { log_text("gone"); }
double Shape::area() const { return 0; }
double Square::area() const { count++; return side * side; }
double sum(Shape const& a, Shape const& b) { return sum(AREA(a), AREA(b)); }
double sum(double a, double b) { return a + b; }
}
int counted() { return count; }
double choose() { return chosen(1, 2); }
""",
    "main.cpp": """
#include "shape.hpp"
static int start() { return 3; }
int first = start();
int main() {
    geo::Square square;
    geo::Box<geo::Square> box;
    box.open().side = 2;
    return geo::sum(square, box.item) > 1;
}
""",
}


class ImportTest(CommandTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        for name, text in SOURCES.items():
            with open(cls.path(name), "w", encoding="utf-8") as file:
                file.write(text)
        units = [{"directory": cls.folder.name, "file": name, "arguments": ["c++", "-std=c++17", "-c", name]}
                 for name in SOURCES if name.endswith(".cpp")]
        with open(cls.path("compile_commands.json"), "w", encoding="utf-8") as file:
            json.dump(units, file)
        code, _, err = cls.run_command(cls, "import", "-p", cls.folder.name, "-o", cls.path("real.json"), "-j", "1")
        assert code == 0, err

    def test_answers(self):
        for words, names in (
            (["callers", "geo::sum(double, double)"], ["choose", "geo::sum"]),
            (["callers", "sum(const Shape&, const Shape&)"], ["main"]),
            (["callers", "geo::Shape::area"], ["geo::sum"]),
            (["callers", "geo::Square::area"], ["geo::sum"]),
            (["callers", "geo::Square::area", "--exact"], []),
            (["callers", "start"], ["first"]),
            (["callers", "Box::open"], ["main"]),
            (["callers", "log_text", "--exact"], ["geo::Shape::~Shape"]),
            (["callees", "counted"], []),
            (["path", "main", "geo::Square::area"], ["geo::Square::area", "geo::sum", "main"]),
            (["reads", "count"], ["counted", "geo::Square::area"]),
            (["writes", "count", "--transitive"], ["geo::Square::area", "geo::sum", "main"]),
            (["writes", "geo::Square::side"], ["main"]),
            (["reads", "choose"], ["chosen"]),
            (["list", "--file", "main.cpp", "-k", "Function"], ["main", "start"]),
        ):
            with self.subTest(words=words):
                verb, *rest = words
                code, out, err = self.run_command(verb, self.path("real.json"), *rest, "--json")
                rows = [row for row in json.loads(out)["results"] if row.get("relation") != "address"]
                self.assertEqual(sorted({row["qualifiedName"] for row in rows}), names, err)
                self.assertEqual(code, 0 if json.loads(out)["results"] else 1)

    def test_the_file_is_valid(self):
        code, out, err = self.run_command("validate", self.path("real.json"))
        self.assertEqual((code, out), (0, ""), err)
        code, out, _ = self.run_command("includes", self.path("real.json"), "shape.hpp", "--direction", "in")
        self.assertEqual(sorted(re.findall(r"^\S+\.cpp$", out, re.MULTILINE)), ["main.cpp", "shape.cpp"])


if __name__ == "__main__":
    unittest.main()
