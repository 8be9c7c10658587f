"""What can go wrong, as exceptions.

Everything that this package raises of its own is a QuilError. Errors that the runtime answered carry its code, as
docs/protocol.md lists them.
"""
from __future__ import annotations

from typing import Dict, Optional, Type


class QuilError(Exception):
    """The base of all errors of this package."""

    code: Optional[str] = None
    """The protocol's error code; None for a bad parameter and for errors of the client itself."""


class RuntimeNotFound(QuilError):
    """There is no runtime to start; the message says what was tried."""


class RuntimeGone(QuilError):
    """The runtime ended, or was ended because it gave no answer in time. Its Desktop is of no use any more."""


class Refused(QuilError):
    """The runtime answered with an error; nothing was done unless the method's description says otherwise."""

    def __init__(self, method: str, message: str, code: Optional[str] = None) -> None:
        super().__init__(f"{method}: {message}")
        self.method = method
        self.message = message
        self.code = code


class InvalidParameter(Refused):
    """A parameter is missing or unusable."""


class UnknownMethod(InvalidParameter):
    """The runtime does not have this method."""


class StaleSnapshot(Refused):
    """The tree has changed since the token was given: observe again."""


class PermissionRequired(Refused):
    """The system has not granted a permission that the method needs."""


class UnsupportedOperation(Refused):
    """It cannot be done as asked: nothing in front, an element without bounds, an application that is not there."""


class CommandFailed(Refused):
    """The application refused."""


class RecordingUnavailable(Refused):
    """The system gives no input events."""


_BY_CODE: Dict[str, Type[Refused]] = {
    "COMPUTER_CONTROL_PERMISSION_REQUIRED": PermissionRequired,
    "COMPUTER_CONTROL_STALE_SNAPSHOT": StaleSnapshot,
    "COMPUTER_CONTROL_UNSUPPORTED_OPERATION": UnsupportedOperation,
    "COMPUTER_CONTROL_COMMAND_FAILED": CommandFailed,
    "RECORDING_PERMISSION_REQUIRED": PermissionRequired,
    "RECORDING_CAPTURE_UNAVAILABLE": RecordingUnavailable,
}


def refusal(method: str, message: str, code: Optional[str]) -> Refused:
    """The exception for an error that the runtime answered."""
    if code is None:
        kind: Type[Refused] = UnknownMethod if message.startswith("unknown method: ") else InvalidParameter
    else:
        kind = _BY_CODE.get(code, Refused)
    return kind(method, message, code)


class NotInTime(QuilError, TimeoutError):
    """What was waited for did not come in time; the message says what was there instead."""


class ElementNotFound(NotInTime):
    """No element matched."""


class AmbiguousElement(NotInTime):
    """More than one element matched; the message lists them."""


class ElementNotReady(NotInTime):
    """An element matched but was disabled, or not to be seen, or changed all the time."""


class ExpectationFailed(NotInTime, AssertionError):
    """An expectation did not come true in time."""
