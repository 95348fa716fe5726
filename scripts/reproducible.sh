#!/usr/bin/env bash
# Builds one commit twice, in folders of different names and depths, as for packages, and compares the shared objects
# and the packages byte by byte.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build package
commit=$(git rev-parse HEAD)
rm -rf build/reproducible
for folder in a another/deeper/folder; do
    mkdir -p "build/reproducible/$folder"
    git archive "$commit" | tar -x -C "build/reproducible/$folder"
    (cd "build/reproducible/$folder" && cmake --preset package -DQVR_PYTHON=OFF >/dev/null &&
        cmake --build --preset package -j "${JOBS:-$(nproc)}" >/dev/null && cd build/package && cpack -B ../packages >/dev/null 2>&1)
done
first=build/reproducible/a/build second=build/reproducible/another/deeper/folder/build
cmp $first/package/libmorvenqvr.so.1 $second/package/libmorvenqvr.so.1
diff -r $first/packages $second/packages -x _CPack_Packages
(cd $first/packages && sha256sum -- *.deb)
echo "Both builds gave the same bytes"
