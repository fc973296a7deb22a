"""Ctrl-C at any moment of a command that writes: every file is whole, old or new, and nothing is left beside it."""
import os
import random
import signal
import subprocess
import time

from mutagen.id3 import ID3, ID3NoHeaderError

from collection_files import rekordbox, rekordbox_marks, tree
from support import ZALTAG, ProgramTest

ROUNDS = 25


class Interrupts(ProgramTest):
    def setUp(self):
        super().setUp()
        self.songs = [self.mp3(f"{i:02d}.mp3", frames=400) for i in range(40)]
        self.random = random.Random(7)

    def interrupt(self, seconds, *arguments):
        """Runs the program and interrupts it. Gives its exit status and messages."""
        with subprocess.Popen([ZALTAG, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE) as program:
            time.sleep(seconds)
            program.send_signal(signal.SIGINT)
            err = program.communicate(timeout=60)[1].decode()
        self.assertIn(program.returncode, (0, -signal.SIGINT), err)
        return program.returncode, err

    def duration(self, *arguments):
        start = time.monotonic()
        self.zaltag(*arguments)
        return time.monotonic() - start

    def titles(self):
        def title(song):
            try:
                return str(ID3(song)["TIT2"])
            except ID3NoHeaderError:
                return ""
        return [title(song) for song in self.songs]

    def test_set(self):
        audio = self.content(self.songs[0])
        whole = self.duration("set", *self.songs, "title=first")
        cut, before = 0, "first"
        for i in range(ROUNDS):
            after = f"{i} " + "long " * self.random.choice((1, 2000))
            status, err = self.interrupt(self.random.uniform(0, whole), "set", *self.songs, f"title={after}")
            titles = self.titles()
            done = titles.count(after)
            self.assertEqual(titles, [after] * done + [before] * (len(titles) - done), "in order, each old or new")
            cut += 0 < done < len(titles)
            self.assertEqual("interrupted" in err, status != 0 and err != "", err)
            self.assertEqual(sorted(os.listdir(self.folder)), [os.path.basename(song) for song in self.songs])
            for song in self.songs:
                self.assertTrue(self.content(song).endswith(audio))
            self.zaltag("set", *self.songs, f"title={after}")
            before = after
        self.assertGreater(cut, 2, "interrupted in the middle")

    def test_sync(self):
        self.zaltag("cues", "set", *self.songs, "--to", "serato", "1=One", "2=Two")
        before = [self.content(song) for song in self.songs]
        old = rekordbox([(song, "") for song in self.songs])
        collection = self.write("rekordbox.xml", old)
        command = ("sync", self.folder, "--from", "serato", "--to", "rekordbox-hot", "--rekordbox", collection)
        whole = self.duration(*command)
        kept = 0
        for _ in range(ROUNDS):
            self.write("rekordbox.xml", old)
            self.interrupt(self.random.uniform(0, whole), *command)
            if self.content(collection) == old:
                kept += 1
            else:
                marks = [rekordbox_marks(track) for track in tree(collection).findall("COLLECTION/TRACK")]
                self.assertEqual(marks, [[(1, "One", 0), (2, "Two", 1)]] * len(self.songs), "whole")
            self.assertEqual([name for name in os.listdir(self.folder) if name.startswith(".")], [])
        self.assertGreater(kept, 0, "interrupted before the end")
        self.assertEqual([self.content(song) for song in self.songs], before)

    def test_report(self):
        page = self.write("page.html", b"old")
        whole = self.duration("report", self.folder, "-o", self.path("first.html"))
        expected = sorted([*os.listdir(self.folder)])
        kept = 0
        for _ in range(ROUNDS):
            self.write("page.html", b"old")
            self.interrupt(self.random.uniform(0, whole), "report", self.folder, "-o", page)
            kept += self.content(page) == b"old"
            self.assertTrue(self.content(page) == b"old" or self.content(page).endswith(b"</html>\n"), "whole")
            self.assertEqual(sorted(os.listdir(self.folder)), expected)
        self.assertGreater(kept, 0, "interrupted before the end")
