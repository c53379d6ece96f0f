# Everyday commands; CMake (CMakePresets.json) does the work. JOBS limits parallel compilers.
JOBS ?= 2
PRESET ?= release

.PHONY: help build test demo bench format check-format tidy sanitizers clang clean

help: ## list these targets
	@sed -n 's/^\([a-z-]*\):.*## \(.*\)/\1\t\2/p' $(MAKEFILE_LIST) | expand -t 16

build: ## install what is missing and build (PRESET=release)
	@scripts/install-packages.sh build test
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) -j $(JOBS)

test: build ## build and run every test
	ctest --preset $(PRESET)

clean: ## remove everything that was built
	rm -rf build
