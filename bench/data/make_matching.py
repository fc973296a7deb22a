#!/usr/bin/python3
"""make_matching.py FOLDER TRACKS: that many empty audio files in three folders, and Rekordbox collections of them: one
with their paths, and one of another machine, in other folders and another letter case."""
import os
import pathlib
import sys
from urllib.parse import quote

folder, tracks = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2])
final = folder.with_name(folder.name.removeprefix("making-"))  # where the bench moves it to
THERE = ("/C:/DJ/One", "/Volumes/USB/Two", "/Users/dj/Three")


def collection(name, path_of):
    with open(folder / name, "w", encoding="utf-8") as out:
        out.write(f'<?xml version="1.0" encoding="UTF-8"?>\n<DJ_PLAYLISTS Version="1.0.0">\n<COLLECTION Entries="{tracks}">\n')
        for i in range(tracks):
            out.write(f'<TRACK TrackID="{i}" Name="Title {i}" Artist="Artist {i % 999}" Album="Album {i % 99}" Genre="House" '
                      f'TotalTime="300" Size="{i + 9000000}" Location="file://localhost{quote(path_of(i))}">\n'
                      '<TEMPO Inizio="0.1" Bpm="124.00" Metro="4/4" Battito="1"/>\n'
                      '<POSITION_MARK Name="in" Type="0" Start="1.5" Num="0"/>\n</TRACK>\n')
        out.write('</COLLECTION>\n<PLAYLISTS><NODE Type="0" Name="ROOT" Count="0"/></PLAYLISTS>\n</DJ_PLAYLISTS>\n')


def name_of(i):
    return f"Crate {i // 1000:03d}/{'Träck' if i % 5 == 0 else 'Track'} {i:06d}.mp3"


for i in range(tracks):
    file = folder / "music" / str(i % 3) / name_of(i)
    if i % 1000 < 3:
        file.parent.mkdir(parents=True, exist_ok=True)
    file.touch()
collection("here.xml", lambda i: f"{final}/music/{i % 3}/{name_of(i)}")
collection("elsewhere.xml", lambda i: f"{THERE[i % 3]}/{name_of(i).upper()}")
(folder / "none.nml").write_text('<NML VERSION="20"><COLLECTION ENTRIES="0"></COLLECTION></NML>')
