"""The same bits as the tool's, for every family, unit and scale; and numbers against formulas."""

import numpy as np
import pytest
from conftest import PLAIN, SIZE, Form, tool

import ovix


def converted(tmp_path, dump, form, *options):
    out = tmp_path / "out.npy"
    tool("convert", dump, "--pixel-type", form.pixel_type, "--size", SIZE, *options, "--overwrite", "-o", out)
    return np.load(out), np.load(tmp_path / "out.status.npy")


def same_bits(a, b):
    return a.dtype == b.dtype and a.shape == b.shape and a.tobytes() == b.tobytes()


def test_every_unit_and_scale_of_every_family_is_that_of_the_tool(tmp_path, form: Form):
    dump = form.make(tmp_path / "dump.raw")
    with ovix.open(dump, **form.how) as rec:
        for quantity in {unit.split(" ")[0] for unit in rec.units}:
            for scale in "CFKR" if quantity == "temperature" else "C":
                scaled = ("--scale", scale) if quantity == "temperature" else ()
                values, status = converted(tmp_path, dump, form, "--unit", quantity, *scaled)
                flags = np.empty(rec.shape[:3], np.uint8)
                assert same_bits(rec.measure(quantity, scale, status=flags), values), (quantity, scale)
                assert same_bits(flags, status)
                one = rec[1].measure(quantity, scale)
                assert same_bits(one.values, values[1]) and same_bits(one.status, status[1])
                frames = [frame.values for frame in rec.frames(quantity, scale, threads=2)]
                assert same_bits(np.array(frames), values)
                if quantity == "temperature":
                    out = np.empty_like(values[0])
                    assert rec[2].temperature(scale, out=out) is out and same_bits(out, values[2])
                if quantity == "counts":
                    assert rec.dtype == np.uint16 and np.array_equal(rec.counts, values)
                    assert np.array_equal(rec[2].counts, values[2])


def test_scene_and_correction_go_into_the_values(tmp_path):
    dump = PLAIN.make(tmp_path / "dump.raw", 2, "--tables", tmp_path / "nuc")
    scene = ("--emissivity", "0.7", "--reflected-temp", "20C", "--correction", tmp_path / "nuc")
    values, _ = converted(tmp_path, dump, PLAIN, *scene)
    given = {"emissivity": 0.7, "reflected_temp": 293.15, "correction": tmp_path / "nuc"}
    with ovix.open(dump, **PLAIN.how, **given) as rec:
        assert same_bits(rec.temperature(), values)
        assert rec[0].parameters["emissivity"] == ovix.Parameter("emissivity", "emissivity", "", 0.7, "caller")
        assert rec[0].parameters["reflected-temp"].unit == "K"
        assert not np.array_equal(rec[0].counts, rec[0].measure("counts").values), "one is as recorded"


@pytest.mark.parametrize("order", ["<u2", ">u2"])
def test_plain_counts_are_the_bytes_of_the_file(tmp_path, order):
    counts = (np.arange(5 * 4 * 6).reshape(5, 4, 6) * 7).astype(order)
    counts.tofile(tmp_path / "counts.raw")
    with ovix.open(tmp_path / "counts.raw", "counts" if order == "<u2" else "counts-be", (6, 4)) as rec:
        assert len(rec) == 5 and rec.shape == (5, 4, 6) and rec.units == ["counts"]
        assert np.array_equal(rec.counts, counts) and np.array_equal(rec.map(), counts)
        assert np.array_equal(rec[-2:0:-2].counts, counts[-2:0:-2])
        assert np.array_equal(rec[3:], counts[3:]) and np.array_equal(np.asarray(rec[1], float), counts[1])
        assert rec[0].time is None and rec[0].preset is None and np.all(np.isnat(rec.time))
        series = rec[1:].series(roi={"all": (0, 0, 6, 4), "part": (1, 2, 3, 2)}, threads=2)
        part = counts[1:, 2:4, 1:4].astype(float)
        assert np.array_equal(series.frame, [1, 2, 3, 4])
        assert np.allclose(series.regions["part"].mean, part.mean((1, 2)), rtol=1e-14)
        assert np.allclose(series.regions["part"].std, part.std((1, 2)), rtol=1e-9)
        assert np.array_equal(series.max, counts[1:].max((1, 2))) and np.all(series.regions["part"].count == 6)
        with pytest.raises(ValueError, match="can give"):
            rec[0].temperature()


