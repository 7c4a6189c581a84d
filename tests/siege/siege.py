#!/usr/bin/env python3
"""A siege of sorvaned and kalvexd: rounds of what may befall them, and an account of everything behind each.

    siege.py --bin DIR --proto FILE [--clock LIBRARY] (--rounds N | --hours N) [--seed S] [--folder F]
"""
import argparse
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

os.environ.setdefault("GRPC_VERBOSITY", "NONE")
sys.path[:0] = [str(pathlib.Path(__file__).resolve().parent), str(pathlib.Path(__file__).parents[1] / "programs")]

import grpc  # noqa: E402, its first look at the environment

import clients  # noqa: E402
import floods  # noqa: E402
import stranger  # noqa: E402
from figures import Figures  # noqa: E402
from plant import BROKEN, FIRST_REPORT, NAME, PASSWORD, WATCHER, Plant  # noqa: E402
from programs import PATIENCE, Program, SteppedClock, metrics_of, mount_small_disk, release_small_disk  # noqa: E402

DISK_MEGABYTES = 192
CLOCK_STEPS = (3600 * 5, -3600, 86400 * 40, 90, -90, -86400)
# In the second half of a chapter nobody ends a program, so that it has time to grow.
CHAPTER_ROUNDS = 40
ENDS = ("kill_server", "kill_module", "kill_both", "end_server", "end_module")
EVENTS = (*ENDS, "reload_broken", "reload_changed", "reopen_log", "tell_health", "fill_disk", "step_clock",
          "leave_log_unread")
FULL, WRITTEN_AGAIN = r"Błąd zapisu danych \(.*\)", "Dane znów są zapisywane, czekało operacji .*"


