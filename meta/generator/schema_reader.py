"""Reads the TOML files of a schema into plain tables with known keys, and collects mistakes with places."""

from __future__ import annotations

import difflib
import re
import tomllib
import uuid
from collections.abc import Iterable, Iterator
from dataclasses import dataclass, field
from pathlib import Path


class SchemaError(Exception):
    """All mistakes of one load, one per line: file, line, dotted key path, what is wrong."""

    def __init__(self, messages: Iterable[str]) -> None:
        self.messages = tuple(messages)
        super().__init__("\n".join(self.messages))


@dataclass(frozen=True)
class Place:
    """A key of one file."""

    file: str
    path: tuple[str, ...] = ()
    lines: dict[tuple[str, ...], int] = field(default_factory=dict, repr=False, compare=False)

    def at(self, *keys: str) -> Place:
        return Place(self.file, self.path + keys, self.lines)

    @property
    def line(self) -> int:
        """That of the innermost table or key on the path which has a line of its own."""
        outwards = (self.path[:n] for n in range(len(self.path), -1, -1))
        return next((self.lines[path] for path in outwards if path in self.lines), 1)

    def __str__(self) -> str:
        return f"{self.file}:{self.line}: {'.'.join(self.path)}".rstrip(": ")


class Problems:
    def __init__(self, directory: Path) -> None:
        self.directory = directory
        self._found: list[tuple[str, int, str]] = []

    def add(self, place: Place, message: str) -> None:
        self._found.append((place.file, place.line, f"{place}: {message}"))

    def unknown(self, place: Place, what: str, name: str, known: Iterable[str]) -> None:
        near = difflib.get_close_matches(name, list(known), 1)
        self.add(place, f"there is no {what} '{name}'" + (f"; did you mean '{near[0]}'?" if near else ""))

    def raise_if_any(self) -> None:
        if self._found:
            raise SchemaError(dict.fromkeys(message for _, _, message in sorted(self._found)))


# A row is key: (TOML type, value when the key is left out). REQUIRED keys must be given. A key of type FLAG
# can only be true, so that a table has one way of saying "no".
REQUIRED = object()
FLAG = "true"

_DESCRIBED = {"doc": (str, REQUIRED)}
_CHAPTER = {"package": (str, REQUIRED), "classes": (dict, {}), "datatypes": (dict, {}), "enums": (dict, {})}
_TYPES = {
    "classes": {
        "base": (str, REQUIRED),
        "identity": (str, REQUIRED),
        "abstract": (FLAG, False),
        "script_methods": (list, None),
        **_DESCRIBED,
        "properties": (dict, {}),
        "operations": (dict, {}),
    },
    "datatypes": {"identity": (str, REQUIRED), **_DESCRIBED, "properties": (dict, REQUIRED)},
    "enums": {"identity": (str, REQUIRED), **_DESCRIBED, "literals": (dict, REQUIRED)},
}
_PROPERTY = {
    "type": (str, REQUIRED),
    "many": (FLAG, False),
    "keyed_by": (str, None),
    "contained": (FLAG, False),
    "unique": (FLAG, False),
    "unordered": (FLAG, False),
    "opposite": (str, None),
    "derived": (FLAG, False),
    "read_only": (FLAG, False),
    "transient": (FLAG, False),
    "view_of": (str, None),
    "default": (str, None),
    "default_none": (FLAG, False),
    "custom_setter": (FLAG, False),
    "pending": (FLAG, False),
    **_DESCRIBED,
}
_FIELD = {key: _PROPERTY[key] for key in ("type", "default", "doc")}
_PLAIN_PROPERTY = {key: fallback for key, (_, fallback) in _PROPERTY.items()}
_OPERATION = {
    "returns": (str, REQUIRED),
    "lower": (int, 1),
    "upper": (int, 1),
    "args": (list, []),
    "static": (FLAG, False),
    "abstract": (FLAG, False),
    "pending": (FLAG, False),
    **_DESCRIBED,
}
_ARGUMENT = {"name": (str, REQUIRED), "type": (str, REQUIRED), "out": (FLAG, False), **_DESCRIBED}
_LITERAL = {"value": (int, REQUIRED), "doc": (str, "")}
_FRAME = {
    "uri_root": (str, REQUIRED),
    "identity_namespace": (str, REQUIRED),
    "script_prefix": (str, REQUIRED),
    "short_names_in": (str, REQUIRED),
    "root": (dict, REQUIRED),
    "packages": (dict, REQUIRED),
}
_ROOT = {"identity": (str, REQUIRED), "path": (str, REQUIRED), "imports": (str, REQUIRED)}
_TYPE_NAMES = {
    str: "a string",
    int: "an integer",
    dict: "a table",
    list: "an array",
    FLAG: "true, or no such key",
}


def _fits(value: object, wanted: object) -> bool:
    if wanted is FLAG:
        return value is True
    return isinstance(value, wanted) and not (wanted is int and isinstance(value, bool))


