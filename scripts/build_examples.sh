#!/usr/bin/env bash
# Installs a built library into a prefix and builds the examples against that copy, as a user would: through the CMake
# package into OUT, and through pkg-config into OUT/pkgconfig.
#   scripts/build_examples.sh LIBRARY-BUILD PREFIX OUT
set -euo pipefail
build=$1 prefix=$2 out=$3
root=$(cd "$(dirname "$0")/.." && pwd)

cmake --install "$build" --prefix "$prefix" >/dev/null
cmake -S "$root/examples" -B "$out" -G Ninja -DCMAKE_C_COMPILER=clang-19 -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$out" >/dev/null

mkdir -p "$out/pkgconfig"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs morvenqvr sndfile cairo libpng libjpeg)"
for source in "$root"/examples/*.c; do
    clang-19 -O2 "$source" "$root"/examples/common/*.c -o "$out/pkgconfig/$(basename "$source" .c)" \
        "${flags[@]}" -lm -Wl,-rpath,"$prefix/lib"
done
