"""What is besieged: the configuration of a data server and of a module, their users and scripts."""
import dataclasses
import subprocess

NAME = "Oblezenie"
PASSWORD = "Trudne-haslo-7"
SCRIPTS_USER, WATCHER, GUEST = "skrypty", "operator", "gosc"
SIGNALS = 50
# The scripts come back to the first report after so many.
REPORTS = 2000

# Variables that clients write: (name, keys).
WRITTEN = (
    ("ARCH0", "at = 32"),
    ("ARCH1", "at = 32"),
    ("TEKSTY", 'type = "text"\nat = 32'),
    ("ODCINKI", "rt = 16"),
    ("GODZINY", "rt = 2"),
    ("BIEZACA", "at = 2"),
    ("PROBA", ""),
)

# What a script does over and over; {i} is its number. Some of each kind run.
LOOPS = {
    "licznik": "PRIORITY 1\nLOCAL A = 0\n:dalej\nSET A = A + 1\nSLEEP 1\nGOTO dalej\n",
    "czyta": f"REMOTE S {NAME}@SYGNAL{{i}}\nLOCAL A = 0\n:dalej\nSET A = S * 2\nSLEEP 1\nGOTO dalej\n",
    "czeka": f"PRIORITY 1\nREMOTE B {NAME}@BRAK{{i}}\nLOCAL A = B\n",
    "zapis": f"PRIORITY 1\nREMOTE X {NAME}@OBIEG{{i}}\nLOCAL A = 0\n:dalej\nSET A = A + 1\nSET X = A\n:czekaj\n"
             "IF X < A GOTO czekaj\nGOTO dalej\n",
    "plik": 'LOCAL A = 0\nLOCAL B = 0\n:dalej\nSET A = A + 1\nSET B = A * 2\nWRITE_FILE "plik{i}.txt" "STAN" -A A B\n'
            "GOTO dalej\n",
    "lista": "PRIORITY 1\nLIST L\nLOCAL N = 0\n:dalej\nADD L N\nSET N = N + 1\nIF N < 1000 GOTO dalej\nREMOVE_ALL L\n"
             "SET N = 0\nGOTO dalej\n",
    "godziny": "WAITFOR 0.00, 30.00\n",
    "biegnie": "PRIORITY 1\n:dalej\nGOTO dalej\n",
}
# One of each.
SINGLE = {
    "raporty": f"PRIORITY 1\nREMOTE X {NAME}@RAPORT\nREMOTE KROK {NAME}@KROK\nLOCAL K = 0\n"
               "LOCAL T0 = MAKE_TIME 2014 1 1 0\nLOCAL T = T0\n:dalej\nSET T = T0 + K * 3600\n:pisz\nPUT X HREP T K 0\n"
               "GET X HREP T 0\n:czekaj\nIF NOT READY X.HREP GOTO czekaj\nIF UNKNOWN X.HREP GOTO pisz\nSET K = K + 1\n"
               f"SET KROK = K\nIF K < {REPORTS} GOTO dalej\nSET K = 0\nGOTO dalej\n",
    "podwaja": 'PRIORITY 1\nLOCAL S = "x"\n:dalej\nSET S = S + S\nGOTO dalej\n',
    "dziennik": "PRIORITY 20\n:dalej\nTERMINATE_EXEC 17\nGOTO dalej\n",
}
FIRST_REPORT = 1388530800  # 2014-01-01 00:00:00 in Warsaw

BROKEN = ("[[", "[=]", "[server", "x = ", '[server]\nnazwa = "X"\n', "[[variable]]\nname = \"A\"\nmin = \"duzo\"\n",
          "\x00", "[server]\nname = \"\x1b[31m\"\n", "a = " + "[" * 5000, "[" + "a." * 30000 + "a]\n", "\xff\xfe")


@dataclasses.dataclass
class Plant:
    """Everything lies in one folder; data, data files and logs on a disk of their own below it, where there is one."""

    folder: object
    loops: int

    def __post_init__(self):
        self.disk = self.folder / "dysk"
        self.module = self.folder / "modul"
        self.configuration = self.folder / "zaklad.toml"
        self.login = self.folder / "login"
        self.metrics = self.folder / "stan.sock"
        self.scripts = [f"{name}{number}" for name in LOOPS for number in range(self.loops)] + list(SINGLE)
        for folder in (self.disk, self.module):
            folder.mkdir(exist_ok=True)

    def definitions(self, extra=0):
        """The configuration of the server; with so many further variables."""
        rows = [f'[server]\nname = "{NAME}"\ndata = "{self.disk}/dane"\nusers = "{self.folder}/users.sqlite"\n'
                'log = "50"\n[network]\naddress = "127.0.0.1:0"\n[[access]]\nwrite = "0"\n']
        rows += [f'[[variable]]\nname = "{name}"\n{keys}\n' for name, keys in WRITTEN]
        rows += [f'[[variable]]\nname = "SYGNAL{number}"\nat = 4\n'
                 f'signal = "sine mean=5 amplitude=2 period={number + 5}"\n'
                 for number in range(max(SIGNALS, self.loops))]
        rows += [f'[[variable]]\nname = "OBIEG{number}"\nvalue = 0\n' for number in range(self.loops)]
        rows += ['[[variable]]\nname = "RAPORT"\nrt = 2\n[[variable]]\nname = "KROK"\nvalue = 0\n']
        rows += [f'[[variable]]\nname = "DODANA{number}"\n' for number in range(extra)]
        return "".join(rows)

    def configure(self, text):
        self.configuration.write_bytes(text if isinstance(text, bytes) else text.encode("utf-8"))

    def build(self, sorvaned, kalvexd, environment):
        self.configure(self.definitions())
        for user, level in ((SCRIPTS_USER, "50"), (WATCHER, "100"), (GUEST, "0")):
            subprocess.run([sorvaned, "--config", self.configuration, "user", "add", user, "--level", level],
                           input=PASSWORD + "\n", encoding="utf-8", check=True, capture_output=True, env=environment,
                           timeout=60)
        for name in self.scripts:
            kind = name.rstrip("0123456789")
            text = SINGLE.get(name) or LOOPS[kind].replace("{i}", name[len(kind):])
            (self.module / f"{name}.kx").write_bytes(text.replace("\n", "\r\n").encode("cp1250"))
        (self.disk / "pliki").mkdir(exist_ok=True)
        (self.disk / "logi").mkdir(exist_ok=True)
        started = "".join(f"Procedura{number}={name}.kx\r\n" for number, name in enumerate(self.scripts))
        profile = f"[Konfiguracja]\r\nKatalog główny={self.disk}/pliki\r\n[Autostart]\r\n{started}"
        (self.module / "Kalvex.ini").write_bytes(profile.encode("cp1250"))
        users = f"[Konfiguracja]\r\nUżytkownicy={self.folder}/users.sqlite\r\n"
        (self.folder / "sorvane.ini").write_bytes(users.encode("cp1250"))
        subprocess.run([kalvexd, "--working-dir", self.module, "--add-source", f"{NAME},{SCRIPTS_USER}"],
                       input=PASSWORD + "\n", encoding="utf-8", check=True, capture_output=True, env=environment,
                       timeout=60)
        # A name and password of the command line would count in upper case; a file has them as they are.
        self.login.write_text(f"{WATCHER}\n{PASSWORD}\n", encoding="utf-8")
        self.login.chmod(0o600)
