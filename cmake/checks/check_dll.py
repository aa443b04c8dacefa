#!/usr/bin/env python3
"""Checks zepbmp.dll as a file: what the loader is told, what it imports, what its properties show.

usage: check_dll.py --bits 32|64 --header FILE --def FILE DLL
       check_dll.py --bits 32|64 --header FILE --def FILE --self-test DLL    what is spoiled in a copy has to be found
Needs Debian's python3-pefile.
"""
import argparse
import re
import sys

import pefile

import reporting

# All that the library asks of the system. None of them starts a thread or loads a library.
IMPORTS = {
    "gdi32.dll": {"SetDIBitsToDevice"},
    "msvcrt.dll": {"calloc", "free", "malloc", "memcpy", "memmove", "memset"},
}
ENTRY = {name: number for number, name in enumerate(
    "export import resource exception security basereloc debug architecture globalptr tls load_config bound_import "
    "iat delay_import com".split())}
ABSENT = ("security", "debug", "tls", "bound_import", "delay_import", "com")
EXECUTE, WRITE = 0x20000000, 0x80000000


def header_version(path):
    with open(path) as file:
        parts = re.findall(r"^#define ZEPBMP_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", file.read(), re.MULTILINE)
    if len(parts) != 3:
        sys.exit(f"error: {path} has no version")
    return tuple(int(part) for part in parts)


def defined_names(path, bits):
    """32-bit names as the file has them; 64-bit ones are bare."""
    with open(path) as file:
        names = re.findall(r'^\s*"(_bmp_\w+@\d+)" =', file.read(), re.MULTILINE)
    if not names:
        sys.exit(f"error: {path} names no export")
    return names if bits == 32 else [re.sub(r"^_(\w+)@\d+$", r"\1", name) for name in names]


def check_headers(dll, bits):
    flags, options = dll.FILE_HEADER, dll.OPTIONAL_HEADER
    kind = (0x14C, 0x10B) if bits == 32 else (0x8664, 0x20B)
    yield (flags.Machine, options.Magic) == kind, f"not a {bits}-bit x86 file"
    if bits == 64:
        yield options.DllCharacteristics & 0x20, "randomisation in 64 bits (HIGH_ENTROPY_VA) is off"
        yield options.ImageBase >= 1 << 32, "linked for an address that needs only 32 bits"
    yield flags.IMAGE_FILE_DLL, "not marked as a DLL"
    yield not flags.IMAGE_FILE_RELOCS_STRIPPED, "marked as not relocatable"
    yield options.DllCharacteristics & 0x40, "address space randomisation (DYNAMIC_BASE) is off"
    yield options.DllCharacteristics & 0x100, "data execution prevention (NX_COMPAT) is off"
    yield flags.TimeDateStamp == 0, "the time of day stands in the header"
    yield dll.DIRECTORY_ENTRY_EXPORT.struct.TimeDateStamp == 0, "the time of day stands in the export table"
    yield options.CheckSum == dll.generate_checksum(), "the checksum is wrong"
    yield flags.NumberOfSymbols == 0, "there is a symbol table"
    for name in ABSENT:
        yield options.DATA_DIRECTORY[ENTRY[name]].Size == 0, f"there is a directory '{name}'"


def check_sections(dll):
    executable = [s.Name.rstrip(b"\0").decode() for s in dll.sections if s.Characteristics & EXECUTE]
    yield executable == [".text"], f"executable sections: {executable}"
    for section in dll.sections:
        both = section.Characteristics & EXECUTE and section.Characteristics & WRITE
        yield not both, f"{section.Name} can be written and executed"
    start = dll.OPTIONAL_HEADER.AddressOfEntryPoint
    text = next(s for s in dll.sections if s.Name.startswith(b".text"))
    yield text.contains_rva(start), "the entry point is not in .text"


def check_relocations(dll, bits):
    blocks = getattr(dll, "DIRECTORY_ENTRY_BASERELOC", [])
    places = [entry for block in blocks for entry in block.entries if entry.type == (3 if bits == 32 else 10)]
    # 64-bit code has no address in it; the kernel tables are what is left.
    yield len(places) > (1000 if bits == 32 else 500), f"only {len(places)} relocations"
    size = dll.OPTIONAL_HEADER.SizeOfImage
    yield all(entry.rva < size for entry in places), "a relocation is outside the image"


def check_exports(dll, names):
    symbols = dll.DIRECTORY_ENTRY_EXPORT.symbols
    found = [symbol.name.decode() if symbol.name else None for symbol in symbols]
    yield sorted(map(str, found)) == sorted(names), f"exports {found}"
    yield sorted(s.ordinal for s in symbols) == list(range(1, len(names) + 1)), "ordinals are not 1, 2, 3, ..."
    yield not any(symbol.forwarder for symbol in symbols), "an export is forwarded"
    yield dll.DIRECTORY_ENTRY_EXPORT.name == b"zepbmp.dll", "the export table names another DLL"


def check_imports(dll):
    for entry in dll.DIRECTORY_ENTRY_IMPORT:
        name = entry.dll.decode().lower()
        for item in entry.imports:
            symbol = item.name.decode() if item.name else f"ordinal {item.ordinal}"
            yield symbol in IMPORTS.get(name, ()), f"imports {symbol} from {name}"


