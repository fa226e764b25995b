#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The sample-Mac generator on a file system that refuses names that are not UTF-8, as APFS does: it
finishes, says which names it skipped and why, and writes everything else."""
import errno
import os
import pathlib
import runpy
import subprocess
import sys
import tempfile

TOOL = pathlib.Path(sys.argv[1])


def refusing(original):
    def call(path, *args, **kwargs):
        try:
            os.fsencode(path).decode("utf-8")
        except UnicodeDecodeError:
            raise OSError(errno.EILSEQ, os.strerror(errno.EILSEQ), str(path)) from None
        return original(path, *args, **kwargs)
    return call


def generate(out, refuse):
    """Runs the generator in this process; returns what it wrote to stderr."""
    originals = os.mkdir, os.open
    if refuse:
        os.mkdir, os.open = refusing(os.mkdir), refusing(os.open)
    read, write = os.pipe()
    saved = os.dup(2)
    os.dup2(write, 2)
    sys.argv = [str(TOOL), "--out", str(out)]
    try:
        runpy.run_path(str(TOOL), run_name="__main__")
    finally:
        os.mkdir, os.open = originals
        sys.stderr.flush()
        os.dup2(saved, 2)
        os.close(write)
    with os.fdopen(read, "rb") as pipe:
        return pipe.read().decode("utf-8", "replace")


def listing(root):
    return sorted(os.fsencode(os.path.relpath(os.path.join(folder, name), root))
                  for folder, folders, files in os.walk(root) for name in folders + files)


with tempfile.TemporaryDirectory() as temporary:
    plain = pathlib.Path(temporary, "plain")
    refused = pathlib.Path(temporary, "refused")
    subprocess.run([sys.executable, str(TOOL), "--out", str(plain)], check=True, stdout=subprocess.DEVNULL)
    messages = generate(refused, refuse=True)

    def utf8(name):
        try:
            name.decode("utf-8")
            return True
        except UnicodeDecodeError:
            return False

    expected = [name for name in listing(plain) if utf8(name)]
    skipped = [line for line in messages.splitlines() if line.startswith("make_sample_mac: skipped")]
    assert len(listing(plain)) > len(expected), "the sample should hold names that are not UTF-8"
    assert listing(refused) == expected, "everything but the refused names is written"
    assert skipped and all(os.strerror(errno.EILSEQ) in line for line in skipped), messages
    print(f"{len(skipped)} names skipped with a reason, {len(expected)} entries written")
