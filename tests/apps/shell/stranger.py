#!/usr/bin/env python3
"""Runs the tool as a stranger's shell would: stranger.py OVIX CASE. Each case is a function of its name below."""

import json, math, os, re, shutil, signal, struct, subprocess, sys, tempfile, time

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
    with open(name, "rb") as file:
        return bytearray(file.read())


def write(name, data):
    with open(name, "wb") as file:
        file.write(data)


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
    assert doc("record", "cut.krt", "-o", "again.krt", status=3)["complete"] is False
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


def figures_of_good_pixels_and_distributions():
    synth(count=1)
    run("convert", *DUMP, "-o", "t.npy")
    values, status = array("t.npy", "f"), array("t.status.npy", "B")
    good = sorted(v for v, s in zip(values, status) if not s)
    row = rows(*DUMP, "--good-only", "--percentiles", "0,25,50,100", "--histogram", "4")[0]
    close(row["max"]["value"], good[-1], 1e-4)
    close(row["mean"], math.fsum(good) / len(good), 1e-4)
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
    write("regions.json", json.dumps({"schema": 1, "kind": "regions", "regions": [
        {"name": "c", "kind": "circle", "points": [[20, 20]], "radius": 5}]}).encode())
    assert rows(*DUMP, "--regions", "regions.json")[0]["mean"] == found[2]["mean"]
    head, *lines = run("stats", *DUMP, *told, "--csv")[0].decode().splitlines()
    assert len(lines) == 10 and {line.count(",") for line in lines} == {head.count(",")}
    assert head.startswith("file,frame,time (UTC),counter,preset,region")
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
                 ["info", "run.krt", "--frame", "0", "--counters"]):
        run(*line, status=2)
    run("stats", "run.krt", "--reflected-temp", "20 °C")


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
                                              "f.status.csv", "f.png"})


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
    synth(count=2)
    run("diff", "a.krt", "dump.raw", *TYPE, status=2)


def the_uncertainty_is_that_of_the_formulas():
    """Sensitivities against differences of the tool's own measurements, and the budget against its definition."""
    recording()
    told = ["--emissivity", "0.9", "--reflected-temp", "295.15K"]
    found = doc("uncertainty", "run.krt", "--frames", "0", "--at", "40,28", *told, "--emissivity-u", "0.01", "--reflected-temp-u", "2K",
                "--counts-u", "3", "--constant-u", "planckB=0.1%", "--monte-carlo", "20000")
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
    assert again["noise"].startswith("the scatter over 3 frames")
    run("uncertainty", "run.krt", "--at", "40,28", "--constant-u", "nothing=1", status=2)


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        globals()[sys.argv[2]]()
