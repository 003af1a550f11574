#!/usr/bin/env python3
"""Compiles the examples in the public headers, as C11 and as C++17, with warnings as errors."""

import os
import re
import subprocess
import sys

import headers

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

# What an example takes for granted, by header.
AROUND = {
    "zt/list.h": "zt_queue_t queue;",
    "zt/queue.h": "zt_queue_t queue;",
    "zt/rbtree.h": "typedef struct session_t { int key; zt_rbtree_node_t node; } session_t;\nzt_rbtree_t tree;\nint key;",
    "zt/log.h": "#include <errno.h>\n#include <string.h>\nconst char *host;",
    "zt/watchdog.h": "void on_expired(zt_watchdog_mgr_t *mgr, zt_watchdog_t *entry);",
}
FLAGS = ["-Wall", "-Wextra", "-Werror", "-Wno-unused-variable", "-Wno-unused-but-set-variable", "-fsyntax-only",
         f"-I{ROOT}/include", "-"]


def examples(header):
    """The C code in a header's comments; output that is shown there is none."""
    for text in [header.comment, *(item.comment for item in header.items() if not item.shares)]:
        for kind, content in headers.blocks(text):
            if kind == "code" and re.search(r";\s*(//.*)?$", "\n".join(content), re.M):
                yield "\n".join(content)


def program(header, example):
    """Definitions of categories stand outside, the rest inside a function."""
    outside = [line for line in example.split("\n") if line.startswith("ZT_LOGGING_CATEGORY_")]
    inside = [line for line in example.split("\n") if line not in outside]
    return "\n".join(["#include <zt/base.h>", AROUND.get(header.name, ""), *outside,
                      "void example(void);", "void example(void) {", *inside, "}", ""])


def main():
    count, bad = 0, 0
    for header in headers.read_all(os.path.join(ROOT, "include")).values():
        for example in examples(header):
            count += 1
            for compiler in (["gcc", "-xc", "-std=c11"], ["g++", "-xc++", "-std=c++17"]):
                run = subprocess.run([*compiler, *FLAGS], input=program(header, example).encode(), capture_output=True, check=False)
                if run.returncode != 0:
                    bad += 1
                    print(f"{header.name}: this example does not compile:\n{example}\n{run.stderr.decode()}")
    print(f"examples: {count} in the headers, {bad} faults")
    sys.exit(bool(bad))


if __name__ == "__main__":
    main()
