"""The runtime as a child process: one JSON line each way, with a deadline for every answer."""
from __future__ import annotations

import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import weakref
from typing import IO, Any, Dict, List, Optional, Sequence, Union

from .errors import RuntimeGone, RuntimeNotFound, refusal

ANSWER_SECONDS = 30.0
"""How long the runtime has for an answer, beyond what the request itself asks it to wait."""

_END_SECONDS = 2.0
_IN_PACKAGE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "bin", "quil")

Command = Union[str, "os.PathLike[str]", Sequence[str]]


def find_runtime(runtime: Optional[Command] = None) -> List[str]:
    """The command that starts the runtime: the one that is given (a path, or a list with arguments), else the one inside this
    package, else `quil` on PATH. Raises RuntimeNotFound, which says what was tried."""
    if runtime is not None:
        command = [os.fspath(runtime)] if isinstance(runtime, (str, os.PathLike)) else list(runtime)
        if not command or not shutil.which(command[0]):
            raise RuntimeNotFound(f"the runtime {command[0] if command else ''!r} is not there, or cannot be run")
        return command
    if os.access(_IN_PACKAGE, os.X_OK):
        return [_IN_PACKAGE]
    found = shutil.which("quil")
    if found:
        return [found]
    raise RuntimeNotFound(
        f"no runtime: {_IN_PACKAGE} is not there, and no `quil` is on PATH ({os.environ.get('PATH', '')}). Install a package that "
        "carries it, put it on PATH, or name it: Desktop(runtime=\"/path/to/quil\")")


def _end(process: "subprocess.Popen[bytes]", errors: IO[bytes], owner: int) -> None:
    """Closes the runtime's input, which ends it; kills it when that takes too long."""
    for stream in (process.stdin, process.stdout):
        if stream:
            try:
                stream.close()
            except OSError:
                pass
    if owner == os.getpid():  # not in a fork of the host
        try:
            process.wait(_END_SECONDS)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
    errors.close()


class Process:
    """A running runtime. Requests may come from several threads; they are carried out one at a time.

    It ends with close(), with the object, with the interpreter, and with the host however that ends: the runtime exits when its
    standard input closes."""

    def __init__(self, runtime: Optional[Command] = None, answer_seconds: float = ANSWER_SECONDS) -> None:
        self.command = find_runtime(runtime)
        self.answer_seconds = answer_seconds
        errors = tempfile.TemporaryFile()
        try:
            # In a session of its own, so that Ctrl-C reaches the host alone, which then decides.
            self._process = subprocess.Popen(self.command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=errors,
                                             bufsize=0, start_new_session=True)
        except OSError as error:
            errors.close()
            raise RuntimeNotFound(f"the runtime {self.command[0]!r} cannot be started: {error.strerror}") from error
        assert self._process.stdin and self._process.stdout
        self._input = self._process.stdin.fileno()
        self._output = self._process.stdout.fileno()
        os.set_blocking(self._input, False)
        self._errors = errors
        self._lock = threading.Lock()
        self._buffer = b""
        self._last_id = 0
        self._gone: Optional[str] = None
        self._finalizer = weakref.finalize(self, _end, self._process, errors, os.getpid())
        _running.add(self)

    @property
    def pid(self) -> int:
        """The runtime's process id."""
        return self._process.pid

    @property
    def is_running(self) -> bool:
        """Whether the runtime takes requests."""
        return self._finalizer.alive and self._gone is None and self._process.poll() is None

    def close(self) -> None:
        """Ends the runtime; does nothing when it has ended. Requests fail afterwards, one that another thread waits for at once."""
        self._gone = self._gone or "it was closed"
        if self._lock.acquire(blocking=False):
            self._finalizer()
            self._lock.release()
        else:
            self._process.kill()  # the other thread sees the end of the output, and cleans up

    def request(self, method: str, params: Optional[Dict[str, Any]] = None, waits: float = 0.0) -> Any:
        """Sends a request; gives its result, or raises its error as a Refused. `waits` is how many seconds the request itself asks
        the runtime to wait. Raises RuntimeGone when the runtime ends or has not answered in time, which ends it."""
        seconds = self.answer_seconds + waits
        with self._lock:
            if self._gone is not None:
                raise RuntimeGone(f"{method}: the runtime is gone: {self._gone}")
            self._last_id += 1
            request: Dict[str, Any] = {"id": self._last_id, "method": method}
            if params:
                request["params"] = params
            # Escaped, so that a lone half of a surrogate pair is refused by the runtime and not by the encoder.
            line = json.dumps(request, allow_nan=False).encode("ascii") + b"\n"
            deadline = time.monotonic() + seconds
            self._write(method, line, deadline, seconds)
            answer = self._read(method, deadline, seconds)
        if "error" in answer:
            raise refusal(method, answer["error"]["message"], answer["error"].get("code"))
        return answer["result"]

    def _write(self, method: str, line: bytes, deadline: float, seconds: float) -> None:
        rest = memoryview(line)
        try:
            while rest:
                readable, writable, _ = select.select([self._output], [self._input], [], max(0.0, deadline - time.monotonic()))
                if readable:
                    self._take(method)
                if writable:
                    rest = rest[os.write(self._input, rest):]
                elif not readable:
                    raise self._ended(method, f"took no input for {seconds:g} s")
        except BlockingIOError:
            self._write(method, bytes(rest), deadline, seconds)
        except OSError:
            raise self._ended(method) from None
        except BaseException:
            if self._gone is None and len(rest) not in (0, len(line)):  # an interrupted line cannot be taken up again
                self._ended(method, "was interrupted")
            raise

    def _read(self, method: str, deadline: float, seconds: float) -> Dict[str, Any]:
        while True:
            while b"\n" in self._buffer:
                line, _, self._buffer = self._buffer.partition(b"\n")
                try:
                    answer: Dict[str, Any] = json.loads(line)
                    identifier = int(answer["id"])
                except (ValueError, KeyError, TypeError):
                    raise self._ended(method, f"answered {line[:200]!r}") from None
                if identifier == self._last_id:
                    return answer
                # The answer to a request whose caller was interrupted.
            ready, _, _ = select.select([self._output], [], [], max(0.0, deadline - time.monotonic()))
            if not ready:
                raise self._ended(method, f"gave no answer within {seconds:g} s")
            self._take(method)

    def _take(self, method: str) -> None:
        chunk = os.read(self._output, 1 << 20)
        if not chunk:
            raise self._ended(method)
        self._buffer += chunk

    def _ended(self, method: str, why: Optional[str] = None) -> RuntimeGone:
        """Ends the runtime, which is of no use any more; the exception that tells what is known."""
        process = self._process
        try:
            process.wait(0 if why else _END_SECONDS)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
        status = process.returncode
        if self._gone is not None:
            why = self._gone
        elif why is None:
            if status < 0:
                try:
                    why = f"was ended by {signal.Signals(-status).name}"
                except ValueError:
                    why = f"was ended by signal {-status}"
            else:
                why = f"ended with status {status}"
        self._errors.seek(0)
        said = self._errors.read()[-2000:].decode(errors="replace").strip()
        self._gone = f"{self.command[0]} {why}" + (f"; it said: {said}" if said else "")
        self._finalizer()
        return RuntimeGone(f"{method}: {self._gone}")


_running: "weakref.WeakSet[Process]" = weakref.WeakSet()


def _forget_after_fork() -> None:
    """A fork of the host keeps no end of the pipes open, which would keep the runtime alive after the host."""
    for process in list(_running):
        process._gone = "it belongs to the process that this one is a fork of"
        process._finalizer()


os.register_at_fork(after_in_child=_forget_after_fork)
