#!/usr/bin/env bash
# The highlight grammar on a whole book beside md4c on the same file, in the
# same run: the rust-book chapters of the corpus joined into one file (about
# 1.2 MB), each program taking the best of 20 runs, twice in turn.
# Target: at most twice md4c's time, peak heap a few times the input.
set -euo pipefail
build="${ORVO_BENCH_BUILD:?}"
book="${ORVO_CORPUS_DIR:?}/rust-book/src"
if [ ! -d "$book" ]; then
  echo "skipped: no corpus at $book"
  exit 0
fi
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
find "$book" -maxdepth 1 -name '*.md' | LC_ALL=C sort | xargs cat > "$tmp/book.md"

best() { sort -k3 -g | head -n 1; }
md4c=$( { "$build/bench/md4c-render" "$tmp/book.md" 20; "$build/bench/md4c-render" "$tmp/book.md" 20; } | best)
pmh_runs=$( { "$build/bench/highlight-bench" "$tmp/book.md" 20; "$build/bench/highlight-bench" "$tmp/book.md" 20; } )
pmh=$(grep -v peak-heap <<<"$pmh_runs" | best)
memory=$(grep peak-heap <<<"$pmh_runs" | head -n 1)

echo "$md4c"
echo "$pmh"
echo "$memory"
awk -v a="$pmh" -v b="$md4c" 'BEGIN { split(a, p, " "); split(b, m, " ");
  printf "pmh_parser/md4c time %.2f (target at most 2.00)\n", p[3] / m[3] }'
