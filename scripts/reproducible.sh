#!/usr/bin/env bash
# Builds the committed state twice, in folders of different names and depths, and compares the shared objects.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build
rm -rf build/reproducible
for folder in a another/deeper/folder; do
    mkdir -p "build/reproducible/$folder"
    git archive HEAD | tar -x -C "build/reproducible/$folder"
    (cd "build/reproducible/$folder" && cmake --preset release -DQVR_TESTS=OFF >/dev/null &&
        cmake --build --preset release -j "${JOBS:-$(nproc)}" >/dev/null)
done
cmp build/reproducible/a/build/release/libmorvenqvr.so.1 build/reproducible/another/deeper/folder/build/release/libmorvenqvr.so.1
echo "Both builds gave the same bytes: $(sha256sum build/reproducible/a/build/release/libmorvenqvr.so.1 | cut -d' ' -f1)"
