"""Audio files through the Python module, checked with mutagen."""
import copy
import pathlib
import pickle
import shutil
import subprocess
import threading
import unittest

import mutagen

import zaltag
from collection_files import serato_cues, serato_entries
from support import ProgramTest


class FilesTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.folder = pathlib.Path(self.folder)

    def mp3(self, name="song.mp3"):
        return pathlib.Path(super().mp3(name))


class Files(FilesTest):
    def test_what_is_changed_is_seen_by_mutagen(self):
        for extension, title in (("mp3", "TIT2"), ("m4a", "\xa9nam")):
            path = pathlib.Path(self.make(f"sóng.{extension}"))
            with zaltag.open(path) as tag:
                self.assertEqual((tag.title, tag.tempo, tag.read_only, tag.path), (None, 0, False, path))
                tag.title, tag.tempo, tag.initial_key = "Été 🎧", 124, "8A"
                tag.serato_cue_points = [zaltag.CuePoint(1.5, "Drop"), zaltag.CuePoint(3)]
                tag.zal_key, tag.zal_beat_grid = zaltag.Key("8A", 3), zaltag.BeatGrid([0.5, 1.0], 120.5, algorithm=2)
                self.assertTrue(tag.changed)
            self.assertTrue(tag.closed)
            self.assertEqual(str(mutagen.File(path)[title][0]), "Été 🎧")
            self.assertEqual(serato_cues(str(path)), [(1500, "Drop"), (3000, "")])
            with zaltag.open(str(path), read_only=True) as tag:
                self.assertEqual((tag.tempo, tag.initial_key, tag.zal_key.key, tag.zal_energy), (124, "8A", "8A", None))
                self.assertEqual((tag.zal_beat_grid.beats, tag.zal_beat_grid.tempo), ((0.5, 1.0), 120.5))
                self.assertEqual([cue.position for cue in tag.serato_marker.cue_points], [1500, 3000])
                self.assertEqual([cue.position for cue in tag.serato_marker_old.cue_points], [1500, 3000])
            self.assertIn("Drop", zaltag.describe(path))

    def test_cue_points_keep_and_take_slots_and_colours(self):
        path = self.mp3()
        drop = zaltag.CuePoint(1.5, "Drop", pad=3, color=0xE62828)
        loop = zaltag.CuePoint(4, "Break", end=8.0)
        self.assertEqual((repr(drop), loop.kind), ("CuePoint(1.5, 'Drop', pad=3, color=0xE62828)", "loop"))
        self.assertRaises(ValueError, zaltag.CuePoint, 1, kind="grid")
        with zaltag.open(path) as tag:
            self.assertTrue(tag.plan_serato_cue_points([drop])[0].is_less_than_asked)
            tag.serato_cue_points = [zaltag.CuePoint(9, "End", pad=7), drop, loop]
        with zaltag.open(path) as tag:
            first, *others = tag.serato_cue_points
            tag.serato_cue_points = [first.replace(name="Start"), *others]
            self.assertEqual(tag.serato_loops, (zaltag.CuePoint(4, "Break", end=8.0, pad=-1, color=0x27AAE1),))
        entries = serato_entries(str(path))
        self.assertEqual(entries, [("CUE", bytes.fromhex("0007 00002328 008800CC 0000") + b"Start\0"),
                                   ("CUE", bytes.fromhex("0003 000005DC 00CC0000 0000") + b"Drop\0"),
                                   ("LOOP", bytes.fromhex("0000 00000FA0 00001F40 FFFFFFFF 0027AAE1 0000") + b"Break\0")])

    def test_any_field_by_its_name(self):
        path = self.mp3()
        with zaltag.open(path) as tag:
            tag["LABEL"], tag["artist"] = "Ostgut", ("One", "Two")
            self.assertEqual((tag["label"], "ARTIST" in tag, "MOOD" in tag), (("Ostgut",), True, False))
        self.assertEqual(mutagen.File(path)["TPUB"].text, ["Ostgut"])
        with zaltag.open(path) as tag:
            self.assertEqual(tag.properties, {"LABEL": ("Ostgut",), "ARTIST": ("One", "Two")})
            tag["LABEL"] = ["Ostgut"]
            self.assertFalse(tag.changed)
            for wrong, kind in ((3, TypeError), ([3], TypeError), ("", ValueError), ("a\0", ValueError)):
                with self.assertRaises(kind):
                    tag["MOOD"] = wrong
            del tag["LABEL"]
            for missing in (lambda: tag["LABEL"], lambda: tag.__delitem__("LABEL")):
                self.assertRaises(KeyError, missing)

    def test_what_cannot_be_opened(self):
        (self.folder / "text.txt").write_text("x")
        (self.folder / "bad.flac").write_text("x")
        for name, kind in (("none.mp3", FileNotFoundError), (".", IsADirectoryError), ("text.txt", zaltag.OpenError),
                           ("bad.flac", zaltag.OpenError)):
            with self.assertRaises(kind):
                zaltag.open(self.folder / name)
        self.assertEqual([zaltag.can_open("A.MP3"), zaltag.can_open(b"\xff.m4a"), zaltag.can_open("x")], [True, True, False])

    def test_a_failed_save_is_an_exception_and_a_failed_block_saves_nothing(self):
        path = self.mp3()
        before = path.read_bytes()
        tag = zaltag.open(path, read_only=True)
        tag.title = "new"
        with self.assertRaises(zaltag.SaveError) as raised, tag:
            tag.save()
        self.assertEqual((raised.exception.code, raised.exception.path), (zaltag.ErrorCode.SAVE_FAILED, path))
        self.assertTrue(tag.closed)
        with self.assertRaises(ValueError):
            print(tag.title)
        with self.assertRaises(KeyError), zaltag.open(path) as tag:
            tag.title = "new"
            raise KeyError
        self.assertEqual(path.read_bytes(), before)

    def test_wrong_values_are_python_errors(self):
        with zaltag.open(self.mp3()) as tag:
            for name, value in (("title", 5), ("tempo", "fast"), ("zal_key", "8A"), ("serato_cue_points", [1]),
                                ("serato_loops", 3)):
                self.assertRaisesRegex(TypeError, name, setattr, tag, name, value)
            self.assertRaisesRegex(TypeError, "pad", zaltag.CuePoint, 1.5, pad="A")
            tag.tempo = 128
            tag.tempo = None
            self.assertNotIn("BPM", tag)
            self.assertRaises(UnicodeEncodeError, setattr, tag, "title", "\ud800")
            self.assertRaises(ValueError, tag.replace_image, b"no picture")
        deep = current = {}
        for _ in range(100000):
            current["a"] = current = {}
        for call in (lambda: zaltag.SeratoCuePoint(8, 0), lambda: zaltag.SeratoMarker.from_bytes(b"x"),
                     lambda: zaltag.Key.from_dict(deep)):
            self.assertRaises(ValueError, call)
        with zaltag.open(self.make("song.m4a")) as tag, self.assertRaises(zaltag.UnsupportedOperation):
            tag.prune_comments()

    def test_values(self):
        cue, loop = zaltag.CuePoint(1.25, "a"), zaltag.SeratoLoop(2, 10, 20, "x", locked=True)
        marker = zaltag.SeratoMarker(cue_points=[zaltag.SeratoCuePoint(3, 1500, "é", 0x00CC0000)], loops=[loop])
        old = zaltag.SeratoMarkerOld(color=0x123456, cue_points=[zaltag.SeratoCuePointOld(4, 1500, 0xCC0000)])
        for value in (cue, loop, marker, old, zaltag.CuePoints([cue], algorithm=7), zaltag.BeatGrid([0.5, 1.0], 120.5, 2),
                      zaltag.Key("8A"), zaltag.Energy(3), zaltag.VelvetCascade("b", True, 2), zaltag.Comment("c", "eng", True),
                      zaltag.StoredImage(b"x", 3), zaltag.SeratoGrid([zaltag.SeratoGridPoint(0.5, 4, 120)]),
                      zaltag.CueOutcome(cue, None), *marker.cue_points, *old.cue_points):
            for same in (pickle.loads(pickle.dumps(value)), copy.copy(value), copy.deepcopy(value), value.replace()):
                self.assertEqual((same, hash(same), repr(same)), (value, hash(value), repr(value)))
            for name in type(value).__match_args__:
                self.assertRaises(AttributeError, setattr, value, name, None)
            self.assertEqual(tuple(value), tuple(getattr(value, name) for name in type(value).__match_args__))
            self.assertNotEqual(value, 1)
        later = cue.replace(time=1.2504, pad=2)
        self.assertEqual((cue == later, cue.is_close(later), len({cue, later, cue.replace()})), (False, True, 2))
        self.assertEqual(sorted([later, cue.replace(name=None), cue]), [cue.replace(name=None), cue, later])
        self.assertEqual(zaltag.CuePoints.from_dict(zaltag.CuePoints([cue], 7).as_dict()).cue_points, (cue,))
        self.assertEqual(zaltag.SeratoMarker.from_bytes(marker.to_bytes()), marker)
        self.assertEqual(zaltag.SeratoMarkerOld.from_bytes(old.to_bytes("m4a"), "m4a").cue_points, old.cue_points)

    def test_copies_pictures_and_the_log(self):
        source, other, lines = self.mp3("a.mp3"), self.mp3("b.mp3"), []
        picture = subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=s=32x32", "-frames:v", "1", "-c:v", "png",
                                  "-f", "image2pipe", "-"], capture_output=True, check=True).stdout
        with zaltag.open(source) as tag:
            tag.title = "copied"
            self.assertTrue(tag.replace_image(picture))
            tag.set_custom_image(picture)
        zaltag.copy_tags(source, other)
        with zaltag.open(other) as tag:
            self.assertEqual(tag.title, "copied")
            self.assertEqual([(one.is_original, one.is_customized) for one in tag.images], [(False, True), (True, False)])
        self.assertRaises(shutil.SameFileError, zaltag.copy_tags, source, source)
        zaltag.set_log_sink(lines.append)
        self.addCleanup(zaltag.set_log_sink, None)
        file = mutagen.File(source)
        file.tags.add(mutagen.id3.GEOB(encoding=0, mime="", desc="Serato BeatGrid", data=b"xx"))
        file.save()
        with zaltag.open(source) as tag:
            self.assertIsNone(tag.serato_grid)
        self.assertEqual(len(lines), 1, lines)

    def test_threads_at_work_at_once(self):
        paths = [self.mp3(f"{i}.mp3") for i in range(8)]

        def change(path):
            for i in range(20):
                with zaltag.open(path) as tag:
                    tag.title = f"{path.name} {i}"

        threads = [threading.Thread(target=change, args=(path,)) for path in paths]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual([str(mutagen.File(path)["TIT2"]) for path in paths], [f"{path.name} 19" for path in paths])


if __name__ == "__main__":
    unittest.main()
