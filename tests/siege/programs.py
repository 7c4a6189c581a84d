"""The programs that are besieged, as processes that are expected to live until somebody ends them."""
import ctypes
import mmap
import os
import signal
import struct
import subprocess
import threading
import time

from followed_log import FollowedLog
from local_http import LocalConnection, figures_of

PATIENCE = 120  # seconds for what has to come
KEPT_LINES = 2000


class PausedLines:
    """The lines of a stream, for a reader that stops reading while it is told to."""

    def __init__(self, stream):
        self.stream = stream
        self.reading = threading.Event()
        self.reading.set()

    def __iter__(self):
        for line in self.stream:
            yield line
            self.reading.wait()


class ShortLog(FollowedLog):
    """Keeps the last lines alone, and how many have come in all and how many were told to be left out."""

    def __init__(self, lines, news):
        self.count = self.left_out = 0
        super().__init__(lines, news)

    def note(self, line):
        told, _, number = line.partition("Pominięte wiersze rejestru: ")
        self.count += 1
        self.left_out += int(number) if number and not told.strip() else 0
        super().note(line.strip())
        del self.lines[:-KEPT_LINES]


class Program:
    """One that is started again and again. What ends without having been told to is a fault."""

    def __init__(self, name, command, environment, stream, news, on_fault):
        self.name, self.command, self.environment, self.stream = name, command, environment, stream
        self.news, self.on_fault = news, on_fault
        self.lives = 0
        self.told_to_end = False
        self.ends = []  # seconds from SIGTERM to the end
        self.log_lines = self.log_left_out = 0

    def start(self, line):
        """Ends when the log has the line."""
        self.told_to_end = False
        self.lives += 1
        pipes = {self.stream: subprocess.PIPE}
        # However the siege ends, the program does not outlive it.
        self.process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *self.command], env=self.environment,
                                        stdin=subprocess.DEVNULL, encoding="utf-8", errors="replace",
                                        **{"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, **pipes})
        self.lines = PausedLines(getattr(self.process, self.stream))
        self.log = ShortLog(self.lines, self.news)
        threading.Thread(target=self.watch, args=[self.process], daemon=True).start()
        self.await_line(line)

    def watch(self, process):
        code = process.wait()
        if not self.told_to_end:
            self.on_fault(f"{self.name} ended by itself, status {code}; the end of its log: {self.log.lines[-5:]}")
        with self.news:
            self.news.notify_all()

    def has_ended(self):
        return self.process.poll() is not None

    def await_line(self, pattern):
        with self.news:
            match = self.news.wait_for(lambda: self.log.take(pattern) or self.has_ended(), PATIENCE)
            if match in (None, False, True):
                raise AssertionError(f"{self.name}: {pattern} is not in the log: {self.log.lines[-20:]}")
            return match

    def end(self, number):
        """Kills it or has it end, and waits for the end."""
        if self.has_ended():
            return
        self.told_to_end = True
        begin = time.monotonic()
        self.process.send_signal(number)
        self.lines.reading.set()
        code = self.process.wait(PATIENCE)
        if number == signal.SIGTERM:
            self.ends.append(round(time.monotonic() - begin, 3))
            if code != 0:
                self.on_fault(f"{self.name} ended with status {code} after SIGTERM: {self.log.lines[-5:]}")
        self.log_lines += self.log.count
        self.log_left_out += self.log.left_out

    def resident_bytes(self):
        with open(f"/proc/{self.process.pid}/statm", encoding="ascii") as sizes:
            return int(sizes.read().split()[1]) * mmap.PAGESIZE

    def least_bytes(self, enough, looks=60):
        """Of what is resident at some looks a second apart, the least; of no more when that is not above `enough`. What
        is used for a moment, as by the check of a password, is no growth."""
        least = self.resident_bytes()
        for _ in range(looks):
            with self.news:
                if least <= enough or self.news.wait_for(self.has_ended, 1):
                    break
            least = min(least, self.resident_bytes())
        return least

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))


def metrics_of(path):
    connection = LocalConnection(str(path))
    try:
        connection.request("GET", "/metrics")
        answer = connection.getresponse()
        return figures_of(answer.read().decode("utf-8")) if answer.status == 200 else None
    finally:
        connection.close()


class SteppedClock:
    """By how much the clock of the day of the programs is ahead; the machine's own stays as it is."""

    def __init__(self, preloaded, path):
        self.preloaded = preloaded
        self.path = path
        path.write_bytes(struct.pack("q", 0))

    def environment(self):
        return {"LD_PRELOAD": str(self.preloaded), "SIEGE_CLOCK": str(self.path)} if self.preloaded else {}

    def set(self, seconds):
        with open(self.path, "r+b") as offset:
            offset.write(struct.pack("q", seconds))


def mount_small_disk(folder, megabytes):
    """A disk of its own for this process and those that it starts; why not, where this user may not have one. Before
    any thread is made."""
    NEW_MOUNTS, NEW_USERS, RECURSIVE, PRIVATE = 0x20000, 0x10000000, 0x4000, 0x40000
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(NEW_MOUNTS) != 0 and libc.unshare(NEW_USERS | NEW_MOUNTS) != 0:
        return os.strerror(ctypes.get_errno())
    if libc.mount(None, b"/", None, RECURSIVE | PRIVATE, None) != 0:
        return os.strerror(ctypes.get_errno())
    if libc.mount(b"tmpfs", os.fsencode(folder), b"tmpfs", 0, f"size={megabytes}m".encode()) != 0:
        return os.strerror(ctypes.get_errno())
    return None


def release_small_disk(folder):
    """Its folder can be removed from now on."""
    DETACH = 2
    ctypes.CDLL(None).umount2(os.fsencode(folder), DETACH)
