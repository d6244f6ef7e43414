"""The C interface of the host library, as dorvex/dorvex.h declares it."""

from __future__ import annotations

import ctypes
import os
from collections.abc import Callable
from ctypes import POINTER, c_char_p, c_int, c_int32, c_size_t, c_ssize_t
from ctypes import c_uint32, c_uint64, c_void_p
from typing import Any

ABI_VERSION = 0

# What functions return.
OK = 0
END = 1
INVALID_ARGUMENT = 2
OUT_OF_MEMORY = 3
READ_FAILED = 4
AGAIN = 6


class Options(ctypes.Structure):
    """dorvex_options"""

    _fields_ = [
        ("struct_size", c_size_t),
        ("module", c_char_p),
        ("isolation", c_uint32),
        ("sandbox", c_uint32),
        ("documents_per_worker", c_uint32),
        ("buffer_size", c_uint32),
        ("scratch_memory", c_uint64),
        ("wall_time_ms", c_uint64),
        ("processor_time_ms", c_uint64),
        ("memory", c_uint64),
        ("scratch", c_uint64),
        ("output", c_uint64),
        ("member_bytes", c_uint64),
        ("total_bytes", c_uint64),
        ("members", c_uint32),
        ("depth", c_uint32),
        ("expansion", c_uint32),
        ("wait_ms", c_uint32),
        ("input", c_uint64),
    ]


class Result(ctypes.Structure):
    """dorvex_result"""

    _fields_ = [
        ("struct_size", c_size_t),
        ("status", c_int32),
        ("failure", c_int32),
        ("limit", c_int32),
        ("module_result", c_int32),
        ("signal", c_int32),
        ("kind", c_int32),
        ("message", c_char_p),
        ("token_bytes", c_uint64),
        ("skipped", c_size_t),
        ("input_bytes", c_uint64),
    ]


# A read function: user, buffer, count.
ReadFunction = ctypes.CFUNCTYPE(c_ssize_t, c_void_p, c_void_p, c_size_t)

_FUNCTIONS: dict[str, tuple[Any, list[Any]]] = {
    "dorvex_version": (c_char_p, []),
    "dorvex_abi_version": (c_uint32, []),
    "dorvex_last_error": (c_char_p, []),
    "dorvex_failure_name": (c_char_p, [c_int32]),
    "dorvex_limit_name": (c_char_p, [c_int32]),
    "dorvex_options_init": (c_int, [POINTER(Options), c_size_t]),
    "dorvex_host_new": (c_int, [POINTER(Options), POINTER(c_void_p)]),
    "dorvex_host_free": (None, [c_void_p]),
    "dorvex_open_path": (c_int, [c_void_p, c_char_p, POINTER(c_void_p)]),
    "dorvex_open_memory": (c_int, [c_void_p, c_char_p, c_size_t, POINTER(c_void_p)]),
    "dorvex_open_callback": (c_int, [c_void_p, ReadFunction, c_void_p, POINTER(c_void_p)]),
    "dorvex_next_text": (c_int, [c_void_p, POINTER(c_void_p), POINTER(c_size_t)]),
    "dorvex_next_tokens": (c_int, [c_void_p, POINTER(c_void_p), POINTER(c_size_t)]),
    "dorvex_document_result": (c_int, [c_void_p, POINTER(Result)]),
    "dorvex_skipped_member": (
        c_int,
        [c_void_p, c_size_t, POINTER(c_char_p), POINTER(c_char_p)],
    ),
    "dorvex_document_free": (None, [c_void_p]),
}


def _load() -> ctypes.CDLL:
    # A CDLL gives the interpreter up for the time of each call, so that other
    # threads run while a document is being read.
    name = os.environ.get("DORVEX_LIBRARY", f"libdorvex.so.{ABI_VERSION}")
    if "/" in name:
        name = os.path.abspath(name)  # the library looks for the module beside itself
    try:
        library = ctypes.CDLL(name)
    except OSError as error:
        raise ImportError(f"the dorvex library cannot be loaded: {error}") from error
    for function, (result, arguments) in _FUNCTIONS.items():
        address = getattr(library, function)
        address.restype = result
        address.argtypes = arguments
    if library.dorvex_abi_version() != ABI_VERSION:
        raise ImportError(f"{name} is of another ABI version than {ABI_VERSION}")
    return library


library = _load()


def text(value: bytes | None) -> str:
    """Text for people, or a name of any bytes."""
    return os.fsdecode(value or b"")


def waiting(function: Callable[..., int], *arguments: Any) -> int:
    """Calls a function that may wait until it has done. Between the waits the
    interpreter handles signals, so that Ctrl-C raises KeyboardInterrupt here."""
    while True:
        code = function(*arguments)
        if code != AGAIN:
            return code


def last_error() -> str:
    """What failed last in this thread."""
    return text(library.dorvex_last_error())


def check(code: int) -> None:
    """Raises for every code but OK."""
    if code == OK:
        return
    if code == INVALID_ARGUMENT:
        raise ValueError(last_error())
    if code == OUT_OF_MEMORY:
        raise MemoryError(last_error())
    raise RuntimeError(last_error())
