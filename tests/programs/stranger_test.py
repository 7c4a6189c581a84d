#!/usr/bin/env python3
"""The data server, driven by a client in another language over its local socket and over TCP."""
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import unittest

os.environ.setdefault("GRPC_VERBOSITY", "NONE")
import grpc  # noqa: E402, its first look at the environment

import stranger  # noqa: E402
from followed_log import FollowedLog  # noqa: E402

PROGRAM, PROTO = sys.argv[1:3]
del sys.argv[1:3]
MESSAGES, SERVICES = stranger.generate(PROTO)

HOUR, DAY, ARCHIVE = MESSAGES.KIND_HOUR, MESSAGES.KIND_DAY, MESSAGES.KIND_ARCHIVE
CURRENT = MESSAGES.KIND_CURRENT
MIDNIGHT = 1710025200  # 2024-03-10 00:00:00 in Warsaw
REPORT_CHANGES, LOG_MESSAGES = 64, 256

PLANT = """
[server]
name = "Stacja"
clients = 50
[network]
%s
[[access]]
variables = "TAJNE"
read = "50"
write = "50"
[[access]]
variables = "ODCZYT"
read = "0"
write = "50"
[[access]]
variables = "*"
read = "0"
write = "0"
[[variable]]
name = "Z1.PRZEPŁYW"
un = "m3/h"
de = "Przepływ na wyjściu"
min = 0
max = 5000
at = 32
rt = 6
value = 12.5
[[variable]]
name = "OPIS"
type = "text"
[[variable]]
name = "ODCZYT"
value = 3
[[variable]]
name = "TAJNE"
value = 4
[[variable]]
name = "LICZNIK"
type = "int"
signal = "counter rate=1 start=100"
"""


class Plant:
    """A running server in a folder of its own."""

    def __init__(self, test, network="", users=()):
        folder = tempfile.TemporaryDirectory()
        test.addClassCleanup(folder.cleanup)
        self.test = test
        self.folder = pathlib.Path(folder.name)
        self.config = self.folder / "plant.toml"
        self.configure(network)
        self.environment = os.environ | {"SORVANE_RUNTIME_DIR": folder.name, "TZ": "Europe/Warsaw",
                                         "LC_ALL": "C.UTF-8"}
        self.environment.pop("LANGUAGE", None)
        for name, password, level in users:
            subprocess.run([PROGRAM, "--config", self.config, "user", "add", name, "--level", str(level)],
                           input=password, encoding="utf-8", check=True)
        self.socket = f"unix:{self.folder}/Stacja"

    def configure(self, network):
        self.config.write_text(PLANT % network, encoding="utf-8")

    def start(self):
        self.process = subprocess.Popen([PROGRAM, "--config", self.config, "--log-level", "2"],
                                        stderr=subprocess.PIPE, encoding="utf-8", env=self.environment)
        self.test.addClassCleanup(self.process.stderr.close)
        self.test.addClassCleanup(self.process.wait)
        self.test.addClassCleanup(self.process.kill)
        self.log = FollowedLog(self.process.stderr)
        self.place = self.await_line(r"Nasłuchiwanie: (.*)")[1]
        return self

    def await_line(self, pattern):
        """The match of the first log line that is like this as a whole; it is taken out."""
        return self.log.await_line(pattern)

    def await_log(self, line):
        self.await_line(re.escape(line))

    def channel(self):
        return grpc.insecure_channel(self.socket)


