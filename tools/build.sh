#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Configures and builds into build/ (extra arguments go to the CMake configure step).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build build -j "$(getconf _NPROCESSORS_ONLN)"
