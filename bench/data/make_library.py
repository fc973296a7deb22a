#!/usr/bin/python3
"""make_library.py OUT FILES [--seconds S] [--plain]: a music library of FILES tagged files, spread evenly over five
formats, and OUT/files.txt with their paths. Every file holds the usual fields, comments, a cover, Serato's payloads,
the JSON records and, in the ID3 family, a Traktor block; --plain leaves all that away but a few fields."""
import argparse
import base64
import json
import pathlib
import random
import struct
import subprocess

from mutagen.aiff import AIFF
from mutagen.flac import FLAC, Picture
from mutagen.id3 import (APIC, COMM, GEOB, ID3, POPM, PRIV, TALB, TBPM, TCOM, TCON, TDRC, TIT1, TIT2, TKEY, TPE1, TPE2,
                         TPE4, TPOS, TPUB, TRCK, TSRC, TXXX, UFID)
from mutagen.mp4 import MP4, MP4Cover, MP4FreeForm
from mutagen.wave import WAVE

ENCODERS = {
    "mp3": ["-c:a", "libmp3lame", "-b:a", "320k", "-id3v2_version", "0", "-write_xing", "1"],
    "m4a": ["-c:a", "aac", "-b:a", "256k"],
    "wav": ["-c:a", "pcm_s16le"],
    "aiff": ["-c:a", "pcm_s16be"],
    "flac": ["-c:a", "flac"],
}
WORDS = "Amber Blåst Cinder Dusk Élan Fjord Glass Hollow Ivory Jade Kelp Lumen Mañana Nocturne Opal Prisma".split()
OTHER = ["夜の列車", "Рассвет", "Ηχώ"]


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-y", *map(str, arguments)], check=True)


def make_audio(folder, seconds):
    """One file per format, without tags."""
    made = {}
    for extension, options in ENCODERS.items():
        made[extension] = folder / f"audio.{extension}"
        source = f"aevalsrc=0.4*sin(330*t)+0.1*(random(0)-0.5)|0.4*sin(220*t):s=44100:d={seconds}"
        ffmpeg("-f", "lavfi", "-i", source, *options, "-fflags", "+bitexact", "-flags:a", "+bitexact", made[extension])
    return {extension: path.read_bytes() for extension, path in made.items()}


def make_covers(folder):
    covers = []
    for number in range(6):
        path = folder / f"cover{number}.{'png' if number == 5 else 'jpg'}"
        size = 180 if number == 5 else 500
        ffmpeg("-f", "lavfi", "-i", f"mandelbrot=size={size}x{size}:start_scale={3 / (number + 1)}", "-vf",
               f"noise=alls={6 + 2 * number}", "-frames:v", "1", "-q:v", "6", path)
        covers.append((f"image/{'png' if number == 5 else 'jpeg'}", path.read_bytes(), size))
    return covers


def lines_of_base64(data):
    text = base64.b64encode(data).rstrip(b"=")
    return b"\n".join(text[i:i + 72] for i in range(0, len(text), 72))


def envelope(name, data):
    return lines_of_base64(b"application/octet-stream\0\0" + name.encode() + b"\0" + data)


