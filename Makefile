# The commands of the project, each a line; the work is in CMake and in the scripts.
PREFIX ?= /usr/local
ONLY ?=

.PHONY: demo test fuzz bench install uninstall package docs reproducible
.DEFAULT_GOAL := demo

demo:
	./demo.sh $(ARGS)

test:
	./test.sh

# Ten million random calls over all exports.
fuzz:
	FUZZ_RUNS=10000000 ./test.sh fuzz

bench:
	bench/run.sh $(ONLY)

install:
	scripts/packages.sh build
	cmake --preset release -DQVR_TESTS=OFF
	cmake --build --preset release
	cmake --install build/release --prefix $(PREFIX)
	cp build/release/install_manifest.txt build/installed.txt
	if [ "$$(id -u)" = 0 ]; then ldconfig; fi

# Removes what the last `make install` installed.
uninstall:
	xargs -d '\n' -a build/installed.txt rm -fv
	rm -f build/installed.txt

# Debian packages into build/packages.
package:
	scripts/packages.sh build package
	cmake --preset release -DQVR_TESTS=OFF
	cmake --build --preset release
	cd build/release && cpack -B ../packages

# Reference pages and guides into build/docs/html.
docs:
	scripts/docs.sh

# Two builds of the committed state must give the same bytes.
reproducible:
	scripts/reproducible.sh
