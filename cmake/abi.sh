#!/usr/bin/env bash
# abi.sh store|compare LIBRARY HEADERS DESCRIPTION: what a library with debug information offers to those who were compiled with
# its public headers, as a description that xz made small. What is added may be added; whatever else differs is an error.
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
abidw --headers-dir "$3" --suppressions "$(dirname "${BASH_SOURCE[0]}")/abi.suppr" --drop-private-types --no-show-locs \
    --no-corpus-path --no-comp-dir-path --no-elf-needed --out-file "$scratch/now.abi" "$2"
case $1 in
    store) xz -9c "$scratch/now.abi" >"$4" ;;
    compare)
        xz -dc "$4" >"$scratch/promised.abi"
        abidiff --no-added-syms --no-show-locs "$scratch/promised.abi" "$scratch/now.abi"
        ;;
    *) exit 2 ;;
esac
