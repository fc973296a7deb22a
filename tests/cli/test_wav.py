"""WAV files as Serato leaves them, changed by the program and read by mutagen and ffprobe."""
import io
import json
import struct
import subprocess

from mutagen.id3 import COMM, GEOB, ID3, TIT2
from mutagen.wave import WAVE

from support import ProgramTest


def chunk(name, content):
    return name + struct.pack("<I", len(content)) + content + b"\0" * (len(content) % 2)


def chunks_of(data):
    """The chunks of a WAV file by name, after a look at the form's size."""
    assert data[:4] == b"RIFF" and struct.unpack("<I", data[4:8])[0] == len(data) - 8
    found, at = {}, 12
    while at < len(data):
        name, size = data[at:at + 4], struct.unpack("<I", data[at + 4:at + 8])[0]
        found.setdefault(name, []).append(data[at + 8:at + 8 + size])
        at += 8 + size + size % 2
    return found


class Wav(ProgramTest):
    def serato_file(self):
        """Half a second, an INFO list, and the tag in a chunk named "id3 " behind it."""
        tags = ID3()
        tags.add(TIT2(encoding=1, text="Old"))
        tags.add(COMM(encoding=1, lang="eng", text="note"))
        tags.add(GEOB(encoding=0, mime="application/octet-stream", desc="Serato Analysis", data=b"\2\1"))
        stored = io.BytesIO()
        tags.save(stored, v2_version=3)
        info = b"INFO" + chunk(b"INAM", b"Old\0") + chunk(b"ISFT", b"caf\xe9\0")
        return self.write("Serato.wav", chunk(b"RIFF", b"WAVE" + b"".join((
            chunk(b"fmt ", struct.pack("<HHIIHH", 1, 1, 44100, 88200, 2, 16)),
            chunk(b"data", bytes(range(250)) * 176 + b"\1\2"), chunk(b"LIST", info),
            chunk(b"id3 ", stored.getvalue())))))

    def test_a_serato_file_is_changed_and_read_by_others(self):
        song = self.serato_file()
        audio = chunks_of(self.content(song))[b"data"]
        shown = self.show(song)
        self.assertEqual((shown["class"], shown["title"], shown["hasSeratoMetadata"]), ("ZALTagWAV", "Old", True))
        self.zaltag("set", song, "title=Neu 🎵", "year=2024", "tempo=124", "infoGenre=House", "infoYear=")
        self.zaltag("cues", "set", song, "--to", "serato", "0.25=Intro")
        self.zaltag("record", song, 'zalVelvetCascade={"backupFileName": "b.wav", "isProcessed": true}')
        self.zaltag("set", song, "artist=A")
        found = chunks_of(self.content(song))
        self.assertEqual(list(found), [b"fmt ", b"data", b"ID3 ", b"LIST", b"VCAS"])
        self.assertEqual(found[b"data"], audio)
        self.assertIn(b"ISFT\x06\0\0\0caf\xc3\xa9\0", found[b"LIST"][0])
        tags = WAVE(song).tags
        self.assertEqual([str(tags[key]) for key in ("TIT2", "TPE1", "TDRC", "TBPM", "COMM::eng")],
                         ["Neu 🎵", "A", "2024", "124", "note"])
        self.assertEqual(tags["GEOB:Serato Analysis"].data, b"\2\1")
        self.assertIn("GEOB:Serato Markers2", tags)
        probed = json.loads(subprocess.run(
            ["ffprobe", "-v", "error", "-of", "json", "-show_format", song], capture_output=True, check=True).stdout)
        self.assertEqual(probed["format"]["tags"]["title"], "Neu 🎵")
        self.assertEqual(probed["format"]["tags"]["genre"], "House")
        self.assertAlmostEqual(float(probed["format"]["duration"]), 0.5, 2)
        shown = self.show(song)
        self.assertEqual(shown["zalVelvetCascade"], {"backupFileName": "b.wav", "isProcessed": True})
        self.assertEqual(shown["seratoCuePoints"], [{"time": 0.25, "name": "Intro"}])
        self.assertEqual((shown["genre"], shown["year"], shown["allImages"]), ("House", 2024, []))
        _, err = self.zaltag("set", self.mp3(), "infoTitle=x", status=1)
        self.assertIn("ZALTagID3 has no infoTitle", err)
