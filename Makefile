# The commands of everyday work; each prepares the machine first (tools/setup), which is quick once it is done.
#
#   make build    both bitnesses, release: the DLLs in build/x86 and build/x64, the script host and the tests
#   make check    everything that must hold before a change goes in; ends with a line "N passed, N failed"
#   make demo     signs, verifies and encrypts a document from scripts, from an empty Wine prefix to the end
#   make dist     build/dist: the packages for the Windows Installer, an archive with everything, checksums
#   make bench    the benchmark's table, both bitnesses
#   make fuzz     the fuzzers, FUZZ_SECONDS each
#   make native   what is independent of Windows, with its tests and the sanitizers, for Linux
#   make format   formats the sources      make lint   runs the linter
#   make clean    removes what was built, but for the pinned libraries and the Wine prefix

FUZZ_SECONDS ?= 60
BUILDS := x64-release x86-release

# Both bitnesses, of each all or the targets that are named.
define build_both
	@for preset in $(BUILDS); do \
	    cmake --preset $$preset --log-level=WARNING && \
	    cmake --build build/$$preset $(if $(1),--target $(1)) || exit 1; \
	done
endef

.NOTPARALLEL:
.PHONY: build native setup check demo dist bench fuzz format lint clean
.DEFAULT_GOAL := build

setup:
	@tools/setup packages libraries wine

build: setup
	$(call build_both)

native: setup
	@cmake --preset native --log-level=WARNING
	@cmake --build build/native

check: setup
	@tools/setup languages
	@tools/check

# Only what the demonstration runs: no tests, no benchmarks.
demo: setup
	$(call build_both,corvane_handed_out)
	@tools/demo

dist: setup
	$(call build_both,VetrelCorvane2)
	@tools/dist

bench: setup
	$(call build_both,corvane_handed_out corvane_bench)
	@tools/bench

fuzz: native
	@tools/fuzz $(FUZZ_SECONDS)

format: setup
	@tools/format

lint: setup
	@cmake --preset native --log-level=WARNING
	@cmake --preset x64-release --log-level=WARNING
	@cmake --build build/x64-release --target corvane_idl
	@tools/lint

clean:
	rm -rf build/x64 build/x86 build/*-release build/*-debug build/native build/check build/lint build/demo build/dist build/fuzz build/interop build/mutate build/reproduce build/typings/activex-vetrelcorvane2 build/bench.txt
