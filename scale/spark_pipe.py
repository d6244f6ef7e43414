#!/usr/bin/python3
"""Reads the documents of a manifest with Spark.

usage: spark-submit spark_pipe.py MANIFEST FOLDER [PARTITIONS]

Each partition of the manifest's lines is piped through one process of dorvex: a path
to a line in, a record to a line out, in the same order, until the input ends. Hadoop
streaming takes the same command as its mapper, without a reducer. The tool's own
failures (2 and 3) fail the task, which Spark then tries again; documents that were
not read (1) do not, for their records say so.
"""

import os
import sys

# Spark splits it as a shell would, but runs no shell.
COMMAND = "sh -c 'dorvex batch --files-from - --quiet --ordered --jobs 1 || [ $? -eq 1 ]'"
PARTITIONS = 1000


def main() -> int:
    if len(sys.argv) not in (3, 4):
        print(__doc__, file=sys.stderr)
        return 2
    manifest, folder = sys.argv[1:3]
    from pyspark import SparkContext  # pylint: disable=import-outside-toplevel  # COMMAND is tested without

    partitions = int(sys.argv[3]) if len(sys.argv) == 4 else PARTITIONS
    context = SparkContext(appName="dorvex")
    paths = context.textFile(manifest, minPartitions=partitions)
    # The command gets no other environment.
    paths.pipe(COMMAND, env={"PATH": os.environ["PATH"]}, checkCode=True).saveAsTextFile(folder)
    return 0


if __name__ == "__main__":
    sys.exit(main())
