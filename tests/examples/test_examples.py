"""The programs of examples/, run over files made for them and judged by other readers."""
import os
import subprocess

from mutagen.id3 import APIC, ID3

from collection_files import rekordbox, rekordbox_marks, serato_cues, traktor, traktor_cues, tree
from support import ProgramTest
from test_artwork import png

EXAMPLES = os.environ["EXAMPLES"]


class Examples(ProgramTest):
    def run_example(self, name, *arguments, status=0):
        done = subprocess.run([os.path.join(EXAMPLES, name), *arguments], capture_output=True, text=True, timeout=60,
                              env={**os.environ, "XDG_CONFIG_HOME": self.path("config")})
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout

    def test_cues(self):
        song = self.mp3()
        out = self.run_example("write_serato_cues", song, "0.5", "Intro", "64", "Drop")
        self.assertEqual(out, "name: Intro, time: 0.5\nname: Drop, time: 64\n")
        self.assertEqual(serato_cues(song), [(500, "Intro"), (64000, "Drop")])
        self.assertEqual(self.run_example("read_cues", song), "serato\t0.5 s\tIntro\nserato\t64 s\tDrop\n")
        self.run_example("read_cues", self.path("none.mp3"), status=1)

    def test_covers(self):
        song, mine = self.mp3(), self.write("mine.png", png(2))
        tags = ID3()
        tags.add(APIC(encoding=0, mime="image/png", type=3, data=png(1)))
        tags.save(song)
        self.assertIn(", customised\n", self.run_example("covers", song, mine))
        self.assertEqual(len(ID3(song).getall("APIC")), 2)
        self.assertNotIn("customised", self.run_example("covers", song))
        self.assertEqual(len(ID3(song).getall("APIC")), 1)
        self.run_example("covers", song, song, status=1)

    def test_collections(self):
        song = self.mp3()
        self.run_example("write_serato_cues", song, "1", "One", "2.5", "Two")
        xml, nml = self.write("rekordbox.xml", rekordbox([(song, "")])), self.write("collection.nml", traktor([song]))
        out = self.run_example("fill_collections", xml, nml, song)
        self.assertEqual(out, f"{song}: 4 marks in Rekordbox, 2 cues in Traktor\n")
        self.assertEqual(len(rekordbox_marks(tree(xml).find("COLLECTION/TRACK"))), 4)
        self.assertEqual([cue[:2] for cue in traktor_cues(tree(nml).find("COLLECTION/ENTRY"))], [(1, "One"), (2.5, "Two")])
        self.assertEqual(self.run_example("main_queue", xml), "1 tracks\n")

    def test_host(self):
        song = self.mp3()
        out = self.run_example("services", song)
        self.assertTrue(out.startswith("kept: /nowhere/rekordbox.xml\n"), out)
        self.assertRegex(out, "(?m)^log: .*rekordbox.*\nnot loaded\n\\(no title\\)$")
        self.assertFalse(os.path.exists(self.path("config")), "the settings are the host's")
        self.write("rekordbox.xml", rekordbox([(song, "")]))
        for _ in range(2):  # the second run finds the folder by itself
            out = self.run_example("sandbox", self.folder)
            self.assertEqual(out, f"open 1\n{self.path('rekordbox.xml')}: 1 tracks\n")
