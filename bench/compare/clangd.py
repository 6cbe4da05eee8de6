#!/usr/bin/env python3
"""One short session with clangd, as an editor would hold it, so that the whole of it can be timed as one process.

    clangd.py CLANGD PROJECT JOBS index                          until its background index stands
    clangd.py CLANGD PROJECT JOBS load SYMBOL                    a search for a symbol, on an index that is there
    clangd.py CLANGD PROJECT JOBS callers SOURCE LINE COLUMN     who calls the function there; from 1, as editors show it

PROJECT holds compile_commands.json, and clangd leaves its index below it. Printed is one answer a line. Exits with 1 when
clangd answers nothing.
"""

import json
import os
import pathlib
import subprocess
import sys


class Session:
    """The protocol's requests, one at a time; what clangd asks meanwhile is granted."""

    def __init__(self, clangd, project, jobs):
        environment = {**os.environ, "XDG_CACHE_HOME": str(project / "cache")}
        self.process = subprocess.Popen(
            [clangd, f"--compile-commands-dir={project}", "--background-index",
             "--background-index-priority=normal", f"-j={jobs}", "--log=error"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment,
        )
        self.last = 0
        self.is_indexed = False
        # Progress is told only to clients that can show it.
        self.request("initialize", {"processId": None, "rootUri": project.as_uri(),
                                    "capabilities": {"window": {"workDoneProgress": True}}})
        self.notify("initialized", {})

    def send(self, message):
        body = json.dumps({"jsonrpc": "2.0", **message}).encode()
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n%s" % (len(body), body))
        self.process.stdin.flush()

    def receive(self):
        size = 0
        while (line := self.process.stdout.readline().strip()):
            name, _, value = line.partition(b":")
            if name.lower() == b"content-length":
                size = int(value)
        if size == 0:
            sys.exit("clangd ended without an answer")
        message = json.loads(self.process.stdout.read(size))
        if "method" in message and "id" in message:
            self.send({"id": message["id"], "result": None})
        if message.get("method") == "$/progress":
            progress = message["params"]
            if progress["token"] == "backgroundIndexProgress" and progress["value"]["kind"] == "end":
                self.is_indexed = True
        return message

    def notify(self, method, parameters):
        self.send({"method": method, "params": parameters})

    def request(self, method, parameters):
        self.last += 1
        self.send({"id": self.last, "method": method, "params": parameters})
        while True:
            message = self.receive()
            if message.get("id") == self.last and "method" not in message:
                if "error" in message:
                    sys.exit(f"clangd: {method}: {message['error']['message']}")
                return message["result"]

    def open(self, path, text):
        language = "c" if path.suffix == ".c" else "cpp"
        self.notify("textDocument/didOpen", {
            "textDocument": {"uri": path.as_uri(), "languageId": language, "version": 1, "text": text}})

    def wait_for_index(self):
        while not self.is_indexed:
            self.receive()

    def close(self):
        self.request("shutdown", None)
        self.notify("exit", None)
        self.process.stdin.close()
        self.process.wait()


def callers(session, source, line, column):
    position = {"textDocument": {"uri": source.as_uri()}, "position": {"line": line - 1, "character": column - 1}}
    found = set()
    for item in session.request("textDocument/prepareCallHierarchy", position) or []:
        for call in session.request("callHierarchy/incomingCalls", {"item": item}) or []:
            start = call["from"]["selectionRange"]["start"]
            found.add((call["from"]["uri"], start["line"], start["character"], call["from"]["name"]))
    return {f"{name}\t{uri}:{row + 1}:{column + 1}" for uri, row, column, name in found}


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    clangd, project, jobs, question, *words = sys.argv[1:]
    project = pathlib.Path(project).resolve()
    session = Session(clangd, project, jobs)
    if question == "callers":
        source = pathlib.Path(words[0])
        session.open(source, source.read_text(encoding="utf-8", errors="replace"))
    else:
        # A file must be open before clangd looks for a database; an empty one costs no parse worth telling.
        session.open(project / "empty.cc", "")
    session.wait_for_index()
    if question == "callers":
        answers = callers(session, source, int(words[1]), int(words[2]))
    elif question == "load":
        answers = {item["name"] for item in session.request("workspace/symbol", {"query": words[0]}) or []}
    else:
        answers = {"indexed"}
    session.close()
    for answer in sorted(answers):
        print(answer)
    return 0 if answers else 1


if __name__ == "__main__":
    sys.exit(main())