class Siege:
    def __init__(self, options, folder, disk_refusal):
        self.options, self.folder = options, folder
        self.random = random.Random(options.seed)
        self.news = threading.Condition()
        self.is_long = options.hours is not None
        self.scale = 3 if self.is_long else 1
        self.figures = Figures(self.is_long, options.seed)
        self.has_disk = not disk_refusal
        if disk_refusal:
            self.figures.leave_out("fill_disk", f"no disk of its own can be mounted here ({disk_refusal})")
        if not options.clock:
            self.figures.leave_out("step_clock", "the library that steps the clock does not go with these programs")
        self.messages, self.services = stranger.generate(options.proto)
        self.plant = Plant(folder, 24 if self.is_long else 4)
        self.clock = SteppedClock(options.clock, folder / "zegar")
        self.environment = {**os.environ, "SORVANE_RUNTIME_DIR": f"{folder}/run", "TZ": "Europe/Warsaw",
                            "SORVANE_COMMON_PROFILE": f"{folder}/sorvane.ini", "LC_ALL": "C.UTF-8",
                            "KALVEXCTL_LOGIN": str(self.plant.login)}
        for name in ("LANGUAGE", "NOTIFY_SOCKET", "JOURNAL_STREAM"):
            self.environment.pop(name, None)
        self.server_target, self.module_target = floods.targets(folder)
        self.floods = floods.Floods(self.server_target, self.module_target, self.plant, self.messages, self.services,
                                    self.scale)
        self.make_programs()
        self.fields = (*clients.FIELDS, clients.TEXTS)
        self.writers = {field.variable: clients.Writer(field, self.server_target, self.messages,
                                                       f"pisarz-{field.variable}", self.news, self.figures.add_fault)
                        for field in self.fields}
        self.verified = dict.fromkeys(self.writers, 0)
        self.begun = time.monotonic()

    def make_programs(self):
        stepped = self.environment | self.clock.environment()
        program = {name: str(pathlib.Path(self.options.bin, name).resolve())
                   for name in ("sorvaned", "kalvexd", "kalvexctl")}
        self.programs = program
        self.server = Program("sorvaned", [program["sorvaned"], "--config", self.plant.configuration, "--log-level",
                                           "2"], stepped, "stderr", self.news, self.figures.add_fault)
        self.module = Program("kalvexd", [program["kalvexd"], "--working-dir", self.plant.module, "--log-dir",
                                          self.plant.disk / "logi", "--log-stdout", "--metrics", self.plant.metrics],
                              stepped, "stdout", self.news, self.figures.add_fault)

    # ---- the programs

    def start_server(self):
        self.server.start(f"Nasłuchiwanie: gniazdo lokalne {self.folder}/run/{NAME}")

    def start_module(self):
        self.module.start(f"Udostępnianie stanu modułu: {self.plant.metrics}")

    def begin(self):
        self.begun = time.monotonic()
        self.plant.build(self.programs["sorvaned"], self.programs["kalvexd"], self.environment)
        self.start_server()
        self.start_module()
        for writer in self.writers.values():
            writer.start()

    def finish(self):
        for writer in self.writers.values():
            writer.end()
        for program in (self.module, self.server):
            program.end(signal.SIGTERM)

    # ---- what befalls them

    def kill_server(self):
        self.server.end(signal.SIGKILL)
        self.start_server()

    def kill_module(self):
        self.module.end(signal.SIGKILL)
        self.start_module()

    def kill_both(self):
        for program in (self.server, self.module):
            program.end(signal.SIGKILL)
        self.start_module()
        self.start_server()

    def end_server(self):
        self.server.end(signal.SIGTERM)
        self.start_server()

    def end_module(self):
        self.module.end(signal.SIGTERM)
        self.start_module()

    def reload_broken(self):
        for text in BROKEN:
            self.plant.configure(text)
            self.server.process.send_signal(signal.SIGHUP)
            self.server.await_line("Konfiguracja bez zmian")
        self.reload_changed()

    def reload_changed(self):
        self.plant.configure(self.plant.definitions(extra=self.random.randrange(1000)))
        self.server.process.send_signal(signal.SIGHUP)
        self.server.await_line("Konfiguracja odczytana ponownie")

    def reopen_log(self):
        log = self.plant.disk / "logi" / "Kalvex.log"
        if log.exists():
            log.rename(log.with_suffix(".old"))
        self.module.process.send_signal(signal.SIGHUP)

    def tell_health(self):
        self.module.process.send_signal(signal.SIGUSR1)
        self.module.await_line(r"Stan modułu, pamięć procesu: .*")

    def fill_disk(self):
        """Values that have no room go into the store until it tells, or until all of them had room."""
        texts = self.writers[clients.TEXTS.variable]
        filler = self.plant.disk / "wypelnienie"
        with self.news:
            del self.server.log.lines[:]
        with open(filler, "wb", buffering=0) as full:
            try:
                while full.write(bytes(65536)):
                    pass
            except OSError:
                pass
        texts.give(16)
        with self.news:
            told = self.news.wait_for(lambda: self.server.log.take(FULL) or texts.is_done(), PATIENCE)
        filler.unlink()
        if not told:
            self.figures.add_fault("nothing was told of a full disk, and nothing written")
        elif told is not True:
            self.figures.count("a full disk stopped the store")
            self.server.await_line(WRITTEN_AGAIN)

    def step_clock(self):
        # A server believes the clock that it starts with, so it has to have seen a second pass.
        with clients.Reader(self.server_target, self.messages, self.services) as reader:
            refusal = reader.log_in(WATCHER, PASSWORD)
            assert refusal is None, refusal
            reader.await_change("SYGNAL0")
        self.clock.set(self.random.choice(CLOCK_STEPS))
        self.server.await_line(r"Zegar przeskoczył o -?\d+ s")
        self.clock.set(0)
        self.server.await_line(r"Zegar przeskoczył o -?\d+ s")

    def leave_log_unread(self):
        program = self.random.choice((self.server, self.module))
        program.lines.reading.clear()
        with self.floods.wrong_logins("server" if program is self.server else "module"):
            self.serve("log unread")
        program.lines.reading.set()

    # ---- those who belong

    def give(self):
        for field in clients.FIELDS:
            self.writers[field.variable].give(self.scale * field.share)

    def let_some_be_answered(self):
        """Of what was given, a part that is another one each time."""
        def answered():
            return sum(writer.answered for writer in self.writers.values())

        with self.news:
            waiting = sum(writer.goal for writer in self.writers.values()) - answered()
            enough = answered() + self.random.randrange(waiting + 1)
            self.news.wait_for(lambda: answered() >= enough, PATIENCE)

    def serve(self, occasion):
        """Somebody who belongs is let in and served; how long that takes is a figure."""
        begin = time.monotonic()
        while True:
            try:
                self.serve_once()
                break
            except (grpc.RpcError, grpc.FutureTimeoutError, AssertionError) as fault:
                self.figures.count("tries of those who belong that failed")
                if time.monotonic() - begin > PATIENCE:
                    self.figures.add_fault(f"{occasion}: not served: {fault}")
                    return
        self.figures.add_served(occasion, time.monotonic() - begin)

    def serve_once(self):
        with clients.Reader(self.server_target, self.messages, self.services) as reader:
            refusal = reader.log_in(WATCHER, PASSWORD)
            assert refusal is None, refusal
            assert reader.definitions(WATCHER, PASSWORD) > 0
            number = self.random.randrange(1 << 30)
            assert reader.conversation.modify(clients.CURRENT, "PROBA", 0, type=clients.REAL, real=number) == 0
            assert reader.current("PROBA") == number
        listed = subprocess.run([self.programs["kalvexctl"], "list"], capture_output=True, encoding="utf-8",
                                env=self.environment, cwd=self.folder, timeout=PATIENCE)
        names = sorted(f"{name}.kx" for name in self.plant.scripts)
        assert (listed.returncode, sorted(listed.stdout.splitlines())) == (0, names), listed

    # ---- rounds

    def befall(self, event):
        begin = time.monotonic()
        name = event if isinstance(event, str) else " at the ".join(event)
        self.give()
        try:
            if event in ENDS:
                self.let_some_be_answered()
            if isinstance(event, str):
                getattr(self, event)()
                self.serve(name)
            else:
                flood, where = event
                with getattr(self.floods, flood)(where):
                    self.serve(name)
        except (AssertionError, grpc.RpcError) as fault:
            self.figures.add_fault(f"{name}: {fault}")
        self.revive()
        self.figures.add_event(name, time.monotonic() - begin)

    def revive(self):
        """What has ended by itself is a fault by then; the siege goes on."""
        self.plant.configure(self.plant.definitions())
        if self.server.has_ended():
            self.start_server()
        if self.module.has_ended():
            self.start_module()

    def round(self, events):
        begin = time.monotonic()
        for event in events:
            self.befall(event)
        with self.news:
            if not self.news.wait_for(lambda: all(w.is_done() for w in self.writers.values()), PATIENCE):
                waiting = {name: (w.answered, w.goal) for name, w in self.writers.items() if not w.is_done()}
                self.figures.add_fault(f"writes without an answer: {waiting}")
        self.serve("a quiet moment")
        self.take_account()
        self.figures.add_round(time.monotonic() - begin, (self.server, self.module), metrics_of(self.plant.metrics))

    def take_account(self, whole=False):
        """What was acknowledged since the last account, or all of it, is compared with what is there."""
        with clients.Reader(self.server_target, self.messages, self.services) as reader:
            refusal = reader.log_in(WATCHER, PASSWORD)
            if refusal:
                self.figures.add_fault(f"no account could be taken: {refusal}")
                return
            for name, writer in self.writers.items():
                first = 0 if whole else self.verified[name]
                count, wrong = clients.differences(reader, writer.field, writer.answered, first)
                self.figures.add_account(count, wrong)
                self.verified[name] = writer.answered
            steps = round(reader.current("KROK"))
            seen = reader.contents(clients.HOUR, "RAPORT", FIRST_REPORT, FIRST_REPORT + 3600 * steps)
            missing = [k for k in range(steps) if seen.get(FIRST_REPORT + 3600 * k) != k]
            self.figures.add_account(steps, [f"RAPORT, hour {k}" for k in missing])
        self.figures.add_account(*self.data_files())

    def data_files(self):
        """Each is whole: its second value is twice the first."""
        wrong = []
        files = list((self.plant.disk / "pliki").glob("plik*.txt"))
        for path in files:
            lines = path.read_bytes().decode("cp1250").split()
            values = [line.partition(":")[::2] for line in lines[1:]]
            if [name for name, _ in values] != ["A", "B"] or float(values[1][1]) != 2 * float(values[0][1]):
                wrong.append(f"{path.name}: {lines}")
        return len(files), wrong

    def events(self, number):
        """Of a round. A short siege has each event once in all, a long one some at random."""
        all_events = [event for event in (*EVENTS, *floods.names()) if not self.figures.is_left_out(event)]
        if not self.is_long:
            order = random.Random(self.options.seed).sample(all_events, len(all_events))
            return order[number::self.options.rounds]
        if number % CHAPTER_ROUNDS >= CHAPTER_ROUNDS // 2:
            all_events = [event for event in all_events if event not in ENDS]
        return self.random.sample(all_events, 6)

    def run(self):
        self.begin()
        self.round([])  # the warm-up
        number = 0
        while (number < self.options.rounds if not self.is_long
               else time.monotonic() - self.begun < self.options.hours * 3600):
            self.round(self.events(number))
            number += 1
            self.report()
        self.take_account(whole=True)
        self.finish()

    def report(self):
        self.figures.write(self.folder, time.monotonic() - self.begun, self.writers, (self.server, self.module),
                           self.floods)


def read_options():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--bin", required=True, help="the folder of the programs")
    parser.add_argument("--proto", required=True, help="sorvane.proto")
    parser.add_argument("--clock", help="the library that steps the clock of the programs; none: no steps")
    length = parser.add_mutually_exclusive_group(required=True)
    length.add_argument("--rounds", type=int, help="a short siege of so many rounds, which has each event once")
    length.add_argument("--hours", type=float, help="a long one")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--folder", type=pathlib.Path, help="for everything; the report stays there")
    return parser.parse_args()


def main():
    options = read_options()
    kept = options.folder is not None
    folder = (options.folder or pathlib.Path(tempfile.mkdtemp(prefix="kalvex-siege-"))).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "dysk").mkdir(exist_ok=True)
    siege = Siege(options, folder, mount_small_disk(folder / "dysk", DISK_MEGABYTES))
    try:
        siege.run()
    finally:
        siege.report()
        print(siege.figures.text())
        if not kept:
            release_small_disk(folder / "dysk")
            shutil.rmtree(folder, ignore_errors=True)
    return 1 if siege.figures.faults else 0


if __name__ == "__main__":
    status = main()
    sys.stdout.flush()
    # Threads of conversations that nobody ends any more keep nothing waiting.
    os._exit(status)
