"""A small host: starts the runtime as a child process and converses with it, one JSON line each way.

    with Host("quil-sim", "scenario.json") as host:
        print(host.result("ping"))
"""
import json
import os
import select
import subprocess
import time

import protocol_schema

ANSWER_SECONDS = 30


def executable(name):
    return os.path.join(os.environ["QUIL_BUILD_DIR"], name)


class Failure(Exception):
    """The runtime answered with an error, or did not answer as the protocol says."""

    def __init__(self, error):
        super().__init__(str(error))
        self.code = error.get("code") if isinstance(error, dict) else None
        self.message = error.get("message") if isinstance(error, dict) else str(error)


class Host:
    def __init__(self, program="quil", *arguments, env=None):
        self.process = subprocess.Popen(
            [executable(program), *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, env=env, bufsize=0)
        self.next_id = 0
        self._methods = {}  # of requests that were not answered yet, by id
        self._buffer = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            stream.close()

    def write(self, data, seconds=ANSWER_SECONDS):
        """Sends raw bytes. Takes up what the runtime answers meanwhile, so that neither waits for
        the other."""
        output, input = self.process.stdout, self.process.stdin
        view = memoryview(data)
        deadline = time.monotonic() + seconds
        while view:
            readable, writable, _ = select.select([output], [input], [],
                                                  max(0, deadline - time.monotonic()))
            if not readable and not writable:
                raise Failure(f"input not taken within {seconds} s")
            if writable:
                view = view[os.write(input.fileno(), view[:select.PIPE_BUF]):]
            if readable:
                chunk = os.read(output.fileno(), 1 << 20)
                if not chunk:
                    raise Failure("the runtime ended")
                self._buffer += chunk

    def read_line(self, seconds=ANSWER_SECONDS):
        """The next line of output without its line feed; None at its end."""
        deadline = time.monotonic() + seconds
        while b"\n" not in self._buffer:
            ready, _, _ = select.select([self.process.stdout], [], [],
                                        max(0, deadline - time.monotonic()))
            if not ready:
                raise Failure(f"no answer within {seconds} s")
            chunk = os.read(self.process.stdout.fileno(), 1 << 20)
            if not chunk:
                return None
            self._buffer += chunk
        line, _, self._buffer = self._buffer.partition(b"\n")
        return line

    def send(self, method, params=None):
        """Sends a request without waiting for its answer; returns its id."""
        self.next_id += 1
        request = {"id": self.next_id, "method": method}
        if params is not None:
            request["params"] = params
        self._methods[self.next_id] = method
        self.write(json.dumps(request).encode() + b"\n")
        return self.next_id

    def answer(self, request_id, seconds=ANSWER_SECONDS):
        """The whole answer to the request that was sent with that id, which must be as the
        protocol's schema says."""
        return self._checked(request_id, self.read_line(seconds))

    def _checked(self, request_id, line):
        if line is None:
            raise Failure(f"the runtime ended: {self.process.stderr.read().decode()!r}")
        answer = json.loads(line)
        if answer.get("id") != request_id:
            raise Failure(f"answer to {answer.get('id')} instead of {request_id}")
        protocol_schema.check(self._methods.pop(request_id), answer)
        return answer

    def request(self, method, seconds=ANSWER_SECONDS, **params):
        """Sends a request; returns the whole answer."""
        return self.answer(self.send(method, params or None), seconds)

    def result(self, method, seconds=ANSWER_SECONDS, **params):
        """Sends a request; returns the answer's result, or raises its error as a Failure."""
        answer = self.request(method, seconds, **params)
        if "error" in answer:
            raise Failure(answer["error"])
        return answer["result"]

    def timed(self, method, seconds=ANSWER_SECONDS, **params):
        """Sends a request; returns the seconds until its whole answer had arrived, and what gives
        its result when called: parsing and checking a large tree takes long."""
        begin = time.perf_counter()
        request_id = self.send(method, params or None)
        line = self.read_line(seconds)
        elapsed = time.perf_counter() - begin
        return elapsed, lambda: self._checked(request_id, line)["result"]

    def error(self, method, **params):
        """Sends a request that must fail; returns the error object."""
        answer = self.request(method, **params)
        if "error" not in answer:
            raise Failure(f"{method} answered {answer['result']}")
        return answer["error"]

    def close(self, seconds=ANSWER_SECONDS):
        """Ends the input. Returns the lines still to come, the exit status and the error output."""
        self.process.stdin.close()
        lines = []
        while (line := self.read_line(seconds)) is not None:
            lines.append(line)
        return lines, self.process.wait(seconds), self.process.stderr.read()
