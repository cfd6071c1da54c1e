"""The catalogue of models."""

from dataclasses import dataclass
from typing import Iterator

from . import _native
from ._encode import KlovError


@dataclass(frozen=True)
class Model:
    """One model: its names, its class word for the commands, its printable width in dots.

    >>> find_model("QX-100")
    Model(name='QX-100', identity='Acme QX-100', manufacturer='Acme', printer_class=513, width=576)
    """

    name: str
    identity: str
    manufacturer: str
    printer_class: int
    width: int

    @property
    def takes_commands(self) -> bool:
        """Whether the printer knows the ESC/POS-type commands of this library."""
        return self.printer_class & 1 == 1


def _model(row: _native.ModelBrief) -> Model:
    return Model(row.model_name.decode(), row.identity.decode(), row.manufacturer.decode(), row.type, row.width)


def models() -> Iterator[Model]:
    """Every model of the catalogue.

    >>> sum(model.manufacturer == "Acme" for model in models())
    2
    """
    for index in range(_native.klov_model_count()):
        yield _model(_native.klov_model_at(index).contents)


def find_model(name: str) -> Model:
    """The model with this name, or a KlovError.

    >>> find_model("no such model")
    Traceback (most recent call last):
    ...
    klov._encode.KlovError: Unable to identify the printer model. Please correct the printer model. (-8)
    """
    row = _native.klov_printer_model_brief_find_by_name(name.encode())
    if not row:
        raise KlovError(-8)
    return _model(row.contents)


def library_version() -> str:
    """The version of the library that is loaded.

    >>> library_version().count(".")
    2
    """
    return str(_native.klov_version().decode())
