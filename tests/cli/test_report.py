"""The page over a folder: what data it holds, that nothing in them gets out of them, and what becomes of the file."""
import base64
import html.parser
import json
import os
import struct
import subprocess

from collection_files import rekordbox, traktor
from support import ProgramTest

HOSTILE = '</script><script>alert(1)</script><!--<script>\u2028"\'&amp;'


class Page(html.parser.HTMLParser):
    """The page as a browser takes it apart: its script elements by id, and every address in it."""
    def __init__(self, text):
        super().__init__()
        self.scripts, self.addresses, self.current = {}, [], None
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        self.addresses += [value for name, value in attrs if name in ("src", "href", "action")]
        if tag == "script":
            self.current = dict(attrs).get("id", "code")
            assert self.current not in self.scripts, "a script element too many"
            self.scripts[self.current] = ""

    def handle_endtag(self, tag):
        self.current = None if tag == "script" else self.current

    def handle_data(self, data):
        if self.current:
            self.scripts[self.current] += data


class Report(ProgramTest):
    def report(self, *arguments, status=0):
        out = self.path("report.html")
        lines = self.zaltag("report", *arguments, "-o", out, status=status)
        with open(out, encoding="utf-8") as file:
            return Page(file.read()), lines

    def folder_with(self, count):
        folder = self.path("music")
        os.mkdir(folder)
        return folder, [self.mp3(f"music/{i} é.mp3") for i in range(count)]

    def test_data_are_those_of_show_and_of_the_collections(self):
        folder, songs = self.folder_with(3)
        self.zaltag("set", songs[0], "title=" + HOSTILE, "artist=<b>", "comment=]]>", "tempo=124")
        self.zaltag("cues", "set", songs[0], "--to", "serato", "1.5=" + HOSTILE, "4=")
        self.zaltag("record", songs[1], 'zalBeatGrid={"algorithm": 1, "tempo": 120.5, "beats": [0.5, 1, 1.5]}')
        marks = '<TEMPO Inizio="0.5" Bpm="120"/><POSITION_MARK Name="&lt;/script&gt;" Type="0" Start="1.5" Num="0"/>'
        collections = ("--rekordbox", self.write("r.xml", rekordbox([(songs[0], marks), (songs[1], "")])),
                       "--traktor", self.write("c.nml", traktor(songs[:1])))
        page, (out, _) = self.report(folder, *collections)
        self.assertEqual(out, f"3 files, 0 failures: {self.path('report.html')}\n")
        self.assertEqual(set(page.scripts), {"tracks", "covers", "about", "code"})
        self.assertEqual(page.addresses, [])
        self.assertNotIn("<", page.scripts["tracks"] + page.scripts["about"])
        tracks = json.loads(page.scripts["tracks"])
        self.assertEqual([track["file"] for track in tracks], [self.show(song) for song in songs])
        self.assertEqual(tracks[0]["file"]["title"], HOSTILE)
        for name, option in (("rekordbox", collections[:2]), ("traktor", collections[2:])):
            held = {one["path"]: one for one in json.loads(self.zaltag(name, "tracks", "--json", *option)[0])}
            for song, track in zip(songs, tracks):
                lane = dict(track[name]) if track[name] else None
                runs = lane.pop("beatRuns") if lane else None
                self.assertEqual(lane, held.get(song))
                beats = json.loads(self.zaltag(name, "track", song, "--json", *option)[0])["beatTimes"] if lane else None
                self.assertEqual(runs is None, beats is None)
                flat = [start + i * step for start, step, count in runs or () for i in range(count)]
                self.assertEqual([round(beat, 3) for beat in flat], [round(beat, 3) for beat in beats or ()])
            self.assertEqual(json.loads(page.scripts["about"])[name], option[1])
        self.assertEqual(len(tracks[0]["rekordbox"]["beatRuns"]), 1)

    def test_covers_are_small_and_shared(self):
        folder, songs = self.folder_with(3)
        image = self.path("cover.png")
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "color=c=0x204080:s=300x150", "-frames:v", "1", image], check=True)
        for song in songs[:2]:
            self.zaltag("artwork", "replace", song, "--image", image)
        page, _ = self.report(folder)
        self.assertEqual([track["cover"] for track in json.loads(page.scripts["tracks"])], [0, 0, None])
        (cover,) = json.loads(page.scripts["covers"])
        kind, text = cover.split(",")
        self.assertEqual(kind, "data:image/png;base64")
        self.assertEqual(struct.unpack(">II", base64.b64decode(text, validate=True)[16:24]), (64, 32))

    def test_failures_are_on_the_page_and_named(self):
        folder, _ = self.folder_with(1)
        self.write("music/a.flac", b"nothing")
        page, (out, err) = self.report(folder, "--rekordbox", self.path("missing.xml"), status=1)
        self.assertEqual(len(err.splitlines()), 2, err)
        self.assertIn("2 files, 1 failures", out)
        tracks = json.loads(page.scripts["tracks"])
        self.assertEqual([set(track["file"]) == {"path", "error"} for track in tracks], [False, True])
        self.assertIsNone(json.loads(page.scripts["about"])["rekordbox"])

    def test_where_the_page_goes(self):
        folder, (song,) = self.folder_with(1)
        for out in (song, folder, "/dev/null", "/dev/full"):
            self.zaltag("report", folder, "-o", out, status=2)
        self.zaltag("report", folder, "-o", self.path("none/report.html"), status=1)
        os.symlink(self.path("real.html"), self.path("link.html"))
        self.write("real.html", b"old")
        self.zaltag("report", folder, "-o", self.path("link.html"))
        self.assertTrue(os.path.islink(self.path("link.html")))
        self.assertIn(b"<!DOCTYPE html>", self.content(self.path("real.html")))
        self.assertEqual(sorted(os.listdir(self.folder)), ["link.html", "music", "real.html"])
