"""The collections through the Python module, beside what the program does, and the event loop."""
import asyncio
import contextlib
import io
import os
import pathlib
import re
import shutil
import subprocess
import sys
import time
import unittest

import zaltag
from collection_files import rekordbox, serato_cues, traktor
from test_files import FilesTest


class Collections(FilesTest):
    def setUp(self):
        super().setUp()
        self.music = self.folder / "music"
        self.music.mkdir()
        self.songs = [self.mp3(f"music/{i} é.mp3") for i in range(6)]
        for i, song in enumerate(self.songs[:5]):
            with zaltag.open(song) as tag:
                tag.serato_cue_points = [zaltag.CuePoint(20.2 + i, f"late {i}"), zaltag.CuePoint(1.6, "early <&>")]
        marks = '<TEMPO Inizio="0" Bpm="60"/>'
        self.files = self.folder / "rekordbox.xml", self.folder / "collection.nml"
        self.files[0].write_bytes(rekordbox([(str(song), marks) for song in self.songs[:4]]))
        self.files[1].write_bytes(traktor([str(song) for song in self.songs]))
        self.use(*self.files)

    def wait(self, condition):
        """Runs what comes for the main queue until something is true."""
        end = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), end, "waited a minute")
            zaltag.run_pending()

    def use(self, rekordbox_file, traktor_file):
        zaltag.use_collections(rekordbox=rekordbox_file, traktor=traktor_file)
        for collection in (zaltag.rekordbox(), zaltag.traktor()):
            collection.load()

    def test_the_blocks_of_the_guide_run(self):
        guide = pathlib.Path(__file__).parents[2] / "docs" / "guides" / "python.md"
        blocks = re.findall(r"```python\n(.*?)```", guide.read_text().replace('"Music"', '"music"'), re.S)
        shutil.copy(self.songs[5], self.folder / "song.mp3")
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.folder)
        names = {}
        with contextlib.redirect_stdout(io.StringIO()):
            for block in blocks:
                code = compile(block, str(guide), "exec")
                if "ProcessPoolExecutor" not in block:  # its functions are to stand in a module
                    exec(code, names)
            asyncio.run(names["main"]())
        for file in self.files:
            self.assertIn(b"early", file.read_bytes())
        self.assertEqual([name for _, name in serato_cues("song.mp3")], ["Start", "Drop"])

    def test_lookups(self):
        collection = zaltag.rekordbox()
        self.assertEqual((len(collection), collection.path, collection.is_loaded), (4, self.files[0], True))
        self.assertEqual([track.path for track in collection], self.songs[:4])
        self.assertEqual(len(collection[self.songs[0]].beat_times), 300)
        self.assertNotIn(self.songs[5], collection)
        self.assertIsNone(collection.get(self.songs[5]))
        with self.assertRaises(KeyError):
            collection[self.songs[5]]
        collection.set_cue_points(self.songs[0], [zaltag.CuePoint(2.1, "a"), zaltag.CuePoint(1)], hot=True, memory=True)
        self.wait(lambda: collection.stage == 1)
        collection.save()
        self.assertEqual([(cue.time, cue.name, cue.slot) for cue in collection[self.songs[0]].cues],
                         [(1, "", -1), (2, "a", -1), (1, "", 0), (2, "a", 1)])

    def test_progress_is_told(self):
        stages, collection = [], zaltag.traktor()
        collection.set_progress_sink(stages.append)
        self.addCleanup(collection.set_progress_sink, None)
        collection.set_cue_points(self.songs[0], [zaltag.CuePoint(1)])
        self.wait(lambda: stages == [1])
        collection.save()
        self.wait(lambda: stages[-1] == 0)
        self.assertEqual(stages, sorted(stages[:-1]) + [0])

    def test_errors_have_code_and_path(self):
        missing = self.folder / "missing.xml"
        with self.assertRaises(zaltag.CollectionError) as raised:
            self.use(missing, None)
        self.assertEqual((raised.exception.code, raised.exception.path), (zaltag.ErrorCode.REKORDBOX_UNREADABLE, missing))
        collection = zaltag.rekordbox()
        self.assertRaises(zaltag.CollectionError, collection.set_cue_points, self.songs[0], [])
        self.assertRaises(zaltag.CollectionError, zaltag.Rekordbox, missing)
        self.assertRaises(KeyError, zaltag.traktor().set_cue_points, self.folder / "no.mp3", [])
        self.assertRaisesRegex(TypeError, "cue_points", zaltag.traktor().set_cue_points, self.songs[0], [1])

    def test_several_collections_and_another_one(self):
        other = self.folder / "other.xml"
        other.write_bytes(rekordbox([(str(self.songs[5]), '<TEMPO Inizio="0" Bpm="60"/>')]))
        one, two = zaltag.Rekordbox(self.files[0]), zaltag.Rekordbox(other)
        two.set_cue_points(self.songs[5], [zaltag.CuePoint(1, "a")])
        two.save()
        self.assertEqual(([track.path for track in two], len(one), len(zaltag.rekordbox())), ([self.songs[5]], 4, 4))
        self.assertEqual(two[self.songs[5]].cues[0].name, "a")
        self.assertEqual((two[self.songs[5]].attributes["Odd"], two[self.songs[5]].length, two[self.songs[5]].title),
                         ("&é", 300, None))
        track = zaltag.Traktor(self.files[1])[self.songs[0]]
        self.assertEqual((track.title, track.tempo, track.attributes["LOCATION/VOLUME"]), ("t", None, "Macintosh HD"))
        zaltag.use_collections(rekordbox=other)
        self.assertEqual([track.path for track in zaltag.rekordbox()], [self.songs[5]])

    def test_saving_on_an_event_loop(self):
        async def main():
            with self.assertRaises(RuntimeError):
                await zaltag.save_async(zaltag.traktor())
            with zaltag.main_queue_on():
                for collection in (zaltag.rekordbox(), zaltag.traktor()):
                    collection.set_cue_points(self.songs[0], [zaltag.CuePoint(3, "async")])
                saving = asyncio.ensure_future(zaltag.save_async(zaltag.rekordbox(), zaltag.traktor()))
                await asyncio.sleep(0)
                self.assertFalse(saving.done(), "the loop goes on meanwhile")
                await saving
                collection = zaltag.rekordbox()
                collection.set_cue_points(self.songs[0], [zaltag.CuePoint(4)])
                self.files[0].write_bytes(b"no collection")
                with self.assertRaises(zaltag.CollectionError):
                    await zaltag.save_async(zaltag.rekordbox())
                zaltag.rekordbox().cancel()

        asyncio.run(main())
        self.assertIn(b"async", self.files[1].read_bytes())
        self.assertEqual(self.files[0].read_bytes(), b"no collection")

    def test_the_process_ends_well_with_requests_and_callbacks_left(self):
        text = ("import asyncio, sys, zaltag\nzaltag.use_collections(rekordbox=sys.argv[1])\nzaltag.set_log_sink(print)\n"
                "async def main():\n  queue = zaltag.main_queue_on()\n  queue.__enter__()\n"
                "  zaltag.rekordbox().set_cue_points(sys.argv[2], [zaltag.CuePoint(1)])\n"
                "  asyncio.ensure_future(zaltag.save_async(zaltag.rekordbox()))\n  await asyncio.sleep(0)\nasyncio.run(main())\n")
        for _ in range(10):
            done = subprocess.run([sys.executable, "-c", text, self.files[0], self.songs[0]], capture_output=True, timeout=600, check=False)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertNotIn(b"Traceback", done.stderr)


if __name__ == "__main__":
    unittest.main()
