"""A scheduler and two workers on the loopback address: a sweep over 2,000 frames, one worker killed midway."""

import subprocess
import sys
import time
from threading import Thread

import numpy as np
import pytest
import zelweld

distributed = pytest.importorskip("distributed", reason="SKIPPED: python3-distributed is not installed")

DRAWN = 100
FRAMES = 2000
SHARD = 100


def dask(name, *words):
    command = [sys.executable, "-m", f"distributed.cli.dask_{name}", *words, "--host", "127.0.0.1", "--no-dashboard"]
    return subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


@pytest.fixture()
def cluster(tmp_path):
    where = ["--scheduler-file", str(tmp_path / "scheduler.json")]
    alone = ["--no-nanny", "--nthreads", "1", "--local-directory", str(tmp_path)]
    programs = [dask("scheduler", *where, "--port", "0"), dask("worker", *where, *alone), dask("worker", *where, *alone)]
    try:
        with distributed.Client(scheduler_file=where[1], timeout=60) as client:
            client.wait_for_workers(2, timeout=60)
            yield client, programs[1:]
    finally:
        for each in reversed(programs):
            each.kill()
            each.wait()


@pytest.fixture()
def folder(tmp_path):
    """Small frames that go round, so that it takes no time to write them."""
    pictures = [frame[::2, ::2] for frame, _ in zelweld.simulate("gap", "noisy", 5, DRAWN)]
    files = [b"P5 %d %d 255\n" % frame.shape[::-1] + frame.tobytes() for frame in pictures]
    (tmp_path / "frames").mkdir()
    for n in range(FRAMES):
        (tmp_path / "frames" / f"{n:04}.pgm").write_bytes(files[n % DRAWN])
    return tmp_path / "frames"


def test_a_killed_worker_changes_nothing(cluster, folder, tmp_path):
    client, workers = cluster
    out = tmp_path / "results"
    killed_at = []

    def kill_midway():
        while (done := out.read_bytes().count(b"\n") if out.exists() else 0) < 4 and workers[0].poll() is None:
            time.sleep(0.01)
        workers[0].kill()
        killed_at.append(done)

    killer = Thread(target=kill_midway)
    killer.start()
    how = {"executor": client.get_executor(), "out": out, "shard_frames": SHARD}
    try:
        spread = zelweld.sweep(folder, "gap", "min_gap_px", [4, 8, 30], **how)
    finally:
        workers[0].kill()
        killer.join()
    alone = zelweld.sweep(folder, "gap", "min_gap_px", [4, 8, 30], workers=1)
    assert 4 <= killed_at[0] < FRAMES / SHARD == out.read_bytes().count(b"\n")
    assert len(client.scheduler_info()["workers"]) == 1
    assert spread.rows.tobytes() == alone.rows.tobytes() and np.ptp(spread.rows["found_share"]) > 0.5
    assert (spread.frames, spread.suggestion, spread.good) == (FRAMES, alone.suggestion, alone.good)
