#!/usr/bin/env python3
"""Compares the reference with the library: check.py MAP TAGFILE HTML-DIRECTORY MAN-DIRECTORY

Every exported name has a man page and an entry in the HTML, every function that a header declares is exported,
every declaration, field and constant has a comment, and a status is always named with its own number.
"""

import os
import re
import sys
import xml.etree.ElementTree

import headers

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def html_names(tagfile, directory):
    """The names that have a place in the HTML which exists."""
    found, pages = set(), {}
    for member in xml.etree.ElementTree.parse(tagfile).iter("member"):
        page = member.findtext("anchorfile")
        if page not in pages:
            path = os.path.join(directory, page)
            pages[page] = read(path) if os.path.exists(path) else ""
        if f'id="{member.findtext("anchor")}"' in pages[page]:
            found.add(member.findtext("name"))
    return found


def man_names(directory):
    """The names for which man shows a page."""
    found = set()
    for file in os.listdir(directory):
        text = read(os.path.join(directory, file))
        target = re.match(r"\.so man3/(.*)\n", text)
        if not target or os.path.exists(os.path.join(directory, target[1])):
            found.add(file[:-2])
    return found


def without_comment(everything):
    for header in everything.values():
        for item in header.items():
            if not item.comment:
                yield f"{header.name}: {item.name or item.code.strip()} has no comment"
            for member in item.members:
                if not member.text and len(item.members) > 1:
                    yield f"{header.name}: {member.code} in {item.name or 'an enum'} has no comment"


def wrong_statuses(everything):
    numbers = {}
    for item in everything["zt/status.h"].items():
        for constant, number in re.findall(r"ZT_STATUS_(\w+) = (\d+)", item.code):
            numbers[constant.replace("_", "").lower()] = number
    for header in everything.values():
        texts = [header.comment, *(item.comment for item in header.items())]
        for name, number in re.findall(r"\b([A-Z]\w+)\s\((\d+)\)", " ".join(texts)):
            if numbers.get(name.lower()) != number:
                yield f"{header.name}: {name} ({number}) is no status"


def main():
    export_list, tagfile, html, man = sys.argv[1:]
    exported = set(re.findall(r"(\w+);", read(export_list).split("global:")[1].split("local:")[0]))
    everything = headers.read_all(os.path.join(ROOT, "include"))
    declared = {i.name for h in everything.values() for i in h.items() if i.kind in ("function", "object")}
    faults = [f"{name} is exported and has no man page" for name in sorted(exported - man_names(man))]
    faults += [f"{name} is exported and not in the HTML" for name in sorted(exported - html_names(tagfile, html))]
    faults += [f"{name} is declared and not exported" for name in sorted(declared - exported)]
    faults += [*without_comment(everything), *wrong_statuses(everything)]
    print("\n".join([*faults, f"reference: {len(exported)} exported names, {len(faults)} faults"]))
    sys.exit(bool(faults))


if __name__ == "__main__":
    main()
