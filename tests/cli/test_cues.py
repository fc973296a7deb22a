"""Cue points with colours, loops, kinds and pads, from outside: files are read by mutagen, ffmpeg and lame make them."""
import struct
import subprocess

from mutagen.id3 import ID3, TIT2

from collection_files import SAMPLES
from support import FRAME, ProgramTest


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
