#!/usr/bin/python3
"""Compiles the C examples of README.md and of the pages in docs/, with all warnings as errors.

usage: check_examples.py --compiler FILE --library FILE
A block that begins with ```c stands in a function where the names below are declared. One that begins with ```c program
is a whole program: it is linked and run; it ends with status 0, and the next block, ```output, is what it prints.
"""

import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
FLAGS = [
    "-std=c99",
    "-Wall",
    "-Wextra",
    "-Werror",
    "-Wno-unused-variable",
    "-Wno-unused-parameter",
    "-Wno-unused-but-set-variable",
    f"-I{ROOT / 'include'}",
]
BLOCK = re.compile(r"^```c\n(.*?)^```$", re.MULTILINE | re.DOTALL)
PROGRAM = re.compile(r"^```c program\n(.*?)^```$.*?^```output\n(.*?)^```$", re.MULTILINE | re.DOTALL)
# What the pages' examples speak of, unless they declare it themselves.
DECLARED = {name: f"Bitmap* {name}" for name in "frame before after weights inner outer mask indices depth".split()}
DECLARED |= {
    "quad": "BmpVertex quad[4]",
    "device_context": "void* device_context",
    "number": "float number",
    "count": "float count",
}
DECLARED |= {name: f"int32_t {name}" for name in "width height".split()}
DECLARED |= {name: f"float {name}" for name in "cx cy radius feather".split()}
INCLUDE = re.compile(r"^#include .*\n", re.MULTILINE)
# A program that runs longer hangs.
LONGEST_RUN_S = 20
# These need a header of Windows.
WINDOWS = ("windows.md",)


def wrapped(body, number):
    body = INCLUDE.sub("", body)
    arguments = ", ".join(text for name, text in DECLARED.items() if not re.search(rf"\w\*? {name}(\[\d+\])? = ", body))
    return f"void example_{number}({arguments});\nvoid example_{number}({arguments}) {{\n{body}}}\n"


def compiled(compiler, text, *arguments):
    done = subprocess.run(
        [compiler, *FLAGS, "-x", "c", "-", *arguments],
        input=text,
        text=True,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
    )
    return done.returncode == 0, done.stdout


def run_fault(file, output):
    """What is wrong with a program, or None."""
    try:
        done = subprocess.run([file], stdout=subprocess.PIPE, text=True, timeout=LONGEST_RUN_S)
    except subprocess.TimeoutExpired:
        return f"a program runs longer than {LONGEST_RUN_S} seconds"
    if done.returncode != 0:
        return f"a program ends with status {done.returncode}"
    return None if done.stdout == output else f"a program prints {done.stdout!r}, not {output!r}"


def main():
    parser = argparse.ArgumentParser(description="Compiles the C examples of README.md and of the pages in docs/.")
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--library", type=Path, required=True)
    arguments = parser.parse_args()
    faults, blocks, programs = [], 0, 0
    docs = ROOT / "docs"
    for page in [ROOT / "README.md", *sorted([*docs.glob("*.md"), *(docs / "functions").glob("*.md")])]:
        text = page.read_text(encoding="utf-8")
        bodies = [] if page.name in WINDOWS else BLOCK.findall(text)
        if bodies:
            includes = ["#include <stddef.h>\n#include <zepbmp.h>\n", *INCLUDE.findall("".join(bodies))]
            source = "".join([*includes, *map(wrapped, bodies, range(len(bodies)))])
            works, said = compiled(arguments.compiler, source, "-fsyntax-only")
            blocks += len(bodies)
            if not works:
                faults.append(f"{page}: an example does not compile\n{said}")
        for program, output in PROGRAM.findall(text):
            programs += 1
            with tempfile.TemporaryDirectory() as folder:
                file = Path(folder) / "program"
                works, said = compiled(
                    arguments.compiler,
                    program,
                    "-o",
                    file,
                    "-x",
                    "none",
                    arguments.library.resolve(),
                    f"-Wl,-rpath,{arguments.library.resolve().parent}",
                )
                fault = run_fault(file, output) if works else f"a program does not compile\n{said}"
            if fault:
                faults.append(f"{page}: {fault}")
    if not blocks or not programs:
        faults.append("there is no example")
    if faults:
        sys.exit("\n".join(f"error: {fault}" for fault in faults))
    print(f"{blocks} examples compile, {programs} program prints what its page says")


if __name__ == "__main__":
    main()
