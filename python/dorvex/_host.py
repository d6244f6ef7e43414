"""Hosts and documents."""

from __future__ import annotations

import ctypes
import enum
import os
import threading
from collections.abc import Callable, Iterator
from types import TracebackType
from typing import Any, Protocol, TypeVar, Union

from . import _library
from ._library import library
from ._result import Kind, Result, SkippedMember, Status


class Reader(Protocol):
    """Anything with a read method, such as a file opened in binary mode."""

    def read(self, count: int, /) -> bytes:
        """Up to count bytes, none at the end."""


#: What a document is read from: a path, bytes, or something with a read method,
#: which is read to its end.
Source = Union[str, "os.PathLike[str]", bytes, bytearray, memoryview, Reader]


class Isolation(enum.IntEnum):
    """Where the reader works."""

    WORKERS = 0  #: in worker processes: a crash or a hang costs one document
    IN_PROCESS = 1  #: in this process: memory stays behind, nothing limits it


class Sandbox(enum.IntEnum):
    """How worker processes are confined."""

    OFF = 0
    WHERE_POSSIBLE = 1
    REQUIRED = 2


# How long a signal that came in just before a wait goes unnoticed.
_WAIT_MS = 200


class _Default(enum.Enum):
    DEFAULT = "the library's default"


#: Stands for the library's own value of a limit.
DEFAULT = _Default.DEFAULT
#: None is no limit.
Limit = Union[int, None, _Default]
Seconds = Union[float, None, _Default]


def _path(path: str | os.PathLike[str]) -> bytes:
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("a path must not hold a NUL")
    return name


def _new_handle(function: Callable[..., int], *arguments: Any) -> ctypes.c_void_p:
    handle = ctypes.c_void_p()
    _library.check(function(*arguments, ctypes.byref(handle)))
    return handle


def _set_limits(options: _library.Options, limits: dict[str, Limit]) -> None:
    for name, value in limits.items():
        if isinstance(value, _Default):
            continue
        if value is None:
            setattr(options, name, 0)
            continue
        largest = (1 << 8 * getattr(_library.Options, name).size) - 1
        if not 0 < value <= largest:
            raise ValueError(f"{name}: must be 1 to {largest}; None is no limit")
        setattr(options, name, value)


def _milliseconds(seconds: Seconds) -> Limit:
    if seconds is None or isinstance(seconds, _Default):
        return seconds
    if not seconds > 0:
        raise ValueError("a time must be above 0; None is no limit")
    return max(1, round(seconds * 1000))


class _Owner:
    """Has a handle of the library until it is closed, once."""

    _handle: ctypes.c_void_p | None = None

    def close(self) -> None:
        raise NotImplementedError

    def __enter__(self: _Self) -> _Self:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        traceback: TracebackType | None,
    ) -> None:
        self.close()

    def __del__(self) -> None:
        if self._handle is not None:
            self.close()


_Self = TypeVar("_Self", bound=_Owner)


