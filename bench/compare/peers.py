"""Who is compared: how each builds what it keeps of a project, reads it again and tells who calls a function."""

import json
import os
import pathlib
import shutil
import sys

from measure import Command, measure

HERE = pathlib.Path(__file__).parent


def script(name, *words):
    return Command([sys.executable, str(HERE / name), *map(str, words)])


class Project:
    """The units of a compile database, and the function that is asked for."""

    def __init__(self, build, function, work, tools, jobs):
        self.database = pathlib.Path(build).resolve()
        if self.database.is_dir():
            self.database /= "compile_commands.json"
        self.function = function
        self.simple_name = function.rpartition("::")[2]
        self.work = work
        self.tools = tools
        self.jobs = jobs
        self.units = list(self.read_units())
        self.root = pathlib.Path(os.path.commonpath([os.path.dirname(file) for _, file, _ in self.units]))

    def read_units(self):
        """Directory, main file and arguments of each unit, launchers and output options removed."""
        listed = measure([Command([self.tools["bench_parse"], "--list", str(self.database)])], 1)
        if listed.failures:
            sys.exit(listed.failures[0])
        fields = iter(listed.texts[0].split("\0")[:-1])
        for directory in fields:
            file, count = next(fields), int(next(fields))
            yield directory, file, [next(fields) for _ in range(count)]

    def each_unit(self, words, ending, from_stdout):
        """One command a unit, in place of its compiler."""
        for number, (directory, _, arguments) in enumerate(self.units):
            output = str(self.work / f"{number}{ending}")
            yield Command(
                [*words, *([] if from_stdout else ["-o", output]), *arguments[1:]], directory,
                output if from_stdout else None,
            )

    def outputs(self, ending):
        return sorted(map(str, self.work.glob("*" + ending)))


class Peer:
    """Without an answer to a question, a method gives no commands. Outputs stand in the project's work directory."""

    name = tool = ""

    def missing(self, project):
        return None if shutil.which(project.tools.get(self.tool, self.tool)) else f"{self.tool} is not installed"

    def build(self, project):
        raise NotImplementedError

    def size(self, project):
        return None

    def load(self, project):
        return []

    def callers(self, project):
        return []

    def count(self, texts):
        return len({line for text in texts for line in text.splitlines()})


class FrontEnd(Peer):
    name, tool = "parsing alone, libclang", "bench_parse"
    options = []

    def build(self, project):
        return [Command([project.tools[self.tool], *self.options, str(project.database), str(project.jobs)])]


class FrontEndWithMacros(FrontEnd):
    name, options = "the same, macros recorded", ["--macros"]


class Compiler(Peer):
    name, tool = "`clang-19 -fsyntax-only`", "clang-19"

    def build(self, project):
        return project.each_unit([self.tool, "-fsyntax-only", "-w"], ".none", from_stdout=True)


class Zelkor(Peer):
    name, tool = "`zelkor`", "zelkor"

    def model(self, project):
        return str(project.work / "model.json")

    def build(self, project):
        tool = project.tools[self.tool]
        offered = measure([Command([tool, "import", "--help"])], 1).texts[0]
        fresh = ["--no-cache"] if "--no-cache" in offered else []
        return [Command([tool, "import", "-q", *fresh, "-p", str(project.database), "-j", str(project.jobs),
                         "-o", self.model(project)])]

    def size(self, project):
        return os.path.getsize(self.model(project))

    def load(self, project):
        return [Command([project.tools[self.tool], "stats", self.model(project)])]

    def callers(self, project):
        return [Command([project.tools[self.tool], "callers", "--exact", "--json", self.model(project),
                         project.function])]

    def count(self, texts):
        return json.loads(texts[0])["total"]

    def place(self, project):
        """Where the function is defined: path, line, column."""
        shown = measure([Command([project.tools[self.tool], "show", "--json", self.model(project),
                                  project.function])], 1)
        subjects = json.loads(shown.texts[0])["results"] if not shown.failures else []
        if len(subjects) != 1:
            sys.exit(f"'{project.function}' names {len(subjects)} elements, not one")
        return project.root / subjects[0]["file"], subjects[0]["line"], subjects[0]["column"]


