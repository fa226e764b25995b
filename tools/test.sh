#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs, builds and runs every test through CTest.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/install-deps.sh
bash tools/build.sh
cd build
ctest --output-on-failure --timeout 600 -j "$(getconf _NPROCESSORS_ONLN)"
