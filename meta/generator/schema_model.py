"""What a loaded schema consists of: packages, classes, properties, operations and enumerations.

Objects are immutable and compare by identity; `schema.load` makes them. Nothing here is about one class only.
"""

from __future__ import annotations

from collections.abc import Iterator
from dataclasses import dataclass, field

from schema_reader import Place

KERNEL_ROOT = "ModelElement"
KERNEL_ROOT_DOTTED = "brant.zero.ModelElement"
KINDS = (
    "attribute",
    "many_attribute",
    "reference",
    "many_reference",
    "container_end",
    "map",
    "view",
    "derived",
)


@dataclass(frozen=True, eq=False)
class Primitive:
    """A type that the schema does not declare.

    `zero` is the start value of an attribute without a default, as a C++ expression; `suffix` ends a C++
    literal of the type; `minimum` and `maximum` bound the integers. The meta package keeps a handle of each
    `extended` one that operations use; the kernel itself keeps the others.
    """

    name: str
    native: str
    zero: str
    zero_value: bool | int | float | str
    suffix: str = ""
    minimum: int | None = None
    maximum: int | None = None
    extended: bool = False
    category = "primitive"

    @property
    def dotted(self) -> str:
        return self.name


@dataclass(frozen=True, eq=False)
class Foreign:
    """A type of the kernel that only operations mention."""

    name: str
    native: str
    category = "foreign"

    @property
    def dotted(self) -> str:
        return self.name


PRIMITIVES = {
    p.name: p
    for p in (
        Primitive("Boolean", "bool", "false", False),
        Primitive("String", "std::u16string", 'u""', ""),
        Primitive("StdString", "std::string", '""', "", extended=True),
        Primitive("Integer", "int", "0", 0, "", -(2**31), 2**31 - 1),
        Primitive("UnlimitedNatural", "unsigned int", "0u", 0, "u", 0, 2**32 - 1),
        Primitive("Integer64", "long", "0l", 0, "l", -(2**63), 2**63 - 1, extended=True),
        Primitive("UInteger64", "unsigned long", "0ul", 0, "ul", 0, 2**64 - 1, extended=True),
        Primitive("Real", "double", "0.0", 0.0),
    )
}
FOREIGN = {
    f.name: f
    for f in (
        Foreign("Model", "brant::zero::Model"),
        Foreign("brant.zero.meta.Class", "brant::zero::meta::Class"),
    )
}


@dataclass(frozen=True, eq=False)
class Package:
    """One package. `parent` is None for a package that hangs below the nameless root."""

    dotted: str
    doc: str
    uri: str
    identity: str
    script: str
    short: str  # what the text forms write before the names of its classes; empty or ending with a dot
    parent: Package | None
    place: Place = field(repr=False)
    types: tuple[Class | Datatype, ...] = field(default=(), repr=False)
    enums: tuple[Enum, ...] = field(default=(), repr=False)

    @property
    def name(self) -> str:
        return self.dotted.rpartition(".")[2]

    @property
    def native(self) -> str:
        return self.dotted.replace(".", "::")

    @property
    def classes(self) -> tuple[Class, ...]:
        return tuple(t for t in self.types if t.category == "class")

    @property
    def datatypes(self) -> tuple[Datatype, ...]:
        return tuple(t for t in self.types if t.category == "datatype")

    @property
    def extended_primitives(self) -> tuple[Primitive, ...]:
        """Those that its operations use, in ASCII order."""
        operations = [op for c in self.classes for op in c.operations]
        used = {op.returns for op in operations} | {a.type for op in operations for a in op.arguments}
        return tuple(sorted((t for t in used if getattr(t, "extended", False)), key=lambda t: t.name))


@dataclass(frozen=True, eq=False)
class _Declared:
    """What classes, value types and enumerations have in common."""

    package: Package = field(repr=False)
    name: str
    doc: str
    identity: str
    chapter: str
    place: Place = field(repr=False)

    @property
    def dotted(self) -> str:
        return f"{self.package.dotted}.{self.name}"

    @property
    def native(self) -> str:
        return f"{self.package.native}::{self.name}"

    @property
    def script(self) -> str:
        return f"{self.package.script}.{self.name}"

    @property
    def short(self) -> str:
        """The name in the text forms."""
        return self.package.short + self.name

    @property
    def header(self) -> str:
        """Path of the public header, as written in an include directive."""
        return f"{self.package.dotted.replace('.', '/')}/{self.name}.hpp"