def test_a_user_calibration_is_its_polynomial_and_comes_back_from_its_file(tmp_path):
    (np.arange(12, dtype="<u2") * 1000).tofile(tmp_path / "counts.raw")
    calibration = ovix.Calibration()
    calibration.band = (3, 5)
    calibration.set_preset(0, {"order": 1, "coefficients": [1e-4, 1e-6]})
    calibration.save(tmp_path / "cal.json")
    assert ovix.Calibration.load(tmp_path / "cal.json") == calibration
    with ovix.open(tmp_path / "counts.raw", "counts", (4, 3), user_calibration=tmp_path / "cal.json") as rec:
        assert np.allclose(rec[0].radiance().ravel(), 1e-4 + 1e-6 * 1000 * np.arange(12), rtol=1e-6)
    (tmp_path / "cal.json").write_text('{"schema": 1, "kind": "user calibration"}')
    with pytest.raises(ValueError, match="cal.json"):
        ovix.Calibration.load(tmp_path / "cal.json")


def planck(celsius: float, low: float, high: float) -> float:
    """Radiance of a black body in the band, W/(cm² sr), by the trapezoidal rule over Planck's law."""
    wave = np.linspace(low, high, 4001) * 1e-6
    h, c, k = 6.62607015e-34, 299792458.0, 1.380649e-23
    spectral = 2 * h * c**2 / wave**5 / np.expm1(h * c / (wave * k * (celsius + 273.15)))
    return float(np.trapz(spectral, wave)) * 1e-4


def test_a_calibration_is_fitted_to_black_bodies_and_gives_their_temperatures_back(tmp_path):
    bodies = [20.0, 40.0, 60.0, 80.0, 100.0]
    counts = [round(planck(celsius, 8, 12) * 1e6) for celsius in bodies]
    fit = ovix.calibrate(zip(counts, bodies), band=(8, 12))
    assert fit.presets[0].steady and fit.presets[0].largest < 0.05
    np.array(counts, "<u2").tofile(tmp_path / "counts.raw")
    with ovix.open(tmp_path / "counts.raw", "counts", (5, 1), user_calibration=fit.calibration) as rec:
        assert np.allclose(rec[0].temperature()[0], bodies, atol=0.1)
        assert np.allclose(rec[0].temperature("K")[0], np.add(bodies, 273.15), atol=0.1)


def test_what_a_frame_says_and_what_is_masked(recording):
    with ovix.open(recording) as rec:
        start = np.datetime64("2026-01-15T12:00:00", "ns")
        assert np.array_equal(rec.time, start + np.arange(8) * np.timedelta64(20, "ms"))
        assert rec[3].time == rec.time[3] and rec[3].counter == 3
        assert rec.info.frames == 8 and rec.info.camera == "K410" and rec.info.decoder == "K410"
        measured = rec[2].measure("temperature", "K")
        assert measured.unit == "K" and measured.quantity == "temperature (factory)" and measured.time == rec[2].time
        bad = (measured.status & ~np.uint8(1)) != 0
        assert np.array_equal(measured.masked().mask, np.broadcast_to(bad, bad.shape)) or not bad.any()
        assert np.array_equal(measured.masked(flags=0).data, measured.values)
        assert np.array_equal(np.from_dlpack(rec[0].temperature()), rec[0].temperature())
        steps = ovix.explain(rec, 2, 10, 20).steps
        assert steps[0].value == rec[2].counts[20, 10] and steps[-1].value == rec[2].temperature()[20, 10]
        assert steps[-1].unit == "°C"
