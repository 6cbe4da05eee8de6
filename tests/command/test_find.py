"""The verbs find and show: what they list and tell, their options, and what they say when nothing is there.

Run with the path of the command in ZELKOR.
"""

import json
import os
import subprocess
import unittest

from support import CommandTest, uuid

USER, SYSTEM, INT, BASE, BOX, GET, UNIT = (uuid(n) for n in range(1, 8))


def position(number, line, column, file=USER):
    return {"class": "source.SourcePosition", "uuid": uuid(number), "File": file, "Line": line, "Col": column}


ELEMENTS = [
    {
        "class": "Project",
        "uuid": uuid(99),
        "Files": [
            {"class": "source.SourceFile", "uuid": USER, "Path": "src/a.cpp"},
            {
                "class": "source.SourceFile",
                "uuid": SYSTEM,
                "Path": "/usr/include/vector",
                "IsInclude": True,
                "IsIncludedFromSystemIncludeDir": True,
            },
        ],
        "Compilations": [
            {
                "class": "source.CompilationUnit",
                "uuid": UNIT,
                "Macros": [{"class": "Macro", "uuid": uuid(80), "Name": "LIMIT"}],
                "Namespaces": [
                    {
                        "class": "Namespace",
                        "uuid": uuid(10),
                        "Name": "ns",
                        "Symbols": [
                            {
                                "class": "types.ClassType",
                                "uuid": BOX,
                                "Name": "Box",
                                "DefPos": position(20, 3, 7),
                                "BaseClasses": [{"class": "types.BaseClass", "uuid": uuid(21), "Type": BASE}],
                                "Members": [
                                    {
                                        "class": "types.Member",
                                        "uuid": uuid(22),
                                        "Name": "size",
                                        "Type": INT,
                                        "DefPos": position(23, 5, 9),
                                    }
                                ],
                                "Methods": [
                                    {
                                        "class": "types.Method",
                                        "uuid": GET,
                                        "Name": "get",
                                        "IsThisConst": True,
                                        "DefPos": position(24, 4, 9),
                                    }
                                ],
                                "Scope": {
                                    "class": "Scope",
                                    "uuid": uuid(25),
                                    "Symbols": [
                                        {
                                            "class": "types.EnumType",
                                            "uuid": uuid(26),
                                            "Name": "Kind",
                                            "DefPos": position(27, 6, 10),
                                        }
                                    ],
                                },
                            },
                            {
                                "class": "Function",
                                "uuid": uuid(30),
                                "Name": "get",
                                "DeclPos": [position(31, 1, 5)],
                                "Params": [
                                    {"class": "Variable", "uuid": uuid(1000 + n), "Name": f"p{n}", "Type": INT}
                                    for n in range(12)
                                ],
                            },
                            {
                                "class": "Template",
                                "uuid": uuid(40),
                                "Name": "Pair",
                                "DefPos": position(41, 9, 1),
                                "Scope": {
                                    "class": "Scope",
                                    "uuid": uuid(42),
                                    "Symbols": [
                                        {
                                            "class": "types.StructType",
                                            "uuid": BASE,
                                            "Name": "Pair",
                                            "DefPos": position(43, 9, 2),
                                        }
                                    ],
                                },
                            },
                        ],
                    },
                    {
                        "class": "Namespace",
                        "uuid": uuid(50),
                        "Name": "std",
                        "IsStd": True,
                        "Symbols": [
                            {
                                "class": "types.ClassType",
                                "uuid": uuid(51),
                                "Name": "vector",
                                "DefPos": position(52, 40, 3, SYSTEM),
                            }
                        ],
                    },
                ],
                "Symbols": [{"class": "types.IntegerType", "uuid": INT, "Name": "int"}],
            }
        ],
    }
]

VECTOR = "/usr/include/vector:40:3: types.ClassType std::vector\n"
DECLARED = "src/a.cpp:1:5: Function ns::get(" + ", ".join(f"int p{n}" for n in range(12)) + ")\n"
BOX_LINE = "src/a.cpp:3:7: types.ClassType ns::Box\n"
METHOD = "src/a.cpp:4:9: types.Method ns::Box::get(void) const\n"
MEMBER = "src/a.cpp:5:9: types.Member ns::Box::size\n"
KIND = "src/a.cpp:6:10: types.EnumType ns::Box::Kind\n"
TEMPLATE = "src/a.cpp:9:1: Template ns::Pair\n"
PAIR = "src/a.cpp:9:2: types.StructType ns::Pair::Pair\n"
INT_LINE = "types.IntegerType int\n"


