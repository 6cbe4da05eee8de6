"""The schema of the model: reads the TOML chapters, checks them and computes all that follows from them.

`load(directory)` gives an immutable `Schema` (schema_model.py), or raises one `SchemaError` that lists every
mistake found. docs/generator.md tells what the keys mean. As a program: `schema.py DIR [--counts | --json]`.
"""

from __future__ import annotations

import argparse
import json
import sys
import uuid
from collections.abc import Iterator
from pathlib import Path

import schema_rules
from schema_model import (
    FOREIGN,
    KERNEL_ROOT,
    PRIMITIVES,
    Argument,
    Class,
    Datatype,
    Enum,
    Literal,
    Operation,
    Package,
    Property,
    Schema,
)
from schema_reader import Place, Problems, SchemaError, read_chapters, read_packages

__all__ = ["load", "Schema", "SchemaError"]


def _link(target: object, **values: object) -> None:
    """Fills fields that are only known once all types exist; nothing calls this after `load` has returned."""
    for name, value in values.items():
        object.__setattr__(target, name, value)


class _Builder:
    """Turns the raw tables into linked objects, in steps that carry on past the mistakes they report."""

    def __init__(self, directory: Path) -> None:
        self.problems = Problems(directory)
        self.frame = read_packages(directory, self.problems)
        self.chapters = read_chapters(directory, self.problems)
        self.types: dict[str, Class | Datatype | Enum] = {}
        self.raw: dict[object, dict] = {}

    def build(self) -> Schema:
        self._make_packages()
        self._make_types()
        self._link_bases()
        for declared in self.types.values():
            if declared.category != "enum":
                self._make_properties(declared)
            if declared.category == "class":
                self._make_operations(declared)
        self._link_script_operations()
        self._link_properties()
        self._number()
        self._fill_packages()
        schema_rules.check(self)
        self.problems.raise_if_any()
        frame = self.frame
        return Schema(
            frame["uri_root"],
            frame["root"]["identity"],
            frame["uri_root"] + frame["root"]["path"],
            frame["uri_root"] + frame["root"]["imports"],
            tuple(self.packages.values()),
        )

    def _make_packages(self) -> None:
        self.packages: dict[str, Package] = {}
        root = self.frame["root"]
        for dotted, raw in self.frame["packages"].items():
            parent = dotted.rpartition(".")[0]
            if parent and parent not in self.packages:
                self.problems.add(raw["place"], f"the package '{parent}' must be listed before '{dotted}'")
            self.packages[dotted] = Package(
                dotted,
                raw["doc"],
                f"{self.frame['uri_root']}{root['path']}/{dotted}",
                self._identity(dotted),
                f"{self.frame['script_prefix']}.{dotted}".removeprefix("."),
                f"{dotted}.".removeprefix(self.frame["short_names_in"] + "."),
                self.packages.get(parent),
                raw["place"],
            )

    def _identity(self, dotted: str) -> str:
        return str(uuid.uuid3(self.frame["identity_namespace"], dotted))

    def _make_types(self) -> None:
        for chapter in self.chapters:
            package = self.packages.get(chapter.package)
            if package is None:
                self.problems.unknown(chapter.place.at("package"), "package", chapter.package, self.packages)
                continue
            for kind, name, raw in chapter.types:
                if name in self.types:
                    other = self.types[name].place
                    self.problems.add(raw["place"], f"{other.file}:{other.line} declares '{name}' already")
                    continue
                common = (package, name, raw["doc"], raw["identity"], chapter.name, raw["place"])
                if kind == "classes":
                    declared = Class(*common, abstract=raw["abstract"])
                elif kind == "datatypes":
                    declared = Datatype(*common)
                else:
                    declared = Enum(*common)
                    _link(declared, literals=tuple(self._literals(declared, raw)))
                self.types[name] = declared
                self.raw[declared] = raw

    def _literals(self, enum: Enum, raw: dict) -> Iterator[Literal]:
        for name, entry in raw["literals"].items():
            yield Literal(enum, name, entry["value"], entry["doc"], self._identity(f"{enum.dotted}.{name}"))

    def _link_bases(self) -> None:
        classes = {name: t for name, t in self.types.items() if t.category == "class"}
        for declared in classes.values():
            base = self.raw[declared]["base"]
            if base != KERNEL_ROOT and base not in classes:
                self.problems.unknown(declared.place.at("base"), "class", base, [*classes, KERNEL_ROOT])
            _link(declared, base=classes.get(base))
        for declared in classes.values():
            chain = [declared]
            while (base := chain[0].base) is not None and base not in chain:
                chain.insert(0, base)
            if base is not None:
                self.problems.add(declared.place.at("base"), "its chain of superclasses runs in a circle")
                chain = [declared]
            _link(declared, chain=tuple(chain))

    def _resolve(self, name: str, place: Place, foreign: bool = False) -> object:
        known = {**PRIMITIVES, **(FOREIGN if foreign else {}), **self.types}
        if name and name not in known:
            self.problems.unknown(place, "type", name, known)
        return known.get(name)

    def _make_properties(self, owner: Class | Datatype) -> None:
        made = []
        for name, raw in self.raw[owner]["properties"].items():
            multiplicity = "map" if raw["keyed_by"] else "*" if raw["many"] else "1"
            single = multiplicity == "1"
            type_ = self._resolve(raw["type"], raw["place"].at("type"))
            prop = Property(
                owner,
                name,
                raw["doc"],
                self._identity(f"{owner.dotted}.{name}"),
                raw["place"],
                type_,
                multiplicity,
                ordered=not raw["unordered"],
                unique=single or raw["unique"],
                contained=raw["contained"],
                derived=raw["derived"],
                read_only=raw["read_only"],
                transient=raw["transient"],
                pending=raw["pending"],
                custom_setter=raw["custom_setter"],
                default=schema_rules.parse_default(type_, raw, self.problems),
            )
            self.raw[prop] = raw
            made.append(prop)
        _link(owner, properties=tuple(made))

    def _make_operations(self, owner: Class) -> None:
        made = []
        for name, raw in self.raw[owner]["operations"].items():
            place = raw["place"]
            dotted = f"{owner.dotted}.{name}"
            operation = Operation(
                owner,
                name,
                raw["doc"],
                self._identity(dotted),
                place,
                self._resolve(raw["returns"], place.at("returns"), foreign=True),
                raw["lower"],
                raw["upper"],
                raw["static"],
                raw["abstract"],
                raw["pending"],
            )
            _link(operation, arguments=tuple(self._make_argument(operation, a) for a in raw["args"]))
            self.raw[operation] = raw
            made.append(operation)
        _link(owner, operations=tuple(made))

    def _link_script_operations(self) -> None:
        for declared in (t for t in self.types.values() if t.category == "class"):
            known = {op.name: op for op in declared.all_operations if not op.has_output}
            names = self.raw[declared]["script_methods"]
            if names is None:
                inherited = [op.name for op in known.values() if op.owner is not declared]
                family = [n for n in (f"is{declared.name}", f"is{declared.name.removesuffix('Constant')}") if n in inherited]
                names = family[:1] + [op.name for op in declared.operations if not op.has_output]
            names = [str(name) for name in names]
            for name in names:
                if name not in known:
                    place = declared.place.at("script_methods")
                    self.problems.unknown(place, f"operation of {declared.name} without results in arguments", name, known)
            _link(declared, script_operations=tuple(known[name] for name in names if name in known))

    def _make_argument(self, operation: Operation, raw: dict) -> Argument:
        type_ = self._resolve(raw["type"], raw["place"].at("type"), foreign=True)
        identity = self._identity(f"{operation.dotted}.{raw['name']}")
        return Argument(operation, raw["name"], raw["doc"], identity, raw["out"], type_)

    def properties(self) -> Iterator[Property]:
        return (p for t in self.types.values() if t.category != "enum" for p in t.properties)

    def operations(self) -> Iterator[Operation]:
        return (op for t in self.types.values() if t.category == "class" for op in t.operations)

    def _link_properties(self) -> None:
        for prop in self.properties():
            raw = self.raw[prop]
            target = prop.type if getattr(prop.type, "category", "") == "class" else None
            for key, attribute, holder in (
                ("opposite", "opposite", target),
                ("keyed_by", "key", target),
                ("view_of", "view_of", prop.owner),
            ):
                if raw[key] is None or holder is None:
                    continue
                found = holder.property(raw[key])
                if found is None:
                    known = [p.name for p in holder.all_properties]
                    self.problems.unknown(prop.place.at(key), f"property of {holder.name}", raw[key], known)
                _link(prop, **{attribute: found})
        for prop in self.properties():
            _link(prop, kind=self._kind(prop))

    @staticmethod
    def _kind(prop: Property) -> str:
        if prop.view_of is not None:
            return "view"
        if prop.derived:
            return "derived"
        if prop.multiplicity == "map":
            return "map"
        if getattr(prop.type, "category", "") != "class":
            return "many_attribute" if prop.many else "attribute"
        if prop.many:
            return "many_reference"
        return "container_end" if prop.opposite is not None and prop.opposite.contained else "reference"

    def _number(self) -> None:
        classes = sorted((t for t in self.types.values() if t.category == "class"), key=lambda c: c.depth)
        for declared in classes:
            index = first = declared.chain[-2].count if declared.depth > 1 else 1
            for prop in declared.properties:
                if not prop.derived:
                    _link(prop, index=index)
                    index += 1
            _link(declared, first_index=first, count=index)

    def _fill_packages(self) -> None:
        for package in self.packages.values():
            here = sorted((t for t in self.types.values() if t.package is package), key=lambda t: t.name)
            _link(
                package,
                types=tuple(t for t in here if t.category != "enum"),
                enums=tuple(t for t in here if t.category == "enum"),
            )


