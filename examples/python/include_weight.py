#!/usr/bin/python3
"""Which headers weigh most: how many files each brings in, itself included, and how many units get it.

    include_weight.py MODEL [COUNT]
"""

import sys

import zelkor
from zelkor.ast.source import SourceFile


def reachable(start: SourceFile) -> set[SourceFile]:
    found, waiting = {start}, [start]
    while waiting:
        for file in waiting.pop().included_files:
            if file not in found:
                found.add(file)
                waiting.append(file)
    return found


def main(path: str, count: int) -> int:
    model = zelkor.load(path).model
    weights = {file: reachable(file) for file in model.query(SourceFile)}
    units = [file for file in weights if not file.is_include]
    rows = [
        (len(weights[file]) * users, len(weights[file]), users, file.path)
        for file in weights
        if file.is_include and (users := sum(file in weights[unit] for unit in units))
    ]
    print("  files  units  header")
    for _, files, users, name in sorted(rows, key=lambda row: (-row[0], row[3]))[:count]:
        print(f"{files:7}{users:7}  {name}")
    return 0


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], int(sys.argv[2]) if len(sys.argv) == 3 else 10))
