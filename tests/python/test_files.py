"""Loading and saving, dictionaries, other threads meanwhile."""

import json
import os
import pathlib
import tempfile
import threading
import unittest

import zelkor
from zelkor import errors
from zelkor.ast import Ast, Function, Project, Variable
from zelkor.ast.source import CompilationUnit, SourceFile
from zelkor.ast.types import AggregateType, EnumType


def sample(size=3):
    model = zelkor.Model()
    unit = CompilationUnit(symbols=[Function(name=f"f{i}", params=[Variable(name="häß"), Variable(name=b"\xff")],
                                             comments=["one", "two \ud800"]) for i in range(size)])
    EnumType(model, name="E", strings=["A", b"\xfe"], values=["1", "2"])
    Project(model, files=[SourceFile(path="a.h")], compilations=[unit])
    return model


class FileTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.model = sample()

    def test_every_way_out_and_in_gives_the_same_model(self):
        text, markup = self.model.dumps(), self.model.dumps("xml")
        self.assertTrue(text.startswith("{") and markup.startswith("<?xml"))
        files = {"model.json": None, "model.xml": None, "odd": "xml", "other.xml": "json"}
        for name, form in files.items():
            self.model.save(self.folder / name, form)
            ast = zelkor.load(str(self.folder / name))
            self.assertEqual((ast.model.dumps(), ast.dumps("xml")), (text, markup), name)
            self.assertEqual(type(ast), Ast)
            self.assertEqual(ast.project, ast.model.query(Project).first())
        for given in (text, markup, text.encode(), "\ufeff" + text, "\n  " + text, "\ufeff" + markup):
            self.assertEqual(zelkor.loads(given).dumps(), text)
        (self.folder / "wide").write_bytes(text.encode("utf-16"))
        self.assertEqual(zelkor.load(self.folder / "wide").dumps(), text)
        read, write = os.pipe()
        threading.Thread(target=lambda: (os.write(write, text.encode()), os.close(write))).start()
        self.assertEqual(zelkor.load(f"/dev/fd/{read}").dumps(), text)
        os.close(read)

    def test_failures_say_where(self):
        text = '{"format":"zelkor-ast",\n "version":"1.0","elements":[\n{"class":"Functon"}]}'
        (self.folder / "bad").write_text(text)
        with self.assertRaises(zelkor.ParseError) as found:
            zelkor.load(self.folder / "bad")
        error = found.exception
        self.assertEqual((error.file, error.line), (str(self.folder / "bad"), 3))
        self.assertIn("Functon", str(error))
        for wrong, kind in (
            (lambda: zelkor.load(self.folder / "none"), OSError), (lambda: zelkor.load(self.folder), zelkor.FileError),
            (lambda: zelkor.load(5), TypeError), (lambda: zelkor.load("a\0b"), OSError),
            (lambda: zelkor.load(""), OSError),
            (lambda: zelkor.load("a\ud800b"), OSError), (lambda: zelkor.loads(b""), ValueError),
            (lambda: zelkor.loads(b"\xff\xff"), zelkor.ParseError), (lambda: zelkor.loads(5), TypeError),
            (lambda: self.model.save(self.folder / "none" / "x"), zelkor.FileError),
            (lambda: self.model.save(self.folder / "x", "yaml"), ValueError), (lambda: self.model.dumps(5), ValueError),
        ):
            with self.assertRaises(kind) as found:
                wrong()
            self.assertIsInstance(found.exception, zelkor.Error)
        self.assertEqual(os.listdir(self.folder), ["bad"])
        with self.assertRaises(zelkor.FileError) as found:
            zelkor.load(self.folder / "none")
        self.assertEqual((found.exception.filename, found.exception.strerror),
                         (str(self.folder / "none"), "No such file or directory"))

    def test_dictionaries_are_what_the_files_have(self):
        expected = json.loads(self.model.dumps())["elements"]
        self.assertEqual([element.to_dict() for element in self.model.elements], expected)
        deep = chain = Function(self.model)
        for _ in range(3000):
            chain.create_into_scope().symbols.append(Function())
            chain = chain.scope.symbols[0]
        inner = deep.to_dict()
        for _ in range(3000):
            inner = inner["Scope"]["Symbols"][0]
        self.assertEqual(inner["uuid"], str(chain.uuid))


class ThreadTest(unittest.TestCase):
    def test_work_on_one_model_excludes_and_on_others_does_not(self):
        model, errors_seen, stop = sample(300), [], threading.Event()
        texts = set()

        def run(action):
            try:
                while not stop.is_set():
                    action()
            except BaseException as error:
                errors_seen.append(error)
                stop.set()

        def change():
            function = model.query(Function).first()
            function.params.append(Variable(name="new"))
            function.params[-1].destroy()

        def read():
            assert all(len(f.params) in (2, 3) and f.name for f in model.query(Function))
            assert model["f7"].name == "f7"

        def save():
            texts.add(zelkor.loads(model.dumps()).model.query(Variable).count())

        def elsewhere():
            other = sample(20)
            assert zelkor.loads(other.dumps()).dumps() == other.dumps()

        threads = [threading.Thread(target=run, args=[action]) for action in (change, read, save, elsewhere, read)]
        for thread in threads:
            thread.start()
        stop.wait(1.5)
        stop.set()
        for thread in threads:
            thread.join()
        self.assertEqual(errors_seen, [])
        self.assertLessEqual(texts, {600, 601})
        self.assertTrue(texts)
        self.assertIsNone(model.verify())


if __name__ == "__main__":
    unittest.main()
