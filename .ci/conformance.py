#!/usr/bin/env python3
"""Runs the black-box case files that .ci/conformance lists, without the cases that it leaves out.

    conformance.py --runner build/release/bin/kalvex-run FOLDER

FOLDER holds run.py and cases/. The list has a file name a line, and "- file/case  reason" for a case that is
left out. A name that nothing bears any more is an error, so the list stays true.
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile
import tomllib

LIST = pathlib.Path(__file__).with_name("conformance")


def read_list(text):
    """The listed file names, and for each case that is left out its reason."""
    files, left_out = [], {}
    for line in (raw.strip() for raw in text.splitlines()):
        if not line or line.startswith("#"):
            continue
        if not line.startswith("- "):
            files.append(line)
            continue
        case, _, reason = line[2:].strip().partition(" ")
        if not reason.strip():
            sys.exit(f"conformance: {case} is left out without a reason")
        left_out[case] = reason.strip()
    return files, left_out


def split_cases(text):
    """The text of each case, by name."""
    pieces = re.split(r"(?m)^(?=\[\[case\]\]\s*$)", text)
    return {tomllib.loads(piece)["case"][0]["name"]: piece for piece in pieces if piece.startswith("[[case]]")}


def main():
    options = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    options.add_argument("--runner", required=True, type=pathlib.Path)
    options.add_argument("folder", type=pathlib.Path)
    arguments = options.parse_args()

    files, left_out = read_list(LIST.read_text(encoding="utf-8"))
    unmet = set(left_out)
    with tempfile.TemporaryDirectory() as scratch:
        for name in files:
            stem = pathlib.PurePath(name).stem
            cases = split_cases((arguments.folder / "cases" / name).read_text(encoding="utf-8"))
            kept = [text for case, text in cases.items() if f"{stem}/{case}" not in left_out]
            unmet -= {f"{stem}/{case}" for case in cases}
            pathlib.Path(scratch, name).write_text("".join(kept), encoding="utf-8")
        if unmet:
            sys.exit("conformance: no such case: " + ", ".join(sorted(unmet)))
        for case, reason in left_out.items():
            print(f"left out: {case}: {reason}")
        sys.stdout.flush()
        command = [sys.executable, arguments.folder / "run.py", "--runner", arguments.runner.resolve(), "--jobs", "2", scratch]
        sys.exit(subprocess.run(command).returncode)


if __name__ == "__main__":
    main()
