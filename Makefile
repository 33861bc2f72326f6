# Quillet: the two everyday commands are `make run` and `make test`.
# The build uses CMake's Makefile generator: its moc step notices new Q_OBJECT headers, which the
# Ninja generator of CMake 3.25 does not.
BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all deps configure build run test bench demo install clean fuzz test-asan

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

# libFuzzer targets built with clang and the sanitizers, each run FUZZ_SECONDS (default 60).
FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 60
fuzz:
	@scripts/install-deps --fuzz
	@if [ ! -f $(FUZZ_DIR)/CMakeCache.txt ]; then \
	  CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLET_FUZZ=ON -DBUILD_TESTING=OFF; \
	fi
	@cmake --build $(FUZZ_DIR) -j $(JOBS) --target fuzzers
	FUZZ_SECONDS=$(FUZZ_SECONDS) FUZZ_TARGETS="$(FUZZ_TARGETS)" scripts/run-fuzz $(FUZZ_DIR)

# The whole suite built and run with AddressSanitizer and UndefinedBehaviorSanitizer.
ASAN_DIR ?= build-asan
test-asan: deps
	@if [ ! -f $(ASAN_DIR)/CMakeCache.txt ]; then \
	  cmake -S . -B $(ASAN_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLET_SANITIZE=ON; \
	fi
	@cmake --build $(ASAN_DIR) -j $(JOBS)
	cd $(ASAN_DIR) && QT_QPA_PLATFORM=offscreen \
	  ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:check_initialization_order=1 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:print_suppressions=0 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --output-on-failure -j $(JOBS)

clean:
	rm -rf $(BUILD_DIR) $(FUZZ_DIR) $(ASAN_DIR)
