"""xarray, dask and virtual Zarr over recordings."""

import json
import os
import subprocess
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

import numpy as np
import pytest
from conftest import CAMERA, FORMS, PLAIN, TOOL, run, tool

import ovix

xarray, zarr, fsspec, _ = (pytest.importorskip(name) for name in ("xarray", "zarr", "fsspec", "dask"))


def test_the_engine_gives_lazily_what_the_recording_gives(recording):
    dataset = xarray.open_dataset(recording, scale="K", chunks={"time": 3}, inline_array=True)
    with ovix.open(recording) as rec:
        assert dataset.temperature.dims == ("time", "y", "x") and dataset.temperature.chunks[0] == (3, 3, 2)
        assert np.array_equal(dataset.counts, rec.counts)
        assert np.array_equal(dataset.temperature, rec.temperature("K"))
        assert np.array_equal(dataset.status[5], rec[5].status)
        picked = dataset.temperature.isel(time=[6, 1], y=slice(40, 4, -7), x=9)
        assert np.array_equal(picked, rec.temperature("K")[[6, 1], 40:4:-7, 9])
        assert np.array_equal(dataset.sel(time=rec.time[4]).counts, rec[4].counts)
        assert np.array_equal(dataset.frame, range(8)) and np.array_equal(dataset.time, rec.time)
    assert dataset.temperature.units == "K" and dataset.temperature.ancillary_variables == "status"
    assert dict(zip(dataset.status.flag_meanings.split(), dataset.status.flag_masks)) == ovix.STATUS_FLAGS
    assert dataset.scene_emissivity == 0.95 and dataset.scene_emissivity_origin == "frame"
    assert dataset.calibration == "Curlew (factory)"


def test_frames_without_time_are_told_by_their_numbers(tmp_path):
    np.arange(3 * 20, dtype="<u2").tofile(tmp_path / "counts.raw")
    dataset = xarray.open_dataset(tmp_path / "counts.raw", engine="ovix", pixel_type="counts", size=(5, 4))
    assert list(dataset.data_vars) == ["counts"] and np.array_equal(dataset.time, [0, 1, 2])
    assert np.array_equal(dataset.counts.values.ravel(), range(60))


@pytest.fixture(scope="module")
def archive(tmp_path_factory):
    """Four recordings of eight frames, of which three frames are missing in the third."""
    folder = tmp_path_factory.mktemp("archive")
    dump = PLAIN.make(folder / "dump.raw", 32)
    for i, frames in enumerate(("0-7", "8-15", "16-18,22-23", "24-31")):
        tool("record", dump, *CAMERA, "--frames", frames, "-o", folder / f"run{i}.krt")
    return folder


def test_many_recordings_are_one_and_gaps_are_told(archive):
    dataset = ovix.open_archive(archive / "run*.krt", chunk=4)
    assert dataset.temperature.chunks[0] == (4, 4, 4, 4, 4, 1, 4, 4)
    parts = [ovix.open(path).temperature() for path in sorted(archive.glob("run*.krt"))]
    assert np.array_equal(dataset.temperature, np.concatenate(parts))
    assert np.array_equal(np.bincount(dataset.recording), [8, 8, 5, 8])
    assert [gap.split(": ") for gap in dataset.gaps] == [
        [f"{archive}/run2.krt, frame 3", "0.08 s behind the frame before, mostly 0.02 s"]
    ]
    with pytest.raises(FileNotFoundError):
        ovix.open_archive(archive / "none*.krt")
    other = FORMS[-1].make(archive / "other.raw")
    ovix.record(other, archive / "other.krt", **FORMS[-1].how)
    with pytest.raises(ValueError, match="run0.krt: .*expected .*, as in .*other.krt"):
        ovix.open_archive([archive / "run0.krt", archive / "other.krt"])


KILLED = """
import os, sys, time, glob, ovix
from distributed import Client, LocalCluster

if __name__ == "__main__":
    files = sorted(glob.glob(sys.argv[1]))
    dataset = ovix.open_archive(files, chunk=4)
    expected = dataset.temperature.mean(("y", "x")).compute(scheduler="sync")
    with LocalCluster(2, threads_per_worker=1, dashboard_address=None) as cluster, Client(cluster) as client:
        result = client.compute(dataset.temperature.mean(("y", "x")))
        while sum(client.run(lambda dask_worker: len(dask_worker.data)).values()) < len(files) // 8:
            time.sleep(.02)
        os.kill(next(iter(cluster.workers.values())).pid, 9)
        assert (result.result(timeout=120) == expected).all()
        print(len(files), "recordings")
"""


def test_dask_comes_to_its_end_though_a_worker_is_killed(tmp_path, archive):
    for i in range(200):
        os.symlink(archive / "run0.krt", tmp_path / f"run{i:03}.krt")
    (tmp_path / "killed.py").write_text(KILLED)
    assert "200 recordings" in run(sys.executable, tmp_path / "killed.py", tmp_path / "*.krt", timeout=300)


