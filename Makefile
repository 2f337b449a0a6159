# The two commands a newcomer needs: `make run` and `make test`.
BUILD ?= build
JOBS ?= $(shell nproc)
ARGS ?= --simulate
# Fuzzing (docs/fuzzing.md): its own clang build, seconds per target, the targets to run.
FUZZ_BUILD ?= build-fuzz
FUZZ_CXX ?= clang++-14
FUZZ_SECONDS ?= 60
FUZZ_TARGETS ?= receive apply-image map-file setup-file

.PHONY: deps configure build run test bench clean fuzz

deps:
	bash scripts/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: configure
	cmake --build $(BUILD) -j $(JOBS)

# Builds only the program and what it links, so the first window comes as soon as it can.
run: configure
	cmake --build $(BUILD) -j $(JOBS) --target morvane-vela
	bash scripts/run.sh $(BUILD)/src/app/morvane-vela $(ARGS)

test: build
	cd $(BUILD) && xvfb-run -a -s "-screen 0 1600x1000x24" ctest --output-on-failure -j $(JOBS)

bench: build
	$(BUILD)/bench/vela-bench
	bash scripts/run.sh $(BUILD)/bench/vela-link-cpu 10
	bash scripts/run.sh $(BUILD)/bench/vela-link-cpu --pages 5
	bash scripts/run.sh $(BUILD)/bench/vela-editing-latency
	bash scripts/run.sh $(BUILD)/bench/vela-datalog-bench
	bash scripts/run.sh $(BUILD)/bench/vela-link-cpu --window --tab 11 20
	bash scripts/run.sh $(BUILD)/bench/vela-link-cpu --window --tab 11 --record 20

fuzz:
	bash scripts/install-deps.sh --fuzz
	cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=$(FUZZ_CXX) -DVELA_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target vela-fuzz
	bash scripts/fuzz.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_TARGETS)

clean:
	rm -rf $(BUILD) $(FUZZ_BUILD)
