"""Cue points on their way through files and collections, read by mutagen and Python's own XML parser."""
import struct
import unittest
import xml.etree.ElementTree as ElementTree

import zaltag
from collection_files import rekordbox, serato_entries, traktor
from test_files import FilesTest

# Pads, milliseconds, names and colours of Serato; none of the times is on a beat of any grid.
CUES = [(0, 1, "A", 0xCC0000), (3, 61234, "Été & <Drop>", 0x00CC44), (7, 5555, "", 0x8800CC), (1, 123, "B", 0xCC8800),
        (2, 184307, "C", 0x0000CC), (4, 99999, "LOOP", 0x88CC00), (5, 100001, "CUE", 0xCC0088), (6, 240000, "G" * 60, 0x00CCCC)]
LOOPS = [(30288, 34068, "late"), (1, 999, ""), (5555, 6555, "CUE"), (184307, 192842, "D")]
COLORED = '<CUE_V2 NAME="AutoGrid" TYPE="4" START="50.5" LEN="0" REPEATS="-1" HOTCUE="0" COLOR="#FFFFFF"></CUE_V2>'


class Cues(FilesTest):
    def collections(self, songs, marks=COLORED):
        self.xml, self.nml = self.folder / "rekordbox.xml", self.folder / "collection.nml"
        self.xml.write_bytes(rekordbox([(str(song), "") for song in songs]))
        self.nml.write_bytes(traktor([str(song) for song in songs], inner=marks))
        zaltag.use_collections(rekordbox=self.xml, traktor=self.nml)
        for collection in (zaltag.rekordbox(), zaltag.traktor()):
            collection.load()

    def marks(self):
        return [[(int(mark.get("Num")), int(mark.get("Type")), float(mark.get("Start")), float(mark.get("End") or 0), mark.get("Name", ""),
                  *(int(mark.get(part, -1)) for part in ("Red", "Green", "Blue"))) for mark in track.findall("POSITION_MARK")]
                for track in ElementTree.parse(self.xml).iter("TRACK") if track.get("Location")]

    def cues(self):
        return [[tuple(cue.get(name) for name in ("HOTCUE", "TYPE", "START", "LEN", "NAME", "COLOR")) for cue in entry.findall("CUE_V2")]
                for entry in ElementTree.parse(self.nml).iter("ENTRY")]

    def carry(self, songs, source, target):
        for song in songs:
            frame = zaltag.first_frame(song)
            offset = frame.traktor_offset if frame and target is zaltag.traktor() else 0
            cues = source[song].cue_points
            target.set_cue_points(song, cues, keep_times=True, offset=offset)
            self.assertEqual([outcome.asked.name for outcome in target[song].plan_cue_points(cues, keep_times=True)
                              if outcome.is_less_than_asked], [cue.name for cue in sorted(cues, key=lambda cue: cue.time)
                                                               if cue.kind in ("load", "fade-in")] if target is zaltag.rekordbox() else [])
        target.save()

    def test_a_round_trip_through_every_program(self):
        made = ("a.mp3", "-write_xing", "0"), ("b.mp3",), ("c.m4a",), ("d.flac",), ("e.wav",), ("f.aiff",)
        songs = [self.folder / self.make(*options) for options in made]
        frames = [zaltag.first_frame(song) for song in songs]
        self.assertEqual([frame and frame.case for frame in frames], ["A", "B", None, None, None, None])
        for song in songs:
            with zaltag.open(song) as tag:
                tag.serato_cue_points = [zaltag.CuePoint(time / 1000, name, pad=pad, color=color) for pad, time, name, color in CUES]
                tag.serato_loops = [zaltag.CuePoint(begin / 1000, name, end=end / 1000) for begin, end, name in LOOPS]
        before = [serato_entries(str(song)) for song in songs]
        self.collections(songs)
        for song in songs:
            with zaltag.open(song) as tag:
                zaltag.rekordbox().set_cue_points(song, tag.serato_cue_points + tag.serato_loops, keep_times=True)
                tag.serato_cue_points = []
        zaltag.rekordbox().save()
        rgb = lambda color: tuple(color.to_bytes(3, "big"))
        for marks in self.marks():
            self.assertEqual(sorted(marks), sorted([(pad, 0, time / 1000, 0, name, *rgb(color)) for pad, time, name, color in CUES] +
                                                   [(-1, 4, begin / 1000, end / 1000, name, *rgb(0x27AAE1)) for begin, end, name in LOOPS]))
        self.carry(songs, zaltag.rekordbox(), zaltag.traktor())
        late = 1152 / 44.1  # milliseconds of the file of case B
        for number, cues in enumerate(self.cues()):
            shift = late if number == 1 else 0
            self.assertEqual(cues[0], ("-1", "4", "50.5", "0", "AutoGrid", "#FFFFFF"), "the grid gave way")
            shown = lambda milliseconds: f"{milliseconds:.6f}"
            self.assertEqual(sorted(cues[1:], key=repr), sorted(
                [(str(pad), "0", shown(time + shift), shown(0), name or None, f"#{color:06X}") for pad, time, name, color in CUES] +
                [("-1", "5", shown(begin + shift), shown(end - begin), name or None, "#27AAE1") for begin, end, name in LOOPS], key=repr))
        for number, song in enumerate(songs):
            with zaltag.open(song) as tag:
                tag.serato_cue_points = zaltag.traktor()[song].cue_points
            shift = 26 if number == 1 else 0  # Serato has no place in the table of offsets
            expected = []
            for name, data in before[number]:
                begin, end = struct.unpack_from(">II", data, 2)
                loop = struct.pack(">II", begin + shift, end + shift) if name == "LOOP" else struct.pack(">I", begin + shift)
                expected.append((name, data[:2] + loop + data[2 + len(loop):]))
            self.assertEqual(sorted(serato_entries(str(song))), sorted(expected), song.name)

    def test_kinds_and_what_no_other_program_has(self):
        song = self.mp3()
        marks = "".join(f'<CUE_V2 NAME="{name}" TYPE="{kind}" START="{start}.0" LEN="{length}.0" REPEATS="-1" HOTCUE="{pad}"></CUE_V2>'
                        for name, kind, start, length, pad in (("load", 3, 1000, 7, 2), ("in", 1, 2000, 0, 5), ("loop", 5, 3000, 500, 4)))
        self.collections([song], marks)
        self.carry([song], zaltag.traktor(), zaltag.rekordbox())
        self.assertEqual([mark[:5] for mark in self.marks()[0]], [(-1, 0, 1, 0, "load"), (5, 0, 2, 0, "in"), (4, 4, 3, 3.5, "loop")])
        self.carry([song], zaltag.rekordbox(), zaltag.traktor())
        self.assertEqual([cue[:5] for cue in self.cues()[0]], [
            ("4", "5", "3000.0", "500.0", "loop"), ("-1", "0", "1000.000000", "0.000000", "load"), ("5", "0", "2000.000000", "0.000000", "in")])


if __name__ == "__main__":
    unittest.main()
