#!/usr/bin/env bash
# Installs what is missing, builds, and passes the tests: the release build, then the same suite under the sanitizers.
#   ./test.sh            both
#   ./test.sh release    one preset: release, debug or asan
set -eu
cd "$(dirname "$0")"
tools/setup.sh
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release asan)
for preset in "${presets[@]}"; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
