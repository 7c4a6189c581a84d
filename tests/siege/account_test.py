#!/usr/bin/env python3
"""The account that a siege takes notices what is not as acknowledged, and what it is taken with comes back."""
import concurrent.futures
import contextlib
import pathlib
import socket
import sys
import threading
import unittest

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parent), str(pathlib.Path(__file__).parents[1] / "programs")]

import grpc  # noqa: E402

import clients  # noqa: E402
import programs  # noqa: E402

FIELD = clients.Field("A", clients.ARCHIVE, 2, 5)
START = clients.FIRST_TIME


class FakeReader:
    def __init__(self, *contents):
        self.values = {START + slot: content for slot, content in enumerate(contents) if content is not None}

    def contents(self, kind, variable, start, end):
        return {when: value for when, value in self.values.items() if start <= when <= end}


class Account(unittest.TestCase):
    def differences(self, written, first, *contents):
        return clients.differences(FakeReader(*contents), FIELD, written, first)

    def test_what_is_as_acknowledged(self):
        self.assertEqual(self.differences(3, 0, 0.0, 1.0, 2.0), (3, []))
        self.assertEqual(self.differences(0, 0), (0, []))

    def test_slots_that_have_come_again(self):
        self.assertEqual(self.differences(7, 0, 5.0, 6.0, 2.0, 3.0, 4.0), (5, []))
        self.assertEqual(self.differences(7, 5, 5.0, 6.0), (2, []))

    def test_value_that_is_missing(self):
        self.assertEqual(self.differences(3, 0, 0.0, None, 2.0), (3, ["A, slot 1: None for 1.0"]))

    def test_value_that_is_older_than_the_acknowledged(self):
        self.assertEqual(self.differences(7, 0, 5.0, 1.0, 2.0, 3.0, 4.0), (5, ["A, slot 1: 1.0 for 6.0"]))

    def test_text_is_known_by_its_index(self):
        field = clients.Field("T", clients.ARCHIVE, 1, 5, 10)
        self.assertEqual(clients.differences(FakeReader("0:xxxxxxxx", "2:xxxxxxxx"), field, 2),
                         (2, ["T, slot 1: 2:xxxxxxxx for 1:xxxxxxxx"]))


class HangingUp:
    """Answers so many connections and hangs up at once; after them a server of echoes has the address."""

    def __init__(self, times):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.address = "127.0.0.1:%d" % self.listener.getsockname()[1]
        self.times = times
        handler = grpc.unary_unary_rpc_method_handler(lambda request, _: request)
        self.server = grpc.server(concurrent.futures.ThreadPoolExecutor(1))
        self.server.add_generic_rpc_handlers([grpc.method_handlers_generic_handler("echo", {"say": handler})])
        threading.Thread(target=self.run, daemon=True).start()

    def run(self):
        no_settings = bytes((0, 0, 0, 4, 0, 0, 0, 0, 0))
        with self.listener:
            for _ in range(self.times):
                connection, _ = self.listener.accept()
                # Who has dialled may be gone.
                with connection, contextlib.suppress(OSError):
                    connection.sendall(no_settings)
        self.server.add_insecure_port(self.address)
        self.server.start()


class Channels(unittest.TestCase):
    def test_peer_that_hangs_up_is_dialled_again(self):
        peer = HangingUp(8)
        answer = None
        while answer is None:
            with clients.open_channel(peer.address) as channel:
                try:
                    answer = channel.unary_unary("/echo/say")(b"tak")
                except grpc.RpcError:
                    continue  # it had hung up on a channel that was connected
        self.assertEqual(answer, b"tak")
        peer.server.stop(None)


class Growing(programs.Program):
    """One that is never started, whose sizes are given."""

    def __init__(self, *sizes):
        super().__init__("sorvaned", [], {}, "stdout", threading.Condition(), self.fail)
        self.sizes = list(sizes)

    def fail(self, text):
        raise AssertionError(text)

    def resident_bytes(self):
        return self.sizes.pop(0)

    def has_ended(self):
        return False


class Memory(unittest.TestCase):
    def test_first_look_is_enough(self):
        program = Growing(100, 50)
        self.assertEqual((program.least_bytes(100), program.sizes), (100, [50]))

    def test_peak_that_goes_is_no_growth(self):
        program = Growing(300, 101, 90, 50)
        self.assertEqual((program.least_bytes(100), program.sizes), (90, [50]))

    def test_growth_that_stays_is_told_with_the_least_look(self):
        program = Growing(300, 200, 250, 50)
        self.assertEqual((program.least_bytes(100, looks=2), program.sizes), (200, [50]))


if __name__ == "__main__":
    unittest.main()
