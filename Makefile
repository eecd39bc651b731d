# The ways into the repository. Every goal installs the Debian packages it needs when they are missing, or says which they
# are; a build directory is configured once, and again when the presets change.
#   make demo     build the library and the command-line program, and show what that does with a record
#   make test     build and test everything: natively, with sanitizers, as 32-bit program
#   make fuzz     run every fuzz target for FUZZ_SECONDS
#   make bench    measure beside other encoders, BENCH_SECONDS each; print the tables and write docs/performance.md;
#                 bench-build only builds what measures
#   make counts   count the library's instructions and compare with bench/counts.txt; COUNTS=update writes that file
#   make packages make the Debian packages, in build/packages; packages-test installs, uses and removes them on a Debian that
#                 has nothing (as root), and compares them with those of a second build
#   make abi      compare the interface of the shared libraries with tests/abi; ABI=update writes that
#   make tidy     clang-tidy over all sources        make format   clang-format over all sources

JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 60
BENCH_SECONDS ?= 0.3
COUNTS ?= check
ABI ?= check

tested := release asan x86
packages_demo := g++ cmake ninja-build libcli11-dev nlohmann-json3-dev
# Every build with tests; uuid-dev and both compilers for the tests of the headers.
tests_need := cmake ninja-build googletest nlohmann-json3-dev locales
packages_release := $(packages_demo) $(tests_need) pkg-config clang uuid-dev
packages_x86 := g++-multilib $(tests_need) clang uuid-dev
packages_asan := clang libclang-rt-14-dev libcli11-dev $(tests_need)
# What the tests run, beside the compilers; the leak check finds what it is to pass over by llvm-symbolizer.
packages_test := $(foreach build,$(tested),$(packages_$(build))) llvm llvm-14-linker-tools openssl python3 asn1c erlang-base erlang-asn1 \
    zsh fish man-db
packages_fuzz := clang libclang-rt-14-dev llvm cmake ninja-build
packages_bench := g++ cmake ninja-build binutils python3 libbenchmark-dev asn1c heimdal-multidev snacc libsnacc-dev \
    libssl-dev libprotobuf-dev protobuf-compiler dumpasn1 openssl locales
packages_bench-x86 := g++-multilib cmake ninja-build locales
packages_counts := valgrind python3
packages_packages := g++ g++-multilib binutils-i686-linux-gnu cmake ninja-build debhelper dpkg-dev lintian git \
    libcli11-dev nlohmann-json3-dev
packages_abi := g++ g++-multilib cmake ninja-build abigail-tools xz-utils
packages_tidy := clang-tidy
packages_format := clang-format git
deps := $(patsubst packages_%,deps-%,$(filter packages_%,$(.VARIABLES)))

.DELETE_ON_ERROR:
.PHONY: demo test fuzz bench bench-build counts packages packages-test abi tidy format $(deps)

demo: build/demo/build.ninja
	@cmake --build build/demo --target zrasn_to_install
	@examples/tool_demo.sh build/demo/tools/zrasn/zrasn examples/acl.json

# One run of ctest over all builds, so that one summary closes it.
test: deps-test $(tested:%=build/%/build.ninja)
	@for preset in $(tested); do cmake --build build/$$preset -j $(JOBS) || exit 1; done
	@echo 'subdirs($(tested))' > build/CTestTestfile.cmake
	@ctest --test-dir build --output-on-failure -j $(JOBS)

fuzz: build/fuzz/build.ninja
	@cmake --build build/fuzz -j $(JOBS)
	@fuzz/run.sh build/fuzz/fuzz $(FUZZ_SECONDS)

bench-build: build/bench/build.ninja build/bench-x86/build.ninja
	@cmake --build build/bench -j $(JOBS) --target zrasn_bench zrasn_bench_heap
	@cmake --build build/bench-x86 -j $(JOBS) --target zrasn_bench

bench: bench-build
	@bench/report.py build/bench build/bench-x86 --seconds $(BENCH_SECONDS)

# The library is the one of the tests: as users get it, and as 32-bit program.
counts: deps-counts build/release/build.ninja build/x86/build.ninja
	@for preset in release x86; do cmake --build build/$$preset -j $(JOBS) --target zrasn_counts || exit 1; done
	@bench/counts.py build/release build/x86 $(COUNTS)

packages: deps-packages
	@packaging/build.sh build/packages

packages-test: packages
	@packaging/build.sh build/packages-again "$$(mktemp -d)/a/longer/way"
	@for file in build/packages/*.deb; do cmp "$$file" "build/packages-again/$${file##*/}" || exit 1; done
	@BARE_DEBIAN_FILES=build/packages .ci/bare-debian packaging/test.sh /root/files

abi: deps-abi build/abi/build.ninja build/abi-x86/build.ninja
	@for preset in abi abi-x86; do cmake --build build/$$preset -j $(JOBS) --target zrasn || exit 1; done
	@tests/abi/run.sh build/abi build/abi-x86 $(ABI)

# The build with clang++ has the command lines that clang-tidy understands.
tidy: deps-tidy build/asan/build.ninja
	@run-clang-tidy -quiet -j $(JOBS) -p build/asan '^$(CURDIR)/(src|base_idls|tests|fuzz|tools|examples)/'

format: deps-format
	@clang-format -i $$(git ls-files '*.h' '*.cpp')

$(deps): deps-%:
	@cmake/install-deps.sh $(sort $(packages_$*))

$(patsubst %,build/%/build.ninja,demo $(tested) fuzz bench bench-x86 abi abi-x86): build/%/build.ninja: CMakePresets.json | deps-%
	@cmake --preset $* > /dev/null
	@touch $@
