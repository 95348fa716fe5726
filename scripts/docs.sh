#!/usr/bin/env bash
# Writes the reference pages and guides to build/docs/html. A warning of doxygen is a failure.
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
echo "The pages are in build/docs/html/index.html"
