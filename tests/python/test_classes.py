"""A walk over every class, property, method and literal, against the library's own description."""

import ast as syntax
import enum
import pathlib
import re
import sys
import unittest

import zelkor
from support import OUTSIDE, chain, concrete, make, meta_classes, package_path, python_class, samples
from zelkor import errors, meta
from zelkor._core import messages
from zelkor.ast import Function

PACKAGE = pathlib.Path(zelkor.__file__).parent


def snake(name):
    """The documented rule, written once more."""
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).lower()


class DescriptionTest(unittest.TestCase):
    def test_every_described_type_is_a_python_class(self):
        kinds = {meta.Class: 0, meta.Enum: 0, meta.DataType: 0}
        for described in meta_classes():
            kinds[type(described)] += 1
            cls = python_class(described)
            self.assertEqual(cls.__module__, ".".join(["zelkor", *package_path(described.owning_package)]))
            self.assertEqual(cls.__name__, described.name)
            self.assertTrue(cls.__doc__)
            if isinstance(described, meta.Class):
                self.assertEqual(cls.static_meta_class(), described)
                base = zelkor.ModelElement if not described.superclass.properties and described.superclass.name == (
                    "ModelElement") else python_class(described.superclass)
                self.assertIs(cls.__base__, base)
            elif isinstance(described, meta.Enum):
                self.assertTrue(issubclass(cls, enum.IntEnum))
                self.assertEqual({one.name.rstrip("_"): int(one) for one in cls},
                                 {one.name: one.value for one in described.literals})
        self.assertEqual(list(kinds.values()), [72, 14, 1])

    def test_every_property_has_both_names_and_help(self):
        for described in meta_classes():
            if not isinstance(described, meta.Class):
                continue
            cls = python_class(described)
            for prop in described.properties:
                own = vars(cls)[prop.name]
                self.assertIs(vars(cls)[snake(prop.name)], own)
                self.assertTrue(own.__doc__, prop.name)

    def test_classes_cannot_be_derived_from_nor_abstract_ones_made(self):
        with self.assertRaises(TypeError):
            type("Mine", (Function,), {})
        model = zelkor.Model()
        for described in meta_classes():
            if isinstance(described, meta.Class) and described.is_abstract:
                with self.assertRaises(errors.CannotInstantiate):
                    python_class(described)(model)
        self.assertEqual(len(model), 0)


    def test_the_description_cannot_be_changed(self):
        described = Function.static_meta_class()
        for wrong in (lambda: setattr(described, "name", "x"), lambda: described.properties.clear(), described.destroy,
                      lambda: described.properties.pop(), lambda: described.create_into_properties(name="x"),
                      lambda: meta.Property(described), lambda: setattr(described, "properties", [])):
            with self.assertRaises(errors.NotAllowed):
                wrong()
        self.assertEqual((described.name, described.properties[0].name), ("Function", "BodyPosition"))


class PropertyTest(unittest.TestCase):
    """Sets what can be set, reads it back, and looks at the whole graph in between."""

    def walk(self):
        for described in meta_classes():
            if isinstance(described, meta.Class) and not described.is_abstract:
                yield described, python_class(described)

    def test_every_property_of_every_class(self):
        model = zelkor.Model()
        count = 0
        for described, cls in self.walk():
            for prop in chain(described):
                with self.subTest(f"{described.name}.{prop.name}"):
                    count += 1
                    self.check(make(cls, model), prop, model)
        self.assertGreater(count, 500)
        self.assertIsNone(model.verify())
        self.assertEqual(zelkor.loads(model.dumps()).dumps(), model.dumps())

    def check(self, element, prop, model):
        name = snake(prop.name)
        if prop.is_derived:
            getattr(element, name)
            with self.assertRaises(errors.CannotSetReadOnlyProperty):
                setattr(element, name, [])
            return
        values = samples(None, prop, model)
        if prop.multiplicity != 1:
            members = [given for given, _ in values]
            setattr(element, name, members)
            expected = [read for _, read in values]
            found = getattr(element, prop.name)
            self.assertEqual(sorted(map(repr, found)), sorted(map(repr, expected)))
            setattr(element, name, [])
            self.assertEqual(len(getattr(element, name)), 0)
            return
        for given, read in values:
            setattr(element, name, given)
            self.assertEqual(getattr(element, prop.name), read)
            self.assertIs(type(getattr(element, name)), type(read))
        if isinstance(prop.type, meta.Class):
            setattr(element, name, None)
            self.assertIsNone(getattr(element, name))

    def test_what_does_not_fit_is_refused_and_changes_nothing(self):
        model = zelkor.Model()
        for described, cls in self.walk():
            element = make(cls, model)
            for prop in described.properties:
                if prop.is_derived:
                    continue
                name = snake(prop.name)
                bad = [[object()], [None], [make(cls, zelkor.Model())]]
                if prop.multiplicity == 1:
                    bad = [b[0] for b in bad if b[0] is not None or not isinstance(prop.type, meta.Class)]
                    bad += OUTSIDE.get(prop.type.name, ["nonsense", 12345])
                before = model.dumps()
                for value in bad:
                    with self.subTest(f"{described.name}.{prop.name} = {value!r}"):
                        with self.assertRaises(zelkor.Error) as found:
                            setattr(element, name, value)
                    self.assertTrue(found.exception.catalogue and found.exception.id)
                self.assertEqual(model.dumps(), before)
                with self.assertRaises(errors.NotDeletable):
                    delattr(element, name)


