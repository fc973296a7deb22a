"""The textual report of whole files, held against the texts in golden/. The files and what they carry are made by hand."""
import base64
import json
import os
import struct
import sys
import zlib

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "hostile"))
from hostile_files import PIXEL, V1, atom, be, block, chunk, flac, form, frame, id3, le, song, user_data  # noqa: E402
from support import FRAME, ProgramTest  # noqa: E402


def lines(data):
    """Base64 with a line end behind every 54 bytes and one at the end."""
    return b"\n".join(base64.b64encode(data[i:i + 54]) for i in range(0, len(data) + 1, 54)) + b"\n"


def stored(**record):
    return lines(json.dumps({"source": "quorvantis", **record}, sort_keys=True, separators=(",", ":"), ensure_ascii=False).encode())


def wrapped(data, name=b""):
    """A payload of Serato as MP4 and FLAC carry it."""
    return lines(b"application/octet-stream\0\0" + name.ljust(16, b"\0") + data)


KEY, ENERGY = stored(algorithm=3, key="8A"), stored(algorithm=2, energyLevel=7)
BEATS = stored(algorithm=1, beats=[0.5, 1.0, 1.5], tempo=128.3000030517578)
CUES = stored(algorithm=5, cues=[{"name": "Intro ü", "time": 1250.0}, {"name": "", "time": 1234567.8}])
LATE = stored(algorithm=5, cues=[{"name": "Late", "time": 1000000000.0}])
GRID = bytes.fromhex("0100 00000002 3F000000 00000008 40900000 42F08000 00")  # 8 beats to 4.5 s, then 120.25 bpm
MARKER = b"\1\1" + base64.b64encode(bytes.fromhex(
    "0101 43554500 00000012 0000 000000FA 00CC0000 0000 496E74726F 00 43554500 0000000D 0003 FFFFFFFF 00CCCC00 0000 00")) + b"\n"
OLD = bytes.fromhex("0205 0000000E 000000017A 7F7F7F7F7F 00 7F7F7F7F7F 06300000 01 00 0000035460 7F7F7F7F7F 00 7F7F7F7F7F 06321000 01 00"
                    + "7F7F7F7F7F 7F7F7F7F7F 00 7F7F7F7F7F 06300000 00 00" * 12 + "077F7F7F")
OLD_MP4 = bytes.fromhex("0205 00000001 000000FA FFFFFFFF 00 FFFFFFFF 00CC0000 01 00 00FFFFFF")


def marked(word):
    """The picture with a lens make in an EXIF block."""
    entry = lambda tag, kind, count, value: struct.pack(">HHHIII", 1, tag, kind, count, value, 0)
    exif = b"MM\0*" + be(8) + entry(0x8769, 4, 1, 26) + entry(0xA433, 2, len(word) + 1, 44) + word + bytes(2)
    return PIXEL[:33] + be(len(exif)) + b"eXIf" + exif + be(zlib.crc32(b"eXIf" + exif)) + PIXEL[33:]


ORIGINAL, CUSTOMIZED = marked(b"__zal_original_album_artwork__"), marked(b"__zal_customized_album_artwork__")
V1_FIELDS = b"TAG" + b"V1 title".ljust(30, b"\0") + b"V1 artist".ljust(64, b"\0") + b"note".ljust(30, b"\0") + b"\x11"


def tag():
    """Frames of every kind that a report knows, some of which cannot be read."""
    text = lambda name, content, flags=0: frame(name, b"\0" + content, flags=flags)
    own = lambda name, data: frame(b"GEOB", b"\0application/json\0\0" + name + b"\0" + data)
    picture = lambda data: text(b"APIC", b"image/png\0\3front\0" + data)
    return id3(b"".join((
        text(b"TIT2", b"not shown"), text(b"COMM", b"eng\0caf\xe9"), text(b"COMM", b"deuabout\0"), own(b"Key", KEY),
        own(b"Energy", ENERGY), own(b"BeatGrid", BEATS), own(b"CuePoints", CUES), own(b"Key", b"bm90IGpzb24=\n"),
        own(b"VelvetCascade", KEY), own(b"Serato Markers_", OLD), own(b"Serato Markers2", MARKER),
        own(b"Serato BeatGrid", GRID), text(b"TXXX", b"EnergyLevel\0" + b"7"), text(b"TXXX", b"Mood\0dark\0deep"),
        frame(b"PRIV", b"TRAKTOR4\0\1\2\3"), picture(CUSTOMIZED), picture(ORIGINAL), text(b"GRP1", b"Peak"),
        frame(b"GRP1", b"\1\xff\xfeA\0", flags=4), frame(b"GRP1", b"\0", flags=4), frame(b"COMM", bytes(8), flags=4),
        frame(b"APIC", bytes(8), flags=4))) + bytes(100))


