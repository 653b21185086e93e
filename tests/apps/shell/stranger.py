#!/usr/bin/env python3
"""Runs the tool as a stranger's shell would: stranger.py OVIX CASE. Each case is a function of its name below."""

import json, math, os, pathlib, pty, random, re, shutil, signal, struct, subprocess, sys, tempfile, termios, time

OVIX = sys.argv[1]
TYPE = ["--pixel-type", "K410 IR (GigE)", "--size", "64x48"]
DUMP = ["dump.raw", *TYPE]


def run(*arguments, status=0, stdin=None, env=None):
    """What came out on the two streams; the exit status has to be the one named."""
    done = subprocess.run([OVIX, *map(str, arguments)], input=stdin, capture_output=True, env={**os.environ, **(env or {})})
    error = done.stderr.decode(errors="replace")
    assert done.returncode == status, f"{arguments}: expected {status}, found {done.returncode}\n{error}"
    return done.stdout, error


def doc(*arguments, **options):
    return json.loads(run(*arguments, "--json", **options)[0])


def rows(*arguments, **options):
    return doc("stats", *arguments, **options)["rows"]


def read(name):
    return bytearray(pathlib.Path(name).read_bytes())


def write(name, data):
    pathlib.Path(name).write_bytes(data)


def synth(*more, count=3, name="dump.raw", form="plain"):
    run("synth", "-o", name, "--form", form, *TYPE, "--count", count, "--overwrite", *more)


def recording(name="run.krt", *more, **options):
    synth(**options)
    run("record", *DUMP, "-o", name, "--overwrite", *more)
    return name


def close(a, b, within):
    assert abs(a - b) <= within, (a, b)


def damage_is_never_success():
    recording(count=4)
    whole = read("run.krt")
    write("cut.krt", whole[:-1000])
    cut = doc("stats", "cut.krt", status=3)
    assert cut["complete"] is False and cut["findings"], cut
    for line in (["record", "-o", "again.krt"], ["convert", "-o", "cut.npy"], ["explain", "--at", "3,3"], ["uncertainty", "--at", "3,3"],
                 ["plot", "-o", "cut.svg"], ["report", "-o", "cut.html"], ["index", "-o", "cut.json"]):
        said = doc(line[0], "cut.krt", *line[1:], "--overwrite" if "-o" in line else "-q", status=3)
        assert said["complete"] is False and said["findings"], line
    at = whole.index(struct.pack("<f", 0.95))  # the emissivity of the scene, in a block with a CRC
    whole[at:at + 4] = struct.pack("<f", 0.5)
    write("half.krt", whole)
    run("stats", "half.krt", status=1)
    assert doc("stats", "half.krt", "--accept-damage", status=3)["complete"] is False
    recording("sums.krt", "--checksums", count=2)
    pixels = read("sums.krt")
    pixels[pixels.index(read("dump.raw")[:64]) + 100] ^= 1  # of the first frame
    write("sums.krt", pixels)
    run("stats", "sums.krt", status=1)
    run("stats", "sums.krt", "--on-error", "skip", status=3)


def what_a_frame_does_not_carry_is_none():
    synth(form="digital")
    assert all(row["time"] is None for row in rows(*DUMP))
    assert doc("info", *DUMP)["time"] is None
    values = {value["name"]: value for value in doc("info", *DUMP, "--frame", "0")["values"]}
    assert values["Time"]["value"] is None
    synth()
    values = doc("info", *DUMP, "--frame", "0")["values"]
    assert not any(value["unit"] in ("Float", "float", "Int", "UInt32") for value in values), values
    assert any(isinstance(value["value"], (int, float)) for value in values), values


