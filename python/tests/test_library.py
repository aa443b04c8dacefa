"""The shared library: its prototypes are those of the header, and what does not load says why."""

import re
import subprocess
import sys
from ctypes import POINTER, c_float, c_int32, c_uint32, c_void_p
from pathlib import Path

import pytest

import zepbmp
from zepbmp import _library, _operations, _types

ROOT = Path(__file__).resolve().parents[2]
HEADER = (ROOT / "include" / "zepbmp.h").read_text(encoding="utf-8")
SCALARS = {"int32_t": c_int32, "uint32_t": c_uint32, "float": c_float, "void": None}


def header_prototypes():
    code = re.sub(r"/\*.*?\*/", "", HEADER, flags=re.DOTALL)
    for result, name, parameters in re.findall(r"^([\w ]+?\*?) BMP_CALL (bmp_\w+)\((.*?)\);", code, re.M | re.S):
        yield name, result, [parameter.strip() for parameter in parameters.split(",")]


def test_prototypes_are_those_of_the_header():
    names = []
    for name, result, parameters in header_prototypes():
        names.append(name)
        expected = tuple(c_void_p if "*" in one else SCALARS[one.split()[0]] for one in parameters)
        got_result, got = _library.PROTOTYPES[name]
        assert got == expected, name
        if name == "bmp_create":
            assert got_result is POINTER(_library.Record)
        else:
            assert got_result is (c_void_p if "*" in result else SCALARS[result]), name
    assert len(names) == 18 and sorted(names) == sorted(_library.PROTOTYPES)


def test_every_function_is_used():
    for name in _library.PROTOTYPES:
        uses = sum(
            Path(module.__file__).read_text(encoding="utf-8").count(f'call["{name}"]')
            for module in (_operations, sys.modules["zepbmp._bitmap"])
        )
        assert uses > 0, name


def test_the_record_is_that_of_the_header():
    fields = re.search(r"typedef struct Bitmap \{(.*?)\} Bitmap;", HEADER, re.DOTALL)[1]
    declared = re.findall(r"^\s*(\w+\*?) (\w+);", fields, re.M)
    kinds = {"int32_t": c_int32, "uint32_t": c_uint32, "uint8_t*": c_void_p, "void*": c_void_p}
    assert [(name, kinds[kind]) for kind, name in declared] == _library.Record._fields_


def test_flags_and_formats_are_those_of_the_header():
    header = {name: int(value.rstrip("u"), 0) for name, value in re.findall(r"#define BMP_(\w+) (\d\w*)", HEADER)}
    assert {f"FMT_{one.name}": one.value for one in _types.Format} == {
        name: value for name, value in header.items() if name.startswith("FMT_")
    }
    assert _types.Field.SKIP_FIRST == header["FIELD_ODD"] and _types.Field.EVEN == header["FIELD"]
    assert _types.Field.ODD == header["FIELD_ODD"] | header["FIELD"]
    assert {one.name: one.value for one in _types.ShapeMode} == {"ADD": header["SHAPE_ADD"], "MAX": header["SHAPE_MAX"]}
    assert _operations._COMPOSE_LEVEL == header["COMPOSE_LEVEL"]
    assert _operations._SHAPE_ELLIPTIC == header["SHAPE_ELLIPTIC"] | header["SHAPE_ELLIPTIC_PLAIN"]
    assert _operations._SHAPE_COSINE == header["SHAPE_COSINE"]
    for name in ("EXTRA", "SOLID", "ANTIALIAS", "NO_FILTER"):
        assert getattr(_operations, f"_MAP_{name}") == header[f"MAP_{name}"]
    assert sys.modules["zepbmp._bitmap"]._CREATE_ZERO == header["CREATE_ZERO"]


def test_names_on_32_bit_windows_are_those_of_the_dll():
    exported = re.findall(r'"(_bmp_\w+@\d+)"', (ROOT / "platform" / "exports.def").read_text(encoding="utf-8"))
    assert sorted(map(_library.decorated, _library.PROTOTYPES)) == sorted(exported)


def imported(**environment):
    """What Python says when it imports the package by itself."""
    package = str(Path(zepbmp.__file__).parents[1])
    done = subprocess.run(
        [sys.executable, "-c", "import zepbmp; print(zepbmp._library.PATH)"],
        env={"PYTHONPATH": package, "PYTHONDONTWRITEBYTECODE": "1", **environment},
        text=True,
        capture_output=True,
        check=False,
    )
    return done.returncode, done.stdout.strip() or done.stderr.strip().splitlines()[-1]


def test_a_named_library_is_loaded():
    assert imported(ZEPBMP_LIBRARY=_library.PATH) == (0, _library.PATH)


def test_the_systems_library_is_loaded(tmp_path):
    (tmp_path / "libzepbmp.so.1").symlink_to(Path(_library.PATH).resolve())
    assert imported(ZEPBMP_LIBRARY="system", LD_LIBRARY_PATH=str(tmp_path)) == (0, "libzepbmp.so.1")


@pytest.mark.parametrize(
    "named, message",
    [
        ("/no/such/file.so", "the zepbmp library does not load: /no/such/file.so: cannot open"),
        (__file__, "the zepbmp library does not load: .*invalid ELF header"),
        ("system", "found no zepbmp library: .*libzepbmp.so.1: cannot open.* ZEPBMP_LIBRARY"),
    ],
)
def test_what_does_not_load_says_why(named, message, tmp_path):
    status, said = imported(ZEPBMP_LIBRARY=named, LD_LIBRARY_PATH=str(tmp_path))
    assert status == 1 and re.match(f"ImportError: {message}", said), said


def test_a_library_of_another_kind_is_refused():
    status, said = imported(ZEPBMP_LIBRARY=sys.modules["_ctypes"].__file__)
    assert status == 1 and "is no zepbmp library: it has no bmp_create" in said
