#!/usr/bin/python3
"""Makes a music folder with everything that the page of the report shows: make_folder.py FOLDER COUNT. Audio files come
from ffmpeg, what DJ programs add from the zaltag program, the collections from the tests of that program."""
import json
import os
import shutil
import struct
import subprocess
import sys

import mutagen
import mutagen.id3

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "cli"))
from collection_files import rekordbox, traktor  # noqa: E402
from support import ZALTAG  # noqa: E402

TITLES = ["Night Drive – été", "Filter House", "<script>alert(1)</script>", "Acid Rave </script><b>bold</b>", "Dawn \" & ' Dusk",
          "夜のドライブ", "A title that goes on for very much longer than any column of the table is wide", "Echo"]
ARTISTS = ["Zoë 🎧 Söndag", "The Filters", "DJ <i>Markup</i>", "Анна", "Hall & Loop"]
KEYS = ["8A", "10B", "1A", "12A", "Am", "F#m", "2A"]
NAMES = ["Intro", "Drop", "Break & build", "Vocal", "Second drop", "Outro"]


def run(*arguments):
    subprocess.run(arguments, check=True, stdout=subprocess.DEVNULL)


def make_seeds(folder):
    """One file of each of some kinds, which the folder's files are copies of."""
    seeds = []
    for i in range(40):
        extension = ("mp3", "m4a", "flac", "wav", "aiff")[i % 5]
        path = os.path.join(folder, f"seed {i}.{extension}")
        run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=f=330:d=0.3", path)
        tempo = 120 + i % 9
        run(ZALTAG, "set", path, f"title={TITLES[i % len(TITLES)]}", f"artist={ARTISTS[i % len(ARTISTS)]}", "album=Album " + str(i // 8),
            f"genre={'House' if i % 2 else 'Techno'}", f"comment={'Warm-up, long mix out' if i % 3 else ''}", f"tempo={tempo}",
            f"initialKey={KEYS[i % len(KEYS)]}", f"energyLevel={i % 11}")
        cues = [f"{10 + 31.5 * n + i % 4}={NAMES[n]}" for n in range(i % 7)]
        if cues:
            run(ZALTAG, "cues", "set", path, "--to", "serato", *cues)
        if len(cues) > 1 and i % 3 == 0:
            run(ZALTAG, "cues", "set", path, "--to", "zal", *(cues[1:] if i % 2 else cues))
        if i % 3 == 0:
            grid = {"algorithm": 3, "tempo": tempo + 0.5, "beats": [0.1 + n * 60 / (tempo + 0.5) for n in range(500)]}
            run(ZALTAG, "record", path, "zalBeatGrid=" + json.dumps(grid))
        if extension == "mp3":
            file = mutagen.File(path)
            markers = struct.pack(">HIfIff", 0x100, 2, 0.25, 64, 0.25 + 64 * 60 / tempo, tempo) + b"\0"
            file.tags.add(mutagen.id3.GEOB(encoding=0, mime="application/octet-stream", desc="Serato BeatGrid", data=markers))
            file.save()
        if extension != "wav" and i % 4:
            image = os.path.join(folder, "cover.png")
            run("ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"mandelbrot=s=320x320:start_scale={1 / (1 + i % 6)}", "-vf",
                f"hue=h={i * 40}", "-frames:v", "1", image)
            run(ZALTAG, "artwork", "replace", path, "--image", image)
        seeds.append(path)
    return seeds


def inner_marks(i):
    """What Rekordbox says of a track: a grid, hot cues as Serato has them or somewhat later, and a memory cue."""
    late = 0.4 if i % 5 == 2 else 0
    marks = "".join(f'<POSITION_MARK Name="{NAMES[n].replace("&", "&amp;")}" Type="0" Start="{10 + 31.5 * n + i % 4 + late:.3f}" '
                    f'Num="{n}"/>' for n in range(i % 7))
    return f'<TEMPO Inizio="0.1" Bpm="{120 + i % 9}"/>{marks}<POSITION_MARK Name="" Type="4" Start="42" End="58" Num="-1"/>'


def traktor_marks(i):
    grid = '<CUE_V2 NAME="AutoGrid" DISPL_ORDER="0" TYPE="4" START="100.000000" LEN="0" REPEATS="-1" HOTCUE="-1"></CUE_V2>'
    marks = "".join(f'<CUE_V2 NAME="{NAMES[n].replace("&", "&amp;")}" DISPL_ORDER="0" TYPE="{5 if n == 2 else 0}" START="'
                    f'{(10 + 31.5 * n + i % 4) * 1000:.6f}" LEN="{16000 if n == 2 else 0}" REPEATS="-1" HOTCUE="{n}"></CUE_V2>'
                    for n in range(i % 7))
    return f'<TEMPO BPM="{120 + i % 9}" BPM_QUALITY="100"></TEMPO><INFO PLAYTIME="300"></INFO>{grid}{marks}'


def main():
    folder, count = sys.argv[1], int(sys.argv[2])
    music = os.path.join(folder, "music")
    os.makedirs(os.path.join(folder, "seeds"))
    os.makedirs(music)
    seeds = make_seeds(os.path.join(folder, "seeds"))
    songs = []
    for i in range(count):
        seed = seeds[i % len(seeds)]
        songs.append(os.path.join(music, f"{i:05d}{os.path.splitext(seed)[1]}"))
        shutil.copy(seed, songs[-1])
    with open(os.path.join(music, "zz damaged.flac"), "wb") as file:
        file.write(b"nothing")
    known = [(i, song) for i, song in enumerate(songs) if i % 8 != 7]
    with open(os.path.join(folder, "rekordbox.xml"), "wb") as file:
        file.write(rekordbox([(song, inner_marks(i % len(seeds))) for i, song in known]))
    entries = traktor([song for _, song in known]).decode().split("</LOCATION>")
    inner = [f"</LOCATION>{traktor_marks(i % len(seeds))}{rest}" for (i, _), rest in zip(known, entries[1:])]
    with open(os.path.join(folder, "collection.nml"), "w", encoding="utf-8") as file:
        file.write(entries[0] + "".join(inner))


main()
