#!/usr/bin/python3
"""Validates the records in standard input, a JSON line each, against a schema.

usage: validate_records.py SCHEMA

Prints their number. Exits with 1 and says why at the first that is not valid.
"""

import json
import sys

import jsonschema


def main() -> int:
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    count = 0
    for line in sys.stdin:
        error = next(validator.iter_errors(json.loads(line)), None)
        if error is not None:
            print(f"line {count + 1}: {error.message}", file=sys.stderr)
            return 1
        count += 1
    print(count)
    return 0


if __name__ == "__main__":
    sys.exit(main())
