"""What the package raises. Every failure of the library is an `Error`.

The classes have the names of the messages' ids; those that Python has a word for are of that kind, too, so that
`except KeyError` works as one expects.
"""

from __future__ import annotations


class Error(Exception):
    """A failure. `catalogue` and `id` name its kind for good, `arguments` are what its text speaks of."""

    catalogue: str = ""
    id: str = ""
    arguments: tuple[str | int, ...] = ()

    def __str__(self) -> str:
        return str(self.args[0]) if self.args else self.id


# What the kernel and the model report.


class NoSuchType(Error, LookupError):
    """There is no type of that name."""


class NoSuchProperty(Error, AttributeError):
    """The class lacks the property."""


class InvalidValue(Error, ValueError):
    """The value does not fit."""


class UniquenessConstraint(Error, ValueError):
    """Another element has the key or identity."""


class CannotModifyProxy(Error):
    """A placeholder cannot be changed."""


class CannotSetReadOnlyProperty(Error, AttributeError):
    """The property is computed or read-only."""


class CannotCastIncompatibleTypes(Error, TypeError):
    """The value is of another type."""


class CannotAddIncompatibleTypes(Error, TypeError):
    """The element is of a class that the list does not take."""


class CannotAddIncompatibleObjectSubset(Error, ValueError):
    """The view would not show the element."""


class CannotAddSecondObject(Error, ValueError):
    """The list holds each element once."""


class CannotAddNonExistentObject(Error, ValueError):
    """There is no element to put there."""


class CannotCreateWithoutModel(Error):
    """The model is gone."""


class CannotCreateCrossModelAssociation(Error, ValueError):
    """The elements are in two models."""


class CircularContainment(Error, ValueError):
    """An element cannot contain itself."""


# What the script host reports.


class InvalidHandle(Error, ReferenceError):
    """The object of a call is null or its element gone."""


class NoSuchClass(Error, LookupError):
    """The host has no class of that name."""


class NoSuchMember(Error, AttributeError):
    """The class has no such member."""


class NoSuchField(Error, KeyError):
    """The struct has no such field."""


class DuplicateName(Error, ValueError):
    """A name is given twice."""


class BadClass(Error):
    """A class of the host cannot be used."""


class BadPackage(Error):
    """A package of the host cannot be registered."""


class BadSignature(Error):
    """A method's signature is wrong."""


class WrongType(Error, TypeError):
    """A value of another type is needed."""


class WrongArgumentCount(Error, TypeError):
    """A call has too few or too many arguments."""


class NoMatchingOverload(Error, TypeError):
    """No form of the method takes these arguments."""


class IndexOutOfRange(Error, IndexError):
    """There is no such element in an array of the host."""


class CannotInstantiate(Error, TypeError):
    """The class is abstract or has no objects."""


# What has no catalogue in the library.


class DeadHandle(Error, ReferenceError):
    """The element was destroyed or rolled back, or its model is gone; the text says which."""


class ParseError(Error, ValueError):
    """A text is no model. `line` and `column` count from 1, the column in bytes; 0 stands for unknown."""

    file: str
    line: int
    column: int
    message: str
    expected: str


class FileError(Error, OSError):
    """A file cannot be read or written; `filename` and `strerror` say which and why."""

    __str__ = Error.__str__


# What only Python can do wrong; the catalogue is "zelkor:python".


class Pending(DeadHandle):
    """The object is in no model yet."""


class NotFound(Error, KeyError):
    """The model has no such element; the text names near ones."""

    __str__ = Error.__str__


class NoSuchAttribute(Error, AttributeError):
    """The class has no attribute of that name; the text names the nearest one."""


class NotDeletable(Error, AttributeError):
    """Properties can be set, not deleted."""


class NoPositions(Error, TypeError):
    """A view or keyed list has no positions to change."""


class NoKeys(Error, TypeError):
    """The list is not keyed."""


class NotInList(Error, ValueError):
    """The list does not have the value."""


class WrongArgument(Error, TypeError):
    """A method is called with an argument that it does not have."""


class InvalidArgument(Error, ValueError):
    """An argument cannot be used; the text says why."""


class InvalidText(Error, ValueError):
    """The text cannot be expressed as the model keeps it."""


class OutOfRange(Error, IndexError):
    """There is no such position."""


class NotAllowed(Error, RuntimeError):
    """Something that cannot be done, or not now: ending a transaction around an open one, changing what describes the
    classes."""


class Failure(Error, RuntimeError):
    """Anything else."""


_BY_ID = {name: value for name, value in globals().items() if isinstance(value, type) and issubclass(value, Error)}


def make(catalogue: str, id: str, text: str, arguments: tuple[str | int, ...]) -> Error:
    """The exception for a report of the library. An id without a class of its own gives a plain `Error`."""
    error = _BY_ID.get(id, Error)(text)
    error.catalogue, error.id, error.arguments = catalogue, id, arguments
    return error
