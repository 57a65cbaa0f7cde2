# The two commands the README opens with: `make run` and `make test`.
# Everything else here is what CI and the benchmarks build on.

TARGET ?= $(CURDIR)/README.md

.PHONY: run test deps build check-asan fuzz-smoke release package check-package format \
	format-check tidy ci

run: build
	scripts/run-editor "$(TARGET)"

test: build
	ctest --preset dev

deps:
	scripts/install-deps

build: deps
	cmake --preset dev >/dev/null
	cmake --build --preset dev

check-asan: deps
	cmake --preset asan >/dev/null
	cmake --build --preset asan
	ctest --preset asan

release: deps
	cmake --preset release >/dev/null
	cmake --build --preset release

fuzz-smoke: deps
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz
	fuzz/run-all 10

# The Debian package, from an optimised build of the programs alone (no tests), made
# with Debian's hardening flags, and the file manager modules' packages beside it; their
# paths are the last lines printed. The prefix /usr
# puts the network module in Debian's multiarch library folder.
package: deps
	CXXFLAGS="$$(dpkg-buildflags --get CXXFLAGS) $$(dpkg-buildflags --get CPPFLAGS)" \
	LDFLAGS="$$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get LDFLAGS)" \
	cmake --preset package >/dev/null
	cmake --build --preset package
	rm -rf build/deb
	cpack --config build/package/CPackConfig.cmake -B build/deb
	@realpath build/deb/veskor_*.deb build/deb/*-veskor_*.deb

# Unpacks the package and runs both programs from it; lintian and the validators too.
check-package: package
	packaging/check-package build/deb/veskor_*.deb build/deb/*-veskor_*.deb

# `format` rewrites every tracked source in the house style; `format-check` only
# reports where a file drifts from it, and fails, so CI catches what `format` would fix.
SOURCES_CMD = git ls-files '*.cpp' '*.h'

format: deps
	$(SOURCES_CMD) | xargs clang-format -i

format-check: deps
	$(SOURCES_CMD) | xargs clang-format --dry-run --Werror

# clang-tidy with the checks in .clang-tidy over every source of the dev build, which
# it builds first (the sources include the headers that the build generates).
tidy: build
	scripts/run-tidy

ci: format-check test tidy check-asan release fuzz-smoke check-package
