"""Makes Python modules of the packages that the library shows."""

from __future__ import annotations

import json
import sys
from pathlib import Path
from types import ModuleType
from typing import Any

from zelkor import _core


def _docs() -> dict[str, str]:
    path = Path(__file__).with_name("docs.json")
    docs: dict[str, str] = json.loads(path.read_text(encoding="utf-8")) if path.exists() else {}
    return docs


def _module(name: str, root: ModuleType, docs: dict[str, str]) -> ModuleType:
    if name == root.__name__:
        return root
    parent, _, simple = name.rpartition(".")
    module = sys.modules.get(name)
    if module is None:
        module = ModuleType(name, docs.get(name))
        module.__package__ = name
        module.__path__ = []
        sys.modules[name] = module
        setattr(_module(parent, root, docs), simple, module)
    return module


def install(root: ModuleType) -> None:
    docs = _docs()
    packages: dict[str, dict[str, Any]] = _core.make_classes(docs)
    for name, members in packages.items():
        module = _module(name, root, docs)
        for simple, member in members.items():
            setattr(module, simple, member)
        if module is not root:
            module.__all__ = sorted(members)  # type: ignore[attr-defined]
    _core.ModelElement = packages["zelkor"]["ModelElement"]  # type: ignore[misc]
