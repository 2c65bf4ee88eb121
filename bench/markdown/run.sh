#!/usr/bin/env bash
# The rust-book chapters joined ten times (about 12 MB), rendered by Orvo's
# parser with its HTML renderer, by MarkdownWrap's full default render, by
# md4c and by cmark-gfm: each one's best time over interleaved rounds, its
# throughput and its peak memory.
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
rounds=5
repeat=3
pin=()
if command -v taskset >/dev/null; then
  pin=(taskset -c 0)
fi
# MarkdownWrap reads preferences: give it a settings folder of its own.
export XDG_CONFIG_HOME="$work/config" HOME="$work"

# Runs of a renderer: "name <bytes> <seconds> <MB/s>" on one line.
run() {
  case "$1" in
    md4c) "${pin[@]}" "$build/bench/md4c-render" "$input" "$repeat" ;;
    cmark-gfm)
      # The command line as a whole (start, read, render, write to /dev/null).
      local s
      s=$( { /usr/bin/time -f %e "${pin[@]}" cmark-gfm -e table -e strikethrough -e autolink -e tasklist \
             "$input" >/dev/null; } 2>&1 | tail -n 1)
      echo "cmark-gfm $bytes $s x" ;;
    *) "${pin[@]}" "$build/bench/markdown-bench" "${1#orvo-}" "$input" "$repeat" ;;
  esac
}

# Peak resident memory in MB of one run (GNU time).
peak() {
  local cmd
  case "$1" in
    md4c) cmd=("$build/bench/md4c-render" "$input" 1) ;;
    cmark-gfm) cmd=(cmark-gfm -e table -e strikethrough -e autolink -e tasklist "$input") ;;
    *) cmd=("$build/bench/markdown-bench" "${1#orvo-}" "$input" 1) ;;
  esac
  /usr/bin/time -f %M "${cmd[@]}" 2>&1 >/dev/null | tail -n 1 | awk '{ printf "%.1f", $1 / 1024 }'
}

names=(orvo-parser orvo-wrap orvo-wraptoc md4c)
command -v cmark-gfm >/dev/null && names+=(cmark-gfm)
declare -A best
# Interleaved rounds, so that a busy moment of the machine weighs on every
# renderer alike; the best time of each counts.
for _ in $(seq "$rounds"); do
  for name in "${names[@]}"; do
    s=$(run "$name" | awk '{ print $3 }')
    if [ -z "${best[$name]:-}" ] || awk -v a="$s" -v b="${best[$name]}" 'BEGIN { exit !(a < b) }'; then
      best[$name]=$s
    fi
  done
done

echo "input: $bytes bytes ($(echo "$chapters" | wc -l) chapters x 10); best of $rounds rounds x $repeat renders"
printf "%-14s %10s %8s %9s  %s\n" "renderer" "seconds" "MB/s" "peak MB" "what"
what() {
  case "$1" in
    orvo-parser) echo "parser + HTML renderer, bytes to bytes" ;;
    orvo-wrap) echo "MarkdownWrap, default preferences + typographic replacement, QString in and out" ;;
    orvo-wraptoc) echo "the same, also returning the table of contents (a second render)" ;;
    md4c) echo "md4c-html, output to a counting sink" ;;
    cmark-gfm) echo "cmark-gfm command line, including start-up and output" ;;
  esac
}
for name in "${names[@]}"; do
  s=${best[$name]}
  printf "%-14s %10s %8s %9s  %s\n" "$name" "$s" "$(awk -v b="$bytes" -v s="$s" 'BEGIN { printf "%.1f", b / 1e6 / s }')" \
    "$(peak "$name")" "$(what "$name")"
done
awk -v p="${best[orvo-parser]}" -v w="${best[orvo-wrap]}" -v m="${best[md4c]}" 'BEGIN {
  printf "parser + HTML: %.2f x md4c'\''s time (target <= 1.00)\n", p / m
  printf "full render:   %.2f x md4c'\''s time (target <= 1.50)\n", w / m
}'
