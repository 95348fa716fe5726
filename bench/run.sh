#!/bin/sh
# Installs what is missing, builds the benchmark program, runs it and writes docs/performance.md and docs/performance/.
#   bench/run.sh [family]     all families, or one; QUICK=1 for a short look that leaves the page alone
set -e
cd "$(dirname "$0")/.."
family=$1

packages="clang-19 lld-19 libomp-19-dev cmake ninja-build pkg-config libvolk2-dev libliquid-dev libeigen3-dev libyuv-dev libfftw3-dev libsleef-dev libhwy-dev libzimg-dev libstb-dev libvips-dev python3-matplotlib"
missing=
for package in $packages; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing="$missing $package"
done
if [ -n "$missing" ]; then
    if [ "$(id -u)" = 0 ]; then
        apt-get install -y $missing
    elif sudo -n true 2>/dev/null; then
        sudo apt-get install -y $missing
    else
        echo "These packages are missing; install them with"
        echo "    sudo apt-get install$missing"
        exit 1
    fi
fi

cmake --preset bench
cmake --build --preset bench
program=build/bench/bench/qvr_bench
results=build/bench
only=${family:+--only=$family}

if [ -n "$QUICK" ]; then
    exec $program --quick $only
fi
rm -f $results/bench.json $results/bench-*.json $results/two-*.json
$program $only --json=$results/bench.json
# The slots whose peer is the plain loop for their level, as far as this machine can run them.
for slot in y8 mx; do
    $program $only --slot=$slot --no-memory --json=$results/bench-$slot.json || [ $? = 3 ] # 3: it cannot
done
# Libraries of images can be held to any level.
if [ -z "$family" ] || [ "$family" = image ]; then
    for slot in e9 u8; do
        $program --only=image --slot=$slot --no-memory --json=$results/bench-$slot.json || [ $? = 3 ]
    done
fi
if [ -z "$family" ] || [ "$family" = frame ]; then
    strip -o $results/stripped.so build/bench/libmorvenqvr.so.1
    LD_LIBRARY_PATH=/usr/lib/llvm-19/lib build/bench/bench/load_time $results/stripped.so >$results/load.md
    build/bench/bench/qvr_threads >$results/threads.md || rm -f $results/threads.md # one processor alone
fi
# What of the tasks of a day forks, once more on two cores.
for name in qvrsFIR_32f qvrsConv_32f qvriResizeSqrPixel_8u_C1R; do
    $program $only --cores=2 --name=$name --json=$results/two-$name.json || [ $? = 3 ]
done
dpkg-query -W -f='${Package} ${Version}\n' $packages libc6 >$results/versions.txt
/usr/bin/python3 bench/report.py $results docs # the interpreter that the package of matplotlib is for
