"""Clients that belong: they write and keep account of what was acknowledged, and read it back."""
import collections
import dataclasses
import threading
import time

import grpc

import stranger
from programs import PATIENCE

CURRENT, HOUR, SPAN, ARCHIVE = 1, 2, 5, 6
REAL, TEXT = 171, 190
FIRST_TIME = 978303600  # 2001-01-01 00:00:00 in Warsaw, an hour's beginning
AGAIN = 5  # the result of a write that may be tried again
# Each has a connection of its own, and is back soon after the server.
CHANNEL = (("grpc.use_local_subchannel_pool", 1), ("grpc.initial_reconnect_backoff_ms", 100),
           ("grpc.min_reconnect_backoff_ms", 100), ("grpc.max_reconnect_backoff_ms", 500))
DIAL_SECONDS = 2


def open_channel(target):
    """A channel that is connected. One whose peer hangs up as soon as it is connected may be idle before its library
    looks, and then dials no more; so there is soon another one."""
    end = time.monotonic() + PATIENCE
    while True:
        channel = grpc.insecure_channel(target, options=CHANNEL)
        try:
            grpc.channel_ready_future(channel).result(DIAL_SECONDS)
            return channel
        except grpc.FutureTimeoutError:
            channel.close()
            if time.monotonic() > end:
                raise


