"""Collections for the tests of the zaltag program, and reading them back with Python's own XML parser."""
import os
import xml.etree.ElementTree as ElementTree
from urllib.parse import quote

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
