"""What the Python half of the package refuses."""

from __future__ import annotations

from typing import NoReturn

from ._trunnion import InputError


def refuse(name: str, sentence: str) -> NoReturn:
    """Raises an ``InputError`` about an argument."""
    error = InputError(f"{name}: {sentence}")
    error.file = name
    error.line = 0
    error.column = 0
    error.sentence = sentence
    raise error
