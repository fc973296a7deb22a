"""The program's artwork command; files are checked with mutagen, marks with exiftool, pixels with ffmpeg."""
import hashlib
import json
import os
import struct
import subprocess
import zlib

import mutagen
from mutagen.id3 import ID3

from support import FRAME, ProgramTest, audio_of

ORIGINAL, CUSTOMIZED = "__zal_original_album_artwork__", "__zal_customized_album_artwork__"


def png(shade, width=24, height=16):
    """A PNG of three colours a pixel, written by hand."""
    def chunk(name, content):
        return struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))
    row = b"\0" + bytes((x * 9 + shade * i) % 256 for x in range(width) for i in range(3))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(row * height)) + chunk(b"IEND", b""))


def encoded(picture, codec, *options):
    """The picture in another format, by ffmpeg."""
    return subprocess.run(["ffmpeg", "-v", "error", "-i", "-", *options, "-c:v", codec, "-f", "image2pipe", "-"],
                          input=picture, capture_output=True, check=True).stdout


def pixels(picture, source="-"):
    """A digest of the decoded pixels, by ffmpeg, which takes some formats from a file only."""
    raw = subprocess.run(["ffmpeg", "-v", "error", "-i", source, "-f", "rawvideo", "-pix_fmt", "rgba", "-"],
                         input=picture, capture_output=True, check=True).stdout
    return hashlib.sha256(raw).hexdigest()


def lens_make(picture):
    """The EXIF lens make, by exiftool."""
    done = subprocess.run(["exiftool", "-json", "-LensMake", "-"], input=picture, capture_output=True, check=True)
    return json.loads(done.stdout)[0].get("LensMake")


def sync_safe(number):
    return bytes(number >> shift & 0x7F for shift in (21, 14, 7, 0))


