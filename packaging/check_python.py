#!/usr/bin/python3
"""check_python.py FOLDER: makes an audio file of every format in a folder and changes each with the module zaltag that
PYTHONPATH names. mutagen, which nobody here wrote, reads them again."""
import pathlib
import subprocess
import sys

import mutagen

import zaltag


def main():
    folder = pathlib.Path(sys.argv[1])
    titles = {"mp3": "TIT2", "m4a": "\xa9nam", "flac": "title", "wav": "TIT2", "aiff": "TIT2"}
    for extension, title in titles.items():
        path = folder / f"packaged.{extension}"
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=f=330:d=0.2", path], check=True)
        with zaltag.open(path) as tag:
            tag.title = "from the package"
            tag.serato_cue_points = [zaltag.CuePoint(0.1, "Drop")]
        with zaltag.open(path, read_only=True) as tag:
            assert tag.serato_cue_points == [zaltag.CuePoint(0.1, "Drop")], path
        assert str(mutagen.File(path)[title][0]) == "from the package", path
        path.unlink()
    print(f"zaltag {zaltag.__version__} of {pathlib.Path(zaltag.__file__).parent}: {', '.join(titles)}")


if __name__ == "__main__":
    main()
