"""The verbs find and show: what they list and tell, their options, and what they say when nothing is there.

Run with the path of the command in ZELKOR.
"""

import json
import os
import subprocess
import unittest

from support import CommandTest, element, position, uuid

USER, SYSTEM, INT, BASE, BOX, GET, PLACE, DECLARED_GET, PROJECT = (uuid(n) for n in range(1, 10))


METHODS = [element("types.Method", GET, Name="get", IsThisConst=True, DefPos=position(USER, 4, 9))]
MEMBERS = [element("types.Member", Name="size", Type=INT, DefPos=position(USER, 5, 9))]
KINDS = [element("types.EnumType", Name="Kind", DefPos=position(USER, 6, 10))]
SYMBOLS = [
    element("types.ClassType", BOX, Name="Box", DefPos=position(USER, 3, 7, PLACE), Members=MEMBERS, Methods=METHODS,
            BaseClasses=[element("types.BaseClass", Type=BASE)], Scope=element("Scope", Symbols=KINDS)),
    element("Function", DECLARED_GET, Name="get", DeclPos=[position(USER, 1, 5)],
            Params=[element("Variable", Name=f"p{n}", Type=INT) for n in range(12)]),
    element("Template", Name="Pair", DefPos=position(USER, 9, 1), Scope=element(
        "Scope", Symbols=[element("types.StructType", BASE, Name="Pair", DefPos=position(USER, 9, 2))])),
]
STD = [element("types.ClassType", Name="vector", DefPos=position(SYSTEM, 40, 3))]
ELEMENTS = [element(
    "Project",
    PROJECT,
    Files=[element("source.SourceFile", USER, Path="src/a.cpp"),
           element("source.SourceFile", SYSTEM, Path="/usr/include/vector", IsInclude=True, IsIncludedFromSystemIncludeDir=True)],
    Compilations=[element(
        "source.CompilationUnit",
        Macros=[element("Macro", Name="LIMIT")],
        Namespaces=[element("Namespace", Name="ns", Symbols=SYMBOLS), element("Namespace", Name="std", IsStd=True, Symbols=STD)],
        Symbols=[element("types.IntegerType", INT, Name="int")],
    )],
)]

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
        self.assertEqual(reply["results"][1], {
            "uuid": GET, "class": "types.Method", "name": "get", "qualifiedName": "ns::Box::get",
            "signature": "ns::Box::get(void) const", "file": "src/a.cpp", "line": 4, "column": 9})
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
        self.assert_refused((
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
        ), "find")

    def test_a_reader_that_has_seen_enough(self):
        reader, writer = os.pipe()
        os.close(reader)
        done = subprocess.run(
            [os.environ["ZELKOR"], "find", self.model], stdout=writer, stderr=subprocess.PIPE, check=False
        )
        os.close(writer)
        self.assertEqual((done.returncode, done.stderr), (-13, b""))


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
            ([PROJECT], ["Project", "  Files (2)", "    source.SourceFile src/a.cpp", "  Compilations (1)"]),
            ([PLACE], ["source.SourcePosition", "  File: source.SourceFile src/a.cpp", "  Line: 3", "  Col: 7"]),
            ([SYSTEM], ["  IsIncludedFromSystemIncludeDir: true"]),
            ([DECLARED_GET], ["  Params (12)", "    Variable int p9", "    and 2 more; --all lists them"]),
            ([DECLARED_GET, "--all"], ["    Variable int p11", "  IsInline: false", "  Scope: none", "  IsTemplate: false"]),
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
