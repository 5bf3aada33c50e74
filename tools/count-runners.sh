# For ./test: runs checks and runners of tests with a time limit each, and sums up what they count.
# Sourced by a script that works in the root of the project; the logs go to $logs.

tools=$(dirname "${BASH_SOURCE[0]}")
passed=0
failed=0

say() { printf 'test: %s\n' "$*"; }

# Runs one runner and adds what it counted: run NAME SECONDS COMMAND [ARGUMENT...]
# One that fails without a count, or is stopped at its limit, is a failure of its own.
run() {
  begin "$@"
  finish "$1"
}

# The same in two halves, for a runner that has others beside it: it runs until it is finished.
declare -A running=()
begin() {
  local name=$1 seconds=$2
  shift 2
  "$tools/with-limit" "$seconds" "$name" "$@" >"$logs/$name.log" 2>&1 &
  running[$name]=$!
}

# What still runs when the script ends early, by Ctrl-C for one, is ended with it.
end_runners() {
  ((${#running[@]} == 0)) || kill "${running[@]}" 2>/dev/null || true
}
trap end_runners EXIT

finish() {
  local name=$1 status=0 good bad skipped
  wait "${running[$name]}" || status=$?
  unset "running[$name]"
  read -r good bad skipped < <("$tools/count_tests.py" "$logs/$name.log")
  if ((status == 124 || (status != 0 && bad == 0))); then bad=$((bad + 1)); fi
  if ((bad > 0)); then cat "$logs/$name.log"; fi
  say "$name: $good passed, $bad failed, $skipped skipped"
  passed=$((passed + good))
  failed=$((failed + bad))
}

# Runs a check that has no count of its own; it passes when it prints nothing.
check() {
  local name=$1 found
  shift
  export -f "$1"
  found=$("$tools/with-limit" 1800 "$name" bash -c "$1" 2>&1) || true
  if [[ -z $found ]]; then
    passed=$((passed + 1))
  else
    say "$name: failed"
    echo "$found"
    failed=$((failed + 1))
  fi
}

# Prints the last line; true when nothing has failed.
sum_up() {
  echo "$passed passed, $failed failed"
  ((failed == 0))
}
