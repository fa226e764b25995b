#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what building, running and testing need: on Debian 12 through apt (run as root), on a Mac
# through Homebrew. Quick when all is there.
set -euo pipefail
if [ "$(uname -s)" = Darwin ]; then
    # Xcode's command-line tools bring the compiler, codesign and hdiutil.
    command -v brew >/dev/null || { echo "install-deps: Homebrew is needed (https://brew.sh)" >&2; exit 1; }
    brew list qt libplist cmake ninja pkg-config >/dev/null 2>&1 || brew install qt libplist cmake ninja pkg-config
    exit 0
fi
packages=(
    cmake g++ ninja-build pkg-config python3 git clang libc++-dev libc++abi-dev
    qt6-base-dev qt6-declarative-dev qt6-multimedia-dev qt6-svg-dev qt6-image-formats-plugins
    qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-templates
    qml6-module-qtquick-layouts qml6-module-qtquick-window qml6-module-qtqml-workerscript
    qml6-module-qtquick-dialogs qml6-module-qtmultimedia qml6-module-qttest qml6-module-qtqml qml6-module-qtquick-shapes
    libplist-dev libglib2.0-dev libgl-dev fontconfig fonts-material-design-icons-iconfont
    fonts-dejavu-core fonts-droid-fallback fonts-noto-color-emoji
    util-linux e2fsprogs  # mount and mkfs.ext4 for the full-disk Trash case
    qt6ct  # a dark desktop colour scheme for the Qt Quick tests and the screenshots
)
missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if ((${#missing[@]})); then
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
