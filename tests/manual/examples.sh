#!/usr/bin/env bash
# examples.sh OVIX FOLDER: runs every example of every verb's help, on the files that they name.
set -euo pipefail
export PATH=$(dirname "$1"):$PATH
rm -rf "$2"
mkdir -p "$2/files"
cd "$2/files"
ovix synth --form digital --count 20 --tables nuc -o dump.raw 2>/dev/null
ovix record dump.raw --pixel-type "K410 IR (GigE)" --size 640x480 -o run.krt 2>/dev/null
head -c 10000000 run.krt >run.krt.part
cp run.krt.part broken.krt
head -c $((2 * 656 * 482 * 2)) /dev/zero >grabbed.raw
head -c $((720 * 576 * 2)) /dev/zero >fields.raw
printf '1000,20C\n2000,40C\n4000,80C\n6000,110C\n8000,140C\n' >points.csv
cd ..

failed=0
for verb in $(ovix --help | sed -n '/^Subcommands/,/^$/s/^  \([a-z-]\+\) .*/\1/p'); do
    while read -r line; do
        rm -rf work
        cp -r files work
        case $line in
            "ovix synth "*) rm -f work/* ;;
            "ovix repair "*) rm -f work/run.krt ;;
            *" -o "*) # what is written is not there yet
                target=$(sed -E 's/.* -o ([^ ]+).*/\1/' <<<"$line")
                rm -f "work/$target" "work/$target.part"
                ;;
        esac
        (cd work && eval "$line" </dev/null >output 2>&1) || { echo "$line: status $?, $(head -c 500 work/output)"; failed=1; }
    done < <(ovix "$verb" --help | sed -n 's/^ *\(ovix .*\)/\1/p' | grep -v '^ovix.*OPTIONS')
done
exit $failed