class MethodTest(unittest.TestCase):
    def test_every_method_answers_or_refuses(self):
        model = zelkor.Model()
        answered = refused = created = 0
        for described in meta_classes():
            if not isinstance(described, meta.Class):
                continue
            cls = python_class(described)
            for name, method in vars(cls).items():
                if type(method).__name__ != "Method":
                    continue
                element = make(cls, model)
                with self.subTest(f"{described.name}.{name}"):
                    self.assertIn(snake(name), repr(method))
                    try:
                        result = getattr(element, name)()
                        answered += 1
                    except zelkor.Error as error:
                        self.assertTrue(error.catalogue and error.id, repr(error))
                        refused += 1
                        continue
                    if snake(name).startswith("create_into_"):
                        created += 1
                        self.assertEqual(result.container, element)
                        self.assertEqual("create_into_" + result.containment_feature, snake(name))
        self.assertGreater(answered, 250)
        self.assertGreater(created, 60)
        self.assertGreater(refused, 20)
        self.assertIsNone(model.verify())

    def test_arguments(self):
        from zelkor.ast import FinderOptions, NameFinderKind, TemplateArg
        from zelkor.ast.constants import Constant, IntegerConstant
        from zelkor.ast.types import PointerType, Type, VoidType

        model = zelkor.Model()
        self.assertEqual(IntegerConstant.from_signed_integer(model, -5).get_signed_integer(), -5)
        self.assertEqual(Constant.from_unsigned_integer(model, 2**64 - 1).get_unsigned_integer(), 2**64 - 1)
        self.assertEqual(Constant.from_double(model, 0.5).get_double(), 0.5)
        pointer = PointerType(model, type=VoidType(model, name="void"))
        self.assertEqual(Type.generate_type_name(pointer, sym_name="p", skip_typedefs=False), "void * p")
        self.assertEqual(Type.skip_typedefs(pointer), pointer)
        self.assertEqual(TemplateArg(model, kind="Type", type=pointer).get_fully_qualified_name(prev_is_pack=False),
                         "void *")
        options = FinderOptions(include_system_headers=True, name_resolution_strategy="Name")
        self.assertEqual(options.name_resolution_strategy, NameFinderKind.Name)
        self.assertNotEqual(options, FinderOptions())
        self.assertTrue(FinderOptions() == FinderOptions())
        function = Function(model, name="f")
        self.assertEqual(function.create_into_params({"Name": "a"}).name, "a")
        given = function.create_into_params(name="b", uuid="00000000-0000-4000-8000-000000000001")
        self.assertEqual((given.name, str(given.uuid)), ("b", "00000000-0000-4000-8000-000000000001"))
        for call in (lambda: function.create_into_params(nme="x"), lambda: function.generate_signature(1),
                     lambda: function.generate_signature(x=1), lambda: Function.generate_signature(),
                     lambda: Function.generate_signature(pointer), lambda: Type.skip_typedefs(5)):
            with self.assertRaises((zelkor.Error, TypeError)):
                call()
        self.assertEqual([p.name for p in function.params], ["a", "b"])


class StubTest(unittest.TestCase):
    """The stubs and the classes tell the same names, and the errors cover all messages."""

    def declared(self, module):
        path = PACKAGE.joinpath(*module.__name__.split(".")[1:], "__init__.pyi")
        for node in syntax.parse(path.read_text(encoding="utf-8")).body:
            if isinstance(node, syntax.ClassDef):
                names = {n.target.id for n in node.body if isinstance(n, syntax.AnnAssign)}
                names |= {n.name for n in node.body if isinstance(n, syntax.FunctionDef)}
                names |= {n.targets[0].id for n in node.body if isinstance(n, syntax.Assign)}
                yield node.name, {name for name in names if not name.startswith("__")}

    def test_names(self):
        for module in [m for name, m in sys.modules.items() if name.startswith(("zelkor.ast", "zelkor.meta"))]:
            stubs = dict(self.declared(module))
            self.assertEqual(set(stubs), set(module.__all__))
            for name, names in stubs.items():
                cls = getattr(module, name)
                own = {n for n in vars(cls) if not n.startswith("_")}
                inherited = {n for base in cls.__mro__[1:-1] for n in dir(base)}
                self.assertLessEqual(names, own, name)
                self.assertLessEqual(own - names, inherited, name)

    def test_every_message_has_a_class(self):
        for catalogue, name in messages():
            error = errors.make(catalogue, name, "text", (1,))
            self.assertIs(type(error), getattr(errors, name))
            self.assertEqual((str(error).strip("'"), error.catalogue, error.id, error.arguments),
                             ("text", catalogue, name, (1,)))


if __name__ == "__main__":
    unittest.main()
