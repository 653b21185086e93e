#!/usr/bin/env bash
# changes.sh SOURCE FOLDER COMPILER: holds changed headers against the unchanged ones by cmake/abi.sh.
set -euo pipefail
source=$1 compiler=$3
rm -rf "$2"/headers
mkdir -p "$2"
cd "$2"
compile() { "$compiler" -std=c++20 -g -femit-class-debug-always -fPIC -shared -w -Iheaders "$source/tests/abi/sample.cpp" -o sample.so; }
fresh() { rm -rf headers; mkdir headers; cp -r "$source"/{core,reduce,measure} headers; }

fresh
compile
"$source/cmake/abi.sh" store sample.so headers sample.abi.xz
"$source/cmake/abi.sh" compare sample.so headers sample.abi.xz || { echo "an unchanged library is red"; exit 1; }

# red WHAT HEADER EDIT: after the edit the comparison fails.
red() {
    fresh
    sed -i -E "$3" "headers/$2"
    ! cmp -s "headers/$2" "$source/$2" || { echo "$1: the edit finds no place"; exit 1; }
    compile
    ! "$source/cmake/abi.sh" compare sample.so headers sample.abi.xz >said 2>&1 || { echo "$1 is not red"; exit 1; }
}
red "a reordered member" measure/finding.h '/EFinding id = /d; s/^( *)EWeight weight = .*/&\n\1EFinding id = EFinding::Padding;/'
red "a new virtual function" reduce/objects/reduce_object.h '0,/^( *)virtual ~IReduceObject/s//    virtual int Added() const { return 0; }\n&/'
red "a member that is gone" measure/frame/region.h '/u32 good = 0/d'