READER = """
import json, sys
import fsspec, numpy, xarray, zarr
sys.modules["ovix"] = None  # nothing of it is there
for refs, expected in json.loads(sys.argv[1]):
    mapper = fsspec.get_mapper("reference://", fo=refs, missing_exceptions=())
    assert numpy.array_equal(zarr.open(mapper, mode="r").counts[:], numpy.load(expected)), refs
    dataset = xarray.open_dataset(mapper, engine="zarr", consolidated=False)
    assert numpy.array_equal(dataset.counts[1], numpy.load(expected)[1]), refs
"""


def read_without_ovix(pairs):
    environment = {key: value for key, value in os.environ.items() if key != "PYTHONPATH"}
    run(sys.executable, "-c", READER, json.dumps([[str(a), str(b)] for a, b in pairs]), env=environment)


def test_references_of_every_family_are_read_without_ovix(tmp_path):
    pairs, refused = [], set()
    for number, form in enumerate(FORMS):
        dump = form.make(tmp_path / f"{number}.raw")
        rec = ovix.open(dump, **form.how)
        try:
            ovix.index(dump, tmp_path / f"{number}.json", **form.how)
        except ovix.FormatError as error:
            assert error.file == str(dump) and error.expected == "plain counts"
            refused.add(form.pixel_type)
            continue
        np.save(tmp_path / f"{number}.npy", rec.counts)
        pairs.append((tmp_path / f"{number}.json", tmp_path / f"{number}.npy"))
    assert {"R7X IR (MJLS)", "K410 IR (GigE, Flipped)", "Wren"} <= refused
    assert not {"K410 IR (F7M0)", "K410 IR (GigE)", "LOR-RA", "LOR-SB", "IACF", "MVF", "Lapwing"} & refused
    read_without_ovix(pairs)


def test_a_recording_that_is_missing_is_named(archive, tmp_path):
    os.symlink(archive / "run0.krt", tmp_path / "a.krt")
    os.symlink(archive / "run1.krt", tmp_path / "b.krt")
    ovix.index([tmp_path / "a.krt", tmp_path / "b.krt"], tmp_path / "refs.json")
    os.unlink(tmp_path / "b.krt")
    counts = zarr.open(fsspec.get_mapper("reference://", fo=str(tmp_path / "refs.json"), missing_exceptions=())).counts
    assert np.array_equal(counts[7], ovix.open(archive / "run0.krt")[7].counts)
    with pytest.raises(FileNotFoundError, match="b.krt"):
        counts[8]
    with pytest.raises(FileExistsError):
        ovix.index(tmp_path / "a.krt", tmp_path / "refs.json")


def test_the_tool_writes_the_same_list(archive, tmp_path):
    files = [archive / "run0.krt", archive / "run1.krt"]
    tool("index", *files, "--base-url", "https://example.org/a/", "-o", tmp_path / "refs.json")
    assert json.loads((tmp_path / "refs.json").read_text()) == ovix.index(files, base_url="https://example.org/a")


def test_a_damaged_file_is_listed_and_said(archive, tmp_path):
    (tmp_path / "cut.krt").write_bytes((archive / "run0.krt").read_bytes()[:-100])
    with pytest.warns(UserWarning, match="cut.krt: damage"):
        refs = ovix.index(tmp_path / "cut.krt")["refs"]
    assert "counts/6.0.0" in refs and "counts/7.0.0" not in refs
    done = subprocess.run([TOOL, "index", tmp_path / "cut.krt", "-o", tmp_path / "refs.json"], capture_output=True)
    assert done.returncode == 3 and b"cut" in done.stderr


def test_several_frames_may_be_one_reference(archive):
    refs = ovix.index([archive / "run0.krt", archive / "run1.krt"], frames_per_reference=4)
    assert sum(key.startswith("frames/") and key[7:].isdigit() for key in refs["refs"]) == 4
    frames = zarr.open(fsspec.get_mapper("reference://", fo=refs)).frames
    expected = np.concatenate([ovix.open(archive / f"run{i}.krt").counts for i in (0, 1)])
    assert np.array_equal(frames[:]["pixels"], expected)
    with pytest.raises(ValueError, match="run2.krt: expected a multiple of 4 frames, found 5"):
        ovix.index([archive / "run0.krt", archive / "run2.krt"], frames_per_reference=4)


def test_references_are_read_over_http_ranges(archive, tmp_path):
    class Ranges(BaseHTTPRequestHandler):
        def do_GET(self):
            body = (archive / self.path.lstrip("/")).read_bytes()
            first, last = map(int, self.headers["Range"].removeprefix("bytes=").split("-"))
            self.send_response(206)
            self.send_header("Content-Length", str(last + 1 - first))
            self.end_headers()
            self.wfile.write(body[first : last + 1])

        def log_message(self, *_):
            pass

    server = ThreadingHTTPServer(("127.0.0.1", 0), Ranges)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    url = f"http://127.0.0.1:{server.server_port}"
    ovix.index(archive / "run0.krt", tmp_path / "refs.json", base_url=url)
    np.save(tmp_path / "counts.npy", ovix.open(archive / "run0.krt").counts)
    read_without_ovix([(tmp_path / "refs.json", tmp_path / "counts.npy")])
    server.shutdown()
