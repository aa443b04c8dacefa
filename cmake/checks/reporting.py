"""What the checks of this folder share: running a tool, telling what was found."""
import subprocess
import sys


def run(*command):
    """What the command prints; where it fails there is nothing to check."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        sys.exit(f"error: {' '.join(command)} failed: {done.stderr.strip()}")
    return done.stdout


def end(findings, examined):
    """Tells the findings and how much was examined, and ends the program."""
    for line in findings:
        print(line)
    print(f"{examined}, {len(findings)} findings")
    sys.exit(1 if findings else 0)


def end_self_test(cases, wrong):
    print(f"{cases} cases, {wrong} wrong")
    sys.exit(1 if wrong else 0)
