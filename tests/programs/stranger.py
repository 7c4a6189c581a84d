"""A client as a stranger would write it: from sorvane.proto and docs/protocol.md alone."""
import importlib
import pathlib
import queue
import subprocess
import sys
import tempfile
import threading

import grpc

PATIENCE = 60  # seconds for what has to come


def generate(proto):
    """The module of the messages, made from the contract as docs/protocol.md says."""
    folder = tempfile.TemporaryDirectory()
    proto = pathlib.Path(proto)
    subprocess.run(["protoc", f"--proto_path={proto.parent}", f"--python_out={folder.name}",
                    f"--grpc_python_out={folder.name}", "--plugin=protoc-gen-grpc_python=/usr/bin/grpc_python_plugin",
                    proto.name], check=True)
    sys.path.insert(0, folder.name)
    try:
        return tuple(importlib.import_module(f"{proto.stem}_{part}") for part in ("pb2", "pb2_grpc"))
    finally:
        sys.path.pop(0)
        folder.cleanup()


def values_of(columns):
    """(type, status, time, content) of each of many values."""
    def element(column, index):
        return column[index if len(column) > 1 else 0] if column else 0

    contents = {"integer": iter(columns.integers), "real": iter(columns.reals), "text": iter(columns.texts)}
    values = []
    for index in range(columns.count):
        code = element(columns.types, index)
        kind = "integer" if 120 <= code <= 161 else {171: "real", 190: "text"}.get(code)
        content = next(contents[kind]) if kind else None
        values.append((code, element(columns.statuses, index), element(columns.times, index), content))
    return values


class Conversation:
    """One call of Converse. It beats while it has nothing to say."""

    def __init__(self, messages, channel):
        self.messages = messages
        self.outbox = queue.SimpleQueue()
        self.inbox = queue.SimpleQueue()
        self.kept = []
        converse = channel.stream_stream("/sorvane.v1.DataServer/Converse",
                                         request_serializer=lambda parcel: parcel,
                                         response_deserializer=messages.ServerParcel.FromString)
        self.call = converse(self.words())
        threading.Thread(target=self.listen, daemon=True).start()

    def words(self):
        while True:
            try:
                parcel = self.outbox.get(timeout=2)
            except queue.Empty:
                parcel = self.messages.ClientParcel(heartbeat={}).SerializeToString()
            if parcel is None:
                return
            yield parcel

    def listen(self):
        try:
            for parcel in self.call:
                self.inbox.put(parcel)
        except grpc.RpcError:
            pass
        self.inbox.put(None)

    def say(self, **content):
        self.outbox.put(self.messages.ClientParcel(**content).SerializeToString())

    def say_bytes(self, content):
        self.outbox.put(content)

    def take(self, kind):
        """The next parcel of the kind; what comes before it is kept for later."""
        for index, parcel in enumerate(self.kept):
            if parcel.WhichOneof("content") == kind:
                return getattr(self.kept.pop(index), kind)
        while True:
            parcel = self.inbox.get(timeout=PATIENCE)
            if parcel is None:
                raise AssertionError(f"no {kind} before the end: {self.call.code()} {self.call.details()}")
            if parcel.WhichOneof("content") == kind:
                return getattr(parcel, kind)
            self.kept.append(parcel)

    def end(self):
        """The status with which the server ends the call; no matter what comes before."""
        self.outbox.put(None)
        while self.inbox.get(timeout=PATIENCE) is not None:
            pass
        return self.call.code()

    def log_in(self, user="", password="", name="Obcy", version=1, **more):
        """(code, text) of the answer."""
        self.say(login={"protocol_version": version, "module_type": 23, "client_name": name, "user": user,
                        "password": password, **more})
        result = self.take("login_result")
        return result.code, result.text

    def subscribe(self, names, flags=0):
        """(definitions, values, access errors), each by its name."""
        self.say(subscribe={"added_handles": range(1, len(names) + 1), "added_names": names, "flags": flags})
        names = dict(enumerate(names, start=1))
        values = {}
        more = True
        while more:
            updates = self.take("value_updates")
            values |= zip((names[handle] for handle in updates.handles), values_of(updates.values))
            more = updates.more
        definitions, errors = {}, {}
        for parcel in self.kept:
            for definition in parcel.variable_definitions.definitions:
                definitions[definition.name] = {item.key: item.text for item in definition.attributes}
            errors |= zip((names[handle] for handle in parcel.access_errors.handles), parcel.access_errors.codes)
        self.kept.clear()
        return definitions, values, errors

    def modify(self, kind, variable, time, **value):
        """The result of the write."""
        self.say(modify_requests={"requests": [{"id": 1, "kind": kind, "variable": variable, "time": time,
                                                "value": value}]})
        results = self.take("modify_results")
        assert list(results.ids) == [1]
        return results.results[0]

    def read(self, kind, variable, start, end):
        """(result, the values of each piece)."""
        self.say(read_requests={"requests": [{"id": 7, "kind": kind, "variable": variable, "from": start,
                                              "to": end}]})
        pieces = []
        while True:
            answer = self.take("read_answer")
            assert answer.id == 7
            pieces.append(values_of(answer.values))
            if not answer.more:
                return answer.result, pieces
