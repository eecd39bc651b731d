# The ways into the repository. Every goal installs the Debian packages it needs when they are missing, or says which they
# are; a build directory is configured once, and again when the presets change.
#   make demo     build the library and the command-line program, and show what that does with a record
#   make test     build and test everything: natively, with sanitizers, as 32-bit program
#   make fuzz     run every fuzz target for FUZZ_SECONDS
#   make fuzz-long   every fuzz target some millions of times, and a tenth of that with the sanitizers; prints what was reached.
#                 FUZZ_TARGETS names some of them
#   make exhaustive  all bodies of up to three octets and all trees of up to six elements, for every record
#   make corpora  put every file of CORPORA=DIR through every decoder and verb
#   make sanitize all records on eight threads, ROUNDS times, and every fuzz target's seeds, under the sanitizers for threads
#                 and for memory that was never written
#   make lto      the tests that look for secrets, in programs that were optimised when they were linked
#   make valgrind the tests under valgrind
#   make analyze  clang's analyzer and cppcheck over the library
#   make mutants  change the sources at hundreds of places, one at a time: do the tests see it? (tests/mutants/mutants.py)
#   make coverage lines and conditions of the library that the tests reach
#   make bench    measure beside other encoders, BENCH_SECONDS each; print the tables and write docs/performance.md;
#                 bench-build only builds what measures
#   make counts   count the library's instructions and compare with bench/counts.txt; COUNTS=update writes that file
#   make cross    build for arm64 and for s390x, which stores the most significant octet first, and run the tests under qemu
#   make portable compile and link the library with libc++, and with MinGW-w64 for Windows
#   make docs     the reference, the pages and one page for each record as HTML: build/docs/html/index.html
#   make wire-lock write tests/wire.lock: what the records are on the wire (docs/evolution.md)
#   make packages make the Debian packages, in build/packages; packages-test installs, uses and removes them on a Debian that
#                 has nothing (as root), and compares them with those of a second build
#   make archive-test  count ARCHIVE_EVENTS audit events on a local cluster of two workers, and compare with one process
#   make abi      compare the interface of the shared libraries with tests/abi; ABI=update writes that
#   make tidy     clang-tidy over all sources        make format   clang-format over all sources

JOBS ?= $(shell nproc)
ARCHIVE_EVENTS ?= 2000000
FUZZ_SECONDS ?= 60
FUZZ_TARGETS ?=
BENCH_SECONDS ?= 0.3
COUNTS ?= check
DOCS_BUILD ?= demo
ROUNDS ?= 20
CORPORA ?=
ABI ?= check

tested := release asan x86
packages_demo := g++ cmake ninja-build libcli11-dev nlohmann-json3-dev rapidjson-dev
# Every build with tests; uuid-dev and both compilers for the tests of the headers.
tests_need := cmake ninja-build googletest nlohmann-json3-dev rapidjson-dev locales
packages_release := $(packages_demo) $(tests_need) pkg-config clang uuid-dev
packages_x86 := g++-multilib $(tests_need) clang uuid-dev
packages_asan := clang libclang-rt-14-dev libcli11-dev $(tests_need)
# What the tests run, beside the compilers; the leak check finds what it is to pass over by llvm-symbolizer.
packages_test := $(foreach build,$(tested),$(packages_$(build))) llvm llvm-14-linker-tools openssl python3 \
    python3-jsonschema jq asn1c erlang-base erlang-asn1 \
    zsh fish man-db tshark xxd bsdextrautils
packages_fuzz := clang libclang-rt-14-dev llvm cmake ninja-build nlohmann-json3-dev rapidjson-dev
packages_fuzz-plain := $(packages_fuzz)
packages_tsan := clang libclang-rt-14-dev llvm cmake ninja-build googletest nlohmann-json3-dev rapidjson-dev locales
packages_msan := $(packages_tsan)
packages_lto := $(packages_demo) $(tests_need)
packages_lto-clang := clang llvm llvm-14-linker-tools $(packages_lto)
packages_mutants := clang libclang-rt-14-dev python3-clang-14 binutils $(packages_demo) $(tests_need)
packages_coverage := clang libclang-rt-14-dev llvm $(packages_demo) $(tests_need) python3
packages_valgrind := valgrind
packages_analyze := clang-tidy cppcheck
packages_bench := g++ cmake ninja-build binutils python3 libbenchmark-dev asn1c heimdal-multidev snacc libsnacc-dev \
    libssl-dev libprotobuf-dev protobuf-compiler dumpasn1 openssl locales
packages_bench-x86 := g++-multilib cmake ninja-build locales
# The compilers themselves are unpacked, see cmake/cross-compilers.sh: these packages hold what they link with.
packages_cross := $(packages_demo) $(tests_need) python3 qemu-user \
    binutils-aarch64-linux-gnu cpp-12-aarch64-linux-gnu libstdc++-12-dev-arm64-cross \
    binutils-s390x-linux-gnu cpp-12-s390x-linux-gnu libstdc++-12-dev-s390x-cross
