"""Writes the JSON Schema and the XML Schema of the two text forms from a schema of classes.

    formats.py SCHEMA_DIR OUT_DIR --name zelkor-ast

Both describe what is written: properties in their order for XML, none twice, nothing unknown.
"""

from __future__ import annotations

import argparse
import json
import sys
from pathlib import Path
from xml.sax.saxutils import quoteattr

import schema as schemas
from schema_model import Class, Enum, Property, Schema

UUID_PATTERN = "[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}"
XSD_TYPES = {
    "Boolean": "xs:boolean",
    "String": "xs:string",
    "StdString": "xs:string",
    "Integer": "xs:int",
    "UnlimitedNatural": "xs:unsignedInt",
    "Integer64": "xs:long",
    "UInteger64": "xs:unsignedLong",
    "Real": "xs:double",
}


def written(cls: Class) -> list[Property]:
    """The properties that texts have, in index order."""
    return [p for p in cls.all_properties if p.stored and p.kind != "container_end"]


def is_inline(p: Property) -> bool:
    """True for what XML writes as an attribute."""
    return p.kind == "attribute" or (p.kind == "reference" and not p.contained)


def is_text(p: Property) -> bool:
    return p.type.name in ("String", "StdString")


def concrete(schema: Schema, base: Class) -> list[Class]:
    return [c for c in schema.classes if not c.abstract and c.is_a(base)]


# JSON.


def json_ref(name: str) -> dict:
    return {"$ref": f"#/$defs/{name}"}


def json_value(p: Property) -> dict:
    if p.type.category == "enum":
        return json_ref(p.type.dotted)
    if p.type.name == "Boolean":
        return {"type": "boolean"}
    if p.type.name == "Real":
        return {"anyOf": [{"type": "number"}, {"enum": ["NaN", "INF", "-INF"]}]}
    if is_text(p):
        return json_ref("text")
    return {"type": "integer", "minimum": p.type.minimum, "maximum": p.type.maximum}


def json_target(schema: Schema, p: Property) -> dict:
    if not p.contained:
        return {"anyOf": [json_ref("uuid"), json_ref("proxy")]}
    names = [c.short for c in concrete(schema, p.type)]
    element = {"allOf": [{"properties": {"class": {"enum": names}}}, json_ref("element")]}
    others = [json_ref("proxy")] if p.kind == "map" else [json_ref("uuid"), json_ref("proxy")]
    return {"anyOf": [element, *others]}


def json_property(schema: Schema, p: Property) -> dict:
    one = json_target(schema, p) if p.type.category == "class" else json_value(p)
    shape = {"type": "array", "minItems": 1, "items": one} if p.many else one
    return {"description": p.doc, **shape}


def json_class(schema: Schema, cls: Class) -> dict:
    properties = {"class": {"const": cls.short}, "uuid": json_ref("uuid")}
    properties |= {p.name: json_property(schema, p) for p in written(cls)}
    return {
        "description": cls.doc,
        "type": "object",
        "required": ["class", "uuid"],
        "properties": properties,
        "additionalProperties": False,
    }


def json_enum(enum: Enum) -> dict:
    return {"description": enum.doc, "enum": [literal.name for literal in enum.literals]}


def json_schema(schema: Schema, name: str) -> str:
    classes = [c for c in schema.classes if not c.abstract]
    choices = [
        {"if": {"properties": {"class": {"const": c.short}}}, "then": json_ref(c.short)} for c in classes
    ]
    text = {"type": "string"}
    definitions = {
        "uuid": {"type": "string", "pattern": f"^{UUID_PATTERN}$"},
        "text": {
            "anyOf": [
                text,
                {
                    "type": "object",
                    "required": ["base64"],
                    "properties": {"base64": {"type": "string", "pattern": "^[A-Za-z0-9+/]*={0,2}$"}},
                    "additionalProperties": False,
                },
            ]
        },
        "proxy": {
            "type": "object",
            "required": ["proxy", "element"],
            "properties": {
                "proxy": {"enum": [c.short for c in classes]},
                "model": text,
                "element": text,
                "external": text,
            },
            "additionalProperties": False,
        },
        "element": {
            "type": "object",
            "required": ["class"],
            "properties": {"class": {"enum": [c.short for c in classes]}},
            "allOf": choices,
        },
    }
    definitions |= {c.short: json_class(schema, c) for c in classes}
    definitions |= {e.dotted: json_enum(e) for e in schema.enums}
    document = {
        "$schema": "https://json-schema.org/draft/2020-12/schema",
        "title": f"A model saved as JSON ({name} 1.0)",
        "type": "object",
        "required": ["format", "version", "elements"],
        "properties": {
            "format": {"const": name},
            "version": {"const": "1.0"},
            "elements": {"type": "array", "items": json_ref("element")},
        },
        "additionalProperties": False,
        "$defs": definitions,
    }
    return json.dumps(document, indent=1, ensure_ascii=False) + "\n"


# XML.


