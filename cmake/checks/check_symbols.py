#!/usr/bin/env python3
"""Checks the names that the built libraries show, against include/zepbmp.h.

The header says which groups of functions this version has (#define ZEPBMP_HAS_... 1 with the names behind it), and the
prototypes say how many argument words each takes. From this follow the names of every file checked here.

usage: check_symbols.py --header FILE [--bits 32|64] [--nm PROGRAM] [--objdump PROGRAM] KIND FILE
  map      a linker's version script: exactly the available functions are listed, under the version ZEPBMP_1
  so       a shared library: exactly the available functions are exported, with the version ZEPBMP_1, nothing but system
           libraries is needed
  archive  a static library: every global symbol is an available function or in namespace zepbmp
  def      a module-definition file: exactly one line for each available function, as "_name@bytes" = name@bytes
  dll      a Windows library: exactly the names _name@bytes are exported, nothing but system DLLs imported
  implib   an import library: it resolves the symbols _name@bytes
With --bits 64 the last two have bare names.
"""
import argparse
import re
import sys

import reporting
from reporting import run

SYMBOL_VERSION = "ZEPBMP_1"
SYSTEM_DLLS = {"kernel32.dll", "msvcrt.dll", "user32.dll", "gdi32.dll"}
SYSTEM_LIBRARIES = re.compile(r"^(libc|libm|libgcc_s|libstdc\+\+|ld-linux(-x86-64)?)\.so\.\d+$")
# Position-independent 32-bit code fetches its own address by such a thunk: one plain move, the same in every file.
COMPILERS_OWN = re.compile(r"^(__x86\.get_pc_thunk\.\w+|DW\.ref\.__gxx_personality_v0)$")


def read_header(path):
    """Available functions: name -> bytes of arguments on a 32-bit target, where each takes one word."""
    with open(path) as file:
        text = file.read()
    groups = re.findall(r"^#define ZEPBMP_HAS_\w+ ([01])\s+/\* ((?:bmp_\w+ ?)+)\s*\*/", text, re.MULTILINE)
    switches = re.findall(r"^#define ZEPBMP_HAS_\w+", text, re.MULTILINE)
    prototypes = {name: 4 * len(arguments.split(","))
                  for name, arguments in re.findall(r"BMP_CALL (bmp_\w+)\(([^)]*)\);", text)}
    available = [name for switch, names in groups if switch == "1" for name in names.split()]
    listed = [name for _, names in groups for name in names.split()]
    if not available or len(groups) != len(switches) or sorted(listed) != sorted(prototypes):
        sys.exit(f"error: {path}: the functions listed at ZEPBMP_HAS_... and the prototypes are not the same")
    return {name: prototypes[name] for name in available}


def compare(what, found, wanted):
    findings = [f"{what}: {name} is missing" for name in sorted(set(wanted) - set(found))]
    findings += [f"{what}: {name} should not be there" for name in sorted(set(found) - set(wanted))]
    findings += [f"{what}: {name} is there twice" for name in sorted({n for n in found if found.count(n) > 1})]
    return findings


def check_map(arguments, functions):
    with open(arguments.file) as file:
        text = re.sub(r"/\*.*?\*/", "", file.read(), flags=re.DOTALL)
    match = re.match(r"^\s*(\w+)\s*\{\s*global:([^:{}]*)local:\s*\*;\s*\};\s*$", text)
    if not match:
        return ["not of the form 'VERSION { global: name; ... local: *; };'"]
    return (([] if match.group(1) == SYMBOL_VERSION else [f"the version is {match.group(1)}, not {SYMBOL_VERSION}"]) +
            compare("name", match.group(2).replace(";", " ").split(), list(functions)))


