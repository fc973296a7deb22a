"""The metadata of DJ software in audio files, and the collections of Rekordbox and Traktor.

    with zaltag.open("song.mp3") as tag:
        tag.initial_key = "8A"
        tag.serato_cue_points = [zaltag.CuePoint(12.5, "Drop")]

A block that ends well saves what was changed. Times are seconds unless said otherwise; what a file does not hold is
None, a number 0."""
import builtins
import os
import pathlib
import shutil
from typing import Iterator, Tuple, Union

from . import _core, _values
from ._asyncio import main_queue_on, save_async
from ._core import (
    BeatGrid,
    Comment,
    CueOutcome,
    CuePoint,
    CuePoints,
    Energy,
    FirstFrame,
    Key,
    RekordboxCollection,
    RekordboxCue,
    RekordboxPlaylist,
    RekordboxTrack,
    SeratoCuePoint,
    SeratoCuePointOld,
    SeratoGrid,
    SeratoGridPoint,
    SeratoLoop,
    SeratoMarker,
    SeratoMarkerOld,
    StoredImage,
    Tag,
    TraktorCollection,
    TraktorCue,
    TraktorPlaylist,
    TraktorTrack,
    VelvetCascade,
    __version__,
    can_open,
    describe,
    first_frame,
    rekordbox,
    run_pending,
    set_log_sink,
    set_save_mode,
    traktor,
    use_collections,
)
from ._errors import CollectionError, Error, ErrorCode, OpenError, SaveError, UnsupportedOperation

__all__ = [
    "BeatGrid", "CollectionError", "Comment", "CueOutcome", "CuePoint", "CuePoints", "Energy", "Error", "ErrorCode",
    "FirstFrame", "Key", "OpenError", "Rekordbox", "RekordboxCollection", "RekordboxCue", "RekordboxPlaylist", "RekordboxTrack",
    "SaveError", "SeratoCuePoint", "SeratoCuePointOld", "SeratoGrid", "SeratoGridPoint", "SeratoLoop", "SeratoMarker",
    "SeratoMarkerOld", "StoredImage", "Tag", "Traktor", "TraktorCollection", "TraktorCue", "TraktorPlaylist", "TraktorTrack",
    "UnsupportedOperation", "VelvetCascade", "__version__", "can_open", "copy_tags", "describe", "first_frame",
    "main_queue_on", "open", "rekordbox", "run_pending", "save_async", "set_log_sink", "set_save_mode", "supported_file_types",
    "traktor", "use_collections", "walk",
]

_values.complete()

#: A collection in a file, by itself: `zaltag.Rekordbox("rekordbox.xml")`; any number may be open.
Rekordbox = RekordboxCollection
Traktor = TraktorCollection

StrPath = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

#: The extensions that can be opened, lower case.
supported_file_types: Tuple[str, ...] = tuple(_core.supported_file_types())


def open(path: StrPath, *, read_only: bool = False) -> Tag:
    """Opens an audio file. OSError when there is no such file, OpenError when it is none that can be opened."""
    try:
        return _core.open_tag(path, read_only)
    except OpenError:
        with builtins.open(path, "rb"):  # OSError for what no program could read
            raise


def copy_tags(source: StrPath, destination: StrPath) -> None:
    """Copies all tags of an audio file into another one of the same type, or of an MP4 into an MP3: into a file whose
    audio was made anew. UnsupportedOperation for other pairs; SaveError when it could not be written and is as it was."""
    for path in (source, destination):
        open(path, read_only=True).close()
    name = pathlib.Path(os.fsdecode(destination))
    if os.path.samefile(source, destination):
        raise shutil.SameFileError(f"{os.fsdecode(source)!r} and {str(name)!r} are the same file")
    if not _core.copy_tags(source, destination):
        raise UnsupportedOperation("tags of a file of that type cannot be copied into this one", path=name)


def walk(folder: StrPath) -> Iterator[pathlib.Path]:
    """Every file below a folder whose name can be opened, in the order of the names, without hidden folders and the "._"
    files of other systems. Links to folders are not followed."""
    for entry in sorted(os.scandir(os.fsdecode(folder)), key=lambda entry: os.fsencode(entry.path)):
        if entry.is_dir():
            if not entry.is_symlink() and not entry.name.startswith("."):
                yield from walk(entry.path)
        elif can_open(entry.path) and not entry.name.startswith("._"):
            yield pathlib.Path(entry.path)
