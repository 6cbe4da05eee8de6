"""The verbs that ask who calls, reads and writes what, on the model that insight_model.py describes.

Run with the path of the command in ZELKOR.
"""

import csv
import io
import json
import re
import unittest
import xml.etree.ElementTree as ElementTree

from insight_model import ID, RECORDS, elements, record
from support import CommandTest, element

GO = "types.Method virtual ns::Derived::go(int p0)"
MAIN, RUN, WORK = "Function main(void)", "Function run(int p0)", "Function work(void)"
HELPER, HELPER_TEXT = "Function helper(int p0)", "Function helper(char const * p0)"
POINTER_NOTE = "calls through pointers that the model cannot follow are not listed"


def told(text):
    """Lines without their places, headings as they are."""
    return [re.sub(r"^\S+:\d+:\d+: ", "", line) for line in text.splitlines()]


class InsightTest(CommandTest):
    elements = elements()

    def test_answers(self):
        for words, code, lines, notes in (
            (["callers", "work"], 0, ["work(void) is called by", "Function apply(void)", MAIN,
             "Function late(void)  [may call it: hook may point at it]", "", "the address of work(void) is taken by",
             "Variable hook  [points at it]"], [POINTER_NOTE]),
            (["callers", "start"], 0, ["start(void) is called by", "Variable limit  [in its initializer]"], []),
            (["callers", "Derived::go", "--exact"], 1, [], ["nothing in the model calls virtual ns::Derived::go(int p0)"]),
            (["callees", "late"], 0, ["late(void) calls", WORK + "  [may be called: hook may point at it]"], []),
            (["callers", "helper(int)"], 0, ["helper(int p0) is called by", MAIN], []),
            (["callers", "helper(const char*)"], 0, ["helper(char const * p0) is called by", GO], []),
            (["callers", "run"], 0, ["run(int p0) is called by", MAIN, RUN], []),
            (["callers", "apply"], 0, ["apply(void) is called by", MAIN + "  [calls an instantiation, apply<int>]"], []),
            (["callers", "go"], 0, ["virtual ns::Base::go(int) is called by", RUN, "",
             "virtual ns::Derived::go(int p0) is called by", RUN + "  [may call it: calls ns::Base::go]"], []),
            (["callers", "Derived::go(int)", "--transitive"], 0, ["virtual ns::Derived::go(int p0) is called by",
             RUN + "  [may call it: calls ns::Base::go]", MAIN + "  [2 calls away, through run]"], []),
            (["callers", "lonely"], 1, [], ["nothing in the model calls lonely(void)"]),
            (["callees", "main", "--depth", "2"], 0, ["main(void) calls", RUN, HELPER, WORK,
             "Function apply<int>(void)  [its body is not in the model]",
             "Function apply(void)  [pattern of the template behind apply<int>]",
             "types.Method virtual ns::Base::go(int)  [2 calls away, through run; its body is not in the model]",
             GO + "  [may be called: overrides ns::Base::go; 2 calls away, through run]",
             "Function printf(void)  [2 calls away, through helper; its body is not in the model]"],
             ["without a body in the model: 1 function;"]),
            (["callees", "apply"], 0, ["apply(void) calls", WORK],
             ["apply(void) stands for a template; what depends on the parameters of that is told of its instantiations only"]),
            (["callees", "printf"], 1, [], ["the body of printf(void) is not in the model; what it calls is unknown"]),
            (["callees", "lonely"], 1, [], ["lonely(void) calls no function"]),
            (["path", "main", "ns::Derived::go"], 0, ["main(void) reaches virtual ns::Derived::go(int p0) in 2 calls", MAIN,
             RUN, GO + "  [may be called: overrides ns::Base::go]"], []),
            (["path", "run", "run"], 0, ["run(int p0) reaches run(int p0) in 1 call", RUN, RUN], []),
            (["path", "lonely", "main"], 1, [], ["no calls lead from lonely(void) to main(void)"]),
            (["path", "main", "lonely"], 1, [],
             ["it reaches 9 functions, at most 3 calls away; of these without a body in the model: 3 functions"]),
            (["reads", "counter"], 0, ["counter is read by", RUN + "  [and writes it]", HELPER_TEXT + "  [and writes it]"],
             []),
            (["writes", "Derived::size", "--transitive"], 0, ["ns::Derived::size is written by", GO, MAIN + "  [through run]",
             RUN + "  [through ns::Derived::go]"], []),
            (["reads", "limit"], 0, ["the address of limit is taken by, so that it may be read through a pointer",
             "Function late(void)"], ["nothing in the model reads limit", "marked as read, and no record tells where"]),
            (["writes", "late"], 0, ["late(void) takes the address of, so that it may be written through a pointer",
             "Variable limit"], ["late(void) writes no variable"]),
            (["writes", "run", "--depth=2"], 0, ["run(int p0) writes", "Variable counter  [and reads it]",
             "types.Member ns::Derived::size  [through ns::Derived::go]"],
             ["without a body in the model: 1 function; the writes inside are unknown"]),
            (["writes", "work"], 1, [], ["work(void) writes no variable"]),
        ):
            verb, *rest = words
            with self.subTest(words=words):
                result, out, err = self.run_command(verb, self.model, *rest)
                self.assertEqual((result, told(out)), (code, lines))
                for note in notes:
                    self.assertIn(note, err)
                self.assertEqual(bool(err), bool(notes), err)

    def test_records(self):
        code, out, err = self.run_command("callees", self.model, "main", "--transitive", "--json", "-n", "8")
        reply = json.loads(out)
        self.assertEqual((code, reply["format"], reply["total"], len(reply["results"])), (0, "zelkor-callees", 9, 8))
        self.assertIn(reply["notes"][0], err)
        self.assertEqual([subject["uuid"] for subject in reply["subjects"]], [ID["main"]])
        byId = {row["uuid"]: row for row in reply["results"]}
        common = {"subject": ID["main"], "bodyKnown": True, "addressTaken": False}
        for name, expected in (
            ("run", {"relation": "calls", "depth": 1, **common}),
            ("work", {"relation": "calls", "depth": 1, **common, "addressTaken": True}),
            ("apply", {"relation": "template", "depth": 1, "named": ID["apply_int"], **common}),
            ("base_go", {"relation": "calls", "depth": 2, "via": ID["run"], **common, "bodyKnown": False}),
            ("derived_go", {"relation": "overrides", "depth": 2, "via": ID["run"], "named": ID["base_go"], **common}),
        ):
            with self.subTest(name=name):
                shared = {"uuid", "class", "name", "qualifiedName", "signature", "file", "line", "column"}
                row = byId[ID[name]]
                self.assertLessEqual(shared, row.keys())
                self.assertEqual({key: row[key] for key in row.keys() - shared}, expected)
        _, out, _ = self.run_command("reads", self.model, "counter", "--json")
        self.assertEqual({row["access"] for row in json.loads(out)["results"]}, {"both"})
        code, out, _ = self.run_command("callers", "--json", self.model, "nobody")
        self.assertEqual((code, json.loads(out)["results"]), (1, []))

    def test_wrong_use(self):
        self.assert_refused((
            (["callers", self.model, "counter"], "'counter' is a Variable and has no callers"),
            (["callers", self.model, "ns"], "'ns' is a Namespace and has no callers"),
            (["reads", self.model, "ns::Base"], "'ns::Base' is a types.StructType and has no reads"),
            (["callees", self.model, "main", "--depth", "2", "--transitive"], "exclude each other"),
            (["callees", self.model, "main", "--depth", "0"], "--depth counts from 1"),
            (["path", self.model, "main"], "missing argument: TO"),
            (["callers", self.model, "main", "--color", "red"], "--color takes auto, always or never"),
        ))

    def test_a_model_without_insight(self):
        self.write_model("bare.json", elements(insight=False))
        for words in (["callers", "run"], ["path", "main", "run"], ["reads", "counter"], ["export"]):
            verb, *rest = words
            with self.subTest(verb=verb):
                code, out, err = self.run_command(verb, self.path("bare.json"), *rest)
                self.assertEqual((code, out), (2, ""))
                self.assertIn("the model has no code insight", err)
                self.assertIn("zelkor import -p BUILD_DIR -o FILE", err)

    def test_faults(self):
        placeholder = {"proxy": "Function", "element": ID["main"].replace("4000", "4999")}
        contradicting = [record("main", ["run"], IsDefined=True), record("run", IsDefined=True)]
        for name, records, said in (
            ("none", RECORDS, []),
            ("twice", RECORDS + [record("main")], ["Function: there is a second record of main(void)"]),
            ("about nothing", RECORDS + [element("codeinsight.FunctionInfo")], ["Function: the record is about nothing"]),
            ("flag", contradicting, ["IsCalled: is false, and another record says otherwise"]),
            ("placeholder", [element("codeinsight.FunctionInfo", Function=ID["main"], CalledFuns=[placeholder])],
             ["CalledFuns: refers to Function " + placeholder["element"] + ", which is not in the model; merge"]),
        ):
            with self.subTest(name):
                model = self.write_model("faulty.json", elements(records=records))
                code, out, _ = self.run_command("validate", model)
                self.assertEqual((code, len(out.splitlines())), (1 if said else 0, len(said)), out)
                for part in said:
                    self.assertIn(part, out)
                _, out, _ = self.run_command("validate", "--json", model)
                self.assertEqual(len(json.loads(out)["results"]), len(said))
        with open(self.path("broken.json"), "w", encoding="utf-8") as file:
            file.write('{"format":"zelkor-ast","version":"1.0","elements":[\n{"class":"Projekt"}]}')
        code, out, _ = self.run_command("validate", self.path("broken.json"))
        self.assertEqual(code, 1)
        self.assertRegex(out, r"broken\.json:2:\d+: error: .*Projekt.*; mend")

    def graph(self, *words):
        code, out, err = self.run_command("export", self.model, *words)
        self.assertEqual((code, err), (0, ""))
        return out

    def test_graphs_agree(self):
        """All three forms, read back by their own rules, tell the same nodes and edges."""
        for what, nodes, edges in (("calls", 15, 13), ("includes", 5, 5), ("inherits", 2, 1)):
            with self.subTest(what):
                table = list(csv.DictReader(io.StringIO(self.graph("--what", what, "--format", "csv"))))
                label = {row["id"]: row["label"] for row in table if row["record"] == "node"}
                by_csv = {(row["source"], row["target"], row["relation"]) for row in table if row["record"] == "edge"}
                self.assertEqual((len(label), len(by_csv)), (nodes, edges))

                space = "{http://graphml.graphdrawing.org/xmlns}"
                tree = ElementTree.fromstring(self.graph("--what", what, "--format", "graphml"))
                declared = {key.get("id") for key in tree.iter(space + "key")}
                self.assertLessEqual({data.get("key") for data in tree.iter(space + "data")}, declared)
                self.assertEqual(
                    {node.get("id"): node.find(f"{space}data[@key='label']").text for node in tree.iter(space + "node")}, label
                )
                by_xml = {(e.get("source"), e.get("target"), e.find(space + "data").text) for e in tree.iter(space + "edge")}
                self.assertEqual(by_xml, by_csv)

                dot = self.graph("--what", what)
                text = r'"((?:[^"\\\n]|\\["\\])*)"'
                by_dot = dict(re.findall(rf"^  (n\d+) \[label={text},", dot, re.MULTILINE))
                self.assertEqual({key: re.sub(r"\\(.)", r"\1", value) for key, value in by_dot.items()}, label)
                arrows = re.findall(rf"^  (n\d+) -> (n\d+) \[class={text}", dot, re.MULTILINE)
                self.assertEqual(set(arrows), by_csv)
        own = self.graph("--what", "includes", "--no-system-headers")
        self.assertNotIn("stdio", own)
        self.assertIn("box.hpp", own)

    def test_names_that_need_escapes(self):
        odd = 'operator""_<&,\\\n'
        model = self.write_model("odd.json", [element("Function", ID["main"], Name=odd), *elements()[1:]] + [
            element("codeinsight.CodeInsight", Functions=[record("main")])])
        forms = {form: self.run_command("export", model, "--format", form)[1] for form in ("csv", "graphml", "dot")}
        signature = odd + "(void)"
        self.assertEqual(next(csv.DictReader(io.StringIO(forms["csv"], newline="")))["label"], signature)
        self.assertIn(signature, "".join(ElementTree.fromstring(forms["graphml"]).itertext()))
        self.assertIn(r'label="operator\"\"_<&,\\ (void)"', forms["dot"])


if __name__ == "__main__":
    unittest.main()
