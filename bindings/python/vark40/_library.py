"""Finding and loading the library and the parts beside it."""

from __future__ import annotations

import ctypes
import os
import sys
import threading
from pathlib import Path
from typing import Any, Optional

from ._declarations import Ergebnis, Exports
from ._errors import Unavailable, error_of

SONAME = "libvark40.so.4"
_IS_WINDOWS = sys.platform == "win32"


def _names() -> list[str]:
    """What is tried in turn: $VARK40_LIBRARY alone; else the build of the source tree that this package lies
    in; else what the system's loader finds."""
    given = os.environ.get("VARK40_LIBRARY")
    if given:
        return [str(Path(given) / SONAME) if Path(given).is_dir() else given]
    if _IS_WINDOWS:
        return ["VARK40.dll"]
    tree = Path(__file__).resolve().parents[3]
    built = tree / "build" / SONAME
    return ([str(built)] if (tree / "include" / "vark40.h").exists() and built.exists() else []) + [SONAME]


class _LinkMap(ctypes.Structure):
    _fields_ = [("base", ctypes.c_size_t), ("name", ctypes.c_char_p), ("dynamic", ctypes.c_void_p)]
    base: int
    name: bytes
    dynamic: int


class _Dynamic(ctypes.Structure):
    _fields_ = [("tag", ctypes.c_ssize_t), ("value", ctypes.c_size_t)]
    tag: int
    value: int


def _link_map(library: ctypes.CDLL) -> _LinkMap:
    loader = ctypes.CDLL(None)
    found = ctypes.POINTER(_LinkMap)()
    link_map = 2  # RTLD_DI_LINKMAP
    if loader.dlinfo(ctypes.c_void_p(library._handle), link_map, ctypes.byref(found)) != 0:
        raise Unavailable("Der Lader verrät nicht, woher die Bibliothek kommt.")
    return found.contents


def path_of(library: ctypes.CDLL) -> Path:
    """The file that a library was loaded from."""
    return Path(os.fsdecode(_link_map(library).name)).resolve()


def soname_of(library: ctypes.CDLL) -> str:
    """The name under which programs that link a library ask for it; it carries the version."""
    entries = ctypes.cast(_link_map(library).dynamic, ctypes.POINTER(_Dynamic))
    texts, name, at = 0, -1, 0
    while entries[at].tag != 0:
        if entries[at].tag == 5:  # DT_STRTAB, an address once loaded
            texts = entries[at].value
        elif entries[at].tag == 14:  # DT_SONAME
            name = entries[at].value
        at += 1
    return ctypes.string_at(texts + name).decode("utf-8", "replace") if texts and name >= 0 else ""


def _load_file() -> ctypes.CDLL:
    reason = ""
    for name in _names():
        try:
            # The library's functions are __stdcall on 32-bit Windows, which WinDLL alone knows.
            kind: type[ctypes.CDLL] = getattr(ctypes, "WinDLL") if _IS_WINDOWS else ctypes.CDLL
            return kind(name)
        except OSError as error:
            reason = str(error)
    raise Unavailable(f"Die Bibliothek VARK40 läßt sich nicht laden: {reason}")


def _load() -> tuple[ctypes.CDLL, Exports]:
    library = _load_file()
    soname = SONAME if _IS_WINDOWS else soname_of(library)
    if soname != SONAME:
        other = soname or "ohne Namen"
        raise Unavailable(f"{path_of(library)} ist eine andere Fassung: {other} statt {SONAME}.")
    try:
        return library, Exports(library)
    except AttributeError as error:
        raise Unavailable(f"Das ist eine andere Fassung der Bibliothek VARK40: {error}") from None


_lock = threading.Lock()
_loaded: Optional[tuple[ctypes.CDLL, Exports]] = None


def exports() -> Exports:
    """The functions of the library, which is loaded at the first call."""
    return _library()[1]


def _library() -> tuple[ctypes.CDLL, Exports]:
    global _loaded
    with _lock:
        if _loaded is None:
            _loaded = _load()
        return _loaded


def need_ready() -> Exports:
    """The functions of a library that has found books; raises `Unavailable` otherwise."""
    functions = exports()
    state = functions.VARK_Status()
    if state != Ergebnis.GUT:
        raise error_of(state)
    return functions


AnswerBox = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_char_p, ctypes.c_uint, ctypes.c_void_p)


class Parts:
    """Window system and report engine, the very ones that the library uses."""

    def __init__(self, windows: ctypes.CDLL, reports: Optional[ctypes.CDLL]) -> None:
        handle, text, number = ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int
        self.AnswerBoxes = self._call(windows, "VarkUiAnswerBoxes", number, AnswerBox, handle)
        self.Play = self._call(windows, "VarkUiPlay", number, text, number)
        self.Played = self._call(windows, "VarkUiPlayed", number, text, number)
        self.HasUser = self._call(windows, "VarkUiHasUser", number)
        self.IsWindow = self._call(windows, "IsWindow", number, handle)
        self.DestroyWindow = self._call(windows, "DestroyWindow", number, handle)
        self.ShowWindow = self._call(windows, "ShowWindow", number, handle, number)
        self.GetWindow = self._call(windows, "GetWindow", handle, handle, ctypes.c_uint)
        self.GetClassName = self._call(windows, "GetClassNameA", number, handle, text, number)
        message = ctypes.c_void_p
        self.GetMessage = self._call(
            windows, "GetMessageA", number, message, handle, ctypes.c_uint, ctypes.c_uint
        )
        self.TranslateMessage = self._call(windows, "TranslateMessage", number, message)
        self.DispatchMessage = self._call(windows, "DispatchMessageA", ctypes.c_ssize_t, message)
        self.ExportView: Any = None  # without a report engine
        if reports is not None:
            self.ExportView = self._call(reports, "RSExportView", ctypes.c_int32, handle, text)

    @staticmethod
    def _call(library: ctypes.CDLL, name: str, result: Any, *arguments: Any) -> Any:
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
        return function


_parts: Optional[Parts] = None


def parts() -> Optional[Parts]:
    """None where there is no window system of ours: on Windows, or beside a library without its parts."""
    global _parts
    library = _library()[0]
    with _lock:
        if _parts is None and not _IS_WINDOWS:
            _parts = _find_parts(library)
        return _parts


def _find_parts(library: ctypes.CDLL) -> Optional[Parts]:
    try:
        # The ready library has bound the report engine; the window system lies beside that.
        reports: Optional[ctypes.CDLL] = ctypes.CDLL("librs.so", mode=os.RTLD_NOLOAD | os.RTLD_NOW)
    except OSError:
        reports = None
    beside = path_of(reports if reports is not None else library).parent
    for directory in (beside, beside / "vark40"):
        try:
            return Parts(ctypes.CDLL(str(directory / "libvarkui.so")), reports)
        except (OSError, AttributeError):
            continue
    return None
