# SPDX-License-Identifier: BSD-3-Clause
# The everyday commands. Each installs the Debian packages that it needs, when it may, and says which when it may not.
#
#   make              build the release configuration in build/
#   make run          build, and run the agent on loopback (ONCE=1: query it once and stop it)
#   make test         build and test the release configuration, and check the layout of the sources
#   make test-all     and the same tests with sanitizers, and those of the device's shape (powerpc) under emulation; the
#                     benchmarks are built
#   make test-device  build and test for powerpc, armhf, aarch64 and x86-64: the same tests on each
#   make fuzz         build the fuzzers and run each for some time (SECONDS=60)
#   make lint         run clang-tidy over all sources (minutes)
#   make coverage     the lines and branches of the module that its tests run
#   make mutation     flip each comparison, constant and operator of the module and say what no test notices
#                     (FILES="addr/ frame/walk": only these; MINUTES=30; AGAIN=1: only what survived the last run)
#   make abi          the binary interface of the module and of what it needs, beside the stored one
#   make static-analysis
#                     clang-tidy's CERT and bugprone checks over the module, with the reason of each deviation
#   make traceability each object that is answered: its line of the catalogue, its handler, its tests
#   make reproducible build everything that is installed twice in different surroundings and compare (KINDS="Release packages")
#   make sbom         every file with its copyright and licence, as SPDX; make dependencies: the Debian packages with versions
#   make evidence     all of these and coverage, mutation, fuzz and footprint, with an index, in build-evidence/
#                     (hours; PARTS="sbom coverage": only these)
#   make footprint    what the module costs a device: bytes, stack, instructions, on four processors
#   make compare      the agent beside Debian's snmpd, ten minutes as root; docs/performance.md holds what it prints
#   make agentx-soak  restart an snmpd with ipmibd beside it again and again (COUNT=100), two minutes as root
#   make hostile-soak hostile clients of every kind for a while (SECONDS=300), and how long a normal one waits then; as root
#   make namespace-soak  delete a network namespace and make it again in the middle of walks (COUNT=1000); as root
#   make state-soak   kill the agent at random moments again and again (COUNT=1000) and see whether it knows its users
#   make docs         write the output of commands that documents show anew
#   make packages     build the Debian packages in build-packages/
#   make packages-check
#                     install, use and purge them on a bare Debian in a folder (needs root)
#   make image        make an OCI image of these packages in build-image/, for podman, docker and the like
#   make image-check  unpack it, run it by an OCI runtime on a machine in a namespace and ask it (needs root)
#   make rpm          build the same packages as RPM in build-rpm/
#   make format       lay out the sources

.DEFAULT_GOAL := build
.PHONY: build run test test-all test-device fuzz lint static-analysis abi coverage mutation traceability footprint reproducible sbom dependencies evidence compare agentx-soak hostile-soak namespace-soak state-soak docs packages packages-check image image-check rpm format clean

sources = find $(wildcard agent bench cli examples fuzz host include module platform support tables tests tools) -name '*.h' -o -name '*.cpp' -o -name '*.c'

# Those that tests/docs compares.
transcripts = docs/agentcheck.md docs/ipmibctl.md docs/porting.md docs/simulated-device.md tests/cli/mistakes.md

# The precompiled headers and the own options of one compiler are no good to another, and each source is looked at alone.
configure_lint = cmake --preset release -B build-lint -DIPMIB_BUILD_TESTS=ON -DIPMIB_BUILD_BENCH=ON \
    -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DIPMIB_COMMANDS_FOR_CLANG=ON -DIPMIB_UNITY=OFF >&2

build:
	@packaging/install_dependencies.sh run build
	cmake --preset release -DIPMIB_BUILD_TESTS=OFF -DIPMIB_BUILD_BENCH=OFF
	cmake --build --preset release

run: build
	@packaging/run.sh $(if $(ONCE),once)

test:
	@packaging/install_dependencies.sh run build test
	@$(sources) | xargs clang-format --dry-run --Werror
	cmake --preset release -DIPMIB_BUILD_TESTS=ON -DIPMIB_BUILD_BENCH=OFF
	cmake --build --preset release
	ctest --preset release

test-all: test
	@packaging/install_dependencies.sh test-all
	cmake --preset release -DIPMIB_BUILD_BENCH=ON
	cmake --build --preset release
	ctest --preset release-rest
	cmake --preset asan
	cmake --build --preset asan
	ctest --preset asan
	@tests/device/run.sh powerpc
	@tests/cases.py --part build build-asan build-powerpc

