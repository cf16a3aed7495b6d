"""The Python module: its arrays, errors, edits, hooks, muscle mode, SVG
paths and plot. Expected values are derived by hand (straight splines)."""
import math
import os

import numpy as np
import pytest

import splinecore


def straight():
    """An open spline along x: (0,0), (1,0), (4,0); 4 long."""
    f = splinecore.Figure()
    f.add_spline([[0, 0], [1, 0], [4, 0]], name="rail")
    return f


def test_arrays_are_float32_one_row_per_segment_from_next_to_owner():
    f = straight()
    loop = f.add_spline([[0, 1, 0], [1, 2, 0], [2, 1, 0]], closed=True)
    b = f.bezier("rail")
    assert b.dtype == np.float32 and b.shape == (2, 4, 3)
    for k in range(2):
        np.testing.assert_array_equal(b[k, 0], f.position(("rail", k + 1)))
        np.testing.assert_array_equal(b[k, 3], f.position(("rail", k)))
    assert f.bezier(loop, "screen").shape == (3, 4, 3)
    assert f.segment_lengths(loop).shape == (3,)
    assert f.sample(loop, steps=7).shape == (3 * 7 + 1, 3)


def test_a_straight_spline_measures_as_by_hand():
    f = straight()
    assert f.length("rail") == pytest.approx(4, abs=1e-5)
    assert float(f.segment_lengths("rail").sum()) == pytest.approx(4, abs=1e-5)
    lengths = np.array([0, 1, 2.5, 4], dtype=np.float32)
    positions, directions = f.point_at_length("rail", lengths)
    assert positions.shape == directions.shape == (4, 3)
    np.testing.assert_allclose(positions[:, 0], lengths, atol=1e-4)
    assert not positions[:, 1].any() and not directions[:, 1].any()
    one, _ = f.point_at_length("rail", 2.5)
    assert one.tobytes() == positions[2:3].tobytes()
    samples = f.sample("rail", 10)
    # Travel runs from the last point back to the first, exactly at its start.
    assert samples[0].tolist() == [4, 0, 0] and not samples[:, 1].any()
    assert np.all(np.diff(samples[:, 0]) < 0)


def test_bad_arguments_raise_and_change_nothing():
    f = straight()
    before = f.bezier(0, "screen").tobytes()
    with pytest.raises(IndexError):
        f.move((0, 3), (1, 1))
    with pytest.raises(IndexError):
        f.move((2, 0), (1, 1))
    with pytest.raises(ValueError, match="no spline is named"):
        f.move(("post", 0), (1, 1))
    with pytest.raises(ValueError, match="finite"):
        f.move((0, 1), (math.nan, 0))
    with pytest.raises(ValueError, match="space"):
        f.bezier(0, "paper")
    with pytest.raises(ValueError):
        f.add_spline([[0, 0, 0, 0]])
    with pytest.raises(ValueError, match="one flag per point"):
        f.add_spline([[0, 0], [1, 1]], smooth=[True])
    with pytest.raises(ValueError, match="not invertible"):
        f.set_screen(np.zeros((3, 4)))
    with pytest.raises(splinecore.FigureError, match="whose end it places"):
        f.add_hook((0, 2), 0.5, 0)
    assert f.spline_count == 1 and f.point_count(0) == 3
    assert f.bezier(0, "screen").tobytes() == before
    assert f.validate() == []


def test_edits_answer_as_a_figure_built_with_their_result():
    f = straight()
    f.move((0, -2), (1, 1))
    f.set_delta((0, 1), inner=(0, 30, 1))
    f.smooth((0, 1), False)
    g = splinecore.Figure()
    g.add_spline([[0, 0], [1, 1], [4, 0]], smooth=[True, False, True])
    g.set_delta((0, 1), inner=(0, 30, 1))
    for space in ("model", "screen"):
        assert f.bezier(0, space).tobytes() == g.bezier(0, space).tobytes()
    f.reverse(0)
    np.testing.assert_array_equal(f.position((0, 0)), [4, 0, 0])
    f.delete((0, 1))
    assert f.point_count(0) == 2


