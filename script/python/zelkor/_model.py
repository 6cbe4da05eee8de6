"""What models, elements and `Ast` can do beside what the library itself offers."""

from __future__ import annotations

import difflib
import os
from collections.abc import Iterable, MutableSequence
from typing import Any, TypeVar

from zelkor import _core
from zelkor._core import Condition, List, Model, ModelElement, Query
from zelkor.ast import Ast
from zelkor.errors import NotFound

_NAMES_TO_COMPARE = 2000

_Element = TypeVar("_Element", bound=ModelElement)


def _query(self: Model | ModelElement, type: type[_Element], *conditions: Condition) -> Query[_Element]:
    """The elements of a class in the model, or below the element; conditions as in `Query.where`."""
    query = Query(self, type)
    return query.where(*conditions) if conditions else query


def _find(
    self: Model,
    type: type[_Element] | None = None,
    *,
    name: str | bytes | None = None,
    qualified: str | bytes | None = None,
    signature: str | bytes | None = None,
    regex: str | None = None,
    file: str | os.PathLike[str] | None = None,
) -> list[_Element]:
    """The symbols and namespaces that fit all that is given, each in the order of the model.

    `name` is the simple name, `qualified` the whole one, `signature` the declaration in one line, `regex` a pattern
    that is found anywhere in the qualified name, `file` the last parts of the path of a file that declares the symbol.
    """
    found: list[_Element] = _core.find(self, type, name, qualified, signature, regex, file, False)
    return found


def _near(model: Model, qualified: str) -> list[str]:
    """Qualified names of symbols that have a name like the last part of this one."""
    simple = qualified.rpartition("::")[2].split("(")[0]
    names: Iterable[str | bytes] = _core.simple_names(model)
    likely = [n for n in names if isinstance(n, str) and abs(len(n) - len(simple)) <= 3]
    if len(likely) > _NAMES_TO_COMPARE:
        likely = [n for n in likely if n[0].lower() == simple[:1].lower()][:_NAMES_TO_COMPARE]
    close = difflib.get_close_matches(simple, likely, 3, 0.5)
    symbols = [s for name in close for s in _core.find(model, None, name, None, None, None, None, False)[:20]]
    whole = {str(s.get_fully_qualified_name()) for s in symbols}
    return difflib.get_close_matches(qualified, sorted(whole), 3, 0.5)


def _item(self: Model, qualified: str) -> Any:
    """The first symbol of that qualified name, else a namespace; KeyError with near names when there is none."""
    found = _core.find(self, None, None, qualified, None, None, None, True)
    if found:
        return found[0]
    near = _near(self, qualified)
    hint = "; near ones: " + ", ".join(near) if near else ""
    error = NotFound(f"there is no symbol '{qualified}'{hint}")
    error.catalogue, error.id, error.arguments = "zelkor:python", "NotFound", (qualified, *near)
    raise error


def _save(self: Ast | Model, path: str | os.PathLike[str], format: str | None = None) -> None:
    """Writes the model to a file, whole or not at all: XML when the name ends in .xml, else JSON, unless told."""
    _core.save(self, path, format)


def _dumps(self: Ast | Model, format: str = "json") -> str:
    """The model as a text."""
    text: str = _core.dumps(self, format)
    return text


def _to_dict(self: ModelElement) -> dict[str, Any]:
    """The element with all that it contains, in the form of the JSON files."""
    result: dict[str, Any] = _core.to_dict(self)
    return result


def _attach() -> None:
    for owner, methods in (
        (Model, {"query": _query, "find": _find, "__getitem__": _item, "save": _save, "dumps": _dumps}),
        (ModelElement, {"query": _query, "to_dict": _to_dict}),
        (Ast, {"save": _save, "dumps": _dumps}),
    ):
        for name, method in methods.items():
            setattr(owner, name, method)
    MutableSequence.register(List)


_attach()