packages_portable := clang libc++-dev libc++abi-dev g++-mingw-w64-x86-64-posix cmake ninja-build
packages_counts := valgrind python3
packages_docs := $(packages_demo) doxygen python3
packages_packages := g++ g++-multilib binutils-i686-linux-gnu cmake ninja-build debhelper dpkg-dev lintian git \
    libcli11-dev nlohmann-json3-dev rapidjson-dev
packages_abi := g++ g++-multilib cmake ninja-build nlohmann-json3-dev rapidjson-dev abigail-tools xz-utils
packages_abi-x86 := $(packages_abi)
packages_tidy := clang-tidy
packages_format := clang-format git
# The package for Python: for its builds, its Debian package and its tests.
packages_release += python3-dev
packages_asan += python3-dev
packages_packages += python3-dev dh-python
packages_python-tests := python3-dev python3-pytest python3-hypothesis python3-dask python3-distributed
packages_test += $(packages_python-tests)
packages_archive-test := $(packages_release) $(packages_python-tests)
deps := $(patsubst packages_%,deps-%,$(filter packages_%,$(.VARIABLES)))

.DELETE_ON_ERROR:
.PHONY: demo test fuzz fuzz-long exhaustive corpora sanitize lto valgrind analyze mutants coverage bench bench-build counts \
    cross portable docs wire-lock \
    packages packages-test abi tidy format $(deps)

.PHONY: archive-test

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

fuzz-long: build/fuzz-plain/build.ninja build/fuzz/build.ninja
	@cmake --build build/fuzz-plain -j $(JOBS)
	@fuzz/long.sh build/fuzz-plain/fuzz 1 $(FUZZ_TARGETS)
	@cmake --build build/fuzz -j $(JOBS)
	@CORPUS=build/fuzz-plain/fuzz/corpus fuzz/long.sh build/fuzz/fuzz 10 $(FUZZ_TARGETS)

exhaustive: build/release/build.ninja build/x86/build.ninja
	@for preset in release x86; do \
	    cmake --build build/$$preset -j $(JOBS) --target exhaustive raw_readers_fuzz codesets_fuzz || exit 1; \
	    build/$$preset/fuzz/exhaustive bodies 3 && build/$$preset/fuzz/exhaustive elements 6 && \
	    build/$$preset/fuzz/raw_readers_fuzz --before 00-0f --all 3 && \
	    build/$$preset/fuzz/codesets_fuzz --before 0000-4300:100 --all 3 || exit 1; done
	@build/release/fuzz/raw_readers_fuzz --before 00-00 --all 4

corpora: build/asan/build.ninja
ifeq ($(CORPORA),)
	@echo 'No corpora: CORPORA=DIR names a folder of files.'
else
	@cmake --build build/asan -j $(JOBS)
	@fuzz/corpora.sh build/asan $(CORPORA)
endif

replayed := codesets framing objects raw_readers records structures tree type_codes
sanitize: build/tsan/build.ninja build/msan/build.ninja
	@cmake --build build/tsan -j $(JOBS) --target many_threads
	@build/tsan/tests/many_threads 8 $(ROUNDS)
	@cmake --build build/msan -j $(JOBS) --target many_threads $(replayed:%=%_fuzz)
	@build/msan/tests/many_threads 1 $(ROUNDS)
	@for name in $(replayed); do seeds=fuzz/seeds/$${name}_fuzz; [ -d $$seeds ] || seeds=fuzz/seeds/records_fuzz; \
	    build/msan/fuzz/$${name}_fuzz $$seeds 2> /dev/null || exit 1; done

lto: build/lto/build.ninja build/lto-clang/build.ninja
	@for preset in lto lto-clang; do cmake --build build/$$preset -j $(JOBS) --target zrasn_tests && \
	    build/$$preset/tests/zrasn_tests --gtest_brief=1 --gtest_filter='secrets.*:*secret*:*secure*' || exit 1; done

counts_new := allocations.*:sequenceof.exhausted_memory:local_code_set.a_text_as_long_as_its_block:object.defaults_are_owned:primitive.exhausted_memory_is_an_exception_and_loses_nothing_else

# Left out: tests that count steps, those that count or fail operator new, which is valgrind's own here, and the one that
# looks for secrets in blocks that were released.
valgrind: deps-valgrind build/release/build.ninja
	@cmake --build build/release -j $(JOBS) --target zrasn_tests
	@valgrind -q --error-exitcode=1 --leak-check=full --suppressions=tests/valgrind.supp \
	    build/release/tests/zrasn_tests --gtest_brief=1 \
	    --gtest_filter='-bounds.*:hostile.*:*depth*:*deep*:*linear*:secrets.leave_no_trace:$(counts_new)'

