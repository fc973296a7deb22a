"""The hostile set: audio files and collections that break what believes them. Every audio file that could be saved
holds AUDIO, which no save may lose."""
import base64
import random
import struct
import zlib

FRAME = bytes.fromhex("FFFB1064") + bytes(i * 7 % 251 for i in range(100))  # MPEG 1 layer III, 32 kbit/s
AUDIO = FRAME * 3
WORST = (0, 1, 7, 0x10000, 0xFFFFFFFF)  # nothing, odd, beyond the file, all there is


def be(number):
    return struct.pack(">I", number)


def le(number):
    return struct.pack("<I", number)


def syncsafe(number):
    return bytes(number >> shift & 127 for shift in (21, 14, 7, 0))


# ID3

def frame(name, content, size=None, flags=0):
    return name + (syncsafe(len(content)) if size is None else size) + struct.pack(">H", flags) + content


def id3(body, version=4, flags=0, size=None):
    return b"ID3" + bytes((version, 0, flags)) + (syncsafe(len(body)) if size is None else size) + body


def escaped(content):
    return content.replace(b"\xff", b"\xff\0")


def unsynchronised(name, content):
    """A compressed frame."""
    return frame(name, escaped(content), flags=10)


def chapter(content):
    return frame(b"CHAP", content, flags=2)


def objects(description, content):
    return frame(b"GEOB", b"\0a/b\0\0" + description + b"\0" + content)


TITLE = frame(b"TIT2", b"\0title")


def tags():
    """Tags by name, wherever a container puts them."""
    yield "of-256-mb", id3(TITLE, size=b"\x7f" * 4)
    yield "no-end", id3(TITLE, size=b"\xff" * 4)
    for version, size in ((2, b"\xff" * 3), (3, b"\xff" * 4), (3, be(0x7FFFFFFF)), (4, b"\x7f" * 4), (4, bytes(4))):
        cut = b"TT2" + size + b"\0x" if version == 2 else frame(b"TIT2", b"\0x", size)
        yield f"frame-{size.hex()}-v2{version}", id3(cut + bytes(20), version)
    for version in (3, 4):
        for size in (bytes(4), be(3), be(6), be(0xFFFFFFFF), b"\x7f" * 4, syncsafe(len(TITLE) + 4)):
            yield f"extended-{size.hex()}-v2{version}", id3(size + TITLE, version, 0x40)
    yield "footer-alone", id3(b"x", 4, 0x10)
    yield "unsynchronised", id3(b"\xff" * 1000, 3, 0x80)
    yield "chapters-20000-deep", CHAPTERS
    yield "chapters-3-deep", make_chapters(3)
    yield "chapters-4-deep", make_chapters(4)
    yield "chapters-of-noise", id3(chapter(b"a" + bytes(17) + NOISE) * 2 + NOISE)
    yield "chapters-in-a-text", id3(frame(b"CHAP", b"a\0\0\0CHAP\0\0\0\x22TIT2" + bytes(20)) + frame(b"TIT2", b"\0CHAP ONE"))
    yield "chapter-that-cannot-be-inflated", id3(frame(b"CHAP", be(20) + b"\x78\x9c\0\0", flags=8))
    yield "inflating-to-2-gb", id3(frame(b"TXXX", syncsafe(1) + BOMB, flags=9))
    yield "inflating-to-2-gb-v23", id3(frame(b"TXXX", be(1) + BOMB, be(len(BOMB) + 4), 0x80), 3)
    yield "inflating-in-a-chapter", id3(chapter(escaped(bytes(17) + unsynchronised(b"PRIV", b"\x01\xff\x01\x01" + BOMB))))
    yield "inflating-behind-a-longer-length", id3(unsynchronised(b"PRIV", b"\xff\1\1\1" + BOMB))
    yield "text-in-5-million-parts", id3(frame(b"TIT2", syncsafe(1) + zlib.compress(b"\0" + b"a\0" * 5000000), flags=9))
    yield "chapters-that-claim-each-other", id3(frame(b"CHAP", syncsafe(20000) + bytes(17), flags=1) * 24 + bytes(50))
    yield "texts-that-claim-each-other", id3(frame(b"TIT2", b"\x7f" * 4 + b"\0a", flags=1) * 800 + objects(b"x", bytes(1 << 20)))
    yield "chapters-unsynchronised-twice", id3(chapter(escaped(bytes(17) + chapter(escaped(
        bytes(17) + b"CHAP\0\0\0\xff\0\x08" + syncsafe(1) + zlib.compress(bytes(17) + CHAPTERS[10:]) + bytes(400))))))
    yield "genre-of-brackets", id3(frame(b"TCON", b"\0" + b"()" * 400000))
    yield "genres-199000", id3(frame(b"TCON", b"".join(b"\0%d" % number for number in range(199000))))
    yield "lyrics-without-ends", id3(frame(b"SYLT", b"\0eng\2\1d\0" + b"\1" * 1500000))
    yield "links-in-14-million-parts", id3(b"WFD" + be(14000001)[1:] + bytes(14000000) + b"a", 2)
    yield "frames-20000", id3(frame(b"TXXX", b"\0a\0b") * 20000)
    yield "of-version-5", id3(TITLE, 5)
    # Behind the last frame stands what a newer version would take for one.
    yield "tail-of-another-version", id3(b"TT2\0\0\2\0aA  \0" + be(1) + b"\0\0x", 2)
    yield "frames-9990", id3(frame(b"TXXX", b"\0a\0b") * 9990)
    for name, picture in pictures():
        yield "picture-" + name, id3(frame(b"APIC", b"\0image/x\0\3\0" + picture) * 3)
    for name, content in payloads():
        yield name[0], id3(objects(name[1], content))


