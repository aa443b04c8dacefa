#!/usr/bin/env python3
"""Packs a folder as a zip. The same files and the same SOURCE_DATE_EPOCH give the same bytes.

Entries are sorted, carry that one time, and are programs (.exe, .dll) or ordinary files whatever their permissions
here. In a Markdown file a link to a file that the folder does not hold becomes plain text. The zip appears whole or not
at all.

usage: SOURCE_DATE_EPOCH=SECONDS make_zip.py FOLDER OUT.zip
"""
import os
import re
import sys
import time
import zipfile

OLDEST_IN_A_ZIP = 315532800  # 1980-01-01
LINK = re.compile(r"\[([^\]]+)\]\((?![a-z]+:|#)([^)#\s]+)(#[^)\s]*)?\)")


def files_of(folder):
    for where, folders, names in os.walk(folder):
        folders.sort()
        for name in sorted(names):
            yield os.path.relpath(os.path.join(where, name), folder)


def content(folder, name):
    with open(os.path.join(folder, name), "rb") as file:
        data = file.read()
    if not name.endswith(".md"):
        return data

    def link_or_text(match):
        target = os.path.join(folder, os.path.dirname(name), match.group(2))
        return match.group(0) if os.path.exists(target) else match.group(1)

    return LINK.sub(link_or_text, data.decode("utf-8")).encode("utf-8")


def pack(folder, out, when):
    names = sorted(files_of(folder))
    if not names:
        sys.exit(f"error: there is no file in {folder}")
    top = os.path.basename(os.path.abspath(folder))
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in names:
            entry = zipfile.ZipInfo(f"{top}/{name}", time.gmtime(when)[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3  # Unix: permissions are kept
            mode = 0o755 if name.endswith((".exe", ".dll")) else 0o644
            entry.external_attr = (0o100000 | mode) << 16
            archive.writestr(entry, content(folder, name))
    return len(names)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip().splitlines()[-1])
    folder, out = sys.argv[1:]
    epoch = os.environ.get("SOURCE_DATE_EPOCH", "")
    if not epoch.isdigit() or int(epoch) < OLDEST_IN_A_ZIP:
        sys.exit(f"error: SOURCE_DATE_EPOCH is '{epoch}', not a time in seconds from 1980 on")
    unfinished = f"{out}.{os.getpid()}.part"
    try:
        count = pack(folder, unfinished, int(epoch))
        os.replace(unfinished, out)
    except OSError as error:
        sys.exit(f"error: {out} is not written: {error}")
    finally:
        if os.path.exists(unfinished):
            os.remove(unfinished)
    print(f"{out}: {count} files, {os.path.getsize(out)} bytes")


if __name__ == "__main__":
    main()
