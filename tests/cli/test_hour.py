"""The first hour of a DJ: collections of other machines, a folder here, and the way there and back."""
import glob
import json
import os
import unicodedata

from collection_files import rekordbox, rekordbox_marks, serato_cues, traktor, traktor_cues, tree
from support import ProgramTest

GRID = '<TEMPO Inizio="0" Bpm="60"/>'


class Hour(ProgramTest):
    def setUp(self):
        super().setUp()
        os.makedirs(self.path("usb/House"))
        names = ("House/one.mp3", "House/zwei é.mp3", "three.mp3", "four.mp3")
        self.songs = [self.mp3("usb/" + name) for name in names]
        for i, song in enumerate(self.songs):
            self.zaltag("cues", "set", song, "--to", "serato", f"{10 + i}.2=in", "1:0=out")
        windows = ["/C:/DJ/Music/" + name for name in names[:3]]
        mac = ["/DJ/Music/" + name for name in names[:3]]
        self.rekordbox = self.write("windows.xml", rekordbox([(path, GRID) for path in windows]))
        self.traktor = self.write("mac.nml", traktor(mac, boot_volume="Big Disk"))
        self.before = self.content(self.rekordbox), self.content(self.traktor)

    def sync(self, *words, status=0):
        return self.zaltag("sync", self.path("usb"), "--from", "serato", "--to", "rekordbox-hot", "--to", "traktor",
                           "--rekordbox", self.rekordbox, "--traktor", self.traktor, *words, status=status)

    def test_from_the_first_look_to_the_way_back(self):
        out, err = self.sync("--dry-run", status=1)
        self.assertIn(f"{self.songs[3]}: not in the Rekordbox collection\n", out)
        usb = self.path("usb")
        for where in ("C:/DJ/Music", "/Volumes/Big Disk/DJ/Music"):
            self.assertIn(f"lie below {where}; try --map '{where}={usb}'", err)
        maps = ("--map", rf"C:\DJ\Music={usb}", "--map", f"/DJ/Music={usb}")
        out, err = self.sync(*maps, "--dry-run")
        self.assertIn(f"{self.songs[0]}: rekordbox-hot (1 of 2 moved to the beat grid)\n"
                      '  A 10.2 "in" CC0000 -> 10\n  B 60 "out" CC8800\n', out)
        self.assertEqual((self.content(self.rekordbox), self.content(self.traktor)), self.before)

        out, err = self.sync(*maps)
        counts = "3 written, 0 unchanged, 1 not in the collection, 0 newer, 0 failed"
        self.assertEqual(out, f"4 files, 4 with cue points, 0 failed; rekordbox-hot: {counts}; traktor: {counts} "
                              "(cue points: 6 in another colour or none)\n")
        imported = self.path("rekordbox_zalcues_001.xml")
        self.assertIn(f"now import {imported} in Rekordbox", err)
        self.assertEqual(err.count("failed to get audio file mod date"), 1)
        for file in (self.rekordbox, imported):
            tracks = tree(file).findall("COLLECTION/TRACK")
            self.assertEqual([rekordbox_marks(track) for track in tracks],
                             [[(10 + i, "in", 0), (60, "out", 1)] for i in range(3)])
        self.assertEqual([traktor_cues(entry) for entry in tree(self.traktor).findall("COLLECTION/ENTRY")],
                         [[(10.2 + i, "in", 0, 0), (60, "out", 0, 1)] for i in range(3)])
        again = self.sync(*maps)[0]
        self.assertEqual(again.count("0 written, 3 unchanged"), 2)

        copies = [glob.glob(glob.escape(file) + ".before-zaltag-*") for file in (self.rekordbox, self.traktor)]
        self.assertEqual([len(some) for some in copies], [1, 1])
        self.assertIn(self.rekordbox, self.zaltag("undo", "--list")[0])
        with open(self.traktor, "ab") as file:
            file.write(b"<!-- later -->")
        err = self.zaltag("undo", status=1)[1]
        self.assertIn(f"{self.traktor}: was changed since: left alone; as it was before: {copies[1][0]}",
                      err)
        self.assertEqual(self.content(self.rekordbox), self.before[0])
        self.assertFalse(os.path.exists(imported))

    def test_two_candidates_are_none(self):
        twins = [self.mp3("usb/TWIN.mp3"), self.mp3("usb/Twin.mp3"), self.mp3("usb/single.mp3"), self.mp3("usb/both.mp3")]
        paths = [self.path("usb/twin.mp3"), self.path("usb/SINGLE.mp3"), "/C:/m/both.mp3", "/Volumes/C:/m/both.mp3"]
        file = self.write("rekordbox.xml", rekordbox([(path, GRID) for path in paths]))
        for song in twins:
            self.zaltag("cues", "set", song, "--to", "serato", "1=a")
        done = self.zaltag("sync", *twins, "--from", "serato", "--to", "rekordbox", "--rekordbox", file, "--json",
                           "--map", f"c:/m={self.path('usb')}", status=1)
        rows = json.loads(done[0])
        self.assertEqual([(row["status"], row["match"]) for row in rows],
                         [("failed", None), ("failed", None), ("failed", None), ("written", "case")])
        self.assertEqual(rows[-1]["path"], twins[2])
        self.assertIn("two entries of the Rekordbox collection stand for it", done[1])

    def test_a_new_collection_and_wrong_input(self):
        new = self.path("new.xml")
        sync = ("sync", self.path("usb"), "--from", "serato", "--to", "rekordbox-hot", "--map", f"C:/DJ/Music={self.path('usb')}")
        self.zaltag(*sync, "--rekordbox", self.rekordbox, "--output", new)
        self.assertEqual(self.content(self.rekordbox), self.before[0])
        self.assertEqual(len(rekordbox_marks(tree(new).find("COLLECTION/TRACK"))), 2)
        for name, other in (("rekordbox", self.traktor), ("traktor", self.rekordbox)):
            right = {"rekordbox": "Traktor", "traktor": "Rekordbox"}[name]
            self.assertIn(f"this is a {right} collection: use --{right.lower()}",
                          self.zaltag(name, "info", f"--{name}", other, status=1)[1])
        os.makedirs(self.path("usb/.trash"))
        self.mp3("usb/.trash/gone.mp3"), self.mp3("usb/._one.mp3")
        self.assertEqual(self.zaltag("scan", self.path("usb"))[0].count(".mp3"), 4)
        self.assertEqual(self.zaltag("help", "sync")[0], self.zaltag("sync", "--help")[0])

    def test_from_collection_to_collection_without_a_file(self):
        names = [f"Set {i}/Träck {i}.mp3" for i in range(4)]
        cues = '<CUE_V2 NAME="in" TYPE="0" START="1200" LEN="0" REPEATS="-1" HOTCUE="0"></CUE_V2>'
        source = self.write("mac.nml", traktor(["/DJ/" + name for name in names[:3]], boot_volume="C:", inner=cues))
        target = self.write("windows.xml", rekordbox([("/D:/music/" + unicodedata.normalize("NFD", name), GRID)
                                                      for name in names[1:]]))
        sync = ("sync", "--all", "--from", "traktor", "--to", "rekordbox-hot", "--traktor", source, "--rekordbox", target)
        err = self.zaltag(*sync, status=1)[1]
        self.assertIn("lie below D:/music; try --map 'D:/music=C:/DJ'", err)
        out = self.zaltag(*sync, "--map", r"D:\music=c:\dj", "--keep-times")[0]
        self.assertEqual(out, "3 tracks, 3 with cue points, 0 failed; rekordbox-hot: 2 written, 0 unchanged, "
                              "1 not in the collection, 0 newer, 0 failed\n")
        self.assertEqual([rekordbox_marks(track) for track in tree(target).findall("COLLECTION/TRACK")],
                         [[(1.2, "in", 0)], [(1.2, "in", 0)], []])
        for wrong in ((self.folder,), ("--to", "serato")):
            self.zaltag(*sync, *wrong, status=2)

    def test_moved_files_and_entries_without_a_date(self):
        song = self.mp3("usb/House/moved.mp3", frames=50)
        self.zaltag("cues", "set", song, "--to", "serato", "1=a")
        size = os.path.getsize(song)
        entries = [("/gone/MOVED.mp3", size, "x"), ("/gone/other.mp3", size, "x"), ("/gone/b/moved.mp3", size + 4096, "x")]
        file = self.write("moved.xml", rekordbox([(path, "") for path, _, _ in entries]))
        for _, size, _ in entries:
            self.write("moved.xml", self.content(file).replace(b" TotalTime", b' Size="%d" Bpm' % size, 1))
        info = f'<INFO FILESIZE="{os.path.getsize(song) // 1024}"></INFO>'
        nml = self.write("moved.nml", traktor(["/gone/moved.mp3"], modified=None, inner=info))
        sync = ("sync", song, "--from", "serato", "--to")
        self.zaltag(*sync, "rekordbox", "--rekordbox", file, status=1)
        row, = json.loads(self.zaltag(*sync, "rekordbox", "--rekordbox", file, "--relocate", "--json")[0])
        self.assertEqual((row["status"], row["match"]), ("written", "relocated"))
        self.assertEqual(len(rekordbox_marks(tree(file).find("COLLECTION/TRACK"))), 2)
        err = self.zaltag(*sync, "traktor", "--traktor", nml, "--relocate", status=1)[1]
        self.assertIn("has no date (--force-dates)", err)
        self.zaltag(*sync, "traktor", "--traktor", nml, "--relocate", "--force-dates")
        self.assertEqual(len(traktor_cues(tree(nml).find("COLLECTION/ENTRY"))), 1)

    def test_moved_files_are_known_by_title_artist_and_length(self):
        songs = [self.make("usb/House/t." + extension) for extension in ("mp3", "m4a", "flac", "wav", "aiff")]
        songs.append(self.mp3("usb/House/plain.mp3", frames=40))
        for i, song in enumerate(songs):
            self.zaltag("set", song, f"title=T{i}", "artist=A")
            self.zaltag("cues", "set", song, "--to", "zal", "0=a")
        tracks = rekordbox([(f"/gone/{i}.mp3", "") for i in range(len(songs))]).decode()
        for i in range(len(songs)):
            tracks = tracks.replace('TotalTime="300"', f'Name="T{i}" Artist="A" totaltime="{2 if i else 4}"', 1)
        file = self.write("tagged.xml", tracks.replace("totaltime", "TotalTime").encode())
        rows = json.loads(self.zaltag("sync", *songs, "--from", "zal", "--to", "rekordbox", "--rekordbox", file, "--relocate",
                                      "--dry-run", "--json")[0])
        self.assertEqual([row["match"] for row in rows], [None] + ["relocated"] * 5)

    def test_the_boot_volume_is_the_one_whose_files_are_here(self):
        file = self.write("mac.nml", traktor(self.songs[:2], boot_volume="Big Disk"))
        rows = json.loads(self.zaltag("sync", *self.songs[:2], "--from", "serato", "--to", "traktor", "--traktor", file,
                                      "--json")[0])
        self.assertEqual([(row["status"], row["match"]) for row in rows], [("written", "path")] * 2)

    def test_cue_points_in_audio_files_are_taken_back(self):
        songs = [self.make("usb/House/new." + extension) for extension in ("mp3", "m4a", "flac", "wav", "aiff")]
        for song in songs:
            self.zaltag("cues", "set", song, "--to", "zal", "1=new", "2=b")
            self.zaltag("cues", "set", song, "--to", "serato", "5=old")
        self.zaltag("sync", *songs, "--from", "zal", "--to", "serato")
        self.assertEqual({len(serato_cues(song)) for song in songs}, {2})
        self.zaltag("set", songs[0], "title=other")
        self.zaltag("cues", "set", songs[1], "--to", "serato", "7=later")
        out, err = self.zaltag("undo", status=1)
        self.assertEqual(err, f"zaltag: {songs[1]}: its cue points were changed since: left alone\n")
        self.assertEqual([serato_cues(song) for song in songs], [[(5000, "old")], [(7000, "later")]] + [[(5000, "old")]] * 3)
        self.assertIn("there is no run", self.zaltag("undo", status=1)[1])
