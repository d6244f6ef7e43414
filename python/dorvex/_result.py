"""What became of a document, and the exceptions for it."""

from __future__ import annotations

import enum
from dataclasses import dataclass


class Status(enum.IntEnum):
    """How much of a document was read."""

    OK = 0
    PARTIAL = 1
    FAILED = 2


class Kind(enum.IntEnum):
    """The application of a document, as far as its package tells."""

    UNKNOWN = 0
    PAGES = 1
    KEYNOTE = 2
    NUMBERS = 3

    @classmethod
    def _missing_(cls, value: object) -> Kind:
        """For the numbers of a later library."""
        return cls.UNKNOWN


@dataclass(frozen=True)
class SkippedMember:
    """A member of the package that did not reach the text, or not whole."""

    name: str
    reason: str


@dataclass(frozen=True)
class Result:
    """What became of a document."""

    status: Status
    kind: Kind
    failure: str  #: a short name such as "damaged", "none" for ok
    limit: str  #: the limit that was passed, "none" for none
    message: str  #: one sentence for people, empty for ok
    module_result: int | None  #: what the reader module returned: 0, 2, 4 or 6
    signal: int  #: that ended the worker process, or 0
    token_bytes: int  #: length of the token stream
    skipped: tuple[SkippedMember, ...]
    input_bytes: int  #: size of the document, 0 where it cannot be told

    def raise_for_failure(self) -> None:
        """Raises the DocumentError of the failure, unless the status is OK."""
        if self.status is not Status.OK:
            raise _ERRORS.get(self.failure, DocumentError)(self)


class DocumentError(Exception):
    """A document was not read whole; `result` tells more."""

    def __init__(self, result: Result) -> None:
        super().__init__(result.message)
        self.result = result

    def __reduce__(self) -> tuple[type[DocumentError], tuple[Result]]:
        return type(self), (self.result,)


class UnreadableError(DocumentError):
    """The operating system would not give the document."""


class UnsupportedError(DocumentError):
    """Not a document that can be read: another format, or another generation."""


class EncryptedError(DocumentError):
    """The document has a password."""


class DamagedError(DocumentError):
    """The document is damaged."""


class LimitError(DocumentError):
    """The document passed a limit."""


class TimeLimitError(LimitError):
    """The document took longer than it may."""


class OutOfMemoryError(DocumentError):
    """The document did not fit into the memory that its worker has."""


class CrashError(DocumentError):
    """The reader crashed; only this document is lost."""


class ChangedError(DocumentError):
    """The document was written to while it was read."""


class OutOfResourcesError(DocumentError):
    """The machine ran out of something: another attempt may succeed later."""


class InstallationError(DocumentError):
    """A module is missing or cannot be used, or the required sandbox is not there."""


#: By the names of the failures.
_ERRORS: dict[str, type[DocumentError]] = {
    "no-such-file": UnreadableError,
    "permission-denied": UnreadableError,
    "cannot-read": UnreadableError,
    "not-a-package": UnsupportedError,
    "iwork09": UnsupportedError,
    "password-protected": EncryptedError,
    "damaged": DamagedError,
    "unsupported-compression": UnsupportedError,
    "nothing-recognised": UnsupportedError,
    "out-of-memory": OutOfMemoryError,
    "endless-read": DamagedError,
    "timed-out": TimeLimitError,
    "limit-passed": LimitError,
    "crashed": CrashError,
    "module-missing": InstallationError,
    "module-unusable": InstallationError,
    "not-confined": InstallationError,
    "changed": ChangedError,
    "out-of-resources": OutOfResourcesError,
    "other": DocumentError,
}
