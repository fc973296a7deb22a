"""Carrying cue points of a whole folder, checked with mutagen and Python's XML parser."""
import hashlib
import os
import re
import shutil
import subprocess
import tempfile

import mutagen

from collection_files import rekordbox, rekordbox_marks, serato_cues, traktor, traktor_cues, tree
from support import ProgramTest

FORMATS = ("mp3", "m4a", "flac", "wav", "aiff")


class Sync(ProgramTest):
    def make_folder(self, count):
        """That many audio files over five formats; every tenth has no cue points."""
        folder = self.path("music")
        os.makedirs(os.path.join(folder, "sub é"))
        for extension in FORMATS:
            self.make("seed." + extension)
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
        folder, songs = self.make_folder(20)
        before = self.digests(songs)
        rekordbox_file, traktor_file = self.collections(songs[:-3])
        sync = ("sync", folder, "--from", "serato", "--to", "rekordbox-hot", "--to", "traktor",
                "--rekordbox", rekordbox_file, "--traktor", traktor_file)
        unchanged = self.content(rekordbox_file), self.content(traktor_file)
        self.assertIn("to be written", self.zaltag(*sync, "--dry-run")[0])
        self.assertEqual((self.content(rekordbox_file), self.content(traktor_file)), unchanged)
        out = self.zaltag(*sync)[0]
        counts = "16 written, 0 unchanged, 2 not in the collection, 0 newer, 0 failed"
        self.assertEqual(out, f"20 files, 18 with cue points, 0 failed; rekordbox-hot: {counts}; traktor: {counts} "
                              "(cue points: 32 in another colour or none)\n")
        tracks = tree(rekordbox_file).findall("COLLECTION/TRACK")
        entries = tree(traktor_file).findall("COLLECTION/ENTRY")
        for i, (song, track, entry) in enumerate(zip(songs, tracks, entries)):
            cues = sorted(serato_cues(song)) if i % 10 != 9 else []
            snapped = [(round(ms / 1000) if i % 2 else ms / 1000, name) for ms, name in cues]
            self.assertEqual(rekordbox_marks(track), [(s, n, 1 - i) for i, (s, n) in enumerate(snapped)], "on Serato's pads")
            self.assertEqual(traktor_cues(entry), [(ms / 1000, n, 0, 1 - i) for i, (ms, n) in enumerate(cues)], song)
        self.assertEqual(self.digests(songs), before)
        once = self.content(rekordbox_file), self.content(traktor_file)
        out = self.zaltag(*sync)[0]
        self.assertEqual(re.findall(r"(\d+) written, (\d+) unchanged", out), [("0", "16")] * 2)
        self.assertEqual((self.content(rekordbox_file), self.content(traktor_file)), once)

    def test_files_as_targets_and_nothing_cleared_by_accident(self):
        folder, songs = self.make_folder(10)
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

    def test_what_is_left_alone_is_named_and_counted(self):
        songs = [self.mp3(name) for name in ("new.mp3", "none.mp3", "old.mp3")]
        for song in songs:
            self.zaltag("cues", "set", song, "--to", "serato", "1=a")
        parts = [traktor([song], date) for song, date in zip(songs, (("2199/1/1", "0"), None, ("1601/1/1", "0")))]
        entries = b"".join(re.search(rb"<ENTRY .*?</ENTRY>|<ENTRY  .*?</ENTRY>", part, re.S)[0] for part in parts)
        file = self.write("collection.nml", re.sub(rb"<ENTRY.*</ENTRY>", lambda _: entries, parts[0], flags=re.S))
        sync = ("sync", *songs, "--from", "serato", "--to", "traktor", "--traktor", file)
        for dry in ("--dry-run",), ():
            out, err = self.zaltag(*sync, *dry, status=1)
            self.assertRegex(out, "traktor: 1 (to be )?written, 0 unchanged, 0 not in the collection, 2 newer, 0 failed")
            self.assertEqual(len(re.findall("was left alone: its entry in the Traktor collection (?:is newer|has no date)",
                                            err)), 2)
        folder = tempfile.mkdtemp(prefix="zaltag-")  # from which programs may be started
        self.addCleanup(shutil.rmtree, folder)
        program = shutil.copy("/bin/sleep", os.path.join(folder, "Traktor"))
        before = self.content(file)
        with subprocess.Popen([program, "60"]) as running:
            for dry in ("--dry-run",), ():
                self.assertIn("Please quit Traktor", self.zaltag(*sync, *dry, status=1)[1])
            running.kill()
        self.assertEqual(self.content(file), before)

    def test_a_dry_run_of_files_writes_nothing_and_damage_clears_nothing(self):
        song = self.mp3()
        self.zaltag("cues", "set", song, "--to", "serato", "1=a")
        before, sync = self.content(song), ("sync", song, "--from", "serato", "--to", "zal")
        self.assertIn("zal: 1 to be written", self.zaltag(*sync, "-n")[0])
        self.assertEqual(self.content(song), before)
        self.zaltag(*sync)
        file = mutagen.File(song)
        for names in ("Serato", ""):  # the own record is damaged last
            for frame in file.tags.getall("GEOB"):
                if frame.desc.startswith(names):
                    frame.data = b"damaged"
            file.save()
            if names:
                self.assertIn("zal: 0 written", self.zaltag(*sync, "--clear-empty")[0])
                self.assertEqual(self.zaltag("cues", "list", song, "--from", "zal")[0], "1\ta\n")
        err = self.zaltag("sync", song, "--from", "zal", "--to", "serato", "--clear-empty", status=1)[1]
        self.assertIn("its cue points of zal cannot be read", err)

    def test_one_target_fails_and_the_others_are_served(self):
        missing, song = self.path("missing.mp3"), self.mp3()
        rekordbox_file = self.write("rekordbox.xml", rekordbox([(missing, '<POSITION_MARK Start="1" Num="0" Name="a"/>')]))
        traktor_file = self.write("collection.nml", traktor([missing]))
        collections = ("--rekordbox", rekordbox_file, "--traktor", traktor_file)
        out = self.zaltag("sync", missing, "--from", "rekordbox-hot", "--to", "serato", "--to", "traktor", *collections,
                          status=1)[0]
        self.assertIn("serato: 0 written, 0 unchanged, 1 failed; traktor: 1 written", out)
        for targets in (("rekordbox",), ("rekordbox-memory", "rekordbox-hot"), ("rekordbox-hot",)):
            words = [word for target in targets for word in ("--to", target)]
            self.zaltag("sync", song, "--from", "rekordbox-hot", *words, *collections, status=2)
        self.zaltag("sync", song, "--from", "serato", "--to", "rekordbox", "--rekordbox", "", status=2)

    def test_what_has_no_room_is_named(self):
        songs = [self.mp3(name) for name in ("e\u0301.mp3", "\u00e9.mp3")]
        for song in songs:
            self.zaltag("cues", "set", song, "--to", "zal", *(f"{i}=c{i}" for i in range(10)))
        file = self.write("rekordbox.xml", rekordbox([(songs[0], "")]))
        sync = ("sync", self.folder, "--from", "zal", "--to")
        out, err = self.zaltag(*sync, "rekordbox", "--rekordbox", file, status=1)
        self.assertIn("rekordbox: 1 written, 0 unchanged, 0 not in the collection, 0 newer, 1 failed", out)
        self.assertIn("knows it and another file as one", err)
        _, err = self.zaltag("sync", songs[0], "--from", "zal", "--to", "serato")
        self.assertEqual([line.split(": ", 2)[2] for line in err.splitlines() if line.startswith("zaltag:")],
                         ["serato has no room for 8 'c8'", "serato has no room for 9 'c9'"])
        self.assertEqual(len(serato_cues(songs[0])), 8)
