"""What a schema must obey beyond its keys. Each rule reports by itself: one load shows all mistakes."""

from __future__ import annotations

import json
import math
import re
import uuid

from schema_model import FOREIGN, PRIMITIVES, Class, Datatype, Default, Enum, Operation, Property
from schema_reader import Problems

# Change records and builders hold one bit per index in one 64-bit word; the kernel keeps the top bits.
MAX_INDICES = 62

_NAME = re.compile(r"[A-Za-z](?:_?[A-Za-z0-9])*")
_KEYWORDS = frozenset(
    """
    alignas alignof and and_eq asm auto bitand bitor bool break case catch char char8_t char16_t char32_t
    class compl concept const consteval constexpr constinit const_cast continue co_await co_return
    co_yield decltype default delete do double dynamic_cast else enum explicit export extern false float
    for friend goto if inline int long mutable namespace new noexcept not not_eq nullptr operator or or_eq
    private protected public register reinterpret_cast requires return short signed sizeof static
    static_assert static_cast struct switch template this thread_local throw true try typedef typeid
    typename union unsigned using virtual void volatile wchar_t while xor xor_eq
    """.split()
)


def _is(type_: object, category: str) -> bool:
    return getattr(type_, "category", "") == category


def parse_default(type_: object, raw: dict, problems: Problems) -> Default | None:
    """The recorded default of a property, or None when none is recorded."""
    place, text = raw["place"].at("default"), raw["default"]
    if text is not None and raw["default_none"]:
        problems.add(place, "a default cannot stand beside default_none")
    if text is None and not raw["default_none"]:
        return None
    if type_ is None:
        return None
    attribute = _is(type_, "primitive") or _is(type_, "enum")
    if not attribute or raw["derived"] or raw["many"] or raw["keyed_by"]:
        problems.add(place, "only a stored single attribute has a default")
        return None
    if _is(type_, "enum"):
        return _enum_default(type_, text, place, problems)
    if text is None:
        return Default(None, type_.zero, type_.zero_value)
    parsed = _parse(type_, text)
    if parsed is None:
        problems.add(place, f"'{text}' is no value of {type_.name}{_range(type_)}")
        return None
    return Default(text, *parsed)


def _enum_default(enum: Enum, text: str | None, place: object, problems: Problems) -> Default | None:
    literal = enum.literal(text) if text is not None else None
    if literal is not None:
        return Default(text, literal.native, literal.value)
    if text is not None:
        problems.unknown(place, f"literal of {enum.name}", text, [x.name for x in enum.literals])
    return None


def _range(primitive: object) -> str:
    if primitive.name == "Boolean":
        return ", which are true and false"
    return "" if primitive.minimum is None else f", which go from {primitive.minimum} to {primitive.maximum}"


def _parse(primitive: object, text: str) -> tuple[str, bool | int | float | str] | None:
    """The text as a C++ expression and as a value; None when it is no value of the type."""
    if primitive.name == "Boolean":
        return (text, text == "true") if text in ("true", "false") else None
    if primitive.name in ("String", "StdString"):
        # Only what reads the same in all three places, TOML, the text forms and C++.
        plain = text.isascii() and text.isprintable()
        return (primitive.zero.replace('""', json.dumps(text)), text) if plain else None
    if primitive.name == "Real":
        real = re.fullmatch(r"-?\d+\.\d+(e-?\d+)?", text) and math.isfinite(float(text))
        return (text, float(text)) if real else None
    if not re.fullmatch(r"0|-?[1-9]\d*", text) or not primitive.minimum <= int(text) <= primitive.maximum:
        return None
    if int(text) == primitive.minimum < 0:
        # Its digits alone are out of range, so C++ has no literal for the lowest number.
        return f"({int(text) + 1}{primitive.suffix} - 1)", int(text)
    return text + primitive.suffix, int(text)


def check(builder: object) -> None:
    problems = builder.problems
    _check_identities(builder)
    for package in builder.packages.values():
        for part in package.dotted.split("."):
            _check_name(part, package.place, problems)
    for declared in builder.types.values():
        _check_name(declared.name, declared.place, problems)
        if declared.name in PRIMITIVES or declared.name in FOREIGN:
            problems.add(declared.place, f"'{declared.name}' is the name of a primitive type")
        if isinstance(declared, Enum):
            _check_literals(declared, problems)
        if isinstance(declared, Class):
            _check_chain(declared, problems)
    for prop in builder.properties():
        _check_name(prop.name, prop.place, problems)
        if prop.term in _KEYWORDS:
            problems.add(prop.place, f"its query term would be the C++ keyword '{prop.term}'")
        _check_property(prop, builder.raw[prop], problems)
    for operation in builder.operations():
        _check_operation(operation, problems)


