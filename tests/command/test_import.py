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
static double (*later)(double, double) = geo::sum;
void set_later(double (*other)(double, double)) { later = other; }
double choose_late() { return later(1, 2); }
double through(double (*given)(double, double)) { return given(1, 2); }
static void lonely() {}
void (*kept)() = lonely;
static int start() { return 4; }
int again = start();
double grow(double side) { return side + 1; }
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
            (["callers", "geo::sum(double, double)"], ["choose", "choose_late", "geo::sum"]),
            (["callers", "sum(const Shape&, const Shape&)"], ["main"]),
            (["callers", "geo::Shape::area"], ["geo::sum"]),
            (["callers", "geo::Square::area"], ["geo::sum"]),
            (["callers", "geo::Square::area", "--exact"], []),
            (["callers", "start"], ["again", "first"]),
            (["callers", "Box::open"], ["main"]),
            (["callers", "log_text", "--exact"], ["geo::Shape::~Shape"]),
            (["callees", "counted"], []),
            (["path", "main", "geo::Square::area"], ["geo::Square::area", "geo::sum", "main"]),
            (["reads", "count"], ["counted", "geo::Square::area"]),
            (["writes", "count", "--transitive"], ["geo::Square::area", "geo::sum", "main"]),
            (["writes", "geo::Square::side"], ["main"]),
            (["writes", "side"], ["main"]),
            (["list", "--in", "geo::sum(double, double)"], ["a", "b"]),
            (["reads", "choose"], ["chosen"]),
            (["list", "--file", "main.cpp", "-k", "Function"], ["main", "start"]),
        ):
            with self.subTest(words=words):
                verb, *rest = words
                code, out, err = self.run_command(verb, self.path("real.json"), *rest, "--json")
                rows = [row for row in json.loads(out)["results"] if row.get("relation") != "address"]
                self.assertEqual(sorted({row["qualifiedName"] for row in rows}), names, err)
                self.assertEqual(code, 0 if json.loads(out)["results"] else 1)

    def ask(self, verb, *rest):
        return self.run_command(verb, self.path("real.json"), *rest)

    def test_what_pointers_hide(self):
        hidden = "the model does not tell all that the pointer to functions given may hold; calls through it may be missing"
        for words, said in (
            (["callees", "through"], ["calls no function by name", hidden]),
            (["callees", "choose"], []),
            (["callees", "choose_late"], ["all that the pointer to functions later may hold"]),
            (["reads", "through"], []),
            (["reads", "through", "--transitive"], [hidden]),
            (["path", "through", "lonely"], ["no calls lead from", hidden, "the address of void lonely(void) is taken"]),
            (["path", "through", "counted"], ["no calls lead from", hidden]),
        ):
            with self.subTest(words=words):
                _, _, err = self.ask(*words)
                self.assertEqual(len(err.splitlines()), len(said), err)
                for part in said:
                    self.assertIn(part, err)

    def test_equal_names_are_told_apart(self):
        _, out, _ = self.ask("callers", "start")
        places = re.findall(r"^int start\(void\) at (\S+) is called by$", out, re.MULTILINE)
        self.assertEqual(sorted(place.split(":")[0] for place in places), ["main.cpp", "shape.cpp"])
        code, out, err = self.ask("callers", "geo::Square")
        self.assertEqual((code, out), (2, ""))
        self.assertIn("has no callers; zelkor list FILE --in 'geo::Square' tells what is inside", err)

    def test_predefined_macros_stay_out_of_the_way(self):
        _, out, _ = self.ask("tree")
        self.assertIn("Macro AREA", out)
        self.assertNotIn("__cplusplus", out)
        self.assertIn("__cplusplus", self.ask("tree", "--all")[1])
        _, out, _ = self.ask("list")
        self.assertIn("AREA", out)
        self.assertNotIn("__cplusplus", out)
        self.assertIn("__cplusplus", self.ask("list", "-k", "Macro")[1])

    def test_the_file_is_valid(self):
        code, out, err = self.run_command("validate", self.path("real.json"))
        self.assertEqual((code, out), (0, ""), err)
        code, out, _ = self.run_command("includes", self.path("real.json"), "shape.hpp", "--direction", "in")
        self.assertEqual(sorted(re.findall(r"^\S+\.cpp$", out, re.MULTILINE)), ["main.cpp", "shape.cpp"])


if __name__ == "__main__":
    unittest.main()