@dataclass(frozen=True, eq=False)
class Literal:
    owner: Enum = field(repr=False)
    name: str
    value: int
    doc: str
    identity: str

    @property
    def dotted(self) -> str:
        return f"{self.owner.dotted}.{self.name}"

    @property
    def native(self) -> str:
        return f"{self.owner.native}::{self.name}"


@dataclass(frozen=True, eq=False)
class Enum(_Declared):
    literals: tuple[Literal, ...] = ()
    underlying = "Integer"
    category = "enum"

    def literal(self, name: str) -> Literal | None:
        return next((x for x in self.literals if x.name == name), None)


@dataclass(frozen=True)
class Default:
    """A recorded default: `text` is None when it is recorded as empty; `native` is a C++ expression.

    `value` is the same as a Python value, the number of an enumeration's literal.
    """

    text: str | None
    native: str
    value: bool | int | float | str


@dataclass(frozen=True, eq=False)
class Property:
    owner: Class | Datatype = field(repr=False)
    name: str
    doc: str
    identity: str
    place: Place = field(repr=False)
    type: Primitive | Enum | Datatype | Class | None = field(repr=False)
    multiplicity: str  # "1", "*" or "map"
    ordered: bool
    unique: bool
    contained: bool
    derived: bool
    read_only: bool
    transient: bool
    pending: bool
    custom_setter: bool
    default: Default | None
    kind: str = ""
    index: int | None = None
    opposite: Property | None = field(default=None, repr=False)
    key: Property | None = field(default=None, repr=False)
    view_of: Property | None = field(default=None, repr=False)

    @property
    def dotted(self) -> str:
        return f"{self.owner.dotted}.{self.name}"

    @property
    def many(self) -> bool:
        return self.multiplicity != "1"

    @property
    def stored(self) -> bool:
        """True for what an element holds; false for derived properties and for the fields of a value type."""
        return self.index is not None

    @property
    def accessor(self) -> str:
        return self.name[0].upper() + self.name[1:]

    @property
    def getter(self) -> str:
        return "get" + self.accessor

    @property
    def setter(self) -> str:
        return "set" + self.accessor

    @property
    def has(self) -> str:
        return "has" + self.accessor

    @property
    def mutable_getter(self) -> str:
        return self.getter + "Mutable"

    @property
    def term(self) -> str:
        """Name of the static query term."""
        return self.name[0].lower() + self.name[1:]

    @property
    def has_term(self) -> bool:
        return self.stored and self.kind != "many_attribute"

    @property
    def initial(self) -> str | None:
        """C++ expression of the value a new owner starts with; None for what is no single attribute."""
        if self.kind != "attribute":
            return None
        return self.default.native if self.default else self.type.zero

    @property
    def initial_value(self) -> bool | int | float | str | None:
        """The same as a Python value."""
        if self.kind != "attribute":
            return None
        return self.default.value if self.default else self.type.zero_value


@dataclass(frozen=True, eq=False)
class Argument:
    owner: Operation = field(repr=False)
    name: str
    doc: str
    identity: str
    out: bool
    type: Primitive | Foreign | Enum | Datatype | Class | None = field(repr=False)

    @property
    def dotted(self) -> str:
        return f"{self.owner.dotted}.{self.name}"


@dataclass(frozen=True, eq=False)
class Operation:
    owner: Class = field(repr=False)
    name: str
    doc: str
    identity: str
    place: Place = field(repr=False)
    returns: Primitive | Foreign | Enum | Datatype | Class | None = field(repr=False)
    lower: int
    upper: int
    static: bool
    abstract: bool
    pending: bool
    arguments: tuple[Argument, ...] = ()

    @property
    def dotted(self) -> str:
        return f"{self.owner.dotted}.{self.name}"

    @property
    def invoker(self) -> bool:
        """Whether reflection can call it: it needs an element and has no place for an output argument."""
        return not self.static and not self.has_output

    @property
    def has_output(self) -> bool:
        """Whether it answers through an argument, which only C++ can take."""
        return any(a.out for a in self.arguments)

    @property
    def many(self) -> bool:
        return self.upper > 1


@dataclass(frozen=True, eq=False)
class Datatype(_Declared):
    """A value type: a record of attributes, copied and compared as a whole."""

    properties: tuple[Property, ...] = ()
    category = "datatype"


