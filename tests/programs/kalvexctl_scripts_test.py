#!/usr/bin/env python3
"""What kalvexctl does to one script of a module leaves the others alone: they run on, line by line.

    kalvexctl_scripts_test.py KALVEXD SORVANE_PROTO SORVANED KALVEXCTL [unittest arguments]
"""
import http.client
import json
import re
import socket
import subprocess
import unittest

from kalvexctl_process import SORVANED, ControlTest

# Beside a.kx: one that only counts, one that reads and writes the data server too.
COUNTING = "PRIORITY 1\nLOCAL N = 0\nLOCAL M = 0\n:a\nSET N = N + 1\nSET M = M + 1\nGOTO a\n"
READING = ("PRIORITY 1\nREMOTE X Gaz@X\nREMOTE Y Gaz@Y\nLOCAL N = 0\nLOCAL M = 0\n:a\nSET N = N + X\nSET M = M + X\n"
           "SET Y = N\nGOTO a\n")
OTHERS = ("liczy.kx", "czyta.kx")
TURN = 4  # lines, of the longer of the two
RUNNING = 1  # as a figure
SLOW_LINE = r" : Linia \d+ trwała \d+ ms \(takich linii: \d+\)"
OWN = "REMOTE X Gaz@X\nREMOTE Y Gaz@Y\nLOCAL A = X\n:a\nSET A = A + X\nSLEEP 1\nGOTO a\n"
PLANT = """[server]
name = "Gaz"
[[access]]
write = "0"
[[variable]]
name = "X"
value = 1
[[variable]]
name = "Y"
value = 0
"""


class Metrics(http.client.HTTPConnection):
    def __init__(self, path):
        super().__init__("localhost", timeout=60)
        self.path = path

    def connect(self):
        self.sock = socket.socket(socket.AF_UNIX)
        self.sock.settimeout(60)
        self.sock.connect(self.path)


