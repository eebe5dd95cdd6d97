"""Edges and fits, the optional libraries: that their types arrive as arrays and records."""

import numpy as np
import pytest

import ky


def test_edges_lines_and_circles():
    picture = np.full((60, 80), 40, np.uint8)
    picture[:, 40:] = 200
    profile = ky.sample_segment(picture, 10, 30, 70, 30, 61, 2)
    assert profile.dtype == np.float32 and profile.shape == (61,)
    edges = ky.find_edges(ky.smooth(profile, 1), ky.TRANS_SCAN_RISING, 5)
    assert edges["position"] == pytest.approx(29.5, abs=0.05) and edges["strength"] > 0
    points = ky.find_edge_points(picture, 39.5, 5, 39.5, 55, 10, 20, 2, 1, ky.TRANS_SCAN_BOTH, 5)
    assert len(points) == 20 and points["caliper"].tolist() == list(range(20))
    line = ky.fit_line(points, 0)
    assert isinstance(line, ky.Line) and line.used == 20
    assert abs(ky.distance(line, 39.5, 10)) < 0.1
    # Positions of any numbers are points too.
    angles = np.linspace(0, 6, 30)
    circle = ky.fit_circle(np.stack([7 + 5 * np.cos(angles), 9 + 5 * np.sin(angles)], 1), 0)
    assert (circle.x, circle.y, circle.radius) == pytest.approx((7, 9, 5), abs=1e-5)
    other = ky.fit_line(np.array([[0, 20], [10, 20], [30, 20]]), 0)
    assert ky.intersect(line, other) == pytest.approx((39.5, 20), abs=0.1)
    assert abs(ky.angle_between(line, other)) == pytest.approx(90, abs=0.2)
    with pytest.raises(ky.Error) as failure:
        ky.intersect(other, other)
    assert failure.value.code == ky.ERROR_SINGULAR_SYSTEM


def test_frequency(grey):
    frequency = pytest.importorskip("ky.frequency")
    spectrum = frequency.slow_dft(grey)
    assert spectrum.dtype == np.complex64
    np.testing.assert_allclose(spectrum, np.fft.fft2(grey), atol=0.5)
    back = frequency.slow_dft(spectrum, frequency.DFT_INVERSE)
    np.testing.assert_array_equal(frequency.complex_real(back), grey)
    energies = frequency.complex_disc_energy(spectrum)
    assert energies.dtype == np.float32
    assert energies[-1] == pytest.approx(float((np.abs(spectrum) ** 2).sum()), rel=1e-4)
    square = frequency.fast_dft(grey[:32, :32])
    product = frequency.complex_multiply(square, square, True)
    np.testing.assert_allclose(product.real, np.abs(square) ** 2, rtol=1e-4)
    with pytest.raises(TypeError, match="complex64"):
        frequency.complex_modulus(spectrum.astype(np.complex128))


def test_drawing(parts):
    drawing = pytest.importorskip("ky.drawing")
    cairo = pytest.importorskip("cairo")
    surface = cairo.ImageSurface(cairo.FORMAT_RGB24, 50, 40)
    context = cairo.Context(surface)
    drawing.draw(context, parts, 0, 0)
    pixels = np.ndarray((40, 50, 4), np.uint8, surface.get_data(), strides=(surface.get_stride(), 4, 1))
    np.testing.assert_array_equal(pixels[:, :, 1], parts)
    path = ky.contour(parts, ky.CONTOUR_CW_ALONG_BORDER, 8, 5, ky.CONTOUR_ABOVE_THRESHOLD, 50,
                      ky.CONNEXITY_8)
    context.set_source_rgb(1, 0, 0)
    drawing.draw(context, path)
    assert (pixels[:, :, 2] > pixels[:, :, 1]).sum() >= 70
    drawing.draw(context, ky.histogram(parts), 40.0, 30.0)
    with pytest.raises(TypeError, match="context must be a cairo.Context, not ImageSurface"):
        drawing.draw(surface, parts, 0, 0)
