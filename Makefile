# The common tasks, each a few commands of CMake. Works on a Debian system that has only make:
# what a task needs is installed first (see cmake/install_packages.sh).

PREFIX = /usr/local
DEMO_DIR = demo

BUILD_PACKAGES = g++ cmake ninja-build libgdal-dev libcli11-dev nlohmann-json3-dev
PYTHON_PACKAGES = pybind11-dev python3-dev python3-numpy
TEST_PACKAGES = $(BUILD_PACKAGES) $(PYTHON_PACKAGES) clang libgtest-dev libgmock-dev libmpfr-dev pkgconf \
  python3 abigail-tools doxygen doxygen-awesome-css python3-scipy python3-gdal python3-pytest \
  python3-hypothesis python3-dask python3-distributed python3-matplotlib
LONG_TEST_PACKAGES = $(TEST_PACKAGES) libclang-rt-dev
COVERAGE_PACKAGES = $(TEST_PACKAGES) gcovr
DOCS_PACKAGES = $(BUILD_PACKAGES) python3 doxygen doxygen-awesome-css
PACKAGE_PACKAGES = $(DOCS_PACKAGES) $(PYTHON_PACKAGES) dpkg-dev file gzip lintian
WINDOWS_PACKAGES = cmake ninja-build g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix clang lld llvm \
  wine64 googletest
ARM_PACKAGES = cmake ninja-build g++-aarch64-linux-gnu g++-s390x-linux-gnu qemu-user googletest
LINT_PACKAGES = $(TEST_PACKAGES) clang-format clang-tidy
BENCH_PACKAGES = $(BUILD_PACKAGES) $(PYTHON_PACKAGES) libbenchmark-dev libfftw3-dev \
  libopenblas-dev liblapacke-dev pkgconf gdal-bin python3-gdal python3-scipy

# How many processes a build and a test run may use.
JOBS = $$(nproc 2>/dev/null || echo 2)

# What `make test` runs under ThreadSanitizer: these tests of these programs.
THREAD_PROGRAMS = contract_test host_file_layer_test
THREAD_TESTS = RunsBesideEveryOther|^CInterface|a_race_is_reported|OfTwoThreads
# And under AddressSanitizer and UndefinedBehaviorSanitizer: all tests of the target checked_programs.
UNCHECKED_TESTS = ^package|^docs|^examples|_NOT_BUILT$$

.PHONY: help demo test test-long test-windows test-arm coverage bench lint docs package test-package install clean

help:
	@echo 'make demo                simulate a radar scene, multilook it, show its spectrum'
	@echo 'make demo IMAGE=path     the same on a radar image of your own'
	@echo 'make test                build everything; run the tests, as they are and under sanitizers'
	@echo 'make test-long           the tests that take long: all under AddressSanitizer and'
	@echo '                         UndefinedBehaviorSanitizer, fuzzing, seeded faults (up to an hour)'
	@echo 'make test-windows        build the DLLs for Windows; run their tests under Wine'
	@echo 'make test-arm            build for 64-bit ARM; run the tests under QEMU, and the digests for a'
	@echo '                         machine of the other byte order, too'
	@echo 'make coverage            which branches of the library the tests take (build/coverage)'
	@echo 'make bench               time the library against FFTW, OpenBLAS, GDAL, NumPy, SciPy, memory'
	@echo '                         (one table of ratios; JSON in build/bench)'
	@echo 'make lint                check the format of the sources and run clang-tidy'
	@echo 'make docs                write the site of documents and reference, build/docs/docs/site'
	@echo 'make package             build Debian packages, build/package/*.deb'
	@echo 'make test-package        install, use and remove them in a clean system (as root)'
	@echo 'make install PREFIX=dir  install libraries, headers and the tool (default /usr/local)'
	@echo 'make clean               remove the build folders and what the demo wrote'

# IMAGE reaches the script through the environment, so that any file name survives.
demo:
	@sh cmake/install_packages.sh $(BUILD_PACKAGES)
	@cmake -S . -B build/demo -G Ninja -DCMAKE_BUILD_TYPE=Release \
	  -DSARNUM_BUILD_TOOLS=ON -DSARNUM_BUILD_EXAMPLES=ON --log-level=WARNING >/dev/null
	@cmake --build build/demo --parallel "$(JOBS)" --target sarnum_tool simulate_scene
	@sh examples/demo.sh build/demo '$(DEMO_DIR)' $${IMAGE:+"$$IMAGE"}

# The tests as they are come last: theirs is the summary that one sees.
test:
	@sh cmake/install_packages.sh $(TEST_PACKAGES)
	for preset in tsan asan-ubsan clang release; do cmake --preset $$preset || exit 1; done
	cmake --build --preset tsan --parallel "$(JOBS)" --target $(THREAD_PROGRAMS)
	ctest --preset tsan --parallel "$(JOBS)" --tests-regex '$(THREAD_TESTS)'
	cmake --build --preset asan-ubsan --parallel "$(JOBS)" --target checked_programs
	ctest --preset asan-ubsan --parallel "$(JOBS)" --label-exclude '^long$$' \
	  --exclude-regex '$(UNCHECKED_TESTS)'
	cmake --build --preset clang --parallel "$(JOBS)"
	ctest --preset clang --parallel "$(JOBS)"
	cmake --build --preset release --parallel "$(JOBS)"
	ctest --preset release --parallel "$(JOBS)" --label-exclude '^long$$'

