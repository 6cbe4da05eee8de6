#!/usr/bin/python3
"""Who writes a variable, or may write it because it has its address.

    who_writes.py MODEL QUALIFIED_NAME
"""

import sys

import zelkor
from zelkor.ast import Function, Variable
from zelkor.ast.codeinsight import FunctionInfo, PtrInfo


def describe(function: Function | None, what: str) -> str:
    if function is None:
        return f"somebody {what}"
    place = function.def_pos
    where = f"{place.file.path}:{place.line}: " if place and place.file else ""
    return f"{where}{function.generate_signature()} {what}"


def main(path: str, name: str) -> int:
    model = zelkor.load(path).model
    if not model.query(FunctionInfo).exists():
        print("the model has no code insight; import it without --no-insight", file=sys.stderr)
        return 2
    variable = model[name]
    if not isinstance(variable, Variable):
        print(f"{name} is no variable but a {type(variable).__name__}", file=sys.stderr)
        return 2
    for info in model.query(FunctionInfo):
        if variable in info.written_vars:
            print(describe(info.function, "writes it"))
        elif any(isinstance(note, PtrInfo) and variable in note.points_to for note in info.annotations):
            print(describe(info.function, "takes its address"))
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        sys.exit(main(sys.argv[1], sys.argv[2]))
    except zelkor.NotFound as error:
        sys.exit(str(error))
