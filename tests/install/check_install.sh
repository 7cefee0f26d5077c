#!/usr/bin/env bash
# Installs the built tree into a scratch prefix and builds a small consumer
# against it twice: through find_package(qelsr) and through pkg-config.
set -euo pipefail
build=$1 here=$2
prefix=$build/install-check/prefix
work=$build/install-check
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$prefix" > "$work/install.log"

for f in include/qelsr.h lib/libqelsru8.so.6.1 lib/libqelsru8.so lib/libqelsru8.a \
         lib/libqelcore.a lib/pkgconfig/qelsr.pc lib/cmake/qelsr/qelsrConfig.cmake; do
  [ -e "$prefix/$f" ] || { echo "missing after install: $f"; exit 1; }
done
[ "$(readlink "$prefix/lib/libqelsru8.so")" = "libqelsru8.so.6.1" ] || { echo "bad libqelsru8.so link"; exit 1; }

# CMake package.
cmake -S "$here/consumer" -B "$work/cmake-build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" > "$work/cmake.log"
cmake --build "$work/cmake-build" > "$work/cmake-build.log"
"$work/cmake-build/consumer" | grep -q "libqelsru8.so.6.1"

# pkg-config.
PKG_CONFIG_PATH="$prefix/lib/pkgconfig" cc -std=c99 -Wall -o "$work/consumer-pc" "$here/consumer/consumer.c" \
  $(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --cflags --libs qelsr)
"$work/consumer-pc" | grep -q "libqelsru8.so.6.1"
echo "install check passed"
