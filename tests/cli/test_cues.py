"""Cue points with colours, loops, kinds and pads, from outside: files are read by mutagen, ffmpeg and lame make them."""
import json
import struct
import subprocess

from mutagen.id3 import ID3, TIT2

from collection_files import SAMPLES
from support import FRAME, ProgramTest


class Words(ProgramTest):
    def test_pads_ends_and_colours_are_set_and_listed(self):
        song = self.mp3()
        self.zaltag("cues", "set", song, "--to", "serato", "D:1:23.5=Drop#E62828", "2-6=Roll ##1#27AAE1", "1e-1=#CC0000", "A:4=a##CC00CC")
        cues = [{"time": 83.5, "name": "Drop", "pad": 3, "color": "CC0000", "end": None, "kind": "cue"},
                {"time": 0.1, "name": "#CC0000", "pad": 1, "color": "CC8800", "end": None, "kind": "cue"},
                {"time": 4, "name": "a#CC00CC", "pad": 0, "color": "CC0000", "end": None, "kind": "cue"},
                {"time": 2, "name": "Roll #1", "pad": -1, "color": "27AAE1", "end": 6, "kind": "loop"}]
        out = self.zaltag("cues", "list", song, "--from", "serato", "--json")[0]
        self.assertEqual(json.loads(out), [{"path": song, "cues": cues}])
        self.assertEqual(self.zaltag("cues", "list", song, "--from", "serato")[0], "83.5\tDrop\n0.1\t#CC0000\n4\ta#CC00CC\n")
        for words in (("6-2=x",), ("I:1=x",), ("A:=x",), ("1-=x",), ("1:60=x",)):
            self.zaltag("cues", "set", song, "--to", "serato", *words, status=2)
        err = self.zaltag("cues", "set", song, "--to", "serato", *(f"{i}-{i + 1}=loop {i}" for i in range(9)), status=1)[1]
        self.assertIn("there is no slot for 8=loop 8", err)


class FirstFrame(ProgramTest):
    def made(self, name, rate, channels, *options, by_lame):
        """An MP3 of a second by lame or by ffmpeg."""
        wav = self.make(f"{name}.wav", "-ar", str(rate), "-ac", str(channels))
        command = ["lame", "--quiet", *options, wav] if by_lame else ["ffmpeg", "-v", "error", "-y", "-i", wav, *options]
        subprocess.run([*command, self.path(f"{name}.mp3")], check=True)
        return self.path(f"{name}.mp3")

    def first_frame(self, path):
        return self.show(path)["firstFrame"]

    def test_what_encoders_write(self):
        for rate, channels, frame, checksum_at in ((44100, 2, 1152 / 44100, 190), (48000, 2, 0.024, 190), (44100, 1, 1152 / 44100, 175),
                                                   (22050, 2, 576 / 22050, 175), (22050, 1, 576 / 22050, 167)):
            moved, name = round(frame, 6), f"{rate}-{channels}"
            right = self.made(f"{name}-d", rate, channels, "-V", "4", by_lame=True)
            audio = self.content(right)
            self.assertEqual(audio[checksum_at - 34:checksum_at - 30], b"LAME")
            swapped = bytes((audio[checksum_at + 1] ^ 1, audio[checksum_at]))
            cases = {right: "D", self.write(f"{name}-c.mp3", audio[:checksum_at] + swapped + audio[checksum_at + 2:]): "C",
                     self.write(f"{name}-0.mp3", audio[:checksum_at] + b"\0\0" + audio[checksum_at + 2:]): "C",
                     self.made(f"{name}-b", rate, channels, by_lame=False): "B",
                     self.made(f"{name}-a", rate, channels, "-write_xing", "0", "-id3v2_version", "0", by_lame=False): "A"}
            for song, case in cases.items():
                with self.subTest(song=song):
                    shown = self.first_frame(song)
                    self.assertEqual((shown["case"], round(shown["offset"], 6)), (case, moved if case in "BC" else 0))
            tag = ID3()
            tag.add(TIT2(text="LAME Info Xing"))
            tag.save(right)
            self.assertEqual(self.first_frame(right)["case"], "D", "behind an ID3v2 tag")
        items = FRAME * 3
        ape = b"APETAGEX" + struct.pack("<IIII8x", 2000, len(items) + 32, 0, 0xA0000000) + items + b"APETAGEX" + bytes(24)
        self.assertEqual(self.first_frame(self.write("ape.mp3", ape + audio))["case"], "D", "behind an APE tag")

    def test_a_frame_that_is_cut_says_nothing(self):
        audio = self.content(self.made("d", 44100, 2, "-b", "128", by_lame=True))
        tag = ID3()
        tag.add(TIT2(text="t"))
        for length in (3, 100, 191, 400):
            song = self.write(f"{length}.mp3", audio[:length])
            tag.save(song)
            self.assertIsNone(self.first_frame(song))
        self.assertIsNone(self.first_frame(self.make("song.flac")))

    def test_a_real_file(self):
        if not SAMPLES:
            self.skipTest("LEFT OUT: no samples")
        self.assertEqual(self.first_frame(f"{SAMPLES}/test_audio_1.mp3"), {"case": "D", "offset": 0})
