#!/usr/bin/python3
"""What would happen if a symbol or namespace were called otherwise. Nothing is changed: the renaming is rolled back.

    rename_what_if.py MODEL QUALIFIED_NAME NEW_NAME
"""

import sys

import zelkor
from zelkor.ast import Namespace, Symbol


def names(symbols: list[Symbol]) -> dict[Symbol, str]:
    """The signatures of functions, the qualified names of all else."""
    return {symbol: symbol.generate_signature() for symbol in symbols}


def main(path: str, name: str, new_name: str) -> int:
    model = zelkor.load(path).model
    symbol: Symbol | Namespace = model[name]
    everything = list(model.query(Symbol))
    before = names(everything)
    with model.transaction() as level:
        symbol.name = new_name
        after = names(everything)
        level.rollback()
    changed = [one for one in everything if before[one] != after[one]]
    taken = {text for one, text in before.items() if text == after[one]}
    print(f"{len(changed)} of {len(everything)} names change")
    for one in changed:
        clash = "   CLASH: there is one already" if after[one] in taken else ""
        print(f"  {before[one]}  ->  {after[one]}{clash}")
    assert symbol.get_fully_qualified_name() == name
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    try:
        sys.exit(main(*sys.argv[1:]))
    except zelkor.NotFound as error:
        sys.exit(str(error))
