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
# One pass of awk writes every content file (a process per file would take
# longer than the builds measured). Dates are a minute apart, as in the
# library the other side builds.
awk -v out="$hs/content/posts" '
  function flush() { if (file != "") close(file) }
  FNR == 1 {
    flush(); n++
    count = split(FILENAME, parts, "/"); platform = parts[count - 1]; name = parts[count]; sub(/\.md$/, "", name)
    file = out "/" platform "-" name ".md"
    title = $0; sub(/^# */, "", title); gsub(/"/, "\\\"", title)
    minutes = n; day = int(minutes / 1440); minutes %= 1440
    printf "---\ntitle: \"%s\"\ndate: 2017-01-%02dT%02d:%02d:00Z\nplatforms: [\"%s\"]\n---\n", title, day + 1,
      int(minutes / 60), minutes % 60, platform > file
    next
  }
  { gsub(/\{\{</, "{{ <"); gsub(/\{\{%/, "{{ %"); print > file } # not Hugo shortcodes
  END { flush() }' $(find "$corpus" -name '*.md' | sort)

measure() { # label, a preparing function (not timed), then the command; prints the best time, peak memory
  local label="$1" prepare="$2"; shift 2
  local best="" mem=""
  for _ in $(seq "$runs"); do
    "$prepare"
    /usr/bin/time -o "$work/time" -f '%e %M' "$@" >/dev/null 2>&1
    local out
    out="$(tail -n1 "$work/time")"
    local t="${out% *}" m="${out#* }"
    if [ -z "$best" ] || awk "BEGIN{exit !($t < $best)}"; then best="$t"; fi
    if [ -z "$mem" ] || [ "$m" -gt "$mem" ]; then mem="$m"; fi
  done
  printf '%-36s %8.2f s %6d MB\n' "$label" "$best" "$((mem / 1024))"
  eval "${label//[^a-z]/_}=$best"
}

nothing() { :; }
clear_hugo_output() { rm -rf "$work/hugo-out"; }
clear_orvo_output() { rm -rf "$work/out"; }

"${orvo[@]}" site build "$site" --clear --output "$work/out" >/dev/null # makes the folders
echo "site build, tldr (7,425 pages), best of $runs:"
measure "orvo first build, empty folder" clear_orvo_output "${orvo[@]}" site build "$site" --output "$work/out"
measure "orvo clearing build" nothing "${orvo[@]}" site build "$site" --clear --output "$work/out"
measure "orvo update build, nothing changed" nothing "${orvo[@]}" site build "$site" --output "$work/out"
measure "hugo build" clear_hugo_output hugo --quiet -s "$hs" -d "$work/hugo-out"
measure "hugo build again, nothing changed" nothing hugo --quiet -s "$hs" -d "$work/hugo-out"
awk -v f="$orvo_first_build__empty_folder" -v c="$orvo_clearing_build" -v u="$orvo_update_build__nothing_changed" -v h="$hugo_build" \
    -v h2="$hugo_build_again__nothing_changed" 'BEGIN {
  printf "first build / hugo build: %.2f\n", f / h
  printf "clearing build / hugo build: %.2f (target <= 0.50)\n", c / h
  printf "update build / hugo build again: %.2f (target <= 0.25)\n", u / h2 }'
echo "pages: orvo $(find "$work/out/tldr" -name '*.html' | wc -l) html, hugo $(find "$work/hugo-out" -name '*.html' | wc -l) html"
