#!/usr/bin/python3
"""Writes a build.ninja that imports each unit of a compile database by itself and merges them.

    plan.py -p BUILD_DIR -o FOLDER [--zelkor PROGRAM] [-- OPTION OF ZELKOR IMPORT ...]
    ninja -C FOLDER

FOLDER/model.json is what `zelkor import -p BUILD_DIR` would write.
"""

import argparse
import os
import shlex
import subprocess

RULES = """\
rule unit
  command = {zelkor} import -p {database} --unit $unit -o $out --depfile $out.d -q {options}
  deps = gcc
  depfile = $out.d
  restat = 1
  description = import $unit
rule merge
  command = {zelkor} merge units -p {database} -o $out {merged}
  description = merge
"""


def escaped(text, more=""):
    return "".join("$" + c if c in "$" + more else c for c in text)


def unit_file(unit):
    return os.path.join("units", unit.replace("../", "__/").lstrip("/") + ".zku")


def options_of_merge(options):
    """Those that decide what is in the model."""
    taken = []
    words = iter(options)
    for word in words:
        if word == "--root":
            taken += [word, next(words, "")]
        elif word.startswith("--root=") or word in ("--transitive", "--no-insight"):
            taken.append(word)
    return taken


def plan(zelkor, database, options):
    command = [zelkor, "import", "-p", database, "--list-units", *options]
    units = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines()
    lines = [RULES.format(zelkor=escaped(shlex.quote(zelkor)), database=escaped(shlex.quote(database)),
                          options=escaped(shlex.join(options)),
                          merged=escaped(shlex.join(options_of_merge(options))))]
    files = []
    for unit in units:
        files.append(escaped(unit_file(unit), " :"))
        lines.append(f"build {files[-1]}: unit | {escaped(database, ' :')}")
        lines.append(f"  unit = {escaped(shlex.quote(unit))}")
    lines.append("build model.json: merge | $\n  " + " $\n  ".join(files))
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("-p", dest="database", required=True)
    parser.add_argument("-o", dest="folder", required=True)
    parser.add_argument("--zelkor", default="zelkor")
    parser.add_argument("options", nargs="*")
    given = parser.parse_args()
    database = os.path.abspath(given.database)
    if os.path.isdir(database):
        database = os.path.join(database, "compile_commands.json")
    text = plan(given.zelkor, database, given.options)
    os.makedirs(given.folder, exist_ok=True)
    with open(os.path.join(given.folder, "build.ninja"), "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main()
