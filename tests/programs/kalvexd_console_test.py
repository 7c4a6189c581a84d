"""The console of a module, seen by a client that knows sorvane.proto and docs/console.md alone."""
import threading
import unittest

from module_process import CURRENT, TEXT, Console, ModuleTest  # first: it takes its arguments
from kalvexd_process import STARTED
import grpc


class Deaf(Console):
    """One that reads until it is to stop."""

    def __init__(self, channel):
        self.reads = threading.Event()
        self.reads.set()
        super().__init__(channel)

    def listen(self):
        try:
            for parcel in self.call:
                self.inbox.put(parcel)
                self.reads.wait()
        except grpc.RpcError:
            pass
        self.inbox.put(None)

    def ask(self, name, text):
        """Without a look at the answer."""
        self.say(modify_requests={"requests": [{"id": 1, "kind": CURRENT, "variable": name,
                                                "value": {"type": TEXT, "text": text.replace("|", "\t")}}]})


class ConsoleTest(ModuleTest):
    def test_nobody_sees_which_scripts_are_open_and_nothing_else(self):
        self.start_module()
        console = self.connect()
        console.enter()
        console.watch("SYS_LogLevel", "RC_KalvexDocInfo", "a.kx", "nie.kx")
        errors = console.take("access_errors")
        self.assertEqual(list(zip(errors.handles, errors.codes)), [(3, 2), (4, 0)])
        self.assertEqual(console.next(), [("SYS_LogLevel", 1), ("RC_KalvexDocInfo", None)])
        self.assertEqual(console.next(), [("RC_KalvexDocInfo", "a.kx")])
        self.assertEqual(console.order("a.kx", "4"), 1)
        self.assertEqual(console.order("RC_KalvexDocInfo", "~a.kx"), 2)

    def test_script_is_controlled(self):
        service = self.start_module()
        console = self.connect()
        identity = console.enter("JAN", "haslo")
        self.assertTrue(identity.startswith("Kalvex_"))
        console.watch("a.kx", "VL:a.kx", "VC:a.kx")
        console.next()
        self.assertEqual(console.order("a.kx", "0|Obca_RC|0"), 0)
        (name, text), = console.next()
        self.assertEqual(name, "a.kx")
        code, old, new, status, line, breakpoints = text.split("\t")
        self.assertEqual((code, old, new, status, breakpoints), ("1", identity, "Obca_RC", "9", ""))
        self.assertEqual(console.next(), [("a.kx", "0\tObca_RC\t0")])
        console.order("a.kx", "4")
        (name, text), = console.next()
        self.assertRegex(text, "^5\t10\t[2-4]$")
        console.order("VL:a.kx", "18|Y")
        (name, text), = console.next()
        self.assertEqual((name, text), ("VL:a.kx", "19\tY\t;1970-01-01 01:00:00 ( 0 ) 6.00;"))
        console.order("a.kx", "6")
        self.assertEqual(console.next(), [("a.kx", "7")])
        console.order("a.kx", f"1|Obca_RC|{identity}")
        self.assertEqual(console.next(), [("a.kx", f"1\tObca_RC\t{identity}")])
        console.say(farewell={"reason": 4106})
        console.end()
        self.assertEqual(service.poll(), None)

    def test_broken_connection_gives_all_sessions_back(self):
        service = self.start_module()
        console = self.connect()
        console.enter("JAN", "haslo")
        console.watch("a.kx")
        console.next()
        console.order("a.kx", "0|Obca_RC|0")
        console.next()
        console.call.cancel()
        self.read_to(service, "Połączenie z klientem Obca_RC zerwane  (utrata połączenia)")
        other = self.connect()
        identity = other.enter("JAN", "haslo")
        other.watch("a.kx")
        other.next()
        other.order("a.kx", "0|Inna_RC|0")
        (_, text), = other.next()
        self.assertTrue(text.startswith(f"1\t{identity}\tInna_RC\t"), text)

    def test_client_that_stops_reading_is_cut_off_and_its_session_comes_back(self):
        service = self.start_module()
        deaf = self.connect(Deaf)
        identity = deaf.enter("JAN", "haslo")
        deaf.watch("a.kx", "VL:a.kx")
        deaf.order("VL:a.kx", f"17|X|{100_000 * 'x'}|190|0")
        deaf.order("a.kx", "0|Obca_RC|0")
        deaf.reads.clear()
        for _ in range(1000):
            deaf.ask("VL:a.kx", "18|X")
        self.read_to(service, "Połączenie z klientem Obca_RC zerwane  (brak odpowiedzi drugiej strony)")
        deaf.reads.set()
        other = self.connect()
        other.enter("JAN", "haslo")
        other.watch("a.kx")
        other.next()
        other.order("a.kx", "0|Inna_RC|0")
        (_, text), = other.next()
        self.assertTrue(text.startswith(f"1\t{identity}\tInna_RC\t"), text)

    def test_module_that_cannot_listen_runs_its_scripts(self):
        self.put("Kalvex.ini", "[Autostart]\nProcedura0=a.kx\n[Konsola]\nAdres=256.1.1.1:5\nOtwarty tekst=1\n")
        service = self.start()
        lines = self.read_to(service, f"{self.folder}/a.kx : Start skryptu ")
        self.assertEqual(len([line for line in lines if line.startswith("RCSrv: ")]), 1)
        self.assertIn(STARTED[0], lines)


if __name__ == "__main__":
    unittest.main()
