# Of headers in the project's format: a source file that takes the address of every free function and variable that
# they declare and do not define, so that it links only where all of them can be linked.
BEGIN {
    kept = "[[gnu::used, gnu::retain]] "
    print "#include \"core/core.h\"\n#include \"reduce/reduce.h\"\n#include \"measure/measure.h\"\n"
}
function put(statement,    name, rest) {
    gsub(/OVIX_[A-Z_]*API |\[\[[a-z]+\]\] /, "", statement)
    gsub(/ = [^,();]*(\(\)|\{\})?/, "", statement)  # values of parameters
    ++count
    if (sub(/^extern /, "", statement)) {
        match(statement, /[A-Za-z_0-9]+;$/)
        name = substr(statement, RSTART, RLENGTH - 1)
        print "namespace " space " { " kept "const void* ovixInterface" count " = &" name "; }"
        return
    }
    match(statement, /(operator[^ (]+|[A-Za-z_0-9]+)\(/)
    name = substr(statement, RSTART, RLENGTH - 1)
    rest = substr(statement, RSTART + RLENGTH)
    print "namespace " space " { " kept substr(statement, 1, RSTART - 1) "(*ovixInterface" count ")(" substr(rest, 1, length(rest) - 1) " = &" name "; }"
}
FNR == 1 { depth = 0; space = "" }
/^namespace ([a-zA-Z_0-9:]+ )?\{$/ {
    outer[depth++] = space
    if (NF == 3) space = space (space == "" ? "" : "::") $2
    next
}
/^\}  \/\/ namespace/ { space = outer[--depth]; next }
statement != "" || /^(\[\[|[A-Za-z])/ {
    line = $0
    sub(/ *\/\/.*/, "", line)
    sub(/^ +/, " ", line)
    statement = statement line
    if (line !~ /[;{]$/) next
    plain = statement !~ /^(class|struct|enum|union|template|using|static_assert|typedef|inline|constexpr|consteval|concept|extern template)/
    if (plain && statement ~ /;$/ && (statement ~ /\(/ || statement ~ /^extern /)) put(statement)
    statement = ""
}
END { if (count < 50) { print "#error only " count " functions found"; exit } }
