"""What makes the classes of the extension values: frozen, compared by all of their members, to be sorted, hashed, pickled,
unpacked and shown."""
import functools
import numbers
import operator
from typing import Any, Callable, Dict, Tuple

from . import _core

_NAMES = {numbers.Real: "a number", numbers.Integral: "an int", type(None): "None", str: "a str", bytes: "bytes", bool: "a bool"}


def _name_of(kind: Any) -> str:
    return " or ".join(map(_name_of, kind)) if isinstance(kind, tuple) else _NAMES.get(kind, f"a {kind.__name__}")


def _key(value: Any) -> Any:
    """Orders None in front of everything else, in tuples too."""
    if isinstance(value, tuple):
        return (True, tuple(map(_key, value)))
    return (value is not None, value if not hasattr(value, "__match_args__") else value._key())


def make_value(cls: Any, **kinds: Any) -> None:
    """Completes a class whose constructor takes these members by name, each of a kind of its own."""
    construct = cls.__init__
    names = tuple(kinds)

    def members(self: Any) -> Tuple[Any, ...]:
        return tuple(getattr(self, name) for name in names)

    def init(self: Any, *args: Any, **kwargs: Any) -> None:
        try:
            construct(self, *args, **kwargs)
        except TypeError:
            for name, value in (*zip(names, args), *kwargs.items()):
                if name not in kinds:
                    raise TypeError(f"{cls.__name__}() has no argument '{name}'") from None
                if not isinstance(value, kinds[name]):
                    raise TypeError(f"{name} has to be {_name_of(kinds[name])}, not {value!r}") from None
            raise

    def compared(operation: Callable[[Any, Any], Any]) -> Callable[[Any, Any], Any]:
        return lambda self, other: operation(self._key(), other._key()) if type(other) is cls else NotImplemented

    def replace(self: Any, **changes: Any) -> Any:
        return cls(**{**dict(zip(names, members(self))), **changes})

    replace.__doc__ = "A copy with other values for some members."
    additions: Dict[str, Any] = {
        "__init__": functools.wraps(construct)(init),
        "__match_args__": names,
        "_key": lambda self: tuple(map(_key, members(self))),
        "__eq__": compared(operator.eq),
        "__lt__": compared(operator.lt),
        "__le__": compared(operator.le),
        "__gt__": compared(operator.gt),
        "__ge__": compared(operator.ge),
        "__hash__": lambda self: hash(members(self)),
        "__iter__": lambda self: iter(members(self)),
        "__repr__": lambda self: f"{cls.__name__}({', '.join(f'{name}={value!r}' for name, value in zip(names, self))})",
        "__reduce__": lambda self: (functools.partial(cls, **dict(zip(names, members(self)))), ()),
        "__copy__": lambda self: self,
        "__deepcopy__": lambda self, memo: self,
        "replace": replace,
    }
    for name, addition in additions.items():
        if name != "__repr__" or "__repr__" not in vars(cls):
            setattr(cls, name, addition)


def complete() -> None:
    text, number, whole = (str, type(None)), numbers.Real, numbers.Integral
    maybe = {kind: (kind, type(None)) for kind in (number, whole, bytes)}
    make_value(_core.CuePoint, time=number, name=text, end=maybe[number], pad=maybe[whole], color=maybe[whole], kind=str)
    make_value(_core.CueOutcome, asked=_core.CuePoint, held=(_core.CuePoint, type(None)))
    make_value(_core.Key, key=text, algorithm=whole)
    make_value(_core.Energy, energy=whole, algorithm=whole)
    make_value(_core.BeatGrid, beats=object, tempo=number, algorithm=whole)
    make_value(_core.CuePoints, cue_points=object, algorithm=whole)
    make_value(_core.VelvetCascade, backup_file_name=text, is_processed=bool, algorithm=whole)
    make_value(_core.SeratoCuePoint, index=whole, position=whole, label=text, color=maybe[whole])
    make_value(_core.SeratoLoop, index=whole, position=whole, end_position=whole, label=text, color=maybe[whole], locked=bool)
    make_value(_core.SeratoMarker, data=maybe[bytes])
    make_value(_core.SeratoCuePointOld, index=whole, position=whole, color=maybe[whole])
    make_value(_core.SeratoMarkerOld, data=maybe[bytes])
    make_value(_core.SeratoGridPoint, position=number, beats_to_next=whole, tempo=number)
    make_value(_core.SeratoGrid, grid_points=object, major=whole, minor=whole)
    make_value(_core.Comment, text=text, lang=text, is_primary=bool)
    make_value(_core.StoredImage, data=bytes, image_type=whole)

