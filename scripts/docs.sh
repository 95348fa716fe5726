#!/usr/bin/env bash
# Writes the reference pages and guides to build/docs/html, and a man page of each group of functions, which the name of each
# function leads to, to build/docs/man. A warning of doxygen is a failure.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh docs
rm -rf build/docs
mkdir -p build/docs
doxygen docs/Doxyfile
if [ -s build/docs/warnings.txt ]; then
    cat build/docs/warnings.txt >&2
    exit 1
fi
{
    cat docs/Doxyfile
    printf '%s\n' OUTPUT_DIRECTORY=build/docs GENERATE_HTML=NO GENERATE_XML=NO GENERATE_MAN=YES MAN_LINKS=YES \
        INPUT=include/morvenqvr.h USE_MDFILE_AS_MAINPAGE= WARN_LOGFILE=/dev/null
} | doxygen - >/dev/null
cd build/docs/man/man3
for page in *.3; do
    group=$(sed -n 's/^\.so man3\/\(.*\)\.3$/\1/p' "$page")
    case $page in
    Morven_*) echo ".so man3/morvenqvr-$group.3" >"$page" ;;
    *) # Groups have more than a link in their page, and functions.
        if [ -z "$group" ] && grep -q Morven_ "$page" && [ "$page" != morvenqvr.h.3 ]; then
            sed "/^\.TH/{s/\"/\"morvenqvr-/; s/ 3 \"[^\"]*\"/ 3 \"\"/}; s/^${page%.3} \\\\-/morvenqvr-${page%.3} \\\\-/" "$page" >"morvenqvr-$page"
        fi
        rm "$page"
        ;;
    esac
done
cd - >/dev/null
echo "The pages are in build/docs/html/index.html"
