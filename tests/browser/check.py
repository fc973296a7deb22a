#!/usr/bin/python3
"""Opens a report in headless Chromium, has it used by selftest.js, and holds what came of it against the data:
check.py CHROMIUM"""
import http.server
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest
import urllib.parse

HERE = os.path.dirname(os.path.abspath(__file__))
ZALTAG = os.environ["ZALTAG"]
CHROMIUM = sys.argv[1] if len(sys.argv) > 1 else "chromium"
COUNT = 120
# Before the page's own script: what it is measured with.
PROBE = """<script>
window.longTasks = [];
window.alert = () => { window.alerted = true; };
new PerformanceObserver((list) => { for (const one of list.getEntries()) longTasks.push(one.duration); })
    .observe({ type: "longtask", buffered: true });
(function look() {
    if (document.querySelector("#rows .row")) window.firstRows = performance.now(); else setTimeout(look, 4);
})();
</script>"""


class Pages(http.server.BaseHTTPRequestHandler):
    """Serves one page and takes its results."""
    page, results, done, asked = b"", None, threading.Event(), []

    def answer(self, body, status=200):
        self.send_response(status)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        Pages.asked.append(self.path)
        self.answer(Pages.page) if self.path.startswith("/report") else self.answer(b"", 404)

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"])).decode()
        Pages.results = json.loads(urllib.parse.parse_qs(body)["results"][0])
        self.answer(b"done")
        Pages.done.set()

    def log_message(self, *_):
        pass


def chromium(folder, size, *arguments):
    return [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run", "--hide-scrollbars",
            f"--user-data-dir={folder}/profile", f"--window-size={size[0]},{size[1]}", *arguments]


def tracks_of(page):
    return json.loads(re.search(r'id="tracks">(.*?)</script>', page, re.S)[1])


def lists_of(track):
    """(seconds, name) of the cue points of every lane that knows the track, in the order of the lanes."""
    file, lanes = track["file"], []
    if file.get("hasSeratoMetadata"):
        lanes.append([(cue["time"], cue["name"] or "") for cue in file["seratoCuePoints"]])
    if file.get("zalCuePoints"):
        lanes.append([(cue["time"] / 1000, cue.get("name") or "") for cue in file["zalCuePoints"]["cues"]])
    if track["rekordbox"]:
        cues = track["rekordbox"]["cues"]
        hot = [cue for cue in cues if cue["num"] >= 0]
        lanes.append([(cue["start"], cue["name"]) for cue in hot or cues])
    if track["traktor"]:
        lanes.append([(cue["startTime"], cue["name"]) for cue in track["traktor"]["cues"] if cue["typeName"] != "Grid"])
    return [sorted(lane) for lane in lanes]


def disagree(track, seconds):
    lanes = lists_of(track)
    return any(len(a) != len(b) or any(abs(x[0] - y[0]) > seconds + 1e-9 or x[1] != y[1] for x, y in zip(a, b))
               for a in lanes for b in lanes)


