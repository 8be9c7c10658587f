"""How the runtime reads requests and writes answers, whatever comes through the pipes."""
import fcntl
import json
import os
import subprocess
import tempfile
import threading
import unittest

from quil_host import ANSWER_SECONDS, executable
from simulated import Simulated, desktop, run

PING = b'{"id": 1, "method": "ping"}\n'
DEEP = 100_000
HUGE = 4_000_000


def answers(data):
    """The answers to this input and to a ping behind it, which must be answered whatever came."""
    replies, status, errors = run(b"{}", data + b'{"id": 999, "method": "ping"}\n')
    assert (status, errors) == (0, b""), (status, errors)
    assert replies and replies[-1]["id"] == 999, data[:60]
    return replies[:-1]


class Envelope(unittest.TestCase):
    def test_lines_that_are_dropped(self):
        for line in [
                b"", b" ", b"{", b"}", b"[]", b"42", b"null", b"true", b'"ping"', b"{}",
                b'[{"id":1,"method":"ping"}]',
                b'{"method":"ping"}', b'{"id":"3","method":"ping"}', b'{"id":null,"method":"ping"}',
                b'{"id":3.5,"method":"ping"}', b'{"id":true,"method":"ping"}',
                b'{"id":[1],"method":"ping"}', b'{"id":9223372036854775808,"method":"ping"}',
                b'{"id":-9223372036854775809,"method":"ping"}', b'{"id":1e400,"method":"ping"}',
                *(b'{"id":%s,"method":"ping"}' % id for id in (
                    b"1.00000000000000000000001", b"1e-400", b"-1e-999999999999999999999",
                    b"9007199254740993.5", b"9223372036854775808.0", b"-9223372036854775809.0",
                    b"922337203685477580.71e1", b"1e19", b"1e999999999999999999999", b"10e-2")),
                b'{"ID":1,"method":"ping"}', b'{"id":4}', b'{"id":4,"method":7}',
                b'{"id":4,"method":null}', b'{"id":4,"method":["ping"]}',
                b'{"id":1,"method":"ping"} x', b'{"id":1,"method":"ping"}{}',
                b"{'id':1,'method':'ping'}", b'{"id":1,"method":"ping",}',
                b'{"id":1,"method":"ping"} // note', b'{"id":01,"method":"ping"}',
                b'{"id":1,"method":"ping","params":{"x":1e400e5}}',
                b'{"id":1,"method":"pi\xffng"}', b'{"id":1,"method":"\xc0\xaf"}',
                b'{"id":1,"method":"\xed\xa0\x80"}', b'{"id":1,"method":"a\x00b"}',
                b'{"id":1,\x00"method":"ping"}', b'\x00', b'\x00{"id":1,"method":"ping"}',
                b'{"id":1,"method":"ping"}\x00', b'{"id":1,"method":"ping"} \x00 more',
                b'{"id":1,"method":"ping","params":{"x":[01e400,1.e999,"1e999]}}',
                b'{"id":1,"method":"pi\tng"}', b'{"id":1,"method":"\\u12"}',
                b'{"id":1,"method":"\\ud800\\x"}']:
            with self.subTest(line):
                self.assertEqual(answers(line + b"\n"), [])

    def test_ids(self):
        for spelled, meant in [("3", 3), ("3.0", 3), ("30e-1", 3), ("-1", -1), ("0", 0),
                               ("-0.0", 0), ("9223372036854775807", 2**63 - 1),
                               ("-9223372036854775808", -2**63), ("1e3", 1000),
                               ("9007199254740993.0", 2**53 + 1), ("-9223372036854775808.0", -2**63),
                               ("922337203685477580.7E+1", 2**63 - 1), ("0.0e-999999999999999999999", 0),
                               ("5000000000000000000000e-21", 5), ("0e999999999999999999999", 0)]:
            reply, = answers(b'{"id": %s, "method": "ping"}\n' % spelled.encode())
            self.assertEqual(reply["id"], meant, spelled)
            self.assertIs(type(reply["id"]), int, spelled)

    def test_what_does_not_matter(self):
        for line in [b'  {"id":1,"method":"ping"}\t ', b'{"id":1,"method":"ping"}\r',
                     b'{"x":[{}],"id":1,"method":"ping"}', b'{"id":1,"method":"\\u0070ing"}',
                     b'{"id":1,"method":"ping","params":[1,2]}',
                     b'{"id":1,"method":"ping","params":null}',
                     b'{"id":1,"method":"ping","params":{"x":1e400,"y":-1e999,"z":1e-999}}']:
            reply, = answers(line + b"\n")
            self.assertEqual(sorted(reply), ["id", "result"], line)
            self.assertEqual(sorted(reply["result"]), ["accessibility", "inputMonitoring",
                             "permissionsGranted", "screenRecording", "semantic"])

    def test_unknown_methods_are_named(self):
        for method in ["PING", "ping ", "", "désktop_target 🎈", "a\nb\u0000\u007f\u2028", "x" * 5000]:
            request = json.dumps({"id": 5, "method": method}).encode()
            self.assertEqual(answers(request + b"\n"), [
                {"id": 5, "error": {"message": "unknown method: " + method}}], method)

    def test_answers_are_compact_utf8(self):
        with Simulated({"applications": [{"pid": 1, "name": "Café 🎈"}]}) as host:
            host.write(b'{"id": 7, "method": "cancelGlimpseCapture"}\n'
                       b'{"id": 8, "method": "desktop_target"}\n')
            self.assertIn(host.read_line(), [b'{"id":7,"result":{}}', b'{"result":{},"id":7}'])
            self.assertIn("Café 🎈".encode(), host.read_line())