def _take(raw: object, keys: dict, place: Place, problems: Problems) -> dict:
    """The values of all `keys`; a wrong or missing one is reported and replaced, so that reading goes on."""
    if not isinstance(raw, dict):
        problems.add(place, "expected a table")
        raw = {}
    else:
        for key in raw.keys() - keys.keys():
            problems.unknown(place.at(key), "key", key, keys)
        for key, (_, fallback) in keys.items():
            if fallback is REQUIRED and key not in raw:
                problems.add(place, f"the key '{key}' is missing")
    result = {"place": place}
    for key, (wanted, fallback) in keys.items():
        value = raw.get(key, fallback)
        if key in raw and not _fits(value, wanted):
            problems.add(place.at(key), f"expected {_TYPE_NAMES[wanted]}")
            value = fallback
        elif key == "doc" and key in raw and fallback is REQUIRED and not value.strip():
            problems.add(place.at(key), "the text is empty")
        if value is REQUIRED:
            value = {str: "", int: 0, dict: {}, list: []}[wanted]
        result[key] = value
    return result


_HEADER = re.compile(r"\s*\[\s*([^\[\]]+?)\s*\]\s*(?:#.*)?$")
_KEY = re.compile(r'\s*((?:[\w-]+|"[^"]*")(?:\s*\.\s*(?:[\w-]+|"[^"]*"))*)\s*=')
_PART = re.compile(r'"([^"]*)"|([\w-]+)')


def _line_index(text: str) -> dict[tuple[str, ...], int]:
    """The line of each table header and of each key at the start of a line."""
    lines: dict[tuple[str, ...], int] = {}
    table: tuple[str, ...] = ()
    for number, line in enumerate(text.splitlines(), 1):
        found = _HEADER.match(line) or _KEY.match(line)
        if found is None:
            continue
        path = tuple(quoted or bare for quoted, bare in _PART.findall(found[1]))
        if found.re is _HEADER:
            table = path
            lines.setdefault(table, number)
        else:
            lines.setdefault(table + path, number)
    return lines


def _read(file: Path, problems: Problems) -> tuple[dict, Place]:
    name = file.relative_to(problems.directory).as_posix()
    try:
        text = file.read_text(encoding="utf-8")
        return tomllib.loads(text), Place(name, (), _line_index(text))
    except (OSError, UnicodeDecodeError, tomllib.TOMLDecodeError) as error:
        line = re.search(r"at line (\d+)", str(error))
        problems.add(Place(name, (), {(): int(line[1])} if line else {}), str(error))
        return {}, Place(name)


def read_packages(directory: Path, problems: Problems) -> dict:
    """packages.toml. Raises when it cannot be used, since all other names hang on it."""
    raw, place = _read(directory / "packages.toml", problems)
    problems.raise_if_any()
    frame = _take(raw, _FRAME, place, problems)
    frame["root"] = _take(frame["root"], _ROOT, place.at("root"), problems)
    frame["packages"] = {
        name: _take(package, _DESCRIBED, place.at("packages", name), problems)
        for name, package in frame["packages"].items()
    }
    try:
        frame["identity_namespace"] = uuid.UUID(frame["identity_namespace"])
    except ValueError:
        problems.add(place.at("identity_namespace"), "expected a UUID")
    problems.raise_if_any()
    return frame


@dataclass(frozen=True)
class Chapter:
    name: str
    place: Place
    package: str
    types: tuple[tuple[str, str, dict], ...]  # (kind of table, name, its keys)


def read_chapters(directory: Path, problems: Problems) -> list[Chapter]:
    """All other TOML files. Raises when one is no TOML: every reference into it would be a mistake too."""
    files = sorted(f for f in directory.rglob("*.toml") if f != directory / "packages.toml")
    read = [(file, *_read(file, problems)) for file in files]
    problems.raise_if_any()
    chapters = []
    for file, raw, place in read:
        chapter = _take(raw, _CHAPTER, place, problems)
        types = tuple(_read_types(chapter, place, problems))
        name = file.relative_to(directory).with_suffix("").as_posix()
        chapters.append(Chapter(name, place, chapter["package"], types))
    return chapters


def _read_types(chapter: dict, place: Place, problems: Problems) -> Iterator[tuple[str, str, dict]]:
    for kind, keys in _TYPES.items():
        for name, raw in chapter[kind].items():
            here = place.at(kind, name)
            table = _take(raw, keys, here, problems)
            if kind == "enums":
                literals = {n: {"value": v} if _fits(v, int) else v for n, v in table["literals"].items()}
                table["literals"] = _entries(literals, _LITERAL, here.at("literals"), problems)
                yield kind, name, table
                continue
            property_keys = _FIELD if kind == "datatypes" else _PROPERTY
            fields = _entries(table["properties"], property_keys, here.at("properties"), problems)
            table["properties"] = {entry: _PLAIN_PROPERTY | field for entry, field in fields.items()}
            operations = _entries(table.get("operations", {}), _OPERATION, here.at("operations"), problems)
            for operation in operations.values():
                operation["args"] = [
                    _take(argument, _ARGUMENT, operation["place"].at("args", str(number)), problems)
                    for number, argument in enumerate(operation["args"])
                ]
            table["operations"] = operations
            yield kind, name, table


def _entries(raw: dict, keys: dict, place: Place, problems: Problems) -> dict[str, dict]:
    return {name: _take(value, keys, place.at(name), problems) for name, value in raw.items()}