class Others(ControlTest):
    def setUp(self):
        super().setUp()
        self.put("plant.toml", PLANT)
        server = subprocess.Popen([SORVANED, "--config", self.folder / "plant.toml"], stderr=subprocess.PIPE,
                                  encoding="utf-8", env=self.environment)
        for cleanup in (server.stderr.close, server.wait, server.kill):
            self.addCleanup(cleanup)
        while not re.search(r"Nasłuchiwanie: gniazdo lokalne", server.stderr.readline()):
            self.assertIsNone(server.poll())
        self.put("a.kx", OWN)
        self.put("liczy.kx", COUNTING)
        self.put("czyta.kx", READING)
        # Lines that wait are told at this level.
        self.put("Kalvex.ini", "[Autostart]\nProcedura0=liczy.kx\nProcedura1=a.kx\nProcedura2=czyta.kx\n"
                               "[Log]\nRodzaj=2\n")
        self.socket = str(self.folder / "stan.sock")
        self.service = self.start_module("--metrics", self.socket)
        # It runs, so the figures are offered.
        self.repeat_until(lambda: self.state_of("a.kx").startswith("running\t6\t"))
        self.await_figures(lambda now: now["state", "czyta.kx"] == RUNNING)

    def state_of(self, script):
        """Its line of status, but for the path."""
        rows = dict(line.split("\t", 1) for line in self.done("status").splitlines())
        return rows[script]

    def variables_of(self, script):
        """The numbers that the variables hold."""
        table = json.loads(self.done("vars", script, "--json"))
        slots = {row["name"]: row["slots"]["CURDATA"] for row in table["variables"]}
        return {name: float(slot["text"]) for name, slot in slots.items() if slot}

    def figures(self):
        """What the module tells of its scripts: (figure, script) -> number."""
        connection = Metrics(self.socket)
        connection.request("GET", "/metrics")
        rows = re.findall(r'(?m)^kalvex_script_(\w+)\{script="(.+)"\} (.+)$',
                          connection.getresponse().read().decode("utf-8"))
        return {(figure, script): float(value) for figure, script, value in rows}

    def await_figures(self, condition):
        """The figures, as soon as they are so; the test ends at its limit otherwise."""
        for _ in range(100000):
            figures = self.figures()
            if condition(figures):
                return figures
        self.fail(figures)

    def await_lines(self, others):
        """Each of these scripts has run a whole turn since, and neither stands nor fails."""
        before = self.figures()
        now = self.await_figures(lambda now: all(now["lines_total", script] >= before["lines_total", script] + TURN
                                                 for script in others))
        for script in others:
            self.assertEqual((now["state", script], now["line_errors_total", script]), (RUNNING, 0), script)

    def lines_about(self, script):
        """Of the log, behind the script's path; on a busy machine any line may be a slow one."""
        with open(self.folder / "Kalvex.log", encoding="utf-8") as log:
            lines = [line.rstrip("\n")[21:] for line in log]
        beginning = f"{self.folder}/{script}"
        told = [line[len(beginning):] for line in lines if line.startswith(beginning)]
        return [line for line in told if not re.fullmatch(SLOW_LINE, line)]

    def do(self, *orders):
        """Each is done to a.kx, and after each the others have gone on."""
        told = {script: self.lines_about(script) for script in OTHERS}
        for order in orders:
            command, *rest = order.split()
            self.done(command, "a.kx", *rest)
            self.await_lines(OTHERS)
        for script, lines in told.items():
            self.assertEqual(self.lines_about(script), lines)
        self.assert_no_line_is_lost()

    def assert_no_line_is_lost(self):
        """Where liczy.kx stands tells how many lines it has run: four, and three a turn."""
        self.done("stop", "liczy.kx")
        line = int(self.state_of("liczy.kx").split("\t")[1])
        counts = self.variables_of("liczy.kx")
        # By the line that is next: N was counted already, or both, or the turn is over.
        self.assertEqual(counts["N"] - counts["M"], 1 if line == 6 else 0)
        turns = counts["M"] - (1 if line == 7 else 0)
        self.assertEqual(self.figures()["lines_total", "liczy.kx"], 4 + 3 * turns + (line - 5))
        self.done("start", "liczy.kx")

    def test_stop_and_start(self):
        self.do("stop", "start", "stop", "start")
        self.assertRegex(self.state_of("a.kx"), r"^running\t")

    def test_step(self):
        self.do("stop", "step", "step", "start")

    def test_reset_and_start(self):
        self.do("reset", "start", "reset")
        self.assertEqual(self.state_of("a.kx"), "idle\t-\t-")

    def test_reload_takes_the_text_on_disk(self):
        self.put("a.kx", OWN + "; inny\nLOCAL NOWA = 1\n")
        self.do("reload")
        self.put("a.kx", "REMOTE X Gaz@X\nLOCAL NOWA = X\nBZDURA\n")
        self.do("reload")
        self.repeat_until(lambda: self.state_of("a.kx") ==
                          "running\t3\tLinia 3 - Nieznane słowo kluczowe : BZDURA")
        self.put("a.kx", OWN)
        self.do("reload")
        self.repeat_until(lambda: self.state_of("a.kx").startswith("running\t6\t"))

    def test_breakpoints(self):
        self.do("break 5", "unbreak 5", "reset")

    def test_orders_of_one_session(self):
        self.done("take", "a.kx", stdin="stop\nstep\nstart\nreset\nstart\nrelease\n")
        self.do()
        self.await_lines(OTHERS)

    def test_close_and_open(self):
        self.do("reset", "close")
        self.assertEqual(self.done("list"), "liczy.kx\nczyta.kx\n")
        self.do("open")

    def test_scripts_can_be_told_one_by_one(self):
        """What happens to one is seen at that one alone."""
        states = {}
        for script, command in (("a.kx", "reset"), ("czyta.kx", "stop")):
            self.done(command, script)
            states[script] = self.state_of(script)
        self.assertEqual(states["a.kx"], "idle\t-\t-")
        self.assertRegex(states["czyta.kx"], r"^stopped\t\d+\t")
        self.assertEqual({script: self.state_of(script) for script in states}, states)
        self.await_lines(["liczy.kx"])
        self.assert_no_line_is_lost()


if __name__ == "__main__":
    unittest.main()
