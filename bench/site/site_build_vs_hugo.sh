#!/usr/bin/env bash
# Site build: the 7,425 tldr pages as one site (a sub-category per platform,
# page size 10, category pages and feeds on, the shipped theme), built by
# `orvo site build` and, as the peer, by Hugo on an equivalent minimal site
# (list pages paged by 10, a taxonomy of platforms, RSS, sitemap).
#
# Figures: the best wall time of RUNS runs and the peak resident memory of
# a clearing build and of an update build with nothing changed, each beside
# Hugo's build (Hugo has no lighter rebuild than a build: its second run is
# the peer of our update build). Both use every core.
set -euo pipefail

build="${ORVO_BENCH_BUILD:?}"
here="$(cd "$(dirname "$0")" && pwd)"
corpus="${ORVO_CORPUS_DIR:-$here/../../../shared/corpus}/tldr/pages"
runs="${RUNS:-3}"
if [ ! -d "$corpus" ]; then
  echo "site build bench: no corpus at $corpus, skipped"
  exit 0
fi
if ! command -v hugo >/dev/null; then
  echo "site build bench: hugo is missing (scripts/install-deps installs it)" >&2
  exit 1
fi

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share" \
       XDG_CACHE_HOME="$work/home/.cache"
mkdir -p "$HOME"

site="$("$build/bench/site_bench_library" "$corpus" "$work/lib")"
orvo=("$build/bin/orvo" --library "$work/lib")

# The Hugo site: one content file per page with its platform as a taxonomy
# term, and templates doing what the shipped theme does at the least.
hs="$work/hugo"
mkdir -p "$hs/content/posts" "$hs/layouts/_default"
cat > "$hs/config.toml" <<'TOML'
baseURL = "https://tldr.example.org/"
title = "tldr pages"
disableKinds = []
paginate = 10
[taxonomies]
  platform = "platforms"
[outputs]
  home = ["HTML", "RSS"]
  section = ["HTML", "RSS"]
  taxonomy = ["HTML", "RSS"]
  term = ["HTML", "RSS"]
TOML
cat > "$hs/layouts/_default/baseof.html" <<'HTML'
<!DOCTYPE html><html><head><meta charset="utf-8"><title>{{ .Title }} - {{ .Site.Title }}</title>
<link rel="stylesheet" href="/asset/css/style.css"></head><body>
<header><a href="/">{{ .Site.Title }}</a> <a href="/posts/">Archives</a></header>
<main>{{ block "main" . }}{{ end }}</main>
<aside><h3>Recent</h3><ul>{{ range first 20 .Site.RegularPages }}<li><a href="{{ .RelPermalink }}">{{ .Title }}</a></li>{{ end }}</ul>
<h3>Platforms</h3><ul>{{ range .Site.Taxonomies.platforms }}<li><a href="{{ .Page.RelPermalink }}">{{ .Page.Title }}</a> {{ .Count }}</li>{{ end }}</ul></aside>
</body></html>
HTML
cat > "$hs/layouts/_default/single.html" <<'HTML'
{{ define "main" }}<article><h1>{{ .Title }}</h1><time>{{ .Date.Format "1/2/2006 15:4 PM" }}</time>
{{ range .Params.platforms }}<a href="/platforms/{{ . | urlize }}/">{{ . }}</a>{{ end }}
{{ .Content }}
{{ with .PrevInSection }}<a href="{{ .RelPermalink }}">{{ .Title }}</a>{{ end }}{{ with .NextInSection }}<a href="{{ .RelPermalink }}">{{ .Title }}</a>{{ end }}</article>{{ end }}
HTML
cat > "$hs/layouts/_default/list.html" <<'HTML'
{{ define "main" }}<h1>{{ .Title }}</h1>{{ $pages := .Pages }}{{ if .IsHome }}{{ $pages = .Site.RegularPages }}{{ end }}
{{ $p := .Paginate $pages }}{{ range $p.Pages }}<article><h2><a href="{{ .RelPermalink }}">{{ .Title }}</a></h2>
<time>{{ .Date.Format "1/2/2006" }}</time><p>{{ .Summary | plainify | truncate 300 }}</p></article>{{ end }}
{{ if $p.HasPrev }}<a href="{{ $p.Prev.URL }}">Previous</a>{{ end }}{{ if $p.HasNext }}<a href="{{ $p.Next.URL }}">Next</a>{{ end }}{{ end }}
HTML
mkdir -p "$hs/static/asset/css"
cp "$here/../../resources/PreviewAsset/SiteThemes/site-medium-like/asset/css/style.css" "$hs/static/asset/css/"
i=0
for dir in "$corpus"/*/; do
  platform="$(basename "$dir")"
  for f in "$dir"*.md; do
    i=$((i + 1))
    name="$(basename "$f" .md)"
    title="$(head -n1 "$f" | sed 's/^# *//; s/"/\\"/g')"
    {
      printf -- '---\ntitle: "%s"\ndate: %s\nplatforms: ["%s"]\n---\n' "$title" \
        "$(date -u -d "@$((1500000000 + i * 60))" +%Y-%m-%dT%H:%M:%SZ)" "$platform"
      tail -n +2 "$f"
    } > "$hs/content/posts/$platform-$name.md"
  done
done

measure() { # label, then the command; prints "seconds peak-KB" of the best run
  local label="$1"; shift
  local best="" mem=""
  for _ in $(seq "$runs"); do
    local out
    out="$( { /usr/bin/time -f '%e %M' "$@" >/dev/null 2>/dev/null; } 2>&1 | tail -n1)"
    local t="${out% *}" m="${out#* }"
    if [ -z "$best" ] || awk "BEGIN{exit !($t < $best)}"; then best="$t"; fi
    if [ -z "$mem" ] || [ "$m" -gt "$mem" ]; then mem="$m"; fi
  done
  printf '%-34s %8.2f s %8d MB\n' "$label" "$best" "$((mem / 1024))"
  eval "${label//[^a-z]/_}=$best"
}

clear_build() { "${orvo[@]}" site build "$site" --clear --output "$work/out"; }
update_build() { "${orvo[@]}" site build "$site" --output "$work/out"; }
hugo_build() { rm -rf "$work/hugo-out"; hugo --quiet -s "$hs" -d "$work/hugo-out"; }
hugo_rebuild() { hugo --quiet -s "$hs" -d "$work/hugo-out"; }

clear_build >/dev/null # a first build makes the folders; what follows is steady state
echo "site build, tldr (7,425 pages), best of $runs:"
measure "orvo clearing build" clear_build
measure "orvo update build, nothing changed" update_build
measure "hugo build" hugo_build
measure "hugo build again, nothing changed" hugo_rebuild
awk -v c="$orvo_clearing_build" -v u="$orvo_update_build__nothing_changed" -v h="$hugo_build" \
    -v h2="$hugo_build_again__nothing_changed" 'BEGIN {
  printf "clearing build / hugo build: %.2f (target <= 0.50)\n", c / h
  printf "update build / hugo build again: %.2f (target <= 0.25)\n", u / h2 }'
echo "pages: orvo $(find "$work/out/tldr" -name '*.html' | wc -l) html, hugo $(find "$work/hugo-out" -name '*.html' | wc -l) html"
