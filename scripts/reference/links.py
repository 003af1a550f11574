#!/usr/bin/env python3
"""Checks the pages of the tree: links and headings that they lead to, files and names in `code`, gates listed."""

import glob
import os
import re
import subprocess
import sys

import headers

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PATH = re.compile(r"(?:[\w.*-]+/)+[\w.*-]*|[A-Z]\w+\.(?:md|txt|json)")
NAME = re.compile(r"_?(?:zt|ZT)__?\w+")
PLACES = ("", "src", "include", "tests")  # where a path in a page may begin


def git_files(*patterns):
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", *patterns], cwd=ROOT, check=True, capture_output=True)
    return listed.stdout.decode().split()


def anchors(path):
    """The ids that a page's headings get."""
    with open(path, encoding="utf-8") as file:
        titles = re.findall(r"^#+ (.*)$", file.read(), re.M)
    return {re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-") for title in titles}


def bad_links(page, text):
    for target in re.findall(r"\]\(([^)\s]+)\)", text):
        if re.match(r"(?:https?|mailto):", target):
            continue
        file, _, anchor = target.partition("#")
        path = os.path.join(ROOT, os.path.dirname(page), file) if file else os.path.join(ROOT, page)
        if not os.path.exists(path):
            yield f"{page}: {target} leads nowhere"
        elif anchor and anchor not in anchors(path):
            yield f"{page}: {target}: no such heading"


def bad_code(page, text, known):
    """Paths and names in `code` and in shell fences that are not there."""
    fences = re.findall(r"^```sh\n(.*?)^```", text, re.S | re.M)
    spans = re.findall(r"`([^`\n]+)`", re.sub(r"^```.*?^```", "", text, flags=re.S | re.M))
    words = [word for span in spans for word in span.split()[:1]]
    words += [line.split()[0] for fence in fences for line in fence.split("\n") if line.startswith(("scripts/", "."))]
    for word in words:
        if PATH.fullmatch(word) and not word.startswith(("build/", "/")):
            if not any(glob.glob(os.path.join(ROOT, place, word)) for place in PLACES):
                yield f"{page}: there is no {word}"
        elif NAME.fullmatch(word.rstrip(".*")):
            name = word.rstrip(".*")
            if name not in known and not (word != name and any(other.startswith(name) for other in known)):
                yield f"{page}: nothing is called {name}"


def main():
    known = set(headers.names_of(headers.read_all(os.path.join(ROOT, "include"))))
    for file in git_files("*.txt", "*.cmake", "*.json", "*.hpp", "*.h"):  # options, what is private
        with open(os.path.join(ROOT, file), encoding="utf-8") as source:
            known |= set(NAME.findall(source.read()))
    faults, pages = [], git_files("*.md")
    for page in pages:
        with open(os.path.join(ROOT, page), encoding="utf-8") as file:
            text = file.read()
        faults += [*bad_links(page, text), *bad_code(page, text, known)]
    with open(os.path.join(ROOT, "CONTRIBUTING.md"), encoding="utf-8") as file:
        table = re.search(r"^\| gate \|.*?\n\n", file.read(), re.M | re.S)[0]
    listed = set(re.findall(r"`([\w-]+)`", " ".join(re.findall(r"^\|([^|]*)\|", table, re.M))))
    gates = {os.path.basename(gate)[:-3] for gate in glob.glob(os.path.join(ROOT, "scripts/gates/*.sh"))}
    faults += [f"CONTRIBUTING.md: the gate {gate} is not in the table" for gate in sorted(gates - listed)]
    faults += [f"CONTRIBUTING.md: there is no gate {gate}" for gate in sorted(listed - gates)]
    print("\n".join([*faults, f"links: {len(pages)} pages, {len(faults)} faults"]))
    sys.exit(bool(faults))


if __name__ == "__main__":
    main()
