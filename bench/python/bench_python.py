#!/usr/bin/python3
"""The Python module beside a plain pybind11 class and beside the library's own calls, in one run.

    bench_python.py [--elements N] [--rounds N] [--json]

Printed is the median of the rounds' ratios; time is processor time of the process. Exit status 1: a check failed.
"""

import argparse
import gc
import json
import statistics
import sys
import time

import zelkor
import zelkor_bench_floor as floor
from zelkor.ast import FinderOptions, Function, Project
from zelkor.ast.source import CompilationUnit


def build(count):
    """One unit of functions; every seventh is inline."""
    model = zelkor.Model()
    with model.transaction():
        unit = Project(model, compilations=[CompilationUnit()]).compilations[0]
        for start in range(0, count, 10000):
            unit.symbols.extend(Function(name=f"function_{i}", is_inline=i % 7 == 0)
                                for i in range(start, min(start + 10000, count)))
    return model, unit


def characters(objects):
    total = 0
    for one in objects:
        total += len(one.name)
    return total


def rows(model, unit, count):
    """Name, what is measured, what it is measured against, and the mark."""
    plain = floor.plain_objects(count)
    handles = list(model.query(Function))
    everywhere = FinderOptions(include_system_headers=True)
    wanted = f"function_{count // 2}"
    inline = model.query(Function).where(Function.is_inline == True)
    named = model.query(Function).where(Function.name.endswith("99"), Function.params.size() == 0)
    return [
        ("walk.list", lambda: characters(unit.symbols), lambda: characters(plain), 3.0),
        ("walk.query", lambda: characters(model.query(Function)), lambda: characters(plain), 3.0),
        ("walk.objects", lambda: characters(handles), lambda: characters(plain), 3.0),
        ("query", inline.count, lambda: floor.count_inline(model), 1.1),
        ("query.text", named.count, lambda: floor.count_named(model, "99"), 1.1),
        ("search", lambda: len(unit.find_symbol_by_meta_class_and_name(Function, wanted, everywhere)),
         lambda: floor.search(model, wanted), 1.1),
    ]


def timed(function):
    gc.collect()
    start = time.process_time()
    result = function()
    return time.process_time() - start, result


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--elements", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--json", action="store_true")
    options = parser.parse_args()
    model, unit = build(options.elements)
    gc.freeze()
    table = rows(model, unit, options.elements)
    times = {name: [] for name, *_ in table}
    for _ in range(options.rounds):
        for name, ours, theirs, _ in table:
            (mine, a), (its, b) = timed(ours), timed(theirs)
            if a != b:
                print(f"{name}: {a} is not {b}", file=sys.stderr)
                return 1
            times[name].append((mine, its))
    if options.json:
        print(json.dumps({name: [mine / its for mine, its in pairs] for name, pairs in times.items()}))
        return 0
    print(f"{'row':14}{'ns each':>10}{'against':>10}{'ratio':>8}{'mark':>7}")
    for name, _, _, mark in table:
        each = [statistics.median(column) * 1e9 / options.elements for column in zip(*times[name])]
        ratio = statistics.median(mine / its for mine, its in times[name])
        print(f"{name:14}{each[0]:10.1f}{each[1]:10.1f}{ratio:8.2f}{mark:7.1f}{'' if ratio <= mark else '  MISSED'}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
