#!/usr/bin/env bash
# Sets everything up, builds a release and runs the zaltag program with the arguments given. Without arguments it
# shows the main job on a file of its own making.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

"$here/scripts/install-deps.sh"
build=$here/build/release
if [ ! -f "$build/build.ninja" ]; then
    (cd "$here" && cmake --preset release) >/dev/null
fi
if ! log=$(cmake --build "$build" --target zaltag_program 2>&1); then
    echo "$log" >&2
    exit 1
fi
zaltag=$build/cli/zaltag

[ $# -gt 0 ] && exec "$zaltag" "$@"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
song="$folder/Night Drive – été.mp3"

step() { printf '\n== %s\n' "$*"; }

step "an MP3, made by lame from three seconds of a tone"
/usr/bin/python3 - "$folder/tone.wav" <<'PYTHON'
import math, struct, sys, wave
with wave.open(sys.argv[1], "wb") as out:
    out.setnchannels(1)
    out.setsampwidth(2)
    out.setframerate(44100)
    out.writeframes(b"".join(struct.pack("<h", int(9000 * math.sin(i * 0.0627))) for i in range(3 * 44100)))
PYTHON
lame --quiet --tt "old title" "$folder/tone.wav" "$song"
ls -l "$song"

step "its fields, set by zaltag"
"$zaltag" set "$song" artist='Zoë 🎧 Söndag' title='Night Drive' album='Été' year=2024 genre=House tempo=124 \
    initialKey=8A energyLevel=7 grouping='Peak time' comment='Mixes well into anything.'
"$zaltag" show "$song"

step "the same, read by mutagen"
/usr/bin/python3 - "$song" <<'PYTHON'
import sys
from mutagen.mp3 import MP3
file = MP3(sys.argv[1])
expected = {"TPE1": "Zoë 🎧 Söndag", "TIT2": "Night Drive", "TALB": "Été", "TDRC": "2024", "TCON": "House",
            "TBPM": "124", "TKEY": "8A", "TXXX:EnergyLevel": "7", "TIT1": "Peak time", "GRP1": "Peak time",
            "COMM::eng": "Mixes well into anything."}
wrong = 0
for key, value in expected.items():
    found = str(file.tags.get(key))
    wrong += found != value
    print(f"  {key:<18}{found}" + ("" if found == value else f"   WRONG, expected {value}"))
print(f"  {file.info.length:.2f} s of audio at {file.info.bitrate // 1000} kbit/s")
sys.exit(1 if wrong else 0)
PYTHON
step "all values agree"