test-long:
	@sh cmake/install_packages.sh $(LONG_TEST_PACKAGES)
	for preset in asan-ubsan fuzz release; do \
	  cmake --preset $$preset && cmake --build --preset $$preset --parallel "$(JOBS)" || exit 1; \
	done
	ctest --preset asan-ubsan --parallel "$(JOBS)"
	ctest --preset fuzz
	ctest --preset release --parallel "$(JOBS)" --label-regex '^long$$'

# A build and a run of its own: nothing of it depends on what the other targets made.
test-windows:
	@sh cmake/install_packages.sh $(WINDOWS_PACKAGES)
	cmake --preset windows
	cmake --build --preset windows --parallel "$(JOBS)"
	ctest --preset windows --parallel "$(JOBS)"
	@cat build/windows/left_out.txt

# Likewise.
test-arm:
	@sh cmake/install_packages.sh $(ARM_PACKAGES)
	for preset in arm s390x; do \
	  cmake --preset $$preset && cmake --build --preset $$preset --parallel "$(JOBS)" && \
	  ctest --preset $$preset --parallel "$(JOBS)" || exit 1; \
	done
	@cat build/arm/left_out.txt

coverage:
	@sh cmake/install_packages.sh $(COVERAGE_PACKAGES)
	cmake --preset coverage
	cmake --build --preset coverage --parallel "$(JOBS)"
	find build/coverage -name '*.gcda' -exec rm {} +
	ctest --preset coverage --parallel "$(JOBS)" --label-exclude '^long$$' --exclude-regex '^package'
	mkdir -p build/coverage/html
	gcovr --root . --filter src/ --exclude src/kernel_vectors.h --exclude-throw-branches --exclude-unreachable-branches \
	  --branches --print-summary --html-details build/coverage/html/index.html build/coverage

# clang-tidy reads the commands of a build by clang, whose options it understands.
lint:
	@sh cmake/install_packages.sh $(LINT_PACKAGES)
	git ls-files -z '*.h' '*.cpp' | xargs -0 clang-format --dry-run --Werror
	cmake -S . -B build/lint -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug \
	  -DSARNUM_BUILD_TESTS=ON -DSARNUM_BUILD_PYTHON=ON -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
	git ls-files -z 'src/*.cpp' 'tools/*.cpp' 'examples/*.cpp' 'python/*.cpp' | \
	  xargs -0 -n 1 -P "$(JOBS)" clang-tidy --quiet --warnings-as-errors='*' -p build/lint

bench:
	@sh cmake/install_packages.sh $(BENCH_PACKAGES)
	cmake --preset bench
	cmake --build --preset bench --parallel "$(JOBS)" \
	  --target transforms_bench c_interface_bench numeric_bench linalg_bench multilook_bench \
	    sarnum_tool sarnum_python
	for name in transforms c_interface numeric linalg multilook; do \
	  build/bench/bench/$${name}_bench build/bench/$$name.json || exit 1; \
	done
	/usr/bin/python3 bench/tool_bench.py build/bench/tools/sarnum/sarnum build/bench/rasters \
	  build/bench/tool.json
	PYTHONPATH=build/bench/python /usr/bin/python3 bench/python_bench.py build/bench/python.json
	/usr/bin/python3 bench/table.py build/bench/all.json \
	  build/bench/transforms.json build/bench/c_interface.json build/bench/numeric.json build/bench/linalg.json \
	  build/bench/multilook.json build/bench/tool.json build/bench/python.json

docs:
	@sh cmake/install_packages.sh $(DOCS_PACKAGES)
	@cmake -S . -B build/docs -G Ninja -DCMAKE_BUILD_TYPE=Release \
	  -DSARNUM_BUILD_TOOLS=ON -DSARNUM_BUILD_EXAMPLES=ON --log-level=WARNING >/dev/null
	cmake --build build/docs --parallel "$(JOBS)" --target docs
	@echo 'The site is build/docs/docs/site/index.html'

package:
	@sh cmake/install_packages.sh $(PACKAGE_PACKAGES)
	@cmake -S . -B build/package -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
	  -DCMAKE_SKIP_INSTALL_RPATH=ON -DCMAKE_INSTALL_DOCDIR=share/doc/sarnum-doc \
	  -DSARNUM_BUILD_TOOLS=ON -DSARNUM_BUILD_EXAMPLES=ON -DSARNUM_BUILD_PYTHON=ON \
	  --log-level=WARNING >/dev/null
	cmake --build build/package --parallel "$(JOBS)" --target all docs
	cd build/package && rm -f *.deb && cpack >cpack.log || { cat cpack.log; exit 1; }
	lintian --fail-on error build/package/*.deb
	@ls build/package/*.deb

# As root: a whole system is set up for it, in a folder.
test-package: package
	@sh cmake/install_packages.sh debootstrap
	sh tests/package/clean_root.sh build/package README.md

install:
	@sh cmake/install_packages.sh $(BUILD_PACKAGES)
	cmake -S . -B build/install -G Ninja -DCMAKE_BUILD_TYPE=Release -DSARNUM_BUILD_TOOLS=ON
	cmake --build build/install --parallel "$(JOBS)"
	cmake --install build/install --prefix '$(PREFIX)'

clean:
	rm -rf build demo