def make_bomb():
    """Two gigabytes of zeros, deflated; made of repeated blocks, since deflating them takes seconds."""
    compressor = zlib.compressobj(9)
    head = compressor.compress(bytes(1 << 20)) + compressor.flush(zlib.Z_FULL_FLUSH)
    block = compressor.compress(bytes(1 << 20)) + compressor.flush(zlib.Z_FULL_FLUSH)
    return head + block * 2047


BOMB = make_bomb()


def make_chapters(depth=20000):
    """Chapters within one another, each with a length of its own."""
    sizes = [18 + 28 * i for i in reversed(range(depth))]
    return id3(b"".join(b"CHAP" + be(size) + b"\0\0c\0" + bytes(16) for size in sizes), 3)


CHAPTERS = make_chapters()
NOISE = frame(b"APIC", b"\0i\0\3\0" + random.Random(1).randbytes(300000))
V1 = b"TAG" + b"title".ljust(124, b"\0") + b"\xff"


# Pictures and payloads

PIXEL = bytes.fromhex("89504E470D0A1A0A0000000D4948445200000001000000010802000000907753DE"
                      "0000000F494441547801010400FBFF00FF0000030101008D1DE5820000000049454E44AE426082")


def pictures():
    """Pictures of the largest size that their format can claim."""
    wide, chunk = 100000, lambda name, content: be(len(content)) + name + content + be(zlib.crc32(name + content))
    yield "png", (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", be(wide) * 2 + bytes((8, 6, 0, 0, 0))) +
                  chunk(b"IDAT", zlib.compress(bytes(1000))) + chunk(b"IEND", b""))
    texts = chunk(b"zTXt", b"k\0\0" + zlib.compress(bytes(7000000))) * 60
    yield "png-of-texts", PIXEL[:33] + texts + PIXEL[33:]
    yield "bmp", b"BM" + le(1000) + bytes(4) + le(54) + le(40) + le(wide) * 2 + struct.pack("<HH", 1, 24) + bytes(900)
    yield "gif", b"GIF89a" + b"\xff" * 4 + b"\xf0\0\0" + bytes(6) + b"," + bytes(4) + b"\xff" * 4 + b"\0\2\2\x44\1\0;"
    yield "jpeg", (b"\xff\xd8\xff\xc2\0\x11\x08\xff\xff\xff\xff\3\1\x22\0\2\x11\0\3\x11\0" +
                   b"\xff\xda\0\x0c\3\1\0\2\0\3\0\0\0\0" * 200 + b"\xff\xd9")
    entry = lambda tag, value: struct.pack("<HHII", tag, 4, 1, value)
    values = ((256, wide), (257, wide), (258, 8), (259, 1), (262, 2), (273, 8), (277, 3), (278, wide), (279, 0xFFFFFFFF))
    yield "tiff", b"II*\0" + le(8) + struct.pack("<H", 9) + b"".join(entry(*row) for row in values) + bytes(4)
    yield "webp", b"RIFF" + le(30) + b"WEBPVP8L" + le(18) + b"\x2f\xff\xff\xff\x0f" + bytes(13)


