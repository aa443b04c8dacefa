"""What a call costs beyond the library's work: small operations through the package and through ctypes alone.

    python3 call_overhead.py            a table: nanoseconds a call, the least of nine runs

Where there is a C compiler, it makes a program that measures C itself.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import timeit
from collections.abc import Callable
from pathlib import Path
from typing import Any

import zepbmp
from zepbmp import Bitmap, Format, _library

CALLS = 20_000
RUNS = 9
SIZE = 16

C_PROGRAM = """
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <time.h>

typedef void* (*Create)(int32_t, int32_t, int32_t, uint32_t);
typedef void (*Clear)(void*, uint32_t);
typedef int32_t (*Compose)(void*, const void*, const void*, const void*, uint32_t);

static double now(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (double)t.tv_sec * 1e9 + (double)t.tv_nsec;
}

int main(int count, char** names) {
    void* library = count == 2 ? dlopen(names[1], RTLD_NOW) : 0;
    if (!library)
        return 1;
    Create create = (Create)dlsym(library, "bmp_create");
    Clear clear = (Clear)dlsym(library, "bmp_clear");
    Compose compose = (Compose)dlsym(library, "bmp_compose");
    void *a = create(SIZE, SIZE, 1, 4), *b = create(SIZE, SIZE, 1, 4), *w = create(SIZE, SIZE, 2, 4);
    double least_clear = 1e9, least_compose = 1e9;
    for (int run = 0; run < RUNS; ++run) {
        double t0 = now();
        for (int i = 0; i < CALLS; ++i)
            clear(a, 0);
        double t1 = now();
        for (int i = 0; i < CALLS; ++i)
            compose(a, a, b, w, 0);
        double t2 = now();
        if (t1 - t0 < least_clear) least_clear = t1 - t0;
        if (t2 - t1 < least_compose) least_compose = t2 - t1;
    }
    printf("%f %f\\n", least_clear / CALLS, least_compose / CALLS);
    return 0;
}
"""


def nanoseconds(call: Callable[[], Any]) -> float:
    return min(timeit.repeat(call, number=CALLS, repeat=RUNS)) / CALLS * 1e9


def c_nanoseconds() -> tuple[float, float] | None:
    compiler = shutil.which("cc")
    if compiler is None:
        return None
    with tempfile.TemporaryDirectory() as folder:
        source, program = Path(folder, "overhead.c"), Path(folder, "overhead")
        source.write_text(C_PROGRAM, encoding="ascii")
        numbers = [f"-DSIZE={SIZE}", f"-DRUNS={RUNS}", f"-DCALLS={CALLS}"]
        subprocess.run([compiler, "-O2", *numbers, str(source), "-o", str(program), "-ldl"], check=True)
        path = os.path.abspath(_library.PATH) if os.path.exists(_library.PATH) else _library.PATH
        done = subprocess.run([str(program), path], check=True, capture_output=True, text=True)
    clear, compose = map(float, done.stdout.split())
    return clear, compose


def main() -> int:
    a, b = Bitmap(SIZE, SIZE, Format.RGBQ), Bitmap(SIZE, SIZE, Format.RGBQ)
    weights = Bitmap(SIZE, SIZE, Format.PWRW)
    raw_clear, raw_compose = _library.call["bmp_clear"], _library.call["bmp_compose"]
    pa, pb, pw = a._address, b._address, weights._address
    rows = {
        "clear": (lambda: zepbmp.clear(a), lambda: raw_clear(pa, 0)),
        "compose": (lambda: zepbmp.compose(a, a, b, weights), lambda: raw_compose(pa, pa, pb, pw, 0)),
    }
    measured = c_nanoseconds()
    in_c = dict(zip(rows, measured, strict=True)) if measured else {}
    print(f"ns a call, {SIZE} x {SIZE} RGBQ   Python   ctypes alone       C")
    for name, (package, alone) in rows.items():
        c = f"{in_c[name]:7.0f}" if name in in_c else "      -"
        print(f"{name:<27}{nanoseconds(package):9.0f}{nanoseconds(alone):15.0f} {c}")
    print(f"{'Bitmap()':<27}{nanoseconds(lambda: Bitmap(SIZE, SIZE, Format.RGBQ)):9.0f}")
    print(f"{'Bitmap.array':<27}{nanoseconds(lambda: a.array):9.0f}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
