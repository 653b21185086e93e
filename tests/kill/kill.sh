#!/usr/bin/env bash
# kill.sh OVIX FOLDER TIMES [SEED]: kills each writer so often at random moments. FOLDER holds liblossy.so and the recorder.
set -euo pipefail
here=$(dirname "$(realpath "$0")")
ovix=$(realpath "$1") tools=$(realpath "$2") times=$3
RANDOM=${4:-1}
work=$tools/work
rm -rf "$work"
mkdir -p "$work/kept"
cd "$work"
export LOSSY_KEPT=$work/kept
lossy=$(ls "$tools"/*lossy.so)
camera=(--pixel-type "K410 IR (GigE)" --size 64x48)
kills=0
fail() { echo "kill.sh: $*"; exit 1; }

"$ovix" synth "${camera[@]}" --form plain --count 400 -o dump.raw 2>/dev/null
frame_size=$(($(stat -c %s dump.raw) / 400))
"$ovix" record dump.raw "${camera[@]}" -o reference.krt 2>/dev/null
"$ovix" convert reference.krt --unit counts -o reference.npy 2>/dev/null
head -c -1 reference.krt >cut.krt

# killed COMMAND...: runs it in the folder out, with what it says in the file said, and kills it at some moment of its time.
killed() {
    rm -rf out kept/*
    mkdir out
    local start=$EPOCHREALTIME pid
    "$@" >said 2>errors &
    pid=$!
    local when=$((RANDOM * 32768 % lasts + RANDOM % 1000))
    sleep "$((when / 1000000)).$(printf %06d $((when % 1000000)))"
    kill -9 "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null && status=0 || status=$?
    kills=$((kills + 1))
}
# lasting COMMAND...: how long it takes at most, in microseconds, as the time within which it is killed. What others have the disk
# do counts: the first time may be a quick one.
lasting() {
    local start now
    lasts=0
    for _ in 1 2 3; do
        rm -rf out
        mkdir out
        start=$EPOCHREALTIME
        "$@" >said 2>errors || fail "$* does not work at all: $(cat errors)"
        now=$(((${EPOCHREALTIME/./} - ${start/./}) * 13 / 10 + 1000))
        [ "$now" -lt "$lasts" ] || lasts=$now
    done
}
# What a power cut leaves of every file: what was flushed.
cut_power() {
    local file
    while IFS= read -r file; do
        if [ -e "kept/$(stat -c %i "$file")" ]; then cp "kept/$(stat -c %i "$file")" "$file.left"; else : >"$file.left"; fi
        mv "$file.left" "$file"
    done < <(find out -type f)
}
# same_frames RECORDING LEAST: it holds the first frames of the reference, at least so many.
same_frames() {
    local frames
    "$ovix" convert "$1" --unit counts -o out/counts.npy --overwrite 2>errors || fail "$1 cannot be read: $(cat errors)"
    frames=$((($(stat -c %s out/counts.npy) - 128) / (64 * 48 * 4)))
    [ "$frames" -ge "$2" ] || fail "$1 has $frames frames of $2 that were acknowledged"
    cmp <(tail -c +129 out/counts.npy) <(tail -c +129 reference.npy | head -c $((frames * 64 * 48 * 4))) || fail "$1: other frames"
}

# expect_acknowledged NAME AFTERWARDS COMMAND...: every frame that the recorder acknowledged is there, in the recording or in
# what repair makes of its part.
expect_acknowledged() {
    local name=$1 afterwards=$2 whole=0 rescued=0 acknowledged i
    shift 2
    lasting "$@"
    for ((i = 0; i < times; ++i)); do
        killed "$@"
        acknowledged=$({ grep -o '"doing":"frame","done":[0-9]*' errors || cat said; } | tail -n 1 | tr -dc 0-9)
        $afterwards
        if [ -e out/run.krt ]; then
            "$ovix" verify out/run.krt >/dev/null 2>errors || fail "a killed recording has its name and is not whole: $(cat errors)"
            same_frames out/run.krt 400
            whole=$((whole + 1))
        elif [ "${acknowledged:-0}" -gt 0 ]; then
            "$ovix" repair out/run.krt.part -o out/repaired.krt >/dev/null 2>errors || fail "repair: $(cat errors)"
            same_frames out/repaired.krt "$acknowledged"
            rescued=$((rescued + 1))
        fi
    done
    echo "$name: $times kills, $rescued parts brought back, $whole recordings whole"
}
record=("$tools/acknowledging_recorder" dump.raw out/run.krt "$frame_size")
expect_acknowledged "record through C" true "${record[@]}" 0
expect_acknowledged "record through C, flushed, and the power cut" cut_power env LD_PRELOAD="$lossy" "${record[@]}" 7
record=("$ovix" record dump.raw "${camera[@]}" --progress json -o out/run.krt)
expect_acknowledged "record, by what it says of its progress" true "${record[@]}"
expect_acknowledged "record -, likewise" true bash -c 'exec "$@" < <(cat dump.raw)' record "${record[@]/dump.raw/-}"

# What bears its name is whole, before a power cut and after it.
expect_whole() {
    local name=$1 reference=$2 whole=0 i
    shift 2
    lasting env LD_PRELOAD="$lossy" "$@"
    rm -rf "$reference"
    cp -r out "$reference"
    for ((i = 0; i < times; ++i)); do
        killed env LD_PRELOAD="$lossy" "$@"
        cut_power
        [ "$status" != 0 ] || [ "$(ls out)" = "$(ls "$reference")" ] || fail "$name: ended well without its files"
        while IFS= read -r file; do
            cmp "out/$file" "$reference/$file" || fail "$name: $file bears its name and is not whole"
            whole=$((whole + 1))
        done < <(cd out && find . -type f ! -path '*.part*')
    done
    echo "$name: $times kills, $whole files whole"
}
expect_whole record record.d "$ovix" record dump.raw "${camera[@]}" --checksums -o out/run.krt
expect_whole "record -" pipe.d bash -c 'exec "$0" record - --pixel-type "K410 IR (GigE)" --size 64x48 -o out/run.krt <dump.raw' "$ovix"
expect_whole repair repair.d "$ovix" repair cut.krt -o out/run.krt
for format in npy csv tif png zarr nxs; do
    range=()
    [ $format != png ] || range=(--range 10,100)
    expect_whole "convert to $format" "$format.d" "$ovix" convert reference.krt --frames 0-39 "${range[@]}" -o "out/frames.$format"
done
# What is replaced is there until its successor is.
writer=("$ovix" convert reference.krt --frames 0-39 -o store/frames.zarr --overwrite)
mkdir store
lasting "${writer[@]}"
cp -r store/frames.zarr replaced.zarr
for ((i = 0; i < times; ++i)); do
    killed "${writer[@]}"
    [ ! -e store/frames.zarr ] || diff -r store/frames.zarr replaced.zarr || fail "a store that was to be replaced is not whole"
    rm -rf store/frames.zarr.part*
done
echo "convert to zarr, replacing: $times kills"
# What a killed writer leaves of a store can be read, and holds the first frames.
if /usr/bin/python3 -c "import h5py, zarr" 2>/dev/null; then
    for format in zarr nxs; do
        writer=("$ovix" convert reference.krt --unit counts -o "out/frames.$format")
        lasting "${writer[@]}"
        rm -rf "whole.$format"
        cp -r "out/frames.$format" "whole.$format"
        for ((i = 0; i < times; ++i)); do
            killed "${writer[@]}"
            [ ! -e "out/frames.$format.part" ] || mv "out/frames.$format.part" "left.$i.$format"
        done
        echo "convert to $format, its part: $times kills, $(timeout 300 /usr/bin/python3 "$here/parts.py" "whole.$format" left.*."$format")"
        rm -rf left.*
    done
else
    echo "there is no h5py or zarr to read parts of stores with"
fi
echo "$kills kills"
