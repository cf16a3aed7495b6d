# SPDX-License-Identifier: MIT
"""Figure.plot: the figure drawn with matplotlib (imported only here)."""


def plot(figure, ax=None, space="screen"):
    """Draws every spline's Bezier segments, their handle points (grey
    squares) and the pieces hooks cut their carriers' segments into (orange),
    in `space`; returns the axes. Screen space is drawn with y growing
    downward."""
    import matplotlib.pyplot as plt
    from matplotlib.patches import PathPatch
    from matplotlib.path import Path

    if ax is None:
        _, ax = plt.subplots()
    codes = [Path.MOVETO, Path.CURVE4, Path.CURVE4, Path.CURVE4]
    for spline in range(figure.spline_count):
        for segment in figure.bezier(spline, space):
            ax.add_patch(PathPatch(Path(segment[:, :2], codes), fill=False, color="black", linewidth=1.5))
            ax.plot(segment[1:3, 0], segment[1:3, 1], "s", color="grey", markersize=3)
            ax.plot(segment[[0, 3], 0], segment[[0, 3], 1], "o", color="black", markersize=3)
        for index in range(figure.point_count(spline)):
            for piece in figure.hook_pieces((spline, index), space):
                ax.add_patch(PathPatch(Path(piece[:, :2], codes), fill=False, color="orange", linewidth=4, alpha=0.6))
    ax.set_aspect("equal")
    ax.autoscale_view()
    if space == "screen":
        ax.invert_yaxis()  # screen y grows downward, as the demo draws it
    return ax
