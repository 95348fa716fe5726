#!/usr/bin/env bash
# Makes of the packages that cpack laid out what Debian expects, in place: finish_packages.sh FOLDER DEB..., with the
# debug packages in FOLDER.
#
# Libraries and programs give their debug symbols to a package of their own; copyright and changelogs are added; dependencies
# are read off the binaries, and those on the OpenMP runtime allow any of its versions; the exported symbols must be those on
# record. Everything carries the date of the release (or SOURCE_DATE_EPOCH), so that the same sources give the same bytes.
# QVR_PACKAGE_COMPRESSION is the level of xz.
set -euo pipefail
export LC_ALL=C TZ=UTC
umask 022
here=$(cd "$(dirname "$0")" && pwd)
debian=$here/debian
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(dpkg-parsechangelog -l "$debian/changelog" -S Timestamp)}

field() { sed -n "s/^$2: //p" "$1/DEBIAN/control"; }

set_field() { # root, field, value
    sed -i "/^$2:/d" "$1/DEBIAN/control"
    [ -z "$3" ] || sed -i "1a $2: $3" "$1/DEBIAN/control"
}

# cpack puts the project's line before the component's, whose own continuation it indents.
describe() { # root
    awk '/^Description:/ { getline; sub(/^ */, ""); print "Description: " $0; inside = 1; next }
         inside && /^ / { sub(/^ +/, " ") } !/^ / { inside = 0 } { print }' "$1/DEBIAN/control" >"$work/control"
    cp "$work/control" "$1/DEBIAN/control"
}

documents() { # root, package
    local doc=$1/usr/share/doc/$2
    mkdir -p "$doc"
    cp "$debian/copyright" "$doc/copyright"
    gzip -9nc "$debian/changelog" >"$doc/changelog.Debian.gz"
    gzip -9nc "$here/../CHANGELOG.md" >"$doc/changelog.gz"
    if [ -f "$debian/$2.lintian-overrides" ]; then
        mkdir -p "$1/usr/share/lintian/overrides"
        cp "$debian/$2.lintian-overrides" "$1/usr/share/lintian/overrides/$2"
    fi
    if [ -d "$1/usr/share/man" ]; then find "$1/usr/share/man" -type f ! -name '*.gz' -exec gzip -9n {} +; fi
}

binaries() { find "$1" -type f \( -perm -u+x -o -name '*.so*' \) -exec sh -c 'head -c4 "$1" | grep -q ELF' _ {} \; -print | sort; }

# Moves the debug symbols of a package's binaries to a tree of their own.
split_symbols() { # root, debug root
    local file id target
    while IFS= read -r file; do
        id=$(readelf -n "$file" | sed -n 's/.*Build ID: //p')
        [ -n "$id" ] || { echo "$file has no build id" >&2; exit 1; }
        target=$2/usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug
        mkdir -p "$(dirname "$target")"
        objcopy --only-keep-debug --compress-debug-sections "$file" "$target"
        chmod 644 "$target"
        strip --strip-unneeded --remove-section=.comment --remove-section=.note "$file"
        echo "$id"
    done < <(binaries "$1")
}

# What the binaries need but the OpenMP runtime, which is one alternative of several.
dependencies() { # root
    local files
    mapfile -t files < <(binaries "$1")
    mkdir -p "$work/shlibdeps/debian"
    printf 'Source: morvenqvr\n\nPackage: any\nArchitecture: any\n' >"$work/shlibdeps/debian/control"
    (cd "$work/shlibdeps" && dpkg-shlibdeps -O -x"libomp5-19" "${files[@]/#/-e}" 2>/dev/null) | sed 's/^shlibs:Depends=//'
}

symbols() { # root, package
    mkdir -p "$work/symbols/debian/$2"
    printf 'Source: morvenqvr\n\nPackage: %s\nArchitecture: amd64\n' "$2" >"$work/symbols/debian/control"
    cp "$debian/$2.symbols" "$work/symbols/debian/"
    (cd "$work/symbols" && dpkg-gensymbols -c4 -q -p"$2" -P"$1" -v"$(field "$1" Version)" -O"$1/DEBIAN/symbols" >/dev/null) ||
        { echo "the exported symbols are not those of $debian/$2.symbols" >&2; exit 1; }
}

