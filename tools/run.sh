#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs, builds, writes a sample Mac and runs the program on it: the window where a display exists,
# otherwise the command line and pictures of the window.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/install-deps.sh
bash tools/build.sh
sample="${TMPDIR:-/tmp}/kestrune-sample-mac"
[ -e "$sample/.kestrune-sample-mac" ] && rm -rf "$sample"
python3 tools/make_sample_mac.py --out "$sample"
where=(--root "$sample" --home "$sample/Users/ann")
window=./build/src/ui/kestrune
[ "$(uname -s)" = Darwin ] && window=./build/src/ui/Kestrune.app/Contents/MacOS/Kestrune
# A Mac always has its display; elsewhere X11 or Wayland says so.
if [ "$(uname -s)" != Darwin ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    # No display: the command line's view of the sample Mac, then pictures of the window.
    cli=(./build/src/cli/kestrune-cli "${where[@]}")
    "${cli[@]}" apps
    "${cli[@]}" scan "Acme Notes"
    "${cli[@]}" orphans
    shots="${TMPDIR:-/tmp}/kestrune-screenshots"
    screenshots=./build/tools/screenshot_tour/kestrune-screenshots
    QT_QPA_PLATFORM=offscreen "$screenshots" "${where[@]}" "$shots"
    # The same views under a dark desktop scheme, given as a desktop gives it (the qt6ct theme).
    QT_QPA_PLATFORM=offscreen QT_QPA_PLATFORMTHEME=qt6ct XDG_CONFIG_HOME="$PWD/build/tests/dark-desktop" \
        "$screenshots" "${where[@]}" "$shots"
    echo "Screenshots of the window: $shots"
else
    exec "$window" "${where[@]}"
fi