def check_so(arguments, functions):
    symbols = [line.split() for line in run(arguments.nm, "-D", "--defined-only", arguments.file).splitlines()]
    # The version itself is listed as an absolute symbol.
    exported = [name for *_, kind, name in symbols if (kind, name) != ("A", SYMBOL_VERSION)]
    needed = re.findall(r"^\s*NEEDED\s+(\S+)", run(arguments.objdump, "-p", arguments.file), re.MULTILINE)
    return (compare("export", exported, [f"{name}@@{SYMBOL_VERSION}" for name in functions]) +
            [f"needs {name}" for name in needed if not SYSTEM_LIBRARIES.match(name)])


def check_archive(arguments, functions):
    findings = []
    names = set()
    for line in run(arguments.nm, "-g", "--defined-only", arguments.file).splitlines():
        words = line.split()
        if len(words) < 2 or len(words[-2]) != 1:
            continue  # a member's name
        name = words[-1]
        if arguments.windows and arguments.bits == 32:
            if not name.startswith("_") and not name.startswith("."):
                findings.append(f"global symbol {name}")
                continue
            name = re.sub(r"^_(bmp_\w+)@\d+$", r"\1", name) if "@" in name else name[1:]
        if name in functions:
            names.add(name)
        elif not re.match(r"^_Z(TV|TS|TI|GV)?N[VKRO]*6zepbmp", name) and not COMPILERS_OWN.match(name):
            findings.append(f"global symbol {name} is not in namespace zepbmp")
    return findings + compare("function", list(names), list(functions))


def check_def(arguments, functions):
    found = []
    findings = []
    with open(arguments.file) as file:
        body = file.read().split("EXPORTS", 1)[-1]
    for line in body.splitlines():
        line = line.split(";")[0].strip()
        match = re.match(r'^"(_(bmp_\w+@\d+))" = (bmp_\w+@\d+)$', line)
        if match and match.group(2) == match.group(3):
            found.append(match.group(1))
        elif line:
            findings.append(f"line '{line}' is not of the form \"_name@bytes\" = name@bytes")
    return findings + compare("line", found, decorated(functions, 32))


def check_dll(arguments, functions):
    text = run(arguments.objdump, "-p", arguments.file)
    table = text.split("[Ordinal/Name Pointer] Table", 1)
    exported = re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+\w+\s+)?(\S+)$",
                          table[1].split("\n\n")[0] if len(table) == 2 else "", re.MULTILINE)
    imported = re.findall(r"^\s*DLL Name: (\S+)", text, re.MULTILINE)
    return (compare("export", exported, decorated(functions, arguments.bits)) +
            [f"imports {name}" for name in imported if name.lower() not in SYSTEM_DLLS] +
            ([] if imported else ["imports nothing: the listing was not understood"]))


def check_implib(arguments, functions):
    listing = run(arguments.nm, arguments.file).splitlines()
    symbols = {line.split()[-1] for line in listing if " T " in line or " I " in line}
    wanted = decorated(functions, arguments.bits)
    return compare("symbol", [name for name in symbols if re.match(r"^(__imp_)?_?bmp_", name)],
                   wanted + ["__imp_" + name for name in wanted])


def decorated(functions, bits):
    return [f"_{name}@{size}" if bits == 32 else name for name, size in functions.items()]


def main():
    parser = argparse.ArgumentParser(description="Checks the names that a library shows against include/zepbmp.h.")
    parser.add_argument("--header", required=True)
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--objdump", default="objdump")
    parser.add_argument("--bits", type=int, choices=(32, 64), default=32)
    parser.add_argument("--windows", action="store_true", help="32-bit symbols carry a leading underscore and @bytes")
    checks = {"map": check_map, "so": check_so, "archive": check_archive, "def": check_def, "dll": check_dll,
              "implib": check_implib}
    parser.add_argument("kind", choices=checks)
    parser.add_argument("file")
    arguments = parser.parse_args()

    functions = read_header(arguments.header)
    findings = checks[arguments.kind](arguments, functions)
    reporting.end([f"{arguments.file}: {line}" for line in findings], f"{len(functions)} functions")


if __name__ == "__main__":
    main()