def _check_identities(builder: object) -> None:
    """Given ones must be well-formed; all, the computed ones too, must be distinct."""
    problems, frame = builder.problems, builder.frame
    root = frame["root"]
    seen = {root["identity"]: "the root"}
    _check_identity(root["identity"], root["place"], problems)
    entries = [(x.identity, x.dotted, x.place) for x in (*builder.packages.values(), *builder.types.values())]
    entries += [(x.identity, x.dotted, x.place) for x in (*builder.properties(), *builder.operations())]
    for enum in builder.types.values():
        entries += [(x.identity, x.dotted, enum.place) for x in getattr(enum, "literals", ())]
    for operation in builder.operations():
        entries += [(x.identity, x.dotted, operation.place) for x in operation.arguments]
    for identity, dotted, place in entries:
        if identity and identity in seen:
            problems.add(place.at("identity"), f"'{identity}' is already the identity of {seen[identity]}")
        seen[identity] = dotted
    for declared in builder.types.values():
        if declared.identity:
            _check_identity(declared.identity, declared.place, problems)


def _check_identity(text: str, place: object, problems: Problems) -> None:
    try:
        valid = str(uuid.UUID(text)) == text and uuid.UUID(text).version == 3
    except ValueError:
        valid = False
    if not valid:
        problems.add(place.at("identity"), f"'{text}' is no version-3 UUID in lower-case form")


def _check_name(name: str, place: object, problems: Problems) -> None:
    if not _NAME.fullmatch(name):
        problems.add(place, f"'{name}' is no identifier (letters, digits, single underscores between them)")
    elif name in _KEYWORDS:
        problems.add(place, f"'{name}' is a C++ keyword")


def _check_literals(enum: Enum, problems: Problems) -> None:
    if not enum.literals:
        problems.add(enum.place, "an enumeration needs at least one literal")
    seen: dict[int, str] = {}
    integer = PRIMITIVES["Integer"]
    for literal in enum.literals:
        place = enum.place.at("literals", literal.name)
        _check_name(literal.name, place, problems)
        if not integer.minimum <= literal.value <= integer.maximum:
            problems.add(place, f"{literal.value} does not fit into 32 bits")
        if literal.value in seen:
            problems.add(place, f"{literal.value} is already the value of '{seen[literal.value]}'")
        seen[literal.value] = literal.name


def _check_chain(declared: Class, problems: Problems) -> None:
    """Names along the chain of superclasses: C++ would hide the inherited member silently."""
    seen: dict[str, Property] = {}
    for prop in declared.all_properties:
        other = seen.setdefault(prop.accessor, prop)
        if other is not prop and prop.owner is declared:
            problems.add(prop.place, f"its accessors are those of {other.owner.name}.{other.name}")
    taken = {n: p for p in seen.values() for n in (p.getter, p.setter, p.has, p.mutable_getter, p.term)}
    for operation in declared.operations:
        if operation.name in taken:
            prop = taken[operation.name]
            problems.add(operation.place, f"it has the name of an accessor of {prop.owner.name}.{prop.name}")
        for base in declared.chain[:-1]:
            hidden = next((op for op in base.operations if op.name == operation.name), None)
            if hidden is not None and not (hidden.static and operation.static):
                problems.add(operation.place, f"{base.name} declares it; only static ones may be repeated")
        if operation.abstract and not declared.abstract:
            problems.add(operation.place, f"it is abstract, and {declared.name} is no abstract class")
    if declared.count > MAX_INDICES:
        message = f"{declared.count} indices along the chain of superclasses; there is room for {MAX_INDICES}"
        problems.add(declared.place, message)


