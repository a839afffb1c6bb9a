# Two targets for a newcomer: `make demo` and `make test`. Each installs the Debian packages
# the project needs if they are missing, then configures, builds and runs. `make docs`,
# `make package` and `make stubs` write the API reference, the Debian packages and the Python
# stubs.
PACKAGES := cmake g++ make pkg-config libopencv-dev libboost-dev libboost-system-dev \
            qt6-base-dev libgtest-dev libbenchmark-dev clang \
            pybind11-dev python3-dev python3-numpy python3-pytest doxygen dpkg-dev \
            python3-opencv chromium chromium-driver python3-selenium
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all deps demo test bench soak fuzz docs package stubs clean

all: test

deps:
	@missing=""; \
	for p in $(PACKAGES); do \
	    dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	    if [ "$$(id -u)" = 0 ]; then \
	        echo "Installing:$$missing"; \
	        apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing; \
	    else \
	        echo "Missing packages. Run:"; \
	        echo "    sudo apt-get install -y$$missing"; \
	        exit 1; \
	    fi; \
	fi

demo: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target nuv_demo
	./build/release/tools/nuv_demo

test: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	ctest --preset release
	cmake --preset sanitize
	cmake --build --preset sanitize -j $(JOBS)
	ctest --preset sanitize
	cmake --preset tsan
	cmake --build --preset tsan -j $(JOBS)
	ctest --preset tsan
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	ctest --preset fuzz

bench: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	for b in ./build/release/bench/nuv_bench_*; do $$b --benchmark_min_time=0.2; done

# Many frames through the segmenter and the conversion and filter chain; the resident memory
# must stay flat.
soak: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target nuv_soak_tests
	NUV_SOAK_FRAMES=20000 ./build/release/tests/nuv_soak_tests

# Each fuzz target for ten minutes from its seeds; what they find lands in build/fuzz.
fuzz: deps
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	for t in text frontend primitives sequences; do \
	    mkdir -p build/fuzz/fuzz/corpus/$$t && \
	    ./build/fuzz/fuzz/nuv_fuzz_$$t -max_total_time=600 -artifact_prefix=build/fuzz/ \
	        build/fuzz/fuzz/corpus/$$t fuzz/corpus/$$t || exit 1; \
	done

# The API reference from the public headers, in build/release/docs/html.
docs: deps
	cmake --preset release
	cmake --build --preset release --target docs

# Debian packages of the libraries, the development files, the Python module and the tools.
package: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	cd build/release && cpack
	@for deb in build/release/*.deb; do echo "$$deb"; done

# The Python package's type stubs, written again from the built module.
stubs: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target nuv_python
	PYTHONPATH=build/release/python /usr/bin/python3 python/make_stubs.py python/nuv

clean:
	rm -rf build
