"""What a siege has come to: figures for a person and for programs, and faults."""
import collections
import json
import statistics

MIB = 1024 * 1024
LATENESS = 'kalvex_tick_lateness_seconds{quantile="0.99"}'
# Beyond what a life of a program has in its first quiet moment. Held in long sieges alone.
GROWTH_FACTOR, GROWTH_BYTES = 2, 128 * MIB


class Figures:
    def __init__(self, holds_memory, seed):
        self.holds_memory, self.seed = holds_memory, seed
        self.faults = collections.Counter()
        self.left_out = {}
        self.counts = collections.Counter()
        self.served = collections.defaultdict(list)
        self.compared = 0
        self.rounds = []
        self.first_of_life = {}
        self.result = {}

    def add_fault(self, text):
        if not self.faults[text]:
            print(f"FAULT: {text}", flush=True)
        self.faults[text] += 1

    def leave_out(self, event, reason):
        print(f"left out: {event}: {reason}", flush=True)
        self.left_out[event] = reason

    def is_left_out(self, event):
        return event in self.left_out

    def count(self, what):
        self.counts[what] += 1

    def add_event(self, name, seconds):
        print(f"{name}: {seconds:.2f} s", flush=True)
        self.counts[name] += 1

    def add_served(self, occasion, seconds):
        self.served[occasion].append(seconds)

    def add_account(self, count, wrong):
        self.compared += count
        if wrong:
            self.add_fault(f"{len(wrong)} values are not as acknowledged: {wrong[:5]}")

    def add_round(self, seconds, programs, metrics):
        entry = {"seconds": round(seconds, 2), "lateness_p99_ms": None, "lateness_max_ms": None}
        if metrics:
            entry["lateness_p99_ms"] = round(metrics[LATENESS] * 1000, 3)
            entry["lateness_max_ms"] = round(metrics["kalvex_tick_lateness_max_seconds"] * 1000, 1)
        for program in programs:
            first = self.first_of_life.setdefault((program.name, program.lives), program.resident_bytes())
            most = first * GROWTH_FACTOR + GROWTH_BYTES
            size = program.least_bytes(most) if self.holds_memory else program.resident_bytes()
            entry[program.name] = {"resident_mib": round(size / MIB, 1), "life": program.lives,
                                   "first_of_life_mib": round(first / MIB, 1), "descriptors": program.descriptors()}
            if self.holds_memory and size > most:
                self.add_fault(f"{program.name} has grown from {first / MIB:.0f} to {size / MIB:.0f} MiB")
        self.rounds.append(entry)
        print(f"round {len(self.rounds) - 1}: {json.dumps(entry)}", flush=True)

    def memory_of(self, name):
        """MiB: after the warm-up, at the end, at most, and the largest growth within a life."""
        if not self.rounds:
            return None
        sizes = [entry[name]["resident_mib"] for entry in self.rounds]
        growth = max(entry[name]["resident_mib"] - entry[name]["first_of_life_mib"] for entry in self.rounds)
        return {"warm": sizes[0], "last": sizes[-1], "largest": max(sizes), "largest_growth": round(growth, 1),
                "descriptors_at_most": max(entry[name]["descriptors"] for entry in self.rounds)}

    def write(self, folder, seconds, writers, programs, floods):
        late = [entry["lateness_p99_ms"] for entry in self.rounds if entry["lateness_p99_ms"] is not None]
        self.result = {
            "seed": self.seed,
            "hours": round(seconds / 3600, 3),
            "rounds": len(self.rounds),
            "events": dict(sorted(self.counts.items())),
            "left_out": self.left_out,
            "acknowledged": {name: writer.answered for name, writer in writers.items()},
            "acknowledged_in_all": sum(writer.answered for writer in writers.values()),
            "connections_of_the_writers": sum(writer.connections for writer in writers.values()),
            "repeated_after_a_break": sum(writer.repeated for writer in writers.values()),
            "refused_and_tried_again": sum(writer.refused for writer in writers.values()),
            "compared": self.compared,
            "strangers_refused": floods.refused,
            "served_seconds": {occasion: {"median": round(statistics.median(times), 3), "longest": round(max(times), 3)}
                               for occasion, times in sorted(self.served.items())},
            "lateness_p99_ms": {"median": statistics.median(late), "largest": max(late)} if late else None,
            "programs": {program.name: {"lives": program.lives, "sigterm_seconds": program.ends,
                                        "log_lines": program.log_lines, "log_lines_left_out": program.log_left_out,
                                        "memory_mib": self.memory_of(program.name)} for program in programs},
            "faults": dict(self.faults),
        }
        (folder / "report.json").write_text(json.dumps(self.result | {"each_round": self.rounds}, indent=1),
                                            encoding="utf-8")
        (folder / "report.txt").write_text(self.text() + "\n", encoding="utf-8")

    def text(self):
        lines = []
        for key, value in self.result.items():
            rows = value.items() if isinstance(value, dict) else ()
            lines += [f"{key}:" if rows else f"{key}: {value}", *(f"    {name}: {row}" for name, row in rows)]
        return "\n".join(lines)
