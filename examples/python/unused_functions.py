#!/usr/bin/python3
"""Functions of the project that nothing calls and nothing points at.

    unused_functions.py MODEL

A function that overrides another one is reached through its base, `main` by the system, and calls of destructors are
not all recorded; these do not count.
"""

import sys

import zelkor
from zelkor.ast import Function, SpecialFunctionKind
from zelkor.ast.codeinsight import FunctionInfo, FunInfo
from zelkor.ast.source import SourceFile


def file_of(function: Function) -> SourceFile | None:
    return function.def_pos.file if function.def_pos else None


def main(path: str) -> int:
    model = zelkor.load(path).model
    if not model.query(FunctionInfo).exists():
        print("the model has no code insight; import it without --no-insight", file=sys.stderr)
        return 2
    reached = {method for virtual in model.query(FunInfo) for method in virtual.called_funs}
    idle = (FunctionInfo.is_called == False) & (FunctionInfo.is_address_taken == False)
    for info in model.query(FunctionInfo).where(idle):
        function = info.function
        if function is None or function in reached or function.name == "main" or function.is_compiler_generated:
            continue
        if function.special_kind == SpecialFunctionKind.Destructor:
            continue
        file = file_of(function)
        if file is None or file.is_included_from_system_include_dir or function.def_pos is None:
            continue
        print(f"{file.path}:{function.def_pos.line}: {function.generate_signature()}")
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1]))