class Stranger(unittest.TestCase):
    NETWORK = 'address = "127.0.0.1:0"'
    USERS = [("adam", "tajne", 50), ("admin", "wszystko", 100), ("ewa", "haslo", 0)]

    @classmethod
    def setUpClass(cls):
        cls.plant = Plant(cls, cls.NETWORK, cls.USERS).start()
        cls.port = cls.plant.await_line(r"Nasłuchiwanie: 127\.0\.0\.1:(\d+) \(bez szyfrowania\)")[1]

    def converse(self, channel=None):
        channel = channel or self.plant.channel()
        self.addCleanup(channel.close)
        conversation = stranger.Conversation(MESSAGES, channel)
        greeting = conversation.take("greeting")
        self.assertEqual((greeting.protocol_version, greeting.source, greeting.node, greeting.term),
                         (1, "Stacja", "", 0))
        return conversation

    def client(self, user="", password="", name="Obcy", channel=None):
        conversation = self.converse(channel)
        self.assertEqual(conversation.log_in(user, password, name), (0, ""))
        return conversation

    def test_login_decides(self):
        client = self.converse()
        self.assertEqual(client.log_in("adam", "Tajne"), (1, "brak uprawnień"))
        self.assertEqual(client.log_in("adam", "tajne", name="Łódź"), (0, ""))
        self.plant.await_log("Rejestracja użytkownika adam z Łódź")
        self.assertEqual(self.converse().log_in(), (0, ""))
        self.plant.await_log("Rejestracja użytkownika NOBODY z Obcy")

    def test_who_guesses_is_slowed_down(self):
        client = self.converse()
        for failure in range(3):
            self.assertEqual(client.log_in("ewa", f"zgaduj {failure}"), (1, "brak uprawnień"))
        guessers = [self.converse() for _ in range(9)]
        for guesser in guessers:
            guesser.say(login={"protocol_version": 1, "module_type": 23, "user": "ewa", "password": "zgaduj"})
        answers = [guesser.take("login_result") for guesser in guessers]
        self.assertIn((1, "brak uprawnień"), [(answer.code, answer.text) for answer in answers])
        late = [answer.text for answer in answers if answer.code == 2]
        self.assertRegex(late[0], r"^zbyt wiele nieudanych prób, następna możliwa za \d+ s$")
        self.assertEqual(client.log_in("ewa", "haslo"), (0, ""))
        self.assertEqual(self.converse().log_in("adam", "tajne"), (0, ""))

    def test_other_version_of_the_protocol_is_refused(self):
        client = self.converse()
        self.assertEqual(client.log_in(version=2), (3, "inna wersja protokołu"))
        self.assertEqual(client.log_in(), (0, ""))

    def test_nothing_is_answered_before_the_login(self):
        client = self.converse()
        client.say(subscribe={"added_handles": [1], "added_names": ["OPIS"]})
        client.say(last_messages_request={"count": 1})
        self.assertEqual(client.log_in(), (0, ""))
        self.assertEqual(client.kept, [])

    def test_subscription_is_answered_in_full(self):
        definitions, values, errors = self.client().subscribe(["Z1.PRZEPŁYW", "BRAK", "TAJNE", "ODCZYT", "x" * 1024])
        self.assertEqual(definitions, {
            "Z1.PRZEPŁYW": {"un": "m3/h", "de": "Przepływ na wyjściu", "min": "0", "max": "5000", "at": "32", "rt": "6"},
            "ODCZYT": {},
        })
        self.assertEqual(values["ODCZYT"][:2] + values["ODCZYT"][3:], (171, 0, 3.0))
        self.assertEqual(values.keys(), {"Z1.PRZEPŁYW", "ODCZYT"})
        self.assertEqual(errors, {"BRAK": 0, "TAJNE": 0, "x" * 1024: 0})
        self.assertEqual(self.client("adam", "tajne").subscribe(["TAJNE"])[1]["TAJNE"][3], 4.0)

    def test_values_come_as_they_change(self):
        client = self.client()
        start = client.subscribe(["LICZNIK"])[1]["LICZNIK"][3]
        seen = [values_content(client.take("value_updates")) for _ in range(2)]
        self.assertEqual(len(set(seen)), 2)
        self.assertLess(start, seen[0])
        self.assertLess(seen[0], seen[1])

    def test_written_value_reaches_every_subscriber(self):
        writer, reader = self.client(), self.client(channel=grpc.insecure_channel(f"127.0.0.1:{self.port}"))
        reader.subscribe(["OPIS"])
        writer.subscribe(["OPIS"])
        text = "Zażółć gęślą jaźń"
        self.assertEqual(writer.modify(CURRENT, "OPIS", 0, type=190, status=0x8000, text=text), 0)
        for client in (reader, writer):
            updates = client.take("value_updates")
            self.assertEqual(list(updates.handles), [1])
            self.assertEqual([(code, status, content) for code, status, _, content in stranger.values_of(updates.values)],
                             [(190, 0x8000, text)])

    def test_refused_writes_have_their_results(self):
        client = self.client()
        self.assertEqual(client.modify(CURRENT, "Z1.PRZEPŁYW", 0, type=171, real=4000), 0)
        self.assertEqual(client.modify(CURRENT, "BRAK", 0, type=171, real=1), 1)
        self.assertEqual(client.modify(CURRENT, "TAJNE", 0, type=171, real=1), 1)
        self.assertEqual(client.modify(CURRENT, "ODCZYT", 0, type=171, real=1), 2)
        self.assertEqual(client.modify(CURRENT, "Z1.PRZEPŁYW", 0, type=171, real=5001), 3)
        self.assertEqual(client.modify(CURRENT, "LICZNIK", 0, type=150, integer=1), 4)
        self.assertEqual(client.modify(ARCHIVE, "Z1.PRZEPŁYW", MIDNIGHT, type=171, real=1), 4)
        self.assertEqual(client.modify(HOUR, "OPIS", MIDNIGHT, type=171, real=1), 4)
        self.assertEqual(client.subscribe(["Z1.PRZEPŁYW"])[1]["Z1.PRZEPŁYW"][3], 4000.0)

    def test_report_is_read_back(self):
        client = self.client()
        self.assertEqual(client.read(HOUR, "Z1.PRZEPŁYW", MIDNIGHT, MIDNIGHT), (1, [[]]))
        self.assertEqual(client.modify(HOUR, "Z1.PRZEPŁYW", MIDNIGHT + 1800, type=171, real=7.25), 0)
        self.assertEqual(client.read(HOUR, "Z1.PRZEPŁYW", MIDNIGHT, MIDNIGHT), (0, [[(171, 32, MIDNIGHT, 7.25)]]))
        self.assertEqual(client.read(DAY, "Z1.PRZEPŁYW", MIDNIGHT, MIDNIGHT), (1, [[]]))
        self.assertEqual(client.read(HOUR, "BRAK", MIDNIGHT, MIDNIGHT), (1, [[]]))
        self.assertEqual(client.read(HOUR, "TAJNE", MIDNIGHT, MIDNIGHT), (1, [[]]))
        self.assertEqual(client.read(CURRENT, "Z1.PRZEPŁYW", 0, 0), (4, [[]]))

    def test_archive_comes_in_pieces(self):
        client = self.client()
        count = 5001
        values = {"count": count, "types": [171], "times": range(MIDNIGHT, MIDNIGHT + count),
                  "reals": [index / 4 for index in range(count)]}
        client.say(archive_modify_request={"id": 9, "variable": "Z1.PRZEPŁYW", "from": MIDNIGHT,
                                           "to": MIDNIGHT + count - 1, "values": values})
        results = client.take("modify_results")
        self.assertEqual((list(results.ids), list(results.results)), ([9], [0]))
        result, pieces = client.read(ARCHIVE, "Z1.PRZEPŁYW", MIDNIGHT, MIDNIGHT + count - 1)
        self.assertEqual(result, 0)
        self.assertEqual([len(piece) for piece in pieces], [2000, 2000, 1001])
        self.assertEqual([value for piece in pieces for value in piece],
                         [(171, 0, MIDNIGHT + index, index / 4) for index in range(count)])
        self.assertEqual(client.read(ARCHIVE, "Z1.PRZEPŁYW", MIDNIGHT + 8, MIDNIGHT + 9),
                         (0, [[(171, 0, MIDNIGHT + 8, 2.0), (171, 0, MIDNIGHT + 9, 2.25)]]))

    def test_changed_report_is_told_to_who_has_asked(self):
        listener, writer = self.client(), self.client()
        listener.subscribe(["OPIS"], flags=REPORT_CHANGES)
        self.assertEqual(writer.modify(DAY, "Z1.PRZEPŁYW", MIDNIGHT - 86400, type=171, real=1), 0)
        change = listener.take("report_change")
        while (change.kind, change.time) != (DAY, MIDNIGHT - 86400):
            change = listener.take("report_change")

    def test_log_is_for_those_who_may_read_it(self):
        listener = self.client("admin", "wszystko")
        listener.subscribe(["OPIS"], flags=LOG_MESSAGES)
        listener.say(last_messages_request={"count": 1})
        self.assertEqual(listener.take("log_message").text, "Rejestracja użytkownika admin z Obcy")
        self.assertEqual(self.converse().log_in(name="Kolejny"), (0, ""))
        message = listener.take("log_message")
        while message.text != "Rejestracja użytkownika NOBODY z Kolejny":
            message = listener.take("log_message")
        self.assertEqual(message.level, 2)

    def test_control_characters_begin_no_line_and_steer_nothing(self):
        listener = self.client("admin", "wszystko")
        listener.subscribe(["OPIS"], flags=LOG_MESSAGES)
        client = self.client(name="Zly\n2024-03-10 07:00:00 Rejestracja\t\x1b[2J\x7f\x90")
        shown = r"Zly\n2024-03-10 07:00:00 Rejestracja\t\x1b[2J\x7f\x90"
        self.plant.await_log(f"Rejestracja użytkownika NOBODY z {shown}")
        self.await_message(listener, f"Rejestracja użytkownika NOBODY z {shown}")
        client.say_bytes(b"rubbish")
        self.plant.await_log(f"Błąd odbioru pakietu od klienta {shown} (to nie jest komunikat protokołu)")
        self.plant.configure(self.NETWORK + '\n"a\\u001bb" = 1')
        self.plant.process.send_signal(signal.SIGHUP)
        fault = rf"{self.plant.config}:7: network.a\x1bb: nieznany klucz"
        self.plant.await_log(fault)
        self.await_message(listener, fault)
        self.plant.configure(self.NETWORK)

    def await_message(self, listener, text):
        while listener.take("log_message").text != text:
            pass

    def test_what_is_not_understood_ends_the_conversation(self):
        def subscription(name):
            return MESSAGES.ClientParcel(subscribe={"added_handles": [1], "added_names": [name]}).SerializeToString()

        for parcel, fault in (
            (b"rubbish", "to nie jest komunikat protokołu"),
            (bytes(4 * 1024 * 1024 + 1), "komunikat jest za duży"),
            (subscription("x" * 1025), "nazwa jest za długa"),
            (MESSAGES.ClientParcel(subscribe={"added_handles": [1]}).SerializeToString(),
             "kolumny komunikatu są różnej długości"),
        ):
            client = self.client()
            client.say_bytes(parcel)
            self.assertEqual(client.take("farewell").reason, 4108)
            self.assertEqual(client.end(), grpc.StatusCode.OK)
            self.plant.await_log(f"Błąd odbioru pakietu od klienta Obcy ({fault})")

    def test_message_beyond_all_bounds_ends_the_call(self):
        client = self.client(name="Wielki")
        client.say_bytes(bytes(8 * 1024 * 1024 + 1))
        self.assertEqual(client.end(), grpc.StatusCode.RESOURCE_EXHAUSTED)
        self.plant.await_log("Połączenie z klientem Wielki zerwane (utrata połączenia)")

    def test_what_is_no_call_at_all_harms_nobody(self):
        client = self.client()
        with socket.create_connection(("127.0.0.1", int(self.port)), stranger.PATIENCE) as raw:
            raw.sendall(b"GET / HTTP/1.1\r\n\r\n" + bytes(range(256)) * 64)
            while raw.recv(65536):
                pass
        self.assertEqual(client.modify(CURRENT, "Z1.PRZEPŁYW", 0, type=171, real=1), 0)

    def test_client_that_leaves_is_not_missed(self):
        client = self.client()
        client.say(farewell={"reason": 4106})
        self.assertEqual(client.end(), grpc.StatusCode.OK)
        channel = self.plant.channel()
        self.client(name="Nagły", channel=channel)
        channel.close()
        self.plant.await_log("Połączenie z klientem Nagły zerwane (utrata połączenia)")

    def list_variables(self, **login):
        with self.plant.channel() as channel:
            login = MESSAGES.Login(protocol_version=1, client_name="Spis", **login)
            pieces = SERVICES.DataServerStub(channel).ListVariables(MESSAGES.ClientParcel(login=login))
            return [definition.name for piece in pieces for definition in piece.variable_definitions.definitions]

    def test_variables_are_listed_for_those_who_may_read_them(self):
        self.assertEqual(self.list_variables(), ["Z1.PRZEPŁYW", "OPIS", "ODCZYT", "LICZNIK"])
        self.assertEqual(self.list_variables(user="adam", password="tajne"),
                         ["Z1.PRZEPŁYW", "OPIS", "ODCZYT", "TAJNE", "LICZNIK"])
        self.plant.await_log("Rejestracja użytkownika adam z Spis")
        with self.assertRaises(grpc.RpcError) as refused:
            self.list_variables(user="nikt", password="tajne")
        self.assertEqual(refused.exception.code(), grpc.StatusCode.PERMISSION_DENIED)

    def test_who_asks_for_a_list_and_leaves_harms_nobody(self):
        login = MESSAGES.Login(protocol_version=1, client_name="Nagły", user="adam", password="tajne")
        for _ in range(5):
            with self.plant.channel() as channel:
                grpc.channel_ready_future(channel).result(stranger.PATIENCE)
                SERVICES.DataServerStub(channel).ListVariables(MESSAGES.ClientParcel(login=login))
        self.assertEqual(len(self.list_variables(user="adam", password="tajne")), 5)


