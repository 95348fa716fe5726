#!/usr/bin/env bash
# Installs the Debian packages that a command needs and that are missing: scripts/packages.sh build|demo|test|package|packagetest|docs ...
set -euo pipefail

declare -A lists=(
    [build]="clang-19 lld-19 libomp-19-dev cmake ninja-build"
    [demo]="pkgconf libsndfile1-dev libcairo2-dev fonts-dejavu-core libpng-dev libjpeg62-turbo-dev alsa-utils python-matplotlib-data"
    [package]="dpkg-dev file binutils"
    [docs]="doxygen"
    [packagetest]="lintian debootstrap"
    [python]="python3-dev python3-numpy cython3 python3-setuptools python3-wheel python3-build"
    [test]="sollya abigail-tools doxygen valgrind libc6-dbg dpkg-dev file libgtest-dev libmpfr-dev libfftw3-dev llvm-19 libclang-rt-19-dev qemu-user python3 g++ pkgconf libsndfile1-dev libcairo2-dev fonts-dejavu-core libpng-dev libjpeg62-turbo-dev python3-dev python3-numpy cython3 python3-setuptools python3-wheel python3-build python3-pytest python3-scipy python3-pywt python3-pil python3-matplotlib python3-distributed python3-tqdm"
)

# Only what is configured counts as present.
present() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

missing=()
for list in "$@"; do
    [ -n "${lists[$list]:-}" ] || { echo "packages.sh: no list '$list'; there are: ${!lists[*]}" >&2; exit 2; }
    for package in ${lists[$list]}; do
        present "$package" || missing+=("$package")
    done
done
[ ${#missing[@]} -gt 0 ] || exit 0

if [ "$(id -u)" = 0 ]; then
    as_root=(env DEBIAN_FRONTEND=noninteractive)
elif command -v sudo >/dev/null; then
    as_root=(sudo DEBIAN_FRONTEND=noninteractive)
else
    echo "Some packages are missing. As root, run:  apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
fi
echo "Installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
