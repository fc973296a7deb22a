"""Help, man page and completions tell the same commands, options and names."""
import os
import re
import subprocess

from support import ProgramTest

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
COMPLETIONS = os.path.join(ROOT, "cli", "completions")
LONG_HELP = 30  # lines of a terminal


def words_of(text):
    return set(re.findall(r"--?[\w-]+|[\w-]+", text))


class Help(ProgramTest):
    def setUp(self):
        super().setUp()
        self.commands = {}
        self.collect([])

    def collect(self, command):
        """Reads the help of a command and of those below it into self.commands."""
        text, _ = self.zaltag(*command, "--help")
        below = re.findall(r"^  ([\w-]+) ", text.partition("Subcommands:")[2].partition("\n\n")[0], re.M)
        self.commands[" ".join(command)] = {
            "text": text, "below": below, "options": set(re.findall(r"--[\w-]+", text.partition("\n\n")[0] + "\n" + "\n".join(
                line[:30] for line in text.splitlines() if line.startswith("  -")))),
            "names": {title: set(" ".join(names.split()).split()) for title, names in
                      re.findall(r"^(Names|Places for --\w+):((?:.|\n  )*)$", text, re.M)}}
        for name in below:
            self.collect([*command, name])

    def read(self, *path):
        with open(os.path.join(*path), encoding="utf-8") as file:
            return file.read()

    def test_help_fits_a_screen_and_has_examples(self):
        self.assertGreater(len(self.commands), 30)
        for command, told in self.commands.items():
            lines = told["text"].splitlines()
            self.assertLessEqual(len(lines), LONG_HELP, command)
            self.assertLessEqual(max(map(len, lines)), 80, command)
            self.assertRegex(told["text"], rf"Examples:\n(.*\n)*.*zaltag {command}", command)

    def test_man_page(self):
        page = re.sub(r"\\([-&])", lambda found: found[1].strip("&"), self.read(ROOT, "docs", "zaltag.1"))
        sections = dict(re.findall(r"^\.S[SH] (.*)\n((?:(?!\.S[SH]).*\n)*)", page, re.M))
        for command, told in self.commands.items():
            text = next((text for title, text in sections.items() if command in title.split(", ")), "") + sections["OPTIONS"]
            for common in ("COLLECTION OPTIONS", "CUE POINT PLACES"):
                text += sections[common] * (f'"{common}"' in text or f".B {common}\n" in text)
            missing = told["options"].union(*told["names"].values()) - words_of(text)
            self.assertTrue(told["below"] or not missing, f"{command}: {missing}")

    def complete(self, *words):
        """What bash completes the last word to."""
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _zaltag; '
                  '[ ${#COMPREPLY[@]} = 0 ] || printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(["bash", "-c", script, "bash", os.path.join(COMPLETIONS, "zaltag.bash"), *words],
                              capture_output=True, text=True, timeout=60, check=True)
        self.assertEqual(done.stderr, "")
        return set(done.stdout.split())

    def test_bash(self):
        for command, told in self.commands.items():
            line = ["zaltag", *command.split()]
            self.assertEqual(self.complete(*line, ""), set(told["below"]), command)
            self.assertEqual(self.complete(*line, "--"), told["options"] | {"--help", "--version"}, command)
            for title, names in told["names"].items():
                if title == "Names":
                    self.assertEqual(self.complete(*line, "a.mp3", ""), {name + "=" for name in names}, command)
                else:
                    self.assertEqual(self.complete(*line, title.split()[-1], ""), names, command)
        for words, completed in ((("set", "a.mp3", "ti"), {"title="}), (("set", "a.mp3", "title", "=", "ti"), set()),
                                 (("sync", "--from", "=", "ser"), {"serato"}), (("cues", "set", "--to", "traktor", "list"), set())):
            self.assertEqual(self.complete("zaltag", *words), completed)

    def test_zsh_and_fish(self):
        for name in ("_zaltag", "zaltag.fish"):
            words = words_of(self.read(COMPLETIONS, name))
            for command, told in self.commands.items():
                options = told["options"] if name == "_zaltag" else {option[2:] for option in told["options"]}
                missing = options.union(command.split(), *told["names"].values()) - words
                self.assertEqual(missing, set(), f"{name}: {command}")
