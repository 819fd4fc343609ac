# For script/check-media, which sources it after media.sh: each proof on one medium. They use $driver,
# $results, $runs and $rows, and leave a file MEDIUM.PROOF in $results, its fields parted by tabs.

# Each step of a station's life.
prove_life() {
  mount_medium "$1" || return
  timeout 300 "$driver" life "$work/mount1" "$repository/tests/data/station_2000.mdb" \
    >"$results/$1.life" || echo $'ended\texit code '$? >>"$results/$1.life"
  unmount_all
}

# The medium copied after each reported save. A copy is opened after the program has ended: its lock
# would be that of a living process.
prove_saves() {
  local kind name digest number=0
  local -a names=() digests=()
  mount_medium "$1" || return
  rm -rf "$work/copies"
  mkdir "$work/copies"
  coproc DRIVER { timeout 300 "$driver" saves "$work/mount1"; }
  local input=${DRIVER[1]} output=${DRIVER[0]} driver_id=$DRIVER_PID
  while IFS=$'\t' read -r kind name digest <&"$output"; do
    if [ "$kind" = saved ]; then
      copy_medium "$1" "$work/copies/$number"
      names+=("$name")
      digests+=("$digest")
      number=$((number + 1))
    else
      printf '%s\t%s\t%s\n' "$kind" "$name" "$digest" >>"$results/$1.saves"
    fi
    echo go >&"$input" || true
  done
  wait "$driver_id" || printf 'ended\texit code %s\n' $? >>"$results/$1.saves"
  unmount_all
  for number in "${!names[@]}"; do
    digest=unreadable
    if open_copy "$1" "$work/copies/$number"; then
      digest=$(timeout 60 "$driver" digest "$work/copy" | sed -n 's/^holds\t//p') || true
      unmount_all
    fi
    printf 'saved\t%s\t%s\t%s\n' "${names[$number]}" "${digests[$number]}" "$digest" \
      >>"$results/$1.saves"
  done
}

# A medium that fails at each write.
prove_failures() {
  local program=${driver%/*}/media_failures
  if [ ! -x "$program" ]; then
    echo 'refused	this release has no watch on file calls' >"$results/$1.failures"
    return
  fi
  mount_medium "$1" || return
  timeout 1200 "$program" "$work/mount1" >"$results/$1.failures" ||
    echo $'ended\texit code '$? >>"$results/$1.failures"
  unmount_all
}

prove_speed() {
  mount_medium "$1" || return
  timeout 1200 "$driver" speed "$work/mount1" "$rows" >"$results/$1.speed" ||
    echo $'ended\texit code '$? >>"$results/$1.speed"
  unmount_all
}

# Two machines that open one station at once and import into it, over and over.
prove_two() {
  local run writer
  for writer in "${network_media[@]}" none; do
    [ "$writer" = "$1" ] && break
  done
  [ "$writer" = none ] && return 0
  mount_medium "$1" two || return
  for ((run = 1; run <= runs; ++run)); do
    mkdir "$work/backing/$run"
    cp "$(dirname "$driver")/template.mdb" "$work/backing/$run/creek.mdb"
    ls -l "$work/mount1/$run" "$work/mount2/$run" >/dev/null
    local -a writers=()
    for writer in 1 2; do
      on_machine "$writer" timeout --signal=KILL 120 "$driver" \
        write "$work/mount$writer/$run/creek.mdb" "$writer" 8 >"$work/writer$writer" 2>&1 &
      writers+=($!)
    done
    for writer in 1 2; do
      wait "${writers[$((writer - 1))]}" || echo $'ended\texit code '$? >>"$work/writer$writer"
    done
    sync -f "$work/mount1" "$work/mount2" 2>/dev/null || true
    judge_run "$run" >>"$results/$1.two"
  done
  unmount_all
}

# Prints for each writer of a run what it saw, and how many of its reported rows are in the file.
judge_run() {
  local writer rows_reported rows_found verdict
  rm -rf "$work/judged"
  cp -r "$work/backing/$1" "$work/judged"
  verdict=$(sqlite3 "$work/judged/creek.mdb" 'PRAGMA integrity_check' 2>&1 | head -1) || true
  printf 'file\t%s\t%s\n' "$1" "$verdict"
  for writer in 1 2; do
    rows_reported=$(awk -F'\t' '$1 == "rows" { n += $2 } END { print n + 0 }' "$work/writer$writer")
    rows_found=$(sqlite3 "$work/judged/creek.mdb" \
      "SELECT count(*) FROM Records WHERE chan1 = $writer" 2>/dev/null) || rows_found=0
    printf 'writer\t%s\t%s\t%s\t%s\n' "$1" "$writer" "$rows_reported" "${rows_found:-0}"
    sed -e '/^rows\t/d' -e '/^tests\/media\/media.sh: line/d' -e "s|$work/mount[12]/$1/||g" -e "s/^/said\t$1\t$writer\t/" \
      "$work/writer$writer"
  done
}
