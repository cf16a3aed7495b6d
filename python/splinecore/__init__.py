# SPDX-License-Identifier: MIT
"""Bit-exact spline figures: build, edit, measure and plot them.

Figure wraps the C++ library's Figure. Every array it returns is float32
and holds the library's bits unchanged. Points are addressed as
(spline, index), the spline by its index or its name.
"""
from ._core import Figure, FigureError
from ._plot import plot as _plot


def _read(path):
    """A figure from the figure file at `path`."""
    with open(path, encoding="utf-8") as f:
        return Figure.from_json(f.read())


def _write(self, path):
    """Writes the figure to `path` as a figure file."""
    with open(path, "w", encoding="utf-8") as f:
        f.write(self.to_json())


Figure.read = staticmethod(_read)
Figure.write = _write
Figure.plot = _plot

__all__ = ["Figure", "FigureError"]
