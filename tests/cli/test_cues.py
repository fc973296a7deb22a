"""Cue points with colours, loops, kinds and pads, from outside: files are read by mutagen, ffmpeg and lame make them."""
import json
import os
import struct
import subprocess

from mutagen.id3 import ID3, TIT2

from collection_files import SAMPLES, rekordbox, serato_entries, traktor
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
        for number in ("nan", "inf"):
            self.zaltag("sync", song, "--from", "serato", "--to", "zal", "--offset", number, status=2)
        for words in (("6-2=x",), ("I:1=x",), ("A:=x",), ("1-=x",), ("1:60=x",)):
            self.zaltag("cues", "set", song, "--to", "serato", *words, status=2)
        err = self.zaltag("cues", "set", song, "--to", "serato", *(f"{i}-{i + 1}=loop {i}" for i in range(9)), status=1)[1]
        self.assertIn("there is no slot for 8=loop 8", err)


class Sync(ProgramTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("music"))
        self.songs = [self.make(f"music/{name}", *options) for name, *options in
                      (("a.mp3", "-write_xing", "0"), ("b.mp3",), ("c.m4a",), ("d.flac",), ("e.wav",))]
        grid = '<CUE_V2 NAME="AutoGrid" TYPE="4" START="50.5" LEN="0" HOTCUE="0" COLOR="#FFFFFF"></CUE_V2>'
        self.xml = self.write("rekordbox.xml", rekordbox([(song, '<TEMPO Inizio="0.1" Bpm="60"/>') for song in self.songs]))
        self.nml = self.write("collection.nml", traktor(self.songs, inner=grid))

    def cues(self, place, song):
        return json.loads(self.zaltag("cues", "list", song, "--from", place, "--json", "--rekordbox", self.xml, "--traktor", self.nml)[0])[0]["cues"]

    def sync(self, *options):
        return self.zaltag("sync", self.path("music"), "--rekordbox", self.xml, "--traktor", self.nml, "--no-backup", *options)[0]

    def start(self, *words):
        for song in self.songs:
            self.zaltag("cues", "set", song, "--to", "serato", *(words or (
                "H:3.21=H#8800CC", "B:1.5=B", "D:0.777=Drop#00CC44", "5.5-7.25=late", "0.4-0.9=early")))

    def test_every_way_twice(self):
        self.start()
        places = ("serato", "zal", "rekordbox-hot", "rekordbox-memory", "rekordbox", "traktor")
        for source in places:
            for target in places:
                if source == target or source == "rekordbox" or source[:9] == target[:9]:
                    continue
                with self.subTest(source=source, target=target):
                    self.sync("--from", source, "--to", target)
                    files = [self.content(file) for file in (self.xml, self.nml, *self.songs)]
                    self.assertRegex(self.sync("--from", source, "--to", target), r": 0 written, \d unchanged")
                    self.assertEqual([self.content(file) for file in (self.xml, self.nml, *self.songs)], files)

    def test_pads_and_loops_go_with_it_and_mp3_times_by_a_frame(self):
        self.start()
        out = self.sync("--from", "serato", "--to", "traktor", "--keep-times", "--dry-run")
        self.assertIn('  0.4-0.9 "early" 27AAE1\n  D 0.777 "Drop" 00CC44\n  B 1.5 "B" CC8800\n  H 3.21 "H" 8800CC\n  5.5-7.25 "late"', out)
        self.sync("--from", "serato", "--to", "traktor", "--keep-times")
        wanted = [(cue["name"], cue["pad"], cue["color"], cue["time"], cue["end"]) for cue in self.cues("traktor", self.songs[0])]
        self.assertEqual(wanted, [("early", -1, "27AAE1", 0.4, 0.9), ("late", -1, "27AAE1", 5.5, 7.25), ("B", 1, "CC8800", 1.5, None),
                                  ("Drop", 3, "00CC44", 0.777, None), ("H", 7, "8800CC", 3.21, None)])
        frame = 1152 / 44100
        for options, of_a, of_b in (((), 0, -frame), (("--no-decoder-offset",), 0, 0), (("--offset", "100"), 0.1, 0.1 - frame),
                                    (("--only", "times"), 0, 0)):
            self.sync("--from", "traktor", "--to", "rekordbox-hot", "--keep-times", *options)
            for song, late in ((self.songs[0], of_a), (self.songs[1], of_b)):
                times = {cue["name"]: (round(cue["time"], 6), cue["pad"]) for cue in self.cues("rekordbox-hot", song)}
                self.assertEqual(times["H"], (round(3.21 + late, 6), 3 if "--only" in options else 7), (song, options))

    def test_there_and_back(self):
        def earlier(entry, late):
            name, data = entry
            numbers = {"CUE": (2,), "LOOP": (2, 6)}.get(name, ())
            for at in numbers:
                data = data[:at] + (int.from_bytes(data[at:at + 4], "big") - late).to_bytes(4, "big") + data[at + 4:]
            return name, data
        colors = ("CC0000", "00CC44", "8800CC", "CCCC00", "0044CC", "CC00CC", "00CCCC", "CC0044")
        self.start(*(f"{'HCAFBGDE'[i]}:{3 * i}.137=Cue é {i}#{color}" for i, color in enumerate(colors)),
                   *(f"{30 + 5 * i}.25-{32 + 5 * i}.5=Loop {i}" for i in range(4)))
        before = [sorted(serato_entries(song)) for song in self.songs]
        self.assertEqual(len([name for name, _ in before[0] if name in ("CUE", "LOOP")]), 12)
        for source, target, *more in (("serato", "rekordbox-hot"), ("rekordbox-hot", "traktor"), ("rekordbox-memory", "traktor", "--merge")):
            self.sync("--from", source, "--to", target, "--keep-times", *more)
        self.start("1=other", "2-3=other")
        self.sync("--from", "traktor", "--to", "serato", "--keep-times")
        for song, entries in zip(self.songs, before):  # one trip between those two is a frame of 26 ms
            late = 26 if song.endswith("b.mp3") else 0
            self.assertEqual(sorted(earlier(entry, late) for entry in serato_entries(song)), entries, song)

    def test_merged_and_as_memory(self):
        self.start("A:1=own", "2-3=loop")
        self.sync("--from", "serato", "--to", "rekordbox-hot", "--keep-times", "--as-memory")
        self.assertEqual([(cue["name"], cue["pad"]) for cue in self.cues("rekordbox-memory", self.songs[0])], [("own", -1), ("loop", -1)])
        self.start("A:1.005=same", "A:7=new", "C:8=third")
        for _ in range(2):
            self.sync("--from", "serato", "--to", "rekordbox-hot", "--keep-times", "--merge")
            self.assertEqual([(cue["name"], cue["pad"]) for cue in self.cues("rekordbox-hot", self.songs[0])],
                             [("own", 0), ("new", 1), ("third", 2)])
        for target in ("rekordbox-memory", "rekordbox", "traktor", "zal"):
            self.sync("--from", "serato", "--to", target, "--merge")
            self.assertIn(": 0 written, 5 unchanged", self.sync("--from", "serato", "--to", target, "--merge"), target)


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
