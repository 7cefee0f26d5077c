# Front door over CMake. Every target installs what it lacks first.
BUILD ?= build
BENCH_BUILD ?= build-bench
ASAN_BUILD ?= build-asan
PREFIX ?= /usr/local
JOBS ?= $(shell nproc)

CMAKE_GEN = -G Ninja

.PHONY: all deps build test demo bench install asan clean format

all: build

deps:
	@bash tools/install-deps.sh

$(BUILD)/build.ninja: | deps
	cmake -S . -B $(BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

demo: build
	$(BUILD)/examples/qelsr-demo

bench:
	@bash tools/install-deps.sh bench
	cmake -S . -B $(BENCH_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release \
	  -DQELSR_BUILD_TESTS=OFF -DQELSR_BUILD_BENCH=ON
	cmake --build $(BENCH_BUILD) -j $(JOBS)
	bash bench/run_all.sh $(BENCH_BUILD)/bench

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

# The same tests under AddressSanitizer and UndefinedBehaviorSanitizer.
asan: deps
	cmake -S . -B $(ASAN_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_CXX_FLAGS="-O1 -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer" \
	  -DCMAKE_C_FLAGS="-O1 -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer" \
	  -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=address,undefined" \
	  -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined"
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1 ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS) -E install_consumer

format:
	clang-format -i $$(git ls-files '*.c' '*.cpp' '*.h')

clean:
	rm -rf $(BUILD) $(BENCH_BUILD) $(ASAN_BUILD)
