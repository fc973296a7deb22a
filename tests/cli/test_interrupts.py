"""Ctrl-C while many files are written: they are done in their order, each is old or new, and nothing is left beside."""
import os
import signal
import subprocess

from mutagen.id3 import ID3

from support import ZALTAG, ProgramTest


class Interrupts(ProgramTest):
    def test_set(self):
        songs, cut = [self.mp3(f"{i:03d}.mp3", frames=400) for i in range(200)], 0
        audio = self.content(songs[0])
        self.zaltag("set", *songs, "title=old")
        for i in range(10):
            old, new = str(ID3(songs[-1])["TIT2"]), f"{i} " + "long " * (2000 * (i % 2) + 1)
            with subprocess.Popen([ZALTAG, "set", *songs, f"title={new}"], stderr=subprocess.PIPE, text=True) as program:
                while program.poll() is None and str(ID3(songs[i])["TIT2"]) != new:
                    pass
                program.send_signal(signal.SIGINT)
                err = program.communicate(timeout=600)[1]
            titles = [str(ID3(song)["TIT2"]) for song in songs]
            done = titles.count(new)
            self.assertEqual(titles, [new] * done + [old] * (len(songs) - done))
            self.assertEqual(program.returncode, 0 if done == len(songs) else -signal.SIGINT)
            self.assertEqual("interrupted" in err, done < len(songs), err)
            cut += done < len(songs)
            self.assertEqual(sorted(os.listdir(self.folder)), [os.path.basename(song) for song in songs])
            for song in songs:
                self.assertTrue(self.content(song).endswith(audio))
            self.zaltag("set", *songs, f"title={new}")
        self.assertGreater(cut, 0, "interrupted in the middle")
