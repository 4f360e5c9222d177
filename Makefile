# Front door of the project: every target installs what it lacks (scripts/setup.sh), configures and builds.
BUILD ?= build
PREFIX ?= /usr/local
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
FRAMES ?= 200000
SECONDS ?= 60
FAULTS ?=
# Builds of their own; one folder may serve for both.
ASAN_BUILD ?= $(BUILD)-asan
FUZZ_BUILD ?= $(BUILD)-fuzz
PACKAGE_BUILD ?= $(BUILD)-packages

# cmake starts a make of its own with its own -j, which is not to take itself for a part of this one.
standalone = env -u MAKEFLAGS -u MFLAGS -u MAKELEVEL

setup = @scripts/setup.sh
compile = $(standalone) cmake --build $(1) -j $(JOBS)
run_tests = $(standalone) ctest --test-dir $(1) --output-on-failure -j $(JOBS)

# A first configuration leaves out tests and benchmarks, so that building and the demo do not need their
# packages; `make test` and `make bench` turn them on for good. It reads the large headers once: sooner built.
first_time = $(if $(wildcard $(BUILD)/CMakeCache.txt),,-DZELWELD_BUILD_TESTS=OFF -DZELWELD_BUILD_BENCHMARKS=OFF -DZELWELD_PRECOMPILE=ON)
configure = cmake -S . -B $(BUILD) $(first_time) $(CMAKE_FLAGS)

# Where below PREFIX the configured build puts the library.
libdir = sed -n "s/^CMAKE_INSTALL_LIBDIR:[A-Z]*=//p" $(BUILD)/CMakeCache.txt

.PHONY: build demo python wheel test test-asan test-tsan test-valgrind test-arm fuzz fuzz-replay soak coverage lint build-clang bench \
  faults bench-compare accuracy docs picture install format clean help

build: ## build the library, the program zelweld and the examples (the default)
	$(setup) build
	$(configure)
	$(call compile,$(BUILD))

demo: ## simulate seams, track them, leave annotated frames and report.html in demo-out/
	$(setup) build
	$(configure)
	$(call compile,$(BUILD)) --target zelweld_demo zelweld
	$(BUILD)/tools/zelweld_demo --out demo-out
	@echo "Try next:"
	@echo "  $(BUILD)/tools/zelweld track demo-out/frames --type lap --explain"
	@echo "  $(BUILD)/tools/zelweld report demo-out/frames --type lap --set minStepPx=40 --out demo-out/high_limit.html"
	@echo "  $(BUILD)/tools/zelweld sweep demo-out/frames --type lap --set minStepPx=5:40:5"

python: ## build the Python module zelweld in build/python
	$(setup) build python
	$(configure) -DZELWELD_BUILD_PYTHON=ON
	$(call compile,$(BUILD)) --target zelweld_core zelweld
	@echo "Try: PYTHONPATH=$(BUILD)/python /usr/bin/python3 -c 'import zelweld; help(zelweld)'"

wheel: python ## build the Python package as build/wheel/*.whl
	$(standalone) ZELWELD_BUILD=$(BUILD) /usr/bin/python3 -m pip wheel . --no-build-isolation --no-deps -w $(BUILD)/wheel

test: ## build and run all tests
	$(setup) build python test
	@scripts/fetch-axe.sh $(BUILD)/axe.min.js
	$(configure) -DZELWELD_BUILD_TESTS=ON -DZELWELD_BUILD_PYTHON=ON
	$(call compile,$(BUILD))
	$(call run_tests,$(BUILD))

test-asan: ## the tests under the address and undefined-behaviour sanitizers
	$(setup) build test
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DZELWELD_SANITIZE=ON -DZELWELD_BUILD_BENCHMARKS=OFF $(CMAKE_FLAGS)
	$(call compile,$(ASAN_BUILD))
	$(call run_tests,$(ASAN_BUILD))

test-tsan: ## trackers and plain calls on many threads, under the thread sanitizer
	$(setup) build test
	cmake -S . -B $(BUILD)-tsan -DCMAKE_BUILD_TYPE=Debug -DZELWELD_SANITIZE_THREAD=ON -DZELWELD_BUILD_BENCHMARKS=OFF $(CMAKE_FLAGS)
	$(call compile,$(BUILD)-tsan) --target test_threads test_support
	$(BUILD)-tsan/tests/test_support --gtest_filter='Plugs.*'
	$(BUILD)-tsan/tests/test_threads

soak: ## a long run of FRAMES mixed frames, twice: memory must stay flat, results the same (default 200000)
	$(setup) build test
	$(configure) -DZELWELD_BUILD_TESTS=ON
	$(call compile,$(BUILD)) --target soak
	$(BUILD)/tests/soak $(FRAMES)

test-valgrind: ## one pass of the scenarios and of every unit under valgrind
	$(setup) build test valgrind
	$(configure) -DZELWELD_BUILD_TESTS=ON
	$(call compile,$(BUILD)) --target library_tests
	$(standalone) scripts/test-valgrind.sh $(BUILD)/tests

faults: ## try deliberate faults: which tests catch them; options in FAULTS, as FAULTS='--folder stripe'
	$(setup) build test
	$(standalone) scripts/deliberate_faults.py --scratch $(BUILD)-faults --jobs $(JOBS) $(FAULTS)

