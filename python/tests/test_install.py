"""`pip install .` without network, in an environment of its own, and a program that uses what was installed.

ZEPBMP_TEST_COMPILE=1 has it compile the library; otherwise the one under test is bundled.
"""

import os
import shutil
import subprocess
import sys
import sysconfig
import zipfile
from pathlib import Path

import pytest

from zepbmp import _library

ROOT = Path(__file__).resolve().parents[2]
COMPILE = os.environ.get("ZEPBMP_TEST_COMPILE") == "1"

PROGRAM = """
import importlib.metadata
import sys
from pathlib import Path
import zepbmp
from zepbmp import Bitmap, Format, _library
folder = Path(zepbmp.__file__).parent
assert folder.is_relative_to(sys.prefix), folder
assert Path(_library.PATH) == folder / "libzepbmp.so", _library.PATH
assert (folder / "py.typed").exists()
dest, source = Bitmap(8, 4, Format.RGBQ), Bitmap(8, 4, Format.RGBQ)
source.array[:] = 200
zepbmp.compose_level(dest, dest, source, 1024)
print(importlib.metadata.version("zepbmp"), dest.array[3, 7].tolist())
"""


def clean_environment(**changes):
    """No library is named, no other package found, and no network reached."""
    removed = ("PYTHONPATH", "PYTHONHOME", "ZEPBMP_LIBRARY", "LD_PRELOAD")
    kept = {name: value for name, value in os.environ.items() if name not in removed and not name.startswith("PIP_")}
    return {**kept, "PIP_NO_INDEX": "1", "PIP_DISABLE_PIP_VERSION_CHECK": "1", "PIP_CONFIG_FILE": os.devnull, **changes}


def run(*command, cwd, **environment):
    done = subprocess.run(
        [str(one) for one in command],
        cwd=cwd,
        env=clean_environment(**environment),
        text=True,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        check=False,
    )
    return done.returncode, done.stdout


@pytest.fixture(scope="module")
def tree(tmp_path_factory):
    """The source tree as it is checked out, in a folder that may be written to."""
    target = tmp_path_factory.mktemp("tree")
    left_out = shutil.ignore_patterns("__pycache__", ".pytest_cache", ".mypy_cache", ".hypothesis", "*.egg-info")
    for name in ("python", "include", "LICENSE", "docs"):
        source = ROOT / name
        if source.is_dir():
            shutil.copytree(source, target / name, ignore=left_out)
        else:
            shutil.copy(source, target / name)
    if COMPILE:
        for path in ROOT.iterdir():
            if (
                not path.name.startswith(".")
                and path.name not in ("build", "dist")
                and not (target / path.name).exists()
            ):
                shutil.copytree(path, target / path.name) if path.is_dir() else shutil.copy(path, target / path.name)
    return target


@pytest.fixture(scope="module")
def environment_python(tmp_path_factory):
    folder = tmp_path_factory.mktemp("environment")
    # Debian's pip serves in it, too.
    how = ("--system-site-packages", "--without-pip")
    status, said = run(sys.executable, "-m", "venv", *how, folder, cwd=folder)
    assert status == 0, said
    return folder / "bin" / "python"


def test_pip_installs_it_and_a_program_runs(tree, environment_python, tmp_path):
    how = {} if COMPILE else {"ZEPBMP_LIBRARY": str(Path(_library.PATH).resolve())}
    status, said = run(environment_python, "-m", "pip", "install", ".", cwd=tree / "python", **how)
    assert status == 0, said
    (tmp_path / "program.py").write_text(PROGRAM, encoding="ascii")
    status, said = run(environment_python, tmp_path / "program.py", cwd=tmp_path)
    assert (status, said) == (0, f"{version()} [50, 50, 50, 50]\n")


def version():
    header = (ROOT / "include" / "zepbmp.h").read_text(encoding="utf-8")
    return ".".join(
        header.split(f"#define ZEPBMP_VERSION_{part} ")[1].split()[0] for part in ("MAJOR", "MINOR", "PATCH")
    )


def wheel(tree, folder, **environment):
    return run(sys.executable, "setup.py", "-q", "bdist_wheel", "-d", folder, cwd=tree / "python", **environment)


def test_a_pip_that_isolates_builds_can_be_kept_from_it(tree, environment_python, tmp_path):
    how = ("--use-pep517", "--no-build-isolation", "--no-deps")
    library = str(Path(_library.PATH).resolve())
    pip = (environment_python, "-m", "pip", "wheel", *how, "-w", tmp_path, ".")
    status, said = run(*pip, cwd=tree / "python", ZEPBMP_LIBRARY=library)
    assert status == 0, said
    assert [made.suffix for made in tmp_path.iterdir()] == [".whl"]


def test_the_wheel_is_for_any_python_of_this_platform(tree, tmp_path):
    status, said = wheel(tree, tmp_path, ZEPBMP_LIBRARY=str(Path(_library.PATH).resolve()))
    assert status == 0, said
    platform = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    (made,) = tmp_path.iterdir()
    assert made.name == f"zepbmp-{version()}-py3-none-{platform}.whl"
    with zipfile.ZipFile(made) as files:
        names = {name for name in files.namelist() if name.startswith("zepbmp/")}
        assert files.read("zepbmp/libzepbmp.so") == Path(_library.PATH).read_bytes()
    sources = {f"zepbmp/{path.name}" for path in (ROOT / "python" / "zepbmp").iterdir() if path.is_file()}
    assert names == sources | {"zepbmp/LICENSE", "zepbmp/libzepbmp.so"}


def test_a_wheel_for_the_systems_library_holds_none(tree, tmp_path):
    status, said = wheel(tree, tmp_path, ZEPBMP_LIBRARY="system")
    assert status == 0, said
    (made,) = tmp_path.iterdir()
    assert made.name == f"zepbmp-{version()}-py3-none-any.whl"
    with zipfile.ZipFile(made) as files:
        assert not [name for name in files.namelist() if name.endswith(".so")]


@pytest.mark.parametrize(
    "environment, message",
    [
        ({"PATH": "/nowhere"}, "error: there is no program 'cmake', which compiles the library: install cmake and g++"),
        ({"CXX": "/bin/false"}, "ended with 1: the library needs CMake 3.25 and a C++20 compiler"),
        ({"ZEPBMP_LIBRARY": "/no/such/file.so"}, "error: there is no library /no/such/file.so"),
    ],
)
def test_a_build_that_fails_says_why(tree, tmp_path, environment, message):
    for name in ("CMakeLists.txt", "cmake"):
        if not (tree / name).exists():
            (tree / name).symlink_to(ROOT / name)
    shutil.rmtree(tree / "build", ignore_errors=True)  # where CMake would remember a compiler
    status, said = wheel(tree, tmp_path, **environment)
    assert status != 0 and message in said, said


def test_outside_the_source_tree_it_says_so(tmp_path):
    for name in ("setup.py", "setup.cfg", "zepbmp"):
        source, target = ROOT / "python" / name, tmp_path / "python" / name
        target.parent.mkdir(exist_ok=True)
        shutil.copytree(source, target) if source.is_dir() else shutil.copy(source, target)
    status, said = wheel(tmp_path, tmp_path)
    assert status != 0 and "build the package in the source tree of zepbmp" in said, said
