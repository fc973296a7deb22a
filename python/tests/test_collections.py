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
import unittest

import zaltag
from collection_files import rekordbox, serato_cues, traktor
from test_files import FilesTest

PROGRAM = os.environ["ZALTAG"]


def sync(folder):
    """What `zaltag sync FOLDER --from serato --to rekordbox-hot --to traktor` does."""
    collections = [zaltag.rekordbox(), zaltag.traktor()]
    for path in zaltag.walk(folder):
        with zaltag.open(path, read_only=True) as tag:
            cues = tag.serato_cue_points
        for collection in collections:
            if cues and path in collection:
                collection.set_cue_points(path, cues)
    for collection in collections:
        collection.save()


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

    def use(self, rekordbox_file, traktor_file):
        zaltag.use_collections(rekordbox=rekordbox_file, traktor=traktor_file)
        for collection in (zaltag.rekordbox(), zaltag.traktor()):
            collection.load()

    def content(self, path):
        """A collection without the times at which it was written."""
        return re.sub(rb' (DateModified|MODIFIED_TIME|MODIFIED_DATE|Date|Version|AppVersion|Name="(?:python3|zaltag)[^"]*")="[^"]*"', b"",
                      re.sub(rb"<PRODUCT[^>]*>|<DJ_PLAYLISTS[^>]*>|<!--.*?-->", b"", path.read_bytes()))

    def test_sync_in_ten_lines_does_what_the_program_does(self):
        theirs = self.folder / "theirs"
        theirs.mkdir()
        for file in self.files:
            shutil.copy(file, theirs)
        sync(self.music)
        subprocess.run([PROGRAM, "sync", self.music, "--from", "serato", "--to", "rekordbox-hot", "--to", "traktor", "--rekordbox",
                        theirs / "rekordbox.xml", "--traktor", theirs / "collection.nml"], check=True, stdout=subprocess.DEVNULL)
        for file in self.files:
            self.assertIn(b"early", file.read_bytes())
            self.assertEqual(self.content(file), self.content(theirs / file.name))

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
        self.assertEqual([name for _, name in serato_cues("song.mp3")], ["Intro", "Drop"])

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
        while collection.stage != 1:
            zaltag.run_pending()
        collection.save()
        self.assertEqual([(cue.time, cue.name, cue.slot) for cue in collection[self.songs[0]].cues],
                         [(1, "", -1), (2, "a", -1), (1, "", 0), (2, "a", 1)])

    def test_playlists(self):
        nodes = ('<NODE Type="0" Name="Sets é"><NODE Type="1" Name="Late" KeyType="0"><TRACK Key="3"/><TRACK Key="99"/>'
                 '<TRACK Key="1"/></NODE></NODE><NODE Type="1" Name="All" KeyType="1"/></NODE></PLAYLISTS>')
        rekordbox_file, traktor_file = self.files
        rekordbox_file.write_bytes(rekordbox_file.read_bytes().replace(b'Count="0"/></PLAYLISTS>', b'Count="2">' + nodes.encode()))
        key = "Macintosh HD" + "".join("/:" + part for part in self.songs[2].parts[1:])
        traktor_file.write_bytes(traktor_file.read_bytes().replace(b"</NML>", (
            '<PLAYLISTS><NODE TYPE="FOLDER"><SUBNODES><NODE TYPE="PLAYLIST" NAME="Night"><PLAYLIST><ENTRY><PRIMARYKEY TYPE="TRACK" KEY="'
            f'{key}"/></ENTRY></PLAYLIST></NODE></SUBNODES></NODE></PLAYLISTS></NML>').encode()))
        self.use(*self.files)
        self.assertEqual([(one.folders, one.name, [track.path for track in one]) for one in zaltag.rekordbox().playlists],
                         [([], "All", []), (["Sets é"], "Late", [self.songs[0], self.songs[2]])])
        self.assertEqual([(one.name, [track.path for track in one]) for one in zaltag.traktor().playlists],
                         [("Night", [self.songs[2]])])

    def test_progress_is_told(self):
        stages = []
        collection = zaltag.traktor()
        collection.set_progress_sink(stages.append)
        self.addCleanup(collection.set_progress_sink, None)
        collection.set_cue_points(self.songs[0], [zaltag.CuePoint(1)])
        while stages != [1]:
            zaltag.run_pending()
        collection.save()
        while stages[-1] != 0:
            zaltag.run_pending()
        self.assertEqual(stages, sorted(stages[:-1]) + [0])
        collection.set_progress_sink(None)
        told = len(stages)
        collection.set_cue_points(self.songs[0], [zaltag.CuePoint(2)])
        collection.save()
        self.assertEqual((len(stages), collection.stage in (0, 4)), (told, True))

    def test_errors_have_code_and_path(self):
        missing = self.folder / "missing.xml"
        with self.assertRaises(zaltag.CollectionError) as raised:
            self.use(missing, None)
        self.assertEqual((raised.exception.code, raised.exception.path), (zaltag.ErrorCode.REKORDBOX_UNREADABLE, missing))
        collection = zaltag.rekordbox()
        collection.set_cue_points(self.songs[0], [zaltag.CuePoint(1)])
        with self.assertRaises(zaltag.CollectionError):
            collection.save()
        collection.cancel()

    def test_saving_on_an_event_loop(self):
        async def main():
            beats = 0

            async def tick():
                nonlocal beats
                while True:
                    beats += 1
                    await asyncio.sleep(0.001)

            ticking = asyncio.ensure_future(tick())
            with self.assertRaises(RuntimeError):
                await zaltag.save_async(zaltag.traktor())
            with zaltag.main_queue_on():
                for collection in (zaltag.rekordbox(), zaltag.traktor()):
                    collection.set_cue_points(self.songs[0], [zaltag.CuePoint(3, "async")])
                await zaltag.save_async(zaltag.rekordbox(), zaltag.traktor())
                self.files[0].write_bytes(b"no collection")
                zaltag.rekordbox().set_cue_points(self.songs[0], [zaltag.CuePoint(4)])
                with self.assertRaises(zaltag.CollectionError):
                    await zaltag.save_async(zaltag.rekordbox())
                zaltag.rekordbox().cancel()
            ticking.cancel()
            self.assertGreater(beats, 1)

        asyncio.run(main())
        self.assertIn(b"async", self.files[1].read_bytes())
        self.assertEqual(self.files[0].read_bytes(), b"no collection")

    def test_the_process_ends_well_with_requests_and_callbacks_left(self):
        text = ("import asyncio, sys, zaltag\nzaltag.use_collections(rekordbox=sys.argv[1])\nzaltag.set_log_sink(print)\n"
                "async def main():\n  queue = zaltag.main_queue_on()\n  queue.__enter__()\n"
                "  zaltag.rekordbox().set_cue_points(sys.argv[2], [zaltag.CuePoint(1)])\n"
                "  asyncio.ensure_future(zaltag.save_async(zaltag.rekordbox()))\n  await asyncio.sleep(0)\nasyncio.run(main())\n")
        for _ in range(10):
            done = subprocess.run([sys.executable, "-c", text, self.files[0], self.songs[0]], capture_output=True, timeout=60, check=False)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertNotIn(b"Traceback", done.stderr)


class Stubs(unittest.TestCase):
    def test_stubs_are_right_and_pass_strict_checks(self):
        if subprocess.run([sys.executable, "-c", "import mypy"], capture_output=True, check=False).returncode:
            self.skipTest("mypy is not installed")
        package = pathlib.Path(zaltag.__file__).parent
        environment = dict(os.environ, MYPYPATH=str(package.parent), MYPY_CACHE_DIR="/dev/null")
        allowed = pathlib.Path(__file__).parent / "stubtest_allowed.txt"
        for command in (["mypy", "--strict", package], ["mypy.stubtest", "--allowlist", allowed, "zaltag._core"]):
            done = subprocess.run([sys.executable, "-m", *command], capture_output=True, text=True, env=environment, check=False,
                                  cwd=package.parent)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


if __name__ == "__main__":
    unittest.main()
