"""Building, lists, transactions, notices."""

import copy
import pathlib
import pickle
import random
import unittest
import uuid
from collections.abc import MutableSequence

import zelkor
from zelkor import errors
from zelkor.ast import Function, Namespace, Project, Scope, Symbol, Variable
from zelkor.ast.source import CompilationUnit, SourceFile
from zelkor.ast.types import ArrayType, FunctionType, StructType, VoidType


class ElementTest(unittest.TestCase):
    def setUp(self):
        self.model = zelkor.Model()


class BuildTest(ElementTest):
    def test_pending_objects_become_elements_in_one_transaction(self):
        notices = []
        self.model.on_commit(notices.append)
        there = Variable(self.model, name="there")
        pending = Variable(name="pending")
        self.assertTrue(pending.is_pending)
        function = Function(self.model, name="f", params=[there, pending], uuid=uuid.UUID(int=2**100 + 5),
                            scope=Scope(symbols=[Variable(name="local")]))
        self.assertEqual(function.uuid, uuid.UUID(int=2**100 + 5))
        self.assertEqual([p.owning_fun_prototype for p in (there, pending)], [function, function])
        self.assertEqual(len(notices), 2)
        self.assertEqual(len(notices[1].created), 4)
        self.assertEqual(function.scope.symbols[0].name, "local")

    def test_a_shared_pending_object_is_made_once(self):
        kind = VoidType(name="void")
        function = Function(self.model, params=[Variable(name="a", type=kind), Variable(name="b", type=kind)])
        self.assertEqual([p.type for p in function.params], [kind, kind])
        self.assertEqual(list(self.model.query(VoidType)), [kind])

    def test_a_failed_build_leaves_nothing_and_objects_pending(self):
        there = Variable(self.model, name="there")
        before = self.model.dumps()
        inner = Variable(name="inner")
        for wrong in ({"params": [inner, there, 5]}, {"name": 5}, {"scope": there}, {"linkage": "Nowhere"},
                      {"is_template": True}):
            values = {"params": [inner]} | wrong
            with self.subTest(values=values), self.assertRaises(zelkor.Error):
                Function(self.model, **values)
            self.assertEqual(self.model.dumps(), before)
            self.assertTrue(inner.is_pending)
        with self.assertRaises(errors.Pending):
            inner.name
        with self.assertRaises(errors.NoSuchAttribute) as found:
            Function(self.model, parms=[])
        self.assertIn("did you mean 'params'?", str(found.exception))
        with self.assertRaises(errors.UniquenessConstraint):
            Function(self.model, params=[inner], uuid=there.uuid)
        self.assertEqual(Function(self.model, params=[inner]).params[0].name, "inner")

    def test_what_holds_a_model_makes_one_known(self):
        unit = CompilationUnit(self.model)
        ast = zelkor.ast.Ast(self.model)
        for place in (self.model, ast, unit):
            self.assertEqual(Function(place).model, self.model)
        for place in (5, None, Function()):
            with self.assertRaises(zelkor.Error):
                Function(place)

    def test_identity(self):
        one = Function(self.model, name="f")
        again = self.model.by_uuid(str(one.uuid))
        self.assertIsNot(one, again)
        self.assertEqual((one, hash(one)), (again, hash(again)))
        self.assertNotEqual(one, Function(self.model))
        self.assertNotEqual(one, "f")
        self.assertEqual({one: 1}[again], 1)
        self.assertIn(one, self.model)
        self.assertNotIn(one, zelkor.Model())
        self.assertTrue(isinstance(one, Symbol) and not isinstance(one, Variable))
        self.assertEqual(repr(one), "<zelkor.ast.Function 'f'>")
        with self.assertRaises(errors.NotFound):
            self.model.by_uuid(uuid.uuid4())
        with self.assertRaises(errors.InvalidValue):
            self.model.by_uuid("no identity")


