"""Those who do not belong. Each flood is a context: it stands while those who belong are served, and goes behind."""
import contextlib
import queue
import socket

import grpc

import stranger
from clients import CHANNEL
from plant import GUEST, NAME, SIGNALS

GARBAGE = (b"\xff" * 200, b"\x0a\xff\xff\xff\xff\x0f", bytes(5 * 1024 * 1024), b"\x22" + b"\x80" * 11 + b"\x01")


class Floods:
    """At the server, or at the module, whose console speaks the same. `scale` is 1 for a short siege."""

    def __init__(self, server_target, module_target, plant, messages, services, scale):
        self.targets = {"server": server_target, "module": module_target}
        self.plant, self.messages, self.services, self.scale = plant, messages, services, scale
        self.refused = 0

    def channel(self, where):
        return grpc.insecure_channel(self.targets[where], options=CHANNEL)

    def login(self, user="", password="", name="Obcy"):
        return {"protocol_version": 1, "module_type": 23, "client_name": name, "user": user, "password": password}

    def converse(self, stack, where):
        """A conversation that has been greeted; None when it has been refused."""
        conversation = stranger.Conversation(self.messages, stack.enter_context(self.channel(where)))
        try:
            conversation.take("greeting")
        except AssertionError:
            self.refused += 1
            return None
        return conversation

    @contextlib.contextmanager
    def silent_connections(self, where):
        with contextlib.ExitStack() as stack:
            for _ in range(200 * self.scale):
                peer = stack.enter_context(socket.socket(socket.AF_UNIX))
                peer.settimeout(10)
                try:
                    peer.connect(self.targets[where].removeprefix("unix:"))
                except OSError:
                    self.refused += 1
            yield

    @contextlib.contextmanager
    def conversations_without_login(self, where):
        with contextlib.ExitStack() as stack:
            for _ in range(40 * self.scale):
                self.converse(stack, where)
            yield

    @contextlib.contextmanager
    def wrong_logins(self, where):
        """Guesses that wait for their turns; those that have been answered by the end have not come in."""
        with contextlib.ExitStack() as stack:
            guessers = []
            for user in (GUEST, "nikt", "\x1b[2J\r\n2024-03-10 07:00:00 Zatrzymanie"):
                for _ in range(5 * self.scale):
                    conversation = self.converse(stack, where)
                    if conversation:
                        conversation.say(login=self.login(user, "zle", "Zgaduje\x1b[31m\n"))
                        guessers.append(conversation)
            yield
            for guesser in guessers:
                while not guesser.inbox.empty():
                    parcel = guesser.inbox.get()
                    if parcel and parcel.WhichOneof("content") == "login_result" and parcel.login_result.code == 0:
                        raise AssertionError("somebody came in with a wrong password")

    @contextlib.contextmanager
    def cancelled_calls(self, where):
        with self.channel("server") as channel:
            stub = self.services.DataServerStub(channel)
            for _ in range(200 * self.scale):
                stub.ListVariables(self.messages.ClientParcel(login=self.login(GUEST, "zle"))).cancel()
            yield

    @contextlib.contextmanager
    def unknown_names(self, where):
        with contextlib.ExitStack() as stack:
            conversation = self.converse(stack, "server")
            if conversation and conversation.log_in()[0] == 0:
                count = 20000 * self.scale
                for first in range(1, count + 1, 10000):
                    handles = range(first, first + 10000)
                    conversation.say(subscribe={"added_handles": handles,
                                                "added_names": [f"NIEMA{handle}" for handle in handles]})
                    conversation.take("access_errors")
            yield

    @contextlib.contextmanager
    def garbage(self, where):
        with contextlib.ExitStack() as stack:
            for parcel in GARBAGE:
                conversation = self.converse(stack, where)
                if conversation:
                    conversation.say_bytes(parcel)
                    conversation.end()
            for bytes_sent in (b"GET / HTTP/1.1\r\n\r\n", b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" + b"\xff" * 5000,
                               b"\x16\x03\x01" + b"\x00" * 5000):
                peer = stack.enter_context(socket.socket(socket.AF_UNIX))
                peer.settimeout(10)
                with contextlib.suppress(OSError):
                    peer.connect(self.targets[where].removeprefix("unix:"))
                    peer.sendall(bytes_sent)
            yield

    @contextlib.contextmanager
    def garbage_for_the_figures(self, where):
        with contextlib.ExitStack() as stack:
            for request in (b"GET /metrics HTTP/1.1\r\nRange: bytes=" + b"0-1," * 1000 + b"\r\n\r\n", b"\x00" * 20000,
                            b"GET /metr", b"POST /metrics HTTP/1.1\r\nContent-Length: 999999999999\r\n\r\n"):
                peer = stack.enter_context(socket.socket(socket.AF_UNIX))
                peer.settimeout(10)
                with contextlib.suppress(OSError):
                    peer.connect(str(self.plant.metrics))
                    peer.sendall(request)
                    while peer.recv(65536):
                        pass
            yield

    @contextlib.contextmanager
    def lagging_readers(self, where):
        """They subscribe everything, the log too, and take nothing of what comes."""
        with contextlib.ExitStack() as stack:
            for _ in range(5 * self.scale):
                channel = stack.enter_context(self.channel(where))
                words = queue.SimpleQueue()
                stack.callback(words.put, None)
                converse = channel.stream_stream("/sorvane.v1.DataServer/Converse",
                                                 request_serializer=self.messages.ClientParcel.SerializeToString)
                call = converse(iter(words.get, None))
                stack.callback(call.cancel)
                try:
                    next(call)  # the greeting
                    words.put(self.messages.ClientParcel(login=self.login(name="Maruder")))
                    next(call)  # the result
                except grpc.RpcError:
                    self.refused += 1
                words.put(self.messages.ClientParcel(subscribe={
                    "added_handles": range(1, SIGNALS + 1), "added_names": [f"SYGNAL{n}" for n in range(SIGNALS)],
                    "flags": 833}))
            yield


def names():
    """Of the floods, each with where it comes."""
    both = ("silent_connections", "conversations_without_login", "wrong_logins", "garbage", "lagging_readers")
    return [(name, where) for name in both for where in ("server", "module")] + [
        ("cancelled_calls", "server"), ("unknown_names", "server"), ("garbage_for_the_figures", "module")]


def targets(folder):
    return f"unix:{folder}/run/{NAME}", f"unix:{folder}/run/Kalvex"
