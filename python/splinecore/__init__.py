"""Bit-exact spline figures: build, edit, measure and plot them.

Figure wraps the C++ library's Figure. Every array it returns is float32
and holds the library's bits unchanged. Points are addressed as
(spline, index), the spline by its index or its name.
"""
from ._core import Figure, FigureError
from ._plot import plot as _plot

Figure.plot = _plot

__all__ = ["Figure", "FigureError"]
