"""Real files and collections, of which a save changes what was asked for alone."""
import json
import os
import shutil
import unittest

import mutagen
from mutagen.id3 import ID3

from collection_files import SAMPLES, outline, rekordbox_marks, tree
from support import ProgramTest, audio_of


@unittest.skipUnless(SAMPLES, "LEFT OUT: ZALTAG_SAMPLES names no folder of real files")
class Samples(ProgramTest):
    def entries(self, song):
        """What others read of it; of MP3 files only the objects, as the version of the tag changes."""
        tags = mutagen.File(song).tags
        if isinstance(tags, ID3):
            return {frame.desc: frame.data for frame in tags.getall("GEOB")}
        return {name.lower(): value for name, value in dict(tags).items()}

    def test_the_same_cues_change_nothing_else(self):
        for extension, colors, fields, expected in (
                ("mp3", ["00CC00CC", "0000CC00", "00CC8800", "00CC0000"], {}, {"Serato Markers_", "Serato Markers2"}),
                ("m4a", ["0088CC00", "000000CC", "00CC0000", "00CC0000"],
                 {"title": "Go", "year": 1988, "initialKey": "Em", "comment": None},
                 {"----:com.serato.dj:markers", "----:com.serato.dj:markersv2"}),
                ("flac", None, {"title": "Pump Up The Volume", "year": 1987, "initialKey": "Am"}, {"serato_markers_v2"})):
            song = self.path("sample." + extension)
            shutil.copy(os.path.join(SAMPLES, "test_audio_1." + extension), song)
            os.chmod(song, 0o644)
            shown, audio, before = self.show(song), audio_of(song), self.entries(song)
            cues = shown["seratoMarker"]["cuePoints"]
            self.assertEqual({name: shown[name] for name in fields}, fields)
            self.assertEqual(colors or [cue["color"] for cue in cues], [cue["color"] for cue in cues])
            words = self.zaltag("cues", "list", song, "--from", "serato")[0].splitlines()
            self.zaltag("cues", "set", song, "--to", "serato", *(word.replace("\t", "=") for word in words))
            after = self.entries(song)
            self.assertEqual(before.keys(), after.keys())
            self.assertEqual({name for name in before if before[name] != after[name]}, expected)
            self.assertEqual([cue["label"] for cue in self.show(song)["seratoMarker"]["cuePoints"]],
                             [cue["label"] for cue in cues])
            self.check_audio(song, audio)

    def test_reports_of_real_files(self):
        grids = {"mp3": "2 beat grid points (1.0) { <5.80333 304 beats> <154.315 122.907 bpm> }",
                 "m4a": "1 beat grid point (1.0) { <1.54168 113.689 bpm> }",
                 "flac": "6 beat grid points (1.0) { <0.539017 320 beats> <171.169 8 beats> <175.635 8 beats> "
                         "<180.085 8 beats> <184.308 96 beats> <235.514 112.484 bpm> }"}
        cues = {"mp3": "4 cue points v2 (1.1) {['intro'] 250 ['16'] 5810 ['tonoght the night'] 154314 ['3 x 32'] 185557}",
                "m4a": "4 cue points v2 (1.1) {['16'] 1541 ['tromba'] 9691 ['32'] 94417 ['28'] 174636}",
                "flac": "5 cue points v2 (1.1) {[''] 534 ['pump'] 180078 ['dance'] 183252 ['bass line'] 184308 "
                        "['32'] 235514}"}
        old = {"mp3": "4 cue points v1 (2.5) {250 5810 154314 185557}",
               "m4a": "4 cue points v1 (2.5) {1541 9691 94417 174636}"}
        for extension, grid in grids.items():
            out, _ = self.zaltag("dump", os.path.join(SAMPLES, "test_audio_1." + extension))
            lines = [line for line in out.splitlines() if "Serato" in line]
            for payload in (cues[extension], grid, old.get(extension, grid)):
                self.assertEqual(sum(line.endswith(payload) for line in lines), 1, payload)
            self.assertNotIn("UNREADABLE", out)

    def test_a_save_of_rekordbox_changes_marks_and_stamps_alone(self):
        with open(os.path.join(SAMPLES, "rbxml_test.xml"), "rb") as sample:
            file = self.write("rekordbox.xml", sample.read())
        before = tree(file)
        tracks = json.loads(self.zaltag("rekordbox", "tracks", "--rekordbox", file, "--json")[0])
        paths = [track.get("Location")[len("file://localhost"):] for track in before.iter("TRACK") if track.get("Name")]
        self.assertEqual([track["path"] for track in tracks], paths)
        for found, element in zip(tracks, before.iter("TRACK")):
            self.assertEqual([(cue["start"], cue["name"], cue["num"]) for cue in found["cues"]],
                             rekordbox_marks(element))
        # The third track's hot cues are what they become; the first two are rewritten as they are.
        hot = rekordbox_marks(list(before.iter("TRACK"))[2])
        self.zaltag("cues", "set", paths[2], "--to", "rekordbox-hot", "--rekordbox", file,
                    *(f"{start}={name}" for start, name, _ in hot))

        def expected(element, attributes, children):
            if element.tag == "DJ_PLAYLISTS":
                attributes = {key: value for key, value in attributes.items() if key in ("Version",)}
            if element.tag == "TRACK" and element.get("Name"):
                attributes.pop("DateModified", None)
                children = [child for child in children if child.tag != "POSITION_MARK"]
            if element.tag == "NODE":
                children = [child for child in children if child.get("Name") != "ZAL Cue Points"]
                if element.get("Name") == "ROOT":
                    attributes.pop("Count")
            return attributes, children

        after = tree(file)
        self.assertEqual(outline(after, expected), outline(before, expected))
        for old, new in list(zip(before.iter("TRACK"), after.iter("TRACK")))[:2]:
            self.assertEqual(rekordbox_marks(new), rekordbox_marks(old))
            self.assertEqual([mark.get("End") for mark in new.iter("POSITION_MARK") if mark.get("Type") == "4"],
                             [mark.get("End") for mark in old.iter("POSITION_MARK") if mark.get("Type") == "4"])

    def test_a_save_of_traktor_changes_cues_and_dates_alone(self):
        with open(os.path.join(SAMPLES, "test.nml"), "rb") as sample:
            file = self.write("collection.nml", sample.read())
        before = tree(file)
        options = ("--traktor", file, "--boot-volume", "C:")
        tracks = json.loads(self.zaltag("traktor", "tracks", *options, "--json")[0])
        paths = [track["path"] for track in tracks]
        shown = json.loads(self.zaltag("traktor", "track", paths[0], *options, "--json")[0])
        self.assertEqual((round(shown["cues"][2]["length"], 9), len(shown["beatTimes"])), (3.779531192, 553))
        location = before.findall("COLLECTION/ENTRY/LOCATION")[0]
        self.assertEqual(paths[0], location.get("DIR").replace("/:", "/") + location.get("FILE"))
        self.zaltag("cues", "set", paths[0], "--to", "traktor", *options, "30=x")
        after = tree(file)

        def rest(element, attributes, children):
            if element.find("LOCATION") is not None:
                attributes = {k: v for k, v in attributes.items() if not k.startswith("MODIFIED_")}
                children = [child for child in children if child.tag != "CUE_V2"]
            return attributes, children

        self.assertEqual(outline(after, rest), outline(before, rest))
        old, new = before.findall("COLLECTION/ENTRY")[1], after.findall("COLLECTION/ENTRY")[1]
        self.assertEqual(outline(new), outline(old), "nobody asked for it")