class StrangerRefused(unittest.TestCase):
    """Of refused logins the log has one a second, so each has a server of its own."""

    def setUp(self):
        self.plant = Plant(type(self)).start()
        self.channel = self.plant.channel()
        self.addCleanup(self.channel.close)

    def test_wrong_password_is_logged(self):
        stranger.Conversation(MESSAGES, self.channel).log_in("adam", "Tajne")
        self.plant.await_log("Próba rejestracji użytkownika adam z Obcy - brak uprawnień")

    def test_other_version_is_logged(self):
        stranger.Conversation(MESSAGES, self.channel).log_in(version=2)
        self.plant.await_log("Próba rejestracji użytkownika  z Obcy - inna wersja protokołu")

    def test_asking_for_a_list_is_logged(self):
        login = MESSAGES.Login(protocol_version=1, client_name="Spis", user="nikt", password="tajne")
        with self.assertRaises(grpc.RpcError):
            list(SERVICES.DataServerStub(self.channel).ListVariables(MESSAGES.ClientParcel(login=login)))
        self.plant.await_log("Próba rejestracji użytkownika nikt z Spis - brak uprawnień")

    def test_more_in_a_second_are_counted(self):
        client = stranger.Conversation(MESSAGES, self.channel)
        for _ in range(50):
            client.log_in(version=2)
        self.plant.await_line(r"Odmowy klientom na tym komputerze, których nie ma w logu: \d+")


