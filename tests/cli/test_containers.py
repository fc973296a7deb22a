"""MP4, AIFF and FLAC files made by ffmpeg, changed by the program, and checked with mutagen, ffprobe and flac."""
import json
import os
import shutil
import subprocess
import unittest

import mutagen
from mutagen.aiff import AIFF
from mutagen.flac import FLAC
from mutagen.id3 import ID3
from mutagen.mp4 import MP4, MP4Cover
from mutagen.wave import WAVE

from support import ProgramTest
from test_artwork import CUSTOMIZED, ORIGINAL, lens_make, pixels, png

TEXTS = {"artist": "Zoë 🎧", "album": "夜明け", "title": "a=b", "genre": "House", "comment": "line\nbreak",
         "initialKey": "8A"}
NUMBERS = {"year": 2024, "tempo": 124, "energyLevel": 7}


def audio_of(path):
    """A digest of the packets, by ffmpeg."""
    return subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-map", "0:a", "-c", "copy", "-f", "md5", "-"],
                          capture_output=True, check=True).stdout


class ContainerTest(ProgramTest):
    def make(self, name, *options):
        song = self.path(name)
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "sine=f=330:d=3", *options, song], check=True)
        return song

    def check(self, song, before):
        """The audio is what it was, and others find nothing wrong with the file."""
        self.assertEqual(audio_of(song), before)
        done = subprocess.run(["ffprobe", "-v", "error", song], capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        if song.endswith(".flac"):
            subprocess.run(["flac", "-t", "-s", song], check=True)

    def set_all(self, song):
        self.zaltag("set", song, *(f"{name}={value}" for name, value in {**TEXTS, **NUMBERS}.items()))

    def check_values(self, song):
        shown = self.show(song)
        for name, value in {**TEXTS, **NUMBERS}.items():
            self.assertEqual(shown[name], value, name)


class InMP3(ContainerTest):
    def test_fields_as_others_read_them(self):
        song = self.make("ein Lied – été.mp3")
        before = audio_of(song)
        self.set_all(song)
        self.zaltag("set", song, "grouping=Peak", "modifiedBy=me")
        self.check(song, before)
        self.check_values(song)
        self.assertEqual(self.show(song)["path"], song)
        tags = ID3(song)
        names = ("TPE1", "TIT2", "TBPM", "TXXX:EnergyLevel", "GRP1", "TPE4", "COMM::eng")
        self.assertEqual([str(tags[name]) for name in names], ["Zoë 🎧", "a=b", "124", "7", "Peak", "me", "line\nbreak"])
        self.zaltag("set", song, "artist=", "comment=")
        self.assertFalse({"TPE1", "COMM::eng"} & set(ID3(song)))


class InMP4(ContainerTest):
    def test_every_layout_keeps_its_audio(self):
        layouts = {"last.m4a": (), "first.m4a": ("-movflags", "+faststart"), "lossless.m4a": ("-c:a", "alac"),
                   "fragments.mp4": ("-movflags", "frag_keyframe+empty_moov+default_base_moof", "-frag_duration", "500000"),
                   "one.mp4": ("-movflags", "frag_keyframe+empty_moov", "-frag_duration", "9000000")}
        for name, options in layouts.items():
            song = self.make(name, *options)
            before = audio_of(song)
            self.set_all(song)
            self.check(song, before)
            self.check_values(song)
            for comment in ("x" * 30000, "", "y" * 9000):
                self.zaltag("set", song, "comment=" + comment)
                self.check(song, before)
            self.assertEqual(self.show(song)["comment"], "y" * 9000)

    def test_audio_that_would_be_lost_is_left_alone(self):
        song = self.make("fragments.m4a", "-movflags", "frag_keyframe+empty_moov", "-frag_duration", "500000")
        before = self.content(song)
        _, err = self.zaltag("set", song, "title=x", status=1)
        self.assertIn("its audio would not be found again", err)
        self.assertEqual(self.content(song), before)

    def test_items_as_others_read_them(self):
        song = self.make("song.m4a", "-metadata", "composer=Me", "-metadata", "track=3/9")
        self.set_all(song)
        self.zaltag("set", song, "grouping=Peak")
        tags = MP4(song).tags
        self.assertEqual((tags["©ART"], tags["©grp"], tags["tmpo"], tags["©day"]), (["Zoë 🎧"], ["Peak"], [124], ["2024"]))
        self.assertEqual([tags["----:com.apple.iTunes:" + name] for name in ("initialkey", "energylevel")], [[b"8A"], [b"7"]])
        self.assertEqual((tags["©wrt"], tags["trkn"]), (["Me"], [(3, 9)]))
        self.zaltag("set", song, "artist=", "tempo=0", "energyLevel=", "grouping=")
        self.assertEqual(MP4(song)["tmpo"], [0])
        self.assertFalse({"©ART", "©grp", "----:com.apple.iTunes:energylevel"} & set(MP4(song).tags))
        for refused in (("comments", "prune", song), ("set", song, "title=x", "--strip-v1")):
            out, err = self.zaltag(*refused, status=1)
            self.assertEqual((out, len(err.splitlines())), ("", 1))
        self.assertEqual(self.show(song)["title"], "a=b")

    def test_pictures(self):
        song, other = self.make("song.m4a"), self.make("other.m4a")
        tags = MP4(song)
        tags["covr"] = [MP4Cover(png(1), MP4Cover.FORMAT_JPEG), MP4Cover(png(2), MP4Cover.FORMAT_PNG)]
        tags.save()
        before = audio_of(song)
        self.zaltag("artwork", "backup", song, other, "--image", self.write("c.png", png(3)))
        self.check(song, before)
        covers = MP4(song)["covr"]
        self.assertEqual([lens_make(cover) for cover in covers], [CUSTOMIZED, ORIGINAL, None])
        self.assertEqual([pixels(cover) for cover in covers], [pixels(png(n)) for n in (3, 1, 2)])
        self.assertEqual({cover.imageformat for cover in covers}, {MP4Cover.FORMAT_PNG})
        self.zaltag("artwork", "replace", song, "--image", self.write("d.png", png(4)))
        self.assertEqual([pixels(cover) for cover in MP4(song)["covr"]], [pixels(png(n)) for n in (4, 1, 2)])
        self.zaltag("artwork", "restore", song, other)
        self.assertEqual([pixels(cover) for cover in MP4(song)["covr"]], [pixels(png(n)) for n in (1, 2)])
        self.assertEqual(MP4(other)["covr"], [])
        self.check(song, before)


class InChunks(ContainerTest):
    def test_every_command(self):
        record = {"zalKey": {"key": "8A"}, "zalVelvetCascade": {"backupFileName": "b.wav", "isProcessed": True}}
        for kind, name in ((AIFF, "song.aiff"), (WAVE, "song.wav")):
            song = self.make(name)
            before = audio_of(song)
            self.set_all(song)
            self.zaltag("cues", "set", song, "--to", "serato", "0.25=Intro")
            self.zaltag("record", song, *(f"{name}={json.dumps(value)}" for name, value in record.items()))
            self.zaltag("comments", "prune", song)
            self.zaltag("artwork", "backup", song, "--image", self.write("a.png", png(1)), status=kind is WAVE)
            self.check(song, before)
            self.check_values(song)
            shown = self.show(song)
            self.assertEqual(shown["seratoCuePoints"], [{"time": 0.25, "name": "Intro"}])
            self.assertEqual(shown["zalVelvetCascade"], record["zalVelvetCascade"])
            tags = kind(song).tags
            self.assertEqual((str(tags["TIT2"]), str(tags["TBPM"])), ("a=b", "124"))
            self.assertEqual([lens_make(frame.data) for frame in tags.getall("APIC")], [CUSTOMIZED] * (kind is AIFF))
            self.assertTrue({"GEOB:Key", "GEOB:Serato Markers2"} <= set(tags))
        self.assertGreater(self.content(song).rindex(b"VCAS"), self.content(song).rindex(b"LIST"))
        self.zaltag("set", song, "infoGenre=Info", "infoYear=")
        probed = subprocess.run(["ffprobe", "-v", "error", "-of", "json", "-show_format", song], capture_output=True)
        probed = json.loads(probed.stdout)["format"]
        self.assertEqual((probed["tags"]["title"], probed["tags"]["genre"]), ("a=b", "Info"))
        self.assertAlmostEqual(float(probed["duration"]), 3, 2)
        self.assertIn("ZALTagID3 has no infoTitle", self.zaltag("set", self.mp3(), "infoTitle=x", status=1)[1])


class InFLAC(ContainerTest):
    def test_fields_as_others_read_them(self):
        song = self.make("song.flac", "-metadata", "composer=Me")
        before = audio_of(song)
        self.set_all(song)
        self.check(song, before)
        self.check_values(song)
        tags = FLAC(song).tags
        self.assertEqual([tags[name] for name in ("artist", "bpm", "initialkey", "energylevel", "date", "composer")],
                         [["Zoë 🎧"], ["124"], ["8A"], ["7"], ["2024"], ["Me"]])

    def test_pictures(self):
        song = self.make("song.flac")
        before = audio_of(song)
        self.zaltag("artwork", "replace", song, "--image", self.write("a.png", png(1)))
        self.zaltag("artwork", "backup", song, "--image", self.write("b.png", png(2)))
        self.check(song, before)
        pictures = FLAC(song).pictures
        self.assertEqual([(p.type, p.mime, lens_make(p.data)) for p in pictures],
                         [(0, "image/png", ORIGINAL), (3, "image/png", CUSTOMIZED)])
        self.assertEqual({pixels(p.data) for p in pictures}, {pixels(png(2))})
        self.zaltag("artwork", "restore", song)
        self.assertEqual([(p.type, lens_make(p.data)) for p in FLAC(song).pictures], [(3, ORIGINAL)])
        self.check(song, before)


@unittest.skipUnless("ZALTAG_SAMPLES" in os.environ, "ZALTAG_SAMPLES names no folder of real files")
class Samples(ContainerTest):
    """Real files; test_tools.py has what is read of their cue points and grids."""
    def entries(self, song):
        """What others read of it; of MP3 files only the objects, as the version of the tag changes."""
        tags = mutagen.File(song).tags
        if isinstance(tags, ID3):
            return {frame.desc: frame.data for frame in tags.getall("GEOB")}
        return {name.lower(): value for name, value in dict(tags).items()}

    def test_the_same_cues_change_nothing_else(self):
        for extension, colors, fields, expected in (
                ("mp3", ["00CC00CC", "0000CC00", "00CC8800", "00CC0000"], {}, {"Serato Markers_", "Serato Markers2"}),
                ("m4a", ["0088CC00", "000000CC", "00CC0000", "00CC0000"],
                 {"title": "Go", "year": 1988, "initialKey": "Em", "comment": None},
                 {"----:com.serato.dj:markers", "----:com.serato.dj:markersv2"}),
                ("flac", None, {"title": "Pump Up The Volume", "year": 1987, "initialKey": "Am"}, {"serato_markers_v2"})):
            song = self.path("sample." + extension)
            shutil.copy(os.path.join(os.environ["ZALTAG_SAMPLES"], "test_audio_1." + extension), song)
            os.chmod(song, 0o644)
            shown, audio, before = self.show(song), audio_of(song), self.entries(song)
            cues = shown["seratoMarker"]["cuePoints"]
            self.assertEqual({name: shown[name] for name in fields}, fields)
            self.assertEqual(colors or [cue["color"] for cue in cues], [cue["color"] for cue in cues])
            words = self.zaltag("cues", "list", song, "--from", "serato")[0].splitlines()
            self.zaltag("cues", "set", song, "--to", "serato", *(word.replace("\t", "=") for word in words))
            after = self.entries(song)
            self.assertEqual(before.keys(), after.keys())
            self.assertEqual({name for name in before if before[name] != after[name]}, expected)
            self.assertEqual([cue["label"] for cue in self.show(song)["seratoMarker"]["cuePoints"]],
                             [cue["label"] for cue in cues])
            self.check(song, audio)