class Dump(ProgramTest):
    maxDiff = None

    def dump(self, name, content):
        return self.zaltag("dump", self.write(name, content))[0]

    def golden(self, name):
        with open(os.path.join(os.path.dirname(__file__), "golden", name), encoding="utf-8") as file:
            return file.read()

    def test_id3(self):
        mp3 = self.golden("mp3.txt")
        self.assertEqual(self.dump("song.MP3", tag() + FRAME * 3 + V1_FIELDS), mp3)
        frames = mp3[:mp3.index("ID3v1 Tag")]
        info = b"".join(chunk(name, text, None, le) for name, text in
                        ((b"INAM", b"Title\0"), (b"ICMT", b"caf\xe9\0"), (b"ICRD", b"1999-01-02\0"), (b"ISFT", b"no\0")))
        wav = form("wav", tag=tag()).replace(b"INFO" + chunk(b"INAM", b"name\0\0", None, le), b"INFO" + info)
        wav = wav.replace(b"LIST" + le(18), b"LIST" + le(4 + len(info)))
        self.assertEqual(self.dump("song.wav", wav[:4] + le(len(wav) - 8) + wav[8:]),
                         "INFO Chunk\n----------\nINAM - 'Title'\nICMT - 'café'\nICRD - '1999-01-02'\nID3 Tag\n-------\n" + frames)
        self.assertEqual(self.dump("song.aif", form("aiff", tag=tag())), frames + "no ID3v1 tag found\n")

    def test_mp4(self):
        data = lambda value, kind=1: atom(b"data", be(kind) + bytes(4) + value)
        free = lambda mean, name, text: atom(b"----", atom(b"mean", bytes(4) + mean) + atom(b"name", bytes(4) + name) + data(text))
        apple, serato, own = b"com.apple.iTunes", b"com.serato.dj", b"com.quorvantis.quorvantis"
        items = b"".join((
            atom(b"\xa9nam", data("Title ü".encode())), atom(b"\xa9ART", data(b"One") + data(b"Two")),
            atom(b"\xa9day", data(b"1999-01-02")), atom(b"trkn", data(bytes((0, 0, 0, 3, 0, 12, 0, 0)), 0)),
            atom(b"tmpo", data(b"\0\x80", 21)), free(apple, b"initialkey", b"8A"), free(apple, b"energylevel", b"7"),
            atom(b"covr", data(ORIGINAL, 14) + data(CUSTOMIZED, 14) + data(PIXEL, 14)),
            free(serato, b"markers", wrapped(OLD_MP4)), free(serato, b"markersv2", wrapped(MARKER)),
            free(serato, b"beatgrid", b"AQ=="), free(own, b"key", KEY), free(own, b"energy", b"bm90IGpzb24=\n"),
            free(own, b"beatgrid", BEATS), free(own, b"cuepoints", CUES)))
        self.assertEqual(self.dump("song.mp4", song(user_data(items))), self.golden("m4a.txt"))

    def test_flac(self):
        fields = [b"TITLE=" + "Title ü".encode(), b"artist=One", b"ARTIST=Two", b"DATE=1999", b"TRACKNUMBER=3",
                  b"SERATO_MARKERS_V2=" + wrapped(MARKER, b"Serato Markers2"), b"serato_beatgrid=" + wrapped(GRID),
                  b"KEY=" + KEY, b"ENERGY=" + ENERGY, b"BEATGRID=bm90IGpzb24=", b"CUEPOINTS=" + LATE]
        comment = block(4, le(4) + b"test" + le(len(fields)) + b"".join(le(len(field)) + field for field in fields))
        pictures = [block(6, be(3) + be(9) + b"image/png" + bytes(20) + be(len(data)) + data) for data in (CUSTOMIZED, PIXEL)]
        front = id3(frame(b"TIT2", b"\0not shown") + frame(b"COMM", b"\0eng\0note") +
                    frame(b"GEOB", b"\0application/json\0\0Serato Markers_\0" + OLD))
        v1 = b"TAG" + b"V1 title".ljust(124, b"\0") + b"\xff"
        self.assertEqual(self.dump("song.flac", front + flac(comment + b"".join(pictures)) + v1), self.golden("flac.txt"))

    def test_few_tags_or_none(self):
        fields = "title   - ''\nartist  - ''\nalbum   - ''\ncomment - ''\ngenre   - ''\nyear    -  0\ntrack   -  0\n"
        v1 = "ID3v1 Tag\n---------\n" + fields.replace("''", "'title'", 1)
        plain = lambda kind: form(kind)[:12] + form(kind)[12:].split(b"LIST")[0].split(b"ID3 ")[0]
        for name, content, report in (
                ("a.mp3", FRAME * 3, "no ID3V1 or ID3V2 tag found\n"), ("a.mp3", FRAME * 3 + V1, "no ID3v2 tag found\n" + v1),
                ("a.wav", plain("wav"), "INFO Chunk\n----------\nnot found\nno ID3 tag found\n"),
                ("a.aiff", plain("aiff"), "no ID3V2 tag found\n"),
                ("a.m4a", song(), f"MP4 Tag\n-------\n{fields}EXTRA\n-----\ncovers - none\nCUSTOM\n------\nATOMS\n-----\n")):
            self.assertEqual(self.dump(name, content), report, name)

    def test_reports_of_several_files(self):
        song, plain = self.write("a.flac", flac()), self.mp3("b.mp3")
        out, err = self.zaltag("dump", plain, self.path("missing.mp3"), song, status=1)
        self.assertTrue(out.startswith(f"{plain}:\nno ID3V1 or ID3V2 tag found\n{song}:\nno Xiph tag found\n"))
        self.assertEqual(err, f"zaltag: {self.path('missing.mp3')}: no such file\n")
