"""Objects that outlive and predecease their models, in every order; threads; the end of the process."""

import gc
import itertools
import subprocess
import sys
import threading
import unittest

import zelkor
from zelkor import errors
from zelkor.ast import Function, Project, Variable
from zelkor.ast.source import CompilationUnit, SourceFile


def things():
    """One of each kind of object, all about one model."""
    model = zelkor.Model()
    function = Function(model, name="f", params=[Variable(name="a")], comments=["text"])
    unit = CompilationUnit(symbols=[function])
    project = Project(model, compilations=[unit], files=[SourceFile(path="a.h")])
    own = Function.params.any(Variable.owning_fun_prototype == function)
    query = model.query(Function).where(Function.name == "f", own)
    level = model.transaction()
    return {
        "model": model, "element": function, "list": function.params, "texts": function.comments, "view": unit.funs,
        "files": project.files, "iterator": iter(function.params), "results": iter(query), "query": query,
        "ast": zelkor.ast.Ast(model), "bound": function.generate_signature, "level": level.__enter__(),
        "subscription": model.on_commit(lambda notice: None), "condition": Function.type == function.type,
    }


def use(name, thing):
    """Touches what the object leads to. Whatever comes is fine, except a crash."""
    actions = {
        "model": lambda: len(thing), "element": lambda: (thing.name, thing.params, thing.container, repr(thing)),
        "list": lambda: [p.name for p in thing], "texts": lambda: list(thing), "view": lambda: [f.name for f in thing],
        "files": lambda: thing["a.h"].path, "iterator": lambda: next(thing).name, "results": lambda: next(thing).name,
        "query": lambda: [f.name for f in thing], "ast": lambda: (thing.model, thing.project, thing.dumps()),
        "bound": lambda: thing(), "level": lambda: thing.is_open, "subscription": lambda: thing.cancel(),
        "condition": lambda: repr(thing),
    }
    return actions[name]()


class LifetimeTest(unittest.TestCase):
    def test_each_object_serves_alone(self):
        for survivor in things():
            with self.subTest(survivor):
                thing = things()[survivor]
                gc.collect()
                use(survivor, thing)

    def test_every_order_of_two_and_some_of_all(self):
        names = list(things())
        orders = list(itertools.permutations(names, 2)) + [names, names[::-1], names[5:] + names[:5]]
        for order in orders:
            rest = things()
            for name in order:
                del rest[name]
                for other, thing in rest.items():
                    if other not in ("iterator", "results", "subscription"):
                        use(other, thing)

    def test_dead_elements_say_why(self):
        model = zelkor.Model()
        with model.transaction() as level:
            made = Function(model, params=[Variable(name="a")])
            params, iterator = made.params, iter(made.params)
            level.rollback()
        destroyed = Function(model)
        destroyed.destroy()
        for element, reason in ((made, "transaction"), (destroyed, "destroyed")):
            for action in (lambda: element.name, lambda: setattr(element, "name", "x"), lambda: element.params,
                           lambda: element.generate_signature(), lambda: element.uuid, element.destroy, element.to_dict,
                           lambda: element.query(Variable).count(), lambda: Function(model, params=[element]),
                           lambda: Variable(model).__setattr__("owning_fun_prototype", element),
                           lambda: Function.type == element):
                with self.assertRaises((errors.DeadHandle, errors.WrongType)) as found:
                    action()
                if isinstance(found.exception, errors.DeadHandle):
                    self.assertIn(reason, str(found.exception))
            self.assertFalse(element.is_alive)
            self.assertIn("zelkor.ast.Function", repr(element))
            self.assertEqual({element: 1}[element], 1)
        for action in (lambda: len(params), lambda: next(iterator), lambda: params.append(Variable())):
            with self.assertRaises(errors.DeadHandle):
                action()

    def test_pending_objects_need_no_model(self):
        chain = Function(name="innermost")
        for _ in range(20000):
            chain = Function(befriending_aggregates=[], params=[], scope=zelkor.ast.Scope(symbols=[chain]))
        with self.assertRaises(RecursionError):
            Function(zelkor.Model(), scope=zelkor.ast.Scope(symbols=[chain]))
        del chain
        gc.collect()

    def test_objects_may_be_dropped_on_other_threads(self):
        for _ in range(20):
            bag = list(things().values())
            parts = [bag[i::3] for i in range(3)]
            del bag
            threads = [threading.Thread(target=part.clear) for part in parts]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()

    def test_nothing_is_kept_that_nobody_holds(self):
        class Marker:
            alive = 0

            def __init__(self):
                Marker.alive += 1

            def __del__(self):
                Marker.alive -= 1

            def __call__(self, notice):
                pass

        for _ in range(50):
            kept = things()
            kept["model"].on_commit(Marker())
            subscription = kept["model"].on_commit(Marker())
            subscription.cancel()
            del kept, subscription
        gc.collect()
        self.assertEqual(Marker.alive, 0)

    def test_the_end_of_the_process(self):
        script = (
            "import sys; sys.path[:0] = {path!r}; from test_lifetimes import things, use\n"
            "import atexit, threading\n"
            "kept = things(); cycle = [kept]; cycle.append(cycle); sys.kept = kept\n"
            "class Late:\n    def __del__(self): use({name!r}, self.thing)\n"
            "late = Late(); late.thing = kept[{name!r}]; late.cycle = late\n"
            "atexit.register(use, {name!r}, kept[{name!r}])\n"
            "kept['model'].on_commit(lambda notice, kept=kept: None)\n"
        )
        for name in ("model", "element", "list", "query", "ast"):
            with self.subTest(name):
                command = [sys.executable, "-c", script.format(path=sys.path, name=name)]
                done = subprocess.run(command, capture_output=True, text=True, check=False)
                self.assertEqual((done.returncode, done.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
