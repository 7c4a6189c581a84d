"""The session of a script as kalvexctl takes, defends and gives it back, beside consoles that are played by hand."""
import os
import pty
import unittest

from kalvexctl_process import MODULE_IDENTITY, ControlTest, identity_of, re, signal

HELD = ("kalvexctl: Sesja dla skryptu a.kx jest przejęta przez klienta Obca_RC\n"
        "Wymuszenie przejęcia: kalvexctl take a.kx --force\n")
SILENT = ("kalvexctl: Sesja dla skryptu a.kx jest przejęta przez klienta, który nie odpowiada\n"
          "Odzyskanie sesji: kalvexctl release a.kx\n")


def lost_to(client):
    return f"kalvexctl: Sesję dla skryptu a.kx przejął klient {client}\n"


class SessionTest(ControlTest):
    def setUp(self):
        super().setUp()
        self.service = self.start_module()

    def holder(self):
        console = self.connect("Obca_RC", "a.kx")
        console.take_session("Obca_RC")
        return console

    def take(self, *arguments, **options):
        """A kalvexctl that keeps the session, and a console that watches."""
        watching = self.connect("Widz_RC", "a.kx")
        process = self.begin("take", "a.kx", *arguments, **options)
        self.assertEqual(process.stdout.readline(), "a.kx\ttaken\n")
        return process, watching

    def ask_until_it_comes(self, console):
        """The module is about to notice that a connection has broken."""
        got = False
        while not got:
            console.order("a.kx", "0|Widz_RC|0")
            message = console.next_message()
            while message != "0|Widz_RC|0":
                got = got or message.startswith(f"1|{MODULE_IDENTITY}|Widz_RC|")
                message = console.next_message()

    # ---- a single command

    def test_single_command_leaves_nothing_behind(self):
        console = self.connect("Widz_RC", "a.kx")
        process = self.begin("stop", "a.kx")
        identity = identity_of(process)
        self.assertRegex(console.next_message(), rf"^1\|{MODULE_IDENTITY}\|{re.escape(identity)}\|9\|[2-4]\|$")
        self.assertEqual(console.next_message(), f"0|{identity}|0")
        stopped = console.next_message()
        self.assertRegex(stopped, r"^5\|10\|[2-4]$")
        self.assertEqual(console.next_message(), f"1|{identity}|{MODULE_IDENTITY}")
        line = int(stopped[-1]) + 1
        self.assertEqual(self.end_of(process), (0, f"a.kx\tstopped\t{line}\n", ""))
        self.assert_module_holds()

    def test_lines_that_others_want_are_wanted_again(self):
        console = self.connect("Widz_RC", "a.kx", "VC:a.kx")
        process = self.begin("break", "a.kx", "40")
        console.read_to(f"1|{identity_of(process)}|{MODULE_IDENTITY}")
        self.assertEqual(self.end_of(process), (0, "", ""))
        # The module has forgotten the wish when it got the session back.
        while console.next()[0] != "VC:a.kx":
            pass

    def test_client_that_holds_refuses(self):
        console = self.holder()
        process = self.begin("stop", "a.kx", "--wait", "0")
        identity = identity_of(process)
        console.read_to(f"0|{identity}|0")
        console.order("a.kx", f"21|Obca_RC|{identity}")
        self.assertEqual(self.end_of(process), (5, "", HELD))

    def test_holder_of_the_last_refusal_is_named(self):
        console = self.holder()
        process = self.begin("stop", "a.kx", "--wait", "2")
        identity = identity_of(process)
        for name in ("Pierwsza_RC", "Obca_RC"):
            console.read_to(f"0|{identity}|0")
            console.order("a.kx", f"21|{name}|{identity}")
        self.assertEqual(self.end_of(process), (5, "", HELD))

    def test_refusal_of_somebody_else_is_none(self):
        console = self.holder()
        process = self.begin("stop", "a.kx", "--wait", "0")
        console.read_to(f"0|{identity_of(process)}|0")
        console.order("a.kx", "21|Obca_RC|Inna_RC")
        self.assertEqual(self.end_of(process), (5, "", SILENT))

    def test_holder_that_has_gone_does_not_answer(self):
        self.holder().leave()
        self.assert_ends(5, SILENT, "stop", "a.kx", "--wait", "0")

    def test_holder_may_give_up_later(self):
        console = self.holder()
        process = self.begin("reset", "a.kx", "--wait", "60")
        identity = identity_of(process)
        console.read_to(f"0|{identity}|0")
        console.order("a.kx", f"21|Obca_RC|{identity}")
        console.read_to(f"0|{identity}|0")
        console.order("a.kx", f"1|Obca_RC|{identity}")
        self.assertEqual(self.end_of(process), (0, "a.kx\tidle\t-\n", ""))
        self.assert_module_holds()

    def test_session_that_the_module_gets_back_is_asked_for_at_once(self):
        console = self.holder()
        process = self.begin("reset", "a.kx", "--wait", "0")
        identity = identity_of(process)
        console.read_to(f"0|{identity}|0")
        console.order("a.kx", f"1|Obca_RC|{MODULE_IDENTITY}")
        self.assertEqual(self.end_of(process), (0, "a.kx\tidle\t-\n", ""))
        self.assert_module_holds()

    def test_signal_ends_the_waiting(self):
        console = self.holder()
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process = self.begin("stop", "a.kx", "--wait", "600")
            console.read_to(f"0|{identity_of(process)}|0")
            process.send_signal(number)
            self.assertEqual(self.end_of(process), (128 + number, "", ""))

    def test_signal_while_a_reply_is_awaited_gives_back_first(self):
        self.put("a.kx", "LOCAL X = 5\n:a\nSLEEP 600\nGOTO a\n")
        self.done("reload", "a.kx")
        self.done("stop", "a.kx")
        console = self.connect("Widz_RC", "a.kx")
        process = self.begin("step", "a.kx", "--timeout", "600")
        while not console.next_message().startswith("9|"):
            pass
        process.send_signal(signal.SIGTERM)
        status, _, errors = self.end_of(process)
        # The line may have run before the signal came.
        self.assertIn((status, errors), [(128 + signal.SIGTERM, ""), (0, "")])
        console.read_to(f"1|{identity_of(process)}|{MODULE_IDENTITY}")
        self.assert_module_holds()

    # ---- a session that is kept

    def test_console_that_asks_is_refused(self):
        process, console = self.take()
        console.order("a.kx", "0|Widz_RC|0")
        console.read_to(f"21|{identity_of(process)}|Widz_RC")
        self.assertEqual(process.poll(), None)
        process.stdin.write("release\n")
        self.assertEqual(self.end_by_itself(process), (0, "", ""))
        self.assert_module_holds()

    def test_console_that_forces_gets_it(self):
        process, console = self.take()
        console.order("a.kx", "0|Widz_RC|1")
        console.read_to(f"1|{identity_of(process)}|Widz_RC")
        self.assertEqual(self.end_by_itself(process), (5, "", lost_to("Widz_RC")))

    def test_client_that_is_no_console_gets_it_for_the_asking(self):
        process, console = self.take()
        console.order("a.kx", "0|Okno|0")
        console.read_to(f"1|{identity_of(process)}|Okno")
        self.assertEqual(self.end_by_itself(process), (5, "", lost_to("Okno")))

    def test_asking_of_nobody_is_passed_over(self):
        process, console = self.take()
        console.order("a.kx", "0")
        console.order("a.kx", "0|Widz_RC|0")
        console.read_to("0")
        console.read_to("0|Widz_RC|0")
        console.read_to(f"21|{identity_of(process)}|Widz_RC")
        process.stdin.close()
        process.stdin = None
        self.assertEqual(self.end_of(process), (0, "", ""))

    def test_broken_connection_of_another_client_takes_it_away(self):
        process, console = self.take()
        self.connect("Zrywa_RC", "a.kx").call.cancel()
        gone = False
        while not gone:
            console.order("a.kx", "0|Widz_RC|0")
            message = console.next_message()
            while not message.startswith(("21|", f"1|{MODULE_IDENTITY}|Widz_RC|")):
                message = console.next_message()
            gone = message.startswith("1|")
        self.assertEqual(self.end_by_itself(process), (5, "", lost_to("Widz_RC")))

    def test_hand_over_between_others_is_none_of_its_business(self):
        process, console = self.take()
        console.order("a.kx", "1|Jeden_RC|Drugi_RC")
        console.read_to("1|Jeden_RC|Drugi_RC")
        process.stdin.write("reset\n")
        self.assertEqual(process.stdout.readline(), "a.kx\tidle\t-\n")

    def test_killed_one_leaves_nothing_behind(self):
        process, console = self.take()
        process.kill()
        process.wait()
        self.ask_until_it_comes(console)

    def test_signals_give_it_back(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process, console = self.take()
            process.send_signal(number)
            self.assertEqual(self.end_by_itself(process), (0, "", ""))
            console.read_to(f"1|{identity_of(process)}|{MODULE_IDENTITY}")
            self.assert_module_holds()

    def test_module_that_ends(self):
        process, _ = self.take()
        self.service.send_signal(signal.SIGTERM)
        self.assertEqual(self.end_by_itself(process),
                         (3, "", "kalvexctl: Połączenie z modułem Kalvex zerwane (zakończenie pracy serwera)\n"))

    def test_module_that_is_killed(self):
        process, _ = self.take()
        self.service.kill()
        self.assertEqual(self.end_by_itself(process),
                         (3, "", "kalvexctl: Połączenie z modułem Kalvex zerwane (utrata połączenia)\n"))

    def test_module_that_hangs_gets_it_back_when_it_goes_on(self):
        process, console = self.take("--timeout", "1")
        self.service.send_signal(signal.SIGSTOP)
        process.send_signal(signal.SIGTERM)
        ended = self.end_by_itself(process)
        self.service.send_signal(signal.SIGCONT)
        self.assertEqual(ended,
                         (3, "", "kalvexctl: Połączenie z modułem Kalvex zerwane (brak odpowiedzi drugiej strony)\n"))
        self.ask_until_it_comes(console)

    def test_command_that_a_module_does_not_answer(self):
        self.done("stop", "a.kx")
        process, console = self.take("--timeout", "1")
        self.service.send_signal(signal.SIGSTOP)
        process.stdin.write("start\n")
        ended = self.end_by_itself(process)
        self.service.send_signal(signal.SIGCONT)
        self.assertEqual(ended, (1, "", "kalvexctl: Skrypt a.kx nie odpowiedział na polecenie start\n"))
        self.ask_until_it_comes(console)

    def test_script_that_somebody_closes(self):
        process, console = self.take()
        console.order("RC_KalvexDocInfo", "~a.kx")
        self.assertEqual(self.end_by_itself(process),
                         (6, "", "kalvexctl: Moduł Kalvex nie ma otwartego skryptu a.kx\n"))

    # ---- by force

    def test_take_by_force(self):
        console = self.holder()
        process = self.begin("take", "a.kx", "--force", "--wait", "0")
        identity = identity_of(process)
        console.read_to(f"0|{identity}|0")
        console.order("a.kx", f"21|Obca_RC|{identity}")
        console.read_to(f"0|{identity}|1")
        console.order("a.kx", f"1|Obca_RC|{identity}")
        self.assertEqual(process.stdout.readline(), "a.kx\ttaken\n")
        process.stdin.write("reset\nstart\n")
        self.assertEqual(process.stdout.readline(), "a.kx\tidle\t-\n")
        self.assertEqual(process.stdout.readline(), "a.kx\trunning\t1\n")
        self.assertEqual(self.end_of(process), (0, "", ""))
        self.assert_module_holds()

    def test_nothing_is_forced_that_the_module_has(self):
        console = self.connect("Widz_RC", "a.kx")
        self.assertEqual(self.done("take", "a.kx", "--force"), "a.kx\ttaken\n")
        messages = []
        while len(messages) < 3:
            messages.append(console.next_message())
        self.assertEqual([message for message in messages if message.endswith("|1")], [])

    def test_one_kalvexctl_takes_it_from_another(self):
        first, _ = self.take()
        second, _ = self.take("--force")
        self.assertEqual(self.end_by_itself(first), (5, "", lost_to(identity_of(second))))
        self.assertEqual(self.end_of(second), (0, "", ""))
        self.assert_module_holds()

    # ---- release

    def test_release_of_what_the_module_has(self):
        self.assertEqual(self.done("release", "a.kx"), "")
        self.assert_module_holds()

    def test_release_of_what_somebody_holds(self):
        console = self.holder()
        process = self.begin("release", "a.kx")
        identity = identity_of(process)
        console.read_to(f"0|{identity}|0")
        console.order("a.kx", f"21|Obca_RC|{identity}")
        self.assertEqual(self.end_of(process), (5, "", HELD))

    def test_release_of_what_was_left_behind(self):
        self.holder().leave()
        console = self.connect("Widz_RC", "a.kx")
        process = self.begin("release", "a.kx", "--timeout", "1")
        identity = identity_of(process)
        self.assertEqual(self.end_of(process), (0, "", ""))
        messages = [console.next_message() for _ in range(5)]
        self.assertRegex(messages.pop(2), rf"^1\|{MODULE_IDENTITY}\|{re.escape(identity)}\|9\|[2-4]\|$")
        self.assertEqual(messages, [f"0|{identity}|0", f"1|{identity}|{MODULE_IDENTITY}", f"0|{identity}|0",
                                    f"1|{identity}|{MODULE_IDENTITY}"])
        self.assert_module_holds()

    # ---- orders

    def test_orders(self):
        self.done("reload", "a.kx")
        self.done("break", "a.kx", "4")
        self.done("unbreak", "a.kx")
        orders = ["stop", "break 4", "break 2", "breaks", "unbreak 2", "breaks", "unbreak", "breaks", "", "set X 12.5",
                  'set  Y  "a b', "vars", "status", "reset", "show --context 1", "status", "start", "release", "stop"]
        status, output, errors = self.control("take", "a.kx", stdin="\n".join(orders))
        self.assertEqual((status, errors), (0, ""))
        lines = output.splitlines()
        stopped = lines.pop(1)
        self.assertRegex(stopped, r"^a\.kx\tstopped\t[3-5]$")
        self.assertEqual(lines, [
            "a.kx\ttaken", "2", "4", "4", "X\t1970-01-01 01:00:00 ( 0 ) 12.50", "Y\t1970-01-01 01:00:00 ( 0 ) 0.00",
            "X\t1970-01-01 01:00:00 ( 0 ) 12.50", "Y\t1970-01-01 01:00:00 ( 0 ) 0.00", f"{stopped}\t-",
            "a.kx\tidle\t-", "      1  LOCAL X = 5", "      2  LOCAL Y = 6", "a.kx\tidle\t-\t-", "a.kx\trunning\t1"])

    def test_first_order_that_fails_ends_it(self):
        self.done("reset", "a.kx")
        for order, status, errors in [
                ("step", 1, "kalvexctl: Skrypt a.kx nie stoi w trybie krokowym\n"),
                ("set NIE 1", 1, "kalvexctl: Skrypt a.kx nie ma zmiennej NIE\n"),
                ("skok", 2, 'kalvexctl: there is no order "skok"\n'),
                ("list", 2, 'kalvexctl: there is no order "list"\n'),
                ("break", 2, "kalvexctl: break needs LINE\n"),
                ("break 0", 2, 'kalvexctl: break: "0" is not a whole number from 1 to 2147483647\n'),
                ("set X", 2, "kalvexctl: set needs TEXT\n"),
                ("start teraz", 2, 'kalvexctl: start: "teraz" is too much\n')]:
            self.assertEqual(self.control("take", "a.kx", stdin=f"{order}\nstart\n"),
                             (status, "a.kx\ttaken\n", errors), order)
            self.assert_module_holds()
        self.assertEqual(self.done("reset", "a.kx"), "a.kx\tidle\t-\n")

    def test_input_that_was_closed_is_at_its_end(self):
        process = self.begin("take", "a.kx", stdin=None, preexec_fn=lambda: os.close(0))
        self.assertEqual(self.end_of(process), (0, "a.kx\ttaken\n", ""))
        self.assert_module_holds()

    def test_person_at_a_terminal_may_err(self):
        leader, follower = pty.openpty()
        self.addCleanup(os.close, leader)
        process, _ = self.take(stdin=follower)
        os.close(follower)
        os.write(leader, b"skok\nreset\nrelease\n")
        self.assertEqual(self.end_of(process),
                         (0, "a.kx\tidle\t-\n", 'kalvexctl: there is no order "skok"\n'))
        self.assert_module_holds()

    def test_commands_side_by_side_wait_for_each_other(self):
        processes = [self.begin(command, "a.kx", "--wait", "60") for command in 3 * ("stop", "start")]
        for process in processes:
            status, output, errors = self.end_of(process)
            self.assertEqual((status, errors), (0, ""))
            self.assertRegex(output, r"^a\.kx\t(running|stopped)\t[1-5]\n$")
        self.assert_module_holds()

    def test_text_goes_to_the_end_of_the_line(self):
        process, _ = self.take()
        process.stdin.write('set X "a  -b"\n')
        self.assertEqual(process.stdout.readline(), "X\t1970-01-01 01:00:00 ( 0 ) a  -b\n")
        process.stdin.write("set X -5\n")
        self.assertEqual(process.stdout.readline(), "X\t1970-01-01 01:00:00 ( 0 ) -5.00\n")


if __name__ == "__main__":
    unittest.main()
