#!/usr/bin/env bash
# check.sh SOURCE BUILD: installs the library into a prefix of its own and uses it from there as other programs would:
# through find_package, pkg-config (after moving the tree), statically, and as a subdirectory. Also: what it exports,
# and that every public header compiles alone.
set -euo pipefail
source=$1
build=$2
here=$source/tests/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

/usr/bin/python3 - "$work/song.mp3" <<'PYTHON'
import sys
with open(sys.argv[1], "wb") as out:
    out.write((bytes.fromhex("FFFB9064") + bytes(413)) * 20)
PYTHON
step() { echo "== $*"; }
try() {  # PROGRAM: it changes the title and prints it
    cp "$work/song.mp3" "$work/copy.mp3"
    [ "$("$1" "$work/copy.mp3")" = "from a consumer" ]
}
quiet() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }
configure() { quiet cmake -G Ninja -DCMAKE_BUILD_TYPE=Release -DZALTAG_WERROR=ON "$@" --no-warn-unused-cli; }

step "exported symbols"
/usr/bin/python3 "$here/check_symbols.py" "$build/src/libzaltag.so" "$source/include"

step "installed, through find_package"
quiet cmake --install "$build" --prefix "$work/prefix"
"$work/prefix/bin/zaltag" --version
configure -S "$here" -B "$work/found" -DCMAKE_PREFIX_PATH="$work/prefix"
quiet cmake --build "$work/found"
try "$work/found/consumer"

step "every public header alone"
find "$work/prefix/include" -name '*.h' -print0 |
    xargs -0 -P "$(nproc)" -I HEADER g++ -std=c++20 -Wall -Wextra -Werror -fsyntax-only -DZALTAG_NO_BARE_NAMES \
        -I "$work/prefix/include" -include HEADER -x c++ /dev/null

step "moved, through pkg-config"
mv "$work/prefix" "$work/moved"
pkgconfig=$(dirname "$(find "$work/moved" -name zaltag.pc)")
# With no other package in sight: a shared library brings none along.
flags=$(PKG_CONFIG_LIBDIR=$pkgconfig pkg-config --cflags --libs zaltag)
# shellcheck disable=SC2086
g++ -std=c++20 "$here/main.cpp" $flags -Wl,-rpath,"$(dirname "$pkgconfig")" -o "$work/packaged"
try "$work/packaged"

if [ -d "$work/moved/lib/python3" ]; then
    step "moved, from Python"
    PYTHONPATH=$work/moved/lib/python3/dist-packages /usr/bin/python3 -c \
        'import sys, zaltag; print(zaltag.__version__, zaltag.open(sys.argv[1]).type)' "$work/song.mp3"
fi

step "static, through find_package and pkg-config"
configure -S "$source" -B "$work/static" -DBUILD_SHARED_LIBS=OFF -DZALTAG_TESTS=OFF -DZALTAG_CLI=OFF
quiet cmake --build "$work/static"
quiet cmake --install "$work/static" --prefix "$work/prefix"
configure -S "$here" -B "$work/linked" -DCMAKE_PREFIX_PATH="$work/prefix"
quiet cmake --build "$work/linked"
try "$work/linked/consumer"
pkgconfig=$(dirname "$(find "$work/prefix" -name zaltag.pc)")
flags=$(PKG_CONFIG_PATH=$pkgconfig pkg-config --static --cflags --libs zaltag)
# shellcheck disable=SC2086
g++ -std=c++20 "$here/main.cpp" $flags -o "$work/static-packaged"
try "$work/static-packaged"

step "as a subdirectory"
configure -S "$here" -B "$work/below" -DZALTAG_SOURCE="$source"
quiet cmake --build "$work/below"
try "$work/below/consumer"
