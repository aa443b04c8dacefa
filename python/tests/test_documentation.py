"""Every public name is explained by an example that runs, and so does the manual."""

import doctest
import inspect
from pathlib import Path

import numpy as np
import pytest

import zepbmp

MANUAL = Path(__file__).resolve().parents[2] / "docs" / "python.md"


def documented():
    for name in zepbmp.__all__:
        thing = getattr(zepbmp, name)
        if isinstance(thing, int):
            continue
        yield name, thing
        if thing is zepbmp.Bitmap:
            for member, value in vars(thing).items():
                if not member.startswith("_"):
                    if isinstance(value, (property, classmethod)) or inspect.isfunction(value):
                        yield f"{name}.{member}", value


@pytest.mark.parametrize("name, thing", documented(), ids=lambda one: one if isinstance(one, str) else "")
def test_every_public_name_has_an_example(name, thing):
    assert ">>> " in (inspect.getdoc(thing) or ""), name


def test_every_public_parameter_is_typed():
    for name, thing in documented():
        if inspect.isfunction(thing):
            signature = inspect.signature(thing)
            for parameter in signature.parameters.values():
                assert parameter.name == "self" or parameter.annotation is not parameter.empty, (name, parameter)
            assert signature.return_annotation is not signature.empty, name


def test_the_manuals_examples_run():
    failed, attempted = doctest.testfile(str(MANUAL), module_relative=False, globs={"np": np}, verbose=False)
    assert failed == 0 and attempted >= 10