class Xsd:
    """Lines of an XML Schema with their indentation."""

    def __init__(self) -> None:
        self.lines = ['<?xml version="1.0" encoding="UTF-8"?>']
        self.open_tags: list[str] = []

    def _tag(self, tag: str, attributes: dict[str, str], end: str) -> None:
        spelled = "".join(f" {key.rstrip('_')}={quoteattr(value)}" for key, value in attributes.items())
        self.lines.append(f"{' ' * len(self.open_tags)}<xs:{tag}{spelled}{end}>")

    def leaf(self, tag: str, **attributes: str) -> None:
        self._tag(tag, attributes, "/")

    def open(self, tag: str, **attributes: str) -> Xsd:
        self._tag(tag, attributes, "")
        self.open_tags.append(tag)
        return self

    def __enter__(self) -> Xsd:
        return self

    def __exit__(self, *_) -> None:
        tag = self.open_tags.pop()
        self.lines.append(f"{' ' * len(self.open_tags)}</xs:{tag}>")

    def text(self) -> str:
        return "\n".join(self.lines) + "\n"


def xsd_type(p: Property) -> str:
    if p.type.category == "enum":
        return p.type.short
    return XSD_TYPES[p.type.name]


def xsd_content(out: Xsd, schema: Schema, p: Property) -> None:
    """The element of a property, with its children."""
    if p.kind == "attribute":
        out.leaf("element", name=p.name, type="encoded", minOccurs="0")
        return
    with out.open("element", name=p.name, minOccurs="0"), out.open("complexType"):
        if p.kind == "reference" and not p.contained:
            with out.open("sequence"):
                out.leaf("element", name="proxy", type="proxy")
            return
        bounds = {"maxOccurs": "unbounded"} if p.many else {}
        with out.open("choice", **bounds):
            if p.kind == "many_attribute":
                out.leaf("element", name="item", type="text" if is_text(p) else xsd_type(p))
                return
            if p.contained:
                for cls in concrete(schema, p.type):
                    out.leaf("element", ref=cls.short)
            if p.kind != "map":
                out.leaf("element", name="ref", type="ref")
            out.leaf("element", name="proxy", type="proxy")


def xsd_class(out: Xsd, schema: Schema, cls: Class) -> None:
    properties = written(cls)
    inline = [p for p in properties if is_inline(p)]
    with out.open("element", name=cls.short), out.open("complexType"):
        with out.open("sequence"):
            for p in inline:
                if p.kind == "reference" or is_text(p):
                    xsd_content(out, schema, p)
            for p in properties:
                if not is_inline(p):
                    xsd_content(out, schema, p)
        out.leaf("attribute", name="uuid", type="uuid", use="required")
        for p in inline:
            out.leaf("attribute", name=p.name, type="uuid" if p.kind == "reference" else xsd_type(p))


def xsd_common(out: Xsd) -> None:
    with out.open("simpleType", name="uuid"), out.open("restriction", base="xs:string"):
        out.leaf("pattern", value=UUID_PATTERN)
    with out.open("simpleType", name="base64"), out.open("restriction", base="xs:string"):
        out.leaf("enumeration", value="base64")
    for name, use in (("text", "optional"), ("encoded", "required")):
        with out.open("complexType", name=name), out.open("simpleContent"), out.open("extension", base="xs:string"):
            out.leaf("attribute", name="encoding", type="base64", use=use)
    with out.open("complexType", name="ref"):
        out.leaf("attribute", name="uuid", type="uuid", use="required")
    with out.open("complexType", name="proxy"):
        with out.open("sequence"):
            for part in ("model", "element", "external"):
                out.leaf("element", name=part, type="encoded", minOccurs="0")
        out.leaf("attribute", name="class", type="xs:string", use="required")
        for part in ("model", "element", "external"):
            out.leaf("attribute", name=part, type="xs:string")


def xml_schema(schema: Schema, name: str) -> str:
    out = Xsd()
    classes = [c for c in schema.classes if not c.abstract]
    out.lines.append('<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">')
    out.open_tags.append("schema")
    xsd_common(out)
    with out.open("element", name="model"), out.open("complexType"):
        with out.open("choice", minOccurs="0", maxOccurs="unbounded"):
            for cls in classes:
                out.leaf("element", ref=cls.short)
        out.leaf("attribute", name="format", type="xs:string", use="required", fixed=name)
        out.leaf("attribute", name="version", type="xs:string", use="required", fixed="1.0")
    for enum in schema.enums:
        with out.open("simpleType", name=enum.short), out.open("restriction", base="xs:string"):
            for literal in enum.literals:
                out.leaf("enumeration", value=literal.name)
    for cls in classes:
        xsd_class(out, schema, cls)
    out.__exit__()
    return out.text()


def write(path: Path, text: str) -> None:
    if not path.exists() or path.read_text() != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


def main(arguments: list[str]) -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("schema", type=Path)
    parser.add_argument("out", type=Path)
    parser.add_argument("--name", required=True, help="name of the format, and of the files")
    options = parser.parse_args(arguments)
    try:
        schema = schemas.load(options.schema)
    except schemas.SchemaError as error:
        print(error, file=sys.stderr)
        return 1
    write(options.out / f"{options.name}.schema.json", json_schema(schema, options.name))
    write(options.out / f"{options.name}.xsd", xml_schema(schema, options.name))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