def load(directory: str | Path) -> Schema:
    """Reads all chapters below `directory`. Raises SchemaError with every mistake that was found."""
    return _Builder(Path(directory)).build()


def _property_json(p: Property) -> dict:
    return {
        "name": p.name,
        "index": p.index,
        "type": p.type.dotted,
        "multiplicity": p.multiplicity,
        "keyedBy": p.key.name if p.key else None,
        "contained": p.contained,
        "opposite": p.opposite.dotted if p.opposite else None,
        "ordered": p.ordered,
        "unique": p.unique,
        "derived": p.derived,
        "readOnly": p.read_only,
        "transient": p.transient,
        "default": p.default.text if p.default else None,
        "hasDefault": p.default is not None,
        "uuid": p.identity,
        "kind": p.kind,
        "viewOf": p.view_of.name if p.view_of else None,
        "initial": p.initial_value,
        "pending": p.pending,
        "customSetter": p.custom_setter,
        "doc": p.doc,
    }


def _operation_json(op: Operation) -> dict:
    return {
        "name": op.name,
        "type": op.returns.dotted,
        "lower": op.lower,
        "upper": op.upper,
        "static": op.static,
        "abstract": op.abstract,
        "invoker": op.invoker,
        "arguments": [
            {"name": a.name, "type": a.type.dotted, "input": not a.out, "uuid": a.identity, "doc": a.doc}
            for a in op.arguments
        ],
        "uuid": op.identity,
        "pending": op.pending,
        "doc": op.doc,
    }


