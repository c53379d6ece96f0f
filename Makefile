# Everyday commands; CMake and its presets (CMakePresets.json) do the work.
# JOBS limits parallel compilers, PRESET picks the build of build, test and demo.
JOBS ?= 2
PRESET ?= release
DEMO_STATE = build/demo-state
TAVCTL = build/$(PRESET)/bin/tavctl
VERSION = $(shell sed -n 's/^project.zotavpci VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
SOURCES = $(shell git ls-files '*.cpp' '*.h' '*.c')

.PHONY: help build demo quick test test-native windows test-windows test-guest test-sanitizers \
        check-valgrind check soak coverage build-bench bench bench-live bench-detail fuzz \
        format check-format tidy clang update-expectations record-sample record-guests \
        package package-windows package-msi sbom test-debian test-systemd test-msi test-packages \
        windows-product release check-reproducible install clean

help: ## list these targets
	@sed -n 's/^\([a-z-]*\):.*## \(.*\)/\1\t\2/p' $(MAKEFILE_LIST) | expand -t 24

build: ## install what is missing and build
	@scripts/install-packages.sh build test
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS)

demo: ## list the devices of a recorded bus, twice: the names stay
	@scripts/install-packages.sh build
	@cmake --preset $(PRESET) -DZOTAVPCI_TESTS=OFF >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS) --target zotavpci zopcibrd tavctl
	@mkdir -p $(DEMO_STATE)
	@for run in first second; do \
	    echo; echo "$$run run of: tavctl list --dump samples/switchboxes.dump \\"; \
	    echo "    --descriptions descriptions --state $(DEMO_STATE)"; echo; \
	    $(TAVCTL) list --dump samples/switchboxes.dump --descriptions descriptions \
	        --state $(DEMO_STATE) || exit $$?; \
	done

quick: ## the tests of the rooms changed since the last commit, and of those above: half a minute
	@scripts/install-packages.sh build test
	@cmake --preset $(PRESET) -DZOTAVPCI_TESTS=ON >/dev/null
	@scripts/quick.sh build/$(PRESET) $(JOBS)

test: ## install what is missing, build, and run every test, of every target
	@$(MAKE) --no-print-directory test-windows
	@$(MAKE) --no-print-directory test-native

test-native: ## the tests among them that run on this system itself
	@scripts/install-packages.sh build test guest
	@cmake --preset $(PRESET) -DZOTAVPCI_TESTS=ON >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS)
	ctest --preset $(PRESET) $(CTEST_ARGUMENTS)

windows: ## cross compile everything for 64- and 32-bit Windows
	@scripts/install-packages.sh build windows
	@for target in x64 x86; do \
	    cmake --preset windows-$$target -DZOTAVPCI_TESTS=ON >/dev/null && \
	    cmake --build --preset windows-$$target -j $(JOBS) || exit 1; \
	done

test-windows: ## the tests among them that run under Wine, for both
	@scripts/install-packages.sh build windows
	@scripts/install-wine32.sh
	@for target in x64 x86; do \
	    TAV_WINEPREFIX=$(CURDIR)/build/windows-$$target/wine scripts/wine-run.sh --prepare \
	        >/dev/null 2>&1 </dev/null & \
	done
	@$(MAKE) --no-print-directory windows
	@for target in x64 x86; do ctest --preset windows-$$target || exit 1; done

test-guest: ## the tests among them that boot emulated machines, and no others
	@scripts/install-packages.sh build test guest
	@cmake --preset $(PRESET) -DZOTAVPCI_TESTS=ON >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS) --target guest_programs
	ctest --preset $(PRESET) -L guest

test-sanitizers: clang ## the same but for guests, under address, leak and undefined-behaviour checking
	@ctest --preset checked -LE guest

# Left out where lines are counted, and nowhere else: what takes too long, or meets its own limit of
# time, while each step is counted (lists of four billion entries, files of a gigabyte, thousands of
# random answers); and the tests of faults, whose failing memory and system calls, and whose kills,
# meet the writing of the counts at the unloading of a library too, which then crashes or leaves
# damaged counts.
COVERAGE_LEAVES_OUT = AbsurdLists|ListsOfAbsurdLength|/HostileFiles|/HostileBridge|^faults/

