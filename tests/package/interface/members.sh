#!/bin/sh
# Of an object file with debug information: an assembler file with the address of every member function of the project
# that it declares, but for those that need no body and those of templates, which are made where they are used.
set -e
readelf --debug-dump=info "$1" | awk '
    function flush() { if (name != "" && !bodiless) print name; name = ""; bodiless = 0 }
    /Abbrev Number/ { flush(); is_function = /DW_TAG_subprogram/ }
    is_function && /DW_AT_linkage_name.*_ZNK?4ovix/ {
        name = $NF
        sub(/C4E/, "C1E", name)  # constructors and destructors stand there without their variant
        sub(/D4E/, "D1E", name)
    }
    /DW_AT_deleted/ || /DW_AT_defaulted/ || /DW_AT_virtuality.*pure/ { bodiless = 1 }
    END { flush() }' | sort -u > names.txt
echo '    .section .data.rel,"awR"'
c++filt -p < names.txt | paste names.txt - | awk '
    $0 !~ /</ { print "    .quad " $1; ++count }
    END { if (count < 200) print "    .error \"only " count " member functions found\"" }'
echo '    .section .note.GNU-stack'