def _check_property(prop: Property, raw: dict, problems: Problems) -> None:
    """The yes/no keys against each other. Each row: whether it is broken, the key to look at, why."""
    reference = _is(prop.type, "class")
    value = prop.type is not None and not reference
    view = raw["view_of"] is not None
    computed = prop.derived and not view
    unset = raw["default"] is None
    rules = (
        (raw["many"] and raw["keyed_by"], "many", "keyed_by says so already"),
        (raw["unique"] and not raw["many"], "unique", "only a collection (many = true) can be unique"),
        (raw["unordered"] and not (raw["keyed_by"] or view), "unordered", "only maps and views have none"),
        (raw["keyed_by"] and not raw["unordered"], "keyed_by", "a map has no order: say unordered = true"),
        (value and raw["contained"], "contained", "only references to classes contain"),
        (value and raw["opposite"], "opposite", "only references to classes have an opposite"),
        (value and raw["keyed_by"], "keyed_by", "only references to classes can be keyed"),
        (_is(prop.type, "datatype"), "type", "a value type cannot be the type of a property"),
        (isinstance(prop.owner, Datatype) and reference, "type", "a field of a value type is no reference"),
        (not prop.derived and prop.read_only, "read_only", "only derived properties are read-only"),
        (not prop.derived and prop.transient, "transient", "only derived properties are transient"),
        (prop.derived and raw["opposite"], "opposite", "a derived property has no opposite"),
        (prop.derived and prop.custom_setter, "custom_setter", "a derived property has no setter"),
        (prop.many and prop.custom_setter, "custom_setter", "a collection has no setter"),
        (computed and not prop.read_only, "derived", "without view_of it must be read_only too"),
        (computed and prop.contained, "contained", "a computed property owns nothing"),
        (prop.pending and not computed, "pending", "only a computed property waits for a body"),
        (_is(prop.type, "enum") and prop.kind == "attribute" and unset, "type", "it needs a default literal"),
    )
    for broken, key, message in rules:
        if broken:
            problems.add(prop.place.at(key), message)
    if prop.opposite is not None:
        _check_opposite(prop, problems)
    if prop.key is not None:
        _check_key(prop, problems)
    if view:
        _check_view(prop, problems)


def _check_opposite(prop: Property, problems: Problems) -> None:
    place, other = prop.place.at("opposite"), prop.opposite
    if other.type is None:
        return
    if other.opposite is not prop or other.type is not prop.owner:
        names = f"{other.owner.name}.{other.name} does not name {prop.owner.name}.{prop.name}"
        problems.add(place, f"{names} as its opposite")
    elif prop.contained == other.contained:
        problems.add(place, "exactly one of two opposites is contained")
    elif prop.many and not prop.contained:
        problems.add(place, "the end that names the container is single")


def _check_key(prop: Property, problems: Problems) -> None:
    key = prop.key
    if key.type is not PRIMITIVES["String"] or key.kind != "attribute":
        problems.add(prop.place.at("keyed_by"), f"{key.owner.name}.{key.name} is no single String attribute")


def _check_view(prop: Property, problems: Problems) -> None:
    place, source = prop.place.at("view_of"), prop.view_of
    if source is None:
        return
    flags = (prop.derived, prop.multiplicity == "*", prop.contained, not prop.ordered)
    if not all(flags) or prop.read_only or prop.transient or prop.unique:
        problems.add(place, "a view is derived, many, contained and unordered, and nothing else")
    if source.kind != "many_reference":
        problems.add(place, f"{source.name} is no stored collection of references")
    elif _is(prop.type, "class") and not (source.type in prop.type.chain and source.type is not prop.type):
        problems.add(place, f"{source.name} holds {source.type.name}; {prop.type.name} is no subclass of it")


def _check_operation(operation: Operation, problems: Problems) -> None:
    place = operation.place
    _check_name(operation.name, place, problems)
    if operation.static and operation.abstract:
        problems.add(place.at("abstract"), "a static operation cannot be abstract")
    if (operation.lower, operation.upper) != (1, 1):
        if not 0 <= operation.lower <= operation.upper <= 2**32 - 1 or operation.upper == 0:
            problems.add(place.at("upper"), f"{operation.lower}..{operation.upper} are no bounds")
        elif operation.upper == 1:
            problems.add(place.at("lower"), "a single result has the bounds 1..1")
        elif not _is(operation.returns, "class"):
            problems.add(place.at("returns"), "only elements are returned as a list")
    seen = set()
    for number, argument in enumerate(operation.arguments):
        where = place.at("args", str(number))
        _check_name(argument.name, where, problems)
        if argument.name in seen:
            problems.add(where, f"the argument '{argument.name}' is there twice")
        seen.add(argument.name)
