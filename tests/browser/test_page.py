"""The report's page in headless Chromium, used by selftest.js. Its data are tracks as the program writes them, varied
here; what the script found, and left in the page, is held against them."""
import html
import json
import os
import re
import shutil
import subprocess
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "cli"))
from collection_files import rekordbox, traktor  # noqa: E402
from support import ProgramTest  # noqa: E402

CHROMIUM = shutil.which("chromium")
COUNT = 120
TITLES = ["Night Drive – été", "Filter House", "<script>alert(1)</script>", "Acid </script><b>bold</b>", "夜のドライブ", "Echo"]
MARKS = '<TEMPO Inizio="0.1" Bpm="120"/><POSITION_MARK Name="a" Type="0" Start="1" Num="0"/>'
CUE = '<CUE_V2 NAME="a" TYPE="0" START="1000.0" LEN="0" HOTCUE="0"/>'


def lanes_of(track):
    """The seconds of the cue points of every lane, by its name."""
    file, collections = track["file"], [(track[name] or {"cues": []})["cues"] for name in ("rekordbox", "traktor")]
    return {"serato": [cue["time"] for cue in file["seratoCuePoints"]], "zal": [cue["time"] / 1000 for cue in file["zalCuePoints"]["cues"]],
            "rekordbox": [cue["start"] for cue in collections[0]], "traktor": [cue["startTime"] for cue in collections[1]]}


@unittest.skipUnless(CHROMIUM, "LEFT OUT: the report's page needs Chromium (scripts/install-deps.sh chromium)")
class Page(ProgramTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("music"))
        song = self.mp3("music/a.mp3")
        self.zaltag("cues", "set", song, "--to", "serato", "1=a")
        self.zaltag("cues", "set", song, "--to", "zal", "1=a")
        self.write("music/z.flac", b"nothing")
        self.zaltag("report", self.path("music"), "-o", self.path("report.html"), "--rekordbox",
                    self.write("r.xml", rekordbox([(song, MARKS)])), "--traktor",
                    self.write("c.nml", traktor([song], inner=CUE)), status=1)
        self.page = self.content(self.path("report.html")).decode()
        self.model, self.failed = json.loads(re.search(r'id="tracks">(.*?)</script>', self.page, re.S)[1])

    def tracks(self, count):
        """Tracks with up to six cue points in four lanes that agree, or are late in Rekordbox, or lack a name in Traktor."""
        made = []
        for i in range(count):
            track = json.loads(json.dumps(self.model))
            track["file"].update(path=f"/music/{i:05}.mp3", title=TITLES[i % 6], artist=("Zoë Söndag", "DJ <i>x</i>")[i % 2],
                                 tempo=120 + i * 7 % 11)
            cues = [(10 + 31.5 * n + i % 4, f"cue {n}") for n in range(i % 7)]
            vary = lambda lane, rows: [{**lane[0], **row} for row in rows]
            track["file"]["seratoCuePoints"] = [{"time": time, "name": name} for time, name in cues]
            track["file"]["zalCuePoints"]["cues"] = [{"time": time * 1000, "name": name} for time, name in cues]
            if i % 8 == 7:
                track["rekordbox"] = track["traktor"] = None
            else:
                late = (0, 0.4)[i % 5 == 2]
                track["rekordbox"]["cues"] = vary(track["rekordbox"]["cues"], [
                    {"start": time + late, "name": name, "num": n} for n, (time, name) in enumerate(cues)])
                track["traktor"]["cues"] = vary(track["traktor"]["cues"], [
                    {"startTime": time, "name": name * (i % 9 != 0)} for time, name in cues])
            made.append(track)
        return [*made, self.failed]

    def use(self, tracks, size=(1280, 900), query=""):
        """What selftest.js found in a page of these tracks."""
        text = "[\n" + ",\n".join(json.dumps(track).replace("<", "\\u003c") for track in tracks) + "\n]"
        page = re.sub(r'(id="tracks">).*?(</script>)', lambda found: found[1] + text + found[2], self.page, 1, re.S)
        with open(os.path.join(HERE, "selftest.js"), encoding="utf-8") as script:
            page = page.replace("<style>", "<script>window.alert = () => { window.alerted = true; };</script><style>", 1)
            page = page.replace("</body>", f"<script>{script.read()}</script></body>")
        path = self.write("page.html", page.encode())
        done = subprocess.run([CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
                               f"--user-data-dir={self.path('profile')}", f"--window-size={size[0]},{size[1]}", "--dump-dom",
                               "--virtual-time-budget=600000", f"file://{path}{query}"], capture_output=True, text=True, timeout=1200)
        found = re.search(r'<pre id="results">(.*?)</pre>', done.stdout, re.S)
        self.assertTrue(found, f"the page left no results: {done.stderr[-2000:]}")
        results = json.loads(html.unescape(found[1]))
        self.assertIsNone(results.get("error"))
        self.assertEqual(results["count"], len(tracks))
        return results

    def test_use(self):
        tracks = self.tracks(COUNT)
        results, songs = self.use(tracks), tracks[:-1]
        tempos = sorted(track["file"]["tempo"] for track in songs)
        self.assertEqual(results["ascending"], [*map(str, tempos), ""])
        self.assertEqual(results["descending"], [*map(str, tempos[::-1]), ""])
        self.assertEqual(results["found"], list(range(0, COUNT, 2)))
        self.assertEqual(set(results["hostile"]), {"<script>alert(1)</script>"})
        self.assertEqual((results["isClean"], results["nothing"]), (True, [0, False]))
        for name, late in (("disagree", True), ("disagreeLoosely", False)):
            self.assertEqual(results[name], [i for i in range(COUNT) if i % 7 and i % 8 != 7 and
                                             (i % 9 == 0 or (late and i % 5 == 2))])
        self.assertEqual(len(results["failed"]), 1)
        self.assertIn("not a readable audio file", results["failed"][0])
        self.check_positions(songs, results["drawn"])
        self.assertEqual((results["dialog"], results["end"]), ([True, TITLES[2]], [False, f"row-{COUNT}"]))

    def check_positions(self, songs, drawn):
        """Every cue point stands where its time is, on a line that starts at the gutter."""
        self.assertIsNone(drawn.pop()[1], "of what cannot be read")
        self.assertEqual([order for order, _ in drawn], list(range(len(songs))))
        for track, (_, lanes) in zip(songs, drawn):
            wanted = lanes_of(track)
            self.assertEqual({lane: len(cues) for lane, cues in lanes.items()}, {lane: len(times) for lane, times in wanted.items()})
            points = sorted((time, x) for lane, times in wanted.items() for time, (x, _) in zip(times, lanes[lane]))
            if len(wanted["serato"]) > 1:
                scale = (points[-1][1] - 16) / points[-1][0]
                for time, x in points:
                    self.assertAlmostEqual(x, 16 + time * scale, delta=0.3)
            self.assertTrue(all(16 <= x < width for cues in lanes.values() for x, width in cues))

    def test_a_phone_and_5000_tracks(self):
        self.assertLessEqual(self.use(self.tracks(COUNT), (400, 850), "?quick")["overflow"], 0)
        results = self.use(self.tracks(4999), query="?quick")
        self.assertLess(results["rows"], 200, "only what can be seen is drawn")


if __name__ == "__main__":
    unittest.main()
