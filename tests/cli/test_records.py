"""The program's commands record, cues and comments; stored bytes are checked with mutagen."""
import base64
import json

from mutagen.id3 import COMM, GEOB, ID3

from support import ProgramTest

KEY = {"source": "quorvantis", "algorithm": 3, "key": "8A"}


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

    def test_an_unreadable_record_is_null_and_one_line(self):
        song = self.mp3()
        tags = ID3()
        tags.add(GEOB(encoding=0, mime="x/y", desc="Key", data=base64.b64encode(b"{no json")))
        tags.save(song)
        out, err = self.zaltag("show", "--json", song)
        self.assertIsNone(json.loads(out)[0]["zalKey"])
        self.assertEqual(len(err.splitlines()), 1)


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
