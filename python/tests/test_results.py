"""What calls return, compared with NumPy."""

import copy
import os
import pickle

import numpy as np
import pytest

import ky


def test_numbers_and_tuples(grey, random):
    deviation, mean = ky.pixel_std_dev(grey)
    assert (deviation, mean) == (pytest.approx(grey.std()), pytest.approx(grey.mean()))
    assert ky.pixel_stat(grey)[:2] == (grey.min(), grey.max())
    color = random.integers(0, 256, (11, 13, 3), np.uint8)
    deviations, means = ky.pixel_std_dev(color)
    np.testing.assert_allclose(means, color.mean((0, 1)), rtol=1e-6)
    np.testing.assert_allclose(deviations, color.std((0, 1)), rtol=1e-5)
    assert ky.pixel_compare(color, color) == 0
    assert ky.pixel_count(grey, 50, 99) == (
        (grey < 50).sum(), ((grey >= 50) & (grey < 100)).sum(), (grey > 99).sum())
    assert ky.gain_offset(color, (1, 2, 0.5), [0, 1, 2]).shape == color.shape
    assert ky.oper(ky.OPER_ADD, color, (1, 2, 3))[0, 0].tolist() == np.minimum(
        color[0, 0].astype(int) + [1, 2, 3], 255).tolist()
    assert ky.oper(ky.OPER_SUBTRACT, 255, grey).tolist() == (255 - grey).tolist()
    product = ky.oper(ky.OPER_MULTIPLY, grey, grey, destination=ky.BW16)
    np.testing.assert_array_equal(product, grey.astype(np.uint16) ** 2)
    assert ky.get_overlay_color() == ky.get_overlay_color()
    ky.set_overlay_color((1, 2, 3))
    assert ky.get_overlay_color() == (1, 2, 3)


def test_units_and_utilities():
    assert ky.to_radians(180) == pytest.approx(np.pi)
    ky.set_angle_unit(ky.ANGLE_REVOLUTIONS)
    assert ky.get_angle_unit() == ky.ANGLE_REVOLUTIONS
    assert ky.from_radians(np.pi) == pytest.approx(0.5)
    assert ky.get_version() == ky.__version__


