"""The library's main queue on an asyncio event loop."""
import asyncio
import contextlib
import functools
from typing import Callable, Iterator, Optional, Union

from . import _core

_loop: Optional[asyncio.AbstractEventLoop] = None


@contextlib.contextmanager
def main_queue_on(loop: Optional[asyncio.AbstractEventLoop] = None) -> Iterator[None]:
    """Has what the library posts to the main thread run on an event loop, the running one by default, for the time of
    a with block."""
    global _loop
    if _loop is not None:
        raise RuntimeError("the main queue goes to an event loop already")
    target = _loop = loop or asyncio.get_running_loop()

    def post(block: Callable[[], object]) -> None:
        try:
            target.call_soon_threadsafe(block)
        except RuntimeError:
            if not target.is_closed():  # then nobody waits for it any more
                raise

    _core.set_main_queue(post)
    try:
        yield
    finally:
        _core.set_main_queue(None)
        _loop = None


async def save_async(*collections: Union[_core.RekordboxCollection, _core.TraktorCollection]) -> None:
    """Writes what was asked of collections, side by side, while the event loop goes on; CollectionError, after all of
    them have ended, of the first that could not be written. Within main_queue_on()."""
    loop = asyncio.get_running_loop()
    if _loop is not loop:
        raise RuntimeError("save_async() needs main_queue_on() around it, with the running event loop")
    futures = [loop.create_future() for _ in collections]

    def settle(future: "asyncio.Future[None]", error: Optional[BaseException]) -> None:
        if not future.done():
            future.set_result(None) if error is None else future.set_exception(error)

    for collection, future in zip(collections, futures):
        collection._save_then(functools.partial(settle, future))
    outcomes = await asyncio.gather(*futures, return_exceptions=True)
    for outcome in outcomes:
        if isinstance(outcome, BaseException):
            raise outcome
