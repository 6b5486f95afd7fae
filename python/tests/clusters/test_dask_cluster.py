"""A Dask cluster of processes whose workers are killed in the middle."""
import json
import os
import signal
import threading
import time
from pathlib import Path

import corpus
import dask
import dask.bag
import dask.dataframe
import ksv.arrow
import ksv.dask
import pandas
import pyarrow.parquet
import pytest
from dask.distributed import Client, LocalCluster
from ksv.files import Job, Row, place_of

KILLED = 3


@pytest.fixture
def cluster():
    dask.config.set({"distributed.scheduler.allowed-failures": 10, "distributed.logging.distributed": "error"})
    with LocalCluster(n_workers=3, threads_per_worker=1, processes=True, dashboard_address=None) as made:
        with Client(made) as client:
            yield client


class Killer(threading.Thread):
    """Kills one worker after the other, as soon as some of the work is done."""

    def __init__(self, client, store):
        super().__init__(daemon=True)
        self._client, self._store, self.killed = client, store, []

    def _done(self):
        return sum(1 for path in self._store.rglob("*") if path.is_file())

    def run(self):
        for number in range(KILLED):
            wanted = corpus.FILES * (number + 1) // (KILLED + 2)
            while self._done() < wanted:
                time.sleep(0.02)
            workers = {pid for pid in self._client.run(os.getpid).values() if pid not in self.killed}
            victim = min(workers)
            os.kill(victim, signal.SIGKILL)
            self.killed.append(victim)


def test_nothing_is_lost_and_nothing_is_there_twice_when_workers_are_killed(cluster, files, command, tmp_path):
    store = tmp_path / "store"
    store.mkdir()
    killer = Killer(cluster, store)
    killer.start()
    job = Job(store=str(store))
    rows = dask.bag.from_sequence([Row(path) for path in files], npartitions=200)
    written = ksv.dask.bag(rows, job).map(ksv.dask.line).to_textfiles(str(tmp_path / "manifest" / "*.ndjson"))
    killer.join(60)
    assert len(killer.killed) == KILLED
    records = [json.loads(line) for path in written for line in Path(path).read_text(encoding="utf-8").splitlines()]
    assert [record["path"] for record in records] == files
    assert corpus.differences(records, command) == []
    stored = {str(path) for path in store.rglob("*") if path.is_file() and not path.name.startswith(".")}
    wanted = {record["output"] for record in records if record["output"]}
    assert stored == wanted == {place_of(job, record["sha256"]) for record in records if record["status"] == "converted"}


def test_data_frames_become_parquet(cluster, files, command, tmp_path):
    part = files[:2000]
    frame = dask.dataframe.from_pandas(pandas.DataFrame({"path": part}), npartitions=8)
    ksv.dask.frame(frame, Job()).to_parquet(str(tmp_path / "results"), write_index=False,
                                             schema=ksv.arrow.SCHEMA)
    records = pyarrow.parquet.read_table(tmp_path / "results").to_pylist()
    assert sorted(record["path"] for record in records) == part
    assert corpus.differences(records, command) == []
