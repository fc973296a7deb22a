#!/usr/bin/python3
"""make_collection.py rekordbox|traktor TRACKS OUT: a collection of TRACKS tracks, the same at every call, and
OUT.paths with the path of every track. A track has 8 marks and 2 tempos (Traktor: a grid marker and 8 cues);
every second path and a tenth of the titles are not ASCII; there are 200 playlists."""
import base64
import random
import sys
import unicodedata
from urllib.parse import quote
from xml.sax.saxutils import quoteattr

NAMES = "Adèle Bruno Chloë Dmitri Eszter Frédéric Greta Håkon Inês Jürgen Katya Löic Mika Nadia Ömer Pia".split()
NOUNS = "Arc Beacon Cobalt Delta Ember Fable Gravel Harbor Indigo Jolt Kiln Lattice Mesa Nimbus Onyx Prism".split()
OTHER = ["真夜中", "光の道", "Полночь", "Αυγή", "Été indien"]
GENRES = ["House", "Techno", "Drum & Bass", "Disco", "Electro", "Hip-Hop"]
LABELS = ["", "Intro", "Drop", "Break", "Vocals", "Outro", "<loud>", "Pause é"]
COLORS = [(230, 30, 60), (30, 200, 80), (40, 90, 250), (240, 180, 0)]


class Track:
    def __init__(self, number, r):
        self.number = number
        self.title = f"{r.choice(NOUNS)} {r.choice(NOUNS)} {number}"
        if r.random() < 0.1:
            self.title = f"{r.choice(OTHER)} {self.title}"
        # Accents in every second path, half of them decomposed, as file systems hand them out.
        self.artist = r.choice(NAMES) if number % 2 else "DJ " + r.choice(NOUNS)
        self.album = f"{r.choice(NOUNS)} EP"
        self.length = r.randint(180, 540)
        self.tempo = round(r.uniform(90, 175), 2)
        extension = ("mp3", "m4a", "wav", "aiff", "flac")[number % 5]
        form = "NFD" if number % 4 == 1 else "NFC"
        self.folders = ["Users", "bench", "Music", unicodedata.normalize(form, self.artist), self.album]
        self.file = unicodedata.normalize(form, f"{number:06d} {self.title}.{extension}")
        self.path = "/" + "/".join([*self.folders, self.file])
        self.starts = sorted(r.uniform(0, self.length) for _ in range(8))


def rekordbox_track(track, r):
    out = [f'    <TRACK TrackID="{track.number + 1}" Name={quoteattr(track.title)} Artist={quoteattr(track.artist)}'
           f' Composer="" Album={quoteattr(track.album)} Grouping="" Genre={quoteattr(r.choice(GENRES))}'
           f' Kind="Audio File" Size="{r.randint(4_000_000, 90_000_000)}" TotalTime="{track.length}" DiscNumber="0"'
           f' TrackNumber="{r.randint(1, 12)}" Year="{r.randint(1990, 2024)}" AverageBpm="{track.tempo:.2f}"'
           f' DateAdded="2024-0{r.randint(1, 9)}-1{r.randint(0, 9)}" BitRate="320" SampleRate="44100"'
           f' Comments={quoteattr(f"8A - Energy {r.randint(1, 9)} - {r.choice(NOUNS)}")} PlayCount="{r.randint(0, 40)}"'
           f' Rating="0" Location={quoteattr("file://localhost" + quote(track.path, safe="/!()*~"))} Remixer=""'
           f' Tonality="8A" Label={quoteattr(r.choice(NOUNS) + " Records")} Mix="Original Mix">\n']
    for part in range(2):
        out.append(f'      <TEMPO Inizio="{0.1 + part * track.length / 2:.3f}" Bpm="{track.tempo:.2f}" Metro="4/4"'
                   f' Battito="{part + 1}"/>\n')
    for slot, start in enumerate(track.starts):
        label = quoteattr(r.choice(LABELS))
        if slot < 4:
            red, green, blue = COLORS[slot]
            out.append(f'      <POSITION_MARK Name={label} Type="0" Start="{start:.3f}" Num="{slot}" Red="{red}"'
                       f' Green="{green}" Blue="{blue}"/>\n')
        elif slot == 4:
            out.append(f'      <POSITION_MARK Name={label} Type="4" Start="{start:.3f}" End="{start + 4:.3f}"'
                       f' Num="-1"/>\n')
        else:
            out.append(f'      <POSITION_MARK Name={label} Type="0" Start="{start:.3f}" Num="-1"/>\n')
    out.append("    </TRACK>\n")
    return "".join(out)


