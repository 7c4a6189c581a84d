"""What the tests of the operators' commands of `sorvaned` share: a plant, its store, calls of the program."""
import contextlib
import signal
import sqlite3
import subprocess

from server_and_run import LIMIT_SECONDS, ServerAndRun

ARCHIVE, HOUR, DAY = 6, 2, 3
DOUBLE, INT, TEXT, NONE = 171, 150, 190, 255
START = 1710050400  # 2024-03-10 7:00 in Warsaw

PLANT = """[archive]
period = 60
[[access]]
variables = "TAJNE*"
read = "90"
write = "90"
[[access]]
variables = "CZYT*"
write = "90"
[[access]]
write = "0"
[[variable]]
name = "A.P"
at = 36
rt = 14
min = 0
max = 1000
[[variable]]
name = "A.L"
type = "int"
at = 32
[[variable]]
name = "B.OPIS, długi"
type = "text"
at = 32
value = "dobry"
[[variable]]
name = "CZYT"
at = 32
rt = 2
[[variable]]
name = "TAJNE"
at = 32
[[variable]]
name = "BEZ"
value = 3
"""


class ToolsTest(ServerAndRun):
    PLANT = PLANT

    def setUp(self):
        super().setUp()
        self.store = self.folder / "data/store.sqlite"

    def arguments_of(self, *arguments):
        return [self.SERVER, "--config", str(self.configuration), *map(str, arguments)]

    def call(self, *arguments, stdin="", **more):
        """Exit status, standard output and standard error of a command."""
        done = subprocess.run(self.arguments_of(*arguments), input=stdin.encode(), capture_output=True,
                              timeout=LIMIT_SECONDS, cwd=self.folder, env=self.environment | more)
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    def printed(self, *arguments, **more):
        code, out, err = self.call(*arguments, **more)
        self.assertEqual((code, err), (0, ""))
        return out

    def stop(self, server):
        server.send(signal.SIGTERM)
        self.assertEqual(server.process.wait(), 0)

    def make_store(self):
        """By a server that comes and goes."""
        self.stop(self.start_server())

    @contextlib.contextmanager
    def database(self):
        """The store, while no server has it."""
        database = sqlite3.connect(self.store)
        self.numbers = {name: number for number, name in database.execute("SELECT id, name FROM variables")}
        with database:
            yield database
        database.close()

    def put(self, database, name, rows, kind=ARCHIVE):
        """Rows are (time, value) or (time, value, status); None is no content."""
        types = {float: DOUBLE, int: INT, str: TEXT, type(None): NONE}
        database.executemany("INSERT OR REPLACE INTO history VALUES (?, ?, ?, ?, ?, ?, 0, 0)", [
            (self.numbers[name], kind, time, types[type(value)], status[0] if status else 0, value)
            for time, value, *status in rows])