class Song:
    def __init__(self, number, r, covers):
        self.number = number
        self.title = f"{r.choice(WORDS)} {r.choice(WORDS)} {number:05d}"
        if r.random() < 0.15:
            self.title = f"{r.choice(OTHER)} {self.title}"
        self.artist, self.album = f"{r.choice(WORDS)} & {r.choice(WORDS)}", f"{r.choice(WORDS)} EP"
        self.tempo = round(r.uniform(90, 170), 2)
        self.key = r.choice(["8A", "9B", "Am", "F#m"])
        self.cover = covers[number % len(covers)]
        self.comments = [f"{self.key} - Energy 7 - {r.choice(WORDS)}", f"bought at {r.choice(WORDS)}", "0000 1A2B 3C4D"]
        cues = [(index, r.randrange(240_000), r.choice([0xCC0000, 0x00CC00, 0x0000CC]), r.choice(WORDS + [""]))
                for index in range(r.randint(1, 8))]
        self.serato = self.serato_payloads(cues, r)
        self.records = self.json_records(cues)
        self.traktor = r.randbytes(r.randint(1500, 4000))

    def serato_payloads(self, cues, r):
        entries = b"\1\1COLOR\0" + struct.pack(">II", 4, 0xFFFFFF)
        for index, position, color, name in cues:
            entry = struct.pack(">HII", index, position, color) + b"\0\0" + name.encode() + b"\0"
            entries += b"CUE\0" + struct.pack(">I", len(entry)) + entry
        entries += b"BPMLOCK\0" + struct.pack(">IB", 1, 0) + b"\0"
        slot = b"\x7f" * 5 + b"\x7f" * 5 + b"\0" + b"\x7f" * 5 + bytes(4) + b"\0\0"
        return {
            "Serato Analysis": b"\2\1",
            "Serato Autotags": b"\1\1%.2f\0-3.250\0000.000\0" % self.tempo,
            "Serato BeatGrid": b"\1\0" + struct.pack(">Iff", 1, r.random(), self.tempo) + b"\x37",
            "Serato Markers_": b"\2\5" + struct.pack(">I", 14) + slot * 14 + bytes([7, 127, 127, 127]),
            "Serato Markers2": (b"\1\1" + lines_of_base64(entries)).ljust(470, b"\0"),
            "Serato Overview": b"\1\5" + r.randbytes(3840),
        }

    def json_records(self, cues):
        head = {"algorithm": 1, "source": "quorvantis"}
        beats = [round(index * 60 / self.tempo, 3) for index in range(200)]
        records = {
            "Key": {**head, "key": self.key},
            "Energy": {**head, "energyLevel": 7},
            "BeatGrid": {**head, "tempo": self.tempo, "beats": beats},
            "CuePoints": {**head, "cues": [{"name": name, "time": float(at)} for _, at, _, name in cues]},
        }
        return {name: base64.b64encode(json.dumps(record, separators=(",", ":"), sort_keys=True).encode())
                for name, record in records.items()}


def tag_id3(path, song, r, plain):
    tags = ID3()
    for frame, text in ((TIT2, song.title), (TPE1, song.artist), (TALB, song.album), (TCON, "Techno"),
                        (TKEY, song.key), (TDRC, "2021"), (TBPM, str(round(song.tempo)))):
        tags.add(frame(encoding=1, text=[text]))
    tags.add(COMM(encoding=1, lang="eng", desc="", text=[song.comments[0]]))
    if not plain:
        for frame, text in ((TPE2, song.artist), (TPE4, r.choice(WORDS)), (TCOM, r.choice(WORDS)), (TIT1, "Peak"),
                            (TRCK, "3/9"), (TPOS, "1/1"), (TPUB, "Label"), (TSRC, "DEABC2100001")):
            tags.add(frame(encoding=1, text=[text]))
        for name, text in (("ENERGYLEVEL", "7"), ("CATALOGNUMBER", "CAT 001"), ("REPLAYGAIN_TRACK_GAIN", "-7.10 dB")):
            tags.add(TXXX(encoding=1, desc=name, text=[text]))
        for index, comment in enumerate(song.comments[1:]):
            tags.add(COMM(encoding=1, lang="eng", desc=f"extra {index}", text=[comment]))
        tags.add(POPM(email="no@email", rating=204, count=3))
        tags.add(UFID(owner="http://example.org/id", data=b"%016x" % song.number))
        tags.add(APIC(encoding=0, mime=song.cover[0], type=3, desc="", data=song.cover[1]))
        for name, data in song.serato.items():
            tags.add(GEOB(encoding=0, mime="application/octet-stream", filename="", desc=name, data=data))
        for name, data in song.records.items():
            tags.add(GEOB(encoding=0, mime="application/json", filename="", desc=name, data=data))
        tags.add(PRIV(owner="TRAKTOR4", data=song.traktor))
    version = r.choice([3, 4])
    if version == 3:
        tags.update_to_v23()
    if path.suffix == ".mp3":
        tags.save(path, v2_version=version, v1=0 if plain else 2, padding=lambda info: 0 if plain else 1024)
        return
    file = (WAVE if path.suffix == ".wav" else AIFF)(path)
    file.add_tags()
    for frame in tags.values():
        file.tags.add(frame)
    file.save(v2_version=version, padding=lambda info: 0)


