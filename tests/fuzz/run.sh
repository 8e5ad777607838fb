#!/bin/sh
# Runs one fuzz target for a set time; fails on any finding.
#   run.sh TARGET SEEDS DICTIONARY FOLDER SECONDS [OPTION]...
# FOLDER keeps what the runs learn: inputs/ those that reach new code, findings/ those that fail. A
# later run begins with both, so that a finding fails until it is mended.
set -eu

target=$1 seeds=$2 dictionary=$3 folder=$4 seconds=${ORB_FUZZ_SECONDS:-$5}
shift 5

case $seconds in
  '' | 0 | *[!0-9]*)
    echo "ORB_FUZZ_SECONDS has to be a number of seconds above 0, not \"$seconds\"" >&2
    exit 2
    ;;
esac

limit=-max_total_time=$seconds
[ -z "${ORB_FUZZ_RUNS:-}" ] || limit=-runs=$ORB_FUZZ_RUNS

[ ! -s "$dictionary" ] || set -- "-dict=$dictionary" "$@"
mkdir -p "$folder/inputs" "$folder/findings"
cd "$folder"
exec "$target" "$limit" -timeout=60 -rss_limit_mb=2048 \
  -artifact_prefix="$folder/findings/" -print_final_stats=1 "$@" \
  "$folder/inputs" "$folder/findings" "$seeds"
