#!/usr/bin/env python3
"""Times the verbs of the command from the start of the process to its end, on one saved model.

    command_times.py ZELKOR MODEL.json FUNCTION [ROUNDS]

FUNCTION is a qualified name that one function has. Beside each verb stands its ratio to `zelkor stats`, which reads the
model and does little else, and for the question who calls FUNCTION the ratio to jq answering it from the same file.
Rounds are interleaved, and the median of each counts. Needs a model with code insight; jq for the peer.
"""

import json
import shutil
import statistics
import subprocess
import sys
import time

CALLERS_BY_JQ = (
    '[.. | objects | select(.class? == "codeinsight.FunctionInfo" and (.CalledFuns // [] | index($id))) | .Function] | length'
)


def seconds(command):
    start = time.perf_counter()
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    if done.returncode > 1:
        sys.exit(f"{' '.join(command)}: {done.stderr}")
    return time.perf_counter() - start, done.stdout


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    zelkor, model, function = sys.argv[1:4]
    rounds = int(sys.argv[4]) if len(sys.argv) > 4 else 5
    subjects = json.loads(seconds([zelkor, "show", "--json", model, function])[1])["results"]
    if len(subjects) != 1:
        sys.exit(f"'{function}' names {len(subjects)} elements, not one")
    ask = {
        verb: [zelkor, verb, model, *words]
        for verb, words in {
            "stats": [], "find": ["--qualified", function], "show": [function], "list": [], "tree": ["--transitive"],
            "callers": [function, "--exact"], "callees": [function, "--transitive"], "path": ["main", function],
            "writes": [function, "--transitive"], "refs": [function], "includes": [], "validate": [], "export": [],
        }.items()
    }
    if shutil.which("jq"):
        ask["jq: callers"] = ["jq", "--arg", "id", subjects[0]["uuid"], CALLERS_BY_JQ, model]
    times = {name: [] for name in ask}
    for _ in range(rounds):
        for name, command in ask.items():
            times[name].append(seconds(command))
    if "jq: callers" in ask:
        ours = json.loads(seconds([*ask["callers"], "--json"])[1])["results"]
        here = sum(row["class"] != "Variable" and row["relation"] == "calls" for row in ours)
        there = int(times["jq: callers"][0][1])
        if here != there:
            sys.exit(f"jq finds {there} callers, zelkor {here}")
    median = {name: statistics.median(run[0] for run in runs) for name, runs in times.items()}
    print(f"{'':14}{'seconds':>9}{'/ stats':>9}")
    for name, value in median.items():
        print(f"{name:14}{value:9.3f}{value / median['stats']:9.2f}")
    if "jq: callers" in median:
        print(f"callers / jq: {median['callers'] / median['jq: callers']:.3f}")


if __name__ == "__main__":
    main()