def test_a_hook_rides_on_its_carriers_segment():
    f = straight()
    h = f.add_spline([[0.5, 2], [3, 2]])
    index = f.add_hook((0, 0), 0.5, h)
    assert index == 2 and f.point_count(h) == 3
    at = f.position((h, index))
    assert at[1] == 0 and 0 < at[0] < 1
    pieces = f.hook_pieces((0, 0))
    assert pieces.shape == (2, 4, 3)
    np.testing.assert_array_equal(pieces[0, 3], pieces[1, 0])
    f.set_hook_s((h, index), 0.25)
    assert f.position((h, index))[0] < at[0]


def test_muscle_offsets_move_points_only_in_muscle_mode():
    f = straight()
    f.add_muscle_offset((0, 1), (0, 2))
    assert f.position((0, 1)).tolist() == [1, 0, 0]
    f.muscle_mode = True
    assert f.muscle_mode and f.position((0, 1)).tolist() == [1, 2, 0]
    assert f.bezier(0, "muscle").shape == (2, 4, 3)
    f.muscle_mode = False
    with pytest.raises(ValueError, match="muscle mode"):
        f.bezier(0, "muscle")


def test_transforms_take_a_3x4_matrix_and_invert_it():
    f = straight()
    screen = np.array([[2, 0, 0, 1], [0, -2, 0, 3], [0, 0, 1, 0]], dtype=np.float32)
    f.set_screen(screen)
    assert f.screen.tobytes() == screen.tobytes()
    np.testing.assert_array_equal(f.position((0, 2), "screen"), [9, 3, 0])
    f.set_view(screen)
    assert f.length(0) == pytest.approx(8, abs=1e-4)


def test_svg_path_starts_where_travel_starts():
    f = straight()
    assert f.svg_path(0, "model").startswith("M 4 0 C ")
    assert f.svg_path(0, "model").count("C") == 2
    loop = f.add_spline([[0, 0], [1, 0], [0, 1]], closed=True)
    assert f.svg_path(loop).endswith(" Z")


def test_plot_draws_every_segment_and_hook_piece_to_a_png():
    f = straight()
    h = f.add_spline([[0.5, 2], [3, 2]])
    f.add_hook((0, 0), 0.5, h)
    ax = f.plot()
    segments = sum(len(f.bezier(s)) for s in range(f.spline_count))
    assert len(ax.patches) == segments + 2
    out = os.path.join(os.environ.get("SPLINECORE_TEST_OUT", "."), "plot.png")
    ax.figure.savefig(out)
    with open(out, "rb") as png:
        assert png.read(8) == b"\x89PNG\r\n\x1a\n"


def test_figure_files_round_trip_and_report_their_line(tmp_path):
    source = os.path.join(os.environ.get("SPLINECORE_SOURCE_DIR", "."), "examples", "figures", "patch.json")
    f = splinecore.Figure.read(source)
    assert f.spline_name(0) == "rail" and f.muscle_mode is False
    path = tmp_path / "copy.json"
    f.write(str(path))
    g = splinecore.Figure.read(str(path))
    assert g.to_json() == f.to_json()
    for s in range(f.spline_count):
        assert g.bezier(s, "screen").tobytes() == f.bezier(s, "screen").tobytes()
    with pytest.raises(ValueError, match=r"^line 3: unknown key 'colour'"):
        splinecore.Figure.from_json('{\n  "splines": [{"points": [{"at": [0, 0]}]}],\n  "colour": 1\n}')


def test_answers_are_the_bits_the_cpp_figure_gives():
    import subprocess

    source = os.path.join(os.environ["SPLINECORE_SOURCE_DIR"], "examples", "figures", "patch.json")
    lines = subprocess.run([os.environ["SPLINECORE_DUMP_FIGURE"], source], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    f = splinecore.Figure.read(source)
    assert len(lines) == f.spline_count
    for s, line in enumerate(lines):
        values = np.concatenate([[f.length(s)], f.bezier(s, "screen").ravel()]).astype(np.float32)
        assert [f"{bits:08x}" for bits in values.view(np.uint32)] == line.split()