@dataclass(frozen=True, eq=False)
class Class(_Declared):
    """`base` is None directly below the kernel's root.

    `count` is the number of indices along the chain, the kernel's index 0 included, and so the first index of
    a subclass; `first_index` is that of the first own property.
    """

    abstract: bool = False
    base: Class | None = field(default=None, repr=False)
    chain: tuple[Class, ...] = field(default=(), repr=False)  # topmost modelled class first, this class last
    properties: tuple[Property, ...] = field(default=(), repr=False)  # its own, in declaration order
    operations: tuple[Operation, ...] = field(default=(), repr=False)
    script_operations: tuple[Operation, ...] = field(default=(), repr=False)  # what its script class lists as methods
    first_index: int = 1
    count: int = 1
    category = "class"

    @property
    def depth(self) -> int:
        """Distance from the kernel's root: 1 for a class directly below it."""
        return len(self.chain)

    @property
    def base_dotted(self) -> str:
        return self.base.dotted if self.base else KERNEL_ROOT_DOTTED

    @property
    def base_native(self) -> str:
        return self.base_dotted.replace(".", "::")

    @property
    def all_properties(self) -> tuple[Property, ...]:
        """Those of the chain, superclass first."""
        return tuple(p for c in self.chain for p in c.properties)

    @property
    def all_operations(self) -> tuple[Operation, ...]:
        """Those of the chain, superclass first, without the static ones that a subclass hides."""
        nearest = {op.name: op for c in self.chain for op in c.operations}
        return tuple(op for c in self.chain for op in c.operations if nearest[op.name] is op)

    @property
    def query_terms(self) -> tuple[Property, ...]:
        """Attributes, single references with container ends, collections; superclass first in each group."""
        terms = [p for p in self.all_properties if p.has_term]
        rank = {"attribute": 0, "reference": 1, "container_end": 1, "many_reference": 2, "map": 2}
        return tuple(sorted(terms, key=lambda p: rank[p.kind]))

    def is_a(self, other: Class) -> bool:
        return other in self.chain

    def property(self, name: str) -> Property | None:
        return next((p for p in self.all_properties if p.name == name), None)


@dataclass(frozen=True, eq=False)
class Schema:
    uri_root: str
    root_identity: str
    root_uri: str
    imported_uri: str
    packages: tuple[Package, ...]  # in creation order, as all that follows

    @property
    def classes(self) -> tuple[Class, ...]:
        return tuple(c for p in self.packages for c in p.classes)

    @property
    def datatypes(self) -> tuple[Datatype, ...]:
        return tuple(d for p in self.packages for d in p.datatypes)

    @property
    def enums(self) -> tuple[Enum, ...]:
        return tuple(e for p in self.packages for e in p.enums)

    def creation_order(self) -> Iterator[object]:
        """Every meta object in the order in which it is created."""
        for package in self.packages:
            yield package
            for declared in package.types:
                yield declared
                yield from declared.properties
                for operation in getattr(declared, "operations", ()):
                    yield operation
                    yield from operation.arguments
            for enum in package.enums:
                yield enum
                yield from enum.literals

    def of(self, kind: type) -> tuple:
        return tuple(x for x in self.creation_order() if isinstance(x, kind))

    @property
    def pending(self) -> tuple[Property | Operation, ...]:
        """What has a meta object, but no C++ member as long as its body is missing."""
        return tuple(x for x in self.creation_order() if getattr(x, "pending", False))

    def type(self, name: str) -> Class | Datatype | Enum:
        return next(t for t in (*self.classes, *self.datatypes, *self.enums) if name in (t.name, t.dotted))

    def counts(self) -> dict[str, int]:
        properties = self.of(Property)
        result = {"packages": len(self.packages), "classes": len(self.classes)}
        result |= {f"classes in {p.dotted}": len(p.classes) for p in self.packages if p.classes}
        return result | {
            "datatypes": len(self.datatypes),
            "enums": len(self.enums),
            "literals": len(self.of(Literal)),
            "properties": len(properties),
            "indexed properties": sum(p.stored for p in properties),
            "derived properties": sum(p.derived for p in properties),
            "value fields": sum(isinstance(p.owner, Datatype) for p in properties),
            "operations": len(self.of(Operation)),
            "arguments": len(self.of(Argument)),
            "invokers": sum(op.invoker for op in self.of(Operation)),
            "meta objects": sum(1 for _ in self.creation_order()),
            "pending": len(self.pending),
        }