class Host(_Owner):
    """Opens documents. Several threads may use one host.

    A limit of None is none; what is not given has the library's default. A host
    belongs to the process that made it. Make it before other threads where you
    can: it starts a process.
    """

    def __init__(
        self,
        *,
        module: str | os.PathLike[str] | None = None,
        isolation: Isolation = Isolation.WORKERS,
        sandbox: Sandbox = Sandbox.WHERE_POSSIBLE,
        documents_per_worker: int | _Default = DEFAULT,
        timeout: Seconds = DEFAULT,
        processor_time: Seconds = DEFAULT,
        max_memory: Limit = DEFAULT,
        max_scratch: Limit = DEFAULT,
        max_output: Limit = DEFAULT,
        max_input: Limit = DEFAULT,
        max_members: Limit = DEFAULT,
        max_depth: Limit = DEFAULT,
        max_member_bytes: Limit = DEFAULT,
        max_total_bytes: Limit = DEFAULT,
        max_expansion: Limit = DEFAULT,
    ) -> None:
        """Raises ValueError for a value out of range.

        module: the reader module's file; by default the one that is installed
        with the library. Times are in seconds, sizes in bytes.
        """
        self._handle: ctypes.c_void_p | None = None
        options = _library.Options()
        size = ctypes.sizeof(options)
        _library.check(library.dorvex_options_init(ctypes.byref(options), size))
        if module is not None:
            options.module = _path(module)
        options.isolation = isolation
        options.sandbox = sandbox
        options.wait_ms = _WAIT_MS
        limits: dict[str, Limit] = {
            "documents_per_worker": documents_per_worker,
            "wall_time_ms": _milliseconds(timeout),
            "processor_time_ms": _milliseconds(processor_time),
            "memory": max_memory,
            "scratch": max_scratch,
            "output": max_output,
            "input": max_input,
            "members": max_members,
            "depth": max_depth,
            "member_bytes": max_member_bytes,
            "total_bytes": max_total_bytes,
            "expansion": max_expansion,
        }
        _set_limits(options, limits)
        self._process = os.getpid()
        self._handle = _new_handle(library.dorvex_host_new, ctypes.byref(options))

    def open(self, source: Source, *, errors: str = "replace") -> Document:
        """Opens a document, to be closed or used in a with statement.

        A document that cannot be read is opened too: its result tells. Raises
        what the read method of a source raises. errors: how texts that are not
        valid UTF-8 are decoded, as in bytes.decode.
        """
        if isinstance(source, (bytearray, memoryview)):
            source = bytes(source)  # what is being read must not change
        return Document(self._open_handle(source), source, errors)

    def texts(self, source: Source, *, errors: str = "replace") -> Iterator[str]:
        """The texts of a document, and a DocumentError at the end for one that
        was not read whole."""
        with self.open(source, errors=errors) as document:
            yield from document
            document.result.raise_for_failure()

    def close(self) -> None:
        """Frees the host. Its documents can still be read."""
        handle, self._handle = self._handle, None
        # In a forked child the workers are the parent's.
        if handle is not None and os.getpid() == self._process:
            library.dorvex_host_free(handle)

    def _open_handle(self, source: str | os.PathLike[str] | bytes | Reader) -> ctypes.c_void_p:
        if self._handle is None:
            raise ValueError("the host is closed")
        if os.getpid() != self._process:
            raise RuntimeError("the host belongs to another process: make one after the fork")
        if isinstance(source, bytes):
            return _new_handle(library.dorvex_open_memory, self._handle, source, len(source))
        if isinstance(source, (str, os.PathLike)):
            return _new_handle(library.dorvex_open_path, self._handle, _path(source))
        if not hasattr(source, "read"):
            raise TypeError("not a path, bytes or something with a read method")
        return self._open_reader(source)

    def _open_reader(self, reader: Reader) -> ctypes.c_void_p:
        raised: list[BaseException] = []

        def read(_user: int, buffer: int, count: int) -> int:
            try:
                part = reader.read(count)
                if not isinstance(part, (bytes, bytearray, memoryview)):
                    raise TypeError(
                        f"read gave {type(part).__name__}, not bytes: open the file in binary mode"
                    )
                part = bytes(part)
                if len(part) > count:
                    raise ValueError(f"read({count}) gave {len(part)} bytes")
                ctypes.memmove(buffer, part, len(part))
                return len(part)
            except BaseException as error:  # nothing may be raised through C
                raised.append(error)
                return -1

        try:
            return _new_handle(
                library.dorvex_open_callback, self._handle, _library.ReadFunction(read), None
            )
        except Exception:
            if raised:
                raise raised[0] from None
            raise