def tag_mp4(path, song, plain):
    file = MP4(path)
    file["\xa9nam"], file["\xa9ART"], file["\xa9alb"], file["\xa9gen"] = song.title, song.artist, song.album, "Techno"
    file["\xa9day"], file["\xa9cmt"], file["tmpo"] = "2021", song.comments[0], [round(song.tempo)]
    file["----:com.apple.iTunes:initialkey"] = MP4FreeForm(song.key.encode())
    if not plain:
        form = MP4Cover.FORMAT_PNG if song.cover[0] == "image/png" else MP4Cover.FORMAT_JPEG
        file["covr"] = [MP4Cover(song.cover[1], form)]
        file["trkn"], file["disk"], file["aART"], file["\xa9grp"] = [(3, 9)], [(1, 1)], song.artist, "Peak"
        for name, text in (("LABEL", "Label"), ("ISRC", "DEABC2100001"), ("ENERGYLEVEL", "7")):
            file[f"----:com.apple.iTunes:{name}"] = MP4FreeForm(text.encode())
        for item, name in (("analysisVersion", "Analysis"), ("autgain", "Autotags"), ("beatgrid", "BeatGrid"),
                           ("markersv2", "Markers2"), ("overview", "Overview")):
            data = envelope(f"Serato {name}", song.serato[f"Serato {name}"])
            file[f"----:com.serato.dj:{item}"] = MP4FreeForm(data)
        for name, data in song.records.items():
            file[f"----:com.quorvantis.quorvantis:{name.lower()}"] = MP4FreeForm(data)
    file.save(padding=lambda info: 0)


def tag_flac(path, song, plain):
    file = FLAC(path)
    if file.tags is None:
        file.add_tags()
    file["TITLE"], file["ARTIST"], file["ALBUM"], file["GENRE"] = song.title, song.artist, song.album, "Techno"
    file["DATE"], file["BPM"], file["INITIALKEY"] = "2021", str(round(song.tempo)), song.key
    file["COMMENT"] = song.comments[:1] if plain else song.comments
    if not plain:
        for name, text in (("ALBUMARTIST", song.artist), ("TRACKNUMBER", "3"), ("LABEL", "Label"), ("GROUPING", "Peak"),
                           ("ISRC", "DEABC2100001"), ("ENERGYLEVEL", "7"), ("REPLAYGAIN_TRACK_GAIN", "-7.10 dB")):
            file[name] = text
        for field, name in (("ANALYSIS", "Analysis"), ("AUTOGAIN", "Autotags"), ("BEATGRID", "BeatGrid"),
                            ("MARKERS_V2", "Markers2"), ("OVERVIEW", "Overview")):
            file[f"SERATO_{field}"] = envelope(f"Serato {name}", song.serato[f"Serato {name}"]).decode()
        for name, data in song.records.items():
            file[name.upper()] = data.decode()
        picture = Picture()
        picture.type, picture.mime, picture.data = 3, song.cover[0], song.cover[1]
        picture.width = picture.height = song.cover[2]
        picture.depth = 24
        file.add_picture(picture)
    file.save(padding=lambda info: 0 if plain else 4096)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("out", type=pathlib.Path)
    parser.add_argument("files", type=int)
    parser.add_argument("--seconds", type=float, default=3)
    parser.add_argument("--plain", action="store_true")
    arguments = parser.parse_args()
    arguments.out.mkdir(parents=True, exist_ok=True)
    audio = make_audio(arguments.out, arguments.seconds)
    covers = make_covers(arguments.out)
    r = random.Random(arguments.files)
    paths = []
    for number in range(arguments.files):
        extension = list(ENCODERS)[number % len(ENCODERS)]
        path = arguments.out / f"{number // 100:03d}" / f"{number:05d}.{extension}"
        path.parent.mkdir(exist_ok=True)
        path.write_bytes(audio[extension])
        song = Song(number, r, covers)
        if extension == "m4a":
            tag_mp4(path, song, arguments.plain)
        elif extension == "flac":
            tag_flac(path, song, arguments.plain)
        else:
            tag_id3(path, song, r, arguments.plain)
        paths.append(str(path.resolve()))
    for made in [*arguments.out.glob("audio.*"), *arguments.out.glob("cover*")]:
        made.unlink()
    (arguments.out / "files.txt").write_text("\n".join(paths) + "\n")


main()
