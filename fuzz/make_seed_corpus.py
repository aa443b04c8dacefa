#!/usr/bin/env python3
"""Writes a fuzzer's seed corpus: one input for each combination that takes a way of its own through the library.

usage: make_seed_corpus.py polygon|rect FOLDER
"""

import pathlib
import sys

sys.dont_write_bytecode = True  # the folder stays as it is

import polygon_seeds
import rect_seeds

SEEDS = {"polygon": polygon_seeds, "rect": rect_seeds}


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in SEEDS:
        sys.exit(__doc__.strip().splitlines()[-1])
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.iterdir():
        old.unlink()
    names = set()
    for name, content in SEEDS[sys.argv[1]].inputs():
        if name in names:
            sys.exit(f"error: two inputs are called {name}")
        names.add(name)
        (folder / name).write_bytes(content)
    print(f"{len(names)} inputs in {folder}")


if __name__ == "__main__":
    main()
