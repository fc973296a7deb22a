"""Collections for the tests of the zaltag program, and reading them back with Python's own XML parser."""
import base64
import os
import xml.etree.ElementTree as ElementTree
from urllib.parse import quote

import mutagen
import mutagen.flac
import mutagen.mp4

SAMPLES = os.environ.get("ZALTAG_SAMPLES")


def rekordbox(tracks):
    """A collection of (path, inner XML) pairs, with TrackIDs from 1 on."""
    rows = "".join(f'<TRACK TrackID="{i}" Location="file://localhost{quote(path)}" TotalTime="300" Odd="&amp;é">'
                   f"{inner}</TRACK>\n" for i, (path, inner) in enumerate(tracks, 1))
    return (f'<?xml version="1.0" encoding="UTF-8"?>\n<!-- mine -->\n<DJ_PLAYLISTS Version="1.0.0">\n'
            f'<PRODUCT Name="rekordbox"/>\n<COLLECTION Entries="{len(tracks)}">\n{rows}</COLLECTION>\n'
            f'<PLAYLISTS><NODE Type="0" Name="ROOT" Count="0"/></PLAYLISTS></DJ_PLAYLISTS>\n').encode()


def tree(path):
    return ElementTree.parse(path).getroot()


def outline(element, edit=None):
    """An element as nested tuples, after an edit of its attributes and children."""
    attributes, children = dict(element.attrib), list(element)
    if edit:
        attributes, children = edit(element, attributes, children)
    return (element.tag, attributes, (element.text or "").strip(), [outline(child, edit) for child in children])


def rekordbox_marks(track):
    """(seconds, name, num) of every mark of a track element, in order."""
    return [(float(mark.get("Start")), mark.get("Name", ""), int(mark.get("Num"))) for mark in
            track.findall("POSITION_MARK") if mark.get("Start")]


def traktor(paths, modified=("2020/1/1", "0"), boot_volume="Macintosh HD", inner=""):
    """A collection of the audio files at these paths."""
    def entry(path):
        folder, name = os.path.split(path)
        folder = "".join("/:" + part.replace(":", "//") for part in folder.split("/") if part) + "/:"
        date = f'MODIFIED_DATE="{modified[0]}" MODIFIED_TIME="{modified[1]}"' if modified else ""
        return (f'<ENTRY {date} TITLE="t"><LOCATION DIR="{escape(folder)}" FILE="{escape(name.replace(":", "//"))}" '
                f'VOLUME="{boot_volume}"></LOCATION>{inner}</ENTRY>\n')
    return ('<?xml version="1.0" encoding="UTF-8" standalone="no" ?>\n<NML VERSION="20"><HEAD></HEAD>\n'
            f'<COLLECTION ENTRIES="1">{"".join(map(entry, paths))}</COLLECTION>\n<SETS ENTRIES="0"></SETS></NML>').encode()


def escape(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")


def traktor_cues(entry):
    """(seconds, name, type, slot) of every cue of an entry, in order."""
    return [(float(cue.get("START")) / 1000, cue.get("NAME", ""), int(cue.get("TYPE")), int(cue.get("HOTCUE")))
            for cue in entry.findall("CUE_V2")]


def serato_entries(path):
    """(name, data) of every entry of Serato's Markers2 in a file, with mutagen and nothing of ours."""
    file = mutagen.File(path)
    if isinstance(file, mutagen.flac.FLAC):
        data = base64.b64decode(pad(file["SERATO_MARKERS_V2"][0].encode()))
    elif isinstance(file, mutagen.mp4.MP4):
        data = base64.b64decode(pad(bytes(file["----:com.serato.dj:markersv2"][0])))
    else:
        data = file.tags["GEOB:Serato Markers2"].data
    data = data[data.index(b"Serato Markers2") + 16:] if b"Serato Markers2" in data else data
    payload = base64.b64decode(pad(data[2:].split(b"\0")[0]))[2:]
    entries = []
    while payload and payload[0]:
        name, rest = payload.split(b"\0", 1)
        length = int.from_bytes(rest[:4], "big")
        entries.append((name.decode(), rest[4:4 + length]))
        payload = rest[4 + length:]
    return entries


def serato_cues(path):
    """(milliseconds, name) of its hot cues by their slots."""
    cues = {entry[1]: (int.from_bytes(entry[2:6], "big"), entry[12:].rstrip(b"\0").decode())
            for name, entry in serato_entries(path) if name == "CUE"}
    return [cues[slot] for slot in sorted(cues)]


def pad(text):
    text = b"".join(text.split())
    return text[:len(text) - (len(text) % 4 == 1)] + b"=" * (-len(text) % 4 if len(text) % 4 != 1 else 0)
