#!/usr/bin/env bash
# The desktop app over a library of the 7,425 tldr pages (one category per
# platform): time from launch to the first painted window with the "Inbox"
# list filled (target under 1.5 s), switching between the tree's entries with
# the list filled and painted (target under 100 ms), and the resident memory
# of the running app. Runs on a virtual X display (xvfb-run).
set -euo pipefail
build="${ORVO_BENCH_BUILD:?}"
corpus="${ORVO_CORPUS_DIR:?}/tldr/pages"
orvo="$build/bin/orvo"
app="$build/bin/orvo-app"
[ -d "$corpus" ] || { echo "no tldr corpus at $corpus"; exit 1; }
command -v xvfb-run >/dev/null || { echo "xvfb-run is not installed"; exit 1; }

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
# A user of its own, so no real settings or library are touched.
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share" \
       XDG_CACHE_HOME="$work/home/.cache" QTWEBENGINE_DISABLE_SANDBOX=1
mkdir -p "$HOME"
lib="$work/lib"
"$orvo" library init "$lib" >/dev/null
for platform in "$corpus"/*/; do
  name="$(basename "$platform")"
  cat=$("$orvo" --library "$lib" cat new "$name" --json | python3 -c 'import json,sys; print(json.load(sys.stdin)["uuid"])')
  "$orvo" --library "$lib" doc import --cat "$cat" "$platform" >/dev/null
done
docs=$(find "$lib/docs" -maxdepth 1 -name '*.md' | wc -l)
echo "library: $docs documents"

runs=5
: > "$work/report"
for i in $(seq $runs); do
  start=$(date +%s%3N)
  out=$(xvfb-run -a -s "-screen 0 1600x1000x24" "$app" --library "$lib" --startup-report)
  end_ready=$(echo "$out" | awk -F= '/^first_window_epoch_ms=/ {print $2}')
  echo "$out" | sed "s/^/run$i /" >> "$work/report"
  echo "run$i launch_to_window_ms=$((end_ready - start))" >> "$work/report"
done
python3 - "$work/report" "$runs" <<'PY'
import sys, statistics, collections
vals = collections.defaultdict(list)
for line in open(sys.argv[1]):
    run, kv = line.split(" ", 1)
    k, v = kv.strip().split("=")
    vals[k].append(float(v))
med = lambda k: statistics.median(vals[k])
print(f"  launch to first painted window, Inbox filled: median {med('launch_to_window_ms'):.0f} ms "
      f"(in-process from main: {med('first_window_ms'):.0f} ms; {int(med('list_rows'))} rows)  "
      f"target < 1500 ms: {'met' if med('launch_to_window_ms') < 1500 else 'MISSED'}")
print(f"  switching entries: mean {med('switch_mean_ms'):.1f} ms, slowest {med('switch_max_ms'):.1f} ms  "
      f"target < 100 ms: {'met' if med('switch_max_ms') < 100 else 'MISSED'}")
print(f"  resident memory after the switches: {med('rss_kib')/1024:.0f} MiB")
PY
