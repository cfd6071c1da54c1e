"""The printer models, read from the same data file that the program's own table is made from."""

from dataclasses import dataclass
from functools import lru_cache
from pathlib import Path

DATA_FILE = Path(__file__).resolve().parents[3] / "model" / "models.txt"

FINE_MOTION = {0x1001, 0x1002, 0x1003, 0x1004, 0x1005, 0x1006, 0x1955, 0x1956}


@dataclass(frozen=True)
class Model:
    id: int
    name: str
    dialect: int
    width: int  # dots

    @property
    def class_word(self):
        return ((self.id & 0xFF) << 16) | self.dialect

    @property
    def motion_v(self):
        return 0.0625 if self.id in FINE_MOTION else 0.125


# The row that closes the table can be found like any other.
SENTINEL = Model(0xFFFFFFFF, "unknown", 0xFFFFFFFF, 0)


@lru_cache(maxsize=None)
def models():
    rows = []
    for line in DATA_FILE.read_text(encoding="ascii").splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        columns = [column.strip() for column in line.split(" | ")]
        rows.append(Model(int(columns[0], 0), columns[2], int(columns[5], 0), int(columns[6])))
    return tuple(rows) + (SENTINEL,)


def find(name):
    """The first model of this name, or None."""
    for model in models():
        if model.name == name:
            return model
    return None
