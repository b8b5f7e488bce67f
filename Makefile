# Everyday commands. `make test` and `make run` set everything up on a fresh
# Debian 12 machine (run as root the first time, so the packages can be installed).

BUILD_DIR ?= build
SANITIZE_BUILD_DIR ?= build-sanitize
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
# Warnings are errors in every build these commands make, on a desktop as under CI.
CMAKE_FLAGS += -DLOMIR_WERROR=ON
CTEST = QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

.PHONY: all deps configure build configure-sanitize build-sanitize \
        test test-normal test-sanitize bench run fuzz clean

all: build

deps:
	scripts/install-deps

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

# The same sources built with AddressSanitizer and UndefinedBehaviorSanitizer, in a tree
# of their own beside the normal one (no benchmarks: they are timed on the normal build).
configure-sanitize: deps
	cmake -S . -B $(SANITIZE_BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) \
	      -DLOMIR_SANITIZE=ON -DLOMIR_BUILD_BENCH=OFF $(CMAKE_FLAGS)

build-sanitize: configure-sanitize
	cmake --build $(SANITIZE_BUILD_DIR) -j $(JOBS)

# Every test and fuzz corpus replay runs in both trees; in the sanitizer tree any report
# of a sanitizer fails the test that made it.
test: test-normal test-sanitize

test-normal: build
	cd $(BUILD_DIR) && $(CTEST)

test-sanitize: build-sanitize
	cd $(SANITIZE_BUILD_DIR) && $(CTEST)

bench: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target tiling-bench preview-bench document-bench
	$(BUILD_DIR)/bench/tiling-bench
	$(BUILD_DIR)/bench/tiling-bench --rich
	$(BUILD_DIR)/bench/preview-bench
	$(BUILD_DIR)/bench/preview-bench --stock
	$(BUILD_DIR)/bench/document-bench
	BUILD_DIR=$(BUILD_DIR) bench/print-command
	BUILD_DIR=$(BUILD_DIR) bench/startup

run: build
	$(BUILD_DIR)/lomir

# Runs every fuzz target for FUZZ_SECONDS each (libFuzzer, clang, sanitizers).
FUZZ_SECONDS ?= 60
fuzz: deps
	scripts/fuzz all $(FUZZ_SECONDS)

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_BUILD_DIR)
