#!/usr/bin/env bash
# Template engine: expansions per second of a realistic post page, on one
# core (items_per_second is expansions per second).
set -euo pipefail
bin="$ORVO_BENCH_BUILD/bench/site_template_bench"
pin=()
if command -v taskset >/dev/null; then
  pin=(taskset -c 0)
fi
"${pin[@]}" "$bin" --benchmark_min_time=2 --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  --benchmark_counters_tabular=true
# The whole site build beside Hugo.
"$(dirname "$0")/site_build_vs_hugo.sh"