# The analyzer takes every member called free for the C function, and does not follow the lists that a record owns: unix.Malloc
# is left to the sanitizers and to the tests that count blocks. What optin finds is meant so: malloc(0), and virtual calls
# in a constructor.
analyze: deps-analyze build/tsan/build.ninja
	@cppcheck --std=c++17 --language=c++ -DZR_API= -D__cpp_exceptions=199711 --enable=warning,performance,portability --quiet --error-exitcode=1 \
	    --suppressions-list=cmake/cppcheck.txt -j $(JOBS) -I src -I . src base_idls zrasn
	@cmake build/tsan > /dev/null
	@run-clang-tidy -quiet -j $(JOBS) -p build/tsan -checks='-*,clang-analyzer-*,-clang-analyzer-unix.Malloc,-clang-analyzer-optin.*' '^$(CURDIR)/(src|base_idls)/'

mutants: deps-mutants
	@nice tests/mutants/mutants.py src/asn1 src/zrz --jobs $(JOBS)
	@nice tests/mutants/mutants.py tools/zrasn src/json --count 60 --least 90 --jobs $(JOBS)

coverage: build/coverage/build.ninja
	@cmake --build build/coverage -j $(JOBS)
	@rm -rf build/coverage/profiles
	@LLVM_PROFILE_FILE=$(CURDIR)/build/coverage/profiles/%4m.profraw ctest --test-dir build/coverage --output-on-failure -j $(JOBS)
	@tests/coverage.py build/coverage

bench-build: build/bench/build.ninja build/bench-x86/build.ninja
	@cmake --build build/bench -j $(JOBS) --target zrasn_bench zrasn_bench_heap
	@cmake --build build/bench-x86 -j $(JOBS) --target zrasn_bench

bench: bench-build
	@bench/report.py build/bench build/bench-x86 --seconds $(BENCH_SECONDS)

# The library is the one of the tests: as users get it, and as 32-bit program.
counts: deps-counts build/release/build.ninja build/x86/build.ninja
	@for preset in release x86; do cmake --build build/$$preset -j $(JOBS) --target zrasn_counts || exit 1; done
	@bench/counts.py build/release build/x86 $(COUNTS)
	@cmake --build build/release -j $(JOBS) --target zrasn_cli
	@tests/tool/proportion.py build/release/tools/zrasn/zrasn instructions

# Not a part of .ci/run: two more builds, and all tests under qemu, take far longer than the four minutes that would fit there.
crossed := arm64 s390x
cross: deps-cross
	@cmake/cross-compilers.sh build/cross-compilers
	@for preset in $(crossed); do cmake --preset $$preset > /dev/null && cmake --build build/$$preset -j $(JOBS) || exit 1; done
	@mkdir -p build/cross && echo 'subdirs($(crossed:%=$(CURDIR)/build/%))' > build/cross/CTestTestfile.cmake
	@ctest --test-dir build/cross --output-on-failure -j $(JOBS)

portable: deps-portable
	@tests/portable.sh build/portable

docs: deps-docs build/$(DOCS_BUILD)/build.ninja
	@cmake --build build/$(DOCS_BUILD) -j $(JOBS) --target zrasn_cli
	@docs/reference/make.py build/$(DOCS_BUILD)/tools/zrasn/zrasn build/docs

wire-lock: build/release/build.ninja
	@cmake --build build/release -j $(JOBS) --target zrasn_tests
	@ZRASN_WRITE_WIRE_LOCK=1 build/release/tests/zrasn_tests --gtest_brief=1 --gtest_filter=wire_lock.holds
	@git --no-pager diff --stat tests/wire.lock

packages: deps-packages
	@packaging/build.sh build/packages

packages-test: packages
	@packaging/build.sh build/packages-again "$$(mktemp -d)/a/longer/way"
	@for file in build/packages/*.deb; do cmp "$$file" "build/packages-again/$${file##*/}" || exit 1; done
	@BARE_DEBIAN_FILES=build/packages .ci/bare-debian packaging/test.sh ../files

archive-test: deps-archive-test build/release/build.ninja
	@cmake --build build/release -j $(JOBS) --target zrasn_python
	@COUNT=$(ARCHIVE_EVENTS) tests/python/run.sh build/release/python /usr/bin/python3 "" "pytest distributed dask.bag" \
	    -m pytest -q -p no:cacheprovider -k cluster tests/python/test_archives.py

abi: deps-abi build/abi/build.ninja build/abi-x86/build.ninja
	@for preset in abi abi-x86; do cmake --build build/$$preset -j $(JOBS) --target zrasn zrasn_json || exit 1; done
	@tests/abi/run.sh build/abi build/abi-x86 $(ABI)

# The build with clang++ has the command lines that clang-tidy understands.
tidy: deps-tidy build/asan/build.ninja
	@run-clang-tidy -quiet -j $(JOBS) -p build/asan '^$(CURDIR)/(src|base_idls|tests|fuzz|tools|examples)/'

format: deps-format
	@clang-format -i $$(git ls-files '*.h' '*.cpp')

$(deps): deps-%:
	@cmake/install-deps.sh $(sort $(packages_$*))

$(patsubst %,build/%/build.ninja,demo $(tested) tsan msan lto lto-clang coverage fuzz fuzz-plain bench bench-x86 abi abi-x86): \
    build/%/build.ninja: CMakePresets.json | deps-%
	@cmake --preset $* > /dev/null
	@touch $@
