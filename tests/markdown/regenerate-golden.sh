#!/usr/bin/env bash
# Rewrites the expected output of every golden file under tests/data/markdown
# from the current build. Only files that already exist are rewritten: to add
# a variant, create an empty <feature>.<variant>.html first. Review the diff
# (git diff tests/data/markdown) before committing.
set -euo pipefail
here="$(cd "$(dirname "$0")/../.." && pwd)"
build="${1:-$here/build}"
cmake --build "$build" --target markdown_tests
ORVO_REGEN_GOLDEN=1 ORVO_TEST_DATA_DIR="$here/tests/data" "$build/tests/markdown_tests" --gtest_filter='Markdown/Golden.*' >/dev/null
git -C "$here" status --short tests/data/markdown