def values_content(updates):
    return stranger.values_of(updates.values)[0][3]


class StrangerAtTheEnd(unittest.TestCase):
    def converse(self, plant):
        channel = plant.channel()
        self.addCleanup(channel.close)
        client = stranger.Conversation(MESSAGES, channel)
        self.assertEqual(client.log_in(), (0, ""))
        return client

    def test_acknowledged_write_outlives_the_death_of_the_server(self):
        plant = Plant(type(self)).start()
        client = self.converse(plant)
        self.assertEqual(client.modify(HOUR, "Z1.PRZEPŁYW", MIDNIGHT, type=171, real=7.25), 0)
        plant.process.kill()
        plant.process.wait(stranger.PATIENCE)
        self.assertEqual(client.end(), grpc.StatusCode.UNAVAILABLE)
        client = self.converse(plant.start())
        self.assertEqual(client.read(HOUR, "Z1.PRZEPŁYW", MIDNIGHT, MIDNIGHT), (0, [[(171, 32, MIDNIGHT, 7.25)]]))

    def test_client_that_comes_back_finds_its_writes_done_once_and_what_it_missed(self):
        def come_back(**login):
            channel = plant.channel()
            self.addCleanup(channel.close)
            client = stranger.Conversation(MESSAGES, channel)
            client.say(login={"protocol_version": 1, "client_name": "Obcy", "token": "a1b2c3", **login})
            result = client.take("login_result")
            self.assertEqual((result.code, result.text), (0, ""))
            return client, result.sequence

        def write(client, serial, hour, number):
            client.say(modify_requests={"requests": [
                {"id": serial, "kind": HOUR, "variable": "Z1.PRZEPŁYW", "time": MIDNIGHT + hour * 3600,
                 "value": {"type": 171, "real": number}, "serial": serial}]})
            results = client.take("modify_results")
            self.assertEqual((list(results.ids), list(results.results)), ([serial], [0]))

        plant = Plant(type(self)).start()
        client, seen = come_back()
        self.assertEqual(seen, 0)
        write(client, 1, 0, 7.25)
        write(client, 2, 1, 8.5)
        plant.process.kill()
        plant.process.wait(stranger.PATIENCE)
        plant.start()
        client, last = come_back(changes_since=seen)
        self.assertEqual(last, 2)
        changes = [client.take("report_change") for _ in range(2)]
        self.assertEqual([(change.sequence, change.kind, change.time) for change in changes],
                         [(1, HOUR, MIDNIGHT), (2, HOUR, MIDNIGHT + 3600)])
        write(client, 1, 0, 1)
        write(client, 2, 1, 1)
        write(client, 3, 2, 9.75)
        change = client.take("report_change")
        self.assertEqual((change.sequence, change.kind, change.time), (3, HOUR, MIDNIGHT + 7200))
        self.assertEqual(client.read(HOUR, "Z1.PRZEPŁYW", MIDNIGHT, MIDNIGHT + 7200),
                         (0, [[(171, 32, MIDNIGHT, 7.25), (171, 32, MIDNIGHT + 3600, 8.5),
                               (171, 32, MIDNIGHT + 7200, 9.75)]]))

    def test_orders_that_are_not_carried_out_are_told(self):
        plant = Plant(type(self)).start()
        client = self.converse(plant)
        values = {"count": 3, "types": [171], "times": range(MIDNIGHT, MIDNIGHT + 3), "reals": [1, 5001, 3]}
        client.say(archive_modify_request={"id": 9, "variable": "Z1.PRZEPŁYW", "from": MIDNIGHT, "to": MIDNIGHT + 2,
                                           "values": values})
        results = client.take("modify_results")
        self.assertEqual((list(results.ids), list(results.results)), ([9], [3]))
        self.assertEqual(client.read(ARCHIVE, "Z1.PRZEPŁYW", MIDNIGHT, MIDNIGHT + 2), (0, [[]]))
        plant.await_log("Klient Obcy, użytkownik NOBODY: odmowa: zapis ARCH, zmienna Z1.PRZEPŁYW "
                        "(niepoprawna wartość nr 2, nie przyjęto żadnej z wartości: 3)")
        client.say(period_request={"action": "PERIOD_ACTION_LOAD", "kind": HOUR, "variable": "OPIS", "time": MIDNIGHT,
                                   "id": 10})
        results = client.take("modify_results")
        self.assertEqual((list(results.ids), list(results.results)), ([10], [4]))
        plant.await_log("Klient Obcy, użytkownik NOBODY: odmowa: pobranie HREP, zmienna OPIS "
                        "(zmienna nie ma takiego raportu)")
        client.say(take_term={"term": 1710025200})
        result = client.take("term_result")
        self.assertEqual((result.code, result.term), (0, 0))

    def test_server_that_ends_says_farewell(self):
        plant = Plant(type(self)).start()
        client = self.converse(plant)
        plant.process.send_signal(signal.SIGTERM)
        self.assertEqual(client.take("farewell").reason, 4107)
        self.assertEqual(client.end(), grpc.StatusCode.OK)
        plant.await_log("Zatrzymanie serwera Stacja")
        self.assertEqual(plant.process.wait(stranger.PATIENCE), 0)

    def test_one_client_too_many_is_refused(self):
        plant = Plant(type(self))
        plant.config.write_text((PLANT % "").replace("clients = 50", "clients = 1"), encoding="utf-8")
        plant.start()
        self.converse(plant)
        channel = plant.channel()
        self.addCleanup(channel.close)
        self.assertEqual(stranger.Conversation(MESSAGES, channel).end(), grpc.StatusCode.PERMISSION_DENIED)
        plant.await_log("Zbyt wielu klientów, odrzucono połączenie")


