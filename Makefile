# The commands of the project, each a line; the work is in CMake and in the scripts.
PREFIX ?= /usr/local
ONLY ?=

.PHONY: demo test fuzz bench install uninstall python wheel package package-test docs reproducible
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

# The Python package into build/python: PYTHONPATH=build/python python3 -c 'import morvenqvr'
python:
	scripts/packages.sh build python
	cmake --preset release -DQVR_TESTS=OFF
	cmake --build --preset release --target python
	rm -rf build/python
	cp -a build/release/python build/python

# A wheel that carries the shared object into build/wheel.
wheel: python
	MORVENQVR_LIBRARY=$(CURDIR)/build/release/libmorvenqvr.so.1 CC=clang-19 \
		/usr/bin/python3 -m build --wheel --no-isolation --outdir build/wheel python

# Debian packages into build/packages.
package:
	scripts/packages.sh build package python docs
	scripts/docs.sh
	cmake --preset package
	cmake --build --preset package
	rm -rf build/packages
	cd build/package && cpack -B ../packages

# The packages of the last `make package`: lintian, and installed, used and removed in a bare Debian. As root.
package-test:
	scripts/package_test.sh

# Reference pages and guides into build/docs/html.
docs:
	scripts/docs.sh

# Two builds of the committed state must give the same bytes, packages too.
reproducible:
	scripts/reproducible.sh
