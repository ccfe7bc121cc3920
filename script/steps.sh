# For .ci/run and script/check-all, which source it: runs the steps of a long check one after the other, each within its
# own time and all within the whole, and tells at the end what each of them said and took.

steps_begun=$SECONDS
steps_told=()
steps_failed=0

# say_step RESULT SECONDS NAME: a line of the summary, printed at once too.
say_step() {
  local line
  line=$(printf '%-12s %3d:%02d  %s' "$1" $(($2 / 60)) $(($2 % 60)) "$3")
  steps_told+=("$line")
  echo "-- $line"
}

# step must|may MINUTES NAME COMMAND...: a step that fails makes the whole fail. One that overruns its minutes, or what
# is left of $steps_minutes, is ended; that fails where it must finish, and where it may be cut off it is told. So it is with
# one that ends with 77 because it cannot check here. A Mac has no tool that ends a step.
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
    77) # the convention of CTest, too
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

# end_steps: the summary. Fails when a step did.
end_steps() {
  printf '\n== Summary\n'
  printf '%s\n' "${steps_told[@]}"
  local took=$((SECONDS - steps_begun))
  printf 'In %d:%02d of at most %d minutes; %d of %d steps failed.\n' $((took / 60)) $((took % 60)) "$steps_minutes" \
    "$steps_failed" "${#steps_told[@]}"
  [ "$steps_failed" = 0 ]
}