def check_version(dll, version):
    dotted = ".".join(map(str, version))
    major, minor, patch = version
    fixed = getattr(dll, "VS_FIXEDFILEINFO", None)
    yield fixed, "there is no version resource"
    if not fixed:
        return
    words = (major << 16 | minor, patch << 16)
    yield (fixed[0].FileVersionMS, fixed[0].FileVersionLS) == words, "the file version is not the header's"
    yield (fixed[0].ProductVersionMS, fixed[0].ProductVersionLS) == words, "the product version is not the header's"
    yield (fixed[0].FileOS, fixed[0].FileType) == (4, 2), "the version resource is not of a Windows DLL"
    tables = [table for info in dll.FileInfo[0] if hasattr(info, "StringTable") for table in info.StringTable]
    strings = {key.decode(): value.decode() for table in tables for key, value in table.entries.items()}
    for key in ("FileVersion", "ProductVersion"):
        yield strings.get(key) == dotted, f"{key} is '{strings.get(key)}', not {dotted}"
    yield strings.get("OriginalFilename") == "zepbmp.dll", "OriginalFilename is wrong"
    yield "zepbmp authors" in strings.get("LegalCopyright", ""), "LegalCopyright is wrong"
    yield strings.get("FileDescription"), "there is no FileDescription"


def findings(dll, bits, version, names):
    return [text for check in (check_headers(dll, bits), check_sections(dll), check_relocations(dll, bits),
                               check_exports(dll, names), check_imports(dll), check_version(dll, version))
            for right, text in check if not right]


# ---------------------------------------------------------------- self-test

def set_flag(field, bit, on):
    def spoil(dll):
        value = getattr(dll.OPTIONAL_HEADER, field)
        setattr(dll.OPTIONAL_HEADER, field, value | bit if on else value & ~bit)
    return spoil


def clear_directory(name):
    def spoil(dll):
        dll.OPTIONAL_HEADER.DATA_DIRECTORY[ENTRY[name]].VirtualAddress = 0
        dll.OPTIONAL_HEADER.DATA_DIRECTORY[ENTRY[name]].Size = 0
    return spoil


def set_directory(name):
    def spoil(dll):
        dll.OPTIONAL_HEADER.DATA_DIRECTORY[ENTRY[name]].Size = 24
    return spoil


def set_time(dll):
    dll.FILE_HEADER.TimeDateStamp = 1


def set_entry_point(dll):
    dll.OPTIONAL_HEADER.AddressOfEntryPoint = dll.sections[1].VirtualAddress


def make_writable(dll):
    dll.sections[0].Characteristics |= WRITE


def replace_bytes(old, new):
    def spoil(dll):
        place = dll.__data__.find(old)
        if place < 0 or len(old) != len(new):
            sys.exit(f"error: {old} is not in the DLL")
        dll.set_bytes_at_offset(place, new)
    return spoil


def rename_export(dll):
    for name in (b"_bmp_create@16\0", b"\0bmp_create\0"):
        if name in dll.__data__[:]:
            replace_bytes(name, name.replace(b"create", b"crease"))(dll)
            return
    sys.exit("error: bmp_create is not in the DLL")


SELF_TEST = [
    (set_flag("DllCharacteristics", 0x40, False), "DYNAMIC_BASE"),
    (set_flag("DllCharacteristics", 0x100, False), "NX_COMPAT"),
    (set_time, "time of day stands in the header"),
    (set_directory("tls"), "directory 'tls'"),
    (clear_directory("basereloc"), "relocations"),
    (clear_directory("resource"), "no version resource"),
    (set_entry_point, "entry point"),
    (make_writable, "written and executed"),
    (rename_export, "exports"),
    (replace_bytes(b"calloc\0", b"system\0"), "imports system"),
    (replace_bytes(b"GDI32.dll\0", b"WS232.dll\0"), "ws232.dll"),
    (replace_bytes("OriginalFilename\0".encode("utf-16le"), "OriginalFileName\0".encode("utf-16le")),
     "OriginalFilename"),
]


SELF_TEST_64 = [
    (set_flag("DllCharacteristics", 0x20, False), "HIGH_ENTROPY_VA"),
]


def self_test(path, bits, version, names):
    wrong = 0
    cases = SELF_TEST + (SELF_TEST_64 if bits == 64 else [])
    for spoil, expected in cases:
        dll = pefile.PE(path)
        spoil(dll)
        found = findings(pefile.PE(data=bytes(dll.write())), bits, version, names)
        if not any(expected in text for text in found):
            wrong += 1
            print(f"not found: '{expected}'; found instead: {found}")
    wrong += not findings(pefile.PE(path), bits, (*version[:2], version[2] + 1), names)
    wrong += not findings(pefile.PE(path), 96 - bits, version, names)
    reporting.end_self_test(len(cases) + 2, wrong)


def main():
    parser = argparse.ArgumentParser(description="Checks zepbmp.dll as a file.")
    parser.add_argument("--bits", type=int, choices=(32, 64), required=True)
    parser.add_argument("--header", required=True)
    parser.add_argument("--def", required=True, dest="definition")
    parser.add_argument("--self-test", action="store_true")
    parser.add_argument("dll")
    arguments = parser.parse_args()
    version, names = header_version(arguments.header), defined_names(arguments.definition, arguments.bits)
    if arguments.self_test:
        self_test(arguments.dll, arguments.bits, version, names)
    found = findings(pefile.PE(arguments.dll), arguments.bits, version, names)
    reporting.end([f"{arguments.dll}: {text}" for text in found],
                  f"{len(names)} exports, version {'.'.join(map(str, version))}")


if __name__ == "__main__":
    main()
