"""Installs the build into a folder of its own and uses it as a project outside the tree does.

    test_install.py BUILD_DIR WORK_DIR COMPILER [FLAG...]

The flags are those that whatever links the library needs too, such as those of a sanitizer.
"""

import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

build, work, compiler, flags = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3], sys.argv[4:]
sources = Path(__file__).resolve().parent
prefix = work / "prefix"
expected = "Function answer: PointerType\nrefused at 1:2\n"


def run(*command, **options) -> str:
    done = subprocess.run([str(c) for c in command], capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


def only(pattern: str) -> Path:
    """The one installed file that the pattern fits."""
    found = sorted(prefix.rglob(pattern))
    assert len(found) == 1, f"{pattern}: {found}"
    return found[0]


def headers_to_check() -> list[Path]:
    """All headers written by hand, and of those generated the one with most to include in each folder."""
    root = prefix / "include"
    headers, largest, starts = [], {}, {}
    for path in sorted(root.rglob("*.hpp")):
        text = path.read_text()
        included = re.findall(r'#include [<"]([^>"]+)', text)
        starts[path] = root / included[0] if included else None
        if not text.startswith("// Generated"):
            headers.append(path)
        elif len(included) > largest.get(path.parent, (0, None))[0]:
            largest[path.parent] = len(included), path
    headers += [path for _, path in largest.values()]
    # What a checked header includes before anything else is compiled alone by that.
    checked_by_others = {starts[path] for path in headers}
    return [path for path in headers if path not in checked_by_others]


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(work, ignore_errors=True)
        run("cmake", "--install", build, "--prefix", prefix)
        cls.library = only("libzelkor_ast.so")

    def consumer_says(self, program: Path):
        environment = os.environ | {"LD_LIBRARY_PATH": str(self.library.parent)}
        self.assertEqual(run(program, work / "model.json", env=environment), expected)

    def test_find_package(self):
        tree = work / "consumer"
        run("cmake", "-S", sources / "consumer", "-B", tree, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}",
            f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_CXX_FLAGS={' '.join(flags)}")
        run("cmake", "--build", tree)
        self.consumer_says(tree / "consumer")

    def test_python(self):
        found = sorted(prefix.rglob("zelkor/_core.*.so"))
        if not found:
            self.skipTest("the build has no Python module")
        packages = found[0].parent.parent
        environment = {"PYTHONPATH": str(packages), "LD_PRELOAD": os.environ.get("LD_PRELOAD", ""), "PATH": os.environ["PATH"]}
        script = "import zelkor, zelkor.ast as a; print(zelkor.__file__, a.Function(zelkor.Model(), name='f').generate_signature())"
        self.assertEqual(run("/usr/bin/python3", "-c", script, env=environment),
                         f"{packages}/zelkor/__init__.py f(void)\n")
        self.assertTrue((packages / "zelkor/py.typed").exists() and (packages / "zelkor/ast/types/__init__.pyi").exists())
        self.assertFalse([path for path in packages.rglob("*") if path.is_symlink()])

    def test_pkg_config(self):
        environment = os.environ | {"PKG_CONFIG_PATH": str(only("zelkor-ast.pc").parent)}
        found = run("pkg-config", "--cflags", "--libs", "zelkor-ast", env=environment).split()
        self.assertIn(str(prefix), " ".join(str(Path(f[2:]).resolve()) for f in found))
        program = work / "by-pkg-config"
        run(compiler, "-std=c++20", *flags, sources / "consumer/main.cpp", "-o", program, *found)
        self.consumer_says(program)

    def test_headers_compile_alone(self):
        headers = headers_to_check()
        self.assertGreater(len(headers), 30)
        command = [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-x", "c++",
                   f"-I{prefix / 'include'}", "-"]

        def messages(header: Path) -> str:
            text = f"#include <{header.relative_to(prefix / 'include')}>\n"
            return subprocess.run(command, input=text, capture_output=True, text=True).stderr

        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for header, found in zip(headers, pool.map(messages, headers)):
                with self.subTest(header.relative_to(prefix)):
                    self.assertEqual(found, "")

    def test_umbrella_has_every_class(self):
        """`zelkor/ast.hpp` reaches each installed header of the model, but for queries and scripts, asked for by name."""
        text = "#include <zelkor/ast.hpp>\n"
        rule = run(compiler, "-std=c++20", "-M", "-x", "c++", f"-I{prefix / 'include'}", "-", input=text)
        reached = {str(Path(p).resolve()) for p in re.split(r"[\s\\]+", rule) if "zelkor" in p}
        installed = {str(p.resolve()) for p in (prefix / "include/zelkor").rglob("*.hpp")}
        by_name = [str((prefix / "include/zelkor/ast" / name).resolve())
                   for name in ("binding.hpp", "mi/Wrappers.hpp", "query.hpp")]
        self.assertEqual(sorted(installed - reached), by_name)

    def test_only_the_interface_is_visible(self):
        """Nothing of the libraries that this one is made with shows in its table of symbols."""
        names = run("nm", "--dynamic", "--defined-only", "--extern-only", "--demangle", "--format=just-symbols", self.library)
        for name in ("zelkor::ast::io::serializeToFile(", "brant::zero::Model::beginTransaction("):
            self.assertIn(name, names)
        for name in ("rapidjson::", "XML_Parse", "brant::zero::slab::Pool::", "brant::zero::TransactionCoordinator::"):
            self.assertNotIn(name, names)

    def test_descriptions_of_the_text_forms(self):
        for name in ("zelkor-ast.schema.json", "zelkor-ast.xsd"):
            self.assertEqual(only(name).parent, prefix / "share/zelkor-ast")

    def test_command(self):
        command = prefix / "bin/zelkor"
        if not (build / "tools").exists():
            self.skipTest("built without tools")
        self.assertRegex(run(command, "--version"), r"\d+\.\d+\.\d+")
        self.assertIn("types.PointerType", run(command, "schema"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
