# Two entry points for a fresh machine:
#   make demo   builds the library and runs the example host
#   make test   builds and tests the x86-64, i386, ASan/UBSan and TSan presets
# (make docs writes the API reference to build/docs/html/index.html.)
PRESETS := default i386 asan tsan

.PHONY: all test demo demo-expected bench fuzz soak package docs deps clean

all: demo

deps:
	@scripts/install-deps.sh test

test: deps
	@set -e; for preset in $(PRESETS); do \
	  echo "== $$preset =="; \
	  cmake --preset $$preset >/dev/null; \
	  cmake --build --preset $$preset; \
	  ctest --preset $$preset; \
	done

# The long cache-coherence soak: `make soak OPS=1000000 SEED=7`. Its last
# line is the summary; it exits non-zero on any mismatch or validator finding.
OPS ?= 1000000
SEED ?= 1
soak: deps
	@cmake --preset default >/dev/null
	@cmake --build --preset default --target splinecore_soak_driver
	@./build/default/tests/splinecore_soak_driver $(OPS) $(SEED)

demo:
	@scripts/install-deps.sh demo
	@cmake --preset default >/dev/null
	@for target in splinecore-demo splinecore_python; do \
	  grep -q "^build $$target:" build/default/build.ninja || { echo "make demo: $$target is not configured:" \
	    "a package is missing (cmake --preset default names it; scripts/install-deps.sh demo installs them)" >&2; \
	    exit 1; }; \
	done
	@cmake --build --preset default --target splinecore-demo splinecore_python
	@./build/default/examples/splinecore-demo --out build/demo/figure

# Regenerates the demo's golden table from the current build; run it only on
# purpose, after checking the new values (see examples/tests/CMakeLists.txt).
demo-expected:
	@scripts/install-deps.sh demo
	@cmake --preset default >/dev/null
	@cmake --build --preset default --target splinecore-demo
	@./build/default/examples/splinecore-demo --table-only > examples/tests/builtin_figure.table
	@echo "wrote examples/tests/builtin_figure.table"

bench:
	@scripts/install-deps.sh bench
	@cmake --preset bench >/dev/null
	@cmake --build --preset bench
	@./build/bench/bench/splinecore_bench

# make fuzz FUZZ_SECONDS=300: builds the fuzz targets with clang and libFuzzer
# and runs each for that long; non-zero exit on a crash.
FUZZ_SECONDS ?= 60
fuzz:
	@scripts/install-deps.sh demo fuzz
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz
	@fuzz/run.sh $(FUZZ_SECONDS)

# The API reference (Doxygen) in build/docs/html; any warning, such as an
# undocumented public declaration, fails it.
docs:
	@scripts/install-deps.sh docs
	@mkdir -p build/docs
	@doxygen docs/Doxyfile
	@echo "make docs: wrote build/docs/html/index.html"

# The runtime and -dev .debs and a .tar.gz, in build/default/packages.
package: deps
	@cmake --preset default >/dev/null
	@cmake --build --preset default
	@cd build/default && cpack -B packages

clean:
	rm -rf build