class ListTest(ElementTest):
    """Random operations on a list of the model and on one of Python."""

    def members(self):
        function = Function(self.model)
        numbers = ArrayType(self.model)
        types = FunctionType(self.model)
        return {
            "owned": (function.params, lambda i: Variable(self.model, name=str(i))),
            "referred": (types.param_types, lambda i: VoidType(self.model, name=str(i))),
            "texts": (function.comments, lambda i: f"text {i % 7}"),
            "numbers": (numbers.dimensions, lambda i: i % 5),
        }

    def test_random_operations(self):
        seed = random.Random(7)
        for name, (real, make) in self.members().items():
            model = []
            for i in range(400):
                value = make(i)
                at = seed.randrange(-3, len(model) + 3)
                stop = at + seed.randrange(4)
                operations = [
                    lambda one: one.append(value),
                    lambda one: one.insert(at, value),
                    lambda one: one.extend([value]),
                    lambda one: one.__setitem__(at, value),
                    lambda one: one.__setitem__(slice(at, stop), [value]),
                    lambda one: one.__delitem__(slice(at, stop)),
                    lambda one: one.__delitem__(at),
                    lambda one: one.pop(at),
                    lambda one: one.remove(value),
                    lambda one: one.reverse(),
                    lambda one: one.__getitem__(slice(at, stop, 2)),
                    lambda one: one.__getitem__(at),
                    lambda one: one.index(value),
                    lambda one: one.count(value),
                    lambda one: value in one,
                    lambda one: one.sort(key=repr),
                    lambda one: one.clear() if i % 50 == 0 else None,
                ]
                operation = seed.choice(operations)
                results = []
                for one in (model, real):
                    try:
                        results.append(operation(one))
                    except (IndexError, ValueError) as error:
                        results.append(IndexError if isinstance(error, IndexError) else ValueError)
                with self.subTest(name, step=i):
                    self.assertEqual(results[0], results[1])
                    self.assertEqual(list(real), model)
                    self.assertEqual(real, model)
                    self.assertEqual(len(real), len(model))
        self.assertIsNone(self.model.verify())

    def test_lists_move_and_undo(self):
        function = Function(self.model, params=[Variable(name="a"), Variable(name="b")])
        other = Function(self.model)
        other.params += function.params[:1]
        self.assertEqual(([p.name for p in function.params], [p.name for p in other.params]), (["b"], ["a"]))
        with self.assertRaises(zelkor.Error), self.model.transaction():
            function.params[0:1] = [Variable(name="x"), 5]
        self.assertEqual([p.name for p in function.params], ["b"])
        for bad in (lambda: function.params.append(function), lambda: function.params.append(None),
                    lambda: function.params.extend("text"), lambda: setattr(function, "params", "text"),
                    lambda: function.params[5], lambda: function.params["a"], lambda: function.params.pop(9)):
            with self.assertRaises((zelkor.Error, IndexError)):
                bad()
        self.assertEqual([p.name for p in function.params], ["b"])
        function.comments[:] = ["one", pathlib.Path("two")]
        self.assertEqual(repr(function.comments), "['one', 'two']")
        self.assertIsInstance(function.comments, MutableSequence)
        with self.assertRaises(TypeError):
            hash(function.comments)
        for copier in (copy.copy, copy.deepcopy, pickle.dumps):
            with self.assertRaises(TypeError):
                copier(function)

    def test_keyed_lists_and_views(self):
        project = Project(self.model, files=[SourceFile(path="b.h"), SourceFile(path=pathlib.Path("a.h"))])
        files = project.files
        self.assertEqual(files.keys(), ["a.h", "b.h"])
        self.assertEqual([f.path for f in files], ["a.h", "b.h"])
        self.assertTrue("a.h" in files and "c.h" not in files and files[pathlib.Path("a.h")] == files[0])
        with self.assertRaises(KeyError) as found:
            files["a.hh"]
        self.assertIn("did you mean 'a.h'", str(found.exception))
        with self.assertRaises(errors.UniquenessConstraint):
            files.append(SourceFile(path="a.h"))
        with self.assertRaises(errors.NoPositions):
            files.insert(0, SourceFile(path="z.h"))
        files.remove("b.h")
        del files["a.h"]
        self.assertEqual((len(files), list(files)), (0, []))
        unit = CompilationUnit(self.model, symbols=[Function(name="f"), Variable(name="v")])
        self.assertEqual([f.name for f in unit.funs], ["f"])
        unit.funs.append(Function(name="g"))
        self.assertEqual([s.name for s in unit.symbols], ["f", "v", "g"])
        unit.funs.remove(unit.funs[0])
        self.assertEqual([s.name for s in unit.symbols], ["v", "g"])

    def test_a_loop_may_change_its_list(self):
        function = Function(self.model, params=[Variable(name=str(i)) for i in range(10)])
        seen = [p.destroy() or p for p in function.params]
        self.assertEqual([len(seen), len(function.params)], [5, 5])
        for file in (project := Project(self.model, files=[SourceFile(path=str(i)) for i in range(9)])).files:
            file.destroy()
        self.assertEqual(len(project.files), 0)