def info_reads_the_ends():
    recording(count=12)
    data = read("run.krt")
    data[data.index(b"MKM", len(data) // 2)] ^= 0xFF  # the mark of a frame in the middle
    write("run.krt", data)
    assert doc("info", "run.krt")["framesRead"] < 12
    run("info", "run.krt", "--counters", status=1)


def damage_of_any_byte_ends_with_success_only_where_it_changes_nothing():
    """Bytes of every class: file and block headers, records, CRCs, tails of frames, ends. What no sum covers in the format,
    the frames themselves, is damaged where a side file of sums stands beside the recording."""
    random.seed(11)
    recording("run.krt", "--checksums", count=2)
    sums, dump = read("run.krt.crc"), read("dump.raw")
    whole = read("run.krt")
    first = whole.index(dump[:64])
    blocks = doc("info", "run.krt")["blocks"]
    edges = [at + d for block in blocks for at in (block["offset"], block["offset"] + block["bytes"]) for d in range(-12, 13, 3)]
    records = [random.randrange(first) for _ in range(40)] + list(range(0, 77, 11))
    frames = [random.randrange(first, len(whole)) for _ in range(20)] + list(range(first + 6144, first + 8700, 200))
    os.remove("run.krt.crc")
    check_damage(whole, [at for at in edges + records if 0 <= at < first])
    write("run.krt.crc", sums)
    check_damage(whole, frames)
    os.remove("run.krt.crc")
    marks = [i for i in range(len(dump)) if dump[i:i + 3] == b"MKM"]
    check_damage(dump, [mark + i for mark in marks for i in range(4)], "dump.raw", TYPE)
    for end in (0, 1, 100, first - 1, first + 1, len(whole) - 8700, len(whole) - 1):
        check_file(whole[:end], whole, "run.krt", [])
    check_file(whole + b"tail", whole, "run.krt", [])
    for end in (0, 1, len(dump) - 1, len(dump) // 2 - 1):
        check_file(dump[:end], dump, "dump.raw", TYPE)


def check_damage(whole, places, name="run.krt", more=()):
    for at in places:
        data = bytearray(whole)
        data[at] ^= 1 << at % 8
        check_file(data, whole, name, more)


def check_file(data, whole, name, more):
    verbs = {"stats": ["--csv"], "explain": ["--at", "9,9"], "convert": ["-o", "-", "--format", "npy"],
             "record": ["-o", "out.krt", "--overwrite"]}
    for verb, options in verbs.items():
        def result(content):
            write(name, content)
            done = subprocess.run([OVIX, verb, name, *more, *options], capture_output=True)
            said = bytes(read("out.krt")) if verb == "record" and done.returncode == 0 else done.stdout
            return done.returncode, said
        key = (verb, bytes(whole))
        if key not in EXPECTED:
            EXPECTED[key] = result(whole)
            assert EXPECTED[key][0] == 0, EXPECTED[key]
        status, said = result(data)
        assert status in (1, 3, 4) or (status == 0 and said == EXPECTED[key][1]), (verb, status, differing(data, whole))


EXPECTED = {}


def differing(data, whole):
    return [i for i, (a, b) in enumerate(zip(data, whole)) if a != b][:3] or (len(data), len(whole))


def doubts_are_told_and_types_found():
    run("synth", "-o", "c.raw", "--form", "plain", *TYPE[:2], "--size", "80x60", "--count", "4")
    error = run("info", "c.raw", status=4)[1]
    guess = json.loads(run("info", "c.raw", "--json", status=4)[0])["guesses"][0]
    assert (guess["width"], guess["height"]) == (80, 60) and "K410" in guess["pixelType"] and "--pixel-type" in error, guess
    several = run("stats", "c.raw", "--pixel-type", "auto", status=4)[1]  # relatives of the camera write the same bytes
    assert '"K410 IR (F7M0)" 80x60' in several and '"K410 IR (GigE)" 80x60' in several, several
    run("info", "c.raw", *TYPE[:2], "--size", "40x120", "--strict", status=1)


def counts_and_colours_go_everywhere():
    synth(count=2)
    run("convert", *DUMP, "--unit", "counts", "-o", "counts.npy")
    numbers = [int(value) for value in array("counts.npy", "f")]
    mean = rows(*DUMP, "--unit", "counts")[1]["mean"]
    plain = [[kind + ".raw", "--pixel-type", kind, "--size", "64x48"] for kind in ("counts", "counts-be")]
    for order, source in zip("<>", plain):
        write(source[0], struct.pack(f"{order}{len(numbers)}H", *numbers))
        run("explain", *source, "--at", "3,3")
    for name in ("c.npy", "c.tif"):
        run("convert", *DUMP, "--unit", "counts", "--type", "uint16", "-o", name)
        write("cut" + name, read(name)[:-100 if name == "c.npy" else 4000])
    run("convert", *DUMP, "--unit", "counts", "-o", "c.png", "--frames", "1", "--plain", "--range", "0,65535")
    assert rows("c.png")[0]["mean"] == mean
    for name in ("c.npy", "c.tif", "c.png"):
        assert [row["mean"] for row in rows("-", stdin=read(name))] == [row["mean"] for row in rows(name)]
    run("stats", "-", "--pixel-type", "counts", "--size", "64x48", stdin=read("c.png"), status=2)
    for source in (*plain, ["c.npy"], ["c.tif"]):
        run("record", *source, "-o", "c.krt", "--overwrite")
        close(rows(*source)[1]["mean"], mean, 1e-6)
        close(rows("c.krt")[1]["mean"], mean, 1e-6)
    run("stats", "cutc.npy", status=3)
    run("stats", "cutc.tif", status=4)
    run("convert", *DUMP, "-o", "float.npy")
    assert "16-bit" in run("stats", "float.npy", status=4)[1]
    write("rgb.raw", bytes([10, 20, 30]) * 64 * 48)
    rgb = ["rgb.raw", "--pixel-type", "RGB24", "--size", "64x48"]
    run("record", *rgb, "-o", "rgb.krt")
    assert rows(*rgb, "--unit", "average")[0]["mean"] == rows("rgb.krt", "--unit", "average")[0]["mean"] == 20
    run("convert", "rgb.krt", "-o", "rgb.png")


def figures_of_good_pixels_and_distributions():
    synth(count=1)
    run("convert", *DUMP, "-o", "t.npy")
    values, status = array("t.npy", "f"), array("t.status.npy", "B")
    good = sorted(v for v, s in zip(values, status) if not s)
    row = rows(*DUMP, "--good-only", "--percentiles", "0,25,50,100", "--histogram", "4")[0]
    close(row["max"]["value"], good[-1], 1e-4)
    mean = math.fsum(good) / len(good)
    close(row["mean"], mean, 1e-4)
    close(row["std"], math.sqrt(math.fsum((v - mean) ** 2 for v in good) / len(good)), 1e-4)
    warm = rows(*DUMP, "--good-only", "--scale", "F")[0]  # a deviation takes the 1.8 and not the 32
    close(warm["mean"], mean * 1.8 + 32, 1e-3)
    close(warm["std"], row["std"] * 1.8, 1e-3)
    part = rows(*DUMP, "--roi", "10,5,30,20")[0]
    inside = [values[y * 64 + x] for y in range(5, 25) for x in range(10, 40)]
    close(part["mean"], math.fsum(inside) / 600, 1e-4)
    assert abs(part["max"]["value"] - max(inside)) < 1e-4 and values[part["max"]["y"] * 64 + part["max"]["x"]] == max(inside)
    place = 0.25 * (len(good) - 1)
    close(row["percentiles"]["25"], good[int(place)] + (place % 1) * (good[int(place) + 1] - good[int(place)]), 1e-4)
    assert sum(row["histogram"]["counts"]) == len(good) == row["counted"]
    both = rows(*DUMP)[0]
    close(both["max"]["value"], max(v for v in values if v == v), 1e-4)
    assert both["ofGood"]["max"] == row["max"]["value"] < both["max"]["value"]
    assert sum(both["status"].values()) == both["pixels"] == 64 * 48
    assert sum(1 for s in status if not s) == both["status"]["good"]


def array(name, kind):
    data = read(name)
    start = 10 + struct.unpack("<H", data[8:10])[0]
    return struct.unpack(f"<{(len(data) - start) // struct.calcsize(kind)}{kind}", data[start:])


def every_row_says_when_and_where():
    synth(count=2)
    shapes = ["spot:3,4", "line:0,0,9,4", "c=circle:20,20,5", "p=polygon:1,1,9,1,1,9", "0,0,4,4"]
    told = [part for shape in shapes for part in ("--roi", shape)]
    found = rows(*DUMP, *told)
    assert [(row["frame"], row["region"]) for row in found][:5] == [(0, "roi1"), (0, "roi2"), (0, "c"), (0, "p"), (0, "roi5")]
    inside = sum(1 for x in range(-5, 6) for y in range(-5, 6) if x * x + y * y <= 25)
    assert [row["pixels"] for row in found[:5]] == [1, 10, inside, 45, 16], found
    assert all(row["file"] == "dump.raw" and row["time"].endswith("Z") and row["counter"] is not None for row in found)
    points = {"spot": [[3, 4]], "line": [[0, 0], [9, 4]], "circle": [[20, 20]], "polygon": [[1, 1], [9, 1], [1, 9]], "rectangle": [[0, 0], [3, 3]]}
    listed = [{"name": kind, "kind": kind, "points": at, **({"radius": 5} if kind == "circle" else {})} for kind, at in points.items()]
    write("regions.json", json.dumps({"schema": 1, "kind": "regions", "regions": listed}).encode())
    conforms(read("regions.json"), "regions")
    assert [row["mean"] for row in rows(*DUMP, "--regions", "regions.json")] == [row["mean"] for row in found]
    head, *lines = run("stats", *DUMP, *told, "--csv")[0].decode().splitlines()
    assert len(lines) == 10 and {line.count(",") for line in lines} == {head.count(",")}
    assert head.startswith("file,frame,time (UTC),counter,preset,region")
    run("stats", *DUMP, *told, "--csv", "-o", "f.csv")
    assert read("f.csv").decode().splitlines() == [head, *lines] and run("stats", *DUMP, *told, "--csv", "-o", "-")[0] == read("f.csv")
    conforms(read("f.csv.json"), "stats")
    whole, side = doc("stats", *DUMP, *told), json.loads(read("f.csv.json"))
    assert side["parameters"]["provenance"].pop("command")[-1] == "f.csv" and whole["parameters"]["provenance"].pop("command")
    assert {**side, "rows": found} == whole
    run("stats", *DUMP, *told, "--csv", "-o", "f.csv", status=4)
    run("stats", *DUMP, "-o", "f.csv", status=2)
    table = run("stats", *DUMP, *told)[0].decode()
    assert "dump.raw" in table and found[0]["time"] in table and "counter" in table
    profile = rows(*DUMP, "--frames", "0", "--profile", "row=0,5,63,5")[0]["profile"]
    run("convert", *DUMP, "--frames", "0", "-o", "t.npy")
    values = array("t.npy", "f")
    assert len(profile) == 64 and all(abs(pixel["value"] - values[5 * 64 + x]) < 1e-4 for x, pixel in enumerate(profile))


def errors_are_json_with_a_name_that_stays():
    error = json.loads(run("stats", "missing.krt", "--json", status=4)[1])["error"]
    assert error["id"] == "OVX-201" and error["exit"] == 4 and error["file"] == "missing.krt", error
    assert json.loads(run("stats", "--jsno", "--json", status=2)[1])["error"]["id"] == "OVX-1"


def nothing_without_effect_is_taken():
    synth("--tables", "nuc")
    run("record", *DUMP, "-o", "run.krt")
    for line in (["stats", "run.krt", "--emissivity", ""], ["stats", ""], ["explain", "run.krt", "--at", "1,1", "--frames", "0"],
                 ["convert", "run.krt", "-o", "a.npy", "--range", "1,2"], ["stats", "run.krt", "--unit", "counts", "--scale", "F"],
                 ["stats", "run.krt", "--unit", "counts", "--emissivity", "0.9"], ["stats", "run.krt", "--correction", "3=nuc"],
                 ["stats", "run.krt", "--histogram", "4"], ["stats", "run.krt", "--profile", "0,0,1,1", "--roi", "0,0,1,1"],
                 ["info", "run.krt", "--frame", "0", "--counters"], ["stats", "run.krt", "run.krt", *TYPE[:2]], ["stats", "run.krt", *TYPE]):
        run(*line, status=2)
    run("stats", "run.krt", *DUMP)
    run("stats", "run.krt", "--reflected-temp", "20 °C")


def outputs_are_no_inputs():
    recording()
    before = read("run.krt")
    os.link("run.krt", "same.krt")
    os.symlink("run.krt", "link.krt")
    for name in ("run.krt", "same.krt", "link.krt"):
        for verb in ("record", "repair"):
            run(verb, "run.krt", "-o", name, "--overwrite", status=4)
    os.link("dump.raw", "dump.npy")
    run("convert", *DUMP, "-o", "dump.npy", "--overwrite", status=2)
    write("points.csv", b"counts,temperature (C)\n1000,20\n2000,40\n3000,60\n4000,80\n")
    run("calibrate", "points.csv", "--band", "8,12", "-o", "cal.json")
    inputs = {name: read(name) for name in ("run.krt", "points.csv", "cal.json")}
    for line in (["index", "run.krt", "-o", "link.krt"], ["calibrate", "points.csv", "--band", "8,12", "-o", "points.csv"],
                 ["convert", "run.krt", "--cal", "user", "--user-cal", "cal.json", "-o", "cal.npy"],
                 ["stats", "run.krt", "--cal", "user", "--user-cal", "cal.json", "--json", "-o", "cal.json"]):
        run(*line, "--overwrite", status=2)
    assert read("run.krt") == before and all(read(name) == data for name, data in inputs.items())


def what_cannot_be_written_leaves_nothing():
    recording()
    before = sorted(os.listdir("."))
    for kind, full_at in (("npy", (0, 4)), ("csv", (0, 4)), ("tif", (0, 4)), ("zarr", (0, 4, 8)), ("nxs", (0, 4, 20, 40))):
        assert "nowhere/a." + kind in run("convert", "run.krt", "-o", "nowhere/a." + kind, status=4)[1]
        for kilobytes in full_at:
            command = f'ulimit -f {kilobytes}; exec "$0" convert run.krt -o "$1"'
            full = subprocess.run(["bash", "-c", command, OVIX, "a." + kind], capture_output=True, text=True)
            assert full.returncode == 4 and full.stderr.startswith("ovix: a.") and "File too large" in full.stderr, (kind, full)
            assert sorted(os.listdir(".")) == before, kind
    write("a.nxs.part", b"somebody's")
    assert "a.nxs.part" in run("convert", "run.krt", "-o", "a.nxs", status=4)[1] and read("a.nxs.part") == b"somebody's"
    os.remove("a.nxs.part")
    assert sorted(os.listdir(".")) == before
    # what a dead process of the same number left is in nobody's way
    subprocess.run(["bash", "-c", ': >.a.npy.$$-0.part; exec "$0" convert run.krt -o a.npy', OVIX], check=True)


def an_interrupt_ends_loops_and_closes_documents():
    synth(count=400)
    for _ in range(5):
        child = subprocess.Popen([OVIX, "stats", *DUMP, "--json", "--jobs", "1"], stdout=subprocess.PIPE)
        head = child.stdout.read(2000)
        child.send_signal(signal.SIGINT)
        text = head + child.stdout.read()
        assert child.wait() in (-signal.SIGINT, 0), child.returncode
        assert json.loads(text)["complete"] is (child.returncode == 0)
        if child.returncode:
            break
    dead = subprocess.Popen(["true"])
    dead.wait()
    recording()
    write(f".run.krt.{dead.pid}-0.part", b"x")
    write(f".run.krt.{os.getpid()}-0.part", b"x")
    assert f"{dead.pid}-0.part" in run("verify", "run.krt")[0].decode()
    run("verify", "run.krt", "--clean")
    assert os.path.exists(f".run.krt.{os.getpid()}-0.part") and not os.path.exists(f".run.krt.{dead.pid}-0.part")


def messages_are_as_loud_as_asked_for():
    synth(count=200)
    assert run("convert", *DUMP, "-o", "a.npy", "-q")[1] == ""
    assert run("stats", "missing.krt", "-q", status=4)[1].startswith("ovix: missing.krt")
    lines = run("convert", *DUMP, "-o", "a.npy", "--overwrite", "--progress", "json", "--jobs", "1")[1].splitlines()
    progress = [json.loads(line)["progress"] for line in lines if line.startswith("{")]
    conforms(json.dumps({"progress": progress[0]}), "progress")
    assert progress and progress[-1]["total"] == 200 and progress[-1]["perSecond"] >= 0
    assert all("noData" in run(verb, "--help")[0].decode() for verb in ("stats", "convert", "explain"))
    recording("a\x1b[31m.krt")
    wide = pty.openpty()
    termios.tcsetwinsize(wide[1], (24, 80))
    subprocess.run([OVIX, "info", "a\x1b[31m.krt"], stdout=wide[1], check=True)
    shown = os.read(wide[0], 65536).decode()
    assert "\x1b" not in shown and max(map(len, shown.splitlines())) <= 80 and "…" in shown, shown


def many_inputs_in_one_call():
    for name in ("a.krt", "b.krt"):
        recording(name, count=2)
    found = doc("stats", "a.krt", "b.krt")["sources"]
    assert [source["file"] for source in found] == ["a.krt", "b.krt"] and all(len(source["rows"]) == 2 for source in found)
    listed = run("stats", "--files-from", "-", "--csv", stdin=b"a.krt\nb.krt\n")[0].decode().splitlines()
    assert [line.split(",")[0] for line in listed] == ["file", "a.krt", "a.krt", "b.krt", "b.krt"]
    write("bad.krt", read("b.krt")[:-500])
    worst = doc("stats", "a.krt", "bad.krt", "missing.krt", status=4)["sources"]
    assert [source["complete"] for source in worst] == [True, False, False] and worst[2]["error"]["id"] == "OVX-201"
    run("stats", "a.krt", "bad.krt", status=3)
    os.mkdir("out")
    done = doc("convert", "a.krt", "missing.krt", "b.krt", "-o", "out/{stem}.npy", status=4)["sources"]
    assert [source.get("output") for source in done] == ["out/a.npy", None, "out/b.npy"] and done[1]["error"]["id"] == "OVX-201"
    run("convert", "a.krt", "-o", "a.npy")
    assert read("out/a.npy") == read("a.npy") == read("out/b.npy")
    run("convert", "a.krt", "b.krt", "-o", "one.tif", status=2)


def a_dash_is_the_standard_stream():
    recording(count=2)
    whole = bytes(read("run.krt"))
    for kind in ("npy", "tif", "csv", "png"):
        run("convert", "run.krt", "--frames", "0", "-o", "f." + kind)
        out = run("convert", "run.krt", "--frames", "0", "-o", "-", "--format", kind)[0]
        assert len(out) > 1000 and out[:4] == bytes(read("f." + kind)[:4]), kind
    assert run("convert", "run.krt", "--frames", "0", "-o", "-", "--format", "npy")[0] == bytes(read("f.npy"))
    assert run("record", *DUMP, "-o", "-")[0] == run("record", "-", *TYPE, "-o", "-", stdin=bytes(read("dump.raw")))[0] == whole
    assert run("repair", "run.krt", "-o", "-")[0] == whole
    assert run("synth", "-o", "-", "--form", "plain", *TYPE, "--count", "2")[0] == bytes(read("dump.raw"))
    assert run("report", "run.krt", "-o", "-")[0].startswith(b"<!") and b"<svg" in run("plot", "run.krt", "-o", "-")[0]
    for line in (["convert", "-o", "-", "--format", "npy", "--json"], ["convert", "-o", "-"], ["convert", "-o", "a.npy", "--format", "npy"],
                 ["convert", "-o", "-", "--format", "png"], ["record", "-o", "-", "--checksums"]):
        run(line[0], "run.krt", *line[1:], status=2)
    assert sorted(os.listdir(".")) == sorted({"dump.raw", "run.krt", "f.npy", "f.json", "f.status.npy", "f.tif", "f.status.tif", "f.csv",
                                              "f.status.csv", "f.csv.json", "f.png"})
    side = json.loads(read("f.csv.json"))
    assert side["unit"] == "°C" and side["parameters"]["provenance"]["command"][:2] == ["ovix", "convert"], side
    assert sum(side["frames"][0]["status"].values()) == 64 * 48


def numbers_come_in_the_form_that_was_asked_for():
    synth(count=1)
    run("convert", *DUMP, "-o", "f.npy")
    assert b"'shape': (1, 48, 64)" in read("f.npy")
    values, status = array("f.npy", "f"), array("f.status.npy", "B")
    run("convert", *DUMP, "-o", "s.npy", "--squeeze", "--no-status", "--type", "uint16", "--step", "0.02")
    assert b"'shape': (48, 64)" in read("s.npy") and not os.path.exists("s.status.npy")
    side = json.loads(read("s.json"))
    for number, value, flags in zip(array("s.npy", "H"), values, status):
        if flags & 32:
            assert number == side["_FillValue"]
        else:
            close(side["add_offset"] + number * side["scale_factor"], value, 0.0101)
    run("convert", *DUMP, "-o", "n.npy", "--type", "uint16", "--step", "0.001", status=1)
    run("convert", *DUMP, "-o", "n.zarr", "--step", "1e-300", status=1)
    run("convert", *DUMP, "-o", "n.zarr", "--step", "nan", status=2)
    run("convert", *DUMP, "-o", "m.npy", "--mask")
    assert all((value != value) == (flags & 32 > 0) for value, flags in zip(array("m.npy", "f"), status))
    sizes = {}
    for kind, number in {"none": 1, "deflate": 8, "zstd": 50000}.items():
        run("convert", *DUMP, "-o", f"{kind}.tif", "--compression", kind, "--mask")
        page, sizes[kind] = tiff(f"{kind}.tif"), os.path.getsize(f"{kind}.tif")
        assert page[259] == number
        assert page[306] == "2026:01:15 12:00:00" and page[285].startswith("frame 0, 2026-01-15T12:00:00"), page
        assert page[42113] == "nan" and ">°C<" in page[42112] and json.loads(page[270])["axes"] == "TYX"
    assert sizes["deflate"] < sizes["none"] and sizes["zstd"] < sizes["none"]
    for line in (["a.csv", "--compression", "none"], ["a.tif", "--squeeze"], ["a.tif", "--step", "1"], ["a.png", "--no-status"],
                 ["a.png", "--compression", "zstd"], ["a.tif", "--compression", "none", "--level", "2"]):
        run("convert", *DUMP, "-o", *line, status=2)


def tiff(name):
    """The tags of the first page of a little-endian file, by its published layout."""
    data = bytes(read(name))
    assert data[:4] == b"II*\0"
    at = struct.unpack_from("<I", data, 4)[0]
    tags = {}
    for entry in range(at + 2, at + 2 + 12 * struct.unpack_from("<H", data, at)[0], 12):
        tag, kind, count, value = struct.unpack_from("<HHII", data, entry)
        start = value if count > 4 else entry + 8
        tags[tag] = data[start:start + count - 1].decode() if kind == 2 else value & 0xFFFF if kind == 3 else value
    return tags


def the_same_input_gives_the_same_bytes():
    recording()
    run("synth", "-o", "other.raw", "--tables", "nuc", *TYPE)
    write("points.csv", b"counts,temperature (C)\n1000,20\n2000,40\n3000,60\n4000,80\n")
    run("calibrate", "points.csv", "--band", "8,12", "-o", "cal.json")
    for epoch in (None, "1700000000"):
        told = {"SOURCE_DATE_EPOCH": epoch} if epoch else None
        for name in ("t.tif", "t.npy", "t.json", "t.png", "t.nxs", "t.zarr/.zmetadata"):
            files = []
            for _ in range(2):
                if not name.endswith(".json"):
                    run("convert", "run.krt", "-o", name.split("/")[0], "--overwrite", "--range" if "png" in name else "--frames",
                        "0,90" if "png" in name else "0,2", env=told)
                files.append(read(name if "png" not in name else "t-000000.png"))
                time.sleep(1 if name == "t.nxs" else 0)  # the stamps of HDF5 are whole seconds
            assert files[0] == files[1], name
        origin = json.loads(tiff("t.tif")[270])["parameters"]["provenance"]
        assert origin.get("created") == ("2023-11-14T22:13:20.000000Z" if epoch else None), origin
    blocks = {block["name"] for block in doc("info", "run.krt")["blocks"]}
    assert origin["command"][:3] == ["ovix", "convert", "run.krt"] and {block["block"] for block in origin["input"]["metadata"]} <= blocks
    assert origin["input"]["bytes"] == len(read("run.krt"))
    told = doc("stats", "run.krt", "--user-cal", "cal.json", "--cal", "user", "--correction", "nuc", "--clip", "0,9000")["parameters"]
    assert told["provenance"]["userCalibration"] == json.loads(read("cal.json")), told
    assert told["provenance"]["clip"] == [0, 9000] and doc("stats", "run.krt")["parameters"]["calibrations"][0]["planckBKelvin"] == 1428


def two_sources_are_held_together():
    recording("a.krt")
    shutil.copy("a.krt", "b.krt")
    assert doc("diff", "a.krt", "b.krt")["equal"] is True
    data, first = read("b.krt"), bytes(read("dump.raw")[:64])
    at = data.index(first) + 2 * (64 * 20 + 20)
    data[at] = (data[at] + 3) % 256
    write("b.krt", data)
    found = doc("diff", "a.krt", "b.krt", status=1)
    assert found["equal"] is False and found["differences"][0]["pixels"] == 1, found
    assert (found["differences"][0]["x"], found["differences"][0]["y"]) == (20, 20)
    run("diff", "a.krt", "b.krt", "--tolerance", f"{found['largest'] + 0.01} K")
    run("diff", "a.krt", "b.krt", "--tolerance", f"{(found['largest'] + 0.01) * 1.8} F")
    run("diff", "a.krt", "b.krt", "--tolerance", f"{found['largest'] / 2}K", status=1)
    run("diff", "a.krt", "b.krt", "--scale", "F", "--tolerance", f"{found['largest'] + 0.01} K")
    run("diff", "a.krt", "b.krt", "--scale", "F", "--tolerance", f"{found['largest'] * 1.4} F", status=1)
    run("diff", "a.krt", "b.krt", *TYPE, status=2)
    assert doc("diff", "a.krt", *DUMP, "--pixels-only")["equal"] is True
    synth(count=2)
    run("diff", "a.krt", *DUMP, status=1)


def the_uncertainty_is_that_of_the_formulas():
    """Sensitivities against differences of the tool's own measurements, and the budget against its definition."""
    recording()
    told = ["--emissivity", "0.9", "--reflected-temp", "295.15K"]
    found = doc("uncertainty", "run.krt", "--frames", "0", "--at", "40,28", *told, "--emissivity-u", "0.01", "--reflected-temp-u", "2K",
                "--counts-u", "3", "--constant-u", "planckB=0.1%", "--monte-carlo", "2000")
    inputs = {entry["key"]: entry for entry in found["inputs"]}

    def value(*more):
        steps = doc("explain", "run.krt", "--at", "40,28", "--frame", "0", *more)["steps"]
        return [step["value"] for step in steps if step["step"].startswith("temperature")][0]

    def slope(other, name, low, high, width):
        return (value(*other, name, high) - value(*other, name, low)) / width

    close(inputs["emissivity"]["sensitivity"], slope(told[2:], "--emissivity", "0.89", "0.91", 0.02), 0.05)
    close(inputs["reflected-temp"]["sensitivity"], slope(told[:2], "--reflected-temp", "293.15K", "297.15K", 4), 1e-3)
    combined = math.sqrt(sum((entry["sensitivity"] * entry["u"]) ** 2 for entry in found["inputs"]))
    close(found["combined"], combined, 1e-9)
    close(found["expanded"], 2 * combined, 1e-9)
    close(sum(entry["share"] for entry in found["inputs"]), 1, 1e-9)
    close(found["monteCarlo"]["u"], combined, 0.05 * combined)
    again = doc("uncertainty", "run.krt", "--roi", "20,20,9,9", *told, "--emissivity-u", "0.01")
    means = [row["mean"] for row in rows("run.krt", "--unit", "counts", "--roi", "20,20,9,9")]
    noise = math.sqrt(sum((b - a) ** 2 for a, b in zip(means, means[1:])) / 2 / 2 / 3)  # of the mean of three
    close({entry["key"]: entry["u"] for entry in again["inputs"]}["counts"], noise, 1e-9)
    run("uncertainty", "run.krt", "--at", "40,28", "--constant-u", "nothing=1", status=2)


def outputs_follow_their_schemas():
    recording()
    synth()
    run("synth", "-o", "c.raw", "--form", "plain", *TYPE[:2], "--size", "80x60", "--count", "4")
    write("points.csv", b"counts,temperature (C)\n1000,20\n2000,40\n3000,60\n4000,80\n")
    shutil.copy("run.krt", "b.krt")
    for line in (["stats", *DUMP], ["stats", "run.krt", "b.krt", "missing.krt", "--percentiles", "5", "--histogram", "3"],
                 ["stats", "run.krt", "--profile", "0,0,5,5"], ["convert", "run.krt", "-o", "x.npy"],
                 ["convert", "run.krt", "b.krt", "-o", "{stem}.tif"], ["info", "run.krt"], ["info", *DUMP],
                 ["info", "run.krt", "--frame", "0"], ["info", "run.krt", "--hexdump"], ["info", "c.raw"],
                 ["explain", "run.krt", "--at", "3,3", "--set", "emissivity=0.8"], ["diff", "run.krt", "b.krt"],
                 ["diff", "run.krt", *DUMP, "--scale", "F"], ["verify", "run.krt"], ["formats"],
                 ["uncertainty", "run.krt", "--roi", "3,3,9,9", "--emissivity-u", "0.1", "--monte-carlo", "200"],
                 ["record", "run.krt", "-o", "c.krt"], ["repair", "run.krt", "-o", "d.krt"],
                 ["adjust", "dump.raw", "--pixel-type", "counts", "--size", "64x48", "--frame-size", "8700", "-o", "a.raw"],
                 ["synth", "-o", "e.raw", *TYPE], ["calibrate", "points.csv", "--band", "8,12", "-o", "cal.json"],
                 ["report", "run.krt", "-o", "run.html"], ["plot", "run.krt", "-o", "run.svg"], ["index", "run.krt", "-o", "i.json"], ["demo", "--size", "160x120"]):
        done = subprocess.run([OVIX, *line, "--json"], capture_output=True)
        conforms(done.stdout, line[0])
        if done.returncode in (1, 2, 4) and done.stderr.startswith(b"{"):
            conforms(done.stderr.splitlines()[-1], "error")
    for kind, name in (("description", "x.json"), ("user-calibration", "cal.json")):
        conforms(read(name), kind)


def conforms(document, kind):
    schema = json.loads(run("schema", kind)[0])
    holds(json.loads(document), schema, schema["$defs"], kind)


def holds(value, schema, defs, place):
    """A document against the part of JSON Schema that the tool's schemas use; a field that they do not name is wrong."""
    if "$ref" in schema:
        return holds(value, defs[schema["$ref"].split("/")[-1]], defs, place)
    choices = schema.get("oneOf") or schema.get("anyOf")
    if choices:
        wrong = []
        for choice in choices:
            try:
                return holds(value, choice, defs, place)
            except AssertionError as error:
                wrong.append(str(error))
        raise AssertionError(f"{place}: none of {wrong}")
    types = {"object": dict, "array": list, "string": str, "boolean": bool, "null": type(None)}
    wanted = schema.get("type", [])
    wanted = [wanted] if isinstance(wanted, str) else wanted

    def fits(name):
        if name in types:
            return isinstance(value, types[name])
        return not isinstance(value, bool) and isinstance(value, int if name == "integer" else (int, float))

    assert not wanted or any(map(fits, wanted)), f"{place}: expected {wanted}, found {value!r}"
    assert "const" not in schema or value == schema["const"], place
    assert "enum" not in schema or value in schema["enum"], f"{place}: {value!r}"
    if isinstance(value, list):
        for item in value:
            holds(item, schema.get("items", {}), defs, place + "[]")
    if isinstance(value, dict) and "properties" in schema or isinstance(value, dict) and "additionalProperties" in schema:
        missing = set(schema.get("required", [])) - set(value)
        assert not missing, f"{place}: {missing} missing"
        for key, item in value.items():
            part = schema.get("properties", {}).get(key, schema.get("additionalProperties"))
            assert part is not None, f"{place}.{key}: not in the schema"
            holds(item, {} if part is True else part, defs, f"{place}.{key}")


def the_readme_runs_as_written():
    text = open(os.path.join(os.path.dirname(os.path.abspath(sys.argv[0])), "../../../README.md")).read()
    block = next(block for block in re.findall(r"```\n(.*?)```", text, re.S) if "ovix synth" in block)
    os.symlink(OVIX, "ovix")
    for line in block.splitlines():
        done = subprocess.run(["bash", "-c", line.split("   #")[0]], env={**os.environ, "PATH": os.getcwd() + ":" + os.environ["PATH"]},
                              capture_output=True, text=True)
        assert done.returncode == 0, (line, done.stderr)


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        globals()[sys.argv[2]]()
