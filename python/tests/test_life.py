"""Files, errors, threads and processes: what outlives what, and what stands in nobody's way."""

import multiprocessing
import os
import pickle
import subprocess
import sys
import threading
from concurrent.futures import ProcessPoolExecutor, ThreadPoolExecutor

import numpy as np
import pytest
from conftest import COMPRESSED, FORMS, GIGE, HEIGHT, PLAIN, WIDTH, run

import ovix


def test_arrays_live_on_and_everything_else_ends_with_the_file(recording):
    with ovix.open(recording) as rec:
        view, frame, series = rec[2:4], rec[1], rec.frames()
        counts, celsius, first = frame.counts, view.temperature(), next(series)
    counts[0, 0] = 1
    celsius += 1
    first.values[:] = 0
    assert first.number == 0 and first.time is not None and len(view) == 2
    for use in (lambda: frame.counts, lambda: view.temperature(), lambda: rec.info, lambda: rec.series()):
        with pytest.raises(ValueError, match="closed"):
            use()
    assert "closed" in repr(rec)


def test_what_cannot_be_done_is_said_with_its_place(tmp_path, recording):
    with pytest.raises(FileNotFoundError) as missing:
        ovix.open(tmp_path / "none.krt")
    assert missing.value.filename == str(tmp_path / "none.krt")
    whole = recording.read_bytes()
    (tmp_path / "cut.krt").write_bytes(whole[:-100])
    rec = ovix.open(tmp_path / "cut.krt")
    assert len(rec) == 7 and any(finding.weight == "damage" and finding.frame == 7 for finding in rec.findings)
    with pytest.raises(IndexError, match="expected one of 7"):
        rec[7]
    os.truncate(tmp_path / "cut.krt", len(whole) // 2)
    with pytest.raises(ovix.FormatError) as changed:
        rec.temperature()
    error = pickle.loads(pickle.dumps(changed.value))
    assert error.kind == "FileChanged" and error.file == str(tmp_path / "cut.krt") and error.frame is not None
    assert "bytes" in error.expected and "end of the file" in error.found and str(error) == str(changed.value)
    with pytest.raises(ValueError, match=r"out: expected .*float32.*\(48, 64\)"):
        rec[0].temperature(out=np.empty((HEIGHT, WIDTH)))
    for wrong in ({"scale": "X"}, {"quantity": "warmth"}):
        with pytest.raises(ValueError, match="expected one of"):
            rec[0].measure(**wrong)
    with pytest.raises(ValueError, match="within the frame|pixels of a frame"):
        ovix.open(recording).series(roi=(60, 0, 10, 10))
    with pytest.raises(FileExistsError):
        ovix.record(recording, tmp_path / "cut.krt")


def test_recordings_are_written_checked_and_brought_back(tmp_path, recording):
    with ovix.open(recording) as rec:
        assert ovix.record(rec[2:6:2], tmp_path / "part.krt") == 2
        with ovix.open(tmp_path / "part.krt") as part:
            assert np.array_equal(part.counts, rec[2:6:2].counts)
    assert ovix.verify(tmp_path / "part.krt") == ovix.Verdict(True, [])
    broken = bytearray(recording.read_bytes()[:-100])
    (tmp_path / "broken.krt").write_bytes(broken)
    verdict = ovix.verify(tmp_path / "broken.krt")
    assert not verdict.good and verdict.findings[0].what
    assert ovix.repair(tmp_path / "broken.krt", tmp_path / "good.krt").frames == 7
    assert ovix.verify(tmp_path / "good.krt").good
    dump = PLAIN.make(tmp_path / "dump.raw")
    assert ovix.record(dump, tmp_path / "told.krt", **PLAIN.how, emissivity=0.5) == 3
    assert ovix.open(tmp_path / "told.krt")[0].parameters["emissivity"].origin == "file"


def temperatures(rec):
    return rec.temperature()


@pytest.fixture(scope="module")
def compressed(tmp_path_factory):
    return COMPRESSED.make(tmp_path_factory.mktemp("compressed") / "dump.raw", 6)


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_processes_measure_what_is_sent_to_them(compressed, method):
    rec = ovix.open(compressed, **COMPRESSED.how)
    expected = rec.temperature()  # threads and helpers of the parent were there before
    parts = [rec[i : i + 2] for i in range(0, 6, 2)]
    assert isinstance(pickle.loads(pickle.dumps(rec[3])), ovix.Frame)
    with ProcessPoolExecutor(2, multiprocessing.get_context(method)) as pool:
        assert np.array_equal(np.concatenate(list(pool.map(temperatures, parts))), expected)


def test_threads_share_one_recording(compressed):
    rec = ovix.open(compressed, **COMPRESSED.how)
    expected = rec.temperature(threads=1)
    with ThreadPoolExecutor(4) as pool:
        for i, values in enumerate(pool.map(lambda i: rec[i % 6].temperature(), range(60))):
            assert np.array_equal(values, expected[i % 6])


def test_other_threads_of_the_interpreter_run_meanwhile(tmp_path):
    dump = PLAIN.make(tmp_path / "dump.raw", 400)
    rec = ovix.open(dump, **PLAIN.how)
    out = np.empty(rec.shape, np.float32)
    seen, done = threading.Event(), threading.Event()

    def look():
        while not done.wait(0.0002):
            if out[0, 0, 0] != -1 and out[-1, -1, -1] == -1:
                seen.set()

    watcher = threading.Thread(target=look)
    watcher.start()
    for _ in range(200):
        out[-1, -1, -1] = out[0, 0, 0] = -1
        rec.temperature(out=out, threads=1)
        if seen.is_set():
            break
    done.set()
    watcher.join()
    assert seen.is_set(), "not once between the first pixel and the last"


SIGNAL = """
import os, signal, sys, threading, ovix
def soon(): threading.Timer(.3, os.kill, (os.getpid(), signal.SIGINT)).start()
try:
    {what}
except KeyboardInterrupt:
    sys.exit(7)
"""
READ = f"rec = ovix.open(sys.argv[1], {GIGE!r}, ({WIDTH}, {HEIGHT})); soon()\n    "


@pytest.mark.parametrize(
    "what",
    [
        READ + "while True: rec.temperature()",
        READ + "while True: rec.series()",
        READ + "while True:\n        for frame in rec.frames(): pass",
        "r, w = os.pipe(); os.write(w, open(sys.argv[1], 'rb').read(30000)); "
        f"rec = ovix.open(r, {GIGE!r}, ({WIDTH}, {HEIGHT})); soon(); list(rec.frames())",
        f"r, w = os.pipe(); soon(); ovix.open(r, {GIGE!r}, ({WIDTH}, {HEIGHT}))",
        f"os.mkfifo(sys.argv[1] + '.fifo'); soon(); ovix.open(sys.argv[1] + '.fifo', {GIGE!r}, ({WIDTH}, {HEIGHT}))",
    ],
)
def test_an_interrupt_ends_what_works(tmp_path, what):
    dump = PLAIN.make(tmp_path / "dump.raw", 100)
    assert subprocess.run([sys.executable, "-c", SIGNAL.format(what=what), dump], capture_output=True).returncode == 7


def test_a_pipe_gives_its_frames_as_they_come(tmp_path):
    dump = PLAIN.make(tmp_path / "dump.raw", 5)
    expected = ovix.open(dump, **PLAIN.how).temperature()
    reader, writer = os.pipe()
    feeding = threading.Thread(target=lambda: (os.write(writer, dump.read_bytes()), os.close(writer)))
    feeding.start()
    rec = ovix.open(reader, **PLAIN.how)
    with pytest.raises(TypeError, match="stream"):
        len(rec)
    with pytest.raises(TypeError):
        pickle.dumps(rec)
    assert np.array_equal([frame.values for frame in rec.frames()], expected)
    feeding.join()
    os.close(reader)


def test_damaged_frames_are_skipped_or_filled(tmp_path):
    dump = COMPRESSED.make(tmp_path / "dump.raw", 3)
    bytes_ = bytearray(dump.read_bytes())
    size = len(bytes_) // 3
    bytes_[size + 60 : size + 90] = bytes(30)
    dump.write_bytes(bytes_)
    rec = ovix.open(dump, **COMPRESSED.how)
    with pytest.raises(ovix.FormatError):
        list(rec.frames())
    skipping, filling = rec.frames(on_fault="skip"), rec.frames(on_fault="fill")
    assert [frame.number for frame in skipping] != [0, 1, 2] and skipping.fault_count >= 1
    frames = list(filling)
    bad = skipping.faults[0][0]
    assert np.all(np.isnan(frames[bad].values)) and np.all(frames[bad].status == ovix.STATUS_FLAGS["no_data"])


MEMORY = """
import resource, sys, ovix
how = {"pixel_type": "counts", "size": (64, 48)}
def walk(frames):
    rec = ovix.open(sys.argv[1], **how)[:frames]
    for frame in rec.frames(): pass
    rec.series(roi=(0, 0, 8, 8))
def archive(files):
    data = ovix.open_archive([sys.argv[1] + str(i) for i in range(files)], **how)
    data.counts.max(("y", "x")).compute(scheduler="sync")
peak = lambda: resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
for what, few, many in ((walk, 500, 10_000), (archive, 70, 700)):
    what(few); before = peak()
    what(many)
    assert peak() - before < 8192, (what, before, peak())
"""


def test_memory_stays_over_ten_thousand_frames_and_ten_times_as_many_recordings(tmp_path):
    np.zeros((10_000, 48, 64), "<u2").tofile(tmp_path / "counts.raw")
    np.zeros((64, 48, 64), "<u2").tofile(tmp_path / "counts.raw0")
    for i in range(1, 700):
        os.link(tmp_path / "counts.raw0", tmp_path / f"counts.raw{i}")
    run(sys.executable, "-c", MEMORY, tmp_path / "counts.raw")


def test_progress_is_shown_to_a_function_and_by_a_bar(recording, capsys):
    told = []
    with ovix.open(recording) as rec:
        rec.series(progress=lambda *now: told.append(now))
        assert [now for now in told if now[0] == 8][-1:] == [(8, 8)] and told == sorted(told)
        frames = rec.frames(progress=lambda *now: told.append(now))
        assert (next(frames).number, told[-1]) == (0, (1, 8))
        pytest.importorskip("tqdm")
        rec[:6].series(progress=True)
        list(rec[:7].frames(progress=True))
    shown = capsys.readouterr().err
    assert "6/6" in shown and "7/7" in shown


def test_pixels_are_mapped_where_they_are_plain(tmp_path):
    mapped = 0
    for number, form in enumerate(FORMS):
        rec = ovix.open(form.make(tmp_path / f"{number}.raw"), **form.how)
        try:
            assert np.array_equal(rec[1:].map(), rec[1:].counts), form
            mapped += 1
        except ValueError as error:
            assert "mapped" in str(error)
    assert mapped > len(FORMS) // 2
