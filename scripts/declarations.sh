#!/bin/sh
# Declarations of one family: declarations.sh HEADER FAMILY/exports.def FOLDER FORM ... writes FOLDER/FORM.h, a file that
# would stay the same untouched, and FOLDER/stamp. The forms are those of declarations.awk.
set -eu
header=$1 list=$2 folder=$3
shift 3
mkdir -p "$folder"
for form; do
    awk -v family="$(basename "$(dirname "$list")")" -v form="$form" -f "$(dirname "$0")/declarations.awk" "$header" "$list" \
        >"$folder/$form.new"
    cmp -s "$folder/$form.new" "$folder/$form.h" && rm "$folder/$form.new" || mv "$folder/$form.new" "$folder/$form.h"
done
touch "$folder/stamp"
