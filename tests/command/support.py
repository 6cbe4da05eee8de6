"""What the tests of the command share. The path of the command is in ZELKOR."""

import itertools
import json
import os
import subprocess
import tempfile
import unittest


def uuid(number):
    return f"00000000-0000-4000-8000-{number:012x}"


_fresh = itertools.count(100000)


def element(cls, identity=None, /, **properties):
    """An element as the JSON form has it; one that nothing refers to gets an identity of its own."""
    return {"class": cls, "uuid": identity or uuid(next(_fresh)), **properties}


def position(file, line, column=1, identity=None):
    return element("source.SourcePosition", identity, File=file, Line=line, Col=column)


class CommandTest(unittest.TestCase):
    """Runs the command on a model file with the elements that a subclass lists."""

    elements = []

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.model = cls.write_model("model.json", cls.elements)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    @classmethod
    def path(cls, name):
        return os.path.join(cls.folder.name, name)

    @classmethod
    def write_model(cls, name, elements):
        path = cls.path(name)
        with open(path, "w", encoding="utf-8") as file:
            json.dump({"format": "zelkor-ast", "version": "1.0", "elements": elements}, file)
        return path

    def assert_refused(self, rows, *verb):
        """Each row: the words behind the verb, and a part of what is said then."""
        for words, said in rows:
            with self.subTest(words=words):
                code, out, err = self.run_command(*verb, *words)
                self.assertEqual((code, out), (2, ""))
                self.assertIn(said, err)

    def run_command(self, *words):
        done = subprocess.run([os.environ["ZELKOR"], *words], capture_output=True, text=True, check=False)
        return done.returncode, done.stdout, done.stderr
