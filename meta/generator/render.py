"""Writes the C++ that follows from a schema: one short template per output, no knowledge of any one class.

    render.py SCHEMA_DIR OUT_DIR --package-header brant/zero/meta/... --package-class ...

Files whose text did not change are left alone, so that nothing is compiled again for nothing. The names of the
sources to compile are written to OUT_DIR/sources.txt.
"""

from __future__ import annotations

import argparse
import sys
import textwrap
from collections.abc import Callable, Iterable
from pathlib import Path

import jinja2

import schema as schemas
from schema_model import Argument, Class, Datatype, Operation, Primitive, Property, Schema

SEQUENCE_KINDS = {"many_attribute", "many_reference", "map", "view"}
VALUE_KINDS = {
    "Boolean": "Boolean",
    "String": "String",
    "StdString": "StdString",
    "Integer": "Integer",
    "UnlimitedNatural": "UnlimitedNatural",
    "Integer64": "Integer64",
    "UInteger64": "UInteger64",
    "Real": "Real",
}
SETTERS = {
    "Boolean": "setBoolean",
    "String": "setString",
    "StdString": "setStdString",
    "Integer": "setWord",
    "UnlimitedNatural": "setWord",
    "Integer64": "setLong",
    "UInteger64": "setLong",
    "Real": "setReal",
}
PROPERTY_KINDS = {
    "attribute": "Attribute",
    "many_attribute": "ManyAttribute",
    "reference": "Reference",
    "many_reference": "ManyReference",
    "container_end": "ContainerEnd",
    "map": "Map",
    "view": "View",
    "derived": "Derived",
}


def native(type_) -> str:
    """The C++ type of one value, fully qualified, so that no member name can hide it."""
    return type_.native if isinstance(type_, Primitive) else "::" + type_.native


def element_type(p: Property) -> str:
    return native(p.type)


def collection_type(p: Property) -> str:
    """The typed face of a many-valued property."""
    if p.kind == "many_attribute":
        return f"::brant::zero::PrimitiveSequence<{native(p.type)}>"
    if p.kind == "map":
        return f"::brant::zero::ElementMap<std::u16string, {native(p.type)}>"
    if p.kind == "view":
        parent = f"::brant::zero::ElementSequence<{native(p.view_of.type)}>"
        return f"::brant::zero::SubsettedElementSet<{native(p.type)}, {parent}>"
    return f"::brant::zero::ElementSequence<{native(p.type)}>"


def field_name(p: Property) -> str:
    return p.name[0].lower() + p.name[1:] + "_"


def is_text(p: Property | Argument) -> bool:
    return p.type.name in ("String", "StdString")


def argument_type(p: Property) -> str:
    return native(p.type) if p.type.category == "primitive" or p.type.category == "enum" else f"{native(p.type)} const&"


def result_type(p: Property) -> str:
    if p.kind == "derived" and p.many:
        return f"std::vector<{native(p.type)}>"
    return f"{native(p.type)} const&" if is_text(p) else native(p.type)


def field_order(properties) -> list[Property]:
    """Wide fields first, flags last: no gaps inside an element."""

    def rank(p: Property) -> int:
        if p.kind != "attribute":
            return 0
        if p.type.name == "Boolean":
            return 3
        return 2 if p.type.category == "enum" or p.type.name in ("Integer", "UnlimitedNatural") else 1

    fields = [p for p in properties if p.kind not in ("container_end", "derived")]
    return sorted(fields, key=rank)


def builder_fields(properties) -> list[Property]:
    return [p for p in field_order(properties) if p.kind != "view"]


def builder_type(p: Property) -> str:
    if p.kind == "attribute":
        return native(p.type)
    if p.kind == "many_attribute":
        return f"std::vector<{native(p.type)}>"
    one = "std::unique_ptr<::brant::zero::Builder>" if p.contained else "::brant::zero::ModelElement"
    return one if p.kind == "reference" else f"std::vector<{one}>"


def setter(p: Property) -> str:
    return SETTERS.get(p.type.name, "setWord")


def value_kind(p: Property) -> str:
    if p.type.category == "class":
        return "Element"
    if p.type.category == "enum":
        return "Enumeration"
    return VALUE_KINDS.get(p.type.name, "Datatype")


def flags(p: Property) -> str:
    names = [
        ("Contained", p.contained),
        ("Ordered", p.ordered),
        ("Unique", p.unique),
        ("IsDerived", p.derived),
        ("ReadOnly", p.read_only),
        ("IsTransient", p.transient),
        ("HasDefault", p.default is not None and p.default.text is not None),
        ("DefaultIsNone", p.default is not None and p.default.text is None),
    ]
    chosen = [f"s::{name}" for name, present in names if present]
    return " | ".join(chosen) or "0"


