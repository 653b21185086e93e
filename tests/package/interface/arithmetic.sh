#!/bin/sh
# Of an object file that holds every inline function of the headers: those that add, multiply or divide floating
# numbers. A customer's flags would decide what they give, so there are to be none.
objdump -d "$1" | awk '
    /^[0-9a-f]+ <.*>:$/ { name = substr($2, 2, length($2) - 3) }
    name ~ /^_ZNK?4ovix/ && /\t(v?f?n?m?(add|sub|mul|div|sqrt))s[sd] / && !(name in seen) { print name; seen[name] = 1 }' | c++filt