class Document(_Owner):
    """One document being read: an iterator of its texts.

    Threads take turns. Closing it early ends its worker process.
    """

    def __init__(self, handle: ctypes.c_void_p, source: Source, errors: str) -> None:
        self._handle = handle
        self._source = source  # keeps bytes in memory alive
        self._errors = errors
        self._lock = threading.Lock()
        self._process = os.getpid()
        self._result: Result | None = None

    def __iter__(self) -> Iterator[str]:
        return self

    def __next__(self) -> str:
        return self._take(library.dorvex_next_text).decode("utf-8", self._errors)

    def raw_texts(self) -> Iterator[bytes]:
        """The texts that are left, as the bytes that the document stores."""
        while True:
            try:
                yield self._take(library.dorvex_next_text)
            except StopIteration:
                return

    def tokens(self) -> Iterator[bytes]:
        """The token stream, in pieces of whole tokens. Not to be mixed with texts."""
        while True:
            try:
                yield self._take(library.dorvex_next_tokens)
            except StopIteration:
                return

    @property
    def result(self) -> Result:
        """What became of the document. Reads what has not been asked for yet."""
        with self._lock:
            if self._result is None:
                self._result = self._ask_result()
            return self._result

    def close(self) -> None:
        """Frees the document. One that has not been read to its end is given up."""
        with self._lock:
            handle, self._handle = self._handle, None
            if handle is not None and os.getpid() == self._process:
                library.dorvex_document_free(handle)

    def _open_handle(self) -> ctypes.c_void_p:
        if self._handle is None:
            raise ValueError("the document is closed")
        if os.getpid() != self._process:
            raise RuntimeError("the document belongs to another process")
        return self._handle

    def _take(self, function: Callable[..., int]) -> bytes:
        data = ctypes.c_void_p()
        length = ctypes.c_size_t()
        with self._lock:
            code = _library.waiting(
                function, self._open_handle(), ctypes.byref(data), ctypes.byref(length)
            )
            if code == _library.END:
                raise StopIteration
            _library.check(code)
            return ctypes.string_at(data, length.value)

    def _ask_result(self) -> Result:
        handle = self._open_handle()
        record = _library.Result(struct_size=ctypes.sizeof(_library.Result))
        _library.check(
            _library.waiting(library.dorvex_document_result, handle, ctypes.byref(record))
        )
        return Result(
            status=Status(record.status),
            kind=Kind(record.kind),
            failure=_library.text(library.dorvex_failure_name(record.failure)),
            limit=_library.text(library.dorvex_limit_name(record.limit)),
            message=_library.text(record.message),
            module_result=None if record.module_result < 0 else record.module_result,
            signal=record.signal,
            token_bytes=record.token_bytes,
            skipped=tuple(self._skipped(handle, index) for index in range(record.skipped)),
            input_bytes=record.input_bytes,
        )

    @staticmethod
    def _skipped(handle: ctypes.c_void_p, index: int) -> SkippedMember:
        name, reason = ctypes.c_char_p(), ctypes.c_char_p()
        _library.check(
            library.dorvex_skipped_member(handle, index, ctypes.byref(name), ctypes.byref(reason))
        )
        return SkippedMember(_library.text(name.value), _library.text(reason.value))


class _SharedHosts:
    """The hosts behind dorvex.texts: one for each pair of limits, for the pairs
    that were used last. Each has a process. One that goes is closed when its last
    document is done."""

    _MOST = 4

    def __init__(self) -> None:
        self._forget()

    def _forget(self) -> None:
        self._lock = threading.Lock()
        self._hosts: dict[tuple[Seconds, Limit], Host] = {}

    def get(self, timeout: Seconds, max_memory: Limit) -> Host:
        limits = (timeout, max_memory)
        with self._lock:
            host = self._hosts.pop(limits, None) or Host(timeout=timeout, max_memory=max_memory)
            self._hosts[limits] = host  # at the end of the dictionary
            if len(self._hosts) > self._MOST:
                del self._hosts[next(iter(self._hosts))]
            return host

    def follow_forks(self) -> None:
        os.register_at_fork(after_in_child=self._forget)


_shared = _SharedHosts()
_shared.follow_forks()


def texts(
    source: Source,
    *,
    timeout: Seconds = DEFAULT,
    max_memory: Limit = DEFAULT,
    errors: str = "replace",
) -> Iterator[str]:
    """The texts of a document, and a DocumentError at the end for one that was
    not read whole.

    timeout: seconds that the document may take; max_memory: bytes of memory. A
    Host has the other limits. errors: as in bytes.decode.
    """
    return _shared.get(timeout, max_memory).texts(source, errors=errors)
