#!/bin/sh
# Reads the documents of a manifest, one path to a line, as a Slurm job array:
# each task takes one shard.
#
#   sbatch --array=0-63 slurm_array.sh MANIFEST FOLDER [OPTION OF dorvex batch...]
#
# Task I writes FOLDER/part-I-of-N.jsonl. The number of shards is that of the
# first submission's tasks and stays with the folder, so that some tasks can be
# submitted again (--array=3,7). A task that is requeued goes on in its file.
# DORVEX names the tool where it is not on the path.
#SBATCH --job-name=dorvex
#SBATCH --cpus-per-task=1
#SBATCH --requeue
#SBATCH --open-mode=append
set -eu

if [ $# -lt 2 ] || [ -z "${SLURM_ARRAY_TASK_ID:-}" ]; then
  echo "usage: sbatch --array=0-LAST slurm_array.sh MANIFEST FOLDER [OPTION...]" >&2
  exit 2
fi
manifest=$1 folder=$2
shift 2

# A link appears whole and once, whichever task comes first.
if [ ! -e "$folder/shards" ]; then
  mkdir -p "$folder"
  proposal=$folder/.shards.$SLURM_ARRAY_JOB_ID.$SLURM_ARRAY_TASK_ID
  echo "$SLURM_ARRAY_TASK_COUNT" > "$proposal"
  ln "$proposal" "$folder/shards" 2> /dev/null || [ -e "$folder/shards" ]
  rm "$proposal"
fi
shards=$(cat "$folder/shards")
if [ "$SLURM_ARRAY_TASK_ID" -ge "$shards" ]; then
  echo "$folder has $shards shards, and no shard $SLURM_ARRAY_TASK_ID" >&2
  exit 2
fi

# A requeued task waits for what is left of the first: two runs at a time never write to
# one file, and the second would be refused.
records=$folder/part-$SLURM_ARRAY_TASK_ID-of-$shards.jsonl
status=0
flock "$records" true
"${DORVEX:-dorvex}" batch --files-from - --quiet \
  --jobs "${SLURM_CPUS_PER_TASK:-1}" --shard "$SLURM_ARRAY_TASK_ID/$shards" \
  --resume "$records" -o "$records" "$@" < "$manifest" || status=$?

# Documents that were not read have records that say so: the task has done its work.
[ "$status" -ne 1 ] || status=0
exit "$status"
