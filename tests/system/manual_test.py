#!/usr/bin/env python3
"""The manual page names every option and every console command, and no others."""
import re
import shlex

from engine_process import ROOT, EngineTestCase, main

MANUAL = ROOT / "docs" / "brenquil.6.in"


def heads(section):
    """The words of the paragraph heads (after .TP) of a section, a list for each head."""
    text = MANUAL.read_text().replace("\\\n", "")
    body = re.search(rf"^\.SH {section}\n(.*?)(?=^\.SH )", text, re.MULTILINE | re.DOTALL)[1]
    lines = re.findall(r"^\.TP\n\.\w+ (.*)\n", body, re.MULTILINE)
    return [[word.strip() for word in shlex.split(line) if word.strip(" ,")] for line in lines]


class Manual(EngineTestCase):
    def test_options(self):
        lines = self.start_console().uci()
        names = {match[1] for line in lines if (match := re.match(r"option name (.*?) type ", line))}
        written = [name for head in heads("OPTIONS") for name in head]
        self.assertEqual(set(written), names)
        self.assertEqual(len(written), len(names))

    def test_console_commands(self):
        engine = self.start_console()
        engine.send("help", "eval")
        lines = engine.until(lambda line: line.startswith("eval: "))
        # The help does not name itself.
        commands = {"help"} | {match[1] for line in lines if (match := re.match(r"<?(\w+)>?.*? = ", line))}
        self.assertGreater(len(commands), 16)
        written = {head[0] for head in heads("CONSOLE COMMANDS")}
        self.assertEqual(written, commands)


if __name__ == "__main__":
    main()
