"""What the tests of the module share. PYTHONPATH leads to the package in the build tree."""

import itertools

import zelkor
from zelkor import meta
from zelkor.ast import Function

_numbers = itertools.count(1)


def meta_classes():
    """All classes that the library describes, from its own description."""
    package = Function.static_meta_class().owning_package
    while package.parent_package is not None:
        package = package.parent_package
    packages, types = [package], []
    for one in packages:
        packages.extend(one.sub_packages)
        types.extend(one.types)
    return types


def python_class(described):
    """The Python class of a class, value type or enumeration of the description."""
    module = zelkor
    for part in package_path(described.owning_package):
        module = getattr(module, part)
    return getattr(module, described.name)


def package_path(package):
    names = []
    while package is not None and package.name:
        names.insert(0, package.name)
        package = package.parent_package
    return names[2:] if names[:2] == ["brant", "zero"] else names[1:]


def chain(described):
    """The properties of a class and its superclasses."""
    while described is not None:
        yield from described.properties
        described = described.superclass


def concrete(cls):
    """The class itself or a subclass that has objects."""
    if not cls.static_meta_class().is_abstract:
        return cls
    return next(found for sub in cls.__subclasses__() if (found := concrete(sub)))


def make(cls, model):
    """A fresh element; keyed ones get a key that no other has."""
    keys = {"path": f"file{next(_numbers)}.h"} if hasattr(cls, "path") else {}
    return concrete(cls)(model, **keys)


SAMPLES = {
    "Boolean": [True, False],
    "Integer": [-(2**31), 7],
    "UnlimitedNatural": [2**32 - 1, 7],
    "Integer64": [-(2**63), 7],
    "UInteger64": [2**64 - 1, 7],
    "Real": [0.5, -1e300],
    "String": ["häß \U0001f600", "", "\ud800"],
    "StdString": ["häß \U0001f600", "", b"\xff\x00"],
}
OUTSIDE = {
    "Boolean": [1, None],
    "Integer": [2**31, "1", True, 1.5],
    "UnlimitedNatural": [-1, 2**32],
    "Integer64": [2**63],
    "UInteger64": [-1, 2**64],
    "Real": ["1"],
    "String": [5, b"x", None],
    "StdString": [5, None, "\ud800"],
}


def samples(described, prop, model):
    """Values that the property takes, each with what reading it gives then."""
    kind = prop.type
    if isinstance(kind, meta.Enum):
        literals = python_class(kind)
        return [(given, one) for one in literals for given in (one, one.name, int(one))]
    if isinstance(kind, meta.Class):
        return [(target, target) for target in [make(python_class(kind), model) for _ in range(2)]]
    return [(value, value) for value in SAMPLES[kind.name]]
