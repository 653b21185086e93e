#!/usr/bin/env bash
# How fast the tool is as a whole process, beside `cat` that moves the same bytes, in turns within one run.
#
#   bench/processes.sh [TOOL [FOLDER]]    build/release/bin/ovix, and a new folder of the system's for temporary files
#
# Of each command: frames per second of wall time and of processor time (all cores together), medians of five turns, and
# the share of cat's speed. Outputs of the tool reach the medium before it ends, so cat's do too (`sync`).
set -euo pipefail
export LC_ALL=C
tool=$(realpath "${1:-build/release/bin/ovix}")
folder=${2:-$(mktemp -d)}
cd "$folder"
trap 'rm -rf "$folder"/ovix_bench_*; [ -n "${2:-}" ] || rmdir "$folder"' EXIT
frames=400 turns=5 size=640x512
source=(--pixel-type "K410 IR (GigE)" --size "$size")
dump=ovix_bench_dump.raw
"$tool" synth -o $dump --size $size --count $frames --overwrite 2>/dev/null

# measure NAME COMMAND...: appends wall and processor seconds to the figures of NAME.
declare -A wall cpu
measure() {
    local name=$1 TIMEFORMAT='%R %U %S' spent
    shift
    spent=$({ time "$@" >/dev/null 2>&1; } 2>&1)
    read -r real user system <<<"$spent"
    wall[$name]+="$real "
    cpu[$name]+="$(awk "BEGIN{print $user + $system}") "
}
median() { tr ' ' '\n' <<<"$1" | grep . | sort -g | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }
moved() { cat "$@" >ovix_bench_copy && sync ovix_bench_copy; }
written() { "$tool" convert $dump "${source[@]}" --overwrite -o "$@"; }
again() { rm -f ovix_bench_copy; for ((i = 0; i < $1; ++i)); do cat $dump; done; }

written ovix_bench_x.npy 2>/dev/null
for ((turn = 0; turn < turns; ++turn)); do
    measure read cat $dump
    measure stats "$tool" stats $dump "${source[@]}"
    measure "stats on 1" "$tool" stats $dump "${source[@]}" --jobs 1
    measure copy moved ovix_bench_x.npy ovix_bench_x.status.npy
    measure npy written ovix_bench_x.npy
    measure "tiff 0" written ovix_bench_x.tif --compression none
    measure tiff written ovix_bench_x.tif
    measure csv written ovix_bench_x.csv
    measure png written ovix_bench_p.png --range 10,90
    rm -f ovix_bench_p*.png ovix_bench_x.tif ovix_bench_x.status.tif ovix_bench_x.csv ovix_bench_x.status.csv
    measure synth "$tool" synth -o ovix_bench_y.raw --size $size --count $frames --overwrite
    measure "record copy" moved $dump
    measure record "$tool" record $dump "${source[@]}" -o ovix_bench_y.krt --overwrite --checksums
    measure verify "$tool" verify ovix_bench_y.krt
done

# show NAME WHAT [BESIDE]: wanted is what the last column says.
show() {
    local w c share=""
    w=$(median "${wall[$1]}") c=$(median "${cpu[$1]}")
    if [ -n "${3:-}" ]; then
        share=$(awk "BEGIN{printf \"%.2f (%.2f)\", $(median "${wall[$3]}") / $w, $(median "${cpu[$3]}") / ($c + 1e-9)}")
    fi
    awk "BEGIN{printf \"| %-44s | %7.0f | %9.0f | %-11s |\n\", \"$2\", $frames / $w, $frames / ($c + 1e-9), \"$share\"}"
}
echo "| $frames frames of $size | frames/s | per core | of cat (cpu) |"
echo "|---|---|---|---|"
show read "cat to nowhere"
show stats "stats" read
show "stats on 1" "stats --jobs 1" read
show copy "cat of the values and status"
show npy "convert -o x.npy" copy
show "tiff 0" "convert -o x.tif --compression none" copy
show tiff "convert -o x.tif"
show csv "convert -o x.csv"
show png "convert -o x.png"
show synth "synth"
show "record copy" "cat of the dump"
show record "record --checksums" "record copy"
show verify "verify" read

# most COMMAND...: the most memory that a command whose input is a pipe held, in KiB.
most() {
    local high=0 now pid
    "$@" >/dev/null 2>&1 <&3 3<&- &
    pid=$!
    while now=$(awk '/VmHWM/ {print $2}' /proc/$pid/status 2>/dev/null) && [ -n "$now" ]; do
        high=$now
        sleep 0.02
    done
    wait $pid
    echo "$high"
}
echo
for count in 100 400 10000; do
    exec 3< <(for ((i = 0; i < (count + frames - 1) / frames; ++i)); do cat $dump; done |
        head -c $(($(stat -c %s $dump) / frames * count)))
    echo "$count frames of $size through a pipe to stats: $(most "$tool" stats - "${source[@]}") KiB"
    exec 3<&-
done

# The time from the end of a frame's write to its line of figures, of a writer at 30 frames/s.
bytes=$(($(stat -c %s $dump) / frames))
: >ovix_bench_grows.raw
head -c "$bytes" $dump >>ovix_bench_grows.raw
"$tool" stats ovix_bench_grows.raw "${source[@]}" --frame-size "$bytes" --follow --timeout 1 --csv 2>/dev/null |
    while IFS=, read -r _ number _; do echo "$EPOCHREALTIME $number"; done >ovix_bench_seen &
sleep 0.5
for ((n = 1; n < 60; ++n)); do
    dd if=$dump bs="$bytes" skip=$n count=1 status=none >>ovix_bench_grows.raw
    echo "$EPOCHREALTIME $n"
    sleep 0.033
done >ovix_bench_written
wait
echo
awk 'NR == FNR {at[$2] = $1; next} $2 in at {d = 1000 * ($1 - at[$2]); s += d; if (d > m) m = d; ++n}
    END {printf "%d frames at 30/s followed by stats: seen after %.0f ms, at most %.0f\n", n, s / n, m}' \
    ovix_bench_written ovix_bench_seen
