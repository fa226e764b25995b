#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The sample-Mac generator on a file system that refuses names that are not UTF-8, as APFS does: it
finishes, says which names it skipped and why, and writes everything else."""
import contextlib
import errno
import io
import os
import runpy
import subprocess
import sys
import tempfile

TOOL = sys.argv[1]
make_folder = os.mkdir


def utf8(name):
    # Bytes that are not UTF-8 come back from the file system as the surrogates U+DC80 to U+DCFF.
    return not any("\udc80" <= c <= "\udcff" for c in os.fsdecode(name))


def refusing_mkdir(path, *args, **kwargs):
    if not utf8(path):
        raise OSError(errno.EILSEQ, os.strerror(errno.EILSEQ), path)
    return make_folder(path, *args, **kwargs)


def listing(root):
    return sorted(os.path.relpath(os.path.join(folder, name), root) for folder, folders, files in os.walk(root) for name in folders + files)


with tempfile.TemporaryDirectory() as temporary:
    plain, refused = os.path.join(temporary, "plain"), os.path.join(temporary, "refused")
    subprocess.run([sys.executable, TOOL, "--out", plain], check=True, stdout=subprocess.DEVNULL)
    # Every name the sample holds that is not UTF-8 is a folder's, so refusing mkdir refuses them all.
    os.mkdir, sys.argv, messages = refusing_mkdir, [TOOL, "--out", refused], io.StringIO()
    # An exit part-way is caught by the listing below, not taken as this script's own.
    with contextlib.redirect_stderr(messages), contextlib.redirect_stdout(io.StringIO()), contextlib.suppress(SystemExit):
        runpy.run_path(TOOL, run_name="__main__")
    os.mkdir = make_folder

    expected = [name for name in listing(plain) if utf8(name)]
    skipped = [line for line in messages.getvalue().splitlines() if line.startswith("make_sample_mac: skipped")]
    assert len(listing(plain)) > len(expected), "the sample should hold names that are not UTF-8"
    assert listing(refused) == expected, "everything but the refused names is written"
    assert skipped and all(os.strerror(errno.EILSEQ) in line for line in skipped), messages.getvalue()
    print(f"{len(skipped)} names skipped with a reason, {len(expected)} entries written")
