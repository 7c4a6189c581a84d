"""The log of a program, read as it comes."""
import re
import threading

import stranger

STAMP = len("2024-03-10 07:00:00 ")


class FollowedLog:
    """The lines without their times. `news` is told of each; who wants to share it with other events gives one."""

    def __init__(self, lines, news=None):
        self.lines = []
        self.news = news or threading.Condition()
        threading.Thread(target=self.read, args=[lines], daemon=True).start()

    def read(self, lines):
        for line in lines:
            with self.news:
                self.note(line.rstrip("\n")[STAMP:])
                self.news.notify_all()

    def note(self, line):
        self.lines.append(line)

    def take(self, pattern):
        """The match of the first line that is like this as a whole; it is taken out with all before it."""
        for index, line in enumerate(self.lines):
            match = re.fullmatch(pattern, line)
            if match:
                del self.lines[:index + 1]
                return match
        return None

    def await_line(self, pattern):
        with self.news:
            match = self.news.wait_for(lambda: self.take(pattern), stranger.PATIENCE)
            if not match:
                raise AssertionError(f"{pattern} is not in the log: {self.lines}")
            return match
