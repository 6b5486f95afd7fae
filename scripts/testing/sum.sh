# Sourced by the scripts that test several presets: adds up what the last lines of their tests say.

passed=0
failed=0

# A preset that does not build, or in which no test ran, counts as one failure.
fail_preset() {
  echo "== $1: $2" >&2
  failed=$((failed + 1))
}

# count_results PRESET LOG
count_results() {
  if [[ $(tail -n 1 "$2") =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]]; then
    passed=$((passed + BASH_REMATCH[1]))
    failed=$((failed + BASH_REMATCH[2]))
  else
    fail_preset "$1" "its tests were not counted"
  fi
}

# The last line of a script. False when something failed, or nothing ran.
print_sum() {
  echo "$passed passed, $failed failed"
  ((failed == 0 && passed > 0))
}
