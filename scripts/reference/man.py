#!/usr/bin/env python3
"""Writes man pages of section 3 from the public headers: man.py VERSION DATE DIRECTORY

One page a header (zt-queue for zt/queue.h), one alias for each function, object, macro and type in it, and
libzt_base, the page that lists the others.
"""

import os
import re
import sys

import headers

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
ATTRIBUTES = re.compile(r"\bZT_(?:API|MUST_CHECK|CONST|(?:PRINTF|ALLOCATES)\([^)]*\)) ?|__extension__ ")


def escape(text):
    """Text as roff shows it literally."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga")
    text = text.replace("^", "\\(ha").replace("~", "\\(ti")
    return re.sub(r"^\.", r"\\&.", text, flags=re.M)


def words(text):
    """Running text: `code` in bold, one sentence as long as it is."""
    text = " ".join(text.split())
    pieces = re.split(r"`([^`]*)`", text)
    out = "".join(f"\\fB{escape(piece)}\\fR" if i % 2 else escape(piece) for i, piece in enumerate(pieces))
    return "\n".join(re.sub(r"^\.", r"\\&.", line) for line in re.split(r"(?<=[a-z)][.:;]) (?=\S)", out))


def page_of(header_name):
    return "zt-" + os.path.basename(header_name)[:-2]


def code_block(lines):
    return [".PP", ".RS 4", ".EX", *(escape(line.rstrip()) or "\\&" for line in lines), ".EE", ".RE"]


def paragraphs(blocks):
    """The paragraphs of a comment."""
    out = []
    for kind, content in blocks:
        if kind == "text":
            out += [".PP", words(content)]
        elif kind == "code":
            out += code_block(content)
        else:
            out += [line for term, why in content for line in (".TP", f".B {escape(term)}", words(why))]
    return out


def plain(item):
    """A declaration on one line, as a caller sees it."""
    return ATTRIBUTES.sub("", " ".join(headers.without_comments(item.code).split())).strip()


def prototype(item):
    """A function, or a type of function, wrapped, with its parameters in italics."""
    text = plain(item)
    if "(" not in text:
        return [f"\\fB{escape(text)}\\fR"]
    head, _, tail = text.rpartition("(" if not text.startswith("typedef") else ")(")
    bracket = "(" if not text.startswith("typedef") else ")("
    parameters = [p.strip() for p in tail.rstrip(";").rstrip(")").split(",")]
    lines, line = [], head + bracket
    for i, parameter in enumerate(parameters):
        piece = parameter + (", " if i + 1 < len(parameters) else ");")
        if len(line) + len(piece) > 78 and i > 0:
            lines.append(line.rstrip())
            line = " " * 4
        line += piece
    return [styled(part) for part in [*lines, line]]


def styled(line):
    """Bold, and italic what is a parameter's name: the last word before a comma or the end."""
    pieces = re.split(r"(\b\w+(?:\[\d*\])?(?=(?:,|\);?)(?:\s|$)))", line)
    out = ""
    for i, piece in enumerate(pieces):
        is_name = i % 2 and piece not in ("void", "...") and re.search(r"[\w*)] ?\*?$", pieces[i - 1])
        out += f"\\fI{escape(piece)}" if is_name else f"\\fB{escape(piece)}"
    return (out + "\\fR").replace("\\fB   ", "\\fB\\ \\ \\ ", 1) if line.startswith("    ") else out + "\\fR"


def macro_head(item):
    return re.match(r"#define (\w+(?:\([^)]*\))?)", " ".join(item.code.split()))[1]


def title(item):
    if item.kind == "macro":
        return macro_head(item)
    return item.name or item.members[0].code.split()[0] + (", ..." if len(item.members) > 1 else "")


def groups(items):
    """Items that share a comment, together."""
    found = []
    for item in items:
        if item.shares and found:
            found[-1].append(item)
        else:
            found.append([item])
    return found


def described(items):
    out = []
    for group in groups(items):
        first = group[0]
        out.append(f'.SS "{escape(", ".join(title(i) for i in group))}"')
        for item in group:
            if item.kind in ("function", "object") or item.kind == "typedef":
                out += [".PP", ".nf", *prototype(item), ".fi"] if item is first else [".nf", *prototype(item), ".fi"]
        out += paragraphs(headers.blocks(first.comment))
        for member in first.members:
            if member.text or len(first.members) > 1:
                out += [".TP", f'.B "{escape(member.code)}"', words(member.text) or "\\&"]
    return out


