# A thin front: each target makes sure that what it needs is installed, then runs CMake's presets or a script.
# The presets (CMakePresets.json) work without this file.

.PHONY: build demo test bench fuzz lint windows clean deps
.DEFAULT_GOAL := build

CONFIGURE = cmake -DCMAKE_CXX_COMPILER_LAUNCHER=$$(command -v ccache || true) --preset

build: deps
	$(CONFIGURE) release
	cmake --build --preset release

# The demo takes the programs alone: no test, no measurement, and only the packages that those need.
demo:
	@scripts/install-deps programs
	$(CONFIGURE) programs
	cmake --build --preset programs
	scripts/demo

test: deps
	scripts/test

bench: build
	scripts/bench

fuzz: deps
	scripts/fuzz

lint: deps
	$(CONFIGURE) release
	scripts/lint

windows: deps
	scripts/windows

clean:
	rm -rf build build-asan build-fuzz build-windows-platform

deps:
	@scripts/install-deps
