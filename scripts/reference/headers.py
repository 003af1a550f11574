"""Reads the public headers: what each declares, and the comment that belongs to it.

The headers are plain C comments in a fixed form, which is all the structure there is:
  - the first comment: "zt/name.h - purpose", then paragraphs, some with a heading word (Memory, Threads);
  - a comment right above declarations documents all of them up to the next blank line;
  - "/* ---- Title ---- */" begins a section;
  - inside a record or an enum a comment stands above a member or behind it;
  - "Status (7): reason" names a result; text indented by four columns is code.
"""

import os
import re
from dataclasses import dataclass, field

STATUS = r"[A-Z][A-Za-z]+\s\(-?\d+\)"
STATUS_ITEM = re.compile(rf"(?:^|(?<=  )|(?<=\n)|(?<=\. ))({STATUS}(?:,\s{STATUS})*):\s")
DEFINITION = re.compile(r"^(\w+)  +(\S.*)$")


@dataclass
class Member:
    """A field or a constant."""

    code: str
    text: str


@dataclass
class Item:
    """One declaration."""

    kind: str  # function, object, macro, record, enum, typedef
    name: str  # "" for an enum
    code: str  # as in the header
    comment: str
    shares: bool = False  # the comment is that of the item before
    members: list[Member] = field(default_factory=list)


@dataclass
class Section:
    """Declarations under one title; the first one of a header has none."""

    title: str
    items: list[Item] = field(default_factory=list)


@dataclass
class Header:
    """A public header."""

    name: str  # zt/queue.h
    purpose: str
    comment: str
    sections: list[Section]

    def items(self):
        """All declarations, in order."""
        return [item for section in self.sections for item in section.items]


def comment_text(raw):
    """The text inside /* ... */, without the decoration."""
    body = re.sub(r"^\s*/\*+ ?|\s*\*/\s*$", "", raw.strip())
    return "\n".join(re.sub(r"^\s*\* ?", "", line) if i else line for i, line in enumerate(body.split("\n"))).strip("\n")


def without_comments(code):
    return re.sub(r"/\*.*?\*/", "", code, flags=re.S)


def blocks(text):
    """Cuts a comment into ("text", words), ("code", lines), ("terms", [(word, text)]) and ("statuses", same)."""
    found = []
    for paragraph in re.split(r"\n[ ]*\n", text) if text else []:
        lines = paragraph.split("\n")
        if all(line.startswith("    ") for line in lines):
            code = [line[4:] for line in lines]
            if found and found[-1][0] == "code":
                found[-1][1].extend(["", *code])
            else:
                found.append(("code", code))
        elif DEFINITION.match(lines[0].strip()) and (len(lines) < 2 or lines[1].startswith("  ") or DEFINITION.match(lines[1])):
            terms = []
            for line in lines:
                term = DEFINITION.match(line.strip())
                if term and not line.startswith("      "):
                    terms.append([term[1], term[2]])
                else:
                    terms[-1][1] += "\n" + line.strip()
            found.append(("terms", [tuple(term) for term in terms]))
        else:
            found += prose(lines)
    return found


def prose(lines):
    """A paragraph: text, code lines inside it, and the statuses at its end."""
    for i, line in enumerate(lines):
        if line.startswith("    "):
            end = next((j for j in range(i, len(lines)) if not lines[j].startswith("    ")), len(lines))
            before = prose(lines[:i]) if i else []
            after = prose(lines[end:]) if end < len(lines) else []
            return before + [("code", [code[4:] for code in lines[i:end]])] + after
    text = "\n".join(line.strip() for line in lines)
    marks = list(STATUS_ITEM.finditer(text))
    if not marks:
        return [("text", text)]
    found = [("text", text[: marks[0].start()].strip())] if marks[0].start() else []
    statuses, rest = [], ""
    for mark, following in zip(marks, marks[1:] + [None]):
        reason = text[mark.end() : following.start() if following else len(text)].strip()
        reason, _, more = reason.partition(".  ")
        statuses.append((" ".join(mark[1].split()), reason if not more else reason + "."))
        rest = more.strip() or rest
    found.append(("statuses", statuses))
    if rest:
        found.append(("text", rest))
    return found


def read(path, name):
    """Reads one header."""
    with open(path, encoding="utf-8") as file:
        source = file.read()
    top = re.match(r"/\*.*?\*/\n", source, re.S)
    first, _, rest = comment_text(top[0]).partition("\n")
    comment = re.sub(r"\s*SPDX-License-Identifier: \S+\n*", "", "\n" + rest + "\n").strip("\n")
    body = source[top.end() :]
    body = re.sub(r"#ifdef __cplusplus\n.*?#endif\n", "", body, flags=re.S)
    body = re.sub(r"^(#ifndef ZT_\w+_H\n#define ZT_\w+_H|#include .*|#endif.*|#if .*|#error.*|/\* clang-format o\w+ \*/)\n",
                  "", body, flags=re.M)
    return Header(name, first.split(" - ", 1)[1], comment, sections(body))


