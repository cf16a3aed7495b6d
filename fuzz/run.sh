#!/usr/bin/env bash
# Runs every fuzz target built in build/fuzz for the given number of seconds
# (default 60), starting from its checked-in corpus (fuzz/corpus/<target>)
# plus what earlier runs found (build/fuzz/corpus/<target>), with
# fuzz/<target>.dict as its dictionary when there is one. Prints each
# target's executions and coverage from libFuzzer's final statistics; exits
# non-zero when any target crashed, with the crashing input kept in
# build/fuzz/artifacts/.
set -uo pipefail
seconds=${1:-60}
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/fuzz
mkdir -p "$build/artifacts"
status=0
summary=()
for seeds in "$root"/fuzz/corpus/*/; do
  name=$(basename "$seeds")
  bin=$build/fuzz/${name}_fuzz
  if [ ! -x "$bin" ]; then
    echo "fuzz: $name: no executable $bin" >&2
    status=1
    continue
  fi
  work=$build/corpus/$name
  log=$build/$name.log
  mkdir -p "$work"
  dict=()
  [ -f "$root/fuzz/$name.dict" ] && dict=(-dict="$root/fuzz/$name.dict")
  echo "== $name: fuzzing for ${seconds}s (log: $log) =="
  "$bin" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 "${dict[@]}" \
    -artifact_prefix="$build/artifacts/$name-" "$work" "$seeds" >"$log" 2>&1
  rc=$?
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  [ -n "$execs" ] || execs=$(grep -oE '^#[0-9]+' "$log" | tail -1 | tr -d '#')
  cov=$(grep -E '^#[0-9]+' "$log" | grep -oE 'cov: [0-9]+ ft: [0-9]+ corp: [0-9]+' | tail -1)
  line="fuzz: $name: ${execs:-0} executions, ${cov:-no coverage reported}"
  if [ $rc -ne 0 ]; then
    line="$line, CRASHED (exit $rc)"
    status=1
    grep -E -A25 '^==[0-9]+==ERROR|runtime error|figure_ops:|figure_file:|ALARM|deadly signal' "$log" | head -60
    ls "$build"/artifacts/"$name"-* 2>/dev/null
  fi
  echo "$line"
  summary+=("$line")
done
echo "== summary =="
printf '%s\n' "${summary[@]}"
exit $status
