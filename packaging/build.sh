#!/usr/bin/env bash
# build.sh FOLDER: builds the Debian packages from what is committed, in a folder that is not there yet, and leaves them
# in it.
set -euo pipefail
source=$(cd "$(dirname "$0")/.." && pwd)
mkdir "$1"
tree=$(cd "$1" && pwd)/zaltag-1.0.0
mkdir "$tree"
git -C "$source" archive HEAD | tar -x -C "$tree"
cp -r "$tree/packaging/debian" "$tree/debian"
cd "$tree"
# dh gives the build a home of its own; the compiler's cache stays where it is.
if command -v ccache >/dev/null; then
    CCACHE_DIR=$(ccache --get-config cache_dir)
    export CCACHE_DIR
fi
dpkg-buildpackage --build=binary --no-sign
