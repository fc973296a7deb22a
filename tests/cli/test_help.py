"""Help, man page and completions tell the same commands, options and names; check-release.sh tries the completions."""
import os
import re

from support import ProgramTest

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


def words_of(text):
    return set(re.findall(r"--?[\w-]+|[\w-]+", text))


class Help(ProgramTest):
    def commands(self, *command):
        """(command, its help, those below it, its options and the names it takes), with those below it."""
        text, _ = self.zaltag(*command, "--help")
        below = re.findall(r"^  ([\w-]+) ", text.partition("Subcommands:")[2].partition("\n\n")[0], re.M)
        options = set(re.findall(r"--[\w-]+", text.partition("\n\n")[0] + "\n".join(
            line[:30] for line in text.splitlines() if line.startswith("  -"))))
        names = " ".join(re.findall(r"^(?:Names|Places for --\w+):((?:.|\n  )*)$", text, re.M)).split()
        yield " ".join(command), text, below, options, set(names)
        for name in below:
            yield from self.commands(*command, name)

    def test_all_tell_the_same(self):
        texts = {}
        for name in ("docs/zaltag.1", "cli/completions/zaltag.bash", "cli/completions/_zaltag", "cli/completions/zaltag.fish"):
            with open(os.path.join(ROOT, name), encoding="utf-8") as file:
                texts[name] = re.sub(r"\\([-&])", lambda found: found[1].strip("&"), file.read())
        sections = dict(re.findall(r"^\.S[SH] (.*)\n((?:(?!\.S[SH]).*\n)*)", texts.pop("docs/zaltag.1"), re.M))
        commands = list(self.commands())
        self.assertGreater(len(commands), 30)
        for command, text, below, options, names in commands:
            lines = text.splitlines()
            # What writes into collections has options for every difference between the programs that it goes between.
            self.assertLessEqual(len(lines), {"sync": 50, "cues set": 34, "": 34}.get(command, 30), f"{command} fits a screen")
            self.assertLessEqual(max(map(len, lines)), 80, command)
            self.assertRegex(text, rf"Examples:\n(.*\n)*.*zaltag {command}", command)
            page = next((text for title, text in sections.items() if command in title.split(", ")), "") + sections["OPTIONS"]
            for common in ("COLLECTION OPTIONS", "CUE POINT PLACES"):
                page += sections[common] * (f'"{common}"' in page or f".B {common}\n" in page)
            self.assertEqual(set() if below else (options | names) - words_of(page), set(), f"{command}: not in its section")
            for name, script in texts.items():
                told = {option[2:] for option in options} if name.endswith("fish") else options
                self.assertEqual(told.union(command.split(), names) - words_of(script), set(), f"{name}: {command}")
