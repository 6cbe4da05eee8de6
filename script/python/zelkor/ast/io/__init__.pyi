"""The text forms of a model."""

from enum import IntEnum

class IoFormat(IntEnum):
    xml = 1
    json = 0
