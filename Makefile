# The two commands a newcomer needs: `make run` and `make test`.
BUILD ?= build
JOBS ?= $(shell nproc)
ARGS ?= --simulate

.PHONY: deps configure build run test bench clean

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

clean:
	rm -rf $(BUILD)
