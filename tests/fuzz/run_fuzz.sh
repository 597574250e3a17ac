#!/usr/bin/env bash
# Builds the fuzz targets with clang's libFuzzer, ASan and UBSan (build/fuzz)
# and fuzzes each for a set time, one after another:
#
#   tests/fuzz/run_fuzz.sh [SECONDS_PER_TARGET] [TARGET...]
#
# SECONDS_PER_TARGET defaults to 60; the targets to script, dbase, datafile.
# Each target starts from its seeds (taken from the golden tests and the test
# fixtures), its saved regression inputs and the corpus of earlier runs in
# build/fuzz/corpus/. At the end a line per target gives the executions, the
# coverage (edges) and the crashes found; a crashing input is left in
# build/fuzz/crashes/TARGET/ and makes the script exit 1. Copy it into
# tests/fuzz/regressions/TARGET/ once fixed: `make test` replays it.
#
# Inputs that only run out of memory or time are counted, not fatal: they
# are what the budgets are for, not memory errors.
set -euo pipefail
cd "$(dirname "$0")/../.."

seconds=${1:-60}
shift || true
targets=("$@")
[[ ${#targets[@]} -gt 0 ]] || targets=(script dbase datafile)

build=build/fuzz
src=tests/fuzz

echo "== configure fuzz"
cmake --preset fuzz --log-level=WARNING >/dev/null
echo "== build fuzz"
cmake --build --preset fuzz

# Copies the seeds of one target into $1.
collect_seeds() {
  local target=$1 dir=$2
  mkdir -p "$dir"
  case $target in
    script) find tests/scripts examples -name '*.bas' -exec cp -t "$dir" {} + 2>/dev/null || true ;;
    dbase) cp tests/fixtures/*.dbf "$dir"/ ;;
    datafile) cp tests/fixtures/*.txt "$dir"/ ;;
  esac
}

options_for() {
  case $1 in
    script) echo "-dict=$src/script.dict -max_len=4096" ;;
    dbase) echo "-max_len=8192" ;;
    datafile) echo "-max_len=8192" ;;
  esac
}

summary=()
status=0
for target in "${targets[@]}"; do
  corpus=$build/corpus/$target
  seeds=$build/seeds/$target
  crashes=$build/crashes/$target
  log=$build/logs/$target.log
  mkdir -p "$corpus" "$crashes" "$(dirname "$log")"
  collect_seeds "$target" "$seeds"
  echo "== fuzz $target for ${seconds}s (log: $log)"
  # Fork mode lets a run go on past inputs that only exhaust memory or time.
  # shellcheck disable=SC2046  # the options are meant to split into words
  "$build/tests/fuzz/fuzz_$target" -fork=1 -ignore_ooms=1 -ignore_timeouts=1 \
    -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$crashes/" $(options_for "$target") \
    "$corpus" "$seeds" "$src/regressions/$target" >"$log" 2>&1 || true
  last=$(grep -E '^#[0-9]+: cov:' "$log" | tail -1)
  execs=$(sed -nE 's/^#([0-9]+): cov:.*/\1/p' <<<"$last")
  cov=$(sed -nE 's/.* cov: ([0-9]+) .*/\1/p' <<<"$last")
  fails=$(sed -nE 's/.*oom\/timeout\/crash: ([0-9]+\/[0-9]+\/[0-9]+).*/\1/p' <<<"$last")
  found=$(find "$crashes" -name 'crash-*' | wc -l)
  summary+=("$target: ${execs:-0} executions, coverage ${cov:-?} edges, oom/timeout/crash ${fails:-0/0/0}, crashing inputs kept: $found")
  [[ $found -eq 0 ]] || status=1
done

echo "== fuzz summary (${seconds}s per target)"
printf '%s\n' "${summary[@]}"
exit $status