test-device:
	@packaging/install_dependencies.sh build test test-all device
	@tests/device/run.sh powerpc armhf aarch64 x86-64

# What a target below measures is on its standard output, what its build says on standard error.

lint:
	@packaging/install_dependencies.sh run build test lint
	@$(configure_lint)
	@$(sources) | grep '\.cpp$$' | xargs -P 2 -n 4 clang-tidy --quiet -p build-lint --extra-arg=-Wno-unknown-warning-option

static-analysis:
	@packaging/install_dependencies.sh run build test lint
	@$(configure_lint)
	@evidence/static_analysis.py build-lint

fuzz:
	@packaging/install_dependencies.sh build test fuzz
	cmake --preset fuzz >&2
	cmake --build --preset fuzz >&2
	@fuzz/run.sh build-fuzz $(or $(SECONDS),60)

coverage:
	@packaging/install_dependencies.sh build test
	@tests/coverage/run.sh

mutation:
	@packaging/install_dependencies.sh build test
	cmake --preset mutation >&2
	cmake --build --preset mutation >&2
	@tests/mutation/check.py build-mutation $(if $(FILES),--files $(FILES)) $(if $(MINUTES),--minutes $(MINUTES)) \
	    $(if $(AGAIN),--again)

traceability:
	@packaging/install_dependencies.sh build test
	cmake --preset coverage >&2
	cmake --build --preset coverage >&2
	@evidence/traceability.py build-coverage/module/module_test

reproducible:
	@packaging/install_dependencies.sh run build packages evidence
	@evidence/reproducible.sh $(KINDS)

abi:
	@packaging/install_dependencies.sh build test
	@tests/library/abi.sh

sbom:
	@packaging/install_dependencies.sh evidence
	@document=$$(reuse spdx) && printf '%s\n' "$$document" | sed 's/^DocumentName: .*/DocumentName: ipmib at $(shell git describe --always --dirty --abbrev=12)/'

dependencies:
	@packaging/install_dependencies.sh run build
	@packaging/install_dependencies.sh --versions run build

evidence:
	@packaging/install_dependencies.sh run build test test-all device lint fuzz packages evidence
	@evidence/collect.py build-evidence $(PARTS)

footprint:
	@packaging/install_dependencies.sh build test test-all device
	@bench/footprint.sh

agentx-soak: build
	@packaging/install_dependencies.sh test
	@tests/e2e/restart_soak.py build/sbin/ipmibd $(or $(COUNT),100)

hostile-soak: build
	@packaging/install_dependencies.sh test
	@tests/e2e/hostile_soak.py build/sbin/ipmibd $(or $(SECONDS),300)

namespace-soak: build
	@packaging/install_dependencies.sh test
	@tests/e2e/namespace_soak.py build/sbin/ipmibd $(or $(COUNT),1000)

state-soak: build
	@packaging/install_dependencies.sh test
	@tests/e2e/state_soak.py build/sbin/ipmibd $(or $(COUNT),1000)

docs: build
	@packaging/install_dependencies.sh test
	@tests/docs/transcript.py --programs build/bin --update $(transcripts)
	@tests/docs/picture.py --programs build/bin --update docs/terminal.svg docs/terminal.commands
	@tests/docs/counterparts.py --update
	@tools/agentcheck/testing/agents_test.py --update build/sbin/ipmibd build/bin/ipmib-agentcheck build/lib/ipmib/ipmib_snmpd.so
	@tests/collectors/collectors_test.py --update build/sbin/ipmibd
	@tests/collectors/exporter_test.py --update build/sbin/ipmibd

packages:
	@packaging/install_dependencies.sh build packages
	@packaging/build_packages.sh

packages-check: packages
	@packaging/check_packages.sh

image:
	@packaging/install_dependencies.sh build packages image
	@packaging/build_image.sh

image-check: image
	@packaging/check_image.sh

rpm:
	@packaging/install_dependencies.sh build rpm
	@packaging/build_rpm.sh

compare:
	@packaging/install_dependencies.sh run build bench
	cmake --preset release -DIPMIB_BUILD_TESTS=OFF -DIPMIB_BUILD_BENCH=ON
	cmake --build --preset release
	bench/compare.py --write docs/performance.md

format:
	@$(sources) | xargs clang-format -i

clean:
	rm -rf build build-*
