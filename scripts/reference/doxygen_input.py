#!/usr/bin/env python3
"""Writes the public headers and the pages in the form that Doxygen understands: doxygen_input.py DIRECTORY

Comments of headers become documentation comments with sections and lists, names become links, and what is
not for users (the inside of the log macros) is left out. In pages, links to files that are not part of the
reference become plain text. The files themselves stay as they are.
"""

import glob
import os
import re
import sys

import headers

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
C_CODE = re.compile(r"[;{]|^#include", re.M)


class Writer:
    """Writes documentation comments with links to known names."""

    def __init__(self, known):
        self.known = known

    def words(self, text):
        """Running text: escaped, names linked."""
        text = " ".join(text.split())
        # Between quotes nothing can be escaped: what would need it is shown as code.
        text = re.sub(r'("[^"`]*[\\@<>#%&*$~][^"`]*")', r"`\1`", text)
        pieces = re.split(r"(`[^`]*`|\*?\bzt/\w+\.h\b|(?<![\w.>])\*?[A-Za-z_]\w*)", text)
        return "".join(self.word(piece) for piece in pieces)

    def word(self, piece):
        if piece.startswith("`") and len(piece) > 1:
            return piece
        name = piece.lstrip("*")
        if name in self.known:
            return re.sub(r"\*", r"\\*", piece[: len(piece) - len(name)]) + f'@ref {name} "{name}"'
        if re.fullmatch(r"zt/\w+\.h", name):
            return f'@ref {name[3:]} "{name}"'
        if name.startswith("__") or (piece.startswith("*") and name):
            return f"`{piece}`"
        return re.sub(r"([\\@<>#%&*$~]|(?<=-)-)", r"\\\1", piece)

    def comment(self, text, behind=False, before=""):
        return f"/**{'<' if behind else ''} {before}{self.body(text)} */\n"

    def body(self, text):
        out = []
        for kind, content in headers.blocks(text):
            if kind == "text":
                out.append(self.words(content))
            elif kind == "code":
                name = ("@code{.c}", "@endcode") if C_CODE.search("\n".join(content)) else ("@verbatim", "@endverbatim")
                out.append("\n".join([name[0], *content, name[1]]))
            elif kind == "statuses":
                out.append("@par Fails with\n" + "\n".join(f"- **{s}**: {self.words(why)}" for s, why in content))
            elif all(term[0][0].isupper() for term in content):
                out += [f"@par {term}\n{self.words(meaning)}" for term, meaning in content]
            else:
                out.append("\n".join(f"- `{term}`: {self.words(meaning)}" for term, meaning in content))
        return "\n\n".join(out)

    def code(self, item):
        """A declaration with the comments inside it rewritten."""
        if item.kind in ("function", "object", "macro", "typedef"):
            return headers.without_comments(item.code) if item.kind != "macro" else item.code

        def rewrite(match):
            line = item.code[: match.start()].rpartition("\n")[2]
            return self.comment(headers.comment_text(match[0]), behind=bool(line.strip())).rstrip()

        code = item.code
        if item.kind == "enum" and len(item.members) == 1 and not item.members[0].text:
            code = code.replace(item.members[0].code, f"{item.members[0].code} {self.comment(item.comment, True).strip()}")
            return code
        return re.sub(r"/\*.*?\*/", rewrite, code, flags=re.S)

    def header(self, header):
        purpose = header.purpose if header.purpose.startswith("zt_") else header.purpose[0].upper() + header.purpose[1:]
        out = [self.comment(header.comment, before=f"@file\n@brief {self.words(purpose)}\n\n")]
        for section in header.sections:
            if section.title:
                out.append(f"/** @name {self.words(section.title)} */\n/** @{{ */\n")
            for item in section.items:
                if item.comment:
                    out.append(self.comment(item.comment))
                out.append(self.code(item) + "\n")
            if section.title:
                out.append("/** @} */\n")
        return "\n".join(out)


def page(name):
    """A page: links that lead out of the reference become text."""
    with open(os.path.join(ROOT, name), encoding="utf-8") as file:
        text = file.read()

    def link(match):
        words, target = match[1], match[2]
        if re.match(r"https?:", target) or target.partition("#")[0].endswith(".md"):
            return match[0]
        return f"`{os.path.normpath(os.path.join(os.path.dirname(name), target))}`"

    return re.sub(r"(?<!!)\[([^]]*)\]\(([^)]*)\)", link, text)


def main():
    directory = sys.argv[1]
    everything = headers.read_all(os.path.join(ROOT, "include"))
    writer = Writer(headers.names_of(everything))
    texts = {header.name: writer.header(header) for header in everything.values()}
    pages = glob.glob("*.md", root_dir=ROOT) + glob.glob("docs/*.md", root_dir=ROOT)
    texts |= {name: page(name) for name in pages}
    for name, text in texts.items():
        os.makedirs(os.path.dirname(os.path.join(directory, name)), exist_ok=True)
        with open(os.path.join(directory, name), "w", encoding="utf-8") as file:
            file.write(text)


if __name__ == "__main__":
    main()