coverage: ## which lines of src/ the tests run; fails below 95 %
	$(setup) build test coverage
	cmake -S . -B $(BUILD)-coverage -DCMAKE_BUILD_TYPE=Debug -DZELWELD_COVERAGE=ON -DZELWELD_BUILD_BENCHMARKS=OFF $(CMAKE_FLAGS)
	$(call compile,$(BUILD)-coverage) --target library_tests
	$(standalone) scripts/coverage.sh $(BUILD)-coverage $(JOBS)

LINT ?= src tools scenes

lint: ## clang-tidy and cppcheck over the folders of LINT
	$(setup) build lint
	$(configure)
	$(standalone) scripts/lint.sh $(BUILD) $(JOBS) $(LINT)

test-arm: ## the tests that hold results to the bit, on 64-bit ARM under qemu
	$(setup) arm
	$(standalone) scripts/test-arm.sh $(BUILD)-arm $(JOBS) $(CMAKE_FLAGS)

# A first configuration leaves out what the fuzz targets do without.
fuzz_alone = $(if $(wildcard $(FUZZ_BUILD)/CMakeCache.txt),,-DZELWELD_BUILD_TESTS=OFF -DZELWELD_BUILD_EXAMPLES=OFF \
  -DZELWELD_BUILD_BENCHMARKS=OFF)

define build_fuzz
$(setup) build fuzz
cmake -S . -B $(FUZZ_BUILD) -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug -DZELWELD_SANITIZE=ON \
  -DZELWELD_BUILD_FUZZERS=ON $(fuzz_alone) $(CMAKE_FLAGS)
$(call compile,$(FUZZ_BUILD)) --target fuzz_programs
endef

fuzz: ## look for crashes with random input: make fuzz SECONDS=60 for each fuzz target
	$(build_fuzz)
	scripts/fuzz.sh $(FUZZ_BUILD) $(SECONDS)

fuzz-replay: ## run the seeds and the cases of fuzz/cases once
	$(build_fuzz)
	scripts/fuzz.sh $(FUZZ_BUILD) 0

build-clang: ## build everything with clang
	$(setup) build test bench clang
	cmake -S . -B $(BUILD)-clang -DCMAKE_CXX_COMPILER=clang++ $(CMAKE_FLAGS)
	$(call compile,$(BUILD)-clang)

bench: ## build and run the benchmarks
	$(setup) build bench
	$(configure) -DZELWELD_BUILD_BENCHMARKS=ON
	$(call compile,$(BUILD)) --target bench

bench-compare: ## time whole calls of this tree and of another commit in turn: make bench-compare REV=HEAD~1
	$(setup) build bench
	$(configure) -DZELWELD_BUILD_BENCHMARKS=ON
	$(call compile,$(BUILD)) --target bench_paired
	scripts/bench-compare.sh "$(REV)" $(BUILD)/benchmarks/bench_paired

accuracy: ## print tables of errors, false reports and claims; fails where one got worse than is known
	$(setup) build test
	$(configure) -DZELWELD_BUILD_TESTS=ON
	$(call compile,$(BUILD)) --target accuracy

docs: ## write docs/parameters.md and its drawings anew
	$(setup) build
	$(configure)
	$(call compile,$(BUILD)) --target parameter_page
	$(BUILD)/tools/parameter_page docs

pages: ## write the API pages to build/pages; fails on a public name without a comment and on a broken link
	$(setup) build pages
	$(configure)
	scripts/pages/make.sh $(BUILD) $(BUILD)/pages

picture: build ## draw the picture of README.md anew
	scripts/readme_picture.sh $(BUILD)/tools/zelweld docs/images/seam.png

install: build ## install to PREFIX (default /usr/local), so that programs find the library there
	cmake --install $(BUILD) --prefix "$(PREFIX)"
	@case "$(DESTDIR):$(PREFIX):$$(id -u)" in \
	  :/usr:0 | :/usr/local:0) ldconfig && echo "Programs find the library now (ldconfig was run)." ;; \
	  *) echo "Programs find the library with: export LD_LIBRARY_PATH=$(PREFIX)/$$($(libdir))" ;; \
	esac

.PHONY: pages packages test-packages

# A first configuration leaves out what no package holds.
packages_alone = $(if $(wildcard $(PACKAGE_BUILD)/CMakeCache.txt),,-DZELWELD_BUILD_TESTS=OFF \
  -DZELWELD_BUILD_EXAMPLES=OFF -DZELWELD_BUILD_BENCHMARKS=OFF)

packages: ## make Debian packages in build/packages and look them over with lintian
	$(setup) build python packages
	cmake -S . -B $(PACKAGE_BUILD) -DCMAKE_INSTALL_PREFIX=/usr -DZELWELD_BUILD_PYTHON=ON $(packages_alone) $(CMAKE_FLAGS)
	$(call compile,$(PACKAGE_BUILD))
	$(standalone) scripts/packages.sh $(PACKAGE_BUILD) $(BUILD)/packages

test-packages: packages ## install, use and remove the packages in a bare Debian 12
	$(setup) bare
	tests/packages/in_bare_debian.sh $(BUILD)/packages

format: ## format the sources
	$(setup) format
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean: ## remove what the targets above made
	rm -rf $(BUILD) $(BUILD)-faults $(ASAN_BUILD) $(FUZZ_BUILD) $(PACKAGE_BUILD) $(BUILD)-tsan $(BUILD)-arm $(BUILD)-clang $(BUILD)-coverage demo-out

help: ## list the targets
	@awk -F ':.*## ' '/^[a-z-]+:.*## / { printf "  make %-13s %s\n", $$1, $$2 }' Makefile
