"""The shipped schema as it must be, and the mistakes that its loader must not let through."""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
GENERATOR = ROOT / "meta" / "generator"
SCHEMA = ROOT / "meta" / "schema"
sys.path.insert(0, str(GENERATOR))
sys.dont_write_bytecode = True

import schema as loader  # noqa: E402
from schema_model import Property  # noqa: E402

class ShippedSchema(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.schema = loader.load(SCHEMA)

    def property(self, dotted):
        return next(p for p in self.schema.of(Property) if p.dotted == dotted)

    def test_indices_run_along_the_chain_without_gap(self):
        for c in self.schema.classes:
            stored = [p.index for p in c.all_properties if p.stored]
            self.assertEqual(stored, list(range(1, c.count)), c.name)

    def test_opposites_come_in_pairs_of_owner_and_owned(self):
        ends = [p for p in self.schema.of(Property) if p.opposite]
        self.assertGreater(len(ends), 10)
        for p in ends:
            self.assertIs(p.opposite.opposite, p)
            self.assertEqual({p.kind, p.opposite.kind} & {"container_end"}, {"container_end"}, p.dotted)

    def test_identities_never_change(self):
        identities = {x.dotted: x.identity for x in self.schema.creation_order()}
        self.assertEqual(len(set(identities.values())), 531)
        for dotted, identity in {
            "zelkor.ast": "69b5eb5a-4646-36bf-8b6d-2897ffe1d7a7",
            "zelkor.ast.Function": "faa096e5-0551-3b5a-9f8a-25342c30e00e",
            "zelkor.ast.Function.Params": "bcae6aa0-276e-3ade-b728-17809c4d850d",
            "zelkor.ast.LinkageKind.ExternalCXX": "03526c76-3ad4-3708-ad8b-eb00447e4ae3",
            "zelkor.ast.types.Type.generateTypeName": "c67694a2-690b-3762-a85e-191ae3dc89e4",
            "zelkor.ast.types.Type.generateTypeName.symName": "d44aaa29-e728-37ce-b9ee-6be46e8a2d7e",
        }.items():
            self.assertEqual(identities[dotted], identity, dotted)

    def test_names(self):
        c = self.schema.type("PointerType")
        self.assertEqual(c.native, "zelkor::ast::types::PointerType")
        self.assertEqual(c.script, "internal.zelkor.ast.types.PointerType")
        self.assertEqual(c.header, "zelkor/ast/types/PointerType.hpp")
        self.assertEqual(c.short, "types.PointerType")
        self.assertEqual(self.schema.type("Function").short, "Function")
        self.assertEqual(c.package.uri, "http://schema.zelkor.example/brant0/zelkor_ast/K7a/zelkor.ast.types")
        pack = self.property("zelkor.ast.types.TemplateParamType.isPack")
        self.assertEqual((pack.getter, pack.setter, pack.term), ("getIsPack", "setIsPack", "isPack"))
        scope = [p.term for p in self.schema.type("Scope").query_terms]
        self.assertTrue("owningFun" in scope and "types" not in scope)
        self.assertFalse(self.schema.pending)
        primitives = {p.name: " ".join(t.name for t in p.extended_primitives) for p in self.schema.packages}
        self.assertEqual(primitives["constants"], "Integer64 StdString UInteger64")
        self.assertEqual((primitives["ast"], primitives["types"]), ("StdString", "StdString"))

    def test_a_loaded_schema_cannot_be_changed(self):
        with self.assertRaises(AttributeError):
            self.schema.type("Function").name = "Other"

    def test_every_chapter_can_be_read_in_one_sitting(self):
        for chapter in SCHEMA.rglob("*.toml"):
            self.assertLess(len(chapter.read_text().splitlines()), 300, chapter)

    def test_as_a_program(self):
        run = [sys.executable, GENERATOR / "schema.py"]
        counts = subprocess.run([*run, SCHEMA, "--counts"], capture_output=True, text=True, check=True).stdout
        self.assertIn("  531 meta objects\n", counts)
        dump = json.loads(subprocess.run([*run, SCHEMA, "--json"], capture_output=True, check=True).stdout)
        self.assertEqual(len(dump["classes"]), 72)
        with tempfile.TemporaryDirectory() as empty:
            failed = subprocess.run([*run, empty], capture_output=True, text=True)
            self.assertEqual((failed.returncode, failed.stdout), (1, ""))
            self.assertIn("packages.toml", failed.stderr)


PACKAGES = """
uri_root = "http://example"
identity_namespace = "421c82bd-12ca-3c23-81ea-2e50240419af"
script_prefix = "internal"
short_names_in = "p"
[root]
identity = "421ee655-3ad0-3c27-9572-732300ed0238"
path = "/root"
imports = "/kernel"
[packages.p]
doc = "A package."
"""

CHAPTER = """
package = "p"
[classes.Owner]
base = "ModelElement"
identity = "11111111-1111-3111-8111-111111111111"
doc = "Owns items."
[classes.Owner.properties]
Items = { type = "Item", many = true, contained = true, unique = true, opposite = "Owner", doc = "Owned." }
Named = { type = "Item", keyed_by = "Name", contained = true, unordered = true, doc = "By name." }
Count = { type = "Integer", derived = true, read_only = true, pending = true, doc = "How many." }
[classes.Owner.properties.Parts]
type = "Part"
many = true
contained = true
unordered = true
derived = true
view_of = "Items"
doc = "Some."
[classes.Owner.operations]
find = { returns = "Item", lower = 0, upper = 9, args = [
    { name = "name", type = "String", doc = "Which." },
], pending = true, doc = "Finds." }
[classes.Item]
base = "ModelElement"
identity = "22222222-2222-3222-8222-222222222222"
doc = "An item."
[classes.Item.properties]
Owner = { type = "Owner", opposite = "Items", doc = "Owner." }
Name = { type = "String", default_none = true, doc = "Name." }
Size = { type = "UnlimitedNatural", default = "0", doc = "Size." }
Color = { type = "Hue", default = "Red", doc = "Color." }
[classes.Part]
base = "Item"
identity = "33333333-3333-3333-8333-333333333333"
doc = "Some item."
[datatypes.Options]
identity = "44444444-4444-3444-8444-444444444444"
doc = "Options."
[datatypes.Options.properties]
Deep = { type = "Boolean", default = "true", doc = "Deep." }
[enums.Hue]
identity = "55555555-5555-3555-8555-555555555555"
doc = "Hues."
[enums.Hue.literals]
Red = 1
Blue = { value = 2, doc = "The sky." }
"""


def load_text(chapter, packages=PACKAGES, **more):
    with tempfile.TemporaryDirectory() as folder:
        files = {"packages": packages, "chapter": chapter, **more}
        for name, text in files.items():
            (Path(folder) / f"{name}.toml").write_text(text, encoding="utf-8")
        return loader.load(folder)


SIZE = 'Size = { type = "UnlimitedNatural", default = "0", doc = "Size." }'
ITEM = 'type = "Item", many = true, contained = true, unique = true, opposite = "Owner"'
NAMED = 'Named = { type = "Item", keyed_by = "Name", contained = true, unordered = true, doc = "By name." }'
VIEW = 'derived = true\nview_of = "Items"'
COUNT = 'Count = { type = "Integer", derived = true, read_only = true, pending = true, doc = "How many." }'

# What is replaced in the chapter above, by what, and a part of the message that must follow.
BROKEN = (
    # keys
    ("contained = true, unique", "contaned = true, unique",
     "Items.contaned: there is no key 'contaned'; did you mean 'contained'?"),
    ('doc = "Owns items."', 'doc = "Owns items."\nabstrakt = true',
     "classes.Owner.abstrakt: there is no key 'abstrakt'; did you mean"),
    ("[classes.Item]", "[klasses.Item]", "there is no key 'klasses'; did you mean 'classes'?"),
    ('lower = 0, upper = 9', 'lowest = 0, upper = 9', "find.lowest: there is no key 'lowest'; did you mean 'lower'?"),
    ('type = "String", doc = "Which."', 'typ = "String", doc = "Which."', "find.args.0.typ: there is no key"),
    ('default = "true", doc = "Deep."', 'many = true, doc = "Deep."', "Deep.many: there is no key 'many'"),
    ('value = 2, doc', 'number = 2, doc', "literals.Blue: the key 'value' is missing"),
    ('base = "Item"\n', "", "classes.Part: the key 'base' is missing"),
    (', doc = "Size."', "", "Item.properties.Size: the key 'doc' is missing"),
    ('doc = "Size."', 'doc = " "', "Size.doc: the text is empty"),
    (ITEM, ITEM.replace("many = true", 'many = "yes"'), "Items.many: expected true, or no such key"),
    (ITEM, ITEM.replace("many = true", "many = false"), "Items.many: expected true, or no such key"),
    ('default = "0"', "default = 0", "Size.default: expected a string"),
    ("Red = 1", "Red = true", "literals.Red: expected a table"),
    ("upper = 9", "upper = true", "find.upper: expected an integer"),
    ('package = "p"', 'package = "q"', "package: there is no package 'q'"),
    ("Red = 1", "Red = 1\nRed = 2", "chapter.toml:46: Cannot overwrite a value"),
    # types and names
    ('base = "Item"', 'base = "Itm"', "Part.base: there is no class 'Itm'; did you mean 'Item'?"),
    ('base = "Item"', 'base = "Hue"', "Part.base: there is no class 'Hue'"),
    ('base = "Item"', 'base = "Item"\nscript_methods = ["fnd"]', "Part.script_methods: there is no operation of Part"),
    ('base = "ModelElement"\nidentity = "2', 'base = "Part"\nidentity = "2', "runs in a circle"),
    ('type = "UnlimitedNatural"', 'type = "UnlimitedNaturel"', "did you mean 'UnlimitedNatural'?"),
    ('type = "UnlimitedNatural"', 'type = "Model"', "Size.type: there is no type 'Model'"),
    ('returns = "Item"', 'returns = "Itm"', "find.returns: there is no type 'Itm'"),
    ('type = "String", doc = "Which."', 'type = "Sting", doc = "Which."', "find.args.0.type: there is no type 'Sting'"),
    ("Size =", "owner =", "owner: its accessors are those of Item.Owner"),
    ("[enums.Hue]", "[enums.Item]", "enums.Item: chapter.toml:23 declares 'Item' already"),
    ("[enums.Hue]", "[enums.Boolean]", "'Boolean' is the name of a primitive type"),
    ("Size =", "Default =", "Default: its query term would be the C++ keyword 'default'"),
    ("Red = 1", "new = 1", "'new' is a C++ keyword"),
    ('name = "name"', 'name = "class"', "find.args.0: 'class' is a C++ keyword"),
    ("Size =", '"Sub-Size" =', "'Sub-Size' is no identifier"),
    ("Size =", "Sub__Size =", "'Sub__Size' is no identifier"),
    ("find =", "getCount =", "getCount: it has the name of an accessor of Owner.Count"),
    ('"22222222-2222-3222-8222-222222222222"', '"1234"', "'1234' is no version-3 UUID"),
    ('"22222222-2222-3222-8222-222222222222"', '"22222222-2222-4222-8222-222222222222"', "is no version-3 UUID"),
    ('"22222222-2222-3222-8222-222222222222"', '"AAAAAAAA-2222-3222-8222-222222222222"', "in lower-case form"),
    ('"22222222-2222-3222-8222-222222222222"', '"11111111-1111-3111-8111-111111111111"',
     "already the identity of p.Owner"),
    # defaults
    ('default = "0"', 'default = "-1"', "'-1' is no value of UnlimitedNatural, which go from 0 to 4294967295"),
    ('default = "0"', 'default = "4294967296"', "is no value of UnlimitedNatural"),
    ('default = "0"', 'default = "08"', "'08' is no value of UnlimitedNatural"),
    ('default = "true"', 'default = "True"', "'True' is no value of Boolean, which are true and false"),
    ('default = "Red"', 'default = "Rad"', "there is no literal of Hue 'Rad'; did you mean 'Red'?"),
    ('default = "Red", ', "", "Color.type: it needs a default literal"),
    ('default = "Red"', "default_none = true", "Color.type: it needs a default literal"),
    ('default = "0"', 'default = "0", default_none = true', "a default cannot stand beside default_none"),
    (ITEM, ITEM.replace("many", 'default = "0", many'), "only a stored single attribute has a default"),
    (COUNT, COUNT.replace("derived", 'default = "0", derived'), "only a stored single attribute has a default"),
    # opposites, keys, views, flags
    ('opposite = "Items", ', "", "Items.opposite: Item.Owner does not name Owner.Items as its opposite"),
    ('opposite = "Items"', 'opposite = "Itms"', "there is no property of Owner 'Itms'; did you mean 'Items'?"),
    ('opposite = "Items"', 'opposite = "Items", contained = true', "exactly one of two opposites is contained"),
    ('opposite = "Items"', 'opposite = "Items", many = true', "the end that names the container is single"),
    ('keyed_by = "Name"', 'keyed_by = "Nam"', "there is no property of Item 'Nam'; did you mean 'Name'?"),
    ('keyed_by = "Name"', 'keyed_by = "Size"', "Item.Size is no single String attribute"),
    (NAMED, NAMED.replace("unordered = true, ", ""), "a map has no order"),
    (NAMED, NAMED.replace("keyed_by", "many = true, keyed_by"), "Named.many: keyed_by says so already"),
    (ITEM, ITEM.replace("unique", "unordered = true, unique"), "only maps and views have none"),
    ('opposite = "Items"', 'opposite = "Items", unique = true', "only a collection (many = true) can be unique"),
    (VIEW, VIEW.replace("derived = true", ""), "a view is derived, many, contained and unordered"),
    (VIEW, VIEW.replace("Items", "Count"), "Count is no stored collection of references"),
    ('type = "Part"', 'type = "Owner"', "Items holds Item; Owner is no subclass of it"),
    (VIEW, VIEW + "\npending = true", "only a computed property waits for a body"),
    (COUNT, COUNT.replace("read_only = true, ", ""), "without view_of it must be read_only too"),
    (COUNT, COUNT.replace("derived = true, ", ""), "only derived properties are read-only"),
    (SIZE, SIZE.replace("default", "contained = true, default"), "only references to classes contain"),
    (SIZE, SIZE.replace("default", "transient = true, default"), "only derived properties are transient"),
    (COUNT, COUNT.replace("read_only", "custom_setter = true, read_only"), "a derived property has no setter"),
    (SIZE, 'Size = { type = "Options", doc = "Size." }', "a value type cannot be the type of a property"),
    ('type = "Boolean", default = "true"', 'type = "Item"', "a field of a value type is no reference"),
    # operations and enumerations
    ("upper = 9", "upper = 9, abstract = true", "find: it is abstract, and Owner is no abstract class"),
    ("upper = 9", "upper = 9, abstract = true, static = true", "a static operation cannot be abstract"),
    ("lower = 0, upper = 9", "lower = 3, upper = 2", "3..2 are no bounds"),
    ("upper = 9, ", "", "a single result has the bounds 1..1"),
    ('returns = "Item"', 'returns = "Integer"', "only elements are returned as a list"),
    ('doc = "Which." },', 'doc = "Which." },\n{ name = "name", type = "Real", doc = "x" },', "'name' is there twice"),
    ("Blue = { value = 2", "Blue = { value = 1", "1 is already the value of 'Red'"),
    ("Red = 1", "Red = 2147483648", "2147483648 does not fit into 32 bits"),
)


class Mistakes(unittest.TestCase):
    def assert_fails(self, fragment, *arguments, **more):
        with self.assertRaises(loader.SchemaError) as caught:
            load_text(*arguments, **more)
        self.assertIn(fragment, str(caught.exception))
        return caught.exception.messages

    def test_the_sound_schema_loads(self):
        schema = load_text(CHAPTER)
        kinds = " ".join(f"{p.name}:{p.kind}" for p in schema.type("Owner").properties)
        self.assertEqual(kinds, "Items:many_reference Named:map Count:derived Parts:view")
        literals = [(x.name, x.value, x.doc) for x in schema.type("Hue").literals]
        self.assertEqual(literals, [("Red", 1, ""), ("Blue", 2, "The sky.")])

    def test_each_mistake_is_told(self):
        for old, new, fragment in BROKEN:
            with self.subTest(new):
                self.assertEqual(CHAPTER.count(old), 1, "the row must change one place")
                self.assert_fails(fragment, CHAPTER.replace(old, new))

    def test_all_mistakes_are_told_at_once_with_file_and_line(self):
        broken = CHAPTER.replace('type = "UnlimitedNatural"', 'type = "Nat"')
        broken = broken.replace("Red = 1", "Red = 1\nRad = 1")
        second = """package = "p"
[enums.Empty]
identity = "66666666-6666-3666-8666-666666666666"
doc = "x"
literals = {}
"""
        messages = self.assert_fails("", broken, second=second)
        self.assertEqual(
            messages,
            (
                "chapter.toml:30: classes.Item.properties.Size.type: there is no type 'Nat'",
                "chapter.toml:46: enums.Hue.literals.Rad: 1 is already the value of 'Red'",
                "second.toml:2: enums.Empty: an enumeration needs at least one literal",
            ),
        )

    def test_packages(self):
        for old, new, fragment in (
            ("[packages.p]", '[packages."p.q"]', "the package 'p' must be listed before 'p.q'"),
            ('doc = "A', 'dok = "A', "packages.p.dok: there is no key 'dok'; did you mean 'doc'?"),
            ("421c82bd-", "", "identity_namespace: expected a UUID"),
            ('imports = "/kernel"', "", "root: the key 'imports' is missing"),
            ("421ee655-3ad0-3", "421ee655-3ad0-4", "root.identity: "),
            ("[root]", "[root", "packages.toml:6: "),
        ):
            with self.subTest(new):
                self.assert_fails(fragment, CHAPTER, PACKAGES.replace(old, new))

    def test_more_indices_than_fit_one_word(self):
        def with_flags(count):
            rows = [f'P{n} = {{ type = "Boolean", default = "false", doc = "x" }}' for n in range(count)]
            return CHAPTER.replace(SIZE, "\n".join(rows))

        self.assertEqual(load_text(with_flags(58)).type("Part").count, 62)
        messages = self.assert_fails("63 indices along the chain", with_flags(59))
        self.assertEqual(len(messages), 2, "the class and its subclass")

    def test_a_repeated_operation_must_be_static(self):
        def twice(first, second):
            make = '[classes.{}.operations]\nmake = {{ returns = "Item", {}doc = "x" }}\n'
            return CHAPTER + make.format("Item", first) + make.format("Part", second)

        static = "static = true, "
        schema = load_text(twice(static, static))
        owners = [op.owner.name for op in schema.type("Part").all_operations]
        self.assertEqual(owners, ["Part"])
        for first, second in (("", static), (static, ""), ("", "")):
            with self.subTest((first, second)):
                self.assert_fails("make: Item declares it; only static ones", twice(first, second))


if __name__ == "__main__":
    unittest.main()
