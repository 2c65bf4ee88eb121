# Thin wrappers over scripts/ and CMake. `make run` and `make test` set up a
# fresh machine on their own (scripts/install-deps is idempotent).
BUILD       ?= build
ASAN_BUILD  ?= build-asan
BENCH_BUILD ?= build-bench
FUZZ_BUILD  ?= build-fuzz
PREFIX      ?= /usr/local
JOBS        ?= $(shell nproc)
FUZZ_SECONDS ?= 60
CTEST_ARGS  ?=

CMAKE_GEN := -G Ninja

.PHONY: all deps configure build run test test-fast test-asan bench fuzz format install clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) $(CMAKE_GEN) -DORVO_WERROR=ON >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# The desktop app on the main library (or the first-run wizard).
run: build
	@scripts/run-app $(BUILD)

# Every test: the full build, then the engines again under ASan and UBSan.
test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS) $(CTEST_ARGS)
	@$(MAKE) --no-print-directory test-asan

# The tests of the full build only (no sanitizer pass), for quick iterations.
test-fast: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS) $(CTEST_ARGS)

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD) $(CMAKE_GEN) -DORVO_SANITIZE=ON -DORVO_WERROR=ON -DCMAKE_BUILD_TYPE=Debug >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS) --target orvo_all_tests
	@cd $(ASAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --output-on-failure -j $(JOBS) $(CTEST_ARGS)

# Benchmarks against the peers named in each bench/*/run.sh, in one run.
bench: deps
	@cmake -S . -B $(BENCH_BUILD) $(CMAKE_GEN) -DORVO_BENCH=ON -DCMAKE_BUILD_TYPE=Release >/dev/null
	@cmake --build $(BENCH_BUILD) -j $(JOBS)
	@scripts/run-benchmarks $(BENCH_BUILD)

# libFuzzer targets, each for FUZZ_SECONDS, from their seed corpora.
fuzz: deps
	@CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) $(CMAKE_GEN) -DORVO_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build $(FUZZ_BUILD) -j $(JOBS)
	@scripts/run-fuzzers $(FUZZ_BUILD) $(FUZZ_SECONDS)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

install: build
	@cmake --install $(BUILD) --prefix $(PREFIX)

clean:
	@rm -rf $(BUILD) $(ASAN_BUILD) $(BENCH_BUILD) $(FUZZ_BUILD)