def top(name, release):
    """The title line, with the date of the release; names are never hyphenated."""
    version, date = release
    return [f'.TH {name.upper()} 3 "{date}" "libzt_base {version}" "libzt_base"', ".nh", ".ad l", ".SH NAME"]


def page(header, release, everything, known):
    name = page_of(header.name)
    items = header.items()
    functions = [item for item in items if item.kind == "function"]
    documented = [item.name for item in functions] or [item.name for item in items if item.name]
    out = [*top(name, release),
           ",\n".join([name, *documented]) + f" \\- {escape(header.purpose.rstrip('.'))}",
           ".SH LIBRARY", "libzt_base (\\fB\\-lzt_base\\fR)",
           ".SH SYNOPSIS", ".nf", f"\\fB#include <{header.name}>\\fR"]
    callable_or_data = functions + [item for item in items if item.kind == "object"]
    for item in callable_or_data:
        out += [".PP", *prototype(item)] if item is callable_or_data[0] else prototype(item)
    out += [".fi", ".SH DESCRIPTION"]
    tops, rest = [], []
    for kind, content in headers.blocks(header.comment):
        if kind == "terms" and all(term[0].isupper() for term, _ in content):
            tops += content
        else:
            rest.append((kind, content))
    out += paragraphs(rest) or [words(f"{header.purpose[0].upper()}{header.purpose[1:]}")]
    for term, why in tops:
        out += [f".SH {term.upper()}", words(why)]
    for heading, kinds in (("TYPES AND CONSTANTS", ("record", "enum", "typedef")), ("MACROS", ("macro",)),
                           ("OBJECTS", ("object",)), ("FUNCTIONS", ("function",))):
        if chosen := [item for item in items if item.kind in kinds]:
            out += [f".SH {heading}", *described(chosen)]
    others = ["libzt_base", *sorted(see_also(header, everything, known))]
    last = others[-1]
    out += [".SH SEE ALSO", *(f".BR {escape(other)} (3){'' if other == last else ','}" for other in others)]
    return roff("\n".join(out))


def see_also(header, everything, known):
    """The pages of headers that this one mentions."""
    texts = " ".join([header.comment, *(i.comment for i in header.items()), *(i.code for i in header.items())])
    found = {page_of(known[name]) for name in re.findall(r"\w+", texts) if name in known}
    found |= {page_of(name) for name in re.findall(r"zt/\w+\.h", texts) if name in everything}
    return found - {page_of(header.name), "zt-export", "zt-base"}


def roff(text):
    """Without a paragraph macro where it has no effect, which the checkers report."""
    text = re.sub(r"(?<=\n)(\.S[HS] .*\n)(?:\.PP\n)+", r"\1", text)
    text = re.sub(r"\.PP\n(?=\.PP|\.TP|\.S[HS])", "", text)
    text = re.sub(r"\.fi\n\.nf\n", "", text)
    return ".\\\" Made from the header by scripts/reference.sh.\n" + text + "\n"


def overview(release, everything):
    out = [*top("libzt_base", release),
           "libzt_base \\- base library under the services of a Linux video device", ".SH LIBRARY",
           "libzt_base (\\fB\\-lzt_base\\fR)", ".SH SYNOPSIS", ".nf", "\\fB#include <zt/base.h>\\fR", ".fi",
           ".SH DESCRIPTION", "zt/base.h includes every header.",
           "Each has a page of its own; every function, type and macro leads to the page of its header."]
    for header in everything.values():
        if header.name != "zt/base.h":
            out += [".TP", f".BR {escape(page_of(header.name))} (3)", words(header.purpose)]
    return roff("\n".join(out))


def main():
    version, date, directory = sys.argv[1:]
    release = (version, date)
    os.makedirs(directory, exist_ok=True)
    everything = headers.read_all(os.path.join(ROOT, "include"))
    known = headers.names_of(everything)
    pages, aliases = {"libzt_base": overview(release, everything)}, {}
    for header in everything.values():
        if header.name == "zt/base.h":
            aliases["zt-base"] = "libzt_base"
            continue
        pages[page_of(header.name)] = page(header, release, everything, known)
        for item in header.items():
            if item.name:
                aliases.setdefault(item.name, page_of(header.name))
    for name, text in pages.items():
        with open(os.path.join(directory, name + ".3"), "w", encoding="utf-8") as file:
            file.write(text)
    for name, target in aliases.items():
        with open(os.path.join(directory, name + ".3"), "w", encoding="utf-8") as file:
            file.write(f".so man3/{target}.3\n")
    print(f"man pages: {len(pages)}, aliases: {len(aliases)}")


if __name__ == "__main__":
    main()
