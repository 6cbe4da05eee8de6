"""The verbs that look a name up: what they print, how they find it, what they say when it is not there.

Run with the path of the command in ZELKOR.
"""

import json
import os
import subprocess
import unittest

from support import CommandTest, element, uuid

INT, SIZE, LIMITS, FUN, FUN_TYPE, OTHER = (uuid(n) for n in range(1, 7))

FUNCTION = element("Function", FUN, Name="length", Type=FUN_TYPE, Params=[element("Variable", Name="n", Type=SIZE)])
NS = [FUNCTION, element("types.TypedefType", SIZE, Name="size", Type=INT), element("Template", LIMITS, Name="limits")]
IO = [element("Variable", OTHER, Name="length", Type=SIZE)]
ELEMENTS = [element(
    "source.CompilationUnit",
    Namespaces=[element("Namespace", Name="ns", Symbols=NS), element("Namespace", Name="io", Symbols=IO)],
    Symbols=[element("types.IntegerType", INT, Name="int"),
             element("types.FunctionType", FUN_TYPE, RetType=INT, ParamTypes=[SIZE]),
             element("Variable", Name="limits", Type=INT)],
)]


class NamesTest(CommandTest):
    elements = ELEMENTS

    def test_what_is_printed(self):
        for words, expected in (
            (["signature", "ns::length"], "int ns::length(ns::size n)\n"),
            (["signature", "length"], "int ns::length(ns::size n)\nns::size length\n"),
            (["signature", FUN.upper()], "int ns::length(ns::size n)\n"),
            (["signature", "ns::limits"], "ns::limits<#UnknownTemplateArgList#>\n"),
            (["signature", "size"], "ns::size\n"),
            (["signature", "limits"], "int limits\n"),
            (["type", OTHER], "ns::size length\n"),
            (["type", "--skip-typedefs", OTHER], "int length\n"),
            (["type", "--declare", "x", "ns::size"], "ns::size x\n"),
            (["type", "--declare=", OTHER], "ns::size\n"),
            (["type", "ns::length"], "int /* FunctionType */ (ns::size)\n"),
        ):
            verb, *rest = words
            with self.subTest(words=words):
                *options, name = rest
                self.assertEqual(self.run_command(verb, *options, self.model, name), (0, expected, ""))

    def test_names_that_are_not_there(self):
        for name, near in (
            ("lenght", ["length"]),
            ("ns::lengt", ["ns::length", "io::length"]),
            ("limit", ["limits"]),
            (uuid(999), []),
            ("nothing_like_this_at_all", []),
        ):
            with self.subTest(name=name):
                code, out, err = self.run_command("type", self.model, name)
                self.assertEqual((code, out), (1, ""))
                first, *rest = err.splitlines()
                self.assertIn(f"'{name}'", first)
                self.assertEqual([line.strip() for line in rest], near)

    def test_wrong_use(self):
        self.assert_refused((
            (["type", self.model], "missing argument: NAME|UUID"),
            (["type", self.model, "ns"], "'ns' is a Namespace and has no type"),
            (["signature", self.model, "ns"], "'ns' is a Namespace and has no signature"),
            (["type", "--skip", self.model, "x"], "unknown option '--skip'"),
            (["type", self.path("none.json"), "x"], "none.json"),
        ))

    def test_bytes_that_are_no_text(self):
        odd = self.path("odd.xml")
        code, _, err = self.run_command("convert", self.model, odd)
        self.assertEqual((code, err), (0, ""))
        with open(odd, encoding="utf-8") as file:
            text = file.read()
        with open(odd, "w", encoding="utf-8") as file:
            file.write(text.replace('Name="limits"', 'Name="l&quot;\N{LATIN SMALL LETTER E WITH ACUTE}"'))
        code, out, _ = self.run_command("signature", "--json", odd, LIMITS)
        self.assertEqual(code, 0)
        self.assertEqual(json.loads(out)["results"][0]["name"], 'l"\N{LATIN SMALL LETTER E WITH ACUTE}')

    def test_the_content_tells_the_format(self):
        for text, name, code, said in (
            ('\n <model format="zelkor-ast" version="1.0"/>', "a.json", 1, "there is no 'x'"),
            ('{"format":"zelkor-ast","version":"1.0","elements":[]}', "a.xml", 1, "there is no 'x'"),
            ("", "a.xml", 2, "expected <model>"),
            ("[]", "a.xml", 2, "a.xml:1:1: error: the text is no model; expected an object\nzelkor: the model cannot be read; make"),
        ):
            with self.subTest(text=text):
                with open(self.path(name), "w", encoding="utf-8") as file:
                    file.write(text)
                result, out, err = self.run_command("show", self.path(name), "x")
                self.assertEqual((result, out), (code, ""))
                self.assertIn(said, err)
                with open(self.path(name), encoding="utf-8") as file:
                    done = subprocess.run([os.environ["ZELKOR"], "show", "-", "x"], stdin=file, capture_output=True, text=True,
                                          check=False)
                self.assertEqual((done.returncode, "<string>" in done.stderr), (code, False))


if __name__ == "__main__":
    unittest.main()