class Report(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="zaltag-")
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        subprocess.run(["/usr/bin/python3", os.path.join(HERE, "make_folder.py"), cls.folder, str(COUNT)], check=True)
        subprocess.run([ZALTAG, "report", cls.folder + "/music", "-o", cls.folder + "/report.html", "--rekordbox",
                        cls.folder + "/rekordbox.xml", "--traktor", cls.folder + "/collection.nml"], capture_output=True, check=False)
        with open(cls.folder + "/report.html", encoding="utf-8") as file:
            cls.page = file.read()
        cls.tracks = tracks_of(cls.page)
        cls.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Pages)
        threading.Thread(target=cls.server.serve_forever, daemon=True).start()
        cls.addClassCleanup(cls.server.shutdown)

    def use(self, page, size=(1280, 900), query=""):
        """What selftest.js found in a page."""
        with open(os.path.join(HERE, "selftest.js"), encoding="utf-8") as file:
            test = f"<script>{file.read()}</script></body>"
        Pages.page = page.replace("<style>", PROBE + "<style>", 1).replace("</body>", test).encode()
        Pages.done.clear()
        Pages.asked.clear()
        address = f"http://127.0.0.1:{self.server.server_port}/report{query}"
        with subprocess.Popen(chromium(self.folder, size, "--remote-debugging-port=0", address), stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as browser:
            finished = Pages.done.wait(180)
            browser.terminate()
        self.assertTrue(finished, "the page sent no results")
        self.assertIsNone(Pages.results.get("error"))
        return Pages.results

    def test_use(self):
        results = self.use(self.page)
        tracks = self.tracks
        self.assertEqual([asked for asked in Pages.asked if asked != "/favicon.ico"], ["/report"])
        self.assertEqual(results["count"], COUNT + 1)
        tempos = sorted(track["file"].get("tempo") or 999 for track in tracks)
        self.assertEqual([int(text or 999) for text in results["ascending"]], tempos)
        self.assertEqual([int(text) for text in results["descending"][:-1]], tempos[-2::-1])
        self.assertEqual((results["descending"][-1], results["ariaSort"]), ("", "descending"))
        artist = [i for i, track in enumerate(tracks) if (track["file"].get("artist") or "").startswith("Zoë")]
        self.assertEqual(results["found"], artist)
        self.assertEqual(set(results["hostile"]), {"<script>alert(1)</script>"})
        self.assertTrue(results["isClean"])
        self.assertEqual(results["nothing"], [0, False])
        for name, seconds in (("disagree", 0.02), ("disagreeLoosely", 0.5)):
            expected = [i for i, track in enumerate(tracks) if disagree(track, seconds)]
            self.assertEqual(results[name], expected)
            self.assertTrue(0 < len(expected) < len(tracks))
        self.assertEqual(len(results["failed"]), 1)
        self.assertIn("not a readable audio file", results["failed"][0])
        self.check_positions(results["drawn"])
        self.check_keys(results)

    def check_positions(self, drawn):
        self.assertEqual([order for order, _ in drawn], list(range(len(self.tracks))))
        checked = 0
        for order, lanes in drawn:
            track = self.tracks[order]
            if track["file"].get("error"):
                self.assertIsNone(lanes)
                continue
            times = {"serato": [cue["time"] for cue in track["file"]["seratoCuePoints"]],
                     "zal": [cue["time"] / 1000 for cue in (track["file"]["zalCuePoints"] or {"cues": []})["cues"]],
                     "rekordbox": [cue["start"] for cue in (track["rekordbox"] or {"cues": []})["cues"]],
                     "traktor": [cue["startTime"] for cue in (track["traktor"] or {"cues": []})["cues"] if cue["typeName"] != "Grid"]}
            self.assertEqual({lane: len(cues) for lane, cues in lanes.items()}, {lane: len(cues) for lane, cues in times.items()}, order)
            points = [(time, x) for lane in times for time, (x, _) in zip(times[lane], lanes[lane])]
            if len(points) < 3:
                continue
            (t0, x0), (t1, x1) = min(points), max(points)
            for time, x in points:
                self.assertAlmostEqual(x, x0 + (time - t0) * (x1 - x0) / max(t1 - t0, 1e-9), delta=0.1, msg=str(track["file"]["path"]))
                checked += 1
            # The line starts at the gutter and holds all there is.
            self.assertAlmostEqual(x0 - t0 * (x1 - x0) / max(t1 - t0, 1e-9), 16, delta=0.2)
            self.assertTrue(all(16 <= x < width for cues in lanes.values() for x, width in cues))
        self.assertGreater(checked, 5 * COUNT)

    def check_keys(self, results):
        self.assertEqual(results["active"], "row-2")
        self.assertEqual(results["dialog"], [True, self.tracks[2]["file"]["title"]])
        before, after = results["zoomed"]
        self.assertNotEqual(before, after)
        self.assertEqual(results["closed"], [False, True])
        self.assertTrue(results["searching"])
        self.assertEqual(results["end"], f"row-{COUNT}")

    def test_a_phone(self):
        results = self.use(self.page, (400, 850), "?quick")
        self.assertLessEqual(results["overflow"], 0)

    def test_5000_tracks_open_without_a_pause(self):
        before, rest = self.page.split('id="tracks">[\n', 1)
        lines, after = rest.split("\n]</script>", 1)
        lines = (",\n".join([lines] * (5000 // (COUNT + 1) + 1))).split("\n")[:5000]
        lines[-1] = lines[-1].rstrip(",")
        results = self.use(f'{before}id="tracks">[\n' + "\n".join(lines) + f"\n]</script>{after}", query="?quick")
        self.assertEqual(results["count"], 5000)
        print("5,000 tracks: first rows after {firstRows:.0f} ms, all after {loaded:.0f} ms, longest task {longest:.0f} ms"
              .format(**results), file=sys.stderr)
        self.assertLess(results["firstRows"], 5000)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
