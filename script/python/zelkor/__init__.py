"""Models of C and C++ sources: load them, ask them, change them.

    import zelkor
    from zelkor.ast import Function

    ast = zelkor.load("model.json")
    for function in ast.model.query(Function).where(Function.is_inline == True):
        print(function.get_fully_qualified_name())

The classes of the model are in `zelkor.ast` and the packages in it. They are made from what the library tells of
itself when this package is imported.
"""

from __future__ import annotations

import sys as _sys

from zelkor import _core, _packages
from zelkor._core import (
    Change,
    Condition,
    List,
    Model,
    Notice,
    Query,
    Subscription,
    Transaction,
    is_a,
    load,
    loads,
)
from zelkor.errors import DeadHandle, Error, FileError, NotFound, ParseError

_packages.install(_sys.modules[__name__])

from zelkor import _model as _model  # noqa: E402  (it stands on the classes)
from zelkor import ast as ast  # noqa: E402
from zelkor._core import ModelElement as ModelElement  # noqa: E402

__all__ = [
    "Change", "Condition", "DeadHandle", "Error", "FileError", "List", "Model", "ModelElement", "NotFound", "Notice",
    "ParseError", "Query", "Subscription", "Transaction", "ast", "is_a", "load", "loads",
]