def _declared_json(t: Class | Datatype | Enum) -> dict:
    return {
        "name": t.dotted,
        "native": t.native,
        "script": t.script,
        "short": t.short,
        "uuid": t.identity,
        "doc": t.doc,
        "header": t.header,
        "chapter": t.chapter,
    }


def _class_json(c: Class | Datatype) -> dict:
    is_class = isinstance(c, Class)
    result = _declared_json(c) | {
        "super": c.base_dotted if is_class else None,
        "abstract": is_class and c.abstract,
        "properties": [_property_json(p) for p in c.properties],
        "operations": [_operation_json(op) for op in c.operations] if is_class else [],
    }
    if is_class:
        result |= {"depth": c.depth, "count": c.count, "terms": [p.dotted for p in c.query_terms]}
    return result


def _literal_json(x: Literal) -> dict:
    return {"name": x.name, "value": x.value, "uuid": x.identity, "doc": x.doc}


def as_json(schema: Schema) -> dict:
    """The model as plain data: the form of `zelkor schema --json`, with what only the generator knows."""
    enums = [
        _declared_json(e) | {"underlying": e.underlying, "literals": [_literal_json(x) for x in e.literals]}
        for e in schema.enums
    ]
    return {
        "root": {"uuid": schema.root_identity, "uri": schema.root_uri, "imports": [schema.imported_uri]},
        "packages": [
            {"name": p.dotted, "uri": p.uri, "uuid": p.identity, "doc": p.doc} for p in schema.packages
        ],
        "classes": [_class_json(c) for c in schema.classes],
        "datatypes": [_class_json(d) for d in schema.datatypes],
        "enums": enums,
    }


def main(arguments: list[str]) -> int:
    parser = argparse.ArgumentParser(description="Check a schema folder; print what it holds.")
    parser.add_argument("directory", type=Path, help="folder with packages.toml and the chapters")
    output = parser.add_mutually_exclusive_group()
    output.add_argument("--counts", action="store_true", help="print how many of each kind there are")
    output.add_argument("--json", action="store_true", help="print the whole model as JSON")
    options = parser.parse_args(arguments)
    try:
        schema = load(options.directory)
    except SchemaError as error:
        print(error, file=sys.stderr)
        return 1
    if options.json:
        json.dump(as_json(schema), sys.stdout, indent=1, ensure_ascii=False)
        print()
    elif options.counts:
        for name, count in schema.counts().items():
            print(f"{count:5} {name}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
