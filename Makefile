# Quillet: the two everyday commands are `make run` and `make test`.
# The build uses CMake's Makefile generator: its moc step notices new Q_OBJECT headers, which the
# Ninja generator of CMake 3.25 does not.
BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all deps configure build run test bench demo install clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@if [ ! -f $(BUILD_DIR)/CMakeCache.txt ]; then \
	  cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release; \
	fi

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

# Installs under PREFIX (default /usr/local), staged below DESTDIR when that is set.
PREFIX ?= /usr/local
install: build
	DESTDIR=$(DESTDIR) cmake --install $(BUILD_DIR) --prefix $(PREFIX)

run: build
	$(BUILD_DIR)/src/quillet

test: build
	cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

bench: build
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target benchmarks
	@for b in $(BUILD_DIR)/bench/bench_*; do [ -x "$$b" ] && QT_QPA_PLATFORM=offscreen "$$b"; done; true

# A throwaway installation with generated photos and families, then Quillet started on it.
DEMO_DIR ?= $(shell mktemp -d /tmp/quillet-demo.XXXXXX)
demo: build
	@dir=$(DEMO_DIR); $(BUILD_DIR)/tools/quillet-demodata $$dir && \
	  XDG_DATA_HOME=$$dir/data XDG_CACHE_HOME=$$dir/cache $(BUILD_DIR)/src/quillet

clean:
	rm -rf $(BUILD_DIR)
