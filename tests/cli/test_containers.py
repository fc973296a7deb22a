"""Audio files made by ffmpeg, changed by the program, and read by mutagen, ffprobe and flac."""
import json
import subprocess

import mutagen
from mutagen.id3 import ID3

from support import ProgramTest, audio_of

FIELDS = {"artist": "Zoë 🎧", "album": "夜明け", "title": "a=b", "genre": "House", "comment": "line\nbreak", "initialKey": "8A",
          "year": 2024, "tempo": 124, "energyLevel": 7}
FRAMES = {"artist": "TPE1", "title": "TIT2", "tempo": "TBPM", "energyLevel": "TXXX:EnergyLevel", "comment": "COMM::eng",
          "initialKey": "TKEY"}
NAMES = {"mp3": FRAMES, "wav": FRAMES, "aiff": FRAMES,
         "flac": {"artist": "artist", "tempo": "bpm", "initialkey": "initialkey", "energyLevel": "energylevel", "year": "date"},
         "m4a": {"artist": "©ART", "tempo": "tmpo", "year": "©day", "initialKey": "----:com.apple.iTunes:initialkey",
                 "energyLevel": "----:com.apple.iTunes:energylevel"}}
COMPOSER = {"mp3": "TCOM", "flac": "composer", "m4a": "©wrt"}


def text_of(value):
    """A value of mutagen's as text."""
    first = value[0] if isinstance(value, list) else value
    return bytes(first).decode() if isinstance(first, bytes) else str(first)


class Containers(ProgramTest):
    def set_all(self, song):
        self.zaltag("set", song, *(f"{name}={value}" for name, value in FIELDS.items()))

    def check_values(self, song):
        shown = self.show(song)
        self.assertEqual({name: shown[name] for name in FIELDS}, FIELDS)

    def test_fields_as_others_read_them(self):
        for extension, names in NAMES.items():
            song = self.make(f"ein Lied – été.{extension}", "-metadata", "composer=Me")
            before = audio_of(song)
            self.set_all(song)
            self.check_audio(song, before)
            self.check_values(song)
            tags = mutagen.File(song).tags
            wanted = {key: str({**FIELDS, "initialkey": "8A"}[name]) for name, key in names.items()}
            self.assertEqual({key: text_of(tags[key]) for key in wanted}, wanted)
            if extension in COMPOSER:
                self.assertEqual(text_of(tags[COMPOSER[extension]]), "Me", "what is not set stays")
            self.zaltag("set", song, "artist=", "tempo=0")
            tags = mutagen.File(song).tags
            self.assertNotIn(names["artist"], tags)
            self.assertIn(text_of(tags.get(names["tempo"], "0")), ("0", ""))
            self.check_audio(song, before)
        song = self.make("song.mp3")
        self.zaltag("set", song, "grouping=Peak", "modifiedBy=me")
        self.assertEqual([str(ID3(song)[name]) for name in ("GRP1", "TPE4")], ["Peak", "me"])
        song = self.make("song.m4a", "-metadata", "track=3/9")
        self.zaltag("set", song, "grouping=Peak")
        self.assertEqual((mutagen.File(song)["©grp"], mutagen.File(song)["trkn"]), (["Peak"], [(3, 9)]))
        for refused in (("comments", "prune", song), ("set", song, "title=x", "--strip-v1")):
            out, err = self.zaltag(*refused, status=1)
            self.assertEqual((out, len(err.splitlines())), ("", 1))

    def test_every_layout_of_mp4_keeps_its_audio(self):
        fragments = ("-movflags", "frag_keyframe+empty_moov", "-frag_duration")
        layouts = {"last.m4a": (), "first.m4a": ("-movflags", "+faststart"), "lossless.m4a": ("-c:a", "alac"),
                   "fragments.mp4": ("-movflags", "frag_keyframe+empty_moov+default_base_moof", "-frag_duration", "200000"),
                   "one.mp4": (*fragments, "9000000"), "many.m4a": (*fragments, "200000")}
        for name, options in layouts.items():
            song = self.make(name, *options)
            before = audio_of(song)
            self.set_all(song)
            for comment in ("x" * 30000, "", "y" * 9000):
                self.zaltag("set", song, "comment=" + comment)
                self.check_audio(song, before)
            self.assertEqual(self.show(song)["comment"], "y" * 9000)

    def test_every_command_on_chunks(self):
        record = {"zalKey": {"key": "8A"}, "zalVelvetCascade": {"backupFileName": "b.wav", "isProcessed": True}}
        for name in ("song.aiff", "song.wav"):
            song = self.make(name)
            before = audio_of(song)
            self.set_all(song)
            self.zaltag("cues", "set", song, "--to", "serato", "0.25=Intro")
            self.zaltag("record", song, *(f"{name}={json.dumps(value)}" for name, value in record.items()))
            self.zaltag("comments", "prune", song)
            self.check_audio(song, before)
            self.check_values(song)
            shown = self.show(song)
            self.assertEqual(shown["seratoCuePoints"], [{"time": 0.25, "name": "Intro"}])
            self.assertEqual(shown["zalVelvetCascade"], record["zalVelvetCascade"])
            self.assertTrue({"GEOB:Key", "GEOB:Serato Markers2"} <= set(mutagen.File(song).tags))
        self.assertGreater(self.content(song).rindex(b"VCAS"), self.content(song).rindex(b"LIST"))
        self.zaltag("set", song, "infoGenre=Info", "infoYear=")
        probed = subprocess.run(["ffprobe", "-v", "error", "-of", "json", "-show_format", song], capture_output=True)
        probed = json.loads(probed.stdout)["format"]
        self.assertEqual((probed["tags"]["title"], probed["tags"]["genre"]), ("a=b", "Info"))
        self.assertAlmostEqual(float(probed["duration"]), 1, 2)
        self.assertIn("ZALTagID3 has no infoTitle", self.zaltag("set", self.mp3(), "infoTitle=x", status=1)[1])
