#!/usr/bin/python3
"""Classes with virtual methods whose destructor is not virtual: deleting an object through them is a fault.

    no_virtual_destructor.py MODEL

A destructor is virtual, too, when that of a base is. Classes of system headers and final ones do not count.
"""

import sys

import zelkor
from zelkor.ast import SpecialFunctionKind
from zelkor.ast.types import Method, StructType


def has_virtual_destructor(struct: StructType) -> bool:
    own = struct.query(Method, Method.special_kind == SpecialFunctionKind.Destructor, Method.is_virtual == True)
    bases = (base.type for base in struct.base_classes)
    return own.exists() or any(isinstance(base, StructType) and has_virtual_destructor(base) for base in bases)


def main(path: str) -> int:
    model = zelkor.load(path).model
    for struct in model.query(StructType).where(StructType.methods.any(Method.is_virtual == True)):
        place = struct.def_pos
        if place is None or place.file is None or place.file.is_included_from_system_include_dir or struct.is_final:
            continue
        if not has_virtual_destructor(struct):
            print(f"{place.file.path}:{place.line}: {struct.get_fully_qualified_name()}")
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1]))
