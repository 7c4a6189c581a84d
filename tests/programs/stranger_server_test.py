#!/usr/bin/env python3
"""A data server in another language, as its clients see it: scripts that kalvex-run runs."""
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import grpc

import stranger

RUNNER, PROTO = sys.argv[1:3]
del sys.argv[1:3]
MESSAGES, SERVICES = stranger.generate(PROTO)

SEVEN, EIGHT = 1710050400, 1710054000  # 2024-03-10 07:00:00 and 08:00:00 in Warsaw


def integer(number, time=0):
    return {"count": 1, "types": [150], "times": [time], "integers": [number]}


class Counter(SERVICES.DataServerServicer):
    """Serves one variable, which is what it was written last, and an hour report of it."""

    def __init__(self):
        self.value = 20
        self.heard = []

    def Converse(self, parcels, context):
        yield MESSAGES.ServerParcel(greeting={"protocol_version": 1})
        for parcel in parcels:
            kind = parcel.WhichOneof("content")
            for answer in getattr(self, kind)(getattr(parcel, kind)):
                yield MESSAGES.ServerParcel(**answer)
            if kind == "farewell":
                return

    def heartbeat(self, _):
        yield {"heartbeat": {}}

    def farewell(self, farewell):
        self.heard.append(f"farewell {farewell.reason}")
        yield from ()

    def login(self, login):
        self.heard.append(f"login {login.protocol_version} {login.module_type} '{login.user}' '{login.password}'")
        yield {"login_result": {"code": 0}}

    def subscribe(self, request):
        for handle, name in zip(request.added_handles, request.added_names):
            if name == "Z1.LICZNIK":
                self.handle = handle
                definition = {"name": name, "attributes": [{"key": "un", "text": "m³"}]}
                yield {"variable_definitions": {"definitions": [definition]}}
                yield {"value_updates": {"handles": [handle], "values": integer(self.value)}}
            else:
                yield {"access_errors": {"handles": [handle], "codes": [0]}}

    def read_requests(self, requests):
        for request in requests.requests:
            kind = MESSAGES.Kind.Name(request.kind)
            self.heard.append(f"read {kind} {request.variable} {getattr(request, 'from')} {request.to}")
            yield {"read_answer": {"id": request.id, "values": integer(700, SEVEN)}}

    def modify_requests(self, requests):
        for request in requests.requests:
            kind = MESSAGES.Kind.Name(request.kind)
            value = request.value
            content = getattr(value, value.WhichOneof("content"))
            self.heard.append(f"write {kind} {request.variable} {request.time} = {content} {value.status}")
            yield {"modify_results": {"ids": [request.id], "results": [0]}}
            if request.kind == MESSAGES.KIND_CURRENT:
                self.value = int(content)
                yield {"value_updates": {"handles": [self.handle], "values": integer(self.value)}}


class ServerOfAStranger(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.profile = ""
        self.counter = Counter()
        server = grpc.server(concurrent.futures.ThreadPoolExecutor())
        SERVICES.add_DataServerServicer_to_server(self.counter, server)
        server.add_insecure_port(f"unix:{self.folder}/obcy")
        server.start()
        self.addCleanup(lambda: server.stop(None).wait())

    def run_script(self, *lines):
        (self.folder / "a.kx").write_bytes("\r\n".join(lines).encode("cp1250"))
        (self.folder / "Kalvex.ini").write_text(self.profile, encoding="utf-8")
        environment = os.environ | {"SORVANE_RUNTIME_DIR": str(self.folder), "TZ": "Europe/Warsaw"}
        done = subprocess.run([RUNNER, "--json", "--log-level", "2", "--profile", "Kalvex.ini", "a.kx"],
                              cwd=self.folder, env=environment, capture_output=True, encoding="utf-8",
                              timeout=stranger.PATIENCE)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        return json.loads(done.stdout)

    def test_script_reads_and_writes_it(self):
        run = self.run_script(
            "REMOTE LICZNIK obcy@Z1.LICZNIK",
            "LOCAL STAN",
            "LOCAL GODZINA",
            "SET STAN = LICZNIK + 1",
            "SET LICZNIK = STAN * 2",
            "GET LICZNIK HREP 2024 3 10 7",
            ":czekaj",
            "IF NOT READY LICZNIK.HREP GOTO czekaj",
            "SET GODZINA = LICZNIK.HREP",
            "PUT LICZNIK HREP 2024 3 10 8 GODZINA",
        )
        values = {variable["name"]: variable["slots"]["CURDATA"]["value"] for variable in run["scripts"][0]["variables"]}
        self.assertEqual((values["STAN"], values["GODZINA"]), (21, 700))
        self.assertEqual(self.counter.heard, [
            "login 1 23 '' ''",
            "write KIND_CURRENT Z1.LICZNIK 0 = 42.0 32768",
            f"read KIND_HOUR Z1.LICZNIK {SEVEN} {SEVEN}",
            f"write KIND_HOUR Z1.LICZNIK {EIGHT} = 700 32768",
            "farewell 4106",
        ])
        self.assertEqual([line["text"] for line in run["log"]][2:], ["Nawiązanie połączenia z obcy"])

    def test_login_of_the_profile_reaches_it(self):
        self.profile = "[Zrodla]\nZrodlo0=obcy,jan,\n"
        self.run_script("REMOTE LICZNIK obcy@Z1.LICZNIK", "LOCAL STAN", "SET STAN = LICZNIK")
        self.assertEqual(self.counter.heard, ["login 1 23 'jan' ''", "farewell 4106"])

    def test_variable_that_it_does_not_have_is_told(self):
        run = self.run_script("REMOTE BRAK obcy@NIE.MA", "REMOTE LICZNIK obcy@Z1.LICZNIK", "LOCAL STAN",
                              "SET STAN = LICZNIK")
        self.assertEqual(sorted(line["text"] for line in run["log"] if line["level"] == 1),
                         [f"{self.folder}/a.kx - Brak zmiennej w źródle (obcy@NIE.MA)"])


if __name__ == "__main__":
    unittest.main()
