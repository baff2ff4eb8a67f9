#!/usr/bin/env bash
# A stranger's host, built and run in each of the three ways that are open to it.
#
#   tests/packaging/check_consumers.sh BUILD    BUILD: a build of the library and the program
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
host=$root/examples/host

expect() {
  local printed
  printed=$("${@:2}")
  [ "$printed" = 'X 110.000 mm, Z 5.000 mm, B 0.644 rad' ] || { echo "$1: the host prints: $printed" >&2 && exit 1; }
  echo "$1: the host builds and runs"
}

cmake --install "$build" --prefix "$folder/first" >/dev/null
mv "$folder/first" "$folder/prefix" # an installation can be moved
libraries=$(dirname "$(find "$folder/prefix" -name libtrunnion.so)")

cmake -S "$host" -B "$folder/package" -DCMAKE_PREFIX_PATH="$folder/prefix" >/dev/null
cmake --build "$folder/package" >/dev/null
expect find_package "$folder/package/host"

export PKG_CONFIG_PATH=$libraries/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs trunnion)"
c++ -std=c++17 -Wall -Wextra -Werror "$host/host.cpp" "${flags[@]}" -o "$folder/by-flags"
expect pkg-config env LD_LIBRARY_PATH="$libraries" "$folder/by-flags"

cmake -S "$root/tests/packaging/subdirectory" -B "$folder/whole" -G Ninja \
  -DCMAKE_UNITY_BUILD=ON -DTRUNNION_SOURCE="$root" -DHOST_SOURCE="$host/host.cpp" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" >/dev/null
cmake --build "$folder/whole" --target help | grep -qE '_tests|trunnion_program|example' &&
  { echo 'add_subdirectory: targets besides the library are there' >&2 && exit 1; }
cmake --build "$folder/whole" --target host >/dev/null
expect add_subdirectory "$folder/whole/host"

"$folder/prefix/bin/trunnion" pose "$folder/prefix/share/trunnion/samples/machines/trunnion-ac.toml" >/dev/null
echo 'the installed program finds its library'

# Names of other versions are refused.
mkdir "$folder/other"
printf 'cmake_minimum_required(VERSION 3.16)\nproject(other LANGUAGES CXX)\nfind_package(trunnion 9 REQUIRED)\n' \
  >"$folder/other/CMakeLists.txt"
if cmake -S "$folder/other" -B "$folder/other/build" -DCMAKE_PREFIX_PATH="$folder/prefix" >/dev/null 2>&1; then
  echo 'find_package: version 9 is taken for there' >&2 && exit 1
fi
echo 'find_package: a version that is not there is refused'