class StrangerOverTls(unittest.TestCase):
    """TCP with certificates, made as docs/data-server.md says."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        for authority in ("urzad", "obcy"):
            cls.openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-noenc",
                        "-subj", f"/CN={authority}", "-keyout", f"{authority}.key", "-out", f"{authority}.pem")
        (cls.folder / "names").write_text("subjectAltName=DNS:localhost,IP:127.0.0.1\n", encoding="utf-8")
        for name, authority in (("serwer", "urzad"), ("klient", "urzad"), ("intruz", "obcy")):
            cls.openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-noenc", "-subj",
                        f"/CN={name}", "-keyout", f"{name}.key", "-out", f"{name}.csr")
            cls.openssl("x509", "-req", "-in", f"{name}.csr", "-CA", f"{authority}.pem", "-CAkey", f"{authority}.key",
                        "-CAcreateserial", "-extfile", "names", "-out", f"{name}.pem")

    @classmethod
    def openssl(cls, *arguments):
        done = subprocess.run(["openssl", *arguments], cwd=cls.folder, capture_output=True, encoding="utf-8")
        assert done.returncode == 0, done.stderr

    def start(self, more=""):
        network = (f'local-socket = false\naddress = "127.0.0.1:0"\ncertificate = "{self.folder}/serwer.pem"\n'
                   f'key = "{self.folder}/serwer.key"\n{more}')
        plant = Plant(type(self), network).start()
        return plant, re.fullmatch(r"127\.0\.0\.1:(\d+) \(TLS(?:, certyfikaty klientów)?\)", plant.place)[1]

    def login_at(self, port, authority=None, name=None):
        """What becomes of a client that trusts the authority and shows the certificate."""
        def read(path):
            return (self.folder / path).read_bytes()

        if authority:
            shown = (read(f"{name}.key"), read(f"{name}.pem")) if name else (None, None)
            channel = grpc.secure_channel(f"127.0.0.1:{port}",
                                          grpc.ssl_channel_credentials(read(f"{authority}.pem"), *shown))
        else:
            channel = grpc.insecure_channel(f"127.0.0.1:{port}")
        self.addCleanup(channel.close)
        client = stranger.Conversation(MESSAGES, channel)
        client.say(login={"protocol_version": 1, "client_name": "Obcy"})
        parcel = client.inbox.get(timeout=stranger.PATIENCE)
        return client.call.code() if parcel is None else client.take("login_result").code

    def test_client_that_trusts_the_authority_comes_in(self):
        _, port = self.start()
        self.assertEqual(self.login_at(port, "urzad"), 0)
        self.assertEqual(self.login_at(port, "obcy"), grpc.StatusCode.UNAVAILABLE)
        self.assertEqual(self.login_at(port), grpc.StatusCode.UNAVAILABLE)

    def test_client_has_to_show_a_certificate_of_the_authority(self):
        _, port = self.start(f'authority = "{self.folder}/urzad.pem"')
        self.assertEqual(self.login_at(port, "urzad", "klient"), 0)
        self.assertEqual(self.login_at(port, "urzad"), grpc.StatusCode.UNAVAILABLE)
        self.assertEqual(self.login_at(port, "urzad", "intruz"), grpc.StatusCode.UNAVAILABLE)


if __name__ == "__main__":
    unittest.main()
