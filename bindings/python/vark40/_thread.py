"""What belongs to a thread: its cursor, and who hears its messages."""

from __future__ import annotations

import ctypes
import os
import threading
from types import TracebackType
from typing import Any, Optional, TypeVar

from ._declarations import Ergebnis, Exports
from ._errors import Unavailable, WrongThread, error_of
from ._library import AnswerBox, Parts, need_ready, parts
from ._values import decoded


class ThreadState(threading.local):
    """Of each thread one."""

    def __init__(self) -> None:
        self.opened = 0  # books
        self.cursor: Optional[object] = None  # the iterator that the library's cursor belongs to
        self.said: list[str] = []
        self.hearer: Any = None  # kept while the window system may call it


_state = ThreadState()


def _begin_anew() -> None:
    """In the child of a fork, where the library and its window system begin anew as well."""
    _state.__init__()  # type: ignore[misc]


if hasattr(os, "register_at_fork"):
    os.register_at_fork(after_in_child=_begin_anew)


def state() -> ThreadState:
    """That of the calling thread."""
    return _state


Own = TypeVar("Own", bound="OfThread")


class OfThread:
    """Something that only the thread which made it may use, and that the end of `with` closes."""

    def __init__(self) -> None:
        self._thread = threading.get_ident()
        self._exports: Exports = need_ready()
        self._parts: Optional[Parts] = parts()

    def close(self) -> None:
        """Ends its use."""
        raise NotImplementedError

    def __enter__(self: Own) -> Own:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        self.close()

    def _need_thread(self) -> None:
        if threading.get_ident() != self._thread:
            raise WrongThread(
                f"{type(self).__name__} gehört einem anderen Thread; jeder öffnet die Bücher für sich.",
                Ergebnis.FEHLER_NICHT_BEGONNEN,
            )

    def _show_messages(self) -> int:
        """What the library is told: without a hearer it keeps silent."""
        del _state.said[:]
        return 1 if _state.hearer is not None else 0

    def _said(self) -> str:
        """The messages since then."""
        return " ".join(_state.said)

    def _need(self, code: int, field: Optional[str] = None) -> int:
        """`code` unless it is a failure, which is raised with the library's own words."""
        if code < 0:
            raise error_of(code, self._said(), field)
        return code


def _hear(text: Optional[bytes], style: int, context: Optional[int]) -> int:
    _state.said.append(decoded(text or b"").strip())
    return 0  # the button that does the least


def begin_hearing(windows: Optional[Parts]) -> None:
    """From here on the messages of this thread's calls are kept for their exceptions."""
    _state.opened += 1
    if windows is None or _state.hearer is not None:
        return
    hearer = AnswerBox(_hear)
    if not windows.AnswerBoxes(hearer, None):
        _state.opened -= 1
        raise Unavailable("Dem Fenstersystem fehlt der Speicher.", Ergebnis.FEHLER_KEIN_SPEICHER)
    _state.hearer = hearer


def end_hearing(functions: Exports, windows: Optional[Parts]) -> None:
    """Undoes one `begin_hearing`; with the last of a thread its tables are closed."""
    _state.opened -= 1
    if _state.opened > 0:
        return
    _state.cursor = None
    functions.VARK_SchliesseDB()
    if windows is not None and _state.hearer is not None:
        windows.AnswerBoxes(ctypes.cast(0, AnswerBox), None)
        _state.hearer = None
