"""HTTP over a local socket."""
import http.client
import socket


class LocalConnection(http.client.HTTPConnection):
    def __init__(self, path):
        super().__init__("localhost", timeout=60)
        self.path = path

    def connect(self):
        self.sock = socket.socket(socket.AF_UNIX)
        self.sock.settimeout(60)
        self.sock.connect(self.path)


def figures_of(text):
    """The figures of Prometheus by their names."""
    rows = [line for line in text.splitlines() if not line.startswith("#")]
    return {name: float(value) for name, value in (row.rsplit(" ", 1) for row in rows)}
