#!/usr/bin/python3
"""check_completion.py ROOT: what the shells make of the completions that are installed below ROOT. bash is an
interactive one on a terminal, with the bash-completion package, which finds the file by the program's name."""
import os
import pty
import select
import subprocess
import sys
import time

root = os.path.abspath(sys.argv[1])
share = os.path.join(root, "usr", "share")


def typed(shell, setup, line, expected, environment):
    """Types a line and two tabs at a shell on a terminal; true when the text expected then appears."""
    child, terminal = pty.fork()
    if child == 0:
        os.chdir(root)
        os.execvpe(shell[0], shell, {**os.environ, "TERM": "dumb", "PS1": "$ ", **environment})
    seen = ""

    def read(seconds, until):
        nonlocal seen
        end = time.monotonic() + seconds
        while until not in seen and time.monotonic() < end:
            if select.select([terminal], [], [], 0.2)[0]:
                try:
                    seen += os.read(terminal, 65536).decode("utf-8", "replace")
                except OSError:
                    break

    try:
        os.write(terminal, f"{setup}; echo rea''dy\n".encode())
        read(20, "ready")
        seen = ""
        os.write(terminal, f"{line}\t\t".encode())
        read(20, expected)
        os.write(terminal, b"\x03exit\n")
    finally:
        time.sleep(0.2)
        os.close(terminal)
        os.waitpid(child, 0)
    if expected not in seen:
        print(f"{shell[0]}: '{line}' and Tab: '{expected}' did not come:\n{seen}")
    return expected in seen


def main():
    bash = (["bash", "--norc", "--noprofile", "-i"], "source /usr/share/bash-completion/bash_completion",
            {"XDG_DATA_DIRS": share, "PATH": os.path.join(root, "usr", "bin") + ":" + os.environ["PATH"]})
    zsh = (["zsh", "-f", "-i"], f"fpath=({share}/zsh/vendor-completions $fpath); autoload -U compinit; compinit -u -D",
           {"PATH": os.path.join(root, "usr", "bin") + ":" + os.environ["PATH"]})
    right = True
    for shell, setup, environment in (bash, zsh):
        for line, expected in (("zaltag sca", "scan "), ("zaltag cues se", "set "), ("zaltag cues set --cl", "--clear"),
                               ("zaltag sync --from trak", "traktor"), ("zaltag set song.mp3 initi", "initialKey=")):
            right &= typed(shell, setup, line, expected, environment)
    for line, expected in (("zaltag sca", "scan"), ("zaltag cues set --cl", "--clear"),
                           ("zaltag sync --from trak", "traktor"), ("zaltag set song.mp3 initi", "initialKey=")):
        done = subprocess.run(["fish", "--no-config", "-c", f"source {share}/fish/vendor_completions.d/zaltag.fish; "
                               f"complete -C '{line}'"], capture_output=True, text=True, timeout=60)
        if expected not in done.stdout:
            print(f"fish: '{line}': '{expected}' did not come: {done.stdout}{done.stderr}")
            right = False
    return 0 if right else 1


if __name__ == "__main__":
    sys.exit(main())
