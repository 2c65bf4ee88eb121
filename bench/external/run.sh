#!/usr/bin/env bash
# External folders over the 7,425 tldr pages: the whole `orvo source files`
# command (target: under 0.5 s), the in-process parts, and what `orvo watch`
# holds for that folder (memory and descriptors, against an empty folder).
set -euo pipefail
build="${ORVO_BENCH_BUILD:?}"
corpus="${ORVO_CORPUS_DIR:?}/tldr/pages"
orvo="$build/bin/orvo"
[ -d "$corpus" ] || { echo "no tldr corpus at $corpus"; exit 1; }

work="$(mktemp -d)"
watch_pid=""
cleanup() {
  [ -n "$watch_pid" ] && kill "$watch_pid" 2>/dev/null && wait "$watch_pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT
# A user of its own, so no real settings or source list are touched.
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share" \
       XDG_CACHE_HOME="$work/home/.cache"
mkdir -p "$HOME" "$work/empty"
cp -r "$corpus" "$work/tldr"
files=$(find "$work/tldr" -type f -name '*.md' | wc -l)
folders=$(find "$work/tldr" -type d | wc -l)
echo "folder: $files documents in $folders folders"

echo "-- whole command (hyperfine, warm cache)"
hyperfine -N -w 3 -r 20 --export-json "$work/hf.json" \
  "$orvo source files $work/tldr" \
  "$orvo source files $work/tldr --json" \
  "$orvo source tree $work/tldr" >/dev/null
python3 - "$work/hf.json" <<'PY'
import json, sys
for r in json.load(open(sys.argv[1]))["results"]:
    cmd = r["command"].split("/bin/")[-1]
    print(f"  {cmd:60s} mean {r['mean']*1000:7.1f} ms  (min {r['min']*1000:.1f}, max {r['max']*1000:.1f})")
PY
mean=$(python3 -c "import json,sys; print(json.load(open(sys.argv[1]))['results'][0]['mean'])" "$work/hf.json")
python3 -c "import sys; m=float(sys.argv[1]); print(f'  target < 500 ms: {\"met\" if m < 0.5 else \"MISSED\"} ({m*1000:.1f} ms)')" "$mean"

echo "-- in process"
ORVO_EXTERNAL_BENCH_DIR="$work/tldr" "$build/bench/bench_external" --benchmark_min_time=0.5 2>/dev/null | grep -E '^BM_'

echo "-- orvo watch: resident memory and descriptors"
measure() {
  local dir="$1" err="$work/watch.err"
  : > "$err"
  "$orvo" watch "$dir" >/dev/null 2>"$err" &
  watch_pid=$!
  for _ in $(seq 100); do grep -q watching "$err" && break; sleep 0.05; done
  local rss fds watches
  rss=$(awk '/VmRSS/ {print $2}' "/proc/$watch_pid/status")
  fds=$(ls "/proc/$watch_pid/fd" | wc -l)
  watches=$(cat /proc/$watch_pid/fdinfo/* 2>/dev/null | grep -c '^inotify wd' || true)
  kill -TERM "$watch_pid"; wait "$watch_pid" || true; watch_pid=""
  echo "$rss $fds $watches"
}
read -r rss0 fds0 w0 < <(measure "$work/empty")
read -r rss1 fds1 w1 < <(measure "$work/tldr")
echo "  empty folder: RSS ${rss0} kB, ${fds0} descriptors, ${w0} inotify watches"
echo "  tldr pages:   RSS ${rss1} kB, ${fds1} descriptors, ${w1} inotify watches"
echo "  the tldr watch costs $((rss1 - rss0)) kB and $((fds1 - fds0)) extra descriptors (one inotify instance per source)"
