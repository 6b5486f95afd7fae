"""Columns of Arrow."""
import gc

import ksv
import pytest
from hypothesis import given
from hypothesis import strategies as st
from texts import JAPANESE

pa = pytest.importorskip("pyarrow")
from ksv import arrow  # noqa: E402
from ksv.files import FIELDS, Job  # noqa: E402

VALUES = [JAPANESE.encode("cp932"), None, b"", "草枕".encode("cp932"), b"abc"]
WANT = [JAPANESE, None, "", "草枕", "abc"]


@pytest.mark.parametrize("kind, text", [(pa.binary(), pa.string()), (pa.large_binary(), pa.large_string())])
def test_binaries_become_strings_of_the_same_width(kind, text):
    found = arrow.convert(pa.array(VALUES, kind), "cp932")
    found.validate(full=True)
    assert found.type == text and found.to_pylist() == WANT and found.null_count == 1


def test_other_targets_give_binaries():
    found = arrow.convert(pa.array(WANT), "utf-8", "cp932")
    assert found.type == pa.binary() and found.to_pylist() == VALUES


@pytest.mark.parametrize("begin", range(6))
def test_slices_are_converted_as_they_are(begin):
    found = arrow.convert(pa.array(VALUES)[begin:], "cp932")
    found.validate(full=True)
    assert found.to_pylist() == WANT[begin:]


def test_chunks_stay_chunks():
    column = pa.chunked_array([pa.array(VALUES), pa.array(VALUES)[2:], pa.array([], pa.binary())])
    found = arrow.convert(column, "cp932")
    assert found.num_chunks == 3 and found.to_pylist() == WANT + WANT[2:]
    assert arrow.convert(pa.chunked_array([], pa.binary()), "cp932").type == pa.string()


def test_columns_of_nothing_are_converted():
    for values in ([], [None], [b""], [None, b"", None]):
        found = arrow.convert(pa.array(values, pa.binary()), "cp932")
        found.validate(full=True)
        assert found.to_pylist() == [None if value is None else "" for value in values]


def test_a_value_that_cannot_be_converted_is_told_with_its_row():
    column = pa.chunked_array([pa.array([b"a", b"b"]), pa.array([b"c", b"d\x82\xff"])])
    with pytest.raises(arrow.RowError) as told:
        arrow.convert(column, "shift_jis")
    assert (told.value.row, told.value.offset, told.value.result) == (3, 1, "KSV_INVALID")


def test_or_it_becomes_null():
    found = arrow.convert(pa.array([b"a", b"d\x82\xff", b"c"]), "shift_jis", on_error="null")
    found.validate(full=True)
    assert found.to_pylist() == ["a", None, "c"] and found.null_count == 1


def test_replacements_grow_the_column():
    found = arrow.convert(pa.array([b"\xff" * 3000, b"a"]), "cp932", invalid="replace", invalid_text="a longer text")
    assert found.to_pylist() == ["a longer text" * 3000, "a"]


def test_what_is_no_column_of_binaries_is_refused():
    with pytest.raises(TypeError):
        arrow.convert(pa.array([1, 2]), "cp932")
    with pytest.raises(ValueError):
        arrow.convert(pa.array(VALUES), "cp932", on_error="perhaps")
    with pytest.raises(ValueError):
        arrow.convert(pa.array(VALUES), "cp932", invalid=lambda problem: "")
    with pytest.raises(ksv.UnknownCharset):
        arrow.convert(pa.array(VALUES), "nobody's")


def test_a_column_lives_as_long_as_what_is_made_of_it():
    found = arrow.convert(pa.array(VALUES * 1000), "cp932")[1:4]
    gc.collect()
    assert found.to_pylist() == WANT[1:4]


@given(st.lists(st.one_of(st.none(), st.binary(max_size=12)), max_size=70), st.integers(0, 70))
def test_a_column_is_converted_as_its_values_are(values, begin):
    def each(value):
        try:
            return None if value is None else ksv.convert(value, "euc-jp", "utf-8").decode()
        except ksv.TextError:
            return None
    found = arrow.convert(pa.array(values, pa.binary())[begin:], "euc-jp", on_error="null")
    found.validate(full=True)
    assert found.to_pylist() == [each(value) for value in values[begin:]]


def test_jobs_run_on_batches():
    batch = pa.record_batch({"path": ["a", "b", "c"], "content": [JAPANESE.encode("euc-jp"), b"", None]})
    found = arrow.run_batch(Job(), batch)
    found.validate(full=True)
    assert found.schema == arrow.SCHEMA and found.schema.names == list(FIELDS)
    assert found.column("status").to_pylist() == ["converted", "empty", "empty"]
    assert found.column("text")[0].as_py() == JAPANESE.encode()
