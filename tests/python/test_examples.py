"""The examples on a model imported from real code, the documentation's code, and the type checker.

ZELKOR is the command; EXAMPLES, DOCS and FIXTURE are folders.
"""

import contextlib
import io
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import zelkor

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
FIXTURE = HERE / "fixture"
EXAMPLES = ROOT / "examples" / "python"
PAGE = ROOT / "docs" / "python.md"


class ExampleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        units = [{"directory": str(FIXTURE), "file": name, "arguments": ["c++", "-std=c++20", "-c", name]}
                 for name in ("main.cpp", "shapes.cpp")]
        (cls.folder / "compile_commands.json").write_text(json.dumps(units))
        cls.model, cls.plain = str(cls.folder / "model.json"), str(cls.folder / "plain.json")
        for model, options in ((cls.model, []), (cls.plain, ["--no-insight"])):
            subprocess.run([os.environ["ZELKOR"], "import", "-q", "-p", cls.folder, "-o", model, *options], check=True)

    def run_example(self, name, *arguments):
        command = [sys.executable, EXAMPLES / name, *arguments]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        return done.returncode, [re.sub(r"^\S*/", "", line) for line in done.stdout.splitlines()], done.stderr

    def test_unused_functions(self):
        status, lines, errors = self.run_example("unused_functions.py", self.model)
        self.assertEqual((status, lines, errors),
                         (0, ["main.cpp:18: int forgotten(void)",
                              "shapes.cpp:13: virtual int shapes::Body::weight(void)",
                              "shapes.cpp:22: int shapes::unused(int value)"], ""))

    def test_who_writes(self):
        status, lines, errors = self.run_example("who_writes.py", self.model, "counter")
        self.assertEqual((status, sorted(lines), errors),
                         (0, ["main.cpp:22: int main(void) takes its address", "main.cpp:6: void count(void) writes it",
                              "shapes.cpp:22: int shapes::unused(int value) writes it"], ""))
        status, _, errors = self.run_example("who_writes.py", self.model, "counte")
        self.assertEqual((status, errors), (1, "there is no symbol 'counte'; near ones: counter, count\n"))

    def test_models_without_insight_are_told_so(self):
        for call in (["unused_functions.py", self.plain], ["who_writes.py", self.plain, "counter"]):
            status, lines, errors = self.run_example(*call)
            self.assertEqual((status, lines), (2, []))
            self.assertIn("no code insight", errors)

    def test_no_virtual_destructor(self):
        status, lines, errors = self.run_example("no_virtual_destructor.py", self.model)
        self.assertEqual((status, lines, errors),
                         (0, ["shapes.hpp:6: shapes::Shape", "shapes.hpp:12: shapes::Square"], ""))

    def test_include_weight(self):
        status, lines, errors = self.run_example("include_weight.py", self.model, "5")
        table = [re.sub(r"\s+\S*/", " ", line).split() for line in lines]
        self.assertEqual((status, table, errors), (0, [["files", "units", "header"], ["2", "2", "shapes.hpp"],
                                                       ["1", "2", "counter.hpp"]], ""))

    def test_rename(self):
        before = pathlib.Path(self.model).read_bytes()
        status, lines, errors = self.run_example("rename_what_if.py", self.model, "shapes", "forms")
        self.assertEqual((status, errors), (0, ""))
        self.assertIn("  int shapes::unused(int value)  ->  int forms::unused(int value)", lines)
        self.assertIn("  shapes::Ball  ->  forms::Ball", lines)
        status, lines, errors = self.run_example("rename_what_if.py", self.model, "count", "reset")
        self.assertEqual((status, len([line for line in lines if "->" in line]), errors), (0, 1, ""))
        status, lines, _ = self.run_example("rename_what_if.py", self.model, "shapes::Body", "Ball")
        self.assertTrue(any("CLASH" in line for line in lines))
        self.assertEqual(pathlib.Path(self.model).read_bytes(), before)


class PageTest(unittest.TestCase):
    def test_the_code_of_the_page_prints_what_the_page_says(self):
        blocks = re.findall(r"```(\w+)\n(.*?)```", PAGE.read_text(encoding="utf-8"), re.S)
        names, printed, checked = {}, "", 0
        with tempfile.TemporaryDirectory() as folder, contextlib.chdir(folder):
            for language, text in blocks:
                if language == "python":
                    with contextlib.redirect_stdout(io.StringIO()) as output:
                        exec(compile(text, str(PAGE), "exec"), names)
                    printed = output.getvalue()
                elif language == "text":
                    self.assertEqual(printed, text)
                    checked += 1
        self.assertGreater(checked, 4)

    def test_the_type_checker_accepts_the_examples(self):
        package = pathlib.Path(zelkor.__file__).parent
        scripts = sorted(EXAMPLES.glob("*.py"))
        self.assertEqual(len(scripts), 5)
        with tempfile.TemporaryDirectory() as cache:
            check = [sys.executable, "-m", "mypy", "--strict", "--cache-dir", cache]
            options = {"capture_output": True, "text": True, "env": os.environ | {"MYPYPATH": str(package.parent)}}
            done = subprocess.run([*check, *scripts], check=False, **options)
            self.assertEqual((done.returncode, done.stdout), (0, "Success: no issues found in 5 source files\n"))
            wrong = pathlib.Path(cache, "wrong.py")
            wrong.write_text("from zelkor.ast import Function\nimport zelkor\nf = Function(zelkor.Model(), name='f')\n"
                             "f.params.append(f)\nf.name = 5\nf.nme\nFunction(params=5)\n")
            done = subprocess.run([*check, wrong], check=False, **options)
            self.assertIn("Found 4 errors", done.stdout)


if __name__ == "__main__":
    unittest.main()
