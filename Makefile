# Wraps the CMake presets; `make` alone lists the targets.

JOBS := $(shell nproc)
FUZZ_SECONDS := 60
SOAK_SECONDS := 600
FORMATTED := find Source Tests Examples Benchmarks Fuzzing \( -name '*.h' -o -name '*.cpp' \) -print0 | xargs -0 -r

.DEFAULT_GOAL := help
.PHONY: help run test bench format check-format tidy fuzz soak clean

help: ## list the targets
	@sed -n 's/^\([a-z-]*\):.*## \(.*\)/    make \1\t\2/p' $(MAKEFILE_LIST) | expand -t 24

run: ## build what is needed and show the road of one change, on the sample data
	@Scripts/install-dependencies
	cmake --preset dev
	cmake --build --preset dev --target TerminalHost
	build/dev/Examples/TerminalHost/TerminalHost --tour --verbose

test: ## build everything and run the tests
	@Scripts/install-dependencies console
	cmake --preset dev
	cmake --build --preset dev
	ctest --preset dev -j$(JOBS)

bench: ## measure speed and memory against floors; BENCH_FLAGS=--full for every size
	@Scripts/install-dependencies bench
	cmake --preset release -DQVL_BUILD_BENCHMARKS=ON
	cmake --build --preset release --target QuorvelBenchmarks
	build/release/Benchmarks/QuorvelBenchmarks $(BENCH_FLAGS)

format: ## format the sources in place
	@Scripts/install-dependencies format
	$(FORMATTED) clang-format -i

check-format: ## report sources that are not formatted
	@Scripts/install-dependencies format
	$(FORMATTED) clang-format --dry-run --Werror

tidy: ## build with clang and clang-tidy
	@Scripts/install-dependencies console tidy
	cmake --preset tidy
	cmake --build --preset tidy

fuzz: ## build the fuzzers and run each for a minute, or for FUZZ_SECONDS
	@Scripts/install-dependencies fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz
	Scripts/fuzz $(FUZZ_SECONDS)

soak: ## drive one host at random for ten minutes, or for SOAK_SECONDS, and check what must hold
	@Scripts/install-dependencies
	cmake --preset dev
	cmake --build --preset dev --target QuorvelTests
	QVL_SOAK_SECONDS=$(SOAK_SECONDS) build/dev/Tests/QuorvelTests --gtest_filter='Soak.*'

clean: ## remove all build trees
	rm -rf build
