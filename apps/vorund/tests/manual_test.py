"""That the manual page and the completion of bash know the options that the program has.

Usage: manual_test.py VORUND MANUAL COMPLETION
"""

import pathlib
import re
import subprocess
import sys
import unittest

VORUND, MANUAL, COMPLETION = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
OPTION = re.compile(r"--[a-z]+(?:-[a-z]+)*")


def help_of(*command):
    return subprocess.run([VORUND, *command, "--help"], check=True, text=True,
                          stdout=subprocess.PIPE).stdout


def section(text, title):
    """The lines below a title of the help, up to the empty line."""
    return text.split(f"\n{title}:\n", 1)[1].split("\n\n", 1)[0].splitlines()


def options(*command):
    """{option: the values it may have, or nothing} by the help of a command."""
    found = {}
    for line in section(help_of(*command), "Options"):
        name = re.match(r"  (?:-h,)?(--[a-z-]+)", line)
        if name:
            choices = re.match(r"\S+ \S+:\{([a-z,]+)\}", line.strip())
            found[name[1]] = choices[1].split(",") if choices else None
    return found


def commands():
    return [line.split()[0] for line in section(help_of(), "Subcommands")]


def manual_options(name):
    """The options that the page explains in the section of a command."""
    text = MANUAL.read_text().replace("\\-", "-")
    body = re.search(rf"^\.SS {name}\n(.*?)^\.S[SH]", text, re.MULTILINE | re.DOTALL)[1]
    entries = re.findall(r"^\.TP\n(.*)$", body, re.MULTILINE)
    return sorted(OPTION.search(entry)[0] for entry in entries)


def completed(*words):
    """What bash offers for the last of the words."""
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _vorund; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    run = subprocess.run(["bash", "--norc", "-c", script, "-", COMPLETION, "vorund", *words],
                         check=True, text=True, stdout=subprocess.PIPE)
    return sorted(run.stdout.split())


class Help(unittest.TestCase):
    def test_lists_commands_and_options(self):
        self.assertEqual({"segment", "config", "score", "tune"}, set(commands()))
        self.assertEqual(["white", "black"], options("segment")["--free"])
        self.assertIn("--out", options("segment"))


class Manual(unittest.TestCase):
    def test_explains_every_option_and_no_other(self):
        self.assertEqual(sorted(options()), manual_options("vorund"))
        for command in commands():
            self.assertEqual(sorted(options(command)), manual_options(f"vorund {command}"))

    def test_names_every_value_of_an_option(self):
        text = MANUAL.read_text()
        for command in commands():
            for option, choices in options(command).items():
                for choice in choices or []:
                    self.assertRegex(text, rf"(?m)^\.BR? {choice}\b", option)

    def test_is_of_this_version(self):
        version = subprocess.run([VORUND, "--version"], check=True, text=True,
                                 stdout=subprocess.PIPE).stdout.strip()
        self.assertIn(f'"{version}"', MANUAL.read_text().splitlines()[0])


class Completion(unittest.TestCase):
    def test_offers_commands_and_options(self):
        self.assertEqual(sorted([*options(), *commands()]), completed(""))
        for command in commands():
            self.assertEqual(sorted(options(command)), completed(command, "-"))

    def test_offers_what_begins_as_typed(self):
        self.assertEqual(["score", "segment"], completed("s"))
        self.assertEqual(["--save-images", "--set", "--show-images", "--straight-borders"],
                         completed("segment", "map.png", "--s"))

    def test_offers_the_values_of_an_option(self):
        for command in commands():
            for option, choices in options(command).items():
                if choices:
                    self.assertEqual(sorted(choices), completed(command, option, ""))

    def test_leaves_files_to_bash(self):
        self.assertEqual([], completed("segment", ""))
        self.assertEqual([], completed("segment", "--out", ""))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
