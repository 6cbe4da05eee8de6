"""Queries against comprehensions over a random model; search; finding by name."""

import random
import re
import unittest

import zelkor
from zelkor import errors
from zelkor.ast import Declaration, FinderOptions, Function, LinkageKind, Namespace, Project, Symbol, Variable
from zelkor.ast.source import CompilationUnit, LocatedObject, SourceFile, SourcePosition
from zelkor.ast.types import FunctionType, IntegerType, PointerType, Type, VoidType


def random_model(seed):
    model = zelkor.Model()
    unit = CompilationUnit()
    Project(model, compilations=[unit], files=[SourceFile(path=f"dir/{n}.h") for n in "abc"])
    files = list(unit.owning_project.files)
    types = [VoidType(name="void"), IntegerType(name="int", num_bits=32)]
    types += [PointerType(type=t) for t in types] + [FunctionType(ret_type=t) for t in types]
    unit.symbols.extend(types)
    spaces = [unit]
    for i in range(12):
        parent = seed.choice(spaces)
        parent.namespaces.append(Namespace(name=f"n{i % 4}"))
        spaces.append(parent.namespaces[-1])
    for i in range(300):
        name = seed.choice(["get", "set", "x", "ünï", ""]) + str(seed.randrange(12))
        seed.choice(spaces).symbols.append(Function(
            name=name, is_inline=seed.random() < 0.5, type=seed.choice([*types[4:], None]),
            num_optional_params=seed.randrange(5), linkage=seed.choice(list(LinkageKind)),
            params=[Variable(name=f"p{k}", type=seed.choice([*types, None])) for k in range(seed.randrange(4))],
            **({} if seed.random() < 0.3 else
               {"def_pos": SourcePosition(file=seed.choice(files), line=seed.randrange(1, 9), col=1)})))
    return model, unit, types


class QueryTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.model, cls.unit, cls.types = random_model(random.Random(11))
        cls.functions = list(cls.model.query(Function))

    def conditions(self):
        F, V, P = Function, Variable, SourcePosition
        void, integer, pointer = self.types[:3]

        def line(f):
            return f.def_pos.line if f.def_pos else None

        return [
            (F.name == "get1", lambda f: f.name == "get1"),
            (F.Name != "get1", lambda f: f.name != "get1"),
            (F.name < "n", lambda f: f.name.encode() < b"n"),
            (F.name.startswith("ü"), lambda f: f.name.startswith("ü")),
            (F.name.endswith("2") | F.name.contains("et"), lambda f: f.name.endswith("2") or "et" in f.name),
            (F.name.matches("[gs]et[0-3]"), lambda f: f.name[:3] in ("get", "set") and f.name[3:] in "0123"),
            (F.is_inline == True, lambda f: f.is_inline),
            (F.num_optional_params >= 3, lambda f: f.num_optional_params >= 3),
            (F.num_optional_params > -1, lambda f: True),
            (F.num_optional_params < 1.5, lambda f: f.num_optional_params < 1.5),
            (F.num_optional_params != 2**64 - 1, lambda f: True),
            (F.linkage == "External", lambda f: f.linkage == LinkageKind.External),
            (F.linkage != LinkageKind.None_, lambda f: f.linkage != LinkageKind.None_),
            (F.type == self.types[4], lambda f: f.type == self.types[4]),
            (F.type != None, lambda f: f.type is not None),
            (F.type.is_null(), lambda f: f.type is None),
            (F.type.is_(Type), lambda f: f.type is not None),
            (F.type.as_(FunctionType).ret_type.name == "int", lambda f: f.type and f.type.ret_type.name == "int"),
            (F.type.as_(FunctionType).ret_type.is_exactly(VoidType),
             lambda f: f.type and type(f.type.ret_type) is VoidType),
            (F.type.as_(FunctionType).ret_type.is_null(), lambda f: f.type is None),
            (F.type.as_(FunctionType).ret_type != integer, lambda f: not f.type or f.type.ret_type != integer),
            (F.def_pos.line > 4, lambda f: f.def_pos and f.def_pos.line > 4),
            (F.def_pos.then(P.line) != 4, lambda f: f.def_pos and f.def_pos.line != 4),
            (~(F.def_pos.line == 4), lambda f: line(f) != 4),
            (F.def_pos.file.path.endswith("b.h"), lambda f: f.def_pos and f.def_pos.file.path.endswith("b.h")),
            (F.def_pos.then(P.file.path) == "dir/a.h", lambda f: f.def_pos and f.def_pos.file.path == "dir/a.h"),
            (F.params.size() > 2, lambda f: len(f.params) > 2),
            (F.params.count(V.type == pointer) == 1, lambda f: sum(p.type == pointer for p in f.params) == 1),
            (F.params.any(), lambda f: bool(len(f.params))),
            (F.params.none(), lambda f: not len(f.params)),
            (F.params.any(V.type.is_(PointerType)), lambda f: any(isinstance(p.type, PointerType) for p in f.params)),
            (F.params.all(lambda p: p.type.is_(PointerType)),
             lambda f: all(isinstance(p.type, PointerType) for p in f.params)),
            (F.params.none(V.name == "p1"), lambda f: all(p.name != "p1" for p in f.params)),
            (F.params.any((V.name == "p0") & V.type.is_null()),
             lambda f: any(p.name == "p0" and not p.type for p in f.params)),
            (zelkor.is_a(Declaration), lambda f: True),
            ((F.is_inline == True) & (F.params.size() == 0) | (F.name == "x3"),
             lambda f: f.is_inline and len(f.params) == 0 or f.name == "x3"),
        ]

    def test_conditions_mean_what_comprehensions_do(self):
        for condition, predicate in self.conditions():
            with self.subTest(condition=repr(condition)):
                expected = [f for f in self.functions if predicate(f)]
                query = self.model.query(Function).where(condition)
                self.assertEqual(list(query), expected)
                self.assertEqual((query.count(), query.exists(), query.first()),
                                 (len(expected), bool(expected), expected[0] if expected else None))
                self.assertEqual([f for f in self.functions if condition.test(f)], expected)
                names = vars(zelkor.ast) | vars(zelkor.ast.types) | vars(zelkor.ast.source) | {"is_a": zelkor.is_a}
                if "<zelkor" not in repr(condition) and "LinkageKind" not in repr(condition):
                    again = eval(repr(condition), names)
                    self.assertEqual(list(self.model.query(Function).where(again)), expected)

    def test_where_a_query_looks(self):
        space = self.unit.namespaces[0]
        self.assertEqual(list(space.query(Symbol)), [s for s in self.model.query(Symbol) if space in above(s)])
        self.assertEqual(self.model.query(LocatedObject).exactly().count(), 0)
        self.assertGreater(self.model.query(LocatedObject).count(), 300)
        query = self.model.query(Function).exactly().where(lambda f: f.name == "a", Function.is_inline == False)
        self.assertEqual(repr(query),
                         "query(Function).exactly().where((Function.name == 'a'), (Function.is_inline == False))")

    def test_a_loop_may_change_what_it_walks(self):
        model, _, _ = random_model(random.Random(3))
        for function in model.query(Function):
            function.destroy()
        self.assertEqual(model.query(Function).count(), 0)

    def test_what_makes_no_sense_is_refused(self):
        F, V = Function, Variable
        for wrong in (
            lambda: F.name == 5, lambda: F.is_inline == 1, lambda: F.is_inline < True, lambda: F.params == None,
            lambda: F.params.name, lambda: F.type.nme, lambda: F.type.name.size(), lambda: F.num_optional_params == 2**70,
            lambda: F.linkage == "Nowhere", lambda: F.linkage < 2, lambda: F.num_optional_params.startswith("a"),
            lambda: F.name.matches("("), lambda: F.params.any(F.is_inline == True), lambda: F.type.as_(5), lambda: F.type.then(5),
            lambda: F.params.size() > "a", lambda: (F.name == "a") and (F.name == "b"), lambda: F.type > 5,
            lambda: self.model.query(V).where(F.is_inline == True), lambda: self.model.query(F).where(5),
            lambda: self.model.query(F).where(lambda f: 5), lambda: self.model.query(int), lambda: self.model.query(F, 5),
            lambda: zelkor.is_a(5), lambda: (F.name == "a").test(5), lambda: (F.is_inline == True).test(self.types[0]),
            lambda: (F.name == "x") & (V.owning_fun_prototype == None) & (SourceFile.path == ""),
        ):
            with self.subTest(names=wrong.__code__.co_names), self.assertRaises((zelkor.Error, AttributeError)):
                wrong()
        self.assertEqual(repr(F.comments), "<property Function.comments>")


class FindTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.model, cls.unit, _ = random_model(random.Random(5))

    def test_find_compares_with_a_walk(self):
        symbols = [*self.model.query(Symbol), *self.model.query(Namespace)]
        cases = [
            ({}, lambda s: True),
            ({"name": "get1"}, lambda s: s.name == "get1"),
            ({"qualified": "n0::get1"}, lambda s: s.get_fully_qualified_name() == "n0::get1"),
            ({"signature": "void get1()"}, lambda s: signature(s) == "void get1()"),
            ({"regex": "n1::n.*[13]$"}, lambda s: re.search("n1::n.*[13]$", s.get_fully_qualified_name())),
            ({"file": "b.h"}, lambda s: file(s) == "dir/b.h"),
            ({"file": "/b.h"}, lambda s: file(s) == "dir/b.h"),
            ({"file": "ir/b.h"}, lambda s: False),
            ({"name": "get1", "file": "dir/a.h"}, lambda s: s.name == "get1" and file(s) == "dir/a.h"),
        ]
        for arguments, fits in cases:
            for cls in (None, Function, Type, Namespace, SourceFile):
                with self.subTest(arguments=arguments, cls=cls):
                    expected = [s for s in symbols if fits(s) and (cls is None or isinstance(s, cls))]
                    self.assertEqual(self.model.find(cls, **arguments), expected)
        for wrong in ({"type": 5}, {"name": 5}, {"regex": "("}):
            with self.assertRaises(zelkor.Error):
                self.model.find(**wrong)

    def test_a_name_that_is_not_there_is_told_with_near_ones(self):
        some = next(f for f in self.model.query(Function) if f.container != self.unit and f.name)
        name = some.get_fully_qualified_name()
        self.assertEqual(self.model[name].get_fully_qualified_name(), name)
        with self.assertRaises(KeyError) as found:
            self.model[name[:-1] + "q"]
        self.assertIsInstance(found.exception, errors.NotFound)
        self.assertIn("; near ones: ", str(found.exception))
        with self.assertRaises(KeyError):
            zelkor.Model()["anything"]

    def test_search_of_scopes(self):
        everything = FinderOptions(include_system_headers=True, include_std_ns=True)
        found = self.unit.find_symbol_by_meta_class(Function, everything)
        self.assertEqual(sorted(f.uuid for f in found), sorted(f.uuid for f in self.model.query(Function)))
        name = found[0].get_fully_qualified_name()
        self.assertEqual(self.unit.find_symbol_by_meta_class_and_name(Function, name, everything),
                         [f for f in found if f.get_fully_qualified_name() == name])


def file(element):
    place = getattr(element, "def_pos", None)
    return place.file.path if place else None


def signature(element):
    return element.generate_signature() if isinstance(element, Symbol) else None


def above(element):
    found = []
    while element is not None:
        element = element.container
        found.append(element)
    return found


if __name__ == "__main__":
    unittest.main()
