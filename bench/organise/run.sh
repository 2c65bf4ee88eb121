#!/usr/bin/env bash
# Library organisation on the tldr pages (7,425 short documents), one
# category per platform folder, measured as whole `orvo` commands:
#   import of every file into its category       target < 3 s
#   the tree with all counts                      target < 0.3 s
#   the "Inbox" list in its default order         target < 0.3 s
#   the "Inbox" list ordered by title             target < 0.6 s
#   a library search for a two-word phrase        target <= 3 x `rg -i -l -F` on the same files
set -euo pipefail

build="${ORVO_BENCH_BUILD:-$(cd "$(dirname "$0")/../.." && pwd)/build-bench}"
corpus="${ORVO_CORPUS_DIR:-$(cd "$(dirname "$0")/../../.." && pwd)/shared/corpus}/tldr/pages"
orvo="$build/bin/orvo"
runs="${ORVO_BENCH_RUNS:-10}"
phrase="list all"

for tool in hyperfine rg; do
  command -v "$tool" >/dev/null || { echo "organise: $tool is not installed" >&2; exit 1; }
done
[ -x "$orvo" ] || { echo "organise: $orvo is not built" >&2; exit 1; }
[ -d "$corpus" ] || { echo "organise: no corpus at $corpus" >&2; exit 1; }

work="$(mktemp -d "${TMPDIR:-/tmp}/orvo-bench-organise-XXXXXX")"
trap 'rm -rf "$work"' EXIT
# A user of its own: settings, the main library and the trash stay in here.
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share" \
  XDG_CACHE_HOME="$work/home/.cache"
mkdir -p "$HOME"

# An empty library with a category per platform folder; every import run
# starts from a copy of it.
"$orvo" library init "$work/template" >/dev/null
for dir in "$corpus"/*/; do
  name="$(basename "$dir")"
  id="$("$orvo" --library "$work/template" cat new "$name" | cut -f1)"
  printf '%s\t%s\n' "$name" "$id" >>"$work/categories"
done
cat >"$work/import.sh" <<SCRIPT
#!/usr/bin/env bash
set -e
while IFS=\$'\t' read -r name id; do
  "$orvo" --library "\$1" doc import --cat "\$id" "$corpus/\$name" >/dev/null
done <"$work/categories"
SCRIPT
chmod +x "$work/import.sh"

# The previous run's library is moved aside rather than deleted, so that
# deleting thousands of files does not slow down the next run's writes.
prepare="mv '$work/run' '$work/old' 2>/dev/null; rm -rf '$work/old' & cp -a '$work/template' '$work/run'"
hyperfine --style basic --runs 5 --prepare "$prepare" --export-csv "$work/import.csv" \
  -n "import" "$work/import.sh '$work/run'" >/dev/null

cp -a "$work/template" "$work/lib"
"$work/import.sh" "$work/lib"
count="$("$orvo" --library "$work/lib" doc list | wc -l)"
hyperfine --style basic -N --warmup 2 --runs "$runs" --export-csv "$work/lists.csv" \
  -n "tree" "$orvo --library $work/lib tree" \
  -n "inbox" "$orvo --library $work/lib doc list inbox" \
  -n "inbox-title" "$orvo --library $work/lib doc list inbox --sort title" \
  -n "search" "$orvo --library $work/lib search $phrase" \
  -n "rg" "rg -i -l -F '$phrase' $work/lib/docs" >/dev/null

mean() { awk -F, -v n="$1" '$1 == n { print $2 }' "$2"; }
rg_mean="$(mean rg "$work/lists.csv")"
report() { # name, mean seconds, limit seconds, label
  awk -v m="$2" -v l="$3" -v label="$4" 'BEGIN {
    printf "%-44s %8.3f s   limit %6.3f s   %s\n", label, m, l, (m <= l ? "ok" : "OVER") }'
}
echo "Library of $count documents from $corpus"
report import "$(mean import "$work/import.csv")" 3 "import of every file into its category"
report tree "$(mean tree "$work/lists.csv")" 0.3 "orvo tree (all counts)"
report inbox "$(mean inbox "$work/lists.csv")" 0.3 "orvo doc list inbox (newest first)"
report inbox-title "$(mean inbox-title "$work/lists.csv")" 0.6 "orvo doc list inbox --sort title"
report search "$(mean search "$work/lists.csv")" "$(awk -v r="$rg_mean" 'BEGIN { print 3 * r }')" \
  "orvo search $phrase (limit 3 x rg)"
awk -v r="$rg_mean" 'BEGIN { printf "%-44s %8.3f s\n", "rg -i -l -F (peer, same files)", r }'