def sections(body):
    """Splits the part below the top comment; what stands under "Inside of the macros" is nobody's business."""
    found = [Section("")]
    comment = None
    shares = False
    rest = body
    while rest:
        if blank := re.match(r"[ \t]*\n", rest):
            shares, comment = False, None
            rest = rest[blank.end() :]
        elif rest.startswith("/*"):
            raw = re.match(r"/\*.*?\*/\n?", rest, re.S)[0]
            rest = rest[len(raw) :]
            comment, shares = comment_text(raw), False
            if title := re.match(r"-+ (.*?) -+$", comment, re.S):
                if title[1] == "Inside of the macros":
                    break
                found.append(Section(title[1]))
                comment = None
        else:
            code, rest = declaration(rest)
            found[-1].items.append(item_of(code, comment or "", shares))
            shares = True
    records = {item.name for section in found for item in section.items if item.kind == "record"}
    for section in found:  # a type's name given ahead of its record says nothing new
        section.items = [i for i in section.items if not (i.kind in ("typedef", "forward") and i.name in records | {""})]
    return [section for section in found if section.items]


def declaration(source):
    """The first declaration or macro of source, with a comment behind it, and what follows."""
    if source.startswith("#define"):
        end = re.match(r"(?:.*\\\n)*.*\n", source).end()
        return source[:end], source[end:]
    depth, at = 0, 0
    while True:
        if source.startswith("/*", at):
            at = source.index("*/", at) + 2
            continue
        char = source[at]
        depth += char in "({"
        depth -= char in ")}"
        at += 1
        if char == ";" and depth == 0:
            break
    end = source.index("\n", at) + 1
    if (tail := source[at:end].strip()).startswith("/*") and "*/" not in tail:
        end = source.index("\n", source.index("*/", at)) + 1
    return source[:end], source[end:]


def item_of(code, comment, shares):
    plain = " ".join(without_comments(code).split())
    if plain.startswith("#define"):
        return Item("macro", re.match(r"#define (\w+)", plain)[1], code, comment, shares)
    if re.match(r"(typedef )?(struct|union|enum)( \w+)? \{", plain):
        tag = re.match(r"(?:typedef )?(struct|union|enum)(?: (\w+))?", plain)
        kind = "enum" if tag[1] == "enum" else "record"
        return Item(kind, tag[2] or "", code, comment, shares, members_of(code))
    if plain.startswith("typedef"):
        name = re.search(r"\(\*(\w+)\)", plain) or re.search(r"(\w+);$", plain)
        return Item("typedef", name[1], code, comment, shares)
    if plain.startswith(("struct ", "union ")) and "(" not in plain:
        return Item("forward", "", code, comment, shares)
    if "(" not in re.sub(r"ZT_\w+\([^)]*\)", "", plain):
        return Item("object", re.search(r"(\w+)(?:\[\d*\])?;$", plain)[1], code, comment, shares)
    name = re.search(r"(\w+)\(", re.sub(r"ZT_(PRINTF|ALLOCATES)\([^)]*\)", "", plain))
    return Item("function", name[1], code, comment, shares)


def members_of(code):
    """Fields or constants with their comments, in order; those of nested records as outer.inner."""
    inside = code[code.index("{") + 1 : code.rindex("}")]
    found, last, above, pending = [], None, "", ""
    starts, closed = [], None  # where open nested records begin in found; where the one just closed does
    for token in re.finditer(r"/\*.*?\*/|[^/;,{}\n(]+|\((?:[^()]|\([^()]*\))*\)|[;,{}\n/]", inside + ";", re.S):
        text = token[0]
        if text.startswith("/*"):
            line = inside[inside.rfind("\n", 0, token.start()) + 1 : token.start()]
            if not line.strip():
                above = comment_text(text)
            elif pending.strip():  # the last constant, without a comma
                last = Member(" ".join(pending.split()), comment_text(text))
                found.append(last)
                pending = ""
            else:
                last.text = comment_text(text)
        elif text in ";,":
            name = " ".join(pending.split())
            if name and closed is not None:
                for member in found[closed:]:
                    member.code = re.sub(r"([\w.]+(?:\[\d+\])*)$", rf"{name}.\1", member.code)
            if name:
                last = Member(name, above)
                found.insert(closed if closed is not None else len(found), last)
                above = ""
            pending, closed = "", None
        elif text in "{}":
            pending = ""
            if text == "{":
                starts.append(len(found))
            else:
                closed = starts.pop()
        else:
            pending += text
    return found


def read_all(directory):
    """Every public header, by its name, in the order in which zt/base.h includes them."""
    with open(os.path.join(directory, "zt", "base.h"), encoding="utf-8") as file:
        names = re.findall(r'#include "(zt/\w+\.h)"', file.read())
    return {name: read(os.path.join(directory, name), name) for name in [*names, "zt/base.h"]}


def names_of(headers):
    """What the headers declare: name -> header's name. Constants and tags included."""
    found = {}
    for header in headers.values():
        for item in header.items():
            for name in [item.name, *(m.code.split()[0] for m in item.members if item.kind == "enum")]:
                if name:
                    found.setdefault(name, header.name)
    return found