def own_row(p: Property) -> int:
    """Place of a property among the rows of its own class."""
    return p.owner.properties.index(p)


def row_ref(p: Property | None) -> str:
    return "nullptr" if p is None else f"&::{p.owner.native}::Impl::rows[{own_row(p)}]"


def facts(p: Property) -> list[str]:
    """What the schema says of a property besides its meaning, for the reader of the header."""
    lines = []
    if p.kind == "container_end":
        lines.append(f"The owner; the other end is {p.opposite.owner.name}.{p.opposite.name}.")
    elif p.contained and p.stored:
        lines.append("Owned: what stands here lives and dies with this element.")
        if p.opposite:
            lines.append(f"The other end is {p.opposite.owner.name}.{p.opposite.name}.")
    elif p.type.category == "class" and p.stored:
        lines.append("Not owned.")
    if p.key:
        lines.append(f"Keyed by {p.key.owner.name}.{p.key.name}; one element a key.")
    if p.unique and p.many:
        lines.append("Holds an element once.")
    if p.kind == "attribute":
        text = p.default.text if p.default and p.default.text is not None else None
        lines.append(f"Default: {text if text is not None else ('empty' if is_text(p) else p.initial)}.")
    if p.kind in ("derived", "view"):
        lines.append("Computed on each read; stores nothing.")
    return lines


def comment(text: str, indent: int = 4, extra: list[str] | None = None) -> str:
    whole = " ".join([text, *(extra or [])])
    lines = textwrap.wrap(whole, 110 - indent - 4, break_long_words=False, break_on_hyphens=False)
    return "\n".join(" " * indent + "/// " + line for line in lines)


def targets(classes) -> list[Class]:
    """The classes that the members of these mention, each once."""
    seen: dict[str, Class] = {}
    for c in classes:
        for p in c.properties:
            if p.type.category == "class":
                seen[p.type.dotted] = p.type
            if p.view_of:
                seen[p.view_of.type.dotted] = p.view_of.type
        for o in c.operations:
            for x in (o.returns, *(a.type for a in o.arguments)):
                if x.category == "class" and not o.pending:
                    seen[x.dotted] = x
    return list(seen.values())


def value_types(c: Class) -> list[Datatype]:
    """The value types that the operations of a class take, each once."""
    seen = {a.type.dotted: a.type for o in c.operations for a in o.arguments if a.type.category == "datatype"}
    return list(seen.values())


def term_type(p: Property, holder: str) -> str:
    """The type of the query term that the class `holder` has for a property."""
    template = "Relation" if p.type.category == "class" else "Attribute"
    return f"::brant::zero::query::{template}<{native(p.type)}, {holder}>"


def operation_result(o: Operation) -> str:
    return f"std::vector<{native(o.returns)}>" if o.many else native(o.returns)


def parameters(o: Operation) -> str:
    """The parameter list: what is cheap by value, an argument that takes a result by pointer."""

    def one(a: Argument) -> str:
        if a.out:
            return f"{native(a.type)}* {a.name}"
        cheap = a.type.category == "enum" or a.type.category == "primitive" and not is_text(a)
        return f"{native(a.type)} {a.name}" if cheap else f"{native(a.type)} const& {a.name}"

    return ", ".join(one(a) for a in o.arguments)


def argument_facts(o: Operation) -> list[str]:
    return [f"\\param {a.name} {a.doc}" for a in o.arguments]


def invoker(c: Class, o: Operation) -> str:
    """C++ expression of the function through which reflection calls an operation, null where it cannot."""
    if not o.invoker or o.pending:
        return "nullptr"
    row = f"operations_{c.name}, {c.operations.index(o)}"
    return f"&::brant::zero::meta::invoker<&{c.name}::Impl::{o.name}, {row}>"


def static_call(o: Operation) -> str:
    """C++ expression of the function through which a script calls a static operation, null for others."""
    return f"&::brant::zero::mi::callStatic<&::{o.owner.native}::{o.name}>" if o.static else "nullptr"


def owned(c: Class) -> list[Property]:
    """The own properties into which an element can be created."""
    return [p for p in c.properties if p.contained and p.stored]


def upper_first(name: str) -> str:
    return name[0].upper() + name[1:]


def mi_namespace(package) -> str:
    return f"{package.native}::mi"


