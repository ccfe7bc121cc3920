# Sourced by .ci/run and script/check-all: runs the steps of a long check in sequence, each and all together
# within a time limit, and prints a summary with the result and time of each.

steps_begun=$SECONDS
steps_told=()
steps_failed=0

# say_step RESULT SECONDS NAME: prints a line and adds it to the summary.
say_step() {
  local line
  line=$(printf '%-12s %3d:%02d  %s' "$1" $(($2 / 60)) $(($2 % 60)) "$3")
  steps_told+=("$line")
  echo "-- $line"
}

# step must|may MINUTES NAME COMMAND...: a failing step fails the whole. A step that exceeds its minutes, or
# the rest of $steps_minutes, is ended: with `must` this is a failure, with `may` it is only reported. The
# same applies to a step that ends with 77 because it cannot check here. On a Mac without `timeout`, steps are
# not ended.
step() {
  local need=$1 seconds=$(($2 * 60)) name=$3 begun=$SECONDS status=0
  local left=$((steps_minutes * 60 - (SECONDS - steps_begun)))
  shift 3
  [ "$left" -lt "$seconds" ] && seconds=$left
  printf '\n== %s\n' "$name"
  if [ "$seconds" -gt 0 ]; then
    $(command -v timeout >/dev/null && echo timeout --kill-after=20 "$seconds") "$@" || status=$?
  else
    status=124
  fi
  case $status in
    0) say_step passed $((SECONDS - begun)) "$name" ;;
    77) # the convention of CTest
      say_step "NOT CHECKED" $((SECONDS - begun)) "$name"
      [ "$need" = may ] || steps_failed=$((steps_failed + 1))
      ;;
    124 | 137)
      say_step "out of time" $((SECONDS - begun)) "$name"
      [ "$need" = may ] || steps_failed=$((steps_failed + 1))
      ;;
    *)
      say_step FAILED $((SECONDS - begun)) "$name"
      steps_failed=$((steps_failed + 1))
      ;;
  esac
}

# end_steps: prints the summary. Fails if a step did.
end_steps() {
  printf '\n== Summary\n'
  printf '%s\n' "${steps_told[@]}"
  local took=$((SECONDS - steps_begun))
  printf 'In %d:%02d of at most %d minutes; %d of %d steps failed.\n' $((took / 60)) $((took % 60)) "$steps_minutes" \
    "$steps_failed" "${#steps_told[@]}"
  [ "$steps_failed" = 0 ]
}
