"""Holds the manual page and the completion against what the program says of itself: the same commands,
each with the same options.

usage: check_manual.py PROGRAM MANUAL COMPLETION
"""

import re
import subprocess
import sys

PROGRAM, MANUAL, COMPLETION = sys.argv[1:]
OPTION = re.compile(r"(?<![\w-])--[a-z][a-z-]*[a-z]")


def help_of(*command):
    return subprocess.run([PROGRAM, *command, "--help"], check=True, capture_output=True,
                          text=True).stdout


def commands():
    listed = help_of().split("Subcommands:\n")[1].split("\n\n")[0]
    return re.findall(r"^  (\w+)", listed, re.MULTILINE)


def options_of(*command):
    listed = help_of(*command).split("Options:\n")[1].split("\n\n")[0]
    heads = re.findall(r"^  (-\S+)", listed, re.MULTILINE)
    return set(OPTION.findall("\n".join(heads)))


def manual_sections():
    text = open(MANUAL, encoding="ascii").read().replace("\\-", "-")
    parts = re.split(r"^\.SH (.*)$", text, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def complete(*words):
    """What the completion offers behind `trunnion`, the last of `words` being typed."""
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _trunnion; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    done = subprocess.run(["bash", "-c", script, "bash", COMPLETION, PROGRAM, *words], check=True,
                          capture_output=True, text=True)
    return set(done.stdout.split())


def main():
    failures = []

    def expect(what, wanted, found):
        if wanted != found:
            failures.append(f"{what}: missing {sorted(wanted - found)}, too many {sorted(found - wanted)}")

    sections = manual_sections()
    shared = set(OPTION.findall(sections["OPTIONS OF ALL COMMANDS"]))
    expect("commands in the manual", set(commands()),
           {name.split()[1] for name in sections if name.startswith("trunnion ")})
    expect("commands completed", set(commands()), complete(""))
    expect("the program's options completed", options_of(), complete("--"))
    for command in commands():
        options = options_of(command)
        written = set(OPTION.findall(sections.get(f"trunnion {command}", "")))
        expect(f"options of {command} in the manual", options - shared, written)
        expect(f"options of {command} completed", options, complete(command, "--"))
    if complete("so") != {"solve"}:
        failures.append("'so' is not completed to 'solve'")
    expect("values of --dialect", {"inverse-time"}, complete("solve", "--dialect", "inv"))
    warnings = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-z", MANUAL], check=True,
                              capture_output=True, text=True).stderr
    if warnings:
        failures.append(f"the manual is not well formed:\n{warnings}")
    print("\n".join(failures) or f"the manual and the completion agree with the program: "
                                 f"{len(commands())} commands")
    return 1 if failures else 0


sys.exit(main())