def test_vectors(grey):
    counts = ky.histogram(grey)
    assert counts.dtype == np.uint32
    np.testing.assert_array_equal(counts, np.bincount(grey.ravel(), minlength=256))
    np.testing.assert_array_equal(ky.lut(grey, ky.setup_equalize(counts)), ky.equalize(grey))
    np.testing.assert_array_equal(ky.project_on_a_row(grey), grey.sum(0))
    np.testing.assert_array_equal(ky.project_on_a_column(grey), grey.sum(1))
    threshold, below, above = ky.histogram_threshold(counts, ky.THRESHOLD_MIN_RESIDUE)
    assert threshold == ky.auto_threshold(grey, ky.THRESHOLD_MIN_RESIDUE)
    assert below == pytest.approx(grey[grey < threshold].mean())
    assert above == pytest.approx(grey[grey >= threshold].mean())
    assert ky.min_residue_threshold(counts)[0] == threshold
    assert ky.analyse_histogram(counts, ky.HISTOGRAM_PIXEL_COUNT, 0, 255) == grey.size
    levels = ky.level_statistics(counts, 0, 255)
    assert levels.count == grey.size and levels.median == np.sort(grey.ravel())[(grey.size - 1) // 2]
    palette = np.arange(768, dtype=np.uint8).reshape(256, 3)
    np.testing.assert_array_equal(ky.lut(grey, palette), palette[grey])
    profile = ky.image_to_line_segment(grey, 0, 5, 52, 5)
    np.testing.assert_array_equal(profile, grey[5])
    np.testing.assert_array_equal(ky.dilate(profile[::2], 1), ky.dilate(profile[::2].copy(), 1))
    assert ky.line_segment_to_image(grey, 9, 0, 0, 36, 36) is grey
    assert (np.diag(grey) == 9).all()
    with pytest.raises(TypeError, match=r"histogram must be an array \(n,\) of uint32"):
        ky.isodata_threshold(counts.astype(np.int64))
    table = ky.set_recursive_average_lut(3)
    state = grey.astype(np.uint16) * 16
    np.testing.assert_array_equal(ky.recursive_average(grey, state, table), grey)


def test_vectors_in_files(tmp_path, parts, grey):
    path = ky.contour(parts, 1, 8, 5, ky.CONTOUR_ABOVE_THRESHOLD, 50, ky.CONNEXITY_8)
    color = np.stack([grey] * 3, 2)
    profile = ky.sample_segment(grey, 0, 5, 52, 5, 53, 0)
    file = tmp_path / "vector.ky"
    for vector in (
            grey[5], grey[5].astype(np.uint16), ky.histogram(grey), color[5], profile, path[::2], path[:0],
            ky.image_to_path(grey, path), ky.image_to_path(color, path),
            ky.get_profile_peaks(grey[5], 100, 150, 1, 1), ky.find_edges(profile, ky.TRANS_SCAN_BOTH, 5),
            ky.find_edge_points(parts, 5, 12, 30, 12, 10, 7, 0, 1, ky.TRANS_SCAN_BOTH, 5),
            ky.find_objects(parts, 50, 255, ky.CONNEXITY_8)):
        assert len(vector) > 0 or vector.shape == (0, 2)
        assert ky.save_vector(vector, file) is None
        loaded = ky.load_vector(str(file))
        assert loaded.dtype == vector.dtype
        np.testing.assert_array_equal(loaded, vector)
    ky.save_vector(grey[5, :3], os.fsencode(file))
    assert file.read_bytes() == bytes([81, 1, 1, 81, 3, 0, 0, 0, *grey[5, :3]])
    ky.save_vector(np.array([[0.5, 2]]), file)
    positions = ky.load_vector(file)
    assert positions.dtype.names == ("x", "y") and positions["x"].tolist() == [0.5]
    file.write_bytes(file.read_bytes()[:-1])
    for name, code in [(file, ky.ERROR_FILE_READ), (__file__, ky.ERROR_FILE_FORMAT),
                       (tmp_path, ky.ERROR_FILE_READ), ("none", ky.ERROR_FILE_OPEN)]:
        with pytest.raises(ky.Error) as failure:
            ky.load_vector(name)
        assert (failure.value.code, failure.value.trace) == (code, ("KyVector::Load",))
    with pytest.raises(ky.Error) as failure:
        ky.save_vector(profile, tmp_path)
    assert (failure.value.code, failure.value.trace) == (ky.ERROR_FILE_OPEN, ("KyVector::Save",))
    with pytest.raises(TypeError, match=r"vector must be .* not an array \(53,\) of float64"):
        ky.save_vector(grey[5] / 2, file)


def test_paths(parts):
    path = ky.contour(parts, ky.CONTOUR_CW_ALONG_BORDER, 8, 5, ky.CONTOUR_ABOVE_THRESHOLD, 50,
                      ky.CONNEXITY_8)
    assert path.shape == (70, 2) and path.dtype.kind == "i" and path.closed
    assert path.min(0).tolist() == [8, 5] and path.max(0).tolist() == [29, 19]
    assert not path[1:].closed
    for copied in (path.copy(), path[::-1], copy.deepcopy(path), pickle.loads(pickle.dumps(path))):
        assert copied.closed and copied.shape == path.shape
    levels = ky.image_to_path(parts, path)
    assert (levels["pixel"] == 200).all() and levels.closed
    np.testing.assert_array_equal(np.stack([levels["x"], levels["y"]], 1), path)
    drawn = np.zeros_like(parts)
    assert ky.path_to_image(drawn, levels) is drawn
    assert (drawn == 200).sum() == 70
    steps = ky.contour(parts, ky.CONTOUR_CW_ALONG_BORDER, 8, 5, ky.CONTOUR_ABOVE_THRESHOLD, 50,
                       ky.CONNEXITY_8, 1)
    assert set(steps["pixel"]) == {0, 2, 4, 6}
    # Lists of places of any integers; those that do not fit are refused.
    assert ky.image_to_path(parts, np.array([[8, 5]]))["pixel"].tolist() == [200]
    with pytest.raises(ValueError, match="path has coordinates"):
        ky.image_to_path(parts, np.array([[70000, 5]]))
    with pytest.raises(TypeError, match="path must be"):
        ky.image_to_path(parts, np.array([[0.5, 5]]))
    with pytest.raises(ky.Error) as failure:
        ky.image_to_path(parts, np.array([[8, 5], [100, 100]]))
    assert failure.value.code == ky.ERROR_PATH_STOPPED
    assert failure.value.result["pixel"].tolist() == [200, 0]


def test_objects(parts):
    labels = np.zeros(parts.shape, np.uint32)
    objects = ky.find_objects(parts, 50, 255, ky.CONNEXITY_4, labels=labels)
    assert objects["area"].tolist() == [(parts[:22] > 0).sum(), 130, 18]
    assert objects["holes"].tolist() == [1, 0, 0]
    assert [(labels == n).sum() for n in objects["label"]] == objects["area"].tolist()
    shape = ky.get_object_shape(objects[2])
    assert (shape.x, shape.y, shape.mean_level) == (5.5, 31, 100)
    large = ky.select_objects(objects, ky.ObjectLimits(min_area=100, max_holes=0))
    assert large["label"].tolist() == [2] and len(objects) == 3
    drawn = ky.draw_objects(labels, large, 9)
    assert (drawn == 9).sum() == 130 and (drawn > 0).sum() == 130
    with pytest.raises(TypeError, match="limits must be a ky.ObjectLimits, not dict"):
        ky.select_objects(objects, {})
    with pytest.raises(TypeError, match=r"points must be an array \(n, 2\) of numbers or a struct"):
        ky.fit_line([(0, 0), (1, 1)], 0)
    with pytest.raises(ValueError, match="min_area must be from 0 to 4294967295, not -1"):
        ky.select_objects(objects, ky.ObjectLimits(min_area=-1))
    with pytest.raises(ky.Error) as failure:
        ky.select_objects(objects, ky.ObjectLimits(min_area=5, max_area=4))
    assert failure.value.code == ky.ERROR_BAD_INTERVAL


def test_generic_vectors(random):
    values = random.integers(-50, 50, 40, np.int32)
    assert ky.get_vect_extremes(values) == (
        values.min(), values.max(), values.argmin(), values.argmax())
    shifted = ky.vect_data_shift(values, 3)
    assert shifted.tolist() == [0] * 3 + values[:-3].tolist()
    np.testing.assert_array_equal(ky.vect1c2(ky.OPER_ADD, values, 7, 0, 39), values + 7)
    rows = ky.Kernel([[1, 2, 1]], gain=4, rectifier=0)  # 4 / 4
    expected = values[:-2] + 2 * values[1:-1] + values[2:]
    np.testing.assert_array_equal(ky.convol_vect(values, rows)[1:-1], expected)
    for dtype in (np.int16, np.int32, np.uint8, np.uint32):
        some = np.array([[0, 10, 10, 0, 20]], dtype)
        found = ky.get_vect_transition(some, 5).tolist()
        assert [place for place, _ in found] == [0, 2, 3]
    segment = ky.line_seg_to_vect(np.full((9, 9), 200, np.uint8), 0, 0, 8, 8)
    assert segment[3].tolist() == [200, 3, 3] and segment.dtype == np.int32
    assert ky.vect_to_line_seg(segment, destination=(9, 9)).sum() == 9 * 255
    scan = np.zeros((5, 20), np.uint8)
    scan[:, 7:12] = 99
    found = ky.transition_scan(ky.TRANS_SCAN_BOTH, scan, 0, 2, 19, 2, 50, 0)
    assert found.tolist() == [[7, 2, 1], [12, 2, 2]]


def test_images_that_calls_make(grey):
    assert ky.modulus_image().shape == (512, 512)
    x, y = ky.set_circle_warp(20, 15, 8, 3, 12, 30, 0, 360)
    assert x.shape == y.shape == (8, 30) and x.dtype == np.uint16
    assert ky.warp(grey, x, y, 0, 0).tolist() == grey[y, x].tolist()
    counts = ky.correlogram(grey, grey)
    assert counts.shape == (256, 256) and np.trace(counts) == grey.size
    assert ky.horizontal_mirror(grey) is grey


def test_packed_frames():
    levels = np.array([[1, 1023, 512, 3], [0, 7, 8, 9]])
    packed = b"".join(sum(int(v) << 10 * i for i, v in enumerate(row)).to_bytes(5, "little")
                      for row in levels)
    for buffer in (packed, np.frombuffer(packed, np.uint8), memoryview(packed)):
        unpacked = ky.unpack(buffer, 5, ky.PACKED_MONO10P, destination=np.zeros((2, 4), np.uint16))
        np.testing.assert_array_equal(unpacked, levels)
    for size, pitch, shape in [(9, 5, (2, 4)), (10, 6, (2, 4)), (10, 5, (3, 4)), (0, 5, (1, 1))]:
        with pytest.raises(ky.Error, match="pixels holds fewer bytes") as failure:
            ky.unpack(packed[:size], pitch, ky.PACKED_MONO10P, destination=shape)
        assert failure.value.code == ky.ERROR_PARAMETER_1_OUT_OF_RANGE
    with pytest.raises(TypeError, match="contiguous buffer"):
        ky.unpack(np.zeros((4, 4), np.uint8)[:, ::2], 5, 0, destination=(1, 1))


def test_kernel(grey):
    kernel = ky.Kernel(ky.KERNEL_SOBEL_X)
    assert kernel.coefficients.tolist() == [[-1, 0, 1], [-2, 0, 2], [-1, 0, 1]]
    same = ky.Kernel(kernel.coefficients, gain=1, rectifier=kernel.get_rectifier())
    np.testing.assert_array_equal(ky.convol_kernel(grey, kernel), ky.convol_kernel(grey, same))
    kernel.set_kernel_data(2, 1, 5)
    assert kernel.get_kernel_data(2, 1) == 5
    kernel.set_size_x(7)
    kernel.set_size_y(7)
    kernel.set_kernel_data(np.ones(49))
    kernel.set_gain(1 / 49)
    assert ky.convol_kernel(grey, kernel).shape == grey.shape
    with pytest.raises(ky.Error, match="KERNEL"):
        ky.convol_kernel(grey, ky.Kernel())
    with pytest.raises(ky.Error):
        kernel.get_kernel_data(9, 0)
    cross = ky.Kernel([[0, 1, 0], [1, 1, 1], [0, 1, 0]])
    assert ky.dilate(grey, cross).mean() > grey.mean()
    edges = ky.Kernel([[-1, 0, 1]], gain=0.5, offset=-7, rectifier=3, outside_value=9)
    again = pickle.loads(pickle.dumps(edges))
    np.testing.assert_array_equal(ky.convol_kernel(grey, again), ky.convol_kernel(grey, edges))


@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_pickling(protocol):
    for kind in (ky.BW8, ky.C15):
        assert pickle.loads(pickle.dumps(kind, protocol)) is kind
    for thing in (ky.MovingAverage(), ky.Pyramid(), ky.ColorLookup(), ky.ColorMatrix.luma()):
        with pytest.raises(TypeError, match=f"cannot pickle a ky.{type(thing).__name__}"):
            pickle.dumps(thing, protocol)


def test_lookups(random):
    color = random.integers(0, 256, (9, 7, 3), np.uint8)
    luma = ky.get_component(color, 0, ky.ColorMatrix.luma())
    assert np.abs(luma.astype(int) - ky.convert(color, destination=ky.BW8)).max() <= 1
    np.testing.assert_array_equal(ky.get_component(color, 2), color[:, :, 2])
    np.testing.assert_array_equal(ky.get_component(color, 2, None), color[:, :, 2])
    assert ky.ColorMatrix([0, 0, 1, 0, 1, 0, 1, 0, 0]).transform((1, 2, 3)) == (3, 2, 1)
    for base in (ky.ColorLookup, ky.ColorMatrix):  # whose overrides would not be called
        with pytest.raises(TypeError, match="not an acceptable base type"):
            type("Own", (base,), {"transform": lambda self, color: color})


def test_moving_average(random):
    frames = random.integers(0, 256, (6, 9, 11), np.uint8)
    average = ky.MovingAverage(4, 11, 9)
    for i, frame in enumerate(frames):
        result = average.average(frame)
    np.testing.assert_array_equal(result, frames[2:].astype(int).sum(0) // 4)
    kept = ky.MovingAverage(2, 11, 9, keep_source=True)
    for frame in frames:
        kept.get_src_image()[...] = frame
        result = kept.average()
    np.testing.assert_array_equal(result, frames[4:].astype(int).sum(0) // 2)
    image = kept.get_src_image()
    image[...] = 5
    kept.set_size(3, 40, 40)
    del kept
    assert (image == 5).all()
    with pytest.raises(ky.Error):
        average.average()
    with pytest.raises(ky.Error):
        average.average(frames[0], destination=np.zeros((3, 3), np.uint8))


def test_pyramid(grey, random):
    pyramid = ky.Pyramid(3)
    assert pyramid.get_level(0) is None or pyramid.get_level(0).size == 0
    pyramid.build(grey)
    level = pyramid.get_level(1)
    np.testing.assert_array_equal(level, ky.halve(grey))
    kept = level.copy()
    pyramid.build(np.zeros((200, 100), np.uint8))  # elsewhere, as an array lies on the old one
    np.testing.assert_array_equal(level, kept)
    assert not level.flags.writeable
    pyramid.halve()
    assert pyramid.get_num_levels() == 4 and pyramid.get_level(3).shape == (25, 12)
    assert pyramid.get_level(4) is None
    colors = ky.Pyramid(2, ky.IMAGE_C24)
    colors.build(random.integers(0, 256, (8, 6, 3), np.uint8))
    assert colors.get_level(1).shape == (4, 3, 3)
    with pytest.raises(ky.Error) as failure:
        colors.build(grey)
    assert failure.value.code == ky.ERROR_PYRAMID_BUILD


def test_errors(grey):
    with pytest.raises(RuntimeError, match="KY_ERROR_SIZE_MISMATCH") as failure:
        ky.convol_sobel(grey, destination=(2, 2))
    error = failure.value
    assert type(error) is ky.Error and error.code == 1403 and error.trace == ("ImgConvolSobel (BW8)",)
    assert ky.get_error() == 1403 and ky.get_trace(0) == "ImgConvolSobel (BW8)"
    for other in (pickle.loads(pickle.dumps(error)), copy.copy(error)):
        assert (other.code, other.trace, str(other)) == (error.code, error.trace, str(error))
    with pytest.raises(ky.Error) as failure:
        ky.pixel_std_dev(np.zeros((0, 4), np.uint8))
    assert failure.value.trace == ("ImgPixelVariance (BW8)", "ImgPixelStdDev")
    ky.ok()
    assert ky.get_error() == 0
    ky.set_error(1400)
    assert ky.trace_error("mine") == 1400 and ky.get_trace_count() == 1
    assert ky.get_trace(0) == "mine"
    assert ky.name_parameter("source") == 1400 and ky.get_error_message().startswith("mine: source")
    ky.get_overlay_color()
    assert ky.get_error() == 1400
