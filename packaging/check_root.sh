#!/usr/bin/env bash
# check_root.sh PACKAGES: makes a Debian of nothing, and shows in it that a program compiles where libzaltag-dev and a
# compiler are, and no other library's headers; and then that the guide's steps install the Python module. As root.
set -euo pipefail
source=$(cd "$(dirname "$0")/.." && pwd)
packages=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
inside() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 "$@"; }
install() { inside DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >/dev/null; }

debootstrap --variant=minbase bookworm "$root" >/dev/null
cp "$packages"/libzaltag1_*.deb "$packages"/libzaltag-dev_*.deb "$root/tmp"
cp -r "$source/tests/consumer" "$root/tmp/consumer"
inside bash -c 'for i in {1..20}; do printf "\xFF\xFB\x90\x64"; head -c 413 /dev/zero; done >/tmp/song.mp3'

echo "a program with libzaltag-dev alone: pkg-config, and CMake"
install g++ cmake make pkg-config
inside bash -c 'apt-get install -y -qq --no-install-recommends /tmp/*.deb >/dev/null 2>&1'
inside bash -ec '
    g++ -std=c++20 /tmp/consumer/main.cpp $(pkg-config --cflags --libs zaltag) -o /tmp/one
    [ "$(/tmp/one /tmp/song.mp3)" = "from a consumer" ]
    cmake -S /tmp/consumer -B /tmp/built >/dev/null && cmake --build /tmp/built >/dev/null
    [ "$(/tmp/built/consumer /tmp/song.mp3)" = "from a consumer" ]'

echo "the Python module, as the guide says"
mkdir "$root/tmp/zaltag"
git -C "$source" archive HEAD | tar -x -C "$root/tmp/zaltag"
steps=$(sed -n '/^```sh$/,/^```$/p;/^```$/q' "$source/docs/guides/python.md" | grep -v '^```')
time inside HOME=/root bash -ec "cd /tmp/zaltag; $steps"
inside HOME=/root bash -ec '
    cd /tmp/zaltag && ~/dj/bin/pip wheel -q --no-build-isolation --no-deps -w /tmp/wheels .
    python3 -m venv /tmp/other && /tmp/other/bin/pip install -q --no-index /tmp/wheels/*.whl
    cd /tmp && /tmp/other/bin/python -c "import zaltag; print(zaltag.open(\"song.mp3\").title)"'
