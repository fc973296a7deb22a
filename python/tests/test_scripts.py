"""What a librarian writes with the module, a handful of lines each."""
import concurrent.futures
import os
import pathlib
import re
import unittest

import zaltag
from support import ProgramTest


def without_cues(folder):
    for path in zaltag.walk(folder):
        with zaltag.open(path, read_only=True) as tag:
            if not tag.serato_cue_points:
                yield path


def carry_cues(mp3s, flacs):
    for path in zaltag.walk(mp3s):
        twin = flacs / path.with_suffix(".flac").name
        if twin.exists():
            with zaltag.open(path, read_only=True) as source, zaltag.open(twin) as target:
                target.serato_cue_points = [*source.serato_cue_points, *source.serato_loops]


def tidy_genre(path):
    with zaltag.open(path) as tag:
        if tag.genre:
            tag.genre = re.sub(r"(?i)\btech[ -]?house\b", "Tech House", tag.genre)


def tidy_genres(folder):
    with concurrent.futures.ThreadPoolExecutor() as threads:
        list(threads.map(tidy_genre, zaltag.walk(folder)))


class Scripts(ProgramTest):
    def test_tracks_without_cues(self):
        songs = [self.mp3(f"{i}.mp3") for i in range(3)]
        with zaltag.open(songs[1]) as tag:
            tag.serato_cue_points = [zaltag.CuePoint(1, "Drop")]
        self.assertEqual(list(without_cues(self.folder)), [pathlib.Path(songs[0]), pathlib.Path(songs[2])])

    def test_cues_of_mp3s_to_flacs(self):
        os.mkdir(self.path("mp3"))
        os.mkdir(self.path("flac"))
        cues = (zaltag.CuePoint(2, "Drop", pad=0, color=0xCC0000), zaltag.CuePoint(1, "In", pad=6, color=0x00CC00))
        loops = (zaltag.CuePoint(4, "Break", end=8.0, pad=-1, color=0x27AAE1),)
        for name in "ab":
            with zaltag.open(self.mp3(f"mp3/{name}.mp3")) as tag:
                tag.serato_cue_points = [*cues, *loops]
        self.make("flac/a.flac")
        carry_cues(self.path("mp3"), pathlib.Path(self.path("flac")))
        with zaltag.open(self.path("flac/a.flac")) as tag:
            self.assertEqual((tag.serato_cue_points, tag.serato_loops), (cues, loops))

    def test_genres_of_300_files(self):
        for i in range(300):
            with zaltag.open(self.mp3(f"{i}.mp3")) as tag:
                tag.genre = ("techhouse", "Tech House", "Techno")[i % 3]
        tidy_genres(self.folder)
        stamps = {path: os.stat(path).st_mtime_ns for path in zaltag.walk(self.folder)}
        with zaltag.open(self.path("0.mp3")) as tag:
            self.assertEqual(tag.genre, "Tech House")
        tidy_genres(self.folder)
        self.assertEqual({path: os.stat(path).st_mtime_ns for path in stamps}, stamps, "nothing was to be done")


if __name__ == "__main__":
    unittest.main()
