"""The text of Pages, Keynote and Numbers documents.

    import dorvex

    for text in dorvex.texts("Letter.pages"):
        print(text)

Documents are read in processes of their own, so that a bad one costs nothing but
itself: what became of it is a Result, or a DocumentError.
"""

from . import _library
from ._host import DEFAULT, Document, Host, Isolation, Reader, Sandbox, Source, texts
from ._result import (
    ChangedError,
    CrashError,
    DamagedError,
    DocumentError,
    EncryptedError,
    InstallationError,
    Kind,
    LimitError,
    OutOfMemoryError,
    OutOfResourcesError,
    Result,
    SkippedMember,
    Status,
    TimeLimitError,
    UnreadableError,
    UnsupportedError,
)

#: The version of the library.
__version__: str = _library.library.dorvex_version().decode()

__all__ = [
    "DEFAULT",
    "ChangedError",
    "CrashError",
    "DamagedError",
    "Document",
    "DocumentError",
    "EncryptedError",
    "Host",
    "InstallationError",
    "Isolation",
    "Kind",
    "LimitError",
    "OutOfMemoryError",
    "OutOfResourcesError",
    "Reader",
    "Result",
    "Sandbox",
    "SkippedMember",
    "Source",
    "Status",
    "TimeLimitError",
    "UnreadableError",
    "UnsupportedError",
    "texts",
]
