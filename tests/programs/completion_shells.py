"""What shells offer for a command line, by the scripts that the build has made for them.

The folder of those scripts is the first argument of the test that is run.
"""
import errno
import os
import pathlib
import pty
import shutil
import subprocess
import sys
import tempfile
import unittest

MADE = pathlib.Path(sys.argv.pop(1)).resolve()
TIME_LIMIT_SECONDS = 120

# Begins where a person has typed a line and asks for what there is; what zsh is about to offer goes to a file.
ZSHRC = r"""
fpath=($HOME $fpath)
autoload -Uz compinit
compinit -D -u
compadd() {
    local -a found
    if [[ ${@[1,(i)(-|--)]} != *-[OAD]\ * ]]; then
        builtin compadd -O found "$@"
        (( $#found )) && print -rl -- $found >> $OFFERED
    fi
    builtin compadd "$@"
}
offer() { _main_complete }
zle -C offer list-choices offer
zle-line-init() {
    for BUFFER in ${(f)LINES_TO_OFFER}; do
        CURSOR=$#BUFFER
        zle offer
        print -r - >> $OFFERED
    done
    exit 0
}
zle -N zle-line-init
"""


def script(program, shell):
    return (MADE / f"{program}.completion.{shell}").read_text(encoding="utf-8")


def bash(program, lines, folder, environment):
    """Of each line, whose words stand with a blank between them or are a list: for its last word, in the order of the
    script."""
    words = [line.split(" ") if isinstance(line, str) else line for line in lines]
    function = "_" + program.replace("-", "_")
    asked = f"""
while [[ $# -gt 0 ]]; do
    COMP_WORDS=("${{@:2:$1}}")
    COMP_CWORD=$(($1 - 1))
    shift $(($1 + 1))
    {function}
    printf "%s\\n" "${{COMPREPLY[@]}}" ""
done"""
    counted = [word for line in words for word in (str(len(line)), *line)]
    shown = subprocess.run(["bash", "-c", script(program, "bash") + asked, "bash", *counted], capture_output=True,
                           encoding="utf-8", cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                           timeout=TIME_LIMIT_SECONDS)
    assert (shown.returncode, shown.stderr) == (0, ""), shown
    return parts(shown.stdout, lines)


def parts(text, lines):
    """What was offered for each line, from texts that end with an empty line."""
    found = [[]]
    for line in text.splitlines():
        if line:
            found[-1].append(line)
        else:
            found.append([])
    assert len(found) == len(lines) + 1 and not found[-1], text
    return found[:-1]


def need(shell):
    if shutil.which(shell) is None:
        raise unittest.SkipTest(f"{shell} is not installed")


def fish(program, lines, folder, environment):
    """For the end of each line, in the order of fish, without the descriptions."""
    need("fish")
    with tempfile.TemporaryDirectory() as home:
        asked = "source $argv[1]; for line in $argv[2..]; complete -C $line; echo; end"
        shown = subprocess.run(["fish", "--no-config", "-c", asked, str(MADE / f"{program}.completion.fish"), *lines],
                               capture_output=True, encoding="utf-8", cwd=folder, stdin=subprocess.DEVNULL,
                               env=environment | {"HOME": home}, timeout=TIME_LIMIT_SECONDS)
    assert (shown.returncode, shown.stderr) == (0, ""), shown
    return [[offered.split("\t")[0] for offered in part] for part in parts(shown.stdout, lines)]


def zsh(program, lines, folder, environment):
    """For the end of each line, sorted."""
    need("zsh")
    with tempfile.TemporaryDirectory() as home:
        (pathlib.Path(home) / ".zshrc").write_text(ZSHRC, encoding="utf-8")
        offered = pathlib.Path(home) / "offered"
        shutil.copy(MADE / f"{program}.completion.zsh", pathlib.Path(home) / f"_{program}")
        terminal, end = pty.openpty()
        more = {"HOME": home, "ZDOTDIR": home, "LINES_TO_OFFER": "\n".join(lines), "OFFERED": str(offered), "TERM": "xterm"}
        process = subprocess.Popen(["zsh", "-d", "-i"], stdin=end, stdout=end, stderr=end, cwd=folder,
                                   env=environment | more, start_new_session=True)
        os.close(end)
        shown = drain(terminal)
        os.close(terminal)
        assert process.wait(timeout=TIME_LIMIT_SECONDS) == 0, shown
        return [sorted(set(part)) for part in parts(offered.read_text(encoding="utf-8"), lines)]


def drain(terminal):
    """What comes out of it, until nobody has it open."""
    shown = b""
    while True:
        try:
            part = os.read(terminal, 4096)
        except OSError as fault:
            if fault.errno != errno.EIO:
                raise
            return shown
        if not part:
            return shown
        shown += part
