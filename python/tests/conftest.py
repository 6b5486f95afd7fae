"""Codecs are there in every test; hypothesis is short enough for every run."""
import hypothesis
import ksv
import pytest

hypothesis.settings.register_profile("ksv", max_examples=60, deadline=None)
hypothesis.settings.load_profile("ksv")


@pytest.fixture(autouse=True, scope="session")
def codecs_of_ksv():
    ksv.register_codecs()