def payloads():
    """Payloads by (name, carrier) in which a count, a length or a nesting lies."""
    many = be(0x20000000)
    inner = b"\1\1" + b"CUE\0" + many + b"\0\0\0\0\x01\x00"
    yield ("grid-of-20000000", b"Serato BeatGrid"), b"\1\0" + many + bytes(20)
    yield ("cues-of-20000000", b"Serato Markers2"), b"\1\1" + base64.b64encode(inner) + bytes(400)
    yield ("old-cues-of-20000000", b"Serato Markers_"), b"\2\5" + many + bytes(60)
    deep = b'{"algorithm":1,"key":' + b"[" * 100000 + b"]" * 100000 + b"}"
    yield ("json-100000-deep", b"Key"), base64.b64encode(deep)
    yield ("beats-without-end", b"BeatGrid"), base64.b64encode(b'{"beats":[' + b"1e999," * 9 + b'1],"tempo":-1e308}')


# Containers

def chunk(name, content, size, number):
    return name + number(len(content) if size is None else size) + content + bytes(len(content) % 2)


def form(kind, sizes={}, tag=None):
    """A WAV or AIFF file, with sizes of chunks replaced."""
    number = le if kind == "wav" else be
    part = lambda name, content: chunk(name, content, sizes.get(name), number)
    if kind == "wav":
        body = b"WAVE" + part(b"fmt ", struct.pack("<HHIIHH", 1, 1, 44100, 88200, 2, 16)) + part(b"data", AUDIO)
        body += part(b"LIST", b"INFO" + chunk(b"INAM", b"name\0\0", sizes.get(b"INAM"), le))
    else:
        body = b"AIFF" + part(b"COMM", b"\0\1" + be(156) + b"\0\x10\x40\x0e\xac\x44" + bytes(6))
        body += part(b"SSND", bytes(8) + AUDIO)
    body += part(b"ID3 ", tag or id3(TITLE))
    return chunk(b"RIFF" if kind == "wav" else b"FORM", body, sizes.get(b"FORM"), number)


def flac(blocks=b"", last=None):
    info = b"\0\0\0\x22" + struct.pack(">HH", 4096, 4096) + bytes(6) + bytes.fromhex("0AC442F000000000") + bytes(16)
    return b"fLaC" + info + blocks + (b"\x81\0\0\x04" + bytes(4) if last is None else last) + AUDIO


def block(kind, content, size=None):
    return bytes((kind,)) + be(len(content) if size is None else size)[1:] + content


def atom(name, content, size=None):
    return be(8 + len(content) if size is None else size) + name + content


def nested(name, depth=100000):
    """Atoms within one another. A "meta" holds four bytes in front of its children, an "stsd" eight."""
    between = {b"meta": bytes(4), b"stsd": bytes(8)}.get(name, b"")
    step = 8 + len(between)
    return b"".join(be(step * (depth - i)) + name + between for i in range(depth))


def mp4(movie=b"", behind=b""):
    return atom(b"ftyp", b"M4A ") + atom(b"moov", movie) + atom(b"mdat", AUDIO) + behind


def user_data(items):
    """The atom of a tag with these items."""
    return atom(b"udta", atom(b"meta", bytes(4) + atom(b"hdlr", bytes(8) + b"mdirappl" + bytes(9)) + atom(b"ilst", items)))


