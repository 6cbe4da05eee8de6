"""The headers that callers read: each accessor and builder setter says what the schema says of its property."""

import re
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "meta" / "generator"))
sys.dont_write_bytecode = True

import render  # noqa: E402
import schema as loader  # noqa: E402


def words(comment: str) -> str:
    return " ".join(line.strip().removeprefix("///").strip() for line in comment.splitlines())


class Headers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.out = Path(cls.folder.name)
        package = ["--package-class", "::zelkor::ast::P", "--package-header", "p.hpp"]
        status = render.main([str(ROOT / "meta" / "schema"), str(cls.out), "--root", "zelkor/ast", *package])
        assert status == 0
        cls.schema = loader.load(ROOT / "meta" / "schema")

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def header(self, c) -> str:
        return (self.out / "include" / render.declaration_header(c)).read_text()

    def comment_above(self, text: str, start: int) -> str:
        lines = text[:start].splitlines()
        above = []
        while lines and lines[-1].strip().startswith("///"):
            above.insert(0, lines.pop())
        return words("\n".join(above))

    def test_each_accessor_is_described(self):
        seen = 0
        for c in self.schema.classes:
            handle = self.header(c).split("class ZELKOR_API " + c.name + "::Impl ")[0]
            for p in c.properties:
                if p.pending:
                    continue
                with self.subTest(p.dotted):
                    getter = re.search(rf"^ *\[\[nodiscard\]\] .* {p.getter}\(\) const;", handle, re.M)
                    said = self.comment_above(handle, getter.start())
                    self.assertTrue(said.startswith(" ".join(p.doc.split())), said)
                    self.assertEqual("Default: " in said, p.kind == "attribute", said)
                    self.assertEqual("Owned: " in said, p.contained and p.stored and p.kind != "container_end", said)
                    self.assertEqual("Not owned." in said, p.stored and p.type.category == "class"
                                     and not p.contained and p.kind != "container_end", said)
                    if p.opposite:
                        self.assertIn(f"{p.opposite.owner.name}.{p.opposite.name}", said)
                    if p.kind in ("attribute", "reference", "container_end"):
                        setter = re.search(rf"^ *void {p.setter}\(", handle, re.M)
                        self.assertIn("CannotModifyProxy", self.comment_above(handle, setter.start()))
                    seen += 1
        self.assertGreater(seen, 200)

    def test_each_stored_property_but_lists_of_values_has_a_query_term(self):
        seen = 0
        for c in self.schema.classes:
            text = self.header(c)
            bodies = (self.out / "include" / c.header).read_text()
            terms = {p.term: p for p in c.all_properties if p.stored and p.kind != "many_attribute"}
            self.assertEqual(set(re.findall(r"^    static ::brant::zero::query::\S+ .*const& (\w+)\(\);", text, re.M)), set(terms))
            for name, p in terms.items():
                with self.subTest(p.dotted):
                    made = f", ::{c.native}, ::{p.owner.native}::Impl::table, {p.owner.properties.index(p)}>();"
                    self.assertTrue(re.search(rf"const& {c.name}::{name}\(\) {{\n    return .*{re.escape(made)}", bodies))
                    seen += 1
        self.assertGreater(seen, 500)

    def test_each_builder_setter_is_described(self):
        for c in self.schema.classes:
            text = self.header(c)
            for p in render.builder_fields(c.properties):
                with self.subTest(p.dotted):
                    name = p.setter if p.kind in ("attribute", "reference") else f"add{p.accessor}"
                    setter = re.search(rf"^    (template <class Sub>\n.*\n    )?B& {name}\(", text, re.M)
                    said = self.comment_above(text, setter.start())
                    self.assertTrue(said.startswith(" ".join(p.doc.split())), said)


if __name__ == "__main__":
    unittest.main()
