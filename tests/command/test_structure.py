"""The verbs that show what is there, and what all verbs have in common: names, colours, limits, help.

Run with the path of the command in ZELKOR.
"""

import json
import os
import re
import subprocess
import unittest

from insight_model import ID, elements
from support import CommandTest, element

BASE, DERIVED = "types.StructType ns::Base", "types.StructType ns::Derived"
BASE_GO, GO = "types.Method virtual ns::Base::go(int)", "types.Method virtual ns::Derived::go(int p0)"


def squeezed(text):
    """Lines with one blank where there are several, their indentation kept."""
    return [re.match(" *", line)[0] + " ".join(line.split()) for line in text.splitlines()]


class StructureTest(CommandTest):
    elements = elements()

    def ask(self, *words):
        verb, *rest = words
        return self.run_command(verb, self.model, *rest)

    def test_answers(self):
        own_functions = ["main(void)", "run(int p0)", "helper(int p0)", "helper(char const * p0)", "lonely(void)"]
        for words, lines in (
            (["list", "--file", "src/a.cpp", "-k", "Function"], [f"src/a.cpp:{line}:6 Function {text}" for line,
             text in enumerate(own_functions, 2)] + ["src/a.cpp:9:6 Function late(void)"]),
            (["list", "--in", "ns"], [f"inc/box.hpp:1:8 {BASE}", f"inc/box.hpp:1:28 {BASE_GO}", f"inc/box.hpp:2:8 {DERIVED}",
             "inc/box.hpp:4:9 types.Member ns::Derived::size", f"src/b.cpp:2:6 {GO}"]),
            (["list", "-k", "Variable", "--in", "main"], None),
            (["list", "-k", "Variable", "--in", "run"], ["  Variable p0"]),
            (["list", "-k", "Macro"], ["inc/inner.hpp:1:1 Macro UNUSED"]),
            (["list", "--file", "/usr/include", "--no-system-headers"], None),
            (["list", "--file", "include"], None),
            (["list", "--file", "stdio.h"], ["/usr/include/stdio.h:9:5 Function printf(void)", "/usr/include/stdio.h:12:1 Function start(void)"]),
            (["tree", "ns"], ["Namespace ns", f"  {BASE} inc/box.hpp:1:8", f"    {BASE_GO} inc/box.hpp:1:28",
             f"  {DERIVED} inc/box.hpp:2:8", "    types.Member ns::Derived::size inc/box.hpp:4:9",
             f"    {GO} src/b.cpp:2:6 [1 inside]"]),
            (["tree", "--depth", "1"], ["Project", "  source.CompilationUnit src/a.cpp [27 inside]",
             "  source.CompilationUnit src/b.cpp [1 inside]"]),
            (["tree", "UNUSED", "--all"], ["Macro UNUSED inc/inner.hpp:1:1", "  source.SourcePosition inc/inner.hpp:1:1"]),
            (["includes", "a.cpp", "--transitive", "--direction", "out"],
             ["src/a.cpp includes 2 files, 3 with what these include", "inc/box.hpp", "  inc/inner.hpp",
             "    inc/box.hpp [above]", "/usr/include/stdio.h"]),
            (["includes", "box.hpp", "--direction=in"],
             ["inc/box.hpp is included by 3 files, 2 units among all that include it, directly or not",
             "inc/inner.hpp [1 file]", "src/a.cpp", "src/b.cpp"]),
            (["includes", "-n", "1"], ["inc/box.hpp [included by 3, includes 1]"]),
            (["refs", "ns::Base"], ["ns::Base is referred to by", f"inc/box.hpp:2:8: {DERIVED} [BaseClasses.Type]"]),
            (["refs", "char"], ["char is referred to by",
             "src/a.cpp:5:6: Function helper(char const * p0) [Params.Type as char const *]"]),
            (["refs", "UNUSED"],
             ["UNUSED is referred to by"] + [f"src/{place}: source.SourcePosition [InvocationPositions]" for place in ("a.cpp:30:1",
             "b.cpp:2:1")]),
            (["refs", "printf"], ["printf(void) is referred to by", "src/a.cpp:4:6: Function helper(int p0) [CalledFuns]"]),
            (["refs", "run"],
             ["run(int p0) is referred to by"] + [f"src/a.cpp:{line}:6: Function {text} [CalledFuns]" for line, text in ((2,
             "main(void)"), (3, "run(int p0)"))]),
            (["refs", "limit"], ["limit is referred to by", "src/a.cpp:9:6: Function late(void) [Annotations.PointsTo]"]),
            (["refs", "lonely"], None),
        ):
            with self.subTest(words=words):
                code, out, err = self.ask(*words)
                self.assertEqual((code, squeezed(out)), (0, lines) if lines else (1, []), err)
                self.assertEqual(bool(err), not lines)

    def test_names(self):
        for word, found in (
            ("ns::Derived::go", ["derived_go"]),
            ("Derived::go", ["derived_go"]),
            ("go", ["base_go", "derived_go"]),
            ("go(int)", ["base_go", "derived_go"]),
            ("helper(int)", ["helper"]),
            ("helper( const char * )", ["helper_text"]),
            ("helper(char const * p0)", ["helper_text"]),
            ("main()", ["main"]),
            ("helper(unsigned)", []),
            ("go(int) const", []),
            (ID["size"].upper(), ["size"]),
        ):
            with self.subTest(word):
                code, out, err = self.ask("show", "--json", word)
                self.assertEqual([row["uuid"] for row in json.loads(out)["results"]], [ID[name] for name in found])
                self.assertEqual(code, 0 if found else 1)
                self.assertEqual("nearest names are" in err, not found)
        method = [element("types.Method", ID[key], Name=name) for key, name in (("a", "get"), ("b", "operator<"), ("box", "operator->"))]
        arguments = [element("TemplateArg", Kind="Type", Type=ID["int"])]
        box = element("types.ClassType", Name="Box", TemplateArgs=arguments, Methods=method)
        integer = element("types.IntegerType", ID["int"], Name="int")
        model = self.write_model("box.json", [element("source.CompilationUnit", Symbols=[box, integer])])
        for word, found in (
            ("Box<int>::get", "a"),
            ("Box::get", "a"),
            ("Box::get()", "a"),
            ("Box::operator<", "b"),
            ("Box::operator<()", "b"),
            ("Box::operator->", "box"),
        ):
            with self.subTest(word):
                _, out, _ = self.run_command("show", "--json", model, word)
                self.assertEqual([row["uuid"] for row in json.loads(out)["results"]], [ID[found]])
        code, _, err = self.ask("includes", "src/box.hpp")
        self.assertEqual((code, err.splitlines()[1]), (1, "  inc/box.hpp"))
        for option, word, near in (("--file", "src/box.hpp", "inc/box.hpp"), ("--in", "ns::Bose", "ns::Base")):
            code, out, err = self.ask("list", "--json", option, word)
            self.assertEqual((code, json.loads(out)["total"], err.splitlines()[1]), (1, 0, "  " + near))

    def test_names_as_sources_write_them(self):
        size = element("Variable", ID["size"], Name="size", Type=ID["int"])
        field = element("types.Member", ID["counter"], Name="size", Type=ID["int"])
        arguments = [element("TemplateArg", Kind="Type", Type=ID["int"])]
        inner = element("Namespace", Name="v1", IsInline=True, Symbols=[
            element("types.StructType", ID["base"], Name="Box", Members=[field]),
            element("Function", ID["run"], Name="make", Params=[size]),
            element("Function", ID["apply"], Name="take", TemplateArgs=arguments),
            element("Function", ID["work"], Name="operator bool"),
        ])
        unit = element("source.CompilationUnit", Namespaces=[element("Namespace", Name="geo", Namespaces=[inner])],
                       Symbols=[element("types.IntegerType", ID["int"], Name="int")])
        model = self.write_model("geo.json", [unit])
        for word, found in (
            ("geo::Box", ["base"]),
            ("geo::v1::Box", ["base"]),
            ("geo::Box::size", ["counter"]),
            ("size", ["counter", "size"]),
            ("geo::make(int)", ["run"]),
            ("make(int size)", ["run"]),
            ("static std::vector<int> geo::make(const int size)", []),
            ("static std::vector<int> geo::make(int size)", ["run"]),
            ("take<int>", ["apply"]),
            ("void geo::take<int>()", ["apply"]),
            ("operator bool()", ["work"]),
            ("geo::v2::Box", []),
        ):
            with self.subTest(word):
                code, out, err = self.run_command("show", "--json", model, word)
                self.assertEqual([row["uuid"] for row in json.loads(out)["results"]], [ID[name] for name in found], err)
        self.assertEqual(err.splitlines()[1], "  geo::v1::Box")
        code, out, err = self.ask("callers", "")
        self.assertEqual((code, out, "must not be empty" in err), (2, "", True))

    def test_every_verb_that_reads_a_model(self):
        """They take standard input, a limit and colours, and their records begin alike."""
        with open(self.model, encoding="utf-8") as file:
            text = file.read()
        names = {"path": ["main", "work"], "includes": ["a.cpp"], **dict.fromkeys(["list", "find", "tree", "validate"], [])}
        verbs = re.findall(r"^  (\w+)", self.run_command("help")[1], re.MULTILINE)
        asked = [verb for verb in verbs if "--limit" in self.run_command("help", verb)[1]]
        self.assertGreaterEqual(len(asked), 14)
        for verb in asked:
            words = [verb, "-", *names.get(verb, ["run"])]
            with self.subTest(verb):
                limited, coloured, plain = (
                    subprocess.run([os.environ["ZELKOR"], *words, *more], input=text, env=os.environ | environment,
                                   capture_output=True, text=True, check=False)
                    for more, environment in (
                        (["--json", "--limit", "1"], {}),
                        (["--color", "always"], {"NO_COLOR": "1"}),
                        ([], {"CLICOLOR_FORCE": "1", "NO_COLOR": "1"}),
                    )
                )
                reply = json.loads(limited.stdout)
                self.assertEqual(list(reply)[:2], ["format", "version"])
                self.assertEqual((reply["format"], len(reply["results"])), ("zelkor-" + verb, min(1, reply["total"])))
                for row in reply["results"]:
                    self.assertEqual(list(row)[:4], ["uuid", "class", "name", "qualifiedName"])
                if verb not in ("type", "signature", "validate"):
                    self.assertIn("\033[", coloured.stdout)
                self.assertEqual(re.sub("\033[^m]*m", "", coloured.stdout), plain.stdout)

    def test_help(self):
        code, usage, _ = self.run_command("help")
        self.assertEqual((code, usage), (0, self.run_command("--help")[1]))
        verbs = re.findall(r"^  (\w+)", usage, re.MULTILINE)
        manual = self.run_command("help", "--man")[1]
        completion = self.run_command("help", "--bash-completion")[1]
        for verb in verbs:
            with self.subTest(verb):
                page = self.run_command(verb, "--help")[1]
                self.assertEqual(page, self.run_command("help", verb)[1])
                self.assertGreaterEqual(len(re.findall(rf"^  .*zelkor {verb}\b", page, re.MULTILINE)), 2, page)
                self.assertLessEqual(max(map(len, page.split("examples:")[0].splitlines())), 80, page)
                options = set(re.findall(r"--[a-z-]+", page.split("examples:")[0]))
                completed = re.search(rf"\b{verb}\) words='(.*)'", completion)[1].split()
                self.assertLessEqual(options - {"--help"}, set(completed))
                for option in options - {"--help"}:
                    self.assertIn(option.replace("-", r"\-"), manual)
        for words in ("call", "help call"):
            script = completion + f"COMP_WORDS=(zelkor {words}); COMP_CWORD={len(words.split())}; _zelkor; echo ${{COMPREPLY[@]}}"
            done = subprocess.run(["bash", "-c", script], capture_output=True, text=True, check=False)
            self.assertEqual((done.stdout, done.stderr), ("callers callees\n", ""))
        code, _, err = self.run_command("help", "caller")
        self.assertEqual((code, "did you mean 'callers'?" in err), (2, True))


if __name__ == "__main__":
    unittest.main()
