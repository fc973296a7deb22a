"""The programs of examples/, run over files made for them; what they write is read by others."""
import os
import subprocess

from mutagen.id3 import ID3

from collection_files import rekordbox, serato_cues, traktor
from support import ProgramTest
from test_artwork import png


class Examples(ProgramTest):
    def run_example(self, name, *arguments, status=0):
        done = subprocess.run([os.path.join(os.environ["EXAMPLES"], name), *arguments], capture_output=True, text=True, timeout=600,
                              env={**os.environ, "XDG_CONFIG_HOME": self.path("config")})
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout

    def test_all(self):
        song, mine = self.mp3(), self.write("mine.png", png(2))
        self.run_example("write_serato_cues", song, "0.5", "Intro", "64", "Drop")
        self.assertEqual(serato_cues(song), [(500, "Intro"), (64000, "Drop")])
        self.assertEqual(self.run_example("read_cues", song), "serato\t0.5 s\tIntro\nserato\t64 s\tDrop\n")
        self.run_example("read_cues", self.path("none.mp3"), status=1)
        self.assertIn(", customised\n", self.run_example("covers", song, mine))
        self.assertEqual(len(ID3(song).getall("APIC")), 1)
        self.run_example("covers", song, song, status=1)
        xml, nml = self.write("rekordbox.xml", rekordbox([(song, "")])), self.write("collection.nml", traktor([song]))
        self.assertEqual(self.run_example("fill_collections", xml, nml, song), f"{song}: 4 marks in Rekordbox, 2 cues in Traktor\n")
        self.assertEqual(self.run_example("main_queue", xml), "1 tracks\n" * 2)
        out = self.run_example("services", song)
        self.assertTrue(out.startswith("kept: /nowhere/rekordbox.xml\n") and "\nnot loaded\n" in out, out)
        self.assertFalse(os.path.exists(self.path("config")), "the settings are the host's")
        for _ in range(2):  # the second run finds the folder by itself
            self.assertEqual(self.run_example("sandbox", self.folder), f"open 1\n{xml}: 1 tracks\n")
