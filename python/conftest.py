"""The names that the examples in the documentation use."""

import numpy as np
import pytest

import zepbmp


@pytest.fixture(autouse=True)
def example_names(doctest_namespace: dict[str, object]) -> None:
    doctest_namespace["np"] = np
    doctest_namespace["zepbmp"] = zepbmp
