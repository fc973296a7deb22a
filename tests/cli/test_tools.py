"""Copies of tags, read by mutagen."""
import os

import mutagen
from mutagen.flac import FLAC, Picture
from mutagen.id3 import APIC, COMM, GEOB, ID3, PRIV, TALB, TBPM, TCON, TIT2, TPE1, TRCK, TXXX
from mutagen.mp4 import MP4, AtomDataType, MP4Cover, MP4FreeForm

from support import ProgramTest, audio_of
from test_artwork import png

OLD_AUDIO = {"COMM:iTunNORM:eng", "GEOB:Serato Autotags"}
V1 = b"TAG" + b"V1".ljust(30, b"\0") + bytes(94) + b"\x11"


def frames():
    """Frames of an old file; those of OLD_AUDIO are not to be copied."""
    return [TIT2(encoding=1, text="Über"), TCON(encoding=3, text="(17)"), COMM(encoding=3, lang="eng", text="note"),
            COMM(encoding=0, lang="eng", desc="iTunNORM", text=" 00000 0"), TXXX(encoding=3, desc="EnergyLevel", text="7"),
            GEOB(encoding=0, mime="a/b", desc="Serato Autotags", data=b"\1\1"), PRIV(owner="TRAKTOR4", data=bytes(300)),
            GEOB(encoding=0, mime="a/b", desc="Serato Markers2", data=bytes(range(256)) * 20),
            APIC(encoding=0, mime="image/png", type=3, data=png(1))]


OWN = [TPE1(encoding=3, text="Own artist"), TCON(encoding=3, text="House")]


