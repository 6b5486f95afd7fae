"""One corpus for all engines."""
import corpus
import pytest


@pytest.fixture(scope="session")
def files(tmp_path_factory):
    folder = tmp_path_factory.mktemp("corpus")
    return corpus.make(folder / "files")


@pytest.fixture(scope="session")
def command(files, tmp_path_factory):
    return corpus.answers_of_command(files, tmp_path_factory.mktemp("command"))
