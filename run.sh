#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tour, or the script named: ./run.sh [script.orv [arguments]]
# With "-" as the script the shell starts interactively.
set -eu
cd "$(dirname "$0")"
here=$PWD
tools/setup.sh
log=build/run.log
mkdir -p build
{ cmake --preset release && cmake --build --preset release --target orv orv_zent orv_probe catalogues; } >"$log" 2>&1 ||
  { tail -n 40 "$log" >&2; echo "The build failed; the whole log is in $log." >&2; exit 1; }
cd "$OLDPWD" 2>/dev/null || true
case "${1:-}" in
  "") exec "$here/build/release/host/orv" "$here/examples/tour.orv" "$here/build/release/examples/orv_probe.so" ;;
  -) exec "$here/build/release/host/orv" ;;
  *) exec "$here/build/release/host/orv" "$@" ;;
esac
