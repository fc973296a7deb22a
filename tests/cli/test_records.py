"""The program's commands record, cues and comments; stored bytes are checked with mutagen."""
import base64
import json
import os
import shutil
import struct
import unittest

from mutagen.id3 import COMM, ID3

from support import ProgramTest

KEY = {"source": "quorvantis", "algorithm": 3, "key": "8A"}


def markers2_cues(data):
    """The cues of a "Serato Markers2" object as (slot, milliseconds, colour, label), decoded on our own."""
    payload = base64.b64decode(data[2:].split(b"\0")[0].replace(b"\n", b"") + b"==")[2:]
    cues = []
    while b"\0" in payload and payload[0]:
        name, rest = payload.split(b"\0", 1)
        size = struct.unpack(">I", rest[:4])[0]
        body, payload = rest[4:4 + size], rest[4 + size:]
        if name == b"CUE":
            _, slot, position, color = struct.unpack(">BBII", body[:10])
            cues.append((slot, position, color, body[12:-1].decode()))
    return cues


def markers_positions(data):
    """The five cue positions of a legacy record in its sync-safe form; None for an empty slot."""
    entries = [data[6 + 22 * i:28 + 22 * i] for i in range(5)]
    return [None if e[20] == 0 else sum(b << (7 * (4 - i)) for i, b in enumerate(e[:5])) for e in entries]


class Records(ProgramTest):
    def test_are_stored_shown_and_removed(self):
        song = self.mp3()
        grid = {"algorithm": 1, "beats": [0.5, 1], "tempo": 120}
        self.zaltag("record", song, "zalKey=" + json.dumps(KEY), "zalBeatGrid=" + json.dumps(grid))
        shown = self.show(song)
        self.assertEqual(shown["zalKey"], KEY)
        self.assertEqual(shown["zalBeatGrid"], {"source": "quorvantis", **grid})
        self.assertIsNone(shown["zalEnergy"])
        frame = ID3(song)["GEOB:Key"]
        self.assertEqual(frame.mime, "application/json")
        self.assertEqual(json.loads(base64.b64decode(frame.data)), KEY)
        self.zaltag("record", song, "zalKey=")
        self.assertNotIn("GEOB:Key", ID3(song))

    def test_wrong_records_touch_nothing(self):
        song = self.mp3()
        before = self.content(song)
        for word in ("zalKey={", "zalKey=[1]", "zalKye={}", "{}"):
            self.zaltag("record", song, word, status=2)
        _, err = self.zaltag("record", song, 'zalKey={"algorithm": 1}', status=1)
        self.assertIn("nothing to store", err)
        self.assertEqual(self.content(song), before)


class Cues(ProgramTest):
    def test_own_cue_points(self):
        song = self.mp3()
        self.zaltag("cues", "set", song, "--to", "zal", "10.5=Drop", "2=Intro", "3.25=")
        self.assertEqual(self.zaltag("cues", "list", song, "--from", "zal")[0], "10.5\tDrop\n2\tIntro\n3.25\t\n")
        self.assertEqual([cue["time"] for cue in self.show(song)["zalCuePoints"]["cues"]], [10500, 2000, 3250])
        self.zaltag("cues", "set", song, "--to", "zal", "--clear")
        self.assertEqual(self.zaltag("cues", "list", song, "--from", "zal")[0], "")
        for words in ((), ("-1=x",), ("1x=y",), ("1=a", "--clear"), ("nan=x",)):
            self.zaltag("cues", "set", song, "--to", "zal", *words, status=2)
        self.zaltag("cues", "list", song, "--from", "nowhere", status=2)


    def test_serato_cue_points_as_others_read_them(self):
        song = self.mp3()
        self.zaltag("set", song, "title=stays")
        self.zaltag("cues", "set", song, "--to", "serato", "12.3456=Intro", "60=Été 🎵", "0.5=")
        frames = [frame for frame in ID3(song).values() if frame.FrameID == "GEOB"]
        self.assertEqual([(frame.desc, frame.mime) for frame in frames],
                         [("Serato Markers_", "application/json"), ("Serato Markers2", "application/json")])
        self.assertEqual([(frame.encoding, frame.filename) for frame in frames], [(0, "")] * 2)
        self.assertEqual(markers2_cues(frames[1].data), [(0, 12346, 0xCC0000, "Intro"), (1, 60000, 0xCC8800, "Été 🎵"),
                                                         (2, 500, 0x0000CC, "")])
        self.assertEqual(markers_positions(frames[0].data), [12346, 60000, 500, None, None])
        self.assertEqual(self.zaltag("cues", "list", song, "--from", "serato")[0],
                         "12.346\tIntro\n60\tÉté 🎵\n0.5\t\n")
        self.zaltag("cues", "set", song, "--to", "serato", "--clear")
        self.assertEqual([frame for frame in ID3(song).values() if frame.FrameID == "GEOB"], [])