class Artwork(ProgramTest):
    def song(self, *pictures, name="song.mp3"):
        """An MP3 with a title and these (type, bytes), in this order; mutagen would sort them."""
        def frame(name, content):
            return name + sync_safe(len(content)) + bytes(2) + content
        body = frame(b"TIT2", b"\3title")
        for number, (kind, data) in enumerate(pictures):
            body += frame(b"APIC", b"\0image/x\0" + bytes([kind]) + b"%d\0" % number + data)
        return self.write(name, b"ID3\4\0\0" + sync_safe(len(body)) + body + FRAME * 20)

    def frames(self, song):
        """The pictures by mutagen, in the order of the tag."""
        return ID3(song).getall("APIC")

    def marks(self, song):
        return [picture["mark"] for picture in self.show(song)["allImages"]]

    def pictures(self, song):
        """The bytes of all pictures in their order, by mutagen."""
        file = mutagen.File(song)
        return [bytes(one) for one in file["covr"]] if "covr" in (file.tags or ()) else [
            one.data for one in getattr(file, "pictures", None) or file.tags.getall("APIC")]

    def test_backup_and_restore_keep_the_pixels(self):
        custom, first, second = self.write("custom.png", png(3)), png(1), encoded(png(2), "mjpeg")
        songs = [self.song((3, cover), (4, second), name=f"{i}.mp3") for i, cover in
                 enumerate((encoded(first, "mjpeg"), encoded(first, "libwebp", "-lossless", "1")))]
        for name in ("song.m4a", "song.aiff", "song.flac"):
            songs.append(self.make(name))
            self.zaltag("artwork", "replace", songs[-1], "--image", self.write("first.png", first))
        for song in songs:
            before, audio = self.pictures(song), audio_of(song)
            self.zaltag("artwork", "backup", song, "--image", custom)
            after = self.pictures(song)
            if song.endswith("flac"):  # has the original last, made after the host's picture was put in
                self.assertEqual([lens_make(one) for one in after], [ORIGINAL, CUSTOMIZED])
                continue
            self.assertEqual([lens_make(one) for one in after], [CUSTOMIZED, ORIGINAL, None][:len(before) + 1])
            self.assertEqual([pixels(one) for one in after], [pixels(png(3)), *map(pixels, before)])
            self.zaltag("artwork", "restore", song)
            self.assertEqual([pixels(one) for one in self.pictures(song)], [*map(pixels, before)])
            self.check_audio(song, audio)
        self.assertEqual([(f.type, f.mime) for f in self.frames(songs[0])], [(0, "image/x"), (0, "image/x")])

    def test_marks_leave_other_exif_alone(self):
        plain = self.write("plain.jpg", encoded(png(1), "mjpeg"))
        subprocess.run(["exiftool", "-q", "-overwrite_original", "-Make=Maker", "-ISO=200", "-GPSLatitude=12",
                        "-Artist=Ünï", f"-ThumbnailImage<={plain}", plain], check=True)
        before = json.loads(subprocess.check_output(["exiftool", "-json", "-b", "-EXIF:all", plain]))[0]
        self.assertIn("ThumbnailImage", before)
        song = self.song((3, self.content(plain)))
        self.zaltag("artwork", "backup", song, "--image", self.write("c.png", png(3)))
        marked = self.write("marked.jpg", self.frames(song)[1].data)
        after = json.loads(subprocess.check_output(["exiftool", "-json", "-b", "-EXIF:all", marked]))[0]
        self.assertEqual(after.pop("LensMake"), ORIGINAL)
        for tags in (before, after):
            tags.pop("SourceFile")
        self.assertEqual(after, before)

    def test_list_export_replace_and_clear(self):
        jpeg = encoded(png(1), "mjpeg")
        song, empty = self.song((3, jpeg), (4, b"no picture"), (6, png(2, 5, 7)), name="a song.mp3"), self.mp3("none.mp3")
        shown = self.show(song)["allImages"]
        self.assertEqual([(p["type"], p["format"], p["width"], p["height"], p["bytes"]) for p in shown],
                         [(3, "jpeg", 24, 16, len(jpeg)), (4, None, None, None, 10), (6, "png", 5, 7, len(png(2, 5, 7)))])
        listed = json.loads(self.zaltag("artwork", "list", "--json", song, empty)[0])
        self.assertEqual([one["allImages"] for one in listed], [shown, []])
        self.assertIn("2\t4\t-\t-\t10\t-", self.zaltag("artwork", "list", song)[0])
        image, folder = self.write("c.png", png(3)), self.path("out/deep")
        self.zaltag("artwork", "backup", song, empty, "--image", image)
        names = [f"a song.{name}" for name in ("1.customized.png", "2.original.jpg", "3.bin", "4.png")]
        out, _ = self.zaltag("artwork", "export", song, "--out", folder)
        self.assertEqual(out.splitlines(), [os.path.join(folder, name) for name in names])
        self.assertEqual([self.content(os.path.join(folder, name)) for name in names], [f.data for f in self.frames(song)])
        _, err = self.zaltag("artwork", "export", song, "--out", folder, status=1)
        self.assertIn("exists", err, "nothing is overwritten")
        _, err = self.zaltag("artwork", "replace", "--image", image, song, status=1)
        self.assertEqual(err, f"zaltag: {song}: holds a customised picture; restore the original one first\n")
        self.zaltag("artwork", "clear", song, empty)
        self.assertEqual((self.show(song)["allImages"], self.show(empty)["allImages"]), ([], []))

    def test_every_format_is_taken(self):
        picture = png(7, 150, 100)
        variants = [("bmp",), ("gif", "-pix_fmt", "gray"), ("png", "-pix_fmt", "rgb48be"), ("mjpeg",),
                    ("libwebp", "-lossless", "1")]
        variants += [("tiff", "-compression_algo", packing, "-pix_fmt", pixel) for packing, pixel in
                     (("raw", "rgb24"), ("packbits", "gray"), ("deflate", "rgba"), ("lzw", "rgb24"), ("lzw", "monob"),
                      ("lzw", "pal8"), ("lzw", "rgb48le"))]
        for codec, *options in variants:
            data, song = encoded(picture, codec, *options), self.mp3("one.mp3")
            self.zaltag("artwork", "replace", song, "--image", self.write("one.tiff", data))
            shown = self.show(song)["allImages"][0]
            self.assertEqual((shown["width"], shown["height"]), (150, 100))
            if codec not in ("mjpeg", "gif") and "rgb48" not in str(options):  # which decoders round differently
                source = self.path("one.tiff") if codec == "tiff" else "-"
                self.assertEqual(pixels(self.frames(song)[0].data), pixels(data, source), (codec, options))

    def test_a_picture_that_cannot_be_read_touches_nothing(self):
        song = self.song((3, png(1)))
        before = self.content(song)
        for image, reason in ((self.write("cut.png", png(1)[:-20]), "is not a picture"), (self.folder, "Is a directory"),
                              (self.path("missing.png"), "No such file")):
            for verb in ("replace", "backup"):
                out, err = self.zaltag("artwork", verb, song, "--image", image, status=1)
                self.assertEqual((out, len(err.splitlines())), ("", 1))
                self.assertIn(reason, err)
        self.zaltag("artwork", "backup", song, status=2)
        self.assertEqual(self.content(song), before)
