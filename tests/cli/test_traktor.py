"""Traktor's collection through the program, read back by Python's own XML parser."""
import json
import os

from collection_files import traktor, traktor_cues, tree
from support import ProgramTest

GRID = '<CUE_V2 NAME="g" TYPE="4" START="500.000000" LEN="0.000000" HOTCUE="-1"><GRID BPM="120"/></CUE_V2>'


class Traktor(ProgramTest):
    def test_everything_that_a_track_says(self):
        file = self.write("collection.nml", traktor(["/music/a.mp3"], inner='<INFO GENRE="H &amp; T" PLAYTIME="3"/>' + GRID))
        shown = json.loads(self.zaltag("traktor", "tracks", "--json", "--all", "--traktor", file)[0])[0]["attributes"]
        entry = tree(file).find("COLLECTION/ENTRY")
        below = {f"{child.tag}/{name}": value for child in entry if child.tag != "CUE_V2" for name, value in child.items()}
        self.assertEqual(shown, {**entry.attrib, **below})
        self.assertEqual(shown["INFO/GENRE"], "H & T")

    def test_the_road_of_one_change(self):
        song = self.mp3("A & b: c.mp3")
        os.utime(song, (1700000005, 1700000005))  # 2023-11-14 22:13:25 UTC
        file = self.write("collection.nml", traktor([song, "/music/other.mp3"], inner=GRID))
        change = ("cues", "set", song, "--to", "traktor", "--traktor", file, "12.5=Drop", "3=In")
        self.zaltag(*change)
        first, second = tree(file).findall("COLLECTION/ENTRY")
        self.assertEqual(traktor_cues(first), [(0.5, "g", 4, -1), (3.0, "In", 0, 0), (12.5, "Drop", 0, 1)])
        new = first.findall("CUE_V2")[2]
        self.assertEqual(list(new.items()), [
            ("NAME", "Drop"), ("DISPL_ORDER", "0"), ("TYPE", "0"), ("START", "12500.000000"), ("LEN", "0.000000"),
            ("REPEATS", "-1"), ("HOTCUE", "1")])
        self.assertEqual(first.find("CUE_V2/GRID").get("BPM"), "120")
        self.assertEqual((first.get("MODIFIED_DATE"), first.get("MODIFIED_TIME")), ("2023/11/14", "80004"))
        self.assertEqual(traktor_cues(second), [(0.5, "g", 4, -1)])
        once = self.content(file)
        self.zaltag(*change)
        self.assertEqual(self.content(file), once)
        self.zaltag(*change[:-1], "--rewrite-all")
        self.assertEqual(traktor_cues(tree(file).findall("COLLECTION/ENTRY")[1]), [(0.5, "g", 4, 0)])
        self.write("collection.nml", once)
        shown = json.loads(self.zaltag("traktor", "track", song, "--traktor", file, "--json")[0])
        self.assertEqual((shown["path"], shown["modificationDate"]), (song, "2023-11-14T22:13:24Z"))
        self.assertEqual([cue["index"] for cue in shown["cues"]], [-1, 0, 1])
        out = self.zaltag("cues", "list", song, "--from", "traktor", "--traktor", file)[0]
        self.assertEqual(out, "3\tIn\n12.5\tDrop\n")