class FindTest(CommandTest):
    elements = ELEMENTS

    def test_what_is_listed(self):
        defined = BOX_LINE + METHOD + MEMBER + KIND + TEMPLATE + PAIR
        for words, expected in (
            ([], VECTOR + DECLARED + defined + INT_LINE),
            (["--no-std"], DECLARED + defined + INT_LINE),
            (["--no-system-headers"], defined),
            (["--no-templates"], VECTOR + DECLARED + BOX_LINE + METHOD + MEMBER + KIND + TEMPLATE + INT_LINE),
            (["--no-aggregates"], VECTOR + DECLARED + BOX_LINE + TEMPLATE + PAIR + INT_LINE),
            (["--no-namespaces"], INT_LINE),
            (["--limit", "2"], VECTOR + DECLARED),
            (["--class", "Function"], DECLARED + METHOD),
            (["-k", "Function", "--exact-class"], DECLARED),
            (["--class", "Method"], METHOD),
            (["--class", "types.Member"], MEMBER),
            (["--class", "AggregateType", "--no-std"], BOX_LINE + PAIR),
            (["--class", "zelkor.ast.types.EnumType"], KIND),
            (["--name", "get"], DECLARED + METHOD),
            (["--name", "get", "--class", "Method"], METHOD),
            (["--qualified", "ns::Box::get"], METHOD),
            (["--qualified", "ns::Box"], BOX_LINE),
            (["--signature", "ns::Box::get(void) const"], METHOD),
            (["--signature", "int size"], MEMBER),
            (["-E", "get$"], DECLARED + METHOD),
            (["--regex", "^ns::Box::[a-z]+$"], METHOD + MEMBER),
            (["--regex", "vec|Kin"], VECTOR + KIND),
        ):
            with self.subTest(words=words):
                self.assertEqual(self.run_command("find", self.model, *words), (0, expected, ""))

    def test_json(self):
        code, out, err = self.run_command("find", self.model, "--name", "get", "--json")
        self.assertEqual((code, err), (0, ""))
        reply = json.loads(out)
        self.assertEqual((reply["format"], reply["version"]), ("zelkor-find", "1.0"))
        self.assertEqual(len(reply["results"]), 2)
        self.assertEqual(
            reply["results"][1],
            {
                "uuid": GET,
                "class": "types.Method",
                "name": "get",
                "qualifiedName": "ns::Box::get",
                "signature": "ns::Box::get(void) const",
                "file": "src/a.cpp",
                "line": 4,
                "column": 9,
            },
        )
        code, out, _ = self.run_command("find", self.model, "--name", "int", "--json")
        self.assertEqual(code, 0)
        self.assertNotIn("file", json.loads(out)["results"][0])

    def test_nothing_there(self):
        for words, said in (
            (["--name", "Bix"], ["'Bix'", "Box"]),
            (["--qualified", "ns::Boks"], ["'ns::Boks'", "ns::Box"]),
            (["--name", "vector", "--no-std"], ["of that name there is", "types.ClassType std::vector"]),
            (["--name", "get", "--class", "Template"], ["of that name there is", "Function ns::get"]),
            (["--regex", "nothing_like_this"], ["no symbol fits"]),
        ):
            with self.subTest(words=words):
                code, out, err = self.run_command("find", self.model, *words)
                self.assertEqual((code, out), (1, ""))
                for part in said:
                    self.assertIn(part, err)
                code, out, _ = self.run_command("find", "--json", self.model, *words)
                self.assertEqual((code, json.loads(out)["results"]), (1, []))

    def test_wrong_use(self):
        broken = self.path("broken.json")
        with open(broken, "w", encoding="utf-8") as file:
            file.write('{"format": "zelkor-ast",\n "elements": [}')
        for words, said in (
            ([self.model, "--clas", "Type"], "did you mean '--class'?"),
            ([self.model, "--class", "Fuction"], "did you mean 'Function'?"),
            ([self.model, "--class", "Namespace"], "'Namespace' is no class of symbols"),
            ([self.model, "--class", ""], "'' is no class of symbols"),
            ([self.model, "--name", "a", "--regex", "b"], "--name and --regex exclude each other"),
            ([self.model, "--name", ""], "--name needs a text"),
            ([self.model, "--regex", "("], "--regex: "),
            ([self.model, "--limit", "many"], "needs a number"),
            ([self.model, "Box"], "unexpected argument 'Box'; did you mean --name 'Box'?"),
            ([], "missing argument: FILE"),
            ([self.path("none.json")], "none.json"),
            ([broken], "broken.json:2:"),
        ):
            with self.subTest(words=words):
                code, out, err = self.run_command("find", *words)
                self.assertEqual((code, out), (2, ""))
                self.assertIn(said, err)

    def test_a_reader_that_has_seen_enough(self):
        reader, writer = os.pipe()
        os.close(reader)
        done = subprocess.run(
            [os.environ["ZELKOR"], "find", self.model], stdout=writer, stderr=subprocess.PIPE, check=False
        )
        os.close(writer)
        self.assertEqual((done.returncode, done.stderr), (-13, b""))

    def test_help_lists_every_option(self):
        code, out, _ = self.run_command("find", "--help")
        self.assertEqual(code, 0)
        for option in ("--class", "--name", "--qualified", "--signature", "--regex", "--exact-class"):
            self.assertIn(option, out)
        for left_out in ("namespaces", "std", "system-headers", "templates", "aggregates"):
            self.assertIn("--no-" + left_out, out)


