#!/usr/bin/env bash
# What a release needs beyond ./test.sh: the reference without warnings, the Debian packages, what lintian and a
# foreign program make of them, and the completions in their shells. Installs what it needs, as root.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh doxygen dpkg-dev debhelper fakeroot lintian bash-completion zsh fish groff man-db \
    dh-python python3-dev pybind11-dev

packages=$PWD/build/packages
skipped=()
step() { echo "== $*"; }

step "the reference: doxygen docs/Doxyfile"
mkdir -p build
rm -rf build/doc
doxygen docs/Doxyfile
[ -f build/doc/html/index.html ]

step "the manual page"
warnings=$(groff -man -Tutf8 -ww -wbreak docs/zaltag.1 2>&1 >/dev/null)
[ -z "$warnings" ] || { echo "$warnings"; exit 1; }

step "the Debian packages, from what is committed"
if [ -n "$(git status --porcelain)" ]; then
    skipped+=("what is not committed is not in the packages")
fi
rm -rf "$packages"
if ! packaging/build.sh "$packages" >build/packages.log 2>&1; then
    tail -n 60 build/packages.log
    exit 1
fi
ls "$packages"/*.deb
lintian --fail-on error --allow-root "$packages"/*.changes

step "the packages in an empty place: the program runs, a program compiles against the library"
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
for package in libzaltag1 libzaltag-dev zaltag python3-zaltag; do
    dpkg-deb -x "$packages/${package}"_*.deb "$root"
done
libraries=$(dirname "$(find "$root/usr/lib" -name libzaltag.so.1)")
LD_LIBRARY_PATH=$libraries "$root/usr/bin/zaltag" --version
/usr/bin/python3 -c 'import sys; open(sys.argv[1], "wb").write((bytes.fromhex("FFFB9064") + bytes(413)) * 20)' "$root/song.mp3"
flags=$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --define-variable=pcfiledir="$libraries/pkgconfig" --cflags --libs zaltag)
# shellcheck disable=SC2086
g++ -std=c++20 tests/consumer/main.cpp $flags -o "$root/consumer"
[ "$(LD_LIBRARY_PATH=$libraries "$root/consumer" "$root/song.mp3")" = "from a consumer" ]

step "moved, from Python: a file of each format is changed, and mutagen sees it"
LD_LIBRARY_PATH=$libraries PYTHONPATH=$root/usr/lib/python3/dist-packages PYTHONDONTWRITEBYTECODE=1 \
    /usr/bin/python3 packaging/check_python.py "$root"

step "completion: bash with its package, fish, zsh"
/usr/bin/python3 packaging/check_completion.py "$root"

if [ ${#skipped[@]} -gt 0 ]; then
    printf 'skipped: %s\n' "${skipped[@]}"
fi
echo "ready for a release"
