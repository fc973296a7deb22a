"""The program's commands show, set and scan, from outside; files are checked with mutagen."""
import json
import os
import resource
import subprocess

import mutagen

from support import FRAME, ProgramTest


class Fields(ProgramTest):
    def test_a_failed_save_says_why(self):
        song = self.mp3()
        before = self.content(song)
        done = self.run_program("set", song, "title=" + "x" * 9000, restore_signals=False,  # SIGXFSZ stays ignored
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (9000, 9000)))
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr.decode(), f"^zaltag: {song}: could not be saved: .*File too large; the file is as it was\n$")
        self.assertEqual(self.content(song), before)

    def test_paths_and_words_are_taken_as_the_system_has_them(self):
        os.makedirs(self.path("d/e"))
        os.symlink("d/e", self.path("l"))
        song, other, odd = self.mp3("d/x.mp3"), self.mp3("x.mp3"), self.mp3("title=x.mp3")
        self.zaltag("set", self.path("l/../x.mp3"), "title=right")
        self.assertEqual((self.show(song)["title"], self.show(other)["title"]), ("right", None))
        done = self.run_program("set", "title=x.mp3", "artist=z", cwd=self.folder)  # a file has that name
        self.assertEqual((done.returncode, self.show(odd)["artist"]), (0, "z"))
        self.mp3("-dash.mp3")
        self.assertEqual(self.run_program("show", "--", "-dash.mp3", cwd=self.folder).returncode, 0)

    def test_wrong_usage_touches_nothing(self):
        song = self.mp3()
        before = self.content(song)
        cases = {("set", song, "titel=x"): "did you mean 'title'",
                 ("set", song, "title=a", "year=19x9"): "year takes a whole number",
                 ("set", song, "title=a", song): "is not NAME=VALUE",
                 ("set", song): "NAME=VALUE is missing",
                 ("set", "title=a"): "no file",
                 ("show",): "FILE is required",
                 ("shwo", "a.mp3"): "did you mean 'show'?\nTry 'zaltag --help'.",
                 ("cues", "lst"): "did you mean 'list'?\nTry 'zaltag cues --help'.",
                 ("cues", "set", "a.mp3"): "--to is required\nTry 'zaltag cues set --help'.",
                 (): ""}
        for arguments, message in cases.items():
            out, err = self.zaltag(*arguments, status=2)
            self.assertEqual(out, "")
            self.assertIn(message, err)
        self.assertEqual(self.content(song), before)


FIELDS = {"LABEL": "Ostgut", "REMIXER": "Ünal", "COMPOSER": "C", "TRACKNUMBER": "3/12", "DATE": "2020-05-03",
          "ISRC": "DEA1", "CONDUCTOR": "夜", "MOOD": "dark", "RATING": "5", "ENCODEDBY": "E"}
# Where other readers find them: frames, and items, whose names are not those of the fields.
FRAMES = {"LABEL": "TPUB", "REMIXER": "TPE4", "COMPOSER": "TCOM", "TRACKNUMBER": "TRCK", "DATE": "TDRC", "ISRC": "TSRC",
          "CONDUCTOR": "TPE3", "MOOD": "TMOO", "RATING": "TXXX:RATING", "ENCODEDBY": "TENC"}
ITEMS = {"COMPOSER": "\xa9wrt", "TRACKNUMBER": "trkn", "DATE": "\xa9day", "ENCODEDBY": "\xa9too"}


class AnyField(ProgramTest):
    def read(self, song):
        tags = mutagen.File(song).tags
        if song.endswith(".flac"):
            return {name: tags[name][0] for name in FIELDS}
        if song.endswith(".m4a"):
            items = {name: tags[ITEMS.get(name, f"----:com.apple.iTunes:{name}")][0] for name in FIELDS}
            return {name: "%d/%d" % item if name == "TRACKNUMBER" else item.decode() if isinstance(item, bytes) else item
                    for name, item in items.items()}
        return {name: str(tags[frame]) for name, frame in FRAMES.items()}

    def test_ten_fields_in_five_formats(self):
        for song in (self.mp3(), self.make("s.m4a"), self.make("s.wav"), self.make("s.aiff"), self.make("s.flac")):
            self.zaltag("set", song, *(f"{name}={value}" for name, value in FIELDS.items()))
            self.assertEqual(self.read(song), FIELDS, song)
            shown = json.loads(self.zaltag("show", "--all", "--json", song)[0])[0]["properties"]
            self.assertEqual({name: values[0] for name, values in shown.items() if name in FIELDS}, FIELDS)
            before = os.stat(song)
            self.zaltag("set", song, "LABEL=Ostgut", "title=")
            after = os.stat(song)
            self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, before.st_mtime_ns), "nothing is written")
            self.zaltag("set", song, "LABEL=", "MOOD=a", "MOOD=b")
            lines = self.zaltag("show", "--all", song)[0].split("unsupportedProperties")[0]
            self.assertNotIn("Ostgut", lines)
            self.assertRegex(lines, r"MOOD +a\n +MOOD +b")
        before = self.content(self.path("s.m4a"))
        out, err = self.zaltag("set", self.path("s.m4a"), "title=x", "BPM=128.5", status=1)
        self.assertIn("BPM: '128.5' would become '128'", err)
        self.assertEqual(self.content(self.path("s.m4a")), before)