def rekordbox(tracks, r, write):
    write('<?xml version="1.0" encoding="UTF-8"?>\n\n<DJ_PLAYLISTS Version="1.0.0">\n'
          '  <PRODUCT Name="rekordbox" Version="6.7.7" Company="AlphaTheta"/>\n'
          f'  <COLLECTION Entries="{tracks}">\n')
    for number in range(tracks):
        track = Track(number, r)
        write(rekordbox_track(track, r))
        yield track
    write('  </COLLECTION>\n  <PLAYLISTS>\n    <NODE Type="0" Name="ROOT" Count="200">\n')
    for number in range(200):
        write(f'      <NODE Name="Playlist {number}" Type="1" KeyType="0" Entries="100">\n')
        for _ in range(100):
            write(f'        <TRACK Key="{r.randint(1, tracks)}"/>\n')
        write("      </NODE>\n")
    write("    </NODE>\n  </PLAYLISTS>\n</DJ_PLAYLISTS>\n")


def traktor_location(track):
    return "/:" + "/:".join(track.folders) + "/:", track.file


def traktor_entry(track, r):
    folder, file = traktor_location(track)
    out = [f'<ENTRY MODIFIED_DATE="2024/{r.randint(1, 12)}/{r.randint(1, 28)}" MODIFIED_TIME="{r.randint(0, 86399)}"'
           f' AUDIO_ID="{base64.b64encode(r.randbytes(240)).decode()}" TITLE={quoteattr(track.title)}'
           f' ARTIST={quoteattr(track.artist)}><LOCATION DIR={quoteattr(folder)} FILE={quoteattr(file)}'
           ' VOLUME="Macintosh HD" VOLUMEID="Macintosh HD"></LOCATION>\n'
           f'<ALBUM TRACK="{r.randint(1, 12)}" TITLE={quoteattr(track.album)}></ALBUM>\n'
           '<MODIFICATION_INFO AUTHOR_TYPE="user"></MODIFICATION_INFO>\n'
           f'<INFO BITRATE="320000" GENRE={quoteattr(r.choice(GENRES))} COMMENT="Energy {r.randint(1, 9)}"'
           f' COVERARTID="{r.randint(0, 127):03d}/{r.randbytes(14).hex().upper()}" PLAYTIME="{track.length}"'
           f' PLAYTIME_FLOAT="{track.length:.6f}" RANKING="0" IMPORT_DATE="2024/1/1" FLAGS="12"'
           f' FILESIZE="{r.randint(4000, 90000)}"></INFO>\n'
           f'<TEMPO BPM="{track.tempo:.6f}" BPM_QUALITY="100.000000"></TEMPO>\n'
           f'<LOUDNESS PEAK_DB="{-r.random():.6f}" PERCEIVED_DB="{-r.random():.6f}"></LOUDNESS>\n'
           f'<MUSICAL_KEY VALUE="{r.randint(0, 23)}"></MUSICAL_KEY>\n'
           '<CUE_V2 NAME="AutoGrid" DISPL_ORDER="0" TYPE="4" START="120.500000" LEN="0.000000" REPEATS="-1"'
           ' HOTCUE="-1"></CUE_V2>\n']
    for slot, start in enumerate(track.starts):
        out.append(f'<CUE_V2 NAME={quoteattr(r.choice(LABELS))} DISPL_ORDER="0" TYPE="0" START="{start * 1000:.6f}"'
                   f' LEN="0.000000" REPEATS="-1" HOTCUE="{slot}"></CUE_V2>\n')
    out.append("</ENTRY>\n")
    return "".join(out)


def traktor(tracks, r, write):
    write('<?xml version="1.0" encoding="UTF-8" standalone="no" ?>\n<NML VERSION="19">'
          '<HEAD COMPANY="www.native-instruments.com" PROGRAM="Traktor"></HEAD>\n<MUSICFOLDERS></MUSICFOLDERS>\n'
          f'<COLLECTION ENTRIES="{tracks}">')
    keys = []
    for number in range(tracks):
        track = Track(number, r)
        write(traktor_entry(track, r))
        keys.append("Macintosh HD" + "".join(traktor_location(track)))
        yield track
    write('</COLLECTION>\n<SETS ENTRIES="0"></SETS>\n<PLAYLISTS><NODE TYPE="FOLDER" NAME="$ROOT">'
          '<SUBNODES COUNT="200">\n')
    for number in range(200):
        write(f'<NODE TYPE="PLAYLIST" NAME="Playlist {number}"><PLAYLIST ENTRIES="100" TYPE="LIST"'
              f' UUID="{number:032x}">')
        for _ in range(100):
            write(f'<ENTRY><PRIMARYKEY TYPE="TRACK" KEY={quoteattr(r.choice(keys))}></PRIMARYKEY>\n</ENTRY>\n')
        write("</PLAYLIST>\n</NODE>\n")
    write("</SUBNODES>\n</NODE>\n</PLAYLISTS>\n<INDEXING></INDEXING>\n</NML>\n")


def main():
    kind, tracks, out = sys.argv[1], int(sys.argv[2]), sys.argv[3]
    make = {"rekordbox": rekordbox, "traktor": traktor}[kind]
    with open(out, "w", encoding="utf-8", newline="\n") as file, \
            open(out + ".paths", "w", encoding="utf-8", newline="\n") as paths:
        for track in make(tracks, random.Random(tracks), file.write):
            paths.write(track.path + "\n")


main()
