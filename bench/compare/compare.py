#!/usr/bin/env python3
"""Sets `zelkor` beside other tools on the same sources: import, memory, size, reading again, one question.

    compare.py BUILD_DIR FUNCTION [--release DIR] [--jobs N] [--rounds N] [--only TEXT] [--skip TEXT]
               [--work DIR]

BUILD_DIR has a compile database (scripts/corpus.sh makes some), FUNCTION is the qualified name of one function whose last
part no other function has. --release names the build with `zelkor` and `bench_parse`. Printed is a table in Markdown, with
medians of interleaved rounds; what takes more than a minute is run once. Peers that are absent are told (setup.sh beside
this file installs them). Exits with 1 when `zelkor` or the parser failed.
"""

import argparse
import pathlib
import statistics
import sys
import tempfile

from measure import measure
from peers import PEERS, FrontEnd, Project, Zelkor

SLOW = 60  # seconds
STEPS = ("build", "load", "callers")


class Results:
    """What the rounds gave for one peer."""

    def __init__(self, peer):
        self.peer = peer
        self.costs = {step: [] for step in STEPS}
        self.size = None
        self.found = None
        self.trouble = ""

    def run(self, project, step):
        """Does nothing when the peer has no such step, or had all of it that its slowness allows."""
        done = self.costs[step]
        if self.trouble or (done and done[0].wall > SLOW):
            return
        commands = list(getattr(self.peer, step)(project))
        if not commands:
            return
        cost = measure(commands, project.jobs)
        if cost.failures:
            self.trouble = f"{step}: {len(cost.failures)} of {len(commands)} failed, first {cost.failures[0]}"
            return
        done.append(cost)
        if step == "build":
            self.size = self.peer.size(project)
        elif step == "callers":
            self.found = self.peer.count(cost.texts)

    def median(self, step, field):
        return statistics.median(getattr(cost, field) for cost in self.costs[step]) if self.costs[step] else None

    def ratio(self, other, field):
        """The median of the ratios within each round; a slow peer has but the first."""
        pairs = list(zip(self.costs["build"], other.costs["build"]))
        return statistics.median(getattr(a, field) / getattr(b, field) for a, b in pairs) if pairs else None

    def row(self, floor):
        megabytes = lambda value: None if value is None else value / 1e6
        cells = [
            (self.median("build", "wall"), 2), (self.ratio(floor, "wall"), 2),
            (self.median("build", "processor"), 2), (self.ratio(floor, "processor"), 2),
            (megabytes(self.median("build", "peak")), 0), (megabytes(self.size), 1),
            (self.median("load", "wall"), 3), (megabytes(self.median("load", "peak")), 0),
            (self.median("callers", "wall"), 3), (self.found, 0),
        ]
        texts = ["" if value is None else f"{value:,.{digits}f}" for value, digits in cells]
        return f"| {self.peer.name} | " + " | ".join(texts) + " |"


def report(project, results, absent):
    floor = next(result for result in results if type(result.peer) is FrontEnd)
    print(f"\n{project.database}: {len(project.units)} units, callers of `{project.function}`, -j{project.jobs}\n")
    print("| | import s | / parse | CPU s | / parse | peak MB | size MB | read s | read MB | callers s | found |")
    print("|---|---|---|---|---|---|---|---|---|---|---|")
    for result in results:
        print(result.row(floor))
    for text in [*absent, *(f"{result.peer.name}: {result.trouble}" for result in results if result.trouble)]:
        print(f"\n{text}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", metavar="BUILD_DIR")
    parser.add_argument("function", metavar="FUNCTION")
    parser.add_argument("--release", default="build/release", type=pathlib.Path)
    parser.add_argument("--jobs", default=2, type=int)
    parser.add_argument("--rounds", default=3, type=int)
    parser.add_argument("--only", default="", metavar="TEXT", help="peers with TEXT in their names, zelkor and parsing alone")
    parser.add_argument("--skip", metavar="TEXT", help="no peers with TEXT in their names")
    parser.add_argument("--work", help="where outputs go and stay; otherwise a directory of its own that goes away")
    options = parser.parse_args()
    tools = {"zelkor": str(options.release.resolve() / "tools/command/zelkor"),
             "bench_parse": str(options.release.resolve() / "bench/bench_parse")}
    with tempfile.TemporaryDirectory(prefix="zelkor-compare-") as own:
        work = pathlib.Path(options.work or own)
        work.mkdir(parents=True, exist_ok=True)
        needed = (FrontEnd, Zelkor)
        wanted = [peer for peer in PEERS if type(peer) in needed or
                  (options.only in peer.name and not (options.skip and options.skip in peer.name))]
        project = Project(options.build, options.function, work.resolve(), tools, options.jobs)
        absent = [f"{peer.name}: absent, {peer.missing(project)}" for peer in wanted if peer.missing(project)]
        results = [Results(peer) for peer in wanted if not peer.missing(project)]
        if sum(type(result.peer) in needed for result in results) < len(needed):
            sys.exit("\n".join([*absent, "build the targets zelkor and bench_parse, and name their build with --release"]))
        for number in range(options.rounds):
            print(f"round {number + 1} of {options.rounds}", file=sys.stderr)
            for step in STEPS:
                for result in results:
                    result.run(project, step)
        report(project, results, absent)
        return int(any(result.trouble for result in results if type(result.peer) in needed))


if __name__ == "__main__":
    sys.exit(main())
