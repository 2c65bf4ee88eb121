#!/usr/bin/env bash
# The editor and live preview on the rust-book chapters joined into one
# document (about 1.2 MB), on the offscreen platform: main-thread time per
# keystroke while typing 200 characters in the middle, time from the last
# keystroke to the highlighted state, and preview update time after an edit.
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
# A home of its own: the bench reads default preferences and writes nothing
# of the user's.
mkdir -p "$tmp/home/.config" "$tmp/home/.local/share" "$tmp/home/.cache" "$tmp/home/runtime"
chmod 700 "$tmp/home/runtime"
HOME="$tmp/home" XDG_CONFIG_HOME="$tmp/home/.config" XDG_DATA_HOME="$tmp/home/.local/share" \
XDG_CACHE_HOME="$tmp/home/.cache" XDG_RUNTIME_DIR="$tmp/home/runtime" \
QT_QPA_PLATFORM=offscreen QTWEBENGINE_DISABLE_SANDBOX=1 QTWEBENGINE_CHROMIUM_FLAGS="--no-sandbox --disable-gpu" \
ORVO_RESOURCES_DIR="$build/share/orvo" \
  "$build/bench/writing-bench" "$tmp/book.md" 2> >(grep -v -e '^$' -e 'propagateSizeHints' >&2)
