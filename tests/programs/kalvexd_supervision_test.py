"""What a module tells whoever supervises it, asked by a client that knows kalvex.proto alone, and its audit trail."""
import json
import os
import signal
import sys
import unittest

from module_process import ModuleTest  # first: it takes its arguments

import grpc
import stranger

ASKED, CALLS = stranger.generate(sys.argv.pop(1))
PATIENCE = 60
WHO = {"user": "JAN", "password": "haslo", "client_name": "Nadzór"}


class SupervisionTest(ModuleTest):
    def supervise(self):
        channel = grpc.insecure_channel(f"unix:{self.folder}/run/Kalvex")
        self.addCleanup(channel.close)
        return CALLS.SupervisionStub(channel)

    def status(self, stub):
        return [script for piece in stub.GetStatus(ASKED.Question(login=WHO), timeout=PATIENCE)
                for script in piece.scripts]

    def refusal(self, method, **question):
        """Code and detail of a call that fails."""
        with self.assertRaises(grpc.RpcError) as failed:
            answer = method(ASKED.Question(**question), timeout=PATIENCE)
            list(answer)
        return failed.exception.code(), failed.exception.details()

    def test_status_and_standing_and_breakpoints_of_a_script(self):
        self.start_module()
        stub = self.supervise()
        piece, = stub.GetStatus(ASKED.Question(login=WHO), timeout=PATIENCE)
        self.assertEqual((piece.module, piece.log_level, piece.complete), ("Kalvex", 1, True))
        self.assertTrue(piece.identity.startswith("Kalvex_"))
        script, = piece.scripts
        self.assertEqual((script.path, script.status_word, script.session_given), ("a.kx", 9, False))
        self.assertFalse(script.HasField("report"))
        standing = stub.GetStanding(ASKED.Question(login=WHO, script="a.kx"), timeout=PATIENCE)
        self.assertIn(standing.state, (ASKED.Standing.RUNNING, ASKED.Standing.SLEEPING))
        console = self.connect()
        console.enter("JAN", "haslo")
        for line in (4, 1):
            self.assertEqual(console.order("a.kx", f"10|{line}"), 0)
        lines = stub.GetBreakpoints(ASKED.Question(login=WHO, script="a.kx"), timeout=PATIENCE).lines
        self.assertEqual(list(lines), [1, 4])
        for method in (stub.GetBreakpoints, stub.GetStanding):
            self.assertEqual(self.refusal(method, login=WHO, script="nie.kx"), (grpc.StatusCode.NOT_FOUND, ""))

    def test_report_is_the_newest_line_about_a_line(self):
        self.put("a.kx", "LOCAL X\nFOO bar\n")
        service = self.start()
        self.read_to(service, f"{self.folder}/a.kx : Linia 2 - Nieznane słowo kluczowe : FOO")
        script, = self.status(self.supervise())
        report = script.report
        self.assertEqual((report.level, report.line, report.text, report.waiting),
                         (1, 1, "Nieznane słowo kluczowe : FOO", False))
        self.assertEqual((script.standing.state, script.standing.line, script.standing.text),
                         (ASKED.Standing.FAILING, 1, "FOO bar"))
        self.assertEqual(script.standing.release, ASKED.Standing.CORRECTION)

    def test_each_call_wants_a_login_and_the_right_to_control(self):
        service = self.start_module()
        stub = self.supervise()
        wrong = {"user": "JAN", "password": "nie", "client_name": "Nadzór"}
        for method in (stub.GetStatus, stub.WatchStatus, stub.GetAudit):
            self.assertEqual(self.refusal(method),
                             (grpc.StatusCode.PERMISSION_DENIED, "brak uprawnień do sterowania skryptami"))
        code, _ = self.refusal(stub.GetStatus, login=wrong)
        self.assertEqual(code, grpc.StatusCode.UNAUTHENTICATED)
        self.read_to(service, "Próba rejestracji użytkownika JAN (Sorvane: 100) z Nadzór - brak uprawnień")

    def test_watcher_hears_of_changes(self):
        self.start_module()
        pieces = iter(self.supervise().WatchStatus(ASKED.Question(login=WHO)))
        first = next(pieces)
        self.assertTrue(first.complete)
        console = self.connect()
        console.enter("JAN", "haslo")
        console.order("a.kx", "4")
        script = first.scripts[0]
        while script.standing.state != ASKED.Standing.STOPPED_BY_COMMAND:
            scripts = next(pieces).scripts
            script = scripts[0] if scripts else script
        self.assertEqual(script.status_word, 10)
        console.order("RC_KalvexDocInfo", "~a.kx")
        closed = []
        while not closed:
            closed = next(pieces).closed
        self.assertEqual(list(closed), ["a.kx"])

    def test_watcher_of_a_module_that_ends_hears_of_it(self):
        service = self.start_module()
        pieces = iter(self.supervise().WatchStatus(ASKED.Question(login=WHO)))
        next(pieces)
        service.terminate()
        with self.assertRaises(grpc.RpcError) as failed:
            for _ in pieces:
                pass
        self.assertEqual(failed.exception.code(), grpc.StatusCode.UNAVAILABLE)
        self.assertEqual(service.wait(PATIENCE), 0)

    def test_what_is_no_question_and_no_method(self):
        self.start_module()
        channel = grpc.insecure_channel(f"unix:{self.folder}/run/Kalvex")
        self.addCleanup(channel.close)
        for method, parcel, code in (
                ("GetStatus", b"\xff\xff", grpc.StatusCode.INVALID_ARGUMENT),
                ("GetStatus", b"x" * 65537, grpc.StatusCode.RESOURCE_EXHAUSTED),
                ("Start", b"", grpc.StatusCode.UNIMPLEMENTED)):
            with self.assertRaises(grpc.RpcError) as failed:
                channel.unary_unary(f"/kalvex.v1.Supervision/{method}")(parcel, timeout=PATIENCE)
            self.assertEqual(failed.exception.code(), code)

    def audit(self, **question):
        entries = [entry for piece in self.supervise().GetAudit(ASKED.Question(login=WHO, **question),
                                                                timeout=PATIENCE) for entry in piece.entries]
        return [(entry.action, entry.script, entry.user, entry.client, entry.name,
                 entry.old_value if entry.HasField("old_value") else None,
                 entry.new_value if entry.HasField("new_value") else None) for entry in entries]

    def test_changes_are_on_record(self):
        service = self.start_module()
        console = self.connect()
        identity = console.enter("JAN", "haslo")
        for variable, text in (("a.kx", "0|Obca_RC|0"), ("a.kx", "4"), ("VL:a.kx", "17|X|12.5|171|0"),
                               ("a.kx", "10|2"), ("a.kx", f"1|Obca_RC|{identity}")):
            self.assertEqual(console.order(variable, text), 0)
        expected = [
            ("session-taken", "a.kx", "JAN", "Obca_RC", "", identity, "Obca_RC"),
            ("stop", "a.kx", "JAN", "Obca_RC", "", "running", "stopped"),
            ("value", "a.kx", "JAN", "Obca_RC", "X", "5.00", "12.50"),
            ("breakpoint-set", "a.kx", "JAN", "Obca_RC", "3", None, None),
            ("session-given", "a.kx", "JAN", "Obca_RC", "", "Obca_RC", identity),
        ]
        self.assertEqual(self.audit(), expected)
        self.assertEqual(self.audit(script="b.kx"), [])
        self.assertEqual(self.audit(since=4102444800), [])
        trail = self.folder / "Kalvex.audit.log"
        lines = [json.loads(line) for line in trail.read_text("utf-8").splitlines()]
        self.assertEqual([line["action"] for line in lines], [entry[0] for entry in expected])
        self.assertEqual(lines[2], {"time": lines[2]["time"], "seconds": lines[2]["seconds"], "action": "value",
                                    "script": "a.kx", "user": "JAN", "address": "local", "client": "Obca_RC",
                                    "name": "X", "old": "5.00", "new": "12.50"})
        trail.rename(self.folder / "Kalvex.audit.1.log")
        service.send_signal(signal.SIGHUP)
        console.order("a.kx", "6")
        while not trail.exists() or not trail.read_text("utf-8"):
            console.order("a.kx", "15")
        self.assertEqual(self.audit()[:len(expected)], expected)

    def test_trail_that_cannot_be_written_keeps_no_script_from_running(self):
        os.mkdir(self.folder / "Kalvex.audit.log")
        service = self.start()
        lines = self.read_to(service, f"{self.folder}/a.kx : Start skryptu ")
        self.assertIn(f"Nie można zapisać pliku zmian {self.folder}/Kalvex.audit.log (Is a directory)", lines)


if __name__ == "__main__":
    unittest.main()