build() { # root, file
    find "$1" -mindepth 1 ! -path "$1/DEBIAN*" -exec touch -hd "@$SOURCE_DATE_EPOCH" {} +
    find "$1" -type d -exec chmod 755 {} +
    # Sizes as dpkg counts them: a file by its begun KiB, anything else as one.
    set_field "$1" Installed-Size "$(find "$1" -mindepth 1 ! -path "$1/DEBIAN*" -printf '%y %s\n' |
        awk '{ k += $1 == "f" ? int(($2 + 1023) / 1024) : 1 } END { print k + 0 }')"
    (cd "$1" && find . -type f ! -path './DEBIAN/*' -printf '%P\n' | sort | xargs -rd '\n' md5sum >DEBIAN/md5sums)
    chmod 644 "$1"/DEBIAN/{control,md5sums}
    touch -d "@$SOURCE_DATE_EPOCH" "$1" "$1"/DEBIAN "$1"/DEBIAN/*
    dpkg-deb --root-owner-group -Zxz "-z${QVR_PACKAGE_COMPRESSION:-6}" --build "$1" "$2" >/dev/null
}

folder=$1
shift
for deb; do
    root=$work/root debug=$work/debug
    rm -rf "$root" "$debug"
    dpkg-deb --raw-extract "$deb" "$root"
    package=$(field "$root" Package)
    find "$root" -type f ! -path "$root/DEBIAN/*" -exec chmod u=rwX,go=rX {} +
    describe "$root"
    documents "$root" "$package"
    ids=$(split_symbols "$root" "$debug" | sort | tr '\n' ' ')
    case $package in
    libmorvenqvr[0-9])
        find "$root/usr/lib" -type f -exec chmod 644 {} +
        set_field "$root" Depends "$(dependencies "$root"), libomp5-19 | libomp-x.y"
        set_field "$root" Multi-Arch same
        symbols "$root" "$package"
        printf 'libmorvenqvr %s %s\n' "${package##*r}" "$package (>= 1.0.0)" >"$root/DEBIAN/shlibs"
        printf 'activate-noawait ldconfig\n' >"$root/DEBIAN/triggers"
        chmod 644 "$root"/DEBIAN/{shlibs,triggers,symbols}
        ;;
    libmorvenqvr-dev) set_field "$root" Multi-Arch same ;;
    morvenqvr-tools)
        set_field "$root" Depends "$(field "$root" Depends), $(dependencies "$root"), libomp5-19 | libomp-x.y"
        set_field "$root" Multi-Arch foreign
        ;;
    python3-morvenqvr)
        # Byte code is made when the package is installed, and goes with it.
        printf '#!/bin/sh\nset -e\n[ "$1" != configure ] || ! command -v py3compile >/dev/null || py3compile -p %s\n' "$package" >"$root/DEBIAN/postinst"
        printf '#!/bin/sh\nset -e\n! command -v py3clean >/dev/null || py3clean -p %s\n' "$package" >"$root/DEBIAN/prerm"
        chmod 755 "$root"/DEBIAN/{postinst,prerm}
        ;;
    libmorvenqvr-doc) set_field "$root" Multi-Arch foreign ;;
    esac
    if [ -n "$ids" ]; then
        mkdir -p "$debug/DEBIAN"
        cat >"$debug/DEBIAN/control" <<EOF
Package: $package-dbgsym
Source: morvenqvr
Version: $(field "$root" Version)
Auto-Built-Package: debug-symbols
Architecture: $(field "$root" Architecture)
Maintainer: $(field "$root" Maintainer)
Depends: $package (= $(field "$root" Version))
Section: debug
Priority: optional
Multi-Arch: same
Description: debug symbols for $package
Build-Ids: ${ids% }
EOF
        [ "$package" != morvenqvr-tools ] || set_field "$debug" Multi-Arch ""
        mkdir -p "$debug/usr/share/doc"
        ln -s "$package" "$debug/usr/share/doc/$package-dbgsym"
        build "$debug" "$folder/$package-dbgsym_$(field "$root" Version)_$(field "$root" Architecture).deb"
    fi
    build "$root" "$deb"
done
