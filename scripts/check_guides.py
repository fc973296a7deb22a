#!/usr/bin/python3
"""check_guides.py ROOT COMPILER: compiles every C++ block of README.md and docs/, all in one go.

A block with a main() is a whole program. Any other block is the body of a function that returns an int; `path` is the
path of an audio file there, and the headers named below are included. Links to files of the tree must lead somewhere."""
import os
import re
import subprocess
import sys

HEADERS = ["zaltag/modern.h", "chrono", "cstdlib", "fstream", "functional", "iostream", "iterator", "memory", "string",
           "vector", "stand_ins.h"]


def documents(root):
    yield "README.md"
    for folder, _, names in os.walk(os.path.join(root, "docs")):
        yield from (os.path.relpath(os.path.join(folder, name), root) for name in sorted(names) if name.endswith(".md"))


def block_source(number, name, line, text):
    """One block in a namespace of its own; its includes have gone to the top."""
    body = "\n".join("" if row.startswith("#include") else row for row in text.splitlines())
    if not re.search(r"\bint main\(", text):
        body = f'int block([[maybe_unused]] const std::string& path) {{\n#line {line} "{name}"\n{body}\nreturn 0;\n}}'
    return f'namespace block_{number} {{\n#line {line} "{name}"\n{body}\n}}\n'


def check_links(root, name, text, faults):
    for target in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text):
        if not os.path.exists(os.path.join(root, os.path.dirname(name), target)):
            faults.append(f"{name}: the link to {target} leads nowhere")
    for target in re.findall(r"`((?:docs|examples|formats|include|scripts|src|tests)/[\w./-]+\.\w+)`", text):
        if not any(os.path.exists(os.path.join(root, folder, target)) for folder in (".", "docs")):
            faults.append(f"{name}: there is no {target}")


def main(root, compiler):
    faults, sources, includes = [], [], [f"#include <{header}>" for header in HEADERS]
    for name in documents(root):
        with open(os.path.join(root, name), encoding="utf-8") as file:
            text = file.read()
        check_links(root, name, re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S), faults)
        for found in re.finditer(r"^```cpp\n(.*?)^```$", text, re.M | re.S):
            line = text.count("\n", 0, found.start(1)) + 1
            sources.append(block_source(len(sources), name, line, found[1]))
            includes += [row for row in found[1].splitlines() if row.startswith("#include")]
    source = "\n".join(includes) + "\n" + "".join(sources)
    options = ["-std=c++20", "-Wall", "-Wextra", "-Werror", "-Wno-unused", "-fsyntax-only", "-I",
               os.path.join(root, "include"), "-I", os.path.join(root, "tests", "guides"), "-x", "c++", "-"]
    done = subprocess.run([compiler, *options], input=source, text=True, capture_output=True)
    print(done.stderr, end="")
    print("\n".join([*faults, f"{len(sources)} blocks"]))
    return 1 if faults or done.returncode or len(sources) < 10 else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
