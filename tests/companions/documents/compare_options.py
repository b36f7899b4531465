#!/usr/bin/env python3
"""compare_options.py PROGRAM: compares the options that PROGRAM's --help gives for each command with
those that its manual page and bash completion name. Prints each difference and fails."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
EVERYWHERE = "all"


def run(*command):
    return subprocess.run(command, cwd=ROOT, check=True, capture_output=True, text=True).stdout


def commands_of(program):
    return re.findall(r"^  (\w+) ", run(program, "--help").split("Subcommands:")[1], re.MULTILINE)


def helped_options(program, command):
    """Names of an option as (long name, letter or ""): rows as "  -s,--scenario NAME"."""
    rows = re.findall(r"^  (?:-(\w),)?--([\w-]+)", run(program, command, "--help"), re.MULTILINE)
    return {(name, letter) for letter, name in rows}


def manual_options(manual):
    """By command: the section "Of COMMAND", and what stands before the first one for all."""
    options = {}
    section = manual.split(".SH OPTIONS\n")[1].split("\n.SH ")[0].replace("\\-", "-")
    for part in re.split(r"^\.SS Of ", "all\n" + section, flags=re.MULTILINE):
        command, text = part.split("\n", 1)
        rows = re.findall(r'^\.BI? (?:"-(\w) .* )?--([\w-]+)', text, re.MULTILINE)
        rows += re.findall(r"^\.BR -(\w) .* --([\w-]+)", text, re.MULTILINE)
        options[command] = {(name, letter) for letter, name in rows}
    return options


def completed_options(name, command):
    words = run("bash", "-c", f"source completion/{name}.bash && _{name}_options {command}").split()
    return {word.removeprefix("--") for word in words}


def helped_choices(program, command):
    """By option: rows as "  -f,--format FORMAT:{csv,json}"."""
    rows = re.findall(r"--([\w-]+) \w+:{([\w,]+)}", run(program, command, "--help"))
    return {option: set(choices.split(",")) for option, choices in rows}


def completed_choices(name, option):
    return set(run("bash", "-c", f"source completion/{name}.bash && _{name}_words --{option}").split())


def differences(place, expected, found):
    for option in sorted(expected - found):
        yield f"{place} lacks {option}"
    for option in sorted(found - expected):
        yield f"{place} has {option}, which the program does not"


def main(program):
    name = pathlib.Path(program).name
    manual = manual_options((ROOT / f"man/{name}.1.in").read_text())
    commands = commands_of(program)
    unknown = set(manual) - {EVERYWHERE} - set(commands)
    faults = [f"the manual page has the command {command}" for command in sorted(unknown)]
    for command in commands:
        options = helped_options(program, command)
        described = manual[EVERYWHERE] | manual.get(command, set())
        faults += differences(f"{command}, manual page:", options, described)
        names = {long_name for long_name, _ in options}
        faults += differences(f"{command}, completion:", names, completed_options(name, command))
        for option, choices in helped_choices(program, command).items():
            completed = completed_choices(name, option)
            faults += differences(f"{command} --{option}, completion:", choices, completed)
    print(*faults, f"{len(commands)} commands, {len(faults)} differences", sep="\n")
    return 1 if faults or not commands else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
