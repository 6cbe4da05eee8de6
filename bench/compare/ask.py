#!/usr/bin/env python3
"""Reads what the peers write, and asks it who calls a function, the way a script of theirs would.

    ask.py xml-load FILE...                  all of the XML files, as trees
    ask.py xml-callers DIRECTORY NAME        Doxygen's XML: by its index to the function, then who refers to it
    ask.py json-callers FILE NAME            the front end's dump of one unit: the functions in whose body it is named

NAME is the last part of a qualified name. Printed is one caller a line, or how many elements there are.
"""

import json
import pathlib
import sys
import xml.etree.ElementTree as ElementTree

FUNCTIONS = {"FunctionDecl", "CXXMethodDecl", "CXXConstructorDecl", "CXXDestructorDecl", "CXXConversionDecl"}


def xml_load(*files):
    return [str(sum(1 for file in files for _ in ElementTree.parse(file).iter()))]


def xml_callers(directory, name):
    directory = pathlib.Path(directory)
    found = set()
    for compound in ElementTree.parse(directory / "index.xml").getroot():
        if not any(m.get("kind") == "function" and m.findtext("name") == name for m in compound.iter("member")):
            continue
        for member in ElementTree.parse(directory / (compound.get("refid") + ".xml")).iter("memberdef"):
            if member.get("kind") == "function" and member.findtext("name") == name:
                # The same function stands in a file and in a namespace or class under different references.
                found.update(caller.text for caller in member.iter("referencedby"))
    return found


def json_callers(file, name):
    """Members are told by the address of a declaration alone, which may come later, so they are looked up at the end."""
    with open(file, encoding="utf-8", errors="replace") as text:
        pending = [(json.load(text), None)]
    declarations = set()
    uses = set()
    while pending:
        node, inside = pending.pop()
        kind = node.get("kind")
        if kind in FUNCTIONS:
            inside = node.get("mangledName") or node.get("name")
            if node.get("name") == name:
                declarations.add(node["id"])
        elif kind == "DeclRefExpr" and node["referencedDecl"]["kind"] in FUNCTIONS:
            if node["referencedDecl"].get("name") == name:
                declarations.add(node["referencedDecl"]["id"])
                uses.add((inside, node["referencedDecl"]["id"]))
        elif kind == "MemberExpr":
            uses.add((inside, node["referencedMemberDecl"]))
        pending.extend((child, inside) for child in node.get("inner", ()) if child)
    return {inside for inside, declaration in uses if inside and declaration in declarations}


def main():
    ask = {"xml-load": xml_load, "xml-callers": xml_callers, "json-callers": json_callers}
    if len(sys.argv) < 3 or sys.argv[1] not in ask:
        sys.exit(__doc__)
    for answer in sorted(ask[sys.argv[1]](*sys.argv[2:])):
        print(answer)


if __name__ == "__main__":
    main()
