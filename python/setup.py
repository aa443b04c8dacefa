"""Builds the wheel. The shared library is compiled by CMake from the source tree around this folder, and goes into the
wheel.

The environment variable ZEPBMP_LIBRARY names a library to bundle instead; "system": none is bundled, and the package
loads the system's.
"""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

HERE = Path(__file__).resolve().parent
SOURCE = HERE.parent
HEADER = SOURCE / "include" / "zepbmp.h"
BUNDLED_NAME = "zepbmp.dll" if sys.platform == "win32" else "libzepbmp.so"


def version() -> str:
    """The header is the one place that knows it."""
    if not HEADER.exists():
        sys.exit(f"error: there is no {HEADER}: build the package in the source tree of zepbmp")
    numbers = re.findall(r"^#define ZEPBMP_VERSION_\w+ (\d+)$", HEADER.read_text(encoding="utf-8"), re.MULTILINE)
    return ".".join(numbers)


def run(*command: str) -> None:
    print("$", *command, flush=True)
    try:
        subprocess.run(command, check=True)
    except FileNotFoundError:
        sys.exit(f"error: there is no program '{command[0]}', which compiles the library: install cmake and g++, "
                 "or name a compiled library in the environment variable ZEPBMP_LIBRARY")  # fmt: skip
    except subprocess.CalledProcessError as error:
        sys.exit(f"error: '{' '.join(command)}' ended with {error.returncode}: the library needs CMake 3.25 and a "
                 "C++20 compiler; or name a compiled library in the environment variable ZEPBMP_LIBRARY")  # fmt: skip


def compiled_library(folder: Path) -> Path:
    options = ["-DCMAKE_BUILD_TYPE=Release", "-DZEPBMP_TESTS=OFF"]
    run("cmake", "-S", str(SOURCE), "-B", str(folder), *options)
    run("cmake", "--build", str(folder), "--target", "zepbmp", "--parallel", str(os.cpu_count() or 1))
    return folder / BUNDLED_NAME


class BuildWithLibrary(build_py):
    def run(self) -> None:
        super().run()
        package = Path(self.build_lib) / "zepbmp"
        shutil.copyfile(SOURCE / "LICENSE", package / "LICENSE")
        named = os.environ.get("ZEPBMP_LIBRARY")
        if named == "system":
            return
        if named:
            library = Path(named)
        else:
            library = compiled_library(Path(self.get_finalized_command("build").build_base).resolve() / "library")
        if not library.is_file():
            sys.exit(f"error: there is no library {library}")
        target = package / BUNDLED_NAME
        shutil.copyfile(library.resolve(), target)
        print(f"bundled {library} as {target}")


class PlatformDistribution(Distribution):
    """Holds a compiled library, unless the system's is to be used."""

    def has_ext_modules(self) -> bool:
        return os.environ.get("ZEPBMP_LIBRARY") != "system"


cmdclass = {"build_py": BuildWithLibrary}
try:
    from wheel.bdist_wheel import bdist_wheel
except ImportError:
    pass
else:

    class AnyPythonWheel(bdist_wheel):
        """The library is no extension module: any Python of this platform takes it."""

        def get_tag(self) -> tuple[str, str, str]:
            _, _, platform = super().get_tag()
            return "py3", "none", platform

    cmdclass["bdist_wheel"] = AnyPythonWheel

(SOURCE / "build" / "python").mkdir(parents=True, exist_ok=True)
setup(version=version(), cmdclass=cmdclass, distclass=PlatformDistribution)
