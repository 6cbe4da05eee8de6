"""Importing again, in parts and by other programs gives the bytes of a whole import, and only what changed is parsed."""

import json
import os
import pty
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

FIXTURES = os.path.join(os.path.dirname(__file__), "..", "producer", "fixtures")
PLAN = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "distributed-import", "plan.py")
# A missing header, a missing unit, one that is there twice, and one that is no unit.
UNITS = [("second.cpp", ""), ("plain.c", ""), ("first.cpp", "-DGIVEN=1"), ("broken.cpp", ""), ("nowhere.cpp", ""),
         ("second.cpp", "-DAGAIN"), ("start.S", "")]


def read(path, mode="rb"):
    with open(path, mode) as file:
        return file.read()


class UnitsTest(unittest.TestCase):
    """Each test has a project, a cache and a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.source = self.path("source")
        self.cache = self.path("cache")
        shutil.copytree(FIXTURES, self.source)
        self.environment = {**os.environ, "HOME": self.path("home")}
        for name in ("XDG_CACHE_HOME", "CI"):
            self.environment.pop(name, None)
        self.database(UNITS)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def database(self, units):
        commands = [{"directory": self.source, "file": file,
                     "command": f"{'cc' if file.endswith('.c') else 'c++ -std=c++17'} {options} -c {file}"}
                    for file, options in units]
        with open(self.path("compile_commands.json"), "w", encoding="utf-8") as file:
            json.dump(commands, file)

    def zelkor(self, *words, code=0, **more):
        done = subprocess.run([os.environ["ZELKOR"], *words], capture_output=True, text=True, check=False,
                              cwd=self.folder, env=self.environment, **more)
        self.assertEqual(done.returncode, code, done.stderr)
        return done.stdout, done.stderr

    def imported(self, *options, cache="--no-cache", name="model.json"):
        """The bytes of a whole import, and what it told."""
        _, told = self.zelkor("import", "-p", ".", "-o", name, cache, *options)
        return read(self.path(name)), told

    def unit(self, file, *options):
        return self.zelkor("import", "-p", ".", "--unit", file, "-o", "units/", "--no-cache", *options)

    def all_units(self):
        """Makes all unit files. Returns their paths."""
        for file in self.zelkor("import", "-p", ".", "--list-units")[0].splitlines():
            self.unit(file)
        return sorted("units/" + name for name in os.listdir(self.path("units")))

    def merged(self, *operands):
        _, told = self.zelkor("merge", *operands, "-o", "merged.json")
        return read(self.path("merged.json")), told


class SameBytes(UnitsTest):

    def test_every_way_gives_one_model_and_one_report(self):
        model, told = self.imported("-j1")
        self.assertIn("imported 5 of 6 units, 1 incomplete, 1 failed", told)
        self.assertIn("failed: nowhere.cpp: ", told)
        self.assertIn("header not found: no_such_header.hpp (1 unit); install", told)
        self.assertIn("neither C nor C++ were left out, such as that of start.S", told)
        self.assertIn("paths in the model begin at " + os.path.realpath(self.source), told)
        cache = "--cache=cache"
        for options in (["-j2"], ["-j2", cache], ["-j1", cache], ["-j2", cache]):
            with self.subTest(options):
                again, said = self.imported(*options[:1], cache=options[-1] if cache in options else "--no-cache")
                self.assertEqual(again, model)
                self.assertEqual(said.replace(" (4 unchanged)", ""), told)
        files = self.all_units()
        self.assertEqual(len(files), 5)
        for operands in (files, files[::-1], ["units"], [*files[2:], *files[:2], "-j1"]):
            with self.subTest(operands):
                again, said = self.merged(*operands, "-p", ".")
                self.assertEqual(again, model)
                self.assertEqual(said.replace("merged 5", "imported 5"), told)

    def test_without_a_database_paths_decide(self):
        files = self.all_units()
        model, _ = self.merged(*files)
        self.assertEqual(self.merged(*files[::-1])[0], model)
        order = sorted(UNITS, key=lambda unit: unit[0])
        self.database(order)
        self.assertEqual(self.imported()[0], model)

    def test_insight(self):
        self.database(UNITS[:3])
        for option in ("--transitive", "--no-insight"):
            with self.subTest(option):
                model, _ = self.imported(option)
                self.assertEqual(self.imported(option, cache="--cache=cache")[0], model)
                for file, _ in UNITS[:3]:
                    self.unit(file, option)
                again, told = self.merged("units", "-p", ".", option)
                self.assertEqual(again, model)
                self.assertNotIn("warning", told)
        _, told = self.merged("units", "-p", ".")
        self.assertRegex(told, r"warning: units/\S+: was made with --no-insight")

    def test_a_unit_by_the_arguments_of_a_compiler(self):
        self.database([("first.cpp", "-DGIVEN=1"), ("plain.c", "")])
        model, _ = self.imported()
        ways = [("first.cpp", ["-std=c++17", "-DGIVEN=1"]), ("plain.c", ["cc", "-c", "plain.c", "-o", "plain.o"])]
        for file, arguments in ways:
            self.assertEqual(self.zelkor("import", "-p", ".", "--unit", self.path("source", file), "-o", "a.zku")[0], "")
            subprocess.run([os.environ["ZELKOR"], "import", "--unit", file, "-o", self.path("units/"), "--", *arguments],
                           cwd=self.source, env=self.environment, check=True, capture_output=True)
        self.assertEqual(self.merged("units")[0], model)

    def test_by_xargs(self):
        model, _ = self.imported()
        command = ('"$ZELKOR" import -p . --list-units | '
                   'xargs -d "\\n" -P2 -I{} "$ZELKOR" import -p . --unit {} -o units/ --no-cache -q')
        subprocess.run(command, shell=True, cwd=self.folder, env=self.environment, check=True, capture_output=True)
        self.assertEqual(self.merged("units", "-p", ".")[0], model)

    def test_by_ninja_with_options_of_the_model(self):
        self.database(UNITS[:2])
        options = ["--root", self.folder, "--transitive"]
        subprocess.run([sys.executable, PLAN, "--zelkor", os.environ["ZELKOR"], "-p", self.folder, "-o", self.path("out"), "--",
                        "--no-cache", *options], env=self.environment, check=True)
        subprocess.run(["ninja", "-j2"], cwd=self.path("out"), env=self.environment, check=True, capture_output=True)
        self.assertEqual(read(self.path("out/model.json")), self.imported(*options)[0])

    def test_by_ninja(self):
        plan = [sys.executable, PLAN, "--zelkor", os.environ["ZELKOR"], "-p", self.folder, "-o", self.path("out")]
        subprocess.run([*plan, "--", "--no-cache"], env=self.environment, check=True)

        def built():
            """What ninja does, and whether the model is that of a whole import."""
            done = subprocess.run(["ninja", "-j2"], cwd=self.path("out"), env=self.environment, check=False,
                                  capture_output=True, text=True)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            self.assertEqual(read(self.path("out/model.json")), self.imported()[0])
            return sorted(re.findall(r"\] (import \S+|merge)", done.stdout))

        # What lacks something is tried each time, in vain.
        vain = ["import broken.cpp", "import nowhere.cpp"]
        self.assertEqual(len(built()), 6)
        self.assertEqual(built(), vain)
        os.utime(self.path("source/include/plain.h"))
        self.assertNotIn("merge", built())
        with open(self.path("source/include/plain.h"), "a", encoding="utf-8") as file:
            file.write("int added(void);\n")
        self.assertEqual(built(), sorted([*vain, "import plain.c", "import first.cpp", "merge"]))
        shutil.copy(self.path("source/second.cpp"), self.path("source/nowhere.cpp"))
        self.assertIn("merge", built())


class Cache(UnitsTest):

    def entries(self):
        found = [os.path.join(folder, name) for folder, _, names in os.walk(self.cache) for name in names]
        return sorted((path for path in found if not path.endswith("pruned")), key=os.path.getsize)

    def edit(self, file, text="int added;\n"):
        with open(self.path("source", file), "a", encoding="utf-8") as out:
            out.write(text)

    def damage(self, change):
        # Of the three that the last import used: one of a former command may be as large.
        path = max(sorted(self.entries(), key=lambda entry: os.stat(entry).st_mtime_ns)[-3:], key=os.path.getsize)
        content = read(path)
        with open(path, "wb") as file:
            file.write(change(content))

    def test_what_changed_is_parsed_again_and_nothing_else(self):
        units = [("second.cpp", ""), ("plain.c", ""), ("first.cpp", "-DGIVEN=1"), ("broken.cpp", "")]
        header = self.path("source/include/shapes.hpp")
        half = lambda bytes: bytes[:len(bytes) // 2]
        flipped = lambda bytes: bytes[:-99] + b"?" + bytes[-98:]
        older = lambda bytes: bytes.replace(b"zelkor unit file 1", b"zelkor unit file 0", 1)
        rows = [  # what happens, units that stay known, what -v tells
            ("nothing", lambda: None, 3, ""),
            ("a unit is touched", lambda: os.utime(self.path("source/plain.c"), (1, 1)), 3, ""),
            ("a unit", lambda: self.edit("plain.c"), 2, ""),
            ("a header of two units", lambda: self.edit("include/plain.h"), 1, ""),
            ("options of a unit", lambda: self.database([*units[:2], ("first.cpp", "-DGIVEN=2"), units[3]]), 2, ""),
            ("a header is removed", lambda: os.remove(self.path("source/include/shapes.hpp")), 1, ""),
            ("it is still missing", lambda: None, 1, ""),
            ("it is a folder", lambda: os.mkdir(header), 1, ""),
            ("it is there again", lambda: (os.rmdir(header), shutil.copy(os.path.join(FIXTURES, "include/shapes.hpp"),
                                                                         header)), 3, ""),
            ("an entry is cut off", lambda: self.damage(half), 2, "is damaged"),
            ("an entry is changed", lambda: self.damage(flipped), 2, "is damaged"),
            ("an entry is empty", lambda: self.damage(lambda bytes: b""), 2, "is no unit file"),
            ("an entry is of other tools", lambda: self.damage(older), 2, "made by other tools"),
            ("the order, and the options of before", lambda: self.database(units[::-1]), 3, ""),
            ("the missing header comes", lambda: self.edit("no_such_header.hpp"), 3, ""),
            ("and is known from now on", lambda: None, 4, ""),
        ]
        self.database(units)
        self.imported(cache="--cache=cache")
        for name, change, known, note in rows:
            with self.subTest(name):
                change()
                model, told = self.imported("-v", cache="--cache=cache")
                self.assertEqual(model, self.imported()[0])
                self.assertIn(f"({known} unchanged)", told)
                self.assertEqual("cache: " in told, note != "", told)
                self.assertIn(note, told)
        _, told = self.imported("--extra-arg=-DMORE", cache="--cache=cache")
        self.assertNotIn("unchanged", told)

    def test_where_it_is(self):
        self.database(UNITS[:1])
        for variables, folder in (({}, "home/.cache/zelkor/units"), ({"XDG_CACHE_HOME": self.path("x")}, "x/zelkor/units")):
            with self.subTest(folder):
                self.environment.update(variables)
                self.zelkor("import", "-p", ".", "-o", "model.json")
                self.assertTrue(os.listdir(self.path(folder)))
        self.environment.update(HOME="/dev/null", XDG_CACHE_HOME="")
        _, told = self.zelkor("import", "-p", ".", "-o", "model.json")
        self.assertIn("warning: /dev/null/.cache/zelkor/units: no cache of units can be kept there", told)
        self.environment.update(HOME="", XDG_CACHE_HOME="relative")
        self.zelkor("import", "-p", ".", "-o", "model.json")
        self.assertFalse(os.path.exists(self.path("relative")))
        _, told = self.zelkor("import", "-p", ".", "-o", "model.json", "--cache", "/dev/null/x", code=2)
        self.assertIn("/dev/null/x: no cache of units can be kept there", told)

    def test_imports_at_once_share_it(self):
        words = [os.environ["ZELKOR"], "import", "-p", ".", "--cache=cache", "-q", "-o"]
        for _ in range(2):  # cold, then warm
            running = [subprocess.Popen([*words, f"{number}.json"], cwd=self.folder, env=self.environment,
                                        stderr=subprocess.DEVNULL) for number in range(3)]
            self.assertEqual([process.wait() for process in running], [0, 0, 0])
            models = {read(self.path(f"{number}.json")) for number in range(3)}
            self.assertEqual(models, {self.imported()[0]})
        self.assertFalse([path for path in self.entries() if path.endswith(".tmp")])

    def test_what_depends_on_the_day_is_not_kept(self):
        self.edit("plain.c", 'char const* built = __DATE__;\n')
        self.database(UNITS[:2])
        for _ in range(2):
            _, told = self.imported(cache="--cache=cache")
        self.assertIn("(1 unchanged)", told)

    def test_what_nobody_used_for_a_month_goes(self):
        self.database(UNITS[:3])
        self.imported(cache="--cache=cache")
        for path in (*self.entries(), self.path("cache/pruned")):
            os.utime(path, (1e9, 1e9))
        self.database(UNITS[:1])
        _, told = self.imported(cache="--cache=cache")
        self.assertIn("(1 unchanged)", told)
        self.assertEqual(len(self.entries()), 1)


class Trouble(UnitsTest):

    def test_what_is_no_good_unit_file(self):
        path = self.path(self.all_units()[0])
        whole = read(path)
        line, rest = whole.split(b"\n", 1)
        rows = [(b"", "is no unit file"), (b'{"format": "zelkor-ast"}', "is no unit file"), (line, "is damaged"),
                (line + b"\n", "is damaged"), (line.replace(b"1.", b"0.") + b"\n" + rest, "was made by other tools"),
                (whole + b"x", "is damaged"), (whole.replace(b"\n", b"\n\0", 1), "is damaged")]
        rows += [(whole[:size], "is damaged") for size in range(len(line) + 2, len(whole), len(whole) // 7)]
        rows += [(whole[:at] + bytes([whole[at] ^ 64]) + whole[at + 1:], "is damaged")
                 for at in range(len(line) + 1, len(whole), len(whole) // 7)]
        for number, (content, reason) in enumerate(rows):
            with self.subTest(number):
                with open(path, "wb") as file:
                    file.write(content)
                _, told = self.zelkor("merge", "units", "-o", "merged.json", code=2)
                self.assertIn(os.path.basename(path) + ": " + reason, told)
                self.assertFalse(os.path.exists(self.path("merged.json")))

    def test_units_that_do_not_fit_together(self):
        files = self.all_units()
        plain = next(file for file in files if "plain.c" in file)
        shutil.copy(self.path(plain), self.path("copy.zku"))
        _, told = self.zelkor("merge", "units", "copy.zku", "-o", "merged.json", code=2)
        self.assertIn("the same unit as", told)
        model, told = self.merged(*(file for file in files if file != plain), "-p", ".")
        self.assertIn("failed: plain.c: no unit file was given; make it", told)
        os.remove(self.path("source/plain.c"))
        whole, _ = self.imported()
        self.assertEqual(model, whole)
        self.database([unit for unit in UNITS if unit[0] != "plain.c"])
        model, told = self.merged("units", "-p", ".")
        self.assertIn("left out, since the compile database does not name plain.c", told)
        self.assertEqual(model, self.imported()[0])

    def test_wrong_usage(self):
        os.mkdir(self.path("empty"))
        self.all_units()
        rows = [(["import", "-p", ".", "--unit", "other.c", "-o", "o.zku"], "names no unit other.c"),
                (["import", "-p", ".", "--unit", "plain.c", "-o", "-"], "cannot go to standard output"),
                (["import", "-p", ".", "--unit", "plain.c", "-o", "o.zku", "--", "-DX"], "unexpected argument '-DX'"),
                (["import", "-p", ".", "--unit", "plain.c", "-o", "/dev/null/o.zku"], "cannot be written"),
                (["merge", "-o", "m.json"], "missing argument: UNIT"),
                (["merge", "empty", "-o", "m.json"], "empty: holds no unit file"),
                (["merge", "nothing.zku", "-o", "m.json"], "nothing.zku: No such file"),
                (["merge", "/dev/null", "-o", "m.json"], "/dev/null: "),
                (["import", "--unit", "plain.c", "-o", "o.zku", "--", "@args"], "@args: response files"),
                (["import", "-p", ".", "-o", "nowhere/m.json"], "there is no folder"),
                (["merge", "units", "-o", "empty"], "empty: is a folder"),
                (["import", "-p", ".", "-o", "all.zku"], "a unit file is of one unit"),
                (["import", "-p", ".", "-o", "m.json", "--error-limit=-1"], "needs a number from 0 to 4294967295"),
                (["import", "-p", ".", "-o", "m.json", "--progress=loud"], "unknown mode of progress 'loud'")]
        for words, reason in rows:
            with self.subTest(words):
                _, told = self.zelkor(*words, code=2)
                self.assertIn(reason, told)

    def test_exit_code_for_units_that_are_not_whole(self):
        for file, code in (("plain.c", 0), ("broken.cpp", 3), ("nowhere.cpp", 3)):
            self.zelkor("import", "-p", ".", "--unit", file, "-o", "units/", "--fail-on-error", code=code)
        self.zelkor("merge", "units", "-o", "merged.json", "--fail-on-error", code=3)
        self.zelkor("import", "-p", ".", "-o", "model.json", "--fail-on-error", code=3)
        self.database([("nowhere.cpp", "")])
        self.zelkor("import", "-p", ".", "-o", "model.json", code=3)

    def test_an_interrupt_leaves_nothing(self):
        self.database([("first.cpp", f"-DNUMBER={number}") for number in range(200)])
        before = sorted(os.listdir(self.folder))
        process = subprocess.Popen([os.environ["ZELKOR"], "import", "-p", ".", "-o", "model.json", "-j1", "--no-cache",
                                    "--progress=always"], stderr=subprocess.PIPE, text=True, cwd=self.folder,
                                   env=self.environment)
        process.stderr.readline()  # a tenth is done
        process.send_signal(signal.SIGINT)
        told = process.communicate()[1]
        self.assertEqual(process.returncode, 130, told)
        self.assertTrue(told.endswith("zelkor: interrupted; nothing was written\n"), told)
        self.assertEqual(sorted(os.listdir(self.folder)), before)


class ProgressTest(UnitsTest):

    def setUp(self):
        super().setUp()
        self.database([("plain.c", f"-DNUMBER={number}") for number in range(20)])

    def test_tenths(self):
        rows = [({}, "auto", 0), ({}, "always", 10), ({"CI": "true"}, "auto", 10), ({"CI": "true"}, "never", 0)]
        for variables, mode, lines in rows:
            with self.subTest((variables, mode)):
                self.environment.pop("CI", None)
                self.environment.update(variables)
                _, told = self.imported("--progress", mode)
                self.assertEqual(len(re.findall(r"(?m)^\d+/20 units", told)), lines)
                self.assertEqual("20/20 units" in told, lines > 0)
        self.assertEqual(self.imported("--progress=always", "-q")[1], "")

    def test_one_line_on_a_terminal(self):
        ours, theirs = pty.openpty()
        process = subprocess.Popen([os.environ["ZELKOR"], "import", "-p", ".", "-o", "model.json", "--no-cache"],
                                   stderr=theirs, cwd=self.folder, env={**self.environment, "TERM": "xterm"})
        os.close(theirs)
        told = b""
        try:
            while chunk := os.read(ours, 4096):
                told += chunk
        except OSError:
            pass  # the other side is closed
        os.close(ours)
        self.assertEqual(process.wait(), 0)
        progress, _, rest = told.rpartition(b"\r\x1b[K")
        self.assertEqual(progress.count(b"\n"), 0)
        self.assertIn(b"20/20 units", progress)
        self.assertTrue(rest.startswith(b"imported 20 of 20 units"), rest)


if __name__ == "__main__":
    unittest.main()