class TransactionTest(ElementTest):
    def test_a_failing_transaction_changes_nothing(self):
        keep = StructType(self.model, name="keep", methods=[])
        gone = Namespace(self.model, name="gone", symbols=[Function(name="f")])
        inner = gone.symbols[0]
        before = self.model.dumps()
        with self.assertRaises(ZeroDivisionError):
            with self.model.transaction():
                keep.name = "changed"
                with self.model.transaction():
                    gone.destroy()
                made = Function(self.model, name="made")
                self.assertFalse(inner.is_alive)
                1 // 0
        self.assertEqual(self.model.dumps(), before)
        self.assertTrue(inner.is_alive and gone.symbols[0] == inner)
        with self.assertRaises(errors.DeadHandle) as found:
            made.name
        self.assertIn("went away with the transaction", str(found.exception))
        self.assertEqual(repr(made), "<zelkor.ast.Function rolled back>")

    def test_ending_by_hand(self):
        with self.model.transaction() as level:
            Function(self.model)
            level.rollback()
            self.assertFalse(level.is_open)
        self.assertEqual(len(self.model), 0)
        outer, inner = self.model.transaction(), self.model.transaction()
        with outer:
            with inner:
                Function(self.model)
                with self.assertRaises(errors.NotAllowed):
                    outer.commit()
        self.assertEqual(len(self.model), 1)
        for wrong in (outer.commit, outer.rollback, outer.__enter__):
            with self.assertRaises(errors.NotAllowed):
                wrong()

    def test_notices(self):
        seen = []

        def note(notice):
            seen.append(([e.name for e in notice.created],
                         [(c.element.name, c.properties, c.old(c.properties[0])) for c in notice.changed],
                         [(c.type, c.element.is_alive, c.old("Name")) for c in notice.destroyed]))

        first, second = Function(self.model, name="first"), Function(self.model, name="second")
        with self.model.on_commit(note):
            with self.model.transaction():
                first.name = "renamed"
                second.destroy()
                Function(self.model, name="third")
            with self.assertRaises(ZeroDivisionError), self.model.transaction():
                first.name = "never"
                1 // 0
        first.name = "unseen"
        self.assertEqual(seen, [(["third"], [("renamed", ["name"], "first")], [(Function, False, "second")])])

    def test_what_a_function_raises_comes_after_the_commit(self):
        function = Function(self.model, name="f")
        kept = []

        def refuse(notice):
            kept.extend(notice.changed)
            raise KeyError("from the function")

        subscription = self.model.on_commit(refuse)
        with self.assertRaisesRegex(KeyError, "from the function"):
            function.name = "g"
        self.assertEqual(function.name, "g")
        subscription.cancel()
        subscription.cancel()
        function.name = "h"
        with self.assertRaises(errors.NotAllowed):
            kept[0].old("name")
        with self.assertRaises(zelkor.Error):
            self.model.on_commit(5)


if __name__ == "__main__":
    unittest.main()
