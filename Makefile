# Thin driver over CMake. The two set-up commands are `make demo` and `make test`.
BUILD       ?= build
BUILD_ASAN  ?= build-asan
BUILD_BENCH ?= build-release
BUILD_FUZZ  ?= build-fuzz
BUILD_RELEASE ?= build-release-check
BUILD_CLANG ?= build-clang
BUILD_TSAN  ?= build-tsan
FUZZ_SECONDS ?= 60
PREFIX      ?= /usr/local
JOBS        ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_ARGS  ?=

MAKEFLAGS  += --no-print-directory

# Developer and CI builds treat warnings as errors; a plain CMake build does not.
CONFIGURE = cmake -DQOMATH_WERROR=ON -S . -B
BUILD_CMD = cmake --build

.PHONY: all build demo test sanitize tsan release-check clang-check bench fuzz install data clean

all: build

build:
	@tools/ensure-deps.sh build
	@$(CONFIGURE) $(BUILD) $(CMAKE_ARGS) >/dev/null
	@$(BUILD_CMD) $(BUILD) -j $(JOBS)

# Builds everything and analyses the bundled example spectra.
demo: build
	$(BUILD)/cli/qomath version
	@echo
	$(BUILD)/cli/qomath analyze examples
	@echo
	$(BUILD)/cli/qomath analyze --csv -o $(BUILD)/demo.csv examples
	$(BUILD)/cli/qomath analyze --compat --csv -o $(BUILD)/demo-compat.csv examples
	@echo
	@echo "The white LED's data lines alone, as two-column text on standard input:"
	grep -E '^[0-9.]+, ' examples/white_led_v2.txt | $(BUILD)/cli/qomath analyze --unit irradiance -
	$(BUILD)/cli/qomath plot examples/white_led_v2.txt -o $(BUILD)/demo.svg
	$(BUILD)/cli/qomath plot examples/white_led_v2.txt --tm30 -o $(BUILD)/demo-tm30.svg
	@echo
	@echo "CSV of the same results: $(BUILD)/demo.csv (and with --compat: $(BUILD)/demo-compat.csv)"
	@echo "Picture of the white LED's spectrum and chromaticity: $(BUILD)/demo.svg"
	@echo "Its TM-30 colour vector graphic: $(BUILD)/demo-tm30.svg"

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The tests again, built with AddressSanitizer and UndefinedBehaviorSanitizer.
sanitize:
	@tools/ensure-deps.sh test
	@$(CONFIGURE) $(BUILD_ASAN) -DCMAKE_BUILD_TYPE=Debug -DQOMATH_SANITIZE=ON $(CMAKE_ARGS) >/dev/null
	@$(BUILD_CMD) $(BUILD_ASAN) -j $(JOBS)
	cd $(BUILD_ASAN) && ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --output-on-failure -j $(JOBS)

# The tests that run threads (the registry, the program's parallel batches)
# built with ThreadSanitizer.
tsan:
	@tools/ensure-deps.sh test
	@$(CONFIGURE) $(BUILD_TSAN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQOMATH_TSAN=ON $(CMAKE_ARGS) >/dev/null
	@$(BUILD_CMD) $(BUILD_TSAN) -j $(JOBS)
	cd $(BUILD_TSAN) && TSAN_OPTIONS=halt_on_error=1 ctest --output-on-failure -j $(JOBS) -R 'Registry|Analyze|Dominant'

# The optimised build with its tests: warnings that only optimisation
# brings out (GCC's -Wrestrict, -Wstringop-*) stop it here.
release-check:
	@tools/ensure-deps.sh test
	@$(CONFIGURE) $(BUILD_RELEASE) -DCMAKE_BUILD_TYPE=Release $(CMAKE_ARGS) >/dev/null
	@$(BUILD_CMD) $(BUILD_RELEASE) -j $(JOBS)
	cd $(BUILD_RELEASE) && ctest --output-on-failure -j $(JOBS)

# Everything built with clang as well (Debug, warnings as errors), tests run.
clang-check:
	@tools/ensure-deps.sh test fuzz
	@CC=clang CXX=clang++ $(CONFIGURE) $(BUILD_CLANG) -DCMAKE_BUILD_TYPE=Debug $(CMAKE_ARGS) >/dev/null
	@$(BUILD_CMD) $(BUILD_CLANG) -j $(JOBS)
	cd $(BUILD_CLANG) && ctest --output-on-failure -j $(JOBS)

bench:
	@tools/ensure-deps.sh bench
	@$(CONFIGURE) $(BUILD_BENCH) -DCMAKE_BUILD_TYPE=Release -DQOMATH_BUILD_BENCH=ON \
	  -DQOMATH_BUILD_TESTS=OFF $(CMAKE_ARGS) >/dev/null
	@$(BUILD_CMD) $(BUILD_BENCH) -j $(JOBS)
	$(BUILD_BENCH)/bench/qomath_bench --benchmark_repetitions=5 \
	  --benchmark_report_aggregates_only=true $(BENCH_ARGS)

# Each spectral-file reader under libFuzzer (clang, ASan + UBSan), seeded
# from examples/, for FUZZ_SECONDS seconds each.
fuzz:
	@tools/ensure-deps.sh fuzz
	@CC=clang CXX=clang++ $(CONFIGURE) $(BUILD_FUZZ) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DQOMATH_BUILD_FUZZ=ON -DQOMATH_BUILD_TESTS=OFF -DQOMATH_BUILD_CLI=OFF $(CMAKE_ARGS) >/dev/null
	@$(BUILD_CMD) $(BUILD_FUZZ) -j $(JOBS)
	tools/run-fuzzers.sh $(BUILD_FUZZ)/fuzz $(FUZZ_SECONDS)

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

# Regenerates the stored, generated tables in data/ from their generators.
data: build
	$(BUILD)/tools/qomath_gen_locus data/cie1931_locus_0p1nm.csv
	$(BUILD)/tools/qomath_gen_isotemperature data/isotemperature_1mired.csv
	$(BUILD)/tools/qomath_gen_white_led data/white_led_raw_1024.csv
	$(BUILD)/tools/qomath_gen_examples examples

clean:
	rm -rf $(BUILD) $(BUILD_ASAN) $(BUILD_BENCH) $(BUILD_FUZZ) $(BUILD_RELEASE) $(BUILD_CLANG) $(BUILD_TSAN)