coverage: ## which lines and branches the tests run; every line that none does must be listed
	@scripts/install-packages.sh build test coverage
	@cmake --preset coverage -DZOTAVPCI_TESTS=ON >/dev/null
	@cmake --build --preset coverage -j $(JOBS)
	@find build/coverage -name '*.gcda' -delete
	ctest --preset coverage -LE guest -E '$(COVERAGE_LEAVES_OUT)' $(CTEST_ARGUMENTS)
	@scripts/coverage.py build/coverage tests/coverage/uncovered.txt

check-valgrind: ## run tavctl and a few whole-system cases under valgrind
	@scripts/install-packages.sh build test check
	@cmake --preset $(PRESET) -DZOTAVPCI_TESTS=ON >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS) --target tavctl zotavpci zopcibrd test_system
	@scripts/check-valgrind.sh $(CURDIR)/build/$(PRESET)/bin

check: ## the tests again under checking, the fuzzers for a while, valgrind: some minutes
	@$(MAKE) --no-print-directory check-valgrind
	@$(MAKE) --no-print-directory fuzz RUNS=30000 SECONDS=15
	@$(MAKE) --no-print-directory test-sanitizers

soak: ## the long form of what tries to break it: ten million inputs a fuzzer, hours
	@$(MAKE) --no-print-directory build
	TAV_EFFORT=long build/$(PRESET)/bin/test_faults
	TAV_EFFORT=long build/$(PRESET)/bin/test_hostile
	TAV_EFFORT=long build/$(PRESET)/bin/test_tavctl --gtest_filter='MockProperty.*'
	@$(MAKE) --no-print-directory fuzz RUNS=10000000 SECONDS=7200

BENCH_TMPDIR = $${TMPDIR:-$$(test -w /dev/shm && echo /dev/shm || echo /tmp)}

build-bench:
	@scripts/install-packages.sh build bench
	@cmake --preset bench >/dev/null
	@cmake --build --preset bench -j $(JOBS)

BENCH_DLLS = build/windows-x64/bin/zotavpci.dll build/windows-x86/bin/zotavpci.dll

$(BENCH_DLLS): build/%/bin/zotavpci.dll: FORCE
	@scripts/install-packages.sh build windows
	@cmake --preset $* >/dev/null
	@cmake --build --preset $* -j $(JOBS) --target zotavpci
FORCE:

bench: build-bench $(BENCH_DLLS) ## measure beside the peers, in turn, and print one table (ROUNDS, TMPDIR=where)
	@TMPDIR=$(BENCH_TMPDIR) build/bench/bin/tav_compare $(or $(ROUNDS),5) $(BENCH_DLLS)

bench-live: ## race tavctl list against lspci -n on live buses of emulated machines (ROUNDS)
	@scripts/install-packages.sh build test guest
	@cmake --preset $(PRESET) -DZOTAVPCI_TESTS=ON >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS) --target guest_programs
	@tests/guest/makeInitramfs.sh build/live.initramfs build/$(PRESET)/bin
	@bench/liveRace.py --rounds $(or $(ROUNDS),5) --programs build/$(PRESET)/bin \
	    --initramfs build/live.initramfs \
	    tests/guest/machines/full-bus tests/guest/machines/several-root-buses

bench-detail: build-bench ## measure single steps and growth (FILTER=regular expression, TMPDIR=where)
	@TMPDIR=$(BENCH_TMPDIR) build/bench/bin/tav_bench --benchmark_filter='$(or $(FILTER),.)'

fuzz: ## let the fuzzers search (RUNS=inputs each, SECONDS=time each, TARGETS=names)
	@scripts/install-packages.sh build test fuzz
	@cmake --preset checked -DZOTAVPCI_TESTS=ON >/dev/null
	@cmake --build --preset checked -j $(JOBS) --target fuzzers
	@JOBS=$(JOBS) scripts/fuzz.sh build/checked $(or $(RUNS),50000) $(or $(SECONDS),60) $(TARGETS)

format: ## format every source file
	@scripts/install-packages.sh lint
	@clang-format -i $(SOURCES)

check-format: ## fail when a source file is not formatted
	@scripts/install-packages.sh lint
	@clang-format --dry-run --Werror $(SOURCES)

clang: ## build everything with Clang's warnings as errors and what it can check as it runs
	@scripts/install-packages.sh build test lint fuzz
	@cmake --preset checked -DZOTAVPCI_TESTS=ON >/dev/null
	@cmake --build --preset checked -j $(JOBS)

