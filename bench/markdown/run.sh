#!/usr/bin/env bash
# The rust-book chapters joined ten times (about 12 MB), rendered by Orvo's
# parser with its HTML renderer, by MarkdownWrap's full default render, by
# md4c and by cmark-gfm, with each one's time, throughput and peak memory.
set -euo pipefail
build="${ORVO_BENCH_BUILD:?}"
corpus="${ORVO_CORPUS_DIR:?}"
book="$corpus/rust-book/src"
if [ ! -d "$book" ]; then
  echo "markdown: the rust-book corpus is absent ($book), skipped"
  exit 0
fi
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
input="$work/rust-book-x10.md"
chapters=$(ls "$book"/*.md | sort)
for _ in 1 2 3 4 5 6 7 8 9 10; do
  # shellcheck disable=SC2086
  cat $chapters
done > "$input"
bytes=$(stat -c %s "$input")
repeat=7
pin=()
if command -v taskset >/dev/null; then
  pin=(taskset -c 0)
fi
# MarkdownWrap reads preferences: give it a settings folder of its own.
export XDG_CONFIG_HOME="$work/config" HOME="$work"

# Peak resident memory in MB of one run of a command (GNU time).
peak() {
  /usr/bin/time -f %M "$@" 2>&1 >/dev/null | tail -n 1 | awk '{ printf "%.1f", $1 / 1024 }'
}

echo "input: $bytes bytes ($(echo "$chapters" | wc -l) chapters x 10)"
printf "%-16s %10s %10s %10s\n" "renderer" "seconds" "MB/s" "peak MB"
line() { # name seconds mbps peak
  printf "%-16s %10s %10s %10s\n" "$1" "$2" "$3" "$4"
}
for mode in parser wrap wraptoc; do
  read -r _ _ s mbps < <("${pin[@]}" "$build/bench/markdown-bench" "$mode" "$input" "$repeat")
  line "orvo-$mode" "$s" "$mbps" "$(peak "$build/bench/markdown-bench" "$mode" "$input" 1)"
done
read -r _ _ s mbps < <("${pin[@]}" "$build/bench/md4c-render" "$input" "$repeat")
md4c_s=$s
line "md4c" "$s" "$mbps" "$(peak "$build/bench/md4c-render" "$input" 1)"
if command -v cmark-gfm >/dev/null; then
  # The command line as a whole (start, read, render, write to /dev/null),
  # best of the repeats.
  best=""
  for _ in $(seq "$repeat"); do
    t=$( { /usr/bin/time -f %e "${pin[@]}" cmark-gfm -e table -e strikethrough -e autolink -e tasklist \
           "$input" >/dev/null; } 2>&1 | tail -n 1)
    if [ -z "$best" ] || awk -v a="$t" -v b="$best" 'BEGIN { exit !(a < b) }'; then best=$t; fi
  done
  line "cmark-gfm" "$best" "$(awk -v b="$bytes" -v s="$best" 'BEGIN { printf "%.1f", b / 1e6 / s }')" \
    "$(peak cmark-gfm -e table -e strikethrough -e autolink -e tasklist "$input")"
fi
parser_s=$("$build/bench/markdown-bench" parser "$input" "$repeat" | awk '{ print $3 }')
wrap_s=$("$build/bench/markdown-bench" wrap "$input" "$repeat" | awk '{ print $3 }')
awk -v p="$parser_s" -v w="$wrap_s" -v m="$md4c_s" 'BEGIN {
  printf "parser+HTML vs md4c: %.2fx md4c'\''s time (target <= 1.00)\n", p / m
  printf "full render vs md4c: %.2fx md4c'\''s time (target <= 1.50)\n", w / m
}'
