#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compiles every C++ source of the project once with clang and libc++ (syntax only), the nearest this
machine gets to Apple's compiler and standard library: code that only GCC and libstdc++ accept fails
here before it fails on a Mac. Reads build/compile_commands.json, so run it after a build.

A source that passed is not checked again until it, the project's headers or its command change
(build/clang-check-passed.json): a full run takes minutes on two cores, a run after a small change
seconds."""
import hashlib
import json
import os
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent
# Options GCC understands that are not about the language: dropped, as are the outputs.
DROPPED = {"-c", "-fdiagnostics-color=always"}
WITH_VALUE = {"-o", "-MF", "-MT", "-MQ"}


def clang_command(entry):
    arguments = entry.get("arguments") or shlex.split(entry["command"])
    command = ["clang++", "-stdlib=libc++", "-fsyntax-only"]
    skip = False
    for argument in arguments[1:]:
        if skip:
            skip = False
        elif argument in WITH_VALUE:
            skip = True
        elif argument in DROPPED or argument in ("-MD", "-MMD") or argument == entry["file"]:
            continue
        else:
            command.append(argument)
    command.append(entry["file"])
    return command


def main():
    build = Path(sys.argv[1]) if len(sys.argv) > 1 else SOURCE / "build"
    database = build / "compile_commands.json"
    if not database.exists():
        sys.exit(f"clang check: {database} is missing; configure and build first")
    own = [SOURCE / folder for folder in ("src", "tests", "bench")]
    entries = [entry for entry in json.loads(database.read_text())
               if any(Path(entry["file"]).resolve().is_relative_to(folder) for folder in own)
               and entry["file"].endswith(".cpp")]

    # Any project header may reach any source, so a change to one of them checks everything again.
    headers = hashlib.sha256()
    for header in sorted(path for folder in own for path in folder.rglob("*.h")):
        headers.update(str(header).encode() + b"\0" + header.read_bytes())
    headers = headers.hexdigest()

    def key(entry):
        digest = hashlib.sha256(headers.encode())
        digest.update(json.dumps(clang_command(entry)).encode())
        digest.update(Path(entry["directory"], entry["file"]).read_bytes())
        return digest.hexdigest()

    cache_file = build / "clang-check-passed.json"
    # The same source may be built twice with different commands (the command line's units in a test).
    passed = set(json.loads(cache_file.read_text())) if cache_file.exists() else set()
    entries_to_check = [entry for entry in entries if key(entry) not in passed]

    def check(entry):
        result = subprocess.run(clang_command(entry), cwd=entry["directory"], capture_output=True, text=True)
        return entry, result.returncode, result.stderr

    jobs = int(os.environ.get("KESTRUNE_JOBS", "2"))
    failures = 0
    with ThreadPoolExecutor(jobs) as pool:
        for entry, code, errors in pool.map(check, entries_to_check):
            if code != 0:
                failures += 1
                print(f"clang check: {os.path.relpath(entry['file'], SOURCE)} failed", file=sys.stderr)
                print(errors, file=sys.stderr)
            else:
                passed.add(key(entry))
    # Only what still exists: keys of old versions would pile up.
    cache_file.write_text(json.dumps(sorted(passed & {key(entry) for entry in entries}), indent=1))
    print(f"clang check: {len(entries) - failures} of {len(entries)} sources compile with clang and libc++"
          f" ({len(entries_to_check)} checked now)")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
