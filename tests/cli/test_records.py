"""The program's commands record, cues and comments; stored bytes are checked with mutagen."""
import base64
import json

from mutagen.id3 import COMM, ID3

from collection_files import serato_cues
from support import ProgramTest

KEY = {"source": "quorvantis", "algorithm": 3, "key": "8A"}


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
        before = self.content(song)
        for word in ("zalKey={", "zalKey=[1]", "zalKye={}", "{}"):
            self.zaltag("record", song, word, status=2)
        self.assertIn("nothing to store", self.zaltag("record", song, 'zalKey={"algorithm": 1}', status=1)[1])
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

    def test_serato_cue_points_as_others_read_them(self):
        song = self.mp3()
        self.zaltag("set", song, "title=stays")
        self.zaltag("cues", "set", song, "--to", "serato", "12.3456=Intro", "60=Été 🎵", "0.5=")
        frames = [frame for frame in ID3(song).values() if frame.FrameID == "GEOB"]
        self.assertEqual([(frame.desc, frame.mime) for frame in frames],
                         [("Serato Markers_", "application/json"), ("Serato Markers2", "application/json")])
        self.assertEqual([(frame.encoding, frame.filename) for frame in frames], [(0, "")] * 2)
        self.assertEqual(serato_cues(song), [(12346, "Intro"), (60000, "Été 🎵"), (500, "")])
        self.assertEqual(markers_positions(frames[0].data), [12346, 60000, 500, None, None])
        self.assertEqual(self.zaltag("cues", "list", song, "--from", "serato")[0],
                         "12.346\tIntro\n60\tÉté 🎵\n0.5\t\n")
        self.zaltag("cues", "set", song, "--to", "serato", "--clear")
        self.assertEqual([frame for frame in ID3(song).values() if frame.FrameID == "GEOB"], [])


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
        self.assertFalse(self.show(song)["hasID3v1Tag"])
        tags.save(song, v1=2)
        self.zaltag("set", "--strip-v1", song)
        self.assertFalse(self.show(song)["hasID3v1Tag"])
        self.zaltag("comments", "set", song, song, status=2)
