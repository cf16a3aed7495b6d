"""Reads a figure file, prints each spline's length and segment count, and
saves a picture of the figure.

    /usr/bin/python3 examples/python/measure.py [figure.json] [picture.png]

Defaults: examples/figures/patch.json and build/demo/measure.png. Uses the
installed splinecore module, or the one `make demo` built in build/default.
"""
import os
import sys

here = os.path.dirname(os.path.abspath(__file__))
root = os.path.normpath(os.path.join(here, "..", ".."))
try:
    import splinecore
except ImportError:
    sys.path.insert(0, os.path.join(root, "build", "default", "python"))
    import splinecore

import matplotlib

matplotlib.use("Agg")


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "examples", "figures", "patch.json")
    out = sys.argv[2] if len(sys.argv) > 2 else os.path.join(root, "build", "demo", "measure.png")
    figure = splinecore.Figure.read(path)
    print(f"{'spline':<10} {'segments':>8} {'length':>12}")
    for s in range(figure.spline_count):
        name = figure.spline_name(s) or str(s)
        print(f"{name:<10} {len(figure.segment_lengths(s)):>8} {figure.length(s):>12.6f}")
    ax = figure.plot()
    ax.set_title(os.path.basename(path))
    os.makedirs(os.path.dirname(out), exist_ok=True)
    ax.figure.savefig(out, dpi=120)
    print(f"wrote {out}")


if __name__ == "__main__":
    main()
