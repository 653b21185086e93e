"""What the tool writes for others, read by others: Zarr by zarr and xarray, HDF5 by h5py."""

import json
import signal
import subprocess
import time

import numpy as np
import pytest
from conftest import CAMERA, HEIGHT, PLAIN, TOOL, WIDTH, tool

import ovix

xarray, zarr, h5py = (pytest.importorskip(name) for name in ("xarray", "zarr", "h5py"))


@pytest.fixture(scope="module")
def run(tmp_path_factory):
    """More frames than chunks of traces hold, and their temperatures and status."""
    dump = PLAIN.make(tmp_path_factory.mktemp("stores") / "dump.raw", 70)
    rec = ovix.open(dump, **PLAIN.how)
    status = np.empty(rec.shape, np.uint8)
    return dump, rec.temperature("K", status=status), status, rec.time


def convert(dump, out, *options):
    tool("convert", dump, *CAMERA, "--scale", "K", *options, "-o", out)
    return out


@pytest.mark.parametrize("options", [(), ("--compression", "none"), ("--by-trace",)])
def test_zarr_holds_the_values_with_their_unit_status_and_time(run, tmp_path, options):
    dump, temperature, status, times = run
    store = convert(dump, tmp_path / "out.zarr", *options)
    dataset = xarray.open_zarr(store)
    assert np.array_equal(dataset.temperature, temperature) and np.array_equal(dataset.status, status)
    assert np.array_equal(dataset.time, times) and np.array_equal(dataset.frame, range(70))
    assert dataset.temperature.units == "K" and dataset.status.flag_masks == list(ovix.STATUS_FLAGS.values())
    assert json.loads(dataset.parameters)["emissivity"] == 0.95
    by_trace = options == ("--by-trace",)
    assert dataset.temperature.encoding["chunks"] == ((64, 48, 64) if by_trace else (1, HEIGHT, WIDTH))
    assert zarr.open(str(store))["temperature"].compressor.shuffle == 2


def test_zarr_is_read_whatever_the_sign_of_the_unit(run, tmp_path):
    dump, temperature, _, _ = run
    tool("convert", dump, *CAMERA, "-o", tmp_path / "out.zarr")
    stored = zarr.open_consolidated(str(tmp_path / "out.zarr")).temperature
    assert stored.attrs["units"] == "°C"
    assert np.allclose(stored, temperature - 273.15, atol=1e-3)


def test_zarr_holds_temperatures_in_steps(run, tmp_path):
    dump, temperature, _, _ = run
    store = convert(dump, tmp_path / "out.zarr", "--step", "0.01")
    assert zarr.open(str(store))["temperature"].dtype == np.int32
    stored = xarray.open_zarr(store).temperature
    assert np.max(np.abs(stored.values.astype(float) - temperature)) < 0.00502
    small = sum(file.stat().st_size for file in (store / "temperature").iterdir())
    assert small < temperature.nbytes / 2.5


def test_nexus_holds_the_values_with_their_unit_status_and_time(run, tmp_path):
    dump, temperature, status, times = run
    store = convert(dump, tmp_path / "out.nxs")
    with h5py.File(store) as file:
        entry = file[file.attrs["default"]]
        data = entry[entry.attrs["default"]]
        signal = data[data.attrs["signal"]]
        assert (entry.attrs["NX_class"], data.attrs["NX_class"]) == ("NXentry", "NXdata")
        assert np.array_equal(signal, temperature) and signal.attrs["units"] == "K"
        assert np.array_equal(data["status"], status) and np.array_equal(data["frame"], range(70))
        seconds = (times - times[0]) / np.timedelta64(1, "s")
        assert np.allclose(data[data.attrs["axes"][0]], seconds, atol=1e-6)
        for array in (signal, data["status"]):  # the scales of HDF5 say the same as the axes of NeXus
            scales = [dimension[name] for dimension, name in zip(array.dims, data.attrs["axes"])]
            assert [(scale.name, len(scale)) for scale in scales] == [
                ("/entry/data/time", 70), ("/entry/data/y", HEIGHT), ("/entry/data/x", WIDTH)]
        assert np.array_equal(data["y"], range(HEIGHT)) and data["frame"].dims[0].keys() == ["time"]
        assert entry["start_time"][()].decode().startswith(str(times[0])[:26])
        assert json.loads(entry["process/parameters/data"][()])["emissivity"] == 0.95
    pytest.importorskip("h5netcdf")
    with xarray.open_dataset(store, group="entry/data", engine="h5netcdf") as data:
        assert data.temperature.dims == data.status.dims == ("time", "y", "x") and set(data.coords) == {"time", "y", "x"}
        assert np.array_equal(data.temperature, temperature)


