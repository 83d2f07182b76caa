# Thin: CMake presets do the building. `make help` lists the commands.
.DEFAULT_GOAL := help
.PHONY: help demo test build bench format lint clean setup setup-test setup-lint

help: ## this list
	@awk -F ':.*## ' '/^[a-z-]+:.*## / { printf "make %-8s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)

setup:
	@scripts/setup.sh build
setup-test:
	@scripts/setup.sh test
setup-lint:
	@scripts/setup.sh lint

build: setup-test ## install what is missing and build the program, its tests and benchmarks
	@cmake --preset release >/dev/null
	@cmake --build --preset release

test: setup-test ## install what is missing, build, and run every test
	@scripts/test.sh

format: setup-lint ## format the code
	@git ls-files '*.h' '*.cpp' | xargs clang-format-14 -i

clean: ## remove what was built
	@rm -rf build
