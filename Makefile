# The two commands the README opens with: `make run` and `make test`.
# Everything else here is what CI and the benchmarks build on.

TARGET ?= $(CURDIR)/README.md

.PHONY: run test deps build check-asan fuzz-smoke release format ci

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

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

ci: test check-asan fuzz-smoke
