# Quillet: the two everyday commands are `make run` and `make test`.
BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
GENERATOR := $(shell command -v ninja >/dev/null 2>&1 && echo "-G Ninja")

.PHONY: all deps configure build run test bench demo clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@if [ ! -f $(BUILD_DIR)/CMakeCache.txt ]; then \
	  cmake -S . -B $(BUILD_DIR) $(GENERATOR) -DCMAKE_BUILD_TYPE=Release; \
	fi

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	$(BUILD_DIR)/src/quillet

test: build
	cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

bench: build
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target benchmarks
	@for b in $(BUILD_DIR)/bench/bench_*; do [ -x "$$b" ] && QT_QPA_PLATFORM=offscreen "$$b"; done; true

demo: build
	scripts/demo $(BUILD_DIR)/src/quillet

clean:
	rm -rf $(BUILD_DIR)
