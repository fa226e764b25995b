# SPDX-License-Identifier: MIT
"""The Spotlight stand-in: tools/mdfind installed as ROOT/usr/bin/mdfind, and the answers it gives beyond
the sample's own bundles (ctx.spotlight_answers, filled by earlier modules) in its answer table."""
import json
import pathlib
import sys

TOOL = pathlib.Path(__file__).resolve().parent.parent / "mdfind"


def build(ctx):
    target = ctx.system("/usr/bin/mdfind")
    ctx.folder(target.parent)
    # The interpreter running the generator, named directly: a version-manager shim on PATH can take a
    # second to start, which every scan would pay.
    lines = TOOL.read_text().splitlines(keepends=True)
    target.write_text(f"#!{sys.executable} -I\n" + "".join(lines[1:]))
    target.chmod(0o755)
    answers = {identifier: [str(path) for path in paths] for identifier, paths in ctx.spotlight_answers.items()}
    ctx.write(ctx.system("/usr/share/kestrune/spotlight.json"), json.dumps(answers, indent=1, sort_keys=True))
