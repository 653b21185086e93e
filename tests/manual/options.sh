#!/usr/bin/env bash
# options.sh OVIX MANUAL: holds pages and completion against what `ovix VERB --help` says.
set -euo pipefail
export PATH=$(dirname "$1"):$PATH
manual=$2
failed=0
fail() { echo "$*"; failed=1; }

have() { command -v "$1" >/dev/null || { echo "no $1 here: its completion is not tried"; return 1; }; }

# complete_bash WORD...: what bash offers for the last word.
source "$manual/bash-completion/completions/ovix"
compopt() { :; }  # there is no completion under way
complete_bash() {
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _ovix || true
    printf '%s\n' "${COMPREPLY[@]}"
}
complete_fish() { fish --no-config -c "source $manual/fish/vendor_completions.d/ovix.fish; complete -C '$*'" | cut -f1; }

# holds WHERE TEXT OPTION...: each option is a word of the text, and the text has no other.
holds() {
    local where=$1 text=$2 option found
    shift 2
    for option in "$@"; do grep -qxF -- "$option" <<<"$text" || fail "$where: no $option"; done
    while read -r found; do
        [[ " $* " == *" $found "* ]] || fail "$where: $found is no option"
    done < <(grep -E '^--?[a-zA-Z]' <<<"$text")
}

verbs=$(ovix --help | sed -n '/^Subcommands/,/^$/s/^  \([a-z-]\+\) .*/\1/p')
[ "$(wc -w <<<"$verbs")" -ge 10 ] || fail "the help lists only: $verbs"
[ "$(complete_bash ovix "" | grep -cxF "$verbs")" = "$(wc -w <<<"$verbs")" ] || fail "bash: not all verbs"

for verb in $verbs; do
    options=$(ovix "$verb" --help | grep -E '^  -' | awk '{ print $1 }' | tr ',' '\n')
    page=$manual/man/man1/ovix-$verb.1
    # The names of a page stand in bold at the start of a line of their own.
    holds "$page" "$(grep -A1 '^\.TP' "$page" | grep '^\\fB\\-' | grep -oE '\\fB(\\-)+[^\\]([^\\]|\\-)*' | sed 's/\\fB//; s/\\-/-/g')" $options
    holds "bash $verb" "$(complete_bash ovix "$verb" -)" $options
    if have fish; then holds "fish $verb" "$(complete_fish "ovix $verb -")" $options; fi
    if have zsh; then
        zsh -n "$manual/zsh/_ovix" || fail "zsh does not take its completion"
        body=$(sed -n "/^        $verb)/,/;;/p" "$manual/zsh/_ovix" | grep -oE "'\*-[^[]*\[" | sed "s/^'\*//; s/\[$//")
        holds "zsh $verb" "$body" $options
    fi
    if have man; then
        found=$(MANWIDTH=100 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
        [ -z "$found" ] || fail "$page: $found"
        for section in "EXIT STATUS" EXAMPLES OPTIONS SYNOPSIS; do grep -qx ".SH $section" "$page" || fail "$page: no $section"; done
    fi
done

# Words that are offered as values are values: a file that is missing is told only after all of them were taken.
for option in --unit --scale --cal --palette --on-error --pixel-type; do
    offered=$(complete_bash ovix convert "$option" "")
    [ "$(wc -l <<<"$offered")" -ge 2 ] || fail "bash: no values of $option"
    ! have fish >/dev/null || [ "$(complete_fish "ovix convert $option " | wc -l)" -ge 2 ] || fail "fish: no values of $option"
    while read -r word; do
        said=$(eval "ovix convert $option $word --size 4x4 -o nothing.npy missing-file" 2>&1) && status=0 || status=$?
        [ "$status" = 4 ] || fail "$option $word: $said"
    done <<<"$offered"
done
[ "$(complete_bash ovix convert --pixel-type 'K410\ IR\ (GigE)')" = 'K410\ IR\ \(GigE\)' ] || fail "bash does not go on with a name with spaces"
exit $failed