class ShowTest(CommandTest):
    elements = ELEMENTS

    def test_text(self):
        expected = f"""types.ClassType ns::Box
  uuid: {BOX}
  signature: ns::Box
  at: src/a.cpp:3:7
  in: Namespace ns
  DefPos: source.SourcePosition src/a.cpp:3:7
  OwningScope: Namespace ns
  Name: Box
  Scope: Scope ns::Box
  Members (1)
    types.Member int size at src/a.cpp:5:9
  BaseClasses (1)
    types.BaseClass ns::Pair::Pair
  Methods (1)
    types.Method ns::Box::get(void) const at src/a.cpp:4:9
  contains: 4 source.SourcePosition, 1 Scope, 1 types.BaseClass, 1 types.EnumType, 1 types.Member, 1 types.Method
"""
        for word in ("ns::Box", "Box", BOX):
            self.assertEqual(self.run_command("show", self.model, word), (0, expected, ""))

    def test_what_is_told(self):
        for words, lines in (
            (["ns"], ["Namespace ns", "  in: source.CompilationUnit", "  Symbols (3)"]),
            (["LIMIT"], ["Macro LIMIT", "  Name: LIMIT"]),
            ([uuid(99)], ["Project", "  Files (2)", "    source.SourceFile src/a.cpp", "  Compilations (1)"]),
            ([uuid(20)], ["source.SourcePosition", "  File: source.SourceFile src/a.cpp", "  Line: 3", "  Col: 7"]),
            ([SYSTEM], ["  IsIncludedFromSystemIncludeDir: true"]),
            ([uuid(30)], ["  Params (12)", "    Variable int p9", "    and 2 more; --all lists them"]),
            ([uuid(30), "--all"], ["    Variable int p11", "  IsInline: false", "  Scope: none", "  IsTemplate: false"]),
            (["get"], ["Function ns::get", "types.Method ns::Box::get", "  IsThisConst: true"]),
        ):
            with self.subTest(words=words):
                code, out, err = self.run_command("show", self.model, *words)
                self.assertEqual((code, err), (0, ""))
                for line in lines:
                    self.assertIn(line, out.splitlines())

    def test_json(self):
        code, out, _ = self.run_command("show", "--json", self.model, "ns::Box::get")
        self.assertEqual(code, 0)
        reply = json.loads(out)
        self.assertEqual((reply["format"], reply["version"]), ("zelkor-show", "1.0"))
        (shown,) = reply["results"]
        self.assertEqual(shown["container"], {"uuid": BOX, "class": "types.ClassType", "text": "ns::Box"})
        self.assertEqual(shown["contains"], {"source.SourcePosition": 1})
        self.assertEqual((shown["file"], shown["line"], shown["column"]), ("src/a.cpp", 4, 9))
        self.assertEqual((shown["properties"]["Name"], shown["properties"]["IsThisConst"]), ("get", True))
        self.assertNotIn("IsVirtual", shown["properties"])
        code, out, _ = self.run_command("show", "--json", "--all", self.model, "ns::Box::get")
        properties = json.loads(out)["results"][0]["properties"]
        self.assertEqual((properties["IsVirtual"], properties["Type"], properties["Params"]), (False, None, []))

    def test_nothing_there(self):
        code, out, err = self.run_command("show", self.model, "ns::Bok")
        self.assertEqual((code, out), (1, ""))
        self.assertEqual([line.strip() for line in err.splitlines()[1:]], ["ns::Box"])
        code, out, err = self.run_command("show", self.model)
        self.assertEqual((code, out), (2, ""))
        self.assertIn("missing argument: NAME|UUID", err)


if __name__ == "__main__":
    unittest.main()
