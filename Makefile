# The ways into the repository. Every goal installs the Debian packages it needs when they are missing; a build
# directory is configured once, and again when the presets change.
#   make demo     build the command-line program and show what it does with a record
#   make test     build and test everything: natively, with sanitizers, as 32-bit program
#   make fuzz     run every fuzz target for FUZZ_SECONDS
#   make bench    measure beside other encoders, BENCH_SECONDS each; print the tables and write docs/performance.md
#   make counts   count the library's instructions and compare with bench/counts.txt; COUNTS=update writes that file
#   make tidy     clang-tidy over all sources        make format   clang-format over all sources

JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 60
BENCH_SECONDS ?= 0.3
COUNTS ?= check

tested := release asan x86
packages_release := g++ cmake ninja-build googletest libcli11-dev nlohmann-json3-dev pkg-config locales
packages_schema := python3 asn1c erlang-base erlang-asn1
packages_x86 := g++-multilib cmake ninja-build googletest nlohmann-json3-dev locales
packages_asan := clang libclang-rt-14-dev cmake ninja-build googletest libcli11-dev nlohmann-json3-dev locales
packages_fuzz := $(packages_asan)
packages_bench := g++ cmake ninja-build binutils python3 libbenchmark-dev asn1c heimdal-multidev snacc libsnacc-dev \
    libssl-dev libprotobuf-dev protobuf-compiler dumpasn1 openssl
packages_bench-x86 := g++-multilib cmake ninja-build
packages_counts := valgrind python3
packages_tidy := clang-tidy
packages_format := clang-format git
deps := $(patsubst packages_%,deps-%,$(filter packages_%,$(.VARIABLES)))

.DELETE_ON_ERROR:
.PHONY: demo test fuzz bench counts tidy format $(deps)

demo: build/release/build.ninja
	@cmake --build build/release --target zrasn_cli
	@examples/tool_demo.sh build/release/tools/zrasn/zrasn examples/acl.json

# One run of ctest over all builds, so that one summary closes it.
test: deps-schema $(tested:%=build/%/build.ninja)
	@for preset in $(tested); do cmake --build build/$$preset -j $(JOBS) || exit 1; done
	@echo 'subdirs($(tested))' > build/CTestTestfile.cmake
	@ctest --test-dir build --output-on-failure -j $(JOBS)

fuzz: build/fuzz/build.ninja
	@cmake --build build/fuzz -j $(JOBS)
	@fuzz/run.sh build/fuzz/fuzz $(FUZZ_SECONDS)

bench: build/bench/build.ninja build/bench-x86/build.ninja
	@cmake --build build/bench -j $(JOBS) --target zrasn_bench zrasn_bench_heap
	@cmake --build build/bench-x86 -j $(JOBS) --target zrasn_bench
	@bench/report.py build/bench build/bench-x86 --seconds $(BENCH_SECONDS)

# The library is the one of the tests: as users get it, and as 32-bit program.
counts: deps-counts build/release/build.ninja build/x86/build.ninja
	@for preset in release x86; do cmake --build build/$$preset -j $(JOBS) --target zrasn_counts || exit 1; done
	@bench/counts.py build/release build/x86 $(COUNTS)

# The build with clang++ has the command lines that clang-tidy understands.
tidy: deps-tidy build/asan/build.ninja
	@run-clang-tidy -quiet -j $(JOBS) -p build/asan '^$(CURDIR)/(src|base_idls|tests|fuzz|tools|examples)/'

format: deps-format
	@clang-format -i $$(git ls-files '*.h' '*.cpp')

$(deps): deps-%:
	@cmake/install-deps.sh $(packages_$*)

$(patsubst %,build/%/build.ninja,release asan x86 fuzz bench bench-x86): build/%/build.ninja: CMakePresets.json | deps-%
	@cmake --preset $* > /dev/null
	@touch $@
