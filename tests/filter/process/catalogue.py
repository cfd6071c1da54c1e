"""The printer models, read from the same data file that the program's own table is made from."""

import re
from dataclasses import dataclass
from functools import lru_cache
from pathlib import Path

DATA_FILE = Path(__file__).resolve().parents[3] / "model" / "models.txt"

FAMILIES = DATA_FILE.with_name("family.cpp")


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
        return family_motion().get(self.id, 0.125)


# The row that closes the table can be found like any other.
SENTINEL = Model(0xFFFFFFFF, "unknown", 0xFFFFFFFF, 0)


@lru_cache(maxsize=None)
def family_motion():
    """The vertical motion unit of each family that has properties, out of their table."""
    text = FAMILIES.read_text(encoding="ascii")
    rows = re.findall(r"^ *\{(0x[0-9A-F]+), \{.*?\}, .*?, (0\.\d+)F, \d\},$", text, re.M)
    assert len(rows) >= 28, "the rows of %s are not read as they stand" % FAMILIES
    return {int(family, 0): float(motion) for family, motion in rows}


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