@unittest.skipUnless("ZALTAG_SAMPLES" in os.environ, "ZALTAG_SAMPLES names no folder of real files")
class Samples(ProgramTest):
    def test_mp3(self):
        song = self.path("sample.mp3")
        shutil.copy(os.path.join(os.environ["ZALTAG_SAMPLES"], "test_audio_1.mp3"), song)
        os.chmod(song, 0o644)
        shown = self.show(song)
        cues = [(cue["index"], cue["position"], cue["color"], cue["label"]) for cue in shown["seratoMarker"]["cuePoints"]]
        self.assertEqual(cues, [(0, 250, "00CC00CC", "intro"), (1, 5810, "0000CC00", "16"),
                                (2, 154314, "00CC8800", "tonoght the night"), (3, 185557, "00CC0000", "3 x 32")])
        grid = shown["seratoGrid"]["gridPoints"]
        self.assertAlmostEqual(grid[0]["position"], 5.803330421, 6)
        self.assertEqual(grid[0]["beatsToNext"], 304)
        self.assertAlmostEqual(grid[1]["position"], 154.314575, 5)
        self.assertAlmostEqual(grid[1]["tempo"], 122.9070816, 5)

        before = {frame.desc: frame.data for frame in ID3(song).getall("GEOB")}
        words = self.zaltag("cues", "list", song, "--from", "serato")[0].splitlines()
        self.zaltag("cues", "set", song, "--to", "serato", *(word.replace("\t", "=") for word in words))
        after = {frame.desc: frame.data for frame in ID3(song).getall("GEOB")}
        self.assertEqual(before.keys(), after.keys())
        changed = {desc for desc in before if before[desc] != after[desc]}
        self.assertEqual(changed, {"Serato Markers_", "Serato Markers2"})
        self.assertEqual([label for _, _, _, label in markers2_cues(after["Serato Markers2"])],
                         ["intro", "16", "tonoght the night", "3 x 32"])


class Comments(ProgramTest):
    def test_list_set_prune_and_strip(self):
        song = self.mp3()
        tags = ID3()
        tags.add(COMM(encoding=3, lang="eng", desc="", text="mine"))
        tags.add(COMM(encoding=3, lang="eng", desc="iTunNORM", text="0000"))
        tags.add(COMM(encoding=3, lang="und", desc="", text="note"))
        tags.save(song, v1=2)
        shown = json.loads(self.zaltag("comments", "list", "--json", song)[0])[0]["allComments"]
        self.assertEqual({(one["comment"], one["isPrimary"]) for one in shown}, {("mine", True), ("note", False)})
        self.zaltag("comments", "set", song, "comment=new=ü")
        self.zaltag("comments", "prune", song)
        self.assertEqual(sorted(str(frame) for frame in ID3(song).getall("COMM")), ["0000", "new=ü"])
        self.zaltag("comments", "set", song, "plain words")
        self.assertEqual(self.show(song)["comment"], "plain words")
        self.zaltag("comments", "strip-v1", song)
        self.zaltag("comments", "set", song, song, status=2)
