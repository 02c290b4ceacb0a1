#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang++ without touching the main build: the core sources
# (src/util, src/engine, src/jobs) are compiled with the fuzzer instrumentation and the address
# and undefined-behaviour sanitizers into BUILD/obj, then each harness is linked against them.
# Usage: fuzz/build.sh [BUILD_FOLDER]   (default: build-fz beside fuzz/)
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
out="${1:-$root/build-fz}"
cxx="${CXX_FUZZ:-clang++-14}"
mkdir -p "$out/obj"

pkgs="xlsxwriter libzip libgsf-1 pugixml re2"
cflags="-std=c++20 -g -O1 -fno-omit-frame-pointer -fsanitize=address,undefined,fuzzer-no-link \
 -Wall -Wextra -I$root/src -I$here $(pkg-config --cflags $pkgs) -DKROVELD_VERSION=\"fuzz\""
libs="$(pkg-config --libs $pkgs) -lpthread"

# Compile the core sources that changed (two at a time: the machine is shared).
mapfile -t sources < <(cd "$root" && ls src/util/*.cpp src/engine/*.cpp src/jobs/*.cpp src/jobs/*/*.cpp)
objects=()
todo=()
for s in "${sources[@]}"; do
  o="$out/obj/$(echo "$s" | tr / _).o"
  objects+=("$o")
  if [[ ! -f "$o" || "$root/$s" -nt "$o" ]] || find "$root/src" -name '*.h' -newer "$o" | grep -q .; then
    todo+=("$s")
  fi
done
if ((${#todo[@]})); then
  printf '%s\n' "${todo[@]}" | xargs -P2 -I{} sh -c \
    'o="$1/obj/$(echo "$2" | tr / _).o"; '"$cxx $cflags"' -c "$3/$2" -o "$o"' _ "$out" {} "$root"
fi
rm -f "$out/libcore.a"
ar qc "$out/libcore.a" "${objects[@]}"

for h in numbers template export_specs report workbook; do
  $cxx $cflags -fsanitize=fuzzer "$here/${h}_fuzz.cpp" "$out/libcore.a" $libs -o "$out/${h}_fuzz"
done
echo "harnesses in $out"