def item(*values):
    """A tag with one item of these values."""
    return user_data(atom(b"\xa9nam", b"".join(values)))


def song(user=b"", behind=b""):
    """An MP4 file with a table of two places of its audio."""
    head = atom(b"ftyp", b"M4A ")

    def movie(start):
        track = atom(b"stco", bytes(4) + be(2) + be(start + 8) + be(start + 8 + len(AUDIO) // 2))
        for around in (b"stbl", b"minf", b"mdia", b"trak"):
            track = atom(around, track)
        return atom(b"moov", track + user)
    return head + movie(len(head) + len(movie(0))) + atom(b"mdat", AUDIO) + behind


def damaged(name, offset, content):
    """The same whose atom of a name has other bytes from an offset on."""
    file = song()
    at = file.index(name) - 4 + offset
    return file[:at] + content + file[at + len(content):]


def mp4_files():
    fragment = lambda absolute: atom(b"moof", atom(b"traf", atom(b"tfhd", bytes((0, 0, 0, absolute)) + bytes(12))))
    ended = atom(b"udta", item()[8:] + bytes(4))  # by a length of 0, as QuickTime writes it
    yield "whole", song()
    yield "table-longer-than-its-atom", damaged(b"stco", 12, be(3))
    yield "table-of-4-billion", damaged(b"stco", 12, b"\xff" * 4)
    yield "table-to-the-end", damaged(b"stco", 0, bytes(4))
    yield "table-without-a-head", atom(b"moov", atom(b"stco", b""))
    yield "table-behind-the-end-of-user-data", song(ended + atom(b"trak", atom(b"stco", bytes(8))))
    yield "audio-to-the-end", damaged(b"mdat", 0, bytes(4))
    yield "audio-cut-off", song()[:-20]
    yield "atom-beyond-the-one-around", atom(b"moov", be(108) + b"name") + atom(b"free", bytes(92))
    yield "items-of-2-gb", atom(b"moov", atom(b"udta", atom(b"meta", bytes(4) + be(0x7FFFFFFF) + b"ilst" + be(0x7FFFFFF7) + b"\xa9nam")))
    yield "fragments-with-places", song(behind=fragment(1) * 2)
    yield "fragments-with-one-place", song(behind=fragment(1) + fragment(0))
    yield "fragments-behind-the-end-of-user-data", song(ended, fragment(1))
    yield "user-data-with-a-length-of-0", song(atom(b"udta", bytes(4) + atom(b"name", b"\1")))
    yield "movie-with-a-long-length", be(1) + b"moov" + be(0) + be(24) + be(8) + b"free"
    yield "movie-alone-missing", atom(b"ftyp", b"M4A ")
    yield "length-of-7", song(behind=be(7) + b"free")
    yield "length-of-63-bits", song(behind=be(1) + b"free" + b"\x7f" + b"\xff" * 7)
    yield "value-without-a-head", song(item(be(12) + b"data" + be(1)))


def mp3_files():
    header = bytes.fromhex("FFFB9064")  # of a frame of 417 bytes
    yield "frame-cut-off", header + bytes(200)
    yield "frame-in-text", b"x" * 5000 + header + b"x" * 5000
    yield "frame-alone", header + bytes(413)
    yield "frames-in-junk", bytes(3000) + (header + bytes(413)) * 2 + bytes(3000)
    part = frame(b"PRIV", syncsafe(30 << 20) + zlib.compress(bytes(30 << 20)), flags=9)
    yield "inflating-to-1-gb-in-parts", id3(part * 40) + AUDIO
    yield "tag-alone", id3(TITLE)
    yield "v1-alone", bytes(3000) + V1
    ape = lambda size=32, flags=0: b"APETAGEX" + le(2000) + le(size) + le(0) + le(flags) + bytes(8)
    yield "ape-alone", bytes(3000) + ape()
    body = TITLE + bytes(20)
    tag = lambda longer=0, flags=0: id3(body, flags=flags, size=syncsafe(len(body) + longer))
    yield "tag-and-v1", tag() + AUDIO + V1
    yield "tag-with-a-footer", tag(flags=0x10) + b"3DI\4\0\x10" + syncsafe(len(body)) + AUDIO
    yield "tag-without-its-footer", tag(flags=0x10) + AUDIO
    yield "tag-beyond-the-file", tag(50) + bytes(40)
    yield "tag-behind-the-audio", AUDIO + tag(50)
    yield "second-tag-beyond-the-file", tag() + tag(90) + bytes(80)
    yield "tag-into-v1", tag(50) + V1
    yield "tag-into-ape", tag(20) + ape()
    yield "ape-behind-the-audio", tag() + AUDIO + ape()
    yield "ape-with-a-header", tag() + AUDIO + ape(flags=0xA0000000) + ape(flags=0x80000000) + V1


def form_files(kind):
    number = le if kind == "wav" else be
    part = lambda name, content: chunk(name, content, None, number)
    whole, torn = form(kind), part(b"\1\2\3\4", b"")
    yield "torn", resized(whole + torn + part(b"ID3 ", id3(TITLE)), number)
    yield "rest", resized(whole + b"dat", number)
    yield "cut", whole[:-20]
    yield "of-nothing", resized(whole[:12], number)
    yield "of-another-kind", whole[:8] + b"X" + whole[9:]
    yield "of-a-sister-kind", whole[:11] + b"C" + whole[12:]
    # Taking the tag away moves the pad bytes behind it to wrong places.
    odd = whole.replace(part(b"ID3 ", id3(TITLE)), b"")
    yield "chunks-10000", resized(odd + part(b"junk", b"") * (9997 if kind == "wav" else 9998), number)
    yield "odd-tag-without-a-pad-byte", resized(odd[:12] + part(b"ID3 ", id3(TITLE + b"\0"))[:-1] + odd[12:] + b"\0" + part(b"cue ", b""), number)


def resized(file, number):
    return file[:4] + number(len(file) - 8) + file[8:]


def audio_files():
    """The name of every file and its content."""
    for kind in ("mp3", "wav", "aiff", "m4a", "flac"):
        yield f"empty.{kind}", b""
        yield f"text.{kind}", b"x" * 5000
    for name, content in mp3_files():
        yield f"{name}.mp3", content
    for name, content in mp4_files():
        yield f"{name}.m4a", content
    for kind in ("wav", "aiff"):
        for name, content in form_files(kind):
            yield f"form-{name}.{kind}", content
    for name, tag in tags():
        yield f"id3-{name}.mp3", tag + AUDIO
        yield f"id3-{name}.wav", form("wav", tag=tag)
        yield f"id3-{name}.aiff", form("aiff", tag=tag)
        yield f"id3-{name}.flac", tag + flac()
    for name, tag in (("late", b"junk" * 5), ("second", id3(TITLE)), ("third", id3(TITLE) * 2)):
        yield f"id3-{name}-too-long.mp3", tag + id3(TITLE, size=b"\x7f" * 4) + AUDIO
    # Frames that not every reader takes for some, and the tag behind them.
    for name, start in (("layer-1", (b"\xff\xff\x10\x64" + bytes(28)) * 2), ("alone", b"junk")):
        yield f"id3-behind-{name}.mp3", start + CHAPTERS + AUDIO
    endless = form("wav", {b"data": 0xFFFFFFFF})
    yield "lists-that-end-nowhere.wav", endless[:endless.index(AUDIO)] + b"LIST\0\0\0\0" * 200000 + b"junk\xff"
    for kind, names in (("wav", (b"FORM", b"LIST", b"INAM", b"data", b"fmt ", b"ID3 ")),
                        ("aiff", (b"FORM", b"COMM", b"SSND", b"ID3 "))):
        for name in names:
            for size in WORST:
                yield f"size-{name.decode().strip()}-{size:x}.{kind}", form(kind, {name: size})
        yield f"chunks-100000.{kind}", form(kind) + chunk(b"junk", b"", None, le) * 100000
        yield f"head-alone.{kind}", form(kind)[:12]
    for size in (0, 7, 31, 0x10000, 0xFFFFFFFF, 0x80000000):
        yield f"ape-{size:x}.mp3", AUDIO + b"APETAGEX" + le(2000) + le(size) + le(0x20000000) + le(1 << 31) + bytes(8)
    texts = le(8000001) + bytes(4) + b"Title\0" + bytes(8000000) + b"a"
    yield "ape-of-8-million-texts.mp3", AUDIO + texts + b"APETAGEX" + le(2000) + le(len(texts) + 32) + le(1) + bytes(12)
    text = lambda length, count: le(length) + b"x" + le(count) + le(length) + b"A=b"
    for name, blocks in (("comment-count", block(4, text(1, 0x20000000))), ("comment-length", block(4, text(0xFFFFFFFC, 1))),
                         ("comment-empty", block(4, b"")), ("past-file", block(4, b"x", 0xFFFFFF)),
                         ("second-info", block(0, bytes(3))), ("65534-of-them", block(2, b"") * 65534),
                         ("comment-back-to-itself", block(4, bytes(4) + le(255) + le(0xFFFFFFFC) + b"a=" + bytes(2000))),
                         ("maker-back-to-itself", block(4, le(0xFFFFFFFC) + le(4) + bytes(2000))),
                         ("comment-too-long", block(4, bytes(4) + le(1) + le(0xFFFF) + b"a=b")), ("100000-of-them", block(1, b"") * 100000),
                         ("picture-lengths", block(6, be(3) + be(0x20000000) + bytes(40))),
                         ("picture-data", block(6, be(3) + be(0) * 2 + bytes(16) + be(0xFFFFFFFF) + b"x"))):
        yield f"block-{name}.flac", flac(blocks)
    yield "block-never-last.flac", flac(last=block(1, b"", 0xFFFFFF))
    for name, content in (("frames-in-front", AUDIO + flac()), ("junk-behind-the-tag", id3(TITLE) + bytes(5) + flac()),
                          ("tag-alone", id3(TITLE)), ("two-tags", id3(TITLE) * 2 + flac()), ("cut-in-a-block", flac()[:30])):
        yield f"{name}.flac", content
    for name, picture in pictures():
        described = be(3) + be(0) * 2 + be(100000) * 2 + bytes(8) + be(len(picture)) + picture
        yield f"picture-{name}.flac", flac(block(6, described))
        yield f"picture-{name}.m4a", mp4(item(atom(b"data", be(14) + bytes(4) + picture)).replace(b"\xa9nam", b"covr"))
    for name in (b"moov", b"udta", b"ilst", b"meta", b"trak", b"moof", b"stsd"):
        yield f"nested-{name.decode()}.m4a", mp4(behind=nested(name))
        yield f"nested-in-moov-{name.decode()}.m4a", mp4(nested(name))
    for size in WORST:
        yield f"size-moov-{size:x}.m4a", atom(b"ftyp", b"M4A ") + atom(b"mdat", AUDIO) + atom(b"moov", item(), size)
        yield f"size-item-{size:x}.m4a", mp4(item(atom(b"data", be(1) + bytes(4) + b"x", size)))
        yield f"size-64-{size:x}.m4a", mp4(behind=be(1) + b"free" + be(size) * 2)
    for count in (0x20000000, 0xFFFFFFFF):
        yield f"places-{count:x}.m4a", mp4(atom(b"stco", bytes(4) + be(count) + be(8)) + item())
        yield f"long-places-{count:x}.m4a", mp4(atom(b"trak", atom(b"co64", bytes(4) + be(count) + bytes(8))) + item())
    yield "values-300000.m4a", mp4(item(atom(b"data", bytes(8)) * 300000))
    for count in (300000, (1 << 18) - 3):  # too many; as many as there can be
        yield f"atoms-{count}.m4a", mp4(atom(b"free", b"") * count)


def long_files():
    """Files with holes: (name, pieces by their offset, length)."""
    tag, rest = 0x0FFFFFFF + 10, (1 << 32) - 15 * (0x0FFFFFFF + 10)  # of which 15 and one add up to 4 GiB
    tags = {min(i, 15) * tag + (i == 16) * rest: id3(b"", size=syncsafe((rest if i > 14 else tag) - 10)) for i in range(17)}
    yield "tags-without-end.mp3", tags, 0x100001000
    for kind in ("wav", "aiff"):
        yield f"of-4-gb.{kind}", {0: form(kind)}, 1 << 32
    yield "list-of-285-mb.wav", {0: form("wav") + b"LIST" + le(0x11000000)}, 1 << 29


# Collections, with one track under the path that is given

XML = b'<?xml version="1.0" encoding="UTF-8"?>\n'


def laughs():
    lines = ['<!ENTITY a0 "ha">'] + [f'<!ENTITY a{i} "{f"&a{i - 1};" * 10}">' for i in range(1, 30)]
    return "".join(lines).encode()


def collections(rekordbox, traktor, path):
    """(name, program, content) of every collection. `rekordbox` and `traktor` are those of a track with some XML."""
    for name, kind in (("laughs", laughs()), ("external", b'<!ENTITY a29 SYSTEM "file:///etc/passwd">'),
                       ("parameter", b'<!ENTITY % p SYSTEM "file:///dev/zero"> %p;')):
        for program, make in (("rekordbox", rekordbox), ("traktor", traktor)):
            inner = "" if name == "parameter" else "<A>&a29;</A>"
            content = make(path, inner).split(b"?>", 1)[1]
            yield name, program, XML + b"<!DOCTYPE x [" + kind + b"]>" + content
    million = 1000000
    accents = rekordbox(path, "").replace(b"</COLLECTION>", b'<TRACK TrackID="9" Location="file://localhost/a%s"/></COLLECTION>')
    yield "accents", "rekordbox", accents.replace(b"%s", ("\u0301" * 150000 + "\u0316" * 150000).encode())
    defaults = "<!DOCTYPE x [<!ATTLIST N " + " ".join(f'a{i} CDATA ""' for i in range(10000)) + ">]>"
    content = rekordbox(path, "<N/>" * million).split(b"?>", 1)[1]
    yield "defaults", "rekordbox", XML + defaults.encode() + content
    for program, make in (("rekordbox", rekordbox), ("traktor", traktor)):
        yield "nested", program, make(path, "<N>" * million + "</N>" * million)
        yield "unclosed", program, make(path, "<N " + "<" * million)
    yield "attribute", "traktor", traktor(path, f'<N a="{"x" * 100000000}"/>')
    yield "attributes", "rekordbox", rekordbox(path, "<N " + " ".join(f'a{i}="x"' for i in range(million)) + "/>")
    folders = '<NODE Type="0" Name="n">' * million + "</NODE>" * million
    yield "folders", "rekordbox", rekordbox(path, "").replace(b"</PLAYLISTS>", folders.encode() + b"</PLAYLISTS>")
    for name, tempos in (("tiny-steps", '<TEMPO Inizio="0" Bpm="1e300"/>'), ("steps-of-0", '<TEMPO Inizio="1e18" Bpm="100"/>'),
                         ("backwards", '<TEMPO Inizio="0" Bpm="-1"/>'), ("no-number", '<TEMPO Inizio="nan" Bpm="inf"/>'),
                         ("many", '<TEMPO Inizio="0" Bpm="60000"/>' * 100000)):
        yield name, "rekordbox", rekordbox(path, tempos).replace(b'TotalTime="300"', b'TotalTime="1e300"')
    grid = '<INFO PLAYTIME_FLOAT="1e300"/><TEMPO BPM="{}"/><CUE_V2 TYPE="4" START="{}" HOTCUE="-1"/>'
    for name, bpm, start in (("tiny-steps", "1e300", "0"), ("steps-of-0", "100", "1e21"), ("no-number", "nan", "inf")):
        yield name, "traktor", traktor(path, grid.format(bpm, start))
