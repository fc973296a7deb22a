"""What the tests of the zaltag program share: running it, and making audio files for it."""
import json
import os
import shutil
import subprocess
import tempfile
import unittest

ZALTAG = os.environ["ZALTAG"]
# In memory, where syncing a file costs nothing, when there is room.
MEMORY = "/dev/shm" if os.path.isdir("/dev/shm") and shutil.disk_usage("/dev/shm").free >= 1 << 30 else None
FRAME = bytes.fromhex("FFFB9064") + bytes(413)  # one silent MPEG 1 layer III frame


def audio_of(path):
    """A digest of the packets, by ffmpeg."""
    return subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-map", "0:a", "-c", "copy", "-f", "md5", "-"],
                          capture_output=True, check=True).stdout


class ProgramTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="zaltag-", dir=MEMORY)
        self.addCleanup(shutil.rmtree, self.folder)
        os.environ["XDG_STATE_HOME"] = self.path("state")  # where runs note how to take them back

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)
        return self.path(name)

    def mp3(self, name="song.mp3", frames=20):
        return self.write(name, FRAME * frames)

    def content(self, path):
        with open(path, "rb") as file:
            return file.read()

    def run_program(self, *arguments, **options):
        return subprocess.run([ZALTAG, *arguments], capture_output=True, timeout=600, **options)

    def zaltag(self, *arguments, status=0):
        """Runs the program, checks its exit status, and gives both outputs as text."""
        done = self.run_program(*arguments)
        out, err = (text.decode("utf-8", "replace") for text in (done.stdout, done.stderr))
        self.assertEqual(done.returncode, status, f"{arguments}: {out}{err}")
        return out, err

    def show(self, path):
        return json.loads(self.zaltag("show", "--json", path)[0])[0]

    def make(self, name, *options):
        """An audio file of a second, by ffmpeg."""
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "sine=f=330:d=1", *options, self.path(name)], check=True)
        return self.path(name)

    def check_audio(self, song, before):
        """The audio is what it was, and others find nothing wrong with the file."""
        self.assertEqual(audio_of(song), before)
        done = subprocess.run(["ffprobe", "-v", "error", song], capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        if song.endswith(".flac"):
            subprocess.run(["flac", "-t", "-s", song], check=True)
