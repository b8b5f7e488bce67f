# Everyday commands. `make test` and `make run` set everything up on a fresh
# Debian 12 machine (run as root the first time, so the packages can be installed).

BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
ifdef CI
CMAKE_FLAGS += -DLOMIR_WERROR=ON
endif

.PHONY: all deps configure build test bench run fuzz clean

all: build

deps:
	scripts/install-deps

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

bench: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target tiling-bench
	$(BUILD_DIR)/bench/tiling-bench
	$(BUILD_DIR)/bench/tiling-bench --rich
	BUILD_DIR=$(BUILD_DIR) bench/print-command
	BUILD_DIR=$(BUILD_DIR) bench/startup

run: build
	$(BUILD_DIR)/lomir

# Runs every fuzz target for FUZZ_SECONDS each (libFuzzer, clang, sanitizers).
FUZZ_SECONDS ?= 60
fuzz: deps
	scripts/fuzz all $(FUZZ_SECONDS)

clean:
	rm -rf $(BUILD_DIR)
