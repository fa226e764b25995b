#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Configures and builds into build/, or into $KESTRUNE_BUILD_DIR (extra arguments go to the CMake
# configure step).
set -euo pipefail
cd "$(dirname "$0")/.."
dir="${KESTRUNE_BUILD_DIR:-build}"
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" "$@" >/dev/null
cmake --build "$dir" -j "$(getconf _NPROCESSORS_ONLN)"
