#!/usr/bin/env bash
# Sets everything up, builds a release and runs the zaltag program with the arguments given. Without arguments it
# shows the main job on files and collections of its own making.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

"$here/scripts/install-deps.sh"
build=$here/build/release
if [ ! -f "$build/build.ninja" ]; then
    echo "building the program, which takes a few minutes the first time" >&2
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

step() { printf '\n== %s\n' "$*"; }

step "a music folder, made by ffmpeg, with Serato cue points in four of five files"
mkdir "$folder/music"
for name in "Night Drive – été.mp3" "Filter House.m4a" "Acid Rave.flac" "Dawn.wav" "Echo.aiff"; do
    ffmpeg -v error -f lavfi -i "sine=f=330:d=3" -metadata title="${name%.*}" "$folder/music/$name"
done
"$zaltag" set "$folder/music/Night Drive – été.mp3" artist='Zoë 🎧 Söndag' tempo=124 initialKey=8A energyLevel=7
for name in "Night Drive – été.mp3" "Filter House.m4a" "Acid Rave.flac" "Dawn.wav"; do
    "$zaltag" cues set "$folder/music/$name" --to serato 0.52='Intro' 2.0='Drop & roll'
done

step "collections of these files, in Rekordbox with a beat grid at 120 bpm, in Traktor without; Dawn is in neither"
/usr/bin/python3 - "$folder" <<'PYTHON'
import os, sys
from urllib.parse import quote
from xml.sax.saxutils import quoteattr
folder = sys.argv[1]
songs = [name for name in sorted(os.listdir(folder + "/music")) if not name.startswith("Dawn")]
tracks = "".join(f'<TRACK TrackID="{i}" Name={quoteattr(name)} TotalTime="3" Location="file://localhost'
                 f'{quote(folder + "/music/" + name)}"><TEMPO Inizio="0" Bpm="120"/></TRACK>'
                 for i, name in enumerate(songs, 1))
with open(folder + "/rekordbox.xml", "w") as out:
    out.write(f'<?xml version="1.0" encoding="UTF-8"?>\n<DJ_PLAYLISTS Version="1.0.0"><COLLECTION Entries="{len(songs)}">'
              f'{tracks}</COLLECTION><PLAYLISTS><NODE Type="0" Name="ROOT" Count="0"/></PLAYLISTS></DJ_PLAYLISTS>\n')
place = (folder + "/music/").replace("/", "/:")
entries = "".join(f'<ENTRY MODIFIED_DATE="2020/1/1" MODIFIED_TIME="0" TITLE={quoteattr(name)}><LOCATION DIR='
                  f'{quoteattr(place)} FILE={quoteattr(name)} VOLUME="Macintosh HD"></LOCATION></ENTRY>' for name in songs)
with open(folder + "/collection.nml", "w") as out:
    out.write(f'<?xml version="1.0" encoding="UTF-8" standalone="no" ?>\n<NML VERSION="20"><COLLECTION '
              f'ENTRIES="{len(songs)}">{entries}</COLLECTION></NML>\n')
PYTHON
collections=(--rekordbox "$folder/rekordbox.xml" --traktor "$folder/collection.nml")
before=$(cat "$folder"/music/* | md5sum)

step "zaltag sync: what would change, then the change, then a second run"
sync=("$zaltag" sync "$folder/music" --from serato --to rekordbox-hot --to traktor "${collections[@]}")
"${sync[@]}" --dry-run
"${sync[@]}"
"${sync[@]}"

step "what Python's XML reader finds in the collections now"
/usr/bin/python3 - "$folder" <<'PYTHON'
import os, sys
import xml.etree.ElementTree as ElementTree
folder, wrong = sys.argv[1], 0
expected = {"Rekordbox": [("Intro", 0.5), ("Drop & roll", 2.0)], "Traktor": [("Intro", 0.52), ("Drop & roll", 2.0)]}
found = {}
for track in ElementTree.parse(folder + "/rekordbox.xml").iter("TRACK"):
    if track.get("Name"):
        found["Rekordbox", track.get("Name")] = [(mark.get("Name"), float(mark.get("Start")))
                                                 for mark in track.iter("POSITION_MARK")]
for entry in ElementTree.parse(folder + "/collection.nml").iter("ENTRY"):
    found["Traktor", entry.get("TITLE")] = [(cue.get("NAME"), float(cue.get("START")) / 1000)
                                            for cue in entry.iter("CUE_V2")]
for (program, name), cues in sorted(found.items()):
    right = cues == ([] if name.startswith("Echo") else expected[program])
    wrong += not right
    print(f"  {program:<10}{name:<24}{cues}" + ("" if right else "   WRONG"))
imported = os.path.exists(folder + "/rekordbox_zalcues_001.xml")
print("  import file for Rekordbox:", "rekordbox_zalcues_001.xml" if imported else "MISSING")
sys.exit(1 if wrong or not imported or len(found) != 8 else 0)
PYTHON
[ "$before" = "$(cat "$folder"/music/* | md5sum)" ] || { echo "the audio files changed" >&2; exit 1; }

step "one of the files, as zaltag shows it"
"$zaltag" show "$folder/music/Night Drive – été.mp3"
step "all values agree; no audio file was touched by sync"
