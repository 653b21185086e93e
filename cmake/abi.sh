#!/usr/bin/env bash
# abi.sh store|compare LIBRARY HEADERS DESCRIPTION: what a library with debug information offers to those who were compiled with
# its public headers. What is added may be added; whatever else differs is an error.
set -euo pipefail
describe() {
    abidw --headers-dir "$2" --drop-private-types --no-show-locs --no-corpus-path --no-comp-dir-path --no-elf-needed \
        --out-file "$3" "$1"
}
case $1 in
    store) describe "$2" "$3" "$4" ;;
    compare)
        now=$(mktemp --suffix=.abi)
        trap 'rm -f "$now"' EXIT
        describe "$2" "$3" "$now"
        abidiff --no-added-syms --no-show-locs "$4" "$now"
        ;;
    *) exit 2 ;;
esac
