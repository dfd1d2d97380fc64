#!/usr/bin/env bash
# Installs the build into a folder of its own, builds a C program against it through pkg-config and another through the CMake
# package, and runs them with the installed catalogues.   check.sh <source folder> <build folder>
set -eu
source=$1 build=$2 prefix=$2/install-check
rm -rf "$prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null
sed "s|^prefix=.*|prefix=$prefix|" "$prefix/lib/pkgconfig/zent.pc" >"$prefix/zent.pc"
flags="-I$prefix/include -L$prefix/lib -Wl,-rpath,$prefix/lib"
if command -v pkg-config >/dev/null; then
  flags="$(PKG_CONFIG_PATH=$prefix pkg-config --cflags --libs zent) -Wl,-rpath,$prefix/lib"
fi
cc "$source/examples/constants.c" $flags -lzent -o "$prefix/constants"
mkdir -p "$prefix/consumer"
cat >"$prefix/consumer/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.22)
project(consumer C CXX)
find_package(zent REQUIRED)
add_executable(consumer $source/examples/constants.c)
set_target_properties(consumer PROPERTIES LINKER_LANGUAGE CXX)
target_link_libraries(consumer zent::zent_static)
END
cmake -S "$prefix/consumer" -B "$prefix/consumer/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$prefix/consumer/build" >/dev/null
export ZENTERRPATH=$prefix/lib/
for program in "$prefix/constants" "$prefix/consumer/build/consumer"; do
  output=$("$program" 2>&1)
  grep -q "299792.458 km/s" <<<"$output"
  grep -q "15.10.1582" <<<"$output"
  grep -q "MATH_INCOMPATIBLE_UNITS\|12112" <<<"$output"
done
output=$(env -u ZENTERRPATH "$prefix/bin/orv" -e 'print constant("speedlight", unit="km/s")')
grep -q "299792.458" <<<"$output"
echo "installed and used"
