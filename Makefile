# The two commands a newcomer needs: `make run` and `make test`.
BUILD ?= build
JOBS ?= $(shell nproc)
ARGS ?= --simulate
# Fuzzing (docs/fuzzing.md): its own clang build, seconds per target, the targets to run.
FUZZ_BUILD ?= build-fuzz
FUZZ_CXX ?= clang++-14
FUZZ_SECONDS ?= 60
FUZZ_TARGETS ?= receive apply-image map-file setup-file

.PHONY: deps configure build build-bench check-packages check-format check-structure run test bench clean fuzz

deps:
	bash scripts/install-deps.sh

# Ninja: on this kind of machine every process start is dear, and the Makefile generator starts
# several per object. A build folder made by another generator is made anew. A warning in our own
# code fails the build (the Debian 12 compiler every machine here uses sees the same warnings).
configure: deps
	@if [ -f $(BUILD)/CMakeCache.txt ] && ! grep -qx 'CMAKE_GENERATOR:INTERNAL=Ninja' $(BUILD)/CMakeCache.txt; then \
	  echo "$(BUILD) was made by another generator: making it anew"; rm -rf $(BUILD); fi
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELA_WERROR=ON

build: configure
	cmake --build $(BUILD) -j $(JOBS)

# Builds only the program and what it links, so the first window comes as soon as it can.
run: configure
	cmake --build $(BUILD) -j $(JOBS) --target morvane-vela
	bash scripts/run.sh $(BUILD)/src/app/morvane-vela $(ARGS)

# The GUI tests mostly wait on the simulated ECU's real-time link, each on an X server of its own,
# so more of them run at once than there are cores.
TEST_JOBS ?= $(shell echo $$(( $(JOBS) * 3 )))
test: build
	cd $(BUILD) && ctest --output-on-failure -j $(TEST_JOBS)

build-bench: configure
	cmake --build $(BUILD) -j $(JOBS) --target vela-benches

# Fails when a build read a Debian package that scripts/install-deps.sh does not bring: the main
# build with its benchmarks, and the fuzz build when there is one.
check-packages: build build-bench
	bash scripts/check-packages.sh $(BUILD)
	if [ -f $(FUZZ_BUILD)/CMakeCache.txt ]; then bash scripts/check-packages.sh $(FUZZ_BUILD); fi

bench: build build-bench
	$(BUILD)/bench/vela-bench
	bash scripts/run.sh $(BUILD)/bench/vela-link-cpu 10
	bash scripts/bench-pages.sh $(BUILD) 5
	bash scripts/run.sh $(BUILD)/bench/vela-editing-latency
	bash scripts/run.sh $(BUILD)/bench/vela-history-bench
	bash scripts/run.sh $(BUILD)/bench/vela-datalog-bench
	$(BUILD)/bench/vela-proposal-bench
	$(BUILD)/bench/vela-heat-bench
	bash scripts/run.sh $(BUILD)/bench/vela-link-cpu --window --tab 11 20
	bash scripts/run.sh $(BUILD)/bench/vela-link-cpu --window --tab 11 --record 20
	$(BUILD)/bench/vela-review-bench

check-format:
	bash scripts/install-deps.sh --format
	bash scripts/check-format.sh

# Floors, folder sizes and function lengths (docs/architecture.md).
check-structure:
	bash scripts/install-deps.sh --format
	python3 scripts/check-structure.py

fuzz:
	bash scripts/install-deps.sh --fuzz
	cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=$(FUZZ_CXX) -DVELA_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target vela-fuzz
	bash scripts/fuzz.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_TARGETS)

clean:
	rm -rf $(BUILD) $(FUZZ_BUILD)
