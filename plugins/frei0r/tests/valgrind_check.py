#!/usr/bin/env python3
"""Runs melt under valgrind with every plug-in. Fails on each error that has a plug-in in its stack, and where the frames
are not those of a run without valgrind.

    valgrind_check.py PLUGINS            the folder of the plug-ins
    valgrind_check.py --faulty PLUGINS   the folder of a plug-in with planted faults: succeeds where they are found
"""

import argparse
import os
import pathlib
import re
import sys
import tempfile
import xml.etree.ElementTree

import hosts

SIZES = ((64, 48), (90, 50))  # frames where they lie, and copied ones
LAST = 3  # frame
VALGRIND = ["valgrind", "--quiet", "--leak-check=full", "--show-leak-kinds=definite", "--keep-debuginfo=yes",
            "--num-callers=40", "--xml=yes"]  # fmt: skip


def arguments(effects, clips, size):
    """A melt command's middle: every filter on a first track, and every mixer of it with another one."""
    span = ["in=0", f"out={LAST}"]
    progress = f"Progress=0=0.1;{LAST}=0.9"
    words = ["-track", clips / f"one_{size[0]}.avi", *span]
    mixers = [name for name in effects if name in ("dissolve", "fly", "wipe")]
    for _ in mixers:
        words += ["-track", clips / f"two_{size[0]}.avi", *span]
    for name in effects:
        if name not in mixers:
            words += ["-filter", f"frei0r.zepbmp_{name}", *span, f"Top left across=0=0;{LAST}=0.4"]
    for i, name in enumerate(mixers):
        words += ["-transition", f"frei0r.zepbmp_{name}", *span, "a_track=0", f"b_track={i + 1}", progress]
        words += [f"Shape=0=0;{LAST}=1"]
    return words


def errors_of(report, plugins):
    """(kind, innermost function) of every error in whose stack a plug-in stands."""
    for error in xml.etree.ElementTree.parse(report).getroot().iter("error"):
        frames = list(error.iter("frame"))
        if any(str(plugins) in frame.findtext("obj", "") for frame in frames):
            yield error.findtext("kind"), next((frame.findtext("fn", "?") for frame in frames), "?")


def check(plugins, folder):
    effects = sorted(re.fullmatch(r"zepbmp_(\w+)\.so", path.name)[1] for path in plugins.glob("zepbmp_*.so"))
    if not effects:
        sys.exit(f"error: no plug-in in {plugins}")
    os.environ["FREI0R_PATH"] = str(plugins)
    found = []
    for size in SIZES if "faulty" not in effects else SIZES[:1]:
        for name, source in (("one", "testsrc2"), ("two", "mandelbrot")):
            hosts.make_clip(folder / f"{name}_{size[0]}.avi", source, size)
        words = arguments(effects, folder, size)
        report = folder / f"report_{size[0]}.xml"
        got, want = folder / "got.rgba", folder / "want.rgba"
        hosts.run_melt(size, words, got, folder, [*VALGRIND, f"--xml-file={report}"], 45)
        if "faulty" not in effects:
            hosts.run_melt(size, words, want, folder)
            if got.read_bytes() != want.read_bytes():
                sys.exit("error: the frames under valgrind are others")
        if len(hosts.read_frames(got, size)) != LAST + 1:
            sys.exit("error: melt has not written every frame")
        found += errors_of(report, plugins)
    return effects, found


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--faulty", action="store_true")
    parser.add_argument("plugins", type=pathlib.Path)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        effects, found = check(options.plugins.resolve(), pathlib.Path(folder))
    for kind, function in found:
        print(f"{kind} in {function}")
    if options.faulty:
        missing = {"InvalidRead", "UninitCondition", "Leak_DefinitelyLost"} - {kind for kind, _ in found}
        if missing:
            sys.exit(f"error: not found: {', '.join(sorted(missing))}")
        print("every planted fault is found")
        return
    if found:
        sys.exit(f"error: {len(found)} errors in plug-ins")
    print(f"no error in {', '.join(effects)}")


if __name__ == "__main__":
    main()