class CastXml(Peer):
    name, tool = "CastXML", "castxml"

    def build(self, project):
        return project.each_unit([self.tool, "--castxml-output=1", "-w"], ".cast.xml", from_stdout=False)

    def size(self, project):
        return sum(map(os.path.getsize, project.outputs(".cast.xml")))

    def load(self, project):
        return [script("ask.py", "xml-load", *project.outputs(".cast.xml"))]


class JsonDump(Peer):
    name, tool = "`clang-19 -ast-dump=json`", "clang-19"

    def build(self, project):
        words = [self.tool, "-fsyntax-only", "-w", "-Xclang", "-ast-dump=json"]
        return project.each_unit(words, ".dump.json", from_stdout=True)

    def size(self, project):
        return sum(map(os.path.getsize, project.outputs(".dump.json")))

    def callers(self, project):
        """Nearly all of it is reading, so that reading alone is not timed again."""
        return [script("ask.py", "json-callers", file, project.simple_name) for file in project.outputs(".dump.json")]


class Doxygen(Peer):
    name, tool = "Doxygen XML", "doxygen"

    def build(self, project):
        """All units, and all headers below their common directory; Doxygen takes no compile database."""
        headers = [str(path) for path in project.root.rglob("*.h")]
        inputs = " ".join(f'"{file}"' for file in [*(file for _, file, _ in project.units), *headers])
        yes = "EXTRACT_ALL EXTRACT_PRIVATE EXTRACT_STATIC EXTRACT_LOCAL_CLASSES EXTRACT_ANON_NSPACES GENERATE_XML " \
              "MACRO_EXPANSION REFERENCED_BY_RELATION REFERENCES_RELATION QUIET"
        no = "GENERATE_HTML GENERATE_LATEX XML_PROGRAMLISTING WARNINGS HAVE_DOT"
        settings = [f"INPUT = {inputs}", f"OUTPUT_DIRECTORY = {project.work}", f"NUM_PROC_THREADS = {project.jobs}",
                    *(f"{key} = YES" for key in yes.split()), *(f"{key} = NO" for key in no.split())]
        file = project.work / "Doxyfile"
        file.write_text("\n".join(settings) + "\n", encoding="utf-8")
        shutil.rmtree(project.work / "xml", ignore_errors=True)
        return [Command([self.tool, str(file)])]

    def files(self, project):
        return sorted((project.work / "xml").glob("*.xml"))

    def size(self, project):
        return sum(map(os.path.getsize, self.files(project)))

    def load(self, project):
        return [script("ask.py", "xml-load", *self.files(project))]

    def callers(self, project):
        return [script("ask.py", "xml-callers", project.work / "xml", project.simple_name)]


class Clangd(Peer):
    name, tool = "clangd-19's index", "clangd-19"

    def home(self, project):
        return project.work / "clangd"

    def build(self, project):
        shutil.rmtree(self.home(project), ignore_errors=True)
        self.home(project).mkdir()
        shutil.copy(project.database, self.home(project) / "compile_commands.json")
        return [self.session(project, "index")]

    def session(self, project, *words):
        return script("clangd.py", self.tool, self.home(project), project.jobs, *words)

    def size(self, project):
        return sum(os.path.getsize(path) for path in self.home(project).rglob("*.idx"))

    def load(self, project):
        return [self.session(project, "load", project.simple_name)]

    def callers(self, project):
        return [self.session(project, "callers", *Zelkor().place(project))]


PEERS = [FrontEnd(), FrontEndWithMacros(), Compiler(), Zelkor(), CastXml(), JsonDump(), Doxygen(), Clangd()]