def test_tiff_holds_the_values_with_their_unit(run, tmp_path):
    dump, temperature, _, _ = run
    tifffile = pytest.importorskip("tifffile")
    with tifffile.TiffFile(convert(dump, tmp_path / "out.tif")) as file:
        assert np.array_equal(file.asarray(), temperature) and file.series[0].axes == "TYX"
        told = json.loads(file.pages[0].description)
        assert "K" in json.dumps(told["unit"]) and told["parameters"]["emissivity"] == 0.95


def test_gdal_finds_unit_scale_and_no_data(run, tmp_path):
    gdal = pytest.importorskip("osgeo.gdal")
    pages = gdal.Open(str(convert(run[0], tmp_path / "out.tif", "--type", "uint16", "--step", "0.02")))
    band = pages.GetRasterBand(1)
    assert band.GetUnitType() == "K" and band.GetNoDataValue() == 0 and band.GetScale() == 0.02
    numbers = band.ReadAsArray()
    assert np.array_equal(numbers == 0, run[2][0] & 32 > 0)
    values = np.where(numbers, numbers * 0.02 + band.GetOffset(), run[1][0])
    assert np.allclose(values, run[1][0], rtol=0, atol=0.0101)


def frames_of(store):
    """What is there of a store that is being written, or that a killed writer left."""
    if store.is_dir():
        return xarray.open_zarr(store).temperature.values if (store / ".zmetadata").exists() else []
    with h5py.File(store, swmr=True) as file:
        return file["entry/data/temperature"][:]


@pytest.mark.parametrize("ending", [signal.SIGKILL, signal.SIGINT])
@pytest.mark.parametrize("extension", [".zarr", ".nxs"])
def test_what_is_written_is_readable_at_once_and_after_a_kill_and_gone_after_an_interrupt(run, tmp_path, extension, ending):
    dump, temperature, _, _ = run
    out = tmp_path / ("out" + extension)
    writer = subprocess.Popen([TOOL, "convert", "-", *CAMERA, "--scale", "K", "-o", out], stdin=subprocess.PIPE)
    size = dump.stat().st_size // 70
    writer.stdin.write(dump.read_bytes()[: 40 * size])
    writer.stdin.flush()
    part = tmp_path / (out.name + ".part")
    for _ in range(500):  # while it writes
        if part.exists() and len(frames_of(part)) >= 38:
            break
        time.sleep(0.02)
    writer.send_signal(ending)
    assert writer.wait() == -ending and not out.exists()
    if ending == signal.SIGINT:
        assert not list(tmp_path.iterdir())
        return
    stored = frames_of(part)
    assert len(stored) >= 38 and np.array_equal(stored, temperature[: len(stored)])


@pytest.mark.parametrize("extension", [".zarr", ".nxs"])
def test_nothing_is_replaced_unasked(run, tmp_path, extension):
    dump = run[0]
    out = convert(dump, tmp_path / ("out" + extension), "--frames", "0-2")
    again = [TOOL, "convert", dump, *CAMERA, "-o", out]
    assert subprocess.run(again, capture_output=True).returncode == 4
    assert subprocess.run([*again, "--overwrite"], capture_output=True).returncode == 0
    assert sorted(path.name for path in tmp_path.iterdir()) == [out.name]