class Stream(unittest.TestCase):
    def test_order_and_a_last_line_without_line_feed(self):
        lines = b"".join(b'{"id": %d, "method": "%s"}\r\n' % (i, b"ping" if i % 2 else b"desktop_target")
                         for i in range(2000))
        replies, status, errors = run(b"{}", lines + b"garbage\n\n" + PING.strip())
        self.assertEqual([r["id"] for r in replies], [*range(2000), 1])
        self.assertEqual((status, errors), (0, b""))
        self.assertEqual(run(b"{}", b""), ([], 0, b""))

    def test_monstrous_lines(self):
        cases = [
            (b"[" * DEEP, 0), (b'{"a":' * DEEP, 0), (b"[" * DEEP + b"]" * DEEP, 0),
            (b'{"id":2,"method":"ping","params":' + b"[" * DEEP + b"]" * DEEP + b"}", 1),
            (b'{"id":2,"method":"ping","params":' + b'{"a":' * DEEP + b"1" + b"}" * DEEP + b"}", 1),
            (b"x" * HUGE, 0), (b'"' * HUGE, 0), (b"\x00" * HUGE, 0), (b"\n" * 200_000, 0),
            (b'{"id":2,"method":"ping","params":{"n":' + b"1" * 500_000 + b"}}", 1),
            (b'{"id":2,"method":"desktop_paste","params":{"text":"' + b"a" * HUGE + b'"}}', 1),
            (b'{"id":2,"method":"desktop_keypress","params":{"combo":"' + b"cmd+" * 100_000 + b'"}}', 1),
            (b'{"id":2,"method":"ping","params":{"x":[' + b"1e400," * 50_000 + b"1]}}", 1),
        ]
        for line, count in cases:
            with self.subTest(line[:40]):
                self.assertEqual(len(answers(line + b"\n")), count)

    def test_a_large_answer_on_a_slowly_read_pipe(self):
        title = "é" * 400
        children = [{"role": "AXButton", "title": title} for _ in range(200)]
        with Simulated(desktop(*children)) as host:
            first = host.send("desktop_ax_get_state")
            second = host.send("ping")
            received = b""
            while received.count(b"\n") < 2:  # a little at a time; the pipe is full all along
                received += os.read(host.process.stdout.fileno(), 3000)
            replies = [json.loads(line) for line in received.splitlines()]
            self.assertEqual([r["id"] for r in replies], [first, second])
            names = [node.get("name") for node in replies[0]["result"]["nodes"]]
            self.assertEqual(names, ["Main"] + [title] * 200)

    def test_non_blocking_pipes(self):
        in_reader, in_writer = os.pipe()
        out_reader, out_writer = os.pipe()
        for descriptor in (in_reader, out_writer):
            fcntl.fcntl(descriptor, fcntl.F_SETFL, os.O_NONBLOCK)
        method = b"m" * 1_000_000
        with tempfile.NamedTemporaryFile() as scenario:
            scenario.write(b"{}")
            scenario.flush()
            process = subprocess.Popen([executable("quil-sim"), scenario.name], stdin=in_reader,
                                       stdout=out_writer)
            os.close(in_reader)
            os.close(out_writer)

            def send():
                with os.fdopen(in_writer, "wb") as writer:
                    writer.write(b'{"id": 1, "method": "' + method + b'"}\n' + PING)

            sender = threading.Thread(target=send)
            sender.start()
            with os.fdopen(out_reader, "rb") as reader:
                replies = [json.loads(line) for line in reader]
            sender.join()
            self.assertEqual(process.wait(ANSWER_SECONDS), 0)
        self.assertEqual(replies[0]["error"]["message"].encode(), b"unknown method: " + method)
        self.assertIn("result", replies[1])

    def test_nobody_reads_the_answers(self):
        """The runtime works on, and ends with its input."""
        with Simulated(desktop()) as host:
            host.process.stdout.close()
            for _ in range(3):
                os.write(host.process.stdin.fileno(), b'{"id":1,"method":"desktop_keypress",'
                                                      b'"params":{"combo":"a"}}\n')
            host.process.stdin.close()
            self.assertEqual(host.process.wait(ANSWER_SECONDS), 0)
            self.assertEqual(host.process.stderr.read(), b"")
            self.assertEqual(len(host.log("post")), 6)

    def test_streams_that_the_host_has_closed(self):
        with Simulated({}) as host:
            arguments = host.process.args
            for closing in ("0<&-", "1>&-", "2>&-", "0<&- 1>&- 2>&-"):
                done = subprocess.run(["/bin/sh", "-c", f'exec "$0" "$1" {closing}', *arguments],
                                      input=PING, capture_output=True, timeout=ANSWER_SECONDS)
                self.assertEqual((done.returncode, done.stderr), (0, b""), closing)
                self.assertEqual(bool(done.stdout), closing == "2>&-", closing)
                self.assertEqual(host.log(), [], "what is opened takes no closed stream's number")

    def test_scenario_must_be_the_one_argument(self):
        for arguments in [[], ["a.json", "b.json"]]:
            done = subprocess.run([executable("quil-sim"), *arguments], input=PING,
                                  capture_output=True, timeout=ANSWER_SECONDS)
            self.assertEqual((done.returncode, done.stdout), (2, b""))
            self.assertIn(b"usage: quil-sim SCENARIO.json", done.stderr)


if __name__ == "__main__":
    unittest.main()
