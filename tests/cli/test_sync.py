"""Carrying cue points of a whole folder, checked with mutagen and Python's XML parser."""
import hashlib
import os
import re
import shutil
import subprocess
import time
import unittest

from collection_files import rekordbox, rekordbox_marks, serato_cues, traktor, traktor_cues, tree
from support import ZALTAG, ProgramTest

FORMATS = ("mp3", "m4a", "flac", "wav", "aiff")


class Sync(ProgramTest):
    def make(self, count):
        """That many audio files over five formats; every tenth has no cue points."""
        folder = self.path("music")
        os.makedirs(os.path.join(folder, "sub é"))
        for extension in FORMATS:
            subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=f=330:d=0.2",
                            self.path("seed." + extension)], check=True)
        songs = []
        for i in range(count):
            extension = FORMATS[i % len(FORMATS)]
            songs.append(os.path.join(folder, "sub é" if i % 2 else "", f"{i:03d} ü.{extension}"))
            shutil.copy(self.path("seed." + extension), songs[-1])
            # Two cue points in the wrong order, one between the beats of the collections' grids.
            if i % 10 != 9:
                self.zaltag("cues", "set", songs[-1], "--to", "serato", f"{20 + i % 200}.2=late {i}", f"{i % 200}.6=early <{i}>")
        return folder, songs

    def collections(self, songs):
        half = '<TEMPO Inizio="0" Bpm="60"/>'  # beats at whole seconds
        return (self.write("rekordbox.xml", rekordbox([(song, half if i % 2 else "") for i, song in enumerate(songs)])),
                self.write("collection.nml", traktor(songs)))

    def digests(self, songs):
        return [hashlib.md5(self.content(song)).hexdigest() for song in songs]

    def test_a_whole_folder_into_both_collections(self):
        folder, songs = self.make(500)
        before = self.digests(songs)
        rekordbox_file, traktor_file = self.collections(songs[:-7])
        sync = ("sync", folder, "--from", "serato", "--to", "rekordbox-hot", "--to", "traktor",
                "--rekordbox", rekordbox_file, "--traktor", traktor_file)
        unchanged = self.content(rekordbox_file), self.content(traktor_file)
        self.assertIn("to be written", self.zaltag(*sync, "--dry-run")[0])
        self.assertEqual((self.content(rekordbox_file), self.content(traktor_file)), unchanged)
        out = self.zaltag(*sync)[0]
        self.assertEqual(out, "500 files, 450 with cue points, 0 failed; "
                         "rekordbox-hot: 444 written, 0 unchanged, 6 not in the collection, 0 newer, 0 failed; "
                         "traktor: 444 written, 0 unchanged, 6 not in the collection, 0 newer, 0 failed\n")
        tracks = tree(rekordbox_file).findall("COLLECTION/TRACK")
        entries = tree(traktor_file).findall("COLLECTION/ENTRY")
        for i, (song, track, entry) in enumerate(zip(songs, tracks, entries)):
            cues = sorted(serato_cues(song)) if i % 10 != 9 else []
            snapped = [(round(ms / 1000) if i % 2 else ms / 1000, name) for ms, name in cues]
            self.assertEqual(rekordbox_marks(track), [(s, n, slot) for slot, (s, n) in enumerate(snapped)], song)
            self.assertEqual(traktor_cues(entry), [(ms / 1000, n, 0, slot) for slot, (ms, n) in enumerate(cues)], song)
        self.assertEqual(self.digests(songs), before)
        once = self.content(rekordbox_file), self.content(traktor_file)
        out = self.zaltag(*sync)[0]
        self.assertEqual(re.findall(r"(\d+) written, (\d+) unchanged", out), [("0", "444"), ("0", "444")])
        self.assertEqual((self.content(rekordbox_file), self.content(traktor_file)), once)
        self.check_kills(sync, rekordbox_file, traktor_file)

    def check_kills(self, sync, rekordbox_file, traktor_file):
        """Whenever the program is killed, both collections are the old ones or the new ones."""
        new = {rekordbox_file: None, traktor_file: None}
        for n in range(12):
            for file in new:
                text = re.sub(rb'Name="late|NAME="late', lambda m: m[0].replace(b"late", b"Late"), self.content(file))
                self.write(os.path.basename(file), text)
            with subprocess.Popen([ZALTAG, *sync], stdout=subprocess.DEVNULL) as running:
                time.sleep(0.01 + 0.012 * n)
                running.kill()
            for file in new:
                self.assertEqual(len(tree(file).findall("COLLECTION/*")), 493)
        self.zaltag(*sync)
        left = [name for name in os.listdir(self.folder) if name.endswith(".tmp")]
        self.assertEqual(left, [])

    def test_files_as_targets_and_nothing_cleared_by_accident(self):
        folder, songs = self.make(10)
        rekordbox_file, _ = self.collections(songs[:5])
        for song in songs:
            self.zaltag("record", song, 'zalCuePoints={"algorithm": 0, "cues": [{"time": 1000, "name": "own"}]}')
        sync = ("sync", folder, "--from", "rekordbox-hot", "--to", "zal", "--rekordbox", rekordbox_file)
        before = self.digests(songs)
        self.zaltag(*sync)
        self.assertEqual(self.digests(songs), before)
        out = self.zaltag(*sync, "--clear-empty")[0]
        self.assertIn("zal: 5 written", out)
        lists = [self.zaltag("cues", "list", song, "--from", "zal")[0] for song in songs]
        self.assertEqual(lists, [""] * 5 + ["1\town\n"] * 5)
        out, err = self.zaltag("sync", folder, "--from", "serato", "--to", "rekordbox", "--rekordbox",
                               self.path("missing.xml"), status=1)
        self.assertEqual((out, err.count("\n")), ("", 1))
        self.zaltag("sync", folder, "--from", "zal", "--to", "zal", status=2)

    def test_what_serato_has_no_room_for_is_named(self):
        song = self.mp3()
        self.zaltag("cues", "set", song, "--to", "zal", *(f"{i}=c{i}" for i in range(10)))
        out, err = self.zaltag("sync", self.folder, "--from", "zal", "--to", "serato")
        self.assertEqual([line.split(": ", 2)[2] for line in err.splitlines() if line.startswith("zaltag:")],
                         ["serato has no room for 8 'c8'", "serato has no room for 9 'c9'"])
        self.assertEqual(len(serato_cues(song)), 8)


if __name__ == "__main__":
    unittest.main()
