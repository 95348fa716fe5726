#!/usr/bin/env bash
# What `make package` left in build/packages: lintian has nothing to say; in a bare Debian 12 the packages install, the README's
# programs build against them, the tools and the Python package work, with each of Debian's OpenMP runtimes; and when they are
# purged, not a file is left. Needs root and a Debian mirror; ends with status 77 and a reason where there is none.
set -euo pipefail
cd "$(dirname "$0")/.."
skip() {
    echo "skipped: $*"
    exit 77
}
[ "$(id -u)" = 0 ] || skip "only root can make a Debian system in a folder"
ls build/packages/*.deb >/dev/null 2>&1 || { echo "there are no packages: make package" >&2; exit 1; }
scripts/packages.sh packagetest
# Debug packages name functions and know no lines: with these the compiler would put paths of the sources into the library
# itself, where it forks, and builds in two folders would differ.
lintian --allow-root --suppress-tags debug-file-with-no-debug-symbols --fail-on error,warning build/packages/*.deb

work=$PWD/build/package-test
base=$work/base.tar root=$work/root
mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | grep '/debian/*$' | head -1)
mkdir -p "$work"
if [ ! -f "$base" ]; then
    rm -rf "$root"
    debootstrap --variant=minbase bookworm "$root" "$mirror" >"$work/debootstrap.log" 2>&1 ||
        skip "debootstrap cannot make a system here: $(tail -1 "$work/debootstrap.log")"
    tar -C "$root" -cf "$base.new" . && mv "$base.new" "$base"
fi
rm -rf "$root"
mkdir "$root"
tar -C "$root" -xf "$base"
cp /etc/resolv.conf "$root/etc/" 2>/dev/null || true

# The README's programs as they stand there.
programs=$root/root/programs
mkdir -p "$programs"
for block in c:first.c cpp:second.cpp cmake:CMakeLists.txt; do
    awk -v fence="\`\`\`${block%%:*}" '$0 == fence && !done { inside = 1; next } inside && /^```/ { exit } inside' README.md >"$programs/${block#*:}"
    [ -s "$programs/${block#*:}" ] || { echo "README has no block of ${block%%:*}" >&2; exit 1; }
done
mkdir -p "$root/packages"
cp build/packages/*.deb "$root/packages/"

cat >"$root/root/try.sh" <<'EOF'
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive LC_ALL=C
quiet() { "$@" >/tmp/quiet.log 2>&1 || { cat /tmp/quiet.log; exit 1; }; }
files() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /packages -o -path /root -o -path /var/cache \
        -o -path /var/lib/apt -o -path /var/log -o -path /var/lib/dpkg -o -path /run \) -prune -o -print | sort
}
quiet apt-get update
# What a developer has anyway.
quiet apt-get install -y --no-install-recommends gcc g++ pkgconf cmake make
files >/tmp/before
apt-mark showmanual | sort >/tmp/manual
quiet apt-get install -y --no-install-recommends /packages/*.deb
[ -e /usr/lib/x86_64-linux-gnu/libmorvenqvr.so.1 ] && [ ! -e /usr/lib/libmorvenqvr.so.1 ]
[ -e /usr/share/man/man3/Morven_qvrsAdd_32f.3.gz ] && [ -e /usr/share/doc/libmorvenqvr-doc/html/index.html ]

cd /root/programs
cc first.c $(pkg-config --cflags --libs morvenqvr) -o first
c++ -std=c++20 second.cpp $(pkg-config --cflags --libs morvenqvr) -o second
quiet cmake -B by-cmake .
quiet cmake --build by-cmake
for program in ./first by-cmake/first; do [ "$($program)" = "11 22 33 44" ]; done
[ "$(./second)" = $'one tone is left\nqvr::add: qvrErrBadSize' ]
morvenqvr-info | sed -n '/^Slot/p'
morvenqvr-check
python3 -c 'import numpy, morvenqvr; a = numpy.ones(8, numpy.float32); assert (morvenqvr.add(a, a) == 2).all()'
echo "programs, tools and the Python package work"

# Every OpenMP runtime that Debian has serves.
for v in $(apt-cache search --names-only '^libomp5-[0-9]+$' | sed 's/.*libomp5-\([0-9]*\) .*/\1/' | sort -n); do
    quiet apt-get install -y --no-install-recommends "libomp5-$v"
    dpkg-query -W -f '${db:Status-Status}\n' libmorvenqvr1 | grep -qx installed
    morvenqvr-check >/dev/null
    ./second >/dev/null
    served="${served:-} $v"
done
echo "with the OpenMP runtimes$served"

quiet apt-get purge -y $(for p in /packages/*.deb; do dpkg-deb -f "$p" Package; done)
apt-mark showmanual | sort | comm -13 /tmp/manual - | xargs -r apt-mark auto >/dev/null
quiet apt-get autoremove --purge -y
files >/tmp/after
diff /tmp/before /tmp/after || { echo "files are left or missing"; exit 1; }
echo "removed without a trace"
EOF
export root
unshare --mount bash -c 'mount -t proc proc "$root/proc" 2>/dev/null || true; mount --bind /dev "$root/dev" 2>/dev/null || true; exec env -i HOME=/root TERM=dumb PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot "$root" bash /root/try.sh'
rm -rf "$root"
