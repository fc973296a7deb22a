"""Rekordbox's collection through the program, read back by Python's own XML parser."""
import json
import os
import re

from collection_files import rekordbox, rekordbox_marks, tree
from support import ProgramTest


class Rekordbox(ProgramTest):
    def collection(self, tracks=None):
        tracks = tracks if tracks is not None else [(self.path("song.mp3"), ""), ("/music/b.mp3", "")]
        return self.write("rekordbox.xml", rekordbox(tracks))

    def test_the_road_of_one_change(self):
        song, file = self.mp3(), self.collection()
        before = self.content(song)
        change = ("cues", "set", song, "--to", "rekordbox", "--rekordbox", file, "12.5=Drop", "3=In <&>")
        self.zaltag(*change)
        root = tree(file)
        marks = [(3.0, "In <&>"), (12.5, "Drop")]
        first, second = root.findall("COLLECTION/TRACK")
        self.assertEqual(rekordbox_marks(first), [(s, n, -1) for s, n in marks] +
                         [(s, n, i) for i, (s, n) in enumerate(marks)])
        self.assertRegex(first.get("DateModified"), r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d[+-]\d{4}$")
        self.assertEqual(first.get("Odd"), "&é")
        self.assertEqual((rekordbox_marks(second), second.get("DateModified")), ([], None))
        self.assertEqual(root.get("CreatedByApp"), "zaltag")
        keys = [track.get("Key") for track in root.findall("PLAYLISTS/NODE/NODE[@Name='ZAL Cue Points']/TRACK")]
        self.assertEqual(keys, ["1"])
        imported = self.path("rekordbox_zalcues_001.xml")
        self.assertEqual(rekordbox_marks(tree(imported).find("COLLECTION/TRACK")), rekordbox_marks(first))
        once, import_once = self.content(file), self.content(imported)
        self.assertIn(b"<!-- mine -->", once)
        self.zaltag(*change)
        self.assertEqual(self.content(file), once)
        stamp = re.compile(rb'ModificationDate="[^"]*"')
        self.assertEqual(stamp.sub(b"", self.content(imported)), stamp.sub(b"", import_once))
        self.assertEqual(self.content(song), before)
        out = self.zaltag("cues", "list", song, "--from", "rekordbox-hot", "--rekordbox", file)[0]
        self.assertEqual(out, "3\tIn <&>\n12.5\tDrop\n")

    def test_everything_that_a_track_says(self):
        file = self.collection()
        shown = json.loads(self.zaltag("rekordbox", "tracks", "--json", "--all", "--rekordbox", file)[0])
        elements = tree(file).findall("COLLECTION/TRACK")
        self.assertEqual([one["attributes"] for one in shown], [element.attrib for element in elements])
        self.assertIn("Odd: &é\n", self.zaltag("rekordbox", "track", self.path("song.mp3"), "--all", "--rekordbox", file)[0])

    def test_the_audio_file_need_not_exist_and_failures_are_one_line_each(self):
        file = self.collection()
        self.zaltag("cues", "set", "/music/x/../b.mp3", "--to", "rekordbox-memory", "--rekordbox", file, "1=a")
        track = json.loads(self.zaltag("rekordbox", "track", "/music/b.mp3", "--rekordbox", file, "--json")[0])
        self.assertEqual(track, {"path": "/music/b.mp3", "trackId": 2, "beatTimes": None, "cues": [
            {"name": "a", "type": 0, "typeName": "Cue", "start": 1, "end": 0, "num": -1}]})
        broken, missing = self.write("broken.xml", b"<DJ_PLAYLISTS>"), self.path("missing.xml")
        for arguments in (("cues", "set", "/no.mp3", "--to", "rekordbox", "1=a", "--rekordbox", file),
                          ("cues", "set", "/music/b.mp3", "--to", "rekordbox", "1=a", "--rekordbox", broken),
                          ("rekordbox", "track", "/no.mp3", "--rekordbox", file),
                          ("rekordbox", "playlists", "--rekordbox", missing)):
            out, err = self.zaltag(*arguments, status=1)
            self.assertEqual((out, err.count("\n")), ("", 1), err)
            self.assertNotIn("ErrorDomain", err, "texts for a person")
        self.assertEqual(self.content(broken), b"<DJ_PLAYLISTS>")
        out = self.zaltag("rekordbox", "info", "--rekordbox", missing, "--json", status=1)[0]
        self.assertEqual(json.loads(out), {"path": missing, "loaded": False, "tracks": 0, "cues": 0, "playlists": 0})

    def test_settings_are_never_stored(self):
        home = self.path("home")
        os.mkdir(home)
        environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": os.path.join(home, "config")}
        self.run_program("rekordbox", "info", "--rekordbox", self.collection(), env=environment)
        self.assertEqual(os.listdir(home), [])
