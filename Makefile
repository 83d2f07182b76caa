# Thin: CMake presets do the building. `make help` lists the commands.
.DEFAULT_GOAL := help
.PHONY: help demo test test-core test-web torture fuzz build bench web lighthouse phone commands format lint clean deb test-deb setup setup-test setup-lint setup-fuzz setup-web setup-deb FORCE

help: ## this list
	@awk -F ':.*## ' '/^[a-z-]+:.*## / { printf "make %-10s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)
	@echo "What a command needs and is missing is installed first, as root or by sudo."

setup:
	@scripts/setup.sh build
setup-test:
	@scripts/setup.sh test
setup-lint:
	@scripts/setup.sh lint
setup-fuzz:
	@scripts/setup.sh fuzz
setup-web:
	@scripts/setup.sh web
setup-deb:
	@scripts/setup.sh deb

demo: build/veyla ## build the program, and measure the built-in fingertip
	@if [ -t 1 ]; then pace=--realtime; fi; \
	build/veyla measure --data build/demo-data $$pace </dev/null

build/veyla: setup FORCE
	@cmake --preset release -DVEYLA_TESTS=OFF >/dev/null
	@cmake --build --preset release --target veyla

build: setup-test ## build the program, its tests and benchmarks
	@cmake --preset release -DVEYLA_TESTS=ON >/dev/null
	@cmake --build --preset release

test: setup-test ## build everything, and run every test
	@scripts/test.sh

test-core: setup-test ## build and run the core's own tests alone
	@cmake --preset release -DVEYLA_TESTS=ON >/dev/null
	@cmake --build --preset release --target veyla_core_tests
	@LC_ALL=C.UTF-8 ctest --test-dir build/release -L '^core$$' --no-tests=error \
	  --output-on-failure --progress -j "$$(nproc)"

test-web: setup-test ## test the phone app alone, in real browsers
	@cmake --preset release >/dev/null && cmake --build --preset release --target veyla
	@scripts/test_web.sh

torture: setup-test ## for minutes, do to the program whatever might lose data
	@cmake --preset release >/dev/null && cmake --build --preset release --target veyla
	@cmake --preset threads >/dev/null && cmake --build --preset threads --target veyla tune_settings
	@scripts/torture.sh

fuzz: setup-fuzz ## search for input that breaks it, FUZZ_SECONDS (60) a target
	@cmake --preset fuzz >/dev/null && cmake --build --preset fuzz
	@scripts/fuzz.sh

web: setup-web ## build the phone app into build/site, serve it on localhost
	@scripts/build_web.sh
	@cd apps/web && npx --no-install vite preview --host 127.0.0.1

deb: setup-deb ## build Debian packages of program and page into build/deb
	@scripts/build_deb.sh

test-deb: deb ## the same; install, try, remove them on a bare Debian 12
	@scripts/test_deb.sh

lighthouse: setup-test ## build the phone app, and have Lighthouse judge it as on a phone
	@scripts/build_web.sh
	@cd apps/web/audit && npm install --silent --no-package-lock --ignore-scripts --no-audit --no-fund
	@cd apps/web/audit && ../node_modules/.bin/vite-node lighthouse.ts

phone: setup-web ## build the phone app, serve it to a phone in your network
	@scripts/build_web.sh
	@cd apps/web && exec node_modules/.bin/vite preview --config phone/vite.config.ts --logLevel warn

commands: build/veyla ## write docs/commands.md's tables from the program's texts
	@scripts/describe_commands.sh

bench: build ## measure the speed, as ratios to a yardstick of the same run
	@build/release/benchmarks/veyla_benchmarks --benchmark_repetitions=5 \
	  --benchmark_report_aggregates_only=true
	@scripts/bench_series.sh

format: setup-lint ## format the code
	@git ls-files '*.h' '*.cpp' | xargs clang-format-14 -i
	@scripts/web_packages.sh && cd apps/web && npm run --silent format

lint: setup-lint ## check the formatting, and with clang-tidy what is not a test
	@git ls-files '*.h' '*.cpp' | xargs clang-format-14 --dry-run -Werror
	@cmake --preset lint >/dev/null
	@cmake --build --preset lint --target veyla_resources
	@git ls-files '*.cpp' ':!tests' ':!benchmarks' ':!apps/web' ':!platform/web' | \
	  xargs -P "$$(nproc)" -n 4 clang-tidy-14 -p build/lint --quiet
	@emcmake cmake --preset web >/dev/null
	@git ls-files 'apps/web/*.cpp' 'platform/web/*.cpp' | xargs -P "$$(nproc)" -n 4 clang-tidy-14 \
	  -p build/web --quiet --checks=-bugprone-dynamic-static-initializers --extra-arg-before=--target=wasm32-unknown-emscripten \
	  --extra-arg-before=--sysroot="$$(em-config CACHE)/sysroot"
	@scripts/web_packages.sh && cd apps/web && npm run --silent lint

clean: ## remove what was built
	@rm -rf build