class Copy(ProgramTest):
    def copy(self, source, destination):
        """Copies, and sees that neither the source nor any audio changed. Gives the destination."""
        before, audio = self.content(source), audio_of(destination)
        self.zaltag("copy", source, destination)
        self.assertEqual(self.content(source), before)
        self.check_audio(destination, audio)
        return destination

    def tagged(self, name, with_frames):
        song = self.make(name, "-bitexact", *(("-write_id3v2", "0", "-write_id3v1", "0") if name.endswith("mp3") else ()))
        file = mutagen.File(song)
        if file.tags is None:
            file.add_tags()
        file.tags.clear()
        for frame in with_frames:
            file.tags.add(frame)
        file.save()
        return song

    def check_frames(self, tags):
        """Behind the destination's own frames stand those of frames(), each as it was."""
        expected = {frame.HashKey: frame for frame in frames() if frame.HashKey not in {"TCON", *OLD_AUDIO}}
        self.assertEqual([str(tags.pop(name)) for name in ("TPE1", "TCON")], ["Own artist", "Rock"])
        self.assertEqual(tags.keys(), expected.keys())
        for key, frame in expected.items():
            for name in ("text", "data", "mime", "desc", "owner", "type"):
                self.assertEqual(getattr(tags[key], name, None), getattr(frame, name, None), key)

    def test_id3(self):
        for extension in ("aiff", "wav", "mp3"):
            source = self.tagged(f"old.{extension}", frames())
            song = self.copy(source, self.tagged(f"new.{extension}", OWN))
            self.check_frames(mutagen.File(song).tags)
        self.assertEqual(ID3(song).version, (2, 4, 0))
        self.assertNotEqual(self.content(song)[-128:-125], b"TAG")
        with open(source, "ab") as file:
            file.write(V1)
        self.copy(source, song)
        self.assertEqual((self.content(song)[-128:-123], self.content(song)[-1]), (b"TAGV1", 0x11))
        self.assertEqual(len(ID3(song).getall("TXXX")), 1)
        self.assertEqual(self.content(song).count(b"TRAKTOR4"), 2, "frames are added")

    def test_flac(self):
        source, song = self.make("old.flac"), self.make("new.flac")
        for path, fields, cover in ((source, {"TITLE": ["Ü"], "ARTIST": ["A", "B"], "X Y": ["z"]}, 1),
                                    (song, {"ALBUM": ["gone"], "TITLE": ["gone"]}, 2)):
            file = FLAC(path)
            file.delete()
            file.update(fields)
            picture = Picture()
            picture.data, picture.mime, picture.type = png(cover), "image/png", 3
            file.add_picture(picture)
            file.save()
        id3 = ID3()
        for frame in [*frames(), OWN[0]]:
            id3.add(frame)
        id3.save(source)
        with open(source, "ab") as file:
            file.write(V1)
        before, audio = self.content(source), self.content(song)[-3000:]
        self.zaltag("copy", source, song)
        self.assertEqual((self.content(source), self.content(song)[-3128:-128]), (before, audio))
        self.assertEqual(dict(FLAC(song).tags), {"title": ["Ü"], "artist": ["A", "B"], "x y": ["z"]})
        self.assertEqual([picture.data for picture in FLAC(song).pictures], [png(2)])
        self.check_frames(ID3(song))
        self.assertEqual(self.content(song)[-128:-123], b"TAGV1")

    def mp4_with(self, name, **items):
        song = self.make(name)
        file = MP4(song)
        file.tags.clear()
        file.tags.update(items)
        file.save()
        return song

    def test_mp4(self):
        free = lambda text: [MP4FreeForm(text, AtomDataType.UTF8)]
        items = {"©nam": ["Ü"], "trkn": [(3, 12)], "disk": [(1, 2)], "tmpo": [128], "cpil": True, "©ART": ["A", "B"],
                 "covr": [MP4Cover(png(1), MP4Cover.FORMAT_PNG), MP4Cover(png(2), MP4Cover.FORMAT_PNG)],
                 "----:com.serato.dj:markersv2": free(b"AQE="), "----:com.apple.iTunes:initialkey": free(b"8A")}
        left_out = {f"----:com.apple.iTunes:{name}": free(b" 0 0") for name in ("iTunNORM", "iTunSMPB")}
        source = self.mp4_with("old.m4a", **items, **left_out)
        song = self.copy(source, self.mp4_with("new.mp4", **{"©alb": ["gone"], "tmpo": [99], **left_out}))
        self.assertEqual(dict(MP4(song).tags), items)

    def test_mp4_to_mp3(self):
        source = self.mp4_with("old.m4a", **{
            "©nam": ["Ü"], "©ART": ["A"], "©cmt": ["note"], "©gen": ["House"], "©day": ["1999"], "trkn": [(3, 12)],
            "tmpo": [128], "cpil": True, "covr": [MP4Cover(png(1), MP4Cover.FORMAT_JPEG),
                                                 MP4Cover(png(2), 27)]})
        own = [TALB(encoding=3, text="gone"), TRCK(encoding=3, text="9"), TBPM(encoding=3, text="99"),
               COMM(encoding=3, lang="deu", desc="", text="gone"), TXXX(encoding=3, desc="X", text="stays"),
               APIC(encoding=0, mime="image/png", type=3, desc="own", data=png(3))]
        tags = ID3(self.copy(source, self.tagged("new.mp3", own)))
        texts = {"TIT2": "Ü", "TPE1": "A", "TCON": "House", "TDRC": "1999", "TRCK": "3/12", "TBPM": "128", "TCMP": "1",
                 "COMM::eng": "note", "TXXX:X": "stays"}
        self.assertEqual({key: str(frame) for key, frame in tags.items() if not key.startswith("APIC")}, texts)
        pictures = [(picture.mime, picture.data) for picture in tags.getall("APIC")]
        self.assertEqual(pictures, [("image/png", png(3)), ("image/jpeg", png(1)), ("image/png", png(2))])
        source = self.mp4_with("zero.m4a", **{"trkn": [(3, 0)], "tmpo": [0], "cpil": False})
        tags = ID3(self.copy(source, self.tagged("zero.mp3", [TPE1(encoding=3, text="gone"), TXXX(desc="X", text="y")])))
        self.assertEqual({key: str(frame) for key, frame in tags.items()}, {"TRCK": "3/0", "TXXX:X": "y"})

    def test_what_cannot_be_copied(self):
        song = self.tagged("a.mp3", frames())
        wav, before = self.make("a.wav"), self.content(song)
        os.link(song, self.path("hard.mp3"))
        os.symlink(song, self.path("soft.mp3"))
        cut = self.write("cut.m4a", b"no MP4")
        for source, destination, reason in (
                (song, song, "is the source, too"), (song, self.path("hard.mp3"), "is the source, too"),
                (self.path("soft.mp3"), song, "is the source, too"), (song, wav, "files of these two types cannot"),
                (cut, song, "not a readable audio file"), (song, self.path("none.mp3"), "no such file")):
            out, err = self.zaltag("copy", source, destination, status=1)
            self.assertEqual((out, len(err.splitlines())), ("", 1), err)
            self.assertIn(reason, err)
            self.assertEqual(self.content(song), before)
        self.zaltag("copy", song, status=2)