tidy: ## run clang-tidy over the product's sources, and ask whether they need GNU's compiler
	@scripts/install-packages.sh build lint windows
	@cmake --preset tidy >/dev/null
	@scripts/tidy.sh build/tidy $(JOBS)
	@cmake --preset windows-x64 >/dev/null
	@scripts/check-portable.py . build/windows-x64/headers

update-expectations: build ## rewrite what the whole-system cases expect, and the README's picture; read the diff
	@build/$(PRESET)/bin/test_system --rewrite
	@tests/examples/pictureTest.sh $(CURDIR)/$(TAVCTL) $(CURDIR) --rewrite

record-sample: ## record samples/switchboxes.dump anew in an emulated machine
	@scripts/record-guest.sh samples/switchboxes.dump samples/machines/switchboxes.machine

record-guests: ## record the emulated machines of tests/guest anew, as samples and cases
	@scripts/install-packages.sh build test guest
	@cmake --preset $(PRESET) -DZOTAVPCI_TESTS=ON >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS) --target guest_programs
	@tests/guest/recordAll.sh build/$(PRESET)/bin

windows-product:
	@scripts/install-packages.sh build windows
	@for target in x64 x86; do \
	    cmake --preset windows-$$target >/dev/null && \
	    cmake --build --preset windows-$$target -j $(JOBS) --target zotavpci zopcibrd tavctl \
	        || exit $$?; \
	done

package: ## build the Debian packages into build/packages, from what is committed
	@scripts/install-packages.sh build package
	@PACKAGE_WORK=build/debian scripts/package-debian.sh build/packages $(JOBS)
	@ls build/packages/*.deb

package-windows: windows-product ## pack what Windows users need, for x64 and x86, into one archive, and the symbols into another
	@scripts/package-windows.sh build/zotavpci-windows.zip build/windows-x64 build/windows-x86
	@unzip -l build/zotavpci-windows.zip
	@unzip -l build/zotavpci-windows-symbols.zip

package-msi: windows-product ## make installers for Windows, one for x64 and one for x86
	@for target in x64 x86; do \
	    scripts/package-msi.sh build/zotavpci-$(VERSION)-$$target.msi build/windows-$$target || exit $$?; \
	    ls -l build/zotavpci-$(VERSION)-$$target.msi; \
	done

sbom: windows-product ## write what the product is made of, for Linux and Windows, into build/zotavpci.spdx.json
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS) --target zotavpci zopcibrd tavctl
	@scripts/make-sbom.py build/release build/windows-x64 build/windows-x86 \
	    -o build/zotavpci.spdx.json

test-msi: package-msi ## install, repair, upgrade and remove the installers under Wine
	@scripts/install-wine32.sh
	@for target in x64 x86; do \
	    tests/packages/msiTest.sh . build/windows-$$target $$target || exit $$?; \
	done
	@tests/packages/msiBothTest.sh . build/windows-x64 build/windows-x86

test-debian: package ## install, use, upgrade and remove the Debian packages in a clean system
	@scripts/install-packages.sh clean
	@tests/packages/debian/lintianTest.sh build/packages
	@tests/packages/debian/cleanSystemTest.sh build/packages .

test-systemd: package ## boot a system with systemd that has the Debian packages, and its timer run: minutes
	@scripts/install-packages.sh clean
	@tests/packages/debian/systemdTest.sh build/packages .

test-packages: ## all of these: what ships, as it is installed
	@scripts/install-packages.sh build windows package clean # which only one may do at a time
	@scripts/install-wine32.sh
	@$(MAKE) --no-print-directory -j2 --output-sync=target test-debian test-msi test-systemd

release: test-packages package-windows ## all of it in build/zotavpci-VERSION, with a bill of materials and checksums
	@scripts/release.sh build/zotavpci-$(VERSION)

check-reproducible: ## build all that ships twice in different folders (ONLY=debian or windows); fail unless bytes are equal
	@scripts/install-packages.sh build windows package
	@scripts/check-reproducible.sh $(JOBS) $(ONLY)

install: build ## install below DESTDIR and the configured prefix
	@cmake --install build/$(PRESET)

clean: ## remove everything that was built
	rm -rf build
