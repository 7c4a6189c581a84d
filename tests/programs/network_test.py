#!/usr/bin/env python3
"""Scripts of kalvex-run at the data server sorvaned, over a local socket.

    network_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import signal

from server_and_run import PASSWORD, SILENCE_LIMIT_SECONDS, WRITER, WRITER_PLANT, ServerAndRun, main

WAIT_FOR_DATA = "Oczekiwanie na pobranie danych bieżących"


class Network(ServerAndRun):
    PLANT = """
[[access]]
variables = "Z*"
write = "90"
[[access]]
variables = "TAJNE"
read = "90"
[[access]]
write = "0"
[[variable]]
name = "X"
de = "Ciśnienie gazu"
un = "MPa"
min = -100
max = 1000
at = 34
rt = 30
value = 5
[[variable]]
name = "Y"
rt = 30
value = 1
[[variable]]
name = "Z"
rt = 30
value = 1
[[variable]]
name = "TAJNE"
value = 1
"""


class Values(Network):
    def test_script_waits_for_its_data_then_reads_and_writes(self):
        self.start_server()
        run = self.run_script("REMOTE a srv@X\nLOCAL bylo = a\nLOCAL opis = a.DESCRIPTION\nLOCAL jm = a.UNIT\n"
                              "SET a = bylo + 2.5\nLOCAL jest = a\n")
        self.assertEqual(run.code, 0)
        self.assertEqual(run.log, [f"{self.path()} : Inicjowanie skryptu ", f"{self.path()} : Start skryptu ",
                                   f"{self.path()} : Linia 3 - {WAIT_FOR_DATA} : a", "Nawiązanie połączenia z srv"])
        self.assertEqual((run.value("bylo"), run.value("jest")), (5.0, 7.5))
        self.assertEqual((run.value("opis"), run.value("jm")), ("Ciśnienie gazu", "MPa"))
        source = run.result["sources"]["srv"]
        self.assertEqual(source["connected"], True)
        self.assertEqual([request["op"] for request in source["requests"]],
                         ["RegisterVariable", "Subscribe", "AddCurrentDataModifyRequest",
                          "MakeCurrentDataModifyRequest"])
        # The write of the line before the last has gone out before the run ended.
        self.assertEqual(self.run_script("REMOTE a srv@X\nLOCAL jest = a").value("jest"), 7.5)

    def test_change_by_another_process_lets_a_script_go_on(self):
        self.start_server()
        waiting = self.follow("REMOTE a srv@X\n:w\nIF a < 100 GOTO w\nLOCAL doszlo = a", "czeka.kx")
        waiting.await_line("Nawiązanie połączenia z srv")
        self.assertEqual(self.run_script("REMOTE a srv@X\nLOCAL b = a\nSET a = 120").code, 0)
        self.assertEqual(waiting.end(), 0)
        self.assertEqual(waiting.value("doszlo"), "120.00")

    def test_variables_of_the_server_are_declared_from_its_list(self):
        self.start_server()
        run = self.run_script("INCLUDE_VAR srv ?\nLOCAL s = X + Y + Z")
        self.assertEqual(run.value("s"), 7.0)
        self.assertEqual([variable["name"] for variable in run.result["scripts"][0]["variables"]],
                         ["X", "Y", "Z", "s"])

    def test_subscription_can_be_held_back_and_made_at_once(self):
        self.start_server()
        run = self.run_script("SUBSCRIBE STOP\nREMOTE a srv@X\nREMOTE b srv@Y\nSUBSCRIBE START\nLOCAL s = a + b")
        self.assertEqual(run.value("s"), 6.0)
        self.assertEqual([request["op"] for request in run.result["sources"]["srv"]["requests"]],
                         ["RegisterVariable", "RegisterVariable", "Subscribe"])

    def test_virtual_clock_goes_on_while_the_network_answers(self):
        self.start_server()
        run = self.run_script("REMOTE a srv@X\nLOCAL bylo = a", "--clock", "2024-03-10 07:00:00", "--ticks",
                              "1000000000")
        self.assertEqual(run.code, 0)
        self.assertEqual(run.value("bylo"), 5.0)
        self.assertEqual(run.result["now"], 1710050400 + run.result["ticks"] // 1000)

    def test_limit_comes_first_when_there_is_no_server(self):
        run = self.run_script("REMOTE a srv@X\nLOCAL bylo = a", "--clock", "2024-03-10 07:00:00", "--ticks", "20000")
        self.assertEqual(run.code, 3)
        self.assertEqual(run.result["ticks"], 20000)
        self.assertEqual(run.result["sources"]["srv"]["connected"], False)


class Reports(Network):
    def test_values_are_put_and_got(self):
        self.start_server()
        run = self.run_script("REMOTE a srv@X\nLOCAL x = a\n"
                              "PUT a HREP 2024 3 10 6 12.5 0\nPUT a DREP 2024 3 10 300 0\nPUT a MREP 2024 3 9000 0\n"
                              "GET a HREP 2024 3 10 6 0\nGET a DREP 2024 3 11 -1\nGET a MREP 2024 3 0\n"
                              ":w\nIF NOT READY a.HREP GOTO w\nIF NOT READY a.DREP GOTO w\nIF NOT READY a.MREP GOTO w\n"
                              "LOCAL h = a.HREP\nLOCAL d = a.DREP\nLOCAL m = a.MREP")
        self.assertEqual(run.code, 0)
        self.assertEqual((run.value("h"), run.value("d"), run.value("m")), (12.5, 300.0, 9000.0))
        # 2024-03-10 06:00, 2024-03-10 00:00 and 2024-03-01 00:00 in Warsaw.
        self.assertEqual([run.cell("a", slot)["time"] for slot in ("HREP", "DREP", "MREP")],
                         [1710046800, 1710025200, 1709247600])

    def test_archive_goes_there_and_back_as_a_set(self):
        self.start_server()
        run = self.run_script("REMOTE a srv@X\nLOCAL x = a\nLOCAL t = MAKE_TIME 2024 3 10 6\nLIST W\n"
                              "LOCAL v = 1.5\nSET v.TIMESTAMP = t + 60\nADD W v\nSET v = 2.5\nSET v.TIMESTAMP = t + 120\nADD W v\n"
                              "MPUT a ARCH W\nMGET a ARCH FROM 2024 3 10 6 TO 2024 3 10 7\n:w\n"
                              "IF NOT READY a.ARCH GOTO w\nLIST L\nMGET a GETDATA L")
        self.assertEqual(run.code, 0)
        self.assertEqual(run.elements("L"), [1.5, 2.5])

    def test_reports_go_there_and_back_as_a_set(self):
        self.start_server()
        run = self.run_script("REMOTE a srv@X\nLOCAL x = a\nLOCAL t = MAKE_TIME 2024 3 10 6\nLIST W\n"
                              "LOCAL v = 10\nSET v.TIMESTAMP = t\nADD W v\nSET v = 11\nSET v.TIMESTAMP = t + 3600\nADD W v\n"
                              "MPUT a HREP W\nMGET a HREP FROM 2024 3 10 5 TO 2024 3 10 9\n:w\n"
                              "IF NOT READY a.HREP GOTO w\nLIST L\nMGET a GETDATA L")
        self.assertEqual(run.code, 0)
        self.assertEqual(run.elements("L"), [10.0, 11.0])

    def test_period_is_initialised_loaded_and_computed(self):
        self.start_server()
        # Half of the hour at 10, the other half at 20; one more value at the end of the hour.
        run = self.run_script("REMOTE a srv@X\nLOCAL x = a\nLOCAL t = MAKE_TIME 2024 3 10 6\nLIST W\nLOCAL v = 10\n"
                              "SET v.TIMESTAMP = t\nADD W v\nSET v = 20\nSET v.TIMESTAMP = t + 1800\nADD W v\nMPUT a ARCH W\n"
                              "INIT a HREP 2024 3 10 6 0\nGET a HREP 2024 3 10 6 0\n:w1\nIF NOT READY a.HREP GOTO w1\n"
                              "LOCAL nowy = 0\nIF REP_INITED a.HREP THEN\nSET nowy = 1\nENDIF\n"
                              ":load\nINIT_LOAD a HREP 2024 3 10 6 0\nGET a HREP 2024 3 10 6 0\n"
                              ":w2\nIF NOT READY a.HREP GOTO w2\nIF NOT REP_LOADED a.HREP GOTO load\nLOCAL h = a.HREP\n"
                              "PUT a HREP 2024 3 10 6 99 0\n:calc\nINIT_CALC a HREP 2024 3 10 6 0\n"
                              "GET a HREP 2024 3 10 6 0\n:w3\nIF NOT READY a.HREP GOTO w3\n"
                              "LOCAL p = a.HREP\nIF p > 98 GOTO calc")
        self.assertEqual(run.code, 0)
        self.assertEqual(run.value("nowy"), 1)
        self.assertEqual((run.value("h"), run.value("p")), (15.0, 15.0))

    def test_change_of_a_report_is_told_to_a_script_that_asked(self):
        self.start_server()
        waiting = self.follow("REMOTE a srv@X\nLOCAL x = a\nENABLE_NOTIFY HREP srv\nSET a = 1\n:w\n"
                              "LOCAL n = 0\nSET n = NOTIFY_QUEUE_COUNT HREP srv\nIF n == 0 GOTO w\nLOCAL t\n"
                              "SET t = NOTIFY HREP srv\nLOCAL g = t.HOUR", "czeka.kx")
        # The value that the first script sets tells that its wish for notifications is in force.
        self.assertEqual(self.run_script("REMOTE a srv@X\n:w\nIF a > 1 GOTO w\nPUT a HREP 2024 3 10 6 12.5 0").code, 0)
        self.assertEqual(waiting.end(), 0)
        self.assertEqual(waiting.value("g"), "6")


class Rights(Network):
    def test_refused_report_writes_are_logged_for_the_script(self):
        self.start_server()
        run = self.run_script("REMOTE z srv@Z\nLOCAL x = z\nPUT z HREP 2024 3 10 6 1 0\nPUT z DREP 2024 3 10 1 0\n"
                              "PUT z MREP 2024 3 1 0\nPUT z SREP 2024 5 1\nGET z HREP 2024 3 10 6 0\n:w\n"
                              "IF NOT READY z.HREP GOTO w")
        self.assertEqual(run.log[4:], [
            f"{self.path()} - Błąd modyfikacji raportu godzinowego (srv@Z)",
            f"{self.path()} - Błąd modyfikacji raportu dobowego (srv@Z)",
            f"{self.path()} - Błąd modyfikacji raportu miesięcznego (srv@Z)",
            f"{self.path()} - Błąd modyfikacji raportu okresowego (srv@Z)"])

    def test_refused_write_of_a_value_leaves_no_trace_on_the_server(self):
        self.start_server()
        run = self.run_script("REMOTE z srv@Z\nLOCAL x = z\nSET z = 9\nLOCAL y = z")
        self.assertEqual((run.code, run.value("y")), (0, 9.0))
        self.assertEqual(self.run_script("REMOTE z srv@Z\nLOCAL x = z").value("x"), 1.0)

    def test_user_of_the_profile_may_do_what_nobody_may_not(self):
        self.add_user("jan", 90)
        self.start_server()
        self.log_in_as("jan", PASSWORD)
        run = self.run_script("REMOTE z srv@Z\nREMOTE t srv@TAJNE\nLOCAL x = z + t\nSET z = 9")
        self.assertEqual((run.code, run.value("x")), (0, 2.0))
        self.assertEqual(self.run_script("REMOTE z srv@Z\nLOCAL x = z").value("x"), 9.0)

    def test_variables_that_are_not_for_the_script_are_logged(self):
        self.start_server()
        run = self.run_script("REMOTE t srv@TAJNE\nREMOTE n srv@NIE_MA\nREMOTE a srv@X\nLOCAL x = a")
        self.assertEqual(run.code, 0)
        self.assertCountEqual(run.log[4:], [
            f"{self.path()} - Brak zmiennej w źródle (srv@TAJNE)",
            f"{self.path()} - Brak zmiennej w źródle (srv@NIE_MA)"])

    def test_refused_login_is_logged_and_holds_the_script(self):
        self.add_user("jan", 90)
        self.start_server()
        self.log_in_as("jan", "inne")
        run = self.follow("REMOTE z srv@Z\nLOCAL x = z")
        run.await_line("Brak dostępu do serwera srv brak uprawnień")
        run.send(signal.SIGTERM)
        self.assertEqual(run.end(), 3)
        self.assertIn(f"{self.path()} : Linia 3 - {WAIT_FOR_DATA} : z", run.lines)


class Breaks(Network):
    FOLLOWER = ("REMOTE a srv@X\nREMOTE b srv@Y\nLOCAL x = a\n:w\nSET x = a\nIF x < 100 GOTO w\nLOCAL y = b\n")

    def test_run_survives_the_sudden_death_of_its_server(self):
        server = self.start_server()
        run = self.follow(self.FOLLOWER)
        run.await_line("Nawiązanie połączenia z srv")
        server.kill()
        run.await_line("Połączenie z srv zerwane (utrata połączenia)")
        self.start_server()
        run.await_line("Nawiązanie połączenia z srv")
        # Both subscriptions are there again, as a value set from now on shows.
        self.assertEqual(self.run_script("REMOTE a srv@X\nREMOTE b srv@Y\nLOCAL z = a\nSET b = 8\nSET a = 120",
                                         name="inny.kx").code, 0)
        self.assertEqual(run.end(), 0)
        self.assertEqual((run.value("x"), run.value("y")), ("120.00", "8.00"))

    def test_what_was_asked_before_the_death_is_answered_with_an_error(self):
        server = self.start_server()
        self.assertEqual(self.run_script("REMOTE a srv@X\nLOCAL x = a\nPUT a HREP 2024 3 10 6 5 0").code, 0)
        run = self.follow("REMOTE a srv@X\nREMOTE b srv@Y\nLOCAL x = a\nSET b = 5\n:g\nGET a HREP 2024 3 10 6 0\n:w\n"
                          "IF NOT READY a.HREP GOTO w\nIF NOT UNKNOWN a.HREP GOTO g\nLOCAL bez_odpowiedzi = 1\n")
        self.await_value("Y", 5)
        server.send(signal.SIGSTOP)
        # The script asks, and gets no answer while the server lives.
        server.kill()
        self.assertEqual(run.end(), 0)
        self.assertEqual(run.value("bez_odpowiedzi"), "1.00")

    def test_nothing_that_was_acknowledged_is_lost_when_the_server_dies(self):
        self.configure(WRITER_PLANT)
        server = self.start_server()
        writer = self.follow(WRITER)
        for _ in range(3):
            self.await_progress()
            server.kill()
            server = self.start_server()
        self.await_progress()
        self.finish_writer(writer)

    def test_server_that_ends_politely_says_so(self):
        server = self.start_server()
        run = self.follow(self.FOLLOWER)
        run.await_line("Nawiązanie połączenia z srv")
        server.send(signal.SIGTERM)
        run.await_line("Połączenie z srv zerwane (zakończenie pracy serwera)")
        self.assertEqual(server.process.wait(), 0)
        self.start_server()
        run.await_line("Nawiązanie połączenia z srv")

    def test_run_waits_for_a_server_that_comes_later(self):
        run = self.follow("REMOTE a srv@X\nLOCAL x = a")
        run.await_line("Błąd nawiązania połączenia z srv (serwer nie odpowiada)")
        self.start_server()
        self.assertEqual(run.end(), 0)
        self.assertEqual(run.value("x"), "5.00")
        self.assertEqual(run.lines.count("Błąd nawiązania połączenia z srv (serwer nie odpowiada)"), 1)

    def test_server_that_hangs_counts_as_gone_and_is_found_again(self):
        server = self.start_server()
        server.set_limit(SILENCE_LIMIT_SECONDS)
        run = self.follow(self.FOLLOWER)
        run.set_limit(SILENCE_LIMIT_SECONDS)
        run.await_line("Nawiązanie połączenia z srv")
        server.send(signal.SIGSTOP)
        run.await_line("Połączenie z srv zerwane (brak odpowiedzi drugiej strony)")
        server.send(signal.SIGCONT)
        run.await_line("Nawiązanie połączenia z srv")
        run.send(signal.SIGTERM)
        self.assertEqual(run.end(), 3)

    def test_run_ends_though_its_server_hangs(self):
        server = self.start_server()
        run = self.follow(self.FOLLOWER)
        run.await_line("Nawiązanie połączenia z srv")
        server.send(signal.SIGSTOP)
        run.send(signal.SIGTERM)
        self.assertEqual(run.end(), 3)


if __name__ == "__main__":
    main()
