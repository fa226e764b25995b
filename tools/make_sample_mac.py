#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a deterministic sample Mac: OUT is the folder that stands for "/", OUT/Users/ann the home.

    make_sample_mac.py --out DIR [--seed N] [--scale small|large]

It only ever writes below OUT, and refuses an OUT that already holds anything but an earlier sample.
"""
import argparse
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from samplemac import apps, leftovers, orphans, ownership, sounds, spotlight  # noqa: E402
from samplemac.context import Context  # noqa: E402

MARKER = ".kestrune-sample-mac"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--out", required=True, type=pathlib.Path)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--scale", choices=("small", "large"), default="small")
    args = parser.parse_args()

    out = args.out.resolve()
    if out == pathlib.Path("/") or out == pathlib.Path.home():
        parser.error(f"refusing to write a sample Mac into {out}")
    if out.exists() and any(out.iterdir()) and not (out / MARKER).exists():
        parser.error(f"{out} is not empty and holds no earlier sample Mac")
    out.mkdir(parents=True, exist_ok=True)
    (out / MARKER).write_text(f"seed={args.seed} scale={args.scale}\n")

    ctx = Context(out, args.seed, args.scale)
    # Order matters: later modules read what earlier ones recorded in ctx (the installed apps first, then
    # the apps with many identifiers, which also add to the removed-app expectations).
    for module in (apps, ownership, leftovers, orphans, sounds, spotlight):
        module.build(ctx)
    print(f"sample Mac: --root {ctx.root} --home {ctx.home} ({len(ctx.apps)} apps)")


if __name__ == "__main__":
    main()
