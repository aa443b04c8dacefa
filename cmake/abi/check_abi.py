#!/usr/bin/env python3
"""Compares a library's binary interface with a description that is kept: exports, argument types, records, versions.

usage: check_abi.py --abidw PROGRAM --abidiff PROGRAM COMMAND
  compare DESCRIPTION LIBRARY    fails on any difference, additions and harmless ones included
  describe DESCRIPTION LIBRARY   writes the description anew
  self-test SOURCE COMPILER [FLAG...]
                                 builds bmp_create, bmp_destroy and bmp_pointer as they are and with changes of each
                                 kind: the comparison has to find every one, and nothing in the same source
The library has debug information.
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

# No places and no parameters' names: moving a declaration or naming an argument better changes no interface.
DESCRIBE = ["--exported-interfaces-only", "--type-id-style", "hash", "--no-show-locs", "--no-parameter-names",
            "--no-comp-dir-path", "--no-corpus-path", "--no-elf-needed"]
COMPARE = ["--harmless", "--no-show-locs"]

HEADER, EXPORTS = "include/zepbmp.h", "core/bitmap.cpp"


def in_both(pattern, replacement):
    return [(HEADER, pattern, replacement), (EXPORTS, pattern, replacement)]


# Every change: what it is, then file, pattern, replacement.
CHANGES = [
    ("a field at the end of Bitmap",
     [(HEADER, r"(uint32_t format;[^\n]*\n)(?=\} Bitmap;)", r"\1 uint32_t added;\n")]),
    ("two fields of Bitmap in the other order",
     [(HEADER, r"(    int32_t width;[^\n]*\n)(    int32_t height;[^\n]*\n)", r"\2\1")]),
    ("a field of Bitmap without its sign",
     [(HEADER, r"int32_t pitch;", "uint32_t pitch;")]),
    ("a wider argument",
     in_both(r"(bmp_pointer\(const Bitmap\* bitmap), int32_t x", r"\1, int64_t x")),
    ("an argument without its sign",
     in_both(r"(bmp_create\(int32_t width), int32_t height", r"\1, uint32_t height")),
    ("an argument that is not const",
     in_both(r"bmp_pointer\(const Bitmap\*", "bmp_pointer(Bitmap*")),
    ("one argument more",
     in_both(r"bmp_destroy\(Bitmap\* bitmap", r"\g<0>, int added")),
    ("another result",
     in_both(r"Bitmap\* (BMP_CALL bmp_create)", r"void* \1")),
    ("one export more",
     [(EXPORTS, r"\Z", "\nBMP_EXPORT void BMP_CALL bmp_added() {}\n")]),
    ("one export less",
     [(EXPORTS, r"BMP_EXPORT (?=void BMP_CALL bmp_destroy)", 'extern "C" ')]),
]


def run(*command):
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return done.returncode, done.stdout


def must_run(*command):
    status, text = run(*command)
    if status != 0:
        sys.exit(f"error: {' '.join(map(str, command))} ended with {status}:\n{text}")
    return text


def describe(tools, description, library):
    must_run(tools.abidw, *DESCRIBE, "--out-file", description, library)
    # A library without debug information has symbols, and no function among the declarations.
    text = description.read_text()
    symbols = len(re.findall(r"<elf-symbol ", text.split("<abi-instr", 1)[0]))
    functions = len(re.findall(r"<function-decl [^>]*elf-symbol-id=", text))
    if not functions or functions > symbols:
        sys.exit(f"error: {library}: {symbols} symbols, {functions} functions described: is there debug information?")
    return functions


def compare(tools, description, library):
    """The differences as text, empty where there are none; and how many functions were compared."""
    with tempfile.TemporaryDirectory() as folder:
        found = pathlib.Path(folder) / "found.abi"
        functions = describe(tools, found, library)
        status, text = run(tools.abidiff, *COMPARE, description, found)
        if status & 3 or (status and not text.strip()):
            sys.exit(f"error: {tools.abidiff} ended with {status}:\n{text}")
        return (text or "no difference told, but there is one") if status else "", functions


def self_test(tools, source, compiler):
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)

        def build(name, edits):
            place = folder / name
            for file in (HEADER, EXPORTS):
                text = (source / file).read_text()
                for _, pattern, replacement in [edit for edit in edits if edit[0] == file]:
                    text, count = re.subn(pattern, replacement, text, count=1)
                    if count != 1:
                        sys.exit(f"error: {file} has no place for the change: {pattern}")
                path = place / file
                path.parent.mkdir(parents=True)
                path.write_text(text)
            library = place / "library.so"
            must_run(*compiler, "-std=c++20", "-g", "-fPIC", "-shared", "-fvisibility=hidden", "-fno-exceptions",
                     "-I", place / "include", "-I", source, "-I", source / "include", place / EXPORTS, "-o", library)
            return library

        description = folder / "description.abi"
        describe(tools, description, build("base", []))
        cases = [("the same source", []), *CHANGES]
        for number, (what, edits) in enumerate(cases):
            found, _ = compare(tools, description, build(f"case{number}", edits))
            right = bool(found) == bool(edits)
            failures += not right
            print(f"{'ok' if right else 'WRONG'}: {what}: {'found' if found else 'no difference'}")
    print(f"{len(cases)} cases, {failures} wrong")
    return failures


def main():
    parser = argparse.ArgumentParser(description="Compares a library's binary interface with a description of it.")
    parser.add_argument("--abidw", required=True)
    parser.add_argument("--abidiff", required=True)
    commands = parser.add_subparsers(dest="command", required=True)
    for name in ("compare", "describe"):
        command = commands.add_parser(name)
        command.add_argument("description", type=pathlib.Path)
        command.add_argument("library", type=pathlib.Path)
    command = commands.add_parser("self-test")
    command.add_argument("source", type=pathlib.Path)
    command.add_argument("compiler", nargs=argparse.REMAINDER)
    arguments = parser.parse_args()

    if arguments.command == "describe":
        print(f"{describe(arguments, arguments.description, arguments.library)} functions described")
    elif arguments.command == "compare":
        if not arguments.description.is_file():
            sys.exit(f"error: there is no {arguments.description}")
        found, functions = compare(arguments, arguments.description, arguments.library)
        if found:
            sys.exit(f"{found}\nThe binary interface differs from {arguments.description}. "
                     "docs/compatibility.md tells what a change of it means.")
        print(f"{functions} functions compared, no difference")
    else:
        sys.exit(1 if self_test(arguments, arguments.source, arguments.compiler) else 0)


if __name__ == "__main__":
    main()
