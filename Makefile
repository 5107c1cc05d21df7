# SPDX-License-Identifier: GPL-3.0-or-later
# The doors to the project. `make run` and `make test` work on a fresh Debian 12 machine: each installs what is missing.
SHELL := /bin/bash
CMAKE := cmake
JOBS ?= $(shell nproc)

.PHONY: help run demo build test bench dependencies tidy format clean

help:
	@echo "make run     build and open Tidewright on your kubeconfig, or on the demo cluster when there is none"
	@echo "make demo    the same, always on the demo cluster"
	@echo "make build   release build as a package tree in build/package"
	@echo "make test    build and run all tests, with the sanitizers too"
	@echo "make bench   measure the performance budgets"
	@echo "make tidy    clang-tidy; make format: clang-format; make clean: remove build/"

dependencies:
	@scripts/install-dependencies.sh

build: dependencies
	$(CMAKE) --preset release
	$(CMAKE) --build --preset release -j $(JOBS)
	$(CMAKE) --install build/release --prefix build/package
	@python3 cmake/check-hardening.py build/package/bin/tidewright build/package/libexec/tidewright/*-guard

run: build
	@scripts/run.sh

demo: build
	@scripts/run.sh --demo

test: dependencies
	@scripts/test.sh

bench: dependencies
	@scripts/bench.sh

tidy:
	$(CMAKE) --preset dev
	$(CMAKE) --build --preset dev -j $(JOBS)
	git ls-files 'src/*.cpp' 'demo/*.cpp' | xargs -P $(JOBS) -n 4 clang-tidy -p build/dev --quiet

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build
