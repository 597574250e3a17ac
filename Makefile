# Wraps the CMake presets so that a fresh machine needs only two commands:
# `make run` and `make test`. Both install missing system packages first.

CMAKE ?= cmake
CTEST ?= ctest
JOBS  ?= 2
PREFIX ?= /usr/local

# Steps run one after another even under `make -j`: deps must finish before configuring.
.NOTPARALLEL:
.PHONY: all deps build run test asan tsan fuzz bench clean help install differential

all: build

help:
	@echo "make deps   install missing system packages (apt-get)"
	@echo "make build  configure and build with the default preset (build/default)"
	@echo "make run    deps + build, then run examples/hello.bas"
	@echo "make test   deps + build, then run every test with ctest"
	@echo "make asan   deps, then build and test with AddressSanitizer + UBSan (build/asan)"
	@echo "make tsan   deps, then build and run the host and thread tests under ThreadSanitizer (build/tsan)"
	@echo "make fuzz   deps + clang, then fuzz each target for FUZZ_SECONDS (default 60) with ASan + UBSan (build/fuzz)"
	@echo "make bench  peers + build, then time bench/ against lua5.4, yabasic and brandy"
	@echo "make differential  build, then compare both engines on DIFF_PROGRAMS (5000) generated programs"
	@echo "make install PREFIX=DIR  build, then install under DIR (default /usr/local; DESTDIR honoured)"
	@echo "make clean  remove the build directories"

deps:
	@bash scripts/install-deps.sh

# Configure (quietly: only warnings and errors reach the terminal) and build one preset.
# $(1) is the preset name.
define configure_and_build
	@echo "== configure $(1)"
	@$(CMAKE) --preset $(1) --log-level=WARNING >/dev/null
	@echo "== build $(1)"
	@$(CMAKE) --build --preset $(1)
endef

build:
	$(call configure_and_build,default)

# Only the library and the runner: running an example needs no test program.
run: deps
	@echo "== configure default"
	@$(CMAKE) --preset default --log-level=WARNING >/dev/null
	@echo "== build orvobasic"
	@$(CMAKE) --build --preset default --target orvobasic
	@build/default/orvobasic examples/hello.bas

test: deps build
	@echo "== test default"
	@$(CTEST) --preset default -j$(JOBS) --output-on-failure

asan: deps
	$(call configure_and_build,asan)
	@echo "== test asan"
	@$(CTEST) --preset asan -j$(JOBS) --output-on-failure

# Library, headers, runner, pkg-config file and CMake package under PREFIX.
install: build
	@$(CMAKE) --install build/default --prefix "$(PREFIX)"

tsan: deps
	$(call configure_and_build,tsan)
	@echo "== test tsan"
	@$(CTEST) --preset tsan -j$(JOBS) --output-on-failure

FUZZ_SECONDS ?= 60

fuzz:
	@bash scripts/install-deps.sh --fuzz
	@bash tests/fuzz/run_fuzz.sh $(FUZZ_SECONDS)

BENCH_REPS ?= 3

bench:
	@bash scripts/install-deps.sh --bench
	$(call configure_and_build,default)
	@python3 bench/compare.py build/default/orvobasic --reps $(BENCH_REPS) || true
	@bash bench/run_bench.sh

# Many more generated programs through both engines than `make test` runs.
DIFF_PROGRAMS ?= 5000
differential: build
	@python3 tests/differential/run_differential.py --runner build/default/orvobasic --random $(DIFF_PROGRAMS)

clean:
	rm -rf build
