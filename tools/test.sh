#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs, builds and runs every test through CTest.
#   --sanitize  a Debug build with AddressSanitizer and UndefinedBehaviorSanitizer in build-asan/, where
#               Qt's own assertions are live too; any finding fails its test.
set -euo pipefail
cd "$(dirname "$0")/.."
sanitize=0
for argument in "$@"; do
    case "$argument" in
        --sanitize) sanitize=1 ;;
        *) echo "usage: tools/test.sh [--sanitize]" >&2; exit 2 ;;
    esac
done
bash tools/install-deps.sh
if ((sanitize)); then
    KESTRUNE_BUILD_DIR=build-asan bash tools/build.sh -DCMAKE_BUILD_TYPE=Debug -DKESTRUNE_SANITIZE=ON
    cd build-asan
    export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:detect_stack_use_after_return=1:strict_string_checks=1"
    export LSAN_OPTIONS="suppressions=$PWD/../tools/lsan.supp:print_suppressions=0"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
    # Qt's crash handler would otherwise start a debugger on the way down.
    export QTEST_DISABLE_STACK_DUMP=1
else
    bash tools/build.sh
    cd build
fi
ctest --output-on-failure --timeout 600 -j "$(getconf _NPROCESSORS_ONLN)"
