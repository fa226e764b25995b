#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs, builds, writes a sample Mac and runs the program on it.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/install-deps.sh
bash tools/build.sh
sample="${TMPDIR:-/tmp}/kestrune-sample-mac"
[ -e "$sample/.kestrune-sample-mac" ] && rm -rf "$sample"
python3 tools/make_sample_mac.py --out "$sample"
cli=(./build/src/cli/kestrune-cli --root "$sample" --home "$sample/Users/ann")
"${cli[@]}" apps
