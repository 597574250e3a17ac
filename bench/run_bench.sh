#!/usr/bin/env bash
# Times every bench/*.bas with build/default/orvobasic and prints the wall time
# of each. When a Lua interpreter is installed and bench/NAME.lua exists, the
# Lua version of the same benchmark is timed too, for comparison.
# Usage: bench/run_bench.sh [RUNNER]   (default: build/default/orvobasic)
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
runner=${1:-$root/build/default/orvobasic}
bench_dir=$root/bench

# Prints the wall time in seconds of running "$@", with "(exit N)" appended when
# the command fails (a failing benchmark's time means nothing). The command's own
# output is discarded. Uses /usr/bin/time when present, else bash's time keyword.
wall_time() {
  local log status=0 seconds
  log=$(mktemp)
  if [[ -x /usr/bin/time ]]; then
    /usr/bin/time -f %e -o "$log" "$@" >/dev/null 2>&1 </dev/null || status=$?
  else
    local TIMEFORMAT=%R
    { time "$@" >/dev/null 2>&1 </dev/null; } 2>"$log" || status=$?
  fi
  seconds=$(tail -n 1 "$log")
  rm -f "$log"
  if (( status != 0 )); then
    seconds="$seconds (exit $status)"
  fi
  printf '%s\n' "$seconds"
}

# The first Lua interpreter on PATH, if any.
find_lua() {
  local candidate
  for candidate in lua5.4 lua; do
    if command -v "$candidate" >/dev/null 2>&1; then
      command -v "$candidate"
      return
    fi
  done
}

main() {
  if [[ ! -x "$runner" ]]; then
    echo "run_bench: runner not found: $runner (run 'make build' first)" >&2
    exit 1
  fi
  local lua
  lua=$(find_lua || true)
  shopt -s nullglob
  local scripts=("$bench_dir"/*.bas)
  if (( ${#scripts[@]} == 0 )); then
    echo "run_bench: no benchmark scripts in bench/"
    return 0
  fi
  printf '%-24s %20s %20s\n' benchmark orvobasic/s lua/s
  local script name lua_time
  for script in "${scripts[@]}"; do
    name=$(basename "$script" .bas)
    lua_time=-
    if [[ -n "$lua" && -f "$bench_dir/$name.lua" ]]; then
      lua_time=$(wall_time "$lua" "$bench_dir/$name.lua")
    fi
    printf '%-24s %20s %20s\n' "$name" \
      "$(wall_time "$runner" --on-error=abort "$script")" "$lua_time"
  done
}

main "$@"