class Failures(ProgramTest):
    def bad_files(self):
        os.mkdir(self.path("folder.mp3"))
        os.mkfifo(self.path("fifo.mp3"))
        return {self.path("missing.mp3"): "no such file", self.path("folder.mp3"): "is a folder",
                self.path("fifo.mp3"): "is not a regular file",
                self.write("empty.mp3", b""): "not a readable", self.write("text.mp3", b"Hello\n" * 500): "not a readable",
                self.write("song.ogg", FRAME): "unsupported file type",
                self.write("name.mp3.bak", FRAME): "unsupported file type"}

    def test_each_is_one_line_and_the_others_are_done(self):
        good, bad = self.mp3("good.mp3"), self.bad_files()
        for command in (("show",), ("set", "title=done")):
            out, err = self.zaltag(command[0], *bad, good, *command[1:], status=1)
            lines = err.splitlines()
            self.assertEqual(len(lines), len(bad), err)
            for (path, reason), line in zip(bad.items(), lines):
                self.assertTrue(line.startswith(f"zaltag: {path}: "), line)
                self.assertIn(reason, line)
        self.assertEqual(self.show(good)["title"], "done")
        shown = json.loads(self.zaltag("show", "--json", *bad, status=1)[0])
        self.assertEqual([one["path"] for one in shown], list(bad))
        self.assertTrue(all(set(one) == {"path", "error"} for one in shown))

    def test_a_name_that_is_not_utf8(self):
        name = os.path.join(self.folder.encode(), b"caf\xe9.mp3")
        with open(name, "wb") as file:
            file.write(FRAME * 3)
        self.zaltag("set", name, "title=x")
        shown = self.show(name)
        self.assertEqual(shown["title"], "x")
        self.assertTrue(shown["path"].endswith("caf\ufffd.mp3"))

    def test_without_permission(self):
        """Without what lets root do everything; the user stays, who may be the only one to reach the program."""
        song, closed = self.mp3(), self.mp3("closed.mp3")
        before = self.content(song)
        os.chmod(song, 0o444)
        os.chmod(closed, 0)
        drop = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"] if os.getuid() == 0 else []
        for path, reason in ((song, b"is read-only"), (closed, b"permission denied")):
            done = subprocess.run([*drop, os.environ["ZALTAG"], "set", path, "title=x"], capture_output=True)
            self.assertEqual(done.returncode, 1)
            self.assertIn(reason, done.stderr)
        self.assertEqual(self.content(song), before)

    def test_a_full_output_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([os.environ["ZALTAG"], "show", self.mp3()], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 1)


class Scan(ProgramTest):
    def test_many_files_and_their_failures(self):
        self.assertEqual(json.loads(self.zaltag("scan", "--json", self.folder)[0]), [])
        self.zaltag("scan", self.path("missing"), status=1)
        os.makedirs(self.path("a/b"))
        for i in range(200):
            self.write(f"a/{'b/' if i % 2 else ''}{i:04}.mp3", b"" if i % 20 == 7 else FRAME * 2)
        self.write("a/notes.txt", b"not audio")
        os.symlink(self.path("a"), self.path("a/loop"))
        for jobs in ("1", "4"):
            out, err = self.zaltag("scan", "--json", "--jobs", jobs, self.folder, status=1)
            shown = json.loads(out)
            self.assertEqual(len(shown), 200)
            failed = {int(os.path.basename(one["path"])[:4]) for one in shown if "error" in one}
            self.assertEqual(failed, set(range(7, 200, 20)))
            self.assertEqual([one["path"] for one in shown], sorted(one["path"] for one in shown))
            self.assertIn("200 files, 10 failures", err)
        lines = self.zaltag("scan", self.folder, status=1)[0].splitlines()
        self.assertEqual(len(lines), 191)
        self.assertRegex(lines[-1], r"^200 files, 10 failures, \d+ files per second$")
