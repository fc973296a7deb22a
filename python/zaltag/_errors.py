"""The exceptions of zaltag. A missing file, a folder and the like are Python's own OSError."""
import enum
import pathlib
from typing import Optional


class ErrorCode(enum.IntEnum):
    """What went wrong."""

    NONE = 0
    SAVE_FAILED = 1
    OPEN_FAILED = 2
    PROPERTY_REFUSED = 3
    TRAKTOR_RUNNING = 1000
    TRAKTOR_UNREADABLE = 1003
    TRAKTOR_UNWRITABLE = 1004
    REKORDBOX_UNWRITABLE = 1005
    REKORDBOX_UNREADABLE = 1007


class Error(Exception):
    """The base of all others; `code` says what went wrong, `path` with which file."""

    def __init__(self, message: str, code: int = 0, path: Optional[pathlib.Path] = None) -> None:
        super().__init__(message)
        self.code = ErrorCode(code)
        self.path = path

    def __str__(self) -> str:
        message = super().__str__()
        return f"{self.path}: {message}" if self.path else message


class OpenError(Error):
    """A file is there, and is no audio file that can be opened."""


class SaveError(Error):
    """An audio file could not be saved; it is as it was, and the changes stay in the tag."""


class CollectionError(Error):
    """A collection could not be read or written."""


class UnsupportedOperation(Error, NotImplementedError):
    """The format of this file has no such thing."""
