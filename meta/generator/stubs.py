"""Writes what the Python module needs of a schema: type stubs, and the texts of its help.

    stubs.py OUT_DIR SCHEMA_DIR [SCHEMA_DIR ...]

`OUT_DIR/ast/__init__.pyi` and its like describe the classes that the module makes when it is imported; `docs.json` has
their docs by dotted names. Names follow the module's rule, which a test holds against the classes themselves.
"""

from __future__ import annotations

import json
import keyword
import re
import sys
from pathlib import Path

import schema as schemas
from render import Output, facts, make_environment
from schema_model import Class, Operation, Package, Property, Schema

PYTHON_TYPES = {
    "Boolean": "bool",
    "String": "str",
    "StdString": "str",
    "Integer": "int",
    "UnlimitedNatural": "int",
    "Integer64": "int",
    "UInteger64": "int",
    "Real": "float",
    "Model": "_c.Model",
    "brant.zero.meta.Class": "type[_c.ModelElement] | _c.ModelElement",
}


def identifier(name: str) -> str:
    return name + "_" if keyword.iskeyword(name) else name


def snake(name: str) -> str:
    """Words in lower case, joined by underscores."""
    return identifier(re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).lower())


def module_of(package: Package) -> str:
    """The Python module of a package."""
    return re.sub(r"^brant\.zero", "zelkor", package.dotted)


def python_type(type_) -> str:
    """How a stub spells one value of a type: in full, since members of a class hide names outside of it."""
    if type_.category in ("primitive", "foreign"):
        return PYTHON_TYPES[type_.name]
    return f"{module_of(type_.package)}.{type_.name}"


def descriptor(p: Property) -> str:
    """The type of a property as a member of its class."""
    return "_c." + descriptor_name(p, python_type(p.type))


def descriptor_name(p: Property, value: str) -> str:
    element = p.type.category == "class"
    if p.kind == "derived":
        return f"Computed[list[{value}]]" if p.many else f"Computed[{value}]"
    if p.kind == "view":
        return f"View[{value}]"
    if p.kind == "map":
        return f"Keyed[{value}]"
    if p.many:
        return f"Many[{value}]" if element else f"Values[{value}]"
    if element:
        return f"Reference[{value}]"
    if p.type.category == "enum":
        return f"Choice[{value}]"
    return "Text" if value == "str" else f"Attribute[{value}]"


def accepted(p: Property) -> str:
    """What a constructor takes for a property."""
    value = python_type(p.type)
    if p.many:
        return f"Iterable[{value}]"
    if p.type.category == "class":
        return f"{value} | None"
    if p.type.category == "enum":
        return f"{value} | str | int"
    return "str | bytes | PathLike[str]" if value == "str" else value


def settable(c: Class) -> list[Property]:
    return [p for p in c.all_properties if p.stored and not p.read_only]


def owning(c: Class) -> list[Property]:
    return [p for p in c.properties if p.contained and p.stored]


def methods(c: Class) -> list[Operation]:
    """Those that scripts see: all that have a body and give no second result."""
    return [o for o in c.operations if not o.pending and not any(a.out for a in o.arguments)]


def result(o: Operation) -> str:
    """Found elements come as a list, of one as itself, of none as None where one is meant."""
    value = python_type(o.returns)
    if o.many:
        return f"list[{value}]"
    return f"{value} | None" if o.returns.category == "class" and o.static and o.arguments[0].name == "type" else value


def parameters(o: Operation) -> str:
    return "".join(f", {snake(a.name)}: {python_type(a.type)}" for a in o.arguments)


def names(name: str) -> list[str]:
    """Both names of a member, the Python one first."""
    return list(dict.fromkeys((snake(name), identifier(name))))


def imports(schema: Schema) -> list[str]:
    return sorted(module_of(p) for p in schema.packages if p.types or p.enums)


def documented(schema: Schema) -> dict[str, str]:
    docs = {}
    for package in schema.packages:
        docs[module_of(package)] = package.doc
        for declared in (*package.types, *package.enums):
            name = f"{module_of(package)}.{declared.name}"
            docs[name] = declared.doc
            for p in getattr(declared, "properties", ()):
                docs[f"{name}.{p.name}"] = " ".join([p.doc, *facts(p)])
    return docs


def render(schema: Schema, out: Output) -> None:
    environment = make_environment((
        identifier, snake, module_of, python_type, descriptor, accepted, settable, owning, methods, result, parameters,
        names, imports,
    ))
    template = environment.get_template("Stub.pyi.jinja")
    modules = {module_of(p) for p in schema.packages}
    for package in schema.packages:
        if not package.types and not package.enums:
            continue
        module = module_of(package)
        inner = [m.rpartition(".")[2] for m in sorted(modules) if m.rpartition(".")[0] == module]
        path = module.removeprefix("zelkor.").replace(".", "/")
        out.write(f"{path}/__init__.pyi", template.render(schema=schema, package=package, inner=inner))


def main(arguments: list[str]) -> int:
    if len(arguments) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    out = Output(Path(arguments[0]))
    docs: dict[str, str] = {}
    for directory in arguments[1:]:
        try:
            schema = schemas.load(Path(directory))
        except schemas.SchemaError as error:
            print(error, file=sys.stderr)
            return 1
        render(schema, out)
        docs |= documented(schema)
    out.write("docs.json", json.dumps(docs, indent=0, ensure_ascii=False) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
