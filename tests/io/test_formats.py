"""Holds saved files against the JSON Schema and the XML Schema, and damaged ones, which must not pass.

    test_formats.py SAMPLES_PROGRAM FORMATS_DIR
"""

import copy
import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import jsonschema

samples_program, formats = sys.argv[1], Path(sys.argv[2])


def xmllint(path: Path) -> subprocess.CompletedProcess:
    command = ["xmllint", "--noout", "--nonet", "--schema", formats / "zelkor-ast.xsd", path]
    return subprocess.run(command, capture_output=True, text=True)


class SavedFiles(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        subprocess.run([samples_program, cls.folder.name], check=True)
        schema = json.loads((formats / "zelkor-ast.schema.json").read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        cls.validator = jsonschema.Draft202012Validator(schema)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def saved(self, ending: str) -> list[Path]:
        paths = sorted(Path(self.folder.name).glob("*." + ending))
        self.assertEqual([p.stem for p in paths], ["empty", "odd", "sample"])
        return paths

    def test_json_is_as_described(self):
        for path in self.saved("json"):
            with self.subTest(path.name):
                errors = list(self.validator.iter_errors(json.loads(path.read_text())))
                self.assertEqual([e.message for e in errors], [])

    def test_xml_is_as_described(self):
        for path in self.saved("xml"):
            with self.subTest(path.name):
                self.assertEqual(xmllint(path).stderr.strip(), f"{path} validates")

    def test_damaged_json_is_not(self):
        document = json.loads((Path(self.folder.name) / "odd.json").read_text())
        damages = {
            "other format": lambda d: d.update(format="x"),
            "other version": lambda d: d.update(version="2.0"),
            "unknown member": lambda d: d.update(more=1),
            "unknown class": lambda d: d["elements"][0].update({"class": "Scop"}),
            "abstract class": lambda d: d["elements"][0].update({"class": "Symbol"}),
            "no identity": lambda d: d["elements"][0].pop("uuid"),
            "bad identity": lambda d: d["elements"][0].update(uuid="x"),
            "unknown property": lambda d: d["elements"][0].update(Nmae="x"),
            "container end": lambda d: d["elements"][0].update(Parent=d["elements"][0]["uuid"]),
            "misfit": lambda d: d["elements"][0]["Symbols"].append({"class": "Scope", "uuid": d["elements"][0]["uuid"]}),
            "empty list": lambda d: d["elements"][0].update(Constants=[]),
            "wrong kind": lambda d: d["elements"][0]["Symbols"][0].update(IsInline="true"),
            "bad literal": lambda d: d["elements"][0]["Symbols"][0].update(SpecialKind="None of them"),
            "out of range": lambda d: d["elements"][0]["Symbols"][0].update(NumOptionalParams=-1),
        }
        for name, damage in damages.items():
            with self.subTest(name):
                damaged = copy.deepcopy(document)
                damage(damaged)
                self.assertFalse(self.validator.is_valid(damaged))

    def test_damaged_xml_is_not(self):
        text = (Path(self.folder.name) / "odd.xml").read_text()
        damages = {
            "other format": ('format="zelkor-ast"', 'format="x"'),
            "other version": ('version="1.0">', 'version="2.0">'),
            "unknown class": ("Variable", "Varible"),
            "no identity": ("<Variable uuid", "<Variable Name"),
            "unknown property": ('encoding="base64"', 'Encoding="base64"'),
            "misfit": ("<Variable ", "<Scope "),
            "empty list": ("</Symbols>", "</Symbols><Constants/>"),
            "container end": ("<Variable ", '<Variable OwningScope="x" '),
        }
        for name, (old, new) in damages.items():
            with self.subTest(name):
                self.assertIn(old, text)
                path = Path(self.folder.name) / "damaged"
                path.write_text(text.replace(old, new))
                self.assertIn("fails to validate", xmllint(path).stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
