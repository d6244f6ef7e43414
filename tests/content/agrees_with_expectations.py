#!/usr/bin/env python3
"""Compares what `dorvex convert` says of real documents with an independent extraction.

    agrees_with_expectations.py FOLDER TOOL

The extraction is no part of the project; ends with 77 where FOLDER does not hold it.
"""
import os
import re
import subprocess
import sys

# Kinds of facts in which the extraction or its comparison is known to be wrong, and in how
# many facts.
KNOWN = {
    # The comparison looks for the wanted level in a place where it never is, and wants 0.
    "list level": 100,
    # 23 in a format with as many decimals as needed: the extraction gives "23.0", where the
    # picture that the application put into the document shows 23 (custom-format-stress).
    "shown number": 396,
    # Whole numbers as 3.0 (12), and columns D and E without their table in formulas of a
    # table that has two columns (5); both in testNumbers2013.
    "formula": 17,
}


def main(folder, tool):
    check = os.path.join(folder, "check.py")
    if not os.path.exists(check):
        print("not compared: there is no independent extraction in", folder)
        return 77
    run = subprocess.run([sys.executable, check, tool], stdout=subprocess.PIPE, text=True)
    print(run.stdout)
    kinds = re.findall(r"^ *(\d+) of +(\d+) +[\d.]+ %  (.+)$", run.stdout, re.MULTILINE)
    wrong = [kind for good, total, kind in kinds
             if int(total) - int(good) > KNOWN.get(kind, 0)]
    print("not as expected:", ", ".join(wrong) or "nothing")
    return 1 if wrong or not kinds else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