@dataclasses.dataclass(frozen=True)
class Field:
    """What one writer writes: values in slots that come again, each value told by its index alone."""

    variable: str
    kind: int
    batch: int
    slots: int
    letters: int = 0  # of a text; 0 for a number
    share: int = 1  # batches that are written beside one event

    def time(self, index):
        return FIRST_TIME + index % self.slots * (3600 if self.kind == HOUR else 1)

    def content(self, index):
        return f"{index}:".ljust(self.letters, "x") if self.letters else float(index)

    def expected(self, slot, written):
        """What the slot has after so many values; None: nothing."""
        if slot >= written:
            return None
        return self.content(slot + (written - 1 - slot) // self.slots * self.slots)


# Archives, reports and a current value, in batches as clients write them.
FIELDS = (Field("ARCH0", ARCHIVE, 100, 20000, share=20), Field("ARCH1", ARCHIVE, 1, 20000, share=50),
          Field("ODCINKI", SPAN, 20, 20000, share=5), Field("GODZINY", HOUR, 5, 5000, share=10),
          Field("BIEZACA", CURRENT, 1, 1, share=50))
TEXTS = Field("TEKSTY", ARCHIVE, 500, 8000, 2000)


class Writer(threading.Thread):
    """Writes what it is given to write. What has no answer when a connection breaks is sent again with its serial, so
    in the end each value has an answer."""

    def __init__(self, field, target, messages, token, news, on_fault, window=8):
        super().__init__(daemon=True)
        self.field, self.target, self.messages, self.token = field, target, messages, token
        self.news, self.on_fault, self.window = news, on_fault, window
        self.goal = self.sent = self.answered = 0  # values
        self.pending = collections.OrderedDict()  # serial: (values, parcel)
        self.serial = self.connections = self.repeated = self.refused = 0
        self.conversation = None
        self.ending = False

    def give(self, batches):
        with self.news:
            self.goal += batches * self.field.batch
        self.wake()

    def wake(self):
        conversation = self.conversation
        if conversation:
            conversation.inbox.put("work")

    def is_done(self):
        return self.answered == self.goal

    def end(self):
        self.ending = True
        self.wake()

    def run(self):
        while not self.ending:
            try:
                with open_channel(self.target) as channel:
                    self.converse(channel)
            except (grpc.RpcError, grpc.FutureTimeoutError, AssertionError):
                # The server was ended, or lets nobody in: what counts is that it does so again.
                continue

    def converse(self, channel):
        conversation = stranger.Conversation(self.messages, channel)
        conversation.take("greeting")
        code, text = conversation.log_in(name=f"Pisarz {self.field.variable}", token=self.token)
        if code != 0:
            raise AssertionError(text)
        self.connections += 1
        self.repeated += len(self.pending)
        for _, parcel in self.pending.values():
            conversation.say_bytes(parcel)
        self.conversation = conversation
        self.wake()
        while not self.ending:
            while self.sent < self.goal and self.sent - self.answered < self.window * self.field.batch:
                self.say_next(conversation)
            parcel = conversation.inbox.get()
            if parcel is None:
                return
            if parcel != "work" and parcel.WhichOneof("content") == "modify_results":
                self.note(conversation, parcel.modify_results)

    def say_next(self, conversation):
        indices = range(self.sent, min(self.sent + self.field.batch, self.goal))
        self.sent += len(indices)
        if self.field.kind == ARCHIVE:
            self.say_archive(conversation, indices)
        else:
            self.say_values(conversation, indices)

    def say_archive(self, conversation, indices):
        field = self.field
        self.serial += 1
        values = {"count": len(indices), "types": [TEXT if field.letters else REAL],
                  "times": [field.time(index) for index in indices],
                  "texts" if field.letters else "reals": [field.content(index) for index in indices]}
        parcel = self.messages.ClientParcel(archive_modify_request={
            "id": self.serial, "variable": field.variable, "from": field.time(indices[0]),
            "to": field.time(indices[-1]), "values": values, "serial": self.serial}).SerializeToString()
        self.pending[self.serial] = (len(indices), parcel)
        conversation.say_bytes(parcel)

    def say_values(self, conversation, indices):
        requests = [{"id": self.number(index), "kind": self.field.kind, "variable": self.field.variable,
                     "time": self.field.time(index), "value": {"type": REAL, "real": self.field.content(index)},
                     "serial": self.number(index)} for index in indices]
        for request in requests:
            alone = self.messages.ClientParcel(modify_requests={"requests": [request]}).SerializeToString()
            self.pending[request["serial"]] = (1, alone)
        conversation.say(modify_requests={"requests": requests})

    @staticmethod
    def number(index):
        """Serial and id of a value that is written by itself."""
        return index % 0xFFFFFFF0 + 1

    def note(self, conversation, results):
        for number, result in zip(results.ids, results.results):
            if number not in self.pending:
                continue  # the answer to what was sent twice
            if result == AGAIN:
                self.refused += 1
                conversation.say_bytes(self.pending[number][1])
                continue
            if result != 0:
                self.on_fault(f"a write of {self.field.variable} was answered with {result}")
            values, _ = self.pending.pop(number)
            with self.news:
                self.answered += values
                self.news.notify_all()


class Reader:
    """Looks at the server as somebody who belongs, on a connection of its own."""

    def __init__(self, target, messages, services):
        self.messages, self.services = messages, services
        self.handle = 0
        self.channel = open_channel(target)
        self.conversation = stranger.Conversation(messages, self.channel)
        self.conversation.take("greeting")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.conversation.say(farewell={"reason": 4106})
        self.conversation.end()
        self.channel.close()

    def log_in(self, user="", password=""):
        """None, or why not."""
        code, text = self.conversation.log_in(user, password, "Czytelnik")
        return text if code else None

    def definitions(self, user, password):
        login = {"protocol_version": 1, "module_type": 23, "client_name": "Spis", "user": user, "password": password}
        pieces = self.services.DataServerStub(self.channel).ListVariables(self.messages.ClientParcel(login=login))
        return sum(len(piece.variable_definitions.definitions) for piece in pieces)

    def contents(self, kind, variable, start, end):
        """time: content, of a range."""
        result, pieces = self.conversation.read(kind, variable, start, end)
        assert result in (0, 1), f"reading {variable}: result {result}"
        return {when: content for piece in pieces for _, _, when, content in piece}

    def await_change(self, name):
        self.current(name)
        self.conversation.take("value_updates")

    def current(self, name):
        """Each name once."""
        self.handle += 1
        self.conversation.say(subscribe={"added_handles": [self.handle], "added_names": [name]})
        while True:
            updates = self.conversation.take("value_updates")
            if self.handle in updates.handles:
                return stranger.values_of(updates.values)[list(updates.handles).index(self.handle)][3]


def differences(reader, field, written, first_index=0):
    """(values that were compared, texts of those that are not as acknowledged), of the slots written since an index."""
    since = max(first_index, written - field.slots)
    slots = sorted({index % field.slots for index in range(since, written)})
    if not slots:
        return 0, []
    if field.kind == CURRENT:
        seen = {field.time(0): reader.current(field.variable)}
    else:
        seen = reader.contents(field.kind, field.variable, field.time(slots[0]), field.time(slots[-1]))
    wrong = [f"{field.variable}, slot {slot}: {str(seen.get(field.time(slot)))[:40]} for "
             f"{str(field.expected(slot, written))[:40]}"
             for slot in slots if seen.get(field.time(slot)) != field.expected(slot, written)]
    return len(slots), wrong

