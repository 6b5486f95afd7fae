"""Spark with executors that are processes of their own, and a task that dies."""
import os
import signal
from pathlib import Path

import corpus
import ksv.spark
import pyarrow.parquet
import pytest
from ksv.files import Job
from pyspark.sql import SparkSession


@pytest.fixture(scope="module")
def spark(tmp_path_factory):
    session = (SparkSession.builder.master("local-cluster[2,1,1024]").appName("ksv")
               .config("spark.ui.enabled", "false").config("spark.executor.memory", "1g")
               .config("spark.driver.host", "127.0.0.1").config("spark.driver.bindAddress", "127.0.0.1")
               .config("spark.sql.warehouse.dir", str(tmp_path_factory.mktemp("warehouse")))
               .config("spark.sql.execution.arrow.maxRecordsPerBatch", "500").getOrCreate())
    yield session
    session.stop()


def dying_once(convert, marker):
    """The function of a task that is killed behind its first batch, when it runs for the first time."""
    def run(batches):
        from pyspark import TaskContext
        for batch in convert(batches):
            yield batch
            if TaskContext.get().partitionId() == 1:
                try:
                    os.close(os.open(marker, os.O_CREAT | os.O_EXCL))
                except FileExistsError:
                    continue
                os.kill(os.getpid(), signal.SIGKILL)
    return run


def not_empty(files):
    """Spark's binaryFile leaves empty files out."""
    return [path for path in files if Path(path).stat().st_size]


def records_of(folder):
    return pyarrow.parquet.read_table(folder).to_pylist()


def binary_files(spark, files):
    return (spark.read.format("binaryFile").load(str(Path(files[0]).parent)).select("path", "content")
            .selectExpr("substring(path, 6) as path", "content"))  # behind "file:"


def test_nothing_is_lost_and_nothing_is_there_twice_when_a_task_dies(spark, files, command, tmp_path):
    marker = str(tmp_path / "died")
    function = dying_once(ksv.spark.in_arrow(Job()), marker)
    rows = binary_files(spark, files).repartition(8)
    rows.mapInArrow(function, ksv.spark.SCHEMA).write.parquet(str(tmp_path / "results"))
    assert os.path.exists(marker)
    records = records_of(tmp_path / "results")
    assert sorted(record["path"] for record in records) == not_empty(files)
    assert corpus.differences(records, command) == []


def test_pandas_gives_the_same(spark, files, command, tmp_path):
    rows = binary_files(spark, files).limit(2000)
    rows.mapInPandas(ksv.spark.in_pandas(Job()), ksv.spark.SCHEMA).write.parquet(str(tmp_path / "results"))
    records = records_of(tmp_path / "results")
    assert len(records) == min(2000, len(not_empty(files))) and corpus.differences(records, command) == []


def test_columns_become_strings(spark):
    values = [("草枕".encode("cp932"),), (b"\x82\xff",), (None,)]
    rows = spark.createDataFrame(values, "content binary")
    found = rows.mapInArrow(ksv.spark.texts("shift_jis"), "content string").collect()
    assert sorted(row.content or "" for row in found) == ["", "", "草枕"]