def cpp_string(text: str | None) -> str:
    if text is None:
        return "nullptr"
    escaped = text.replace("\\", "\\\\").replace('"', '\\"')
    return f'"{escaped}"'


def short_name(c: Class, root: str) -> str:
    """The name in the text forms: the dotted name without the folder that all headers share."""
    prefix = root.replace("/", ".") + "."
    return c.dotted.removeprefix(prefix)


def make_environment(functions: Iterable[Callable]) -> jinja2.Environment:
    """What the templates see: these functions by their names."""
    env = jinja2.Environment(
        loader=jinja2.FileSystemLoader(Path(__file__).parent / "templates"),
        undefined=jinja2.StrictUndefined,
        trim_blocks=True,
        lstrip_blocks=True,
        keep_trailing_newline=True,
    )
    env.globals.update({function.__name__: function for function in functions})
    return env


def model_environment() -> jinja2.Environment:
    """That of the C++ templates."""
    env = make_environment((
        native, element_type, collection_type, field_name, is_text, argument_type, result_type, field_order,
        builder_fields, builder_type, setter, value_kind, flags, own_row, row_ref, facts, comment, targets, value_types,
        term_type, cpp_string, short_name, operation_result, parameters, argument_facts, invoker, static_call, owned,
        upper_first, mi_namespace,
    ))
    env.globals["property_kinds"] = PROPERTY_KINDS
    return env


class Output:
    def __init__(self, directory: Path) -> None:
        self.directory = directory
        self.written: set[Path] = set()

    def write(self, relative: str, text: str) -> None:
        path = self.directory / relative
        self.written.add(path)
        if path.exists() and path.read_text() == text:
            return
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def remove_stale(self) -> None:
        for path in self.directory.rglob("*"):
            if path.is_file() and path not in self.written:
                path.unlink()


def render(schema: Schema, out: Output, root: str, package_class: str, package_header: str, body: str,
           body_header: str) -> None:
    """`root` is the folder of the public headers; `body` the C++ base of the topmost bodies."""
    env = model_environment()
    common = {
        "schema": schema,
        "root": root,
        "package_class": package_class,
        "package_header": package_header,
        "root_body": body,
        "root_body_header": body_header,
    }

    def emit(template: str, path: str, **values: object) -> None:
        out.write(path, env.get_template(template).render(**common, **values))

    emit("Forward.hpp.jinja", f"include/{root}/Forward.hpp")
    emit("Enums.hpp.jinja", f"include/{root}/Enums.hpp")
    emit("Umbrella.hpp.jinja", f"include/{root}/All.hpp")
    for c in schema.classes:
        emit("Declaration.hpp.jinja", f"include/{declaration_header(c)}", c=c)
        emit("Class.hpp.jinja", f"include/{c.header}", c=c)
    chapters: dict[str, list[Class]] = {}
    for c in schema.classes:
        chapters.setdefault(c.chapter, []).append(c)
    sources = []
    for chapter, classes in chapters.items():
        path = f"src/{chapter.replace('/', '_')}.cpp"
        emit("Chapter.cpp.jinja", path, classes=sorted(classes, key=lambda c: c.depth), chapter=chapter)
        sources.append(path)
    emit("Packages.cpp.jinja", "src/Packages.cpp")
    sources.append("src/Packages.cpp")
    out.write("sources.txt", "".join(f"{path}\n" for path in sources))
    emit("Wrappers.hpp.jinja", f"include/{root}/mi/Wrappers.hpp")
    emit("Wrappers.cpp.jinja", "binding/Wrappers.cpp")


def declaration_header(c: Class) -> str:
    folder, _, name = c.header.rpartition("/")
    return f"{folder}/declaration/{name}"


def main(arguments: list[str]) -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("schema", type=Path)
    parser.add_argument("out", type=Path)
    parser.add_argument("--root", required=True, help="folder of the public headers, such as zelkor/ast")
    parser.add_argument("--package-class", required=True, help="C++ class that assembles the package")
    parser.add_argument("--package-header", required=True)
    parser.add_argument("--body", default="::brant::zero::ModelElementImpl", help="C++ base of the topmost bodies")
    parser.add_argument("--body-header", default="brant/zero/Element.hpp", help="header that declares it")
    options = parser.parse_args(arguments)
    try:
        schema = schemas.load(options.schema)
    except schemas.SchemaError as error:
        print(error, file=sys.stderr)
        return 1
    out = Output(options.out)
    render(schema, out, options.root, options.package_class, options.package_header, options.body, options.body_header)
    out.remove_stale()
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
