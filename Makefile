# The two commands the README opens with: `make run` and `make test`.
# Everything else here is what CI and the benchmarks build on.

TARGET ?= $(CURDIR)/README.md

.PHONY: run test deps build check-asan fuzz-smoke release package check-package format ci

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

# The Debian package, from the release build of the programs alone (the tests are not
# needed to package them); its path is the last line printed. The prefix /usr puts the
# network module in Debian's multiarch library folder.
package: deps
	cmake --preset release -DCMAKE_INSTALL_PREFIX=/usr >/dev/null
	cmake --build --preset release --target veskor veskor-cli veskor-network packaging_files
	rm -rf build/package
	cpack --config build/release/CPackConfig.cmake -B build/package
	@realpath build/package/veskor_*.deb

# Unpacks the package and runs both programs from it; lintian and the validators too.
check-package: package
	packaging/check-package build/package/veskor_*.deb

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

ci: test check-asan fuzz-smoke check-package
