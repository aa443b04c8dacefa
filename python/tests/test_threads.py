"""Python's lock is released during calls; a thread whose stack is too small is told so."""

import threading
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest

import zepbmp
from zepbmp import Bitmap, Format, _stack


def test_another_thread_sees_a_picture_that_is_half_drawn():
    """Only a thread that runs while the call does can find its first line drawn and its last line not yet."""
    source = Bitmap.from_array(np.full((64, 64, 4), 255, np.uint8), Format.RGBQ)
    dest = Bitmap(3000, 3000, Format.RGBQ)
    corners = [(0, 0, 1, 0, 0), (64, 0, 2, 3000, 0), (64, 64, 2, 3000, 3000), (0, 64, 1, 0, 3000)]
    first, last = dest.array[0, 1500], dest.array[-1, 1500]

    for _ in range(100):
        zepbmp.clear(dest)
        worker = threading.Thread(target=zepbmp.map_polygon, args=(dest, source, corners))
        worker.start()
        seen = False
        while worker.is_alive() and not seen:
            seen = bool(first.all()) and not last.any()
        worker.join()
        assert first.all() and last.all()
        if seen:
            return
    raise AssertionError("no call let another thread run")


def test_threads_draw_what_one_thread_draws():
    random = np.random.default_rng(1)
    frames = [random.integers(0, 256, (120, 160, 4)).astype(np.uint8) for _ in range(9)]
    weights = Bitmap(160, 120, Format.PWRW)
    zepbmp.alpha_circle(weights, 80, 60, 50, 20)

    def mixed(number: int) -> bytes:
        src1, src2 = (Bitmap.from_array(frames[number + k], Format.RGBQ) for k in (0, 1))
        dest = Bitmap(160, 120, Format.RGBQ)
        for _ in range(20):
            zepbmp.compose(dest, src1, src2, weights)
            zepbmp.compose(src1, dest, src2, weights)
        return dest.to_array().tobytes()

    alone = [mixed(number) for number in range(8)]
    with ThreadPoolExecutor(8) as pool:
        assert list(pool.map(mixed, range(8))) == alone


def in_a_thread_with_a_stack_of(size, call):
    """What the call returns or raises there."""
    before = threading.stack_size(size)
    try:
        with ThreadPoolExecutor(1) as pool:
            return pool.submit(call)
    finally:
        threading.stack_size(before)


def test_map_rect_wants_stack():
    source = Bitmap.from_array(np.full((9, 9), 200, np.uint8), Format.RGB8)
    dest = Bitmap(7, 7, Format.RGB8)

    def mapped():
        zepbmp.map_rect(dest, (0, 0, 7, 7), source, (0, 0, 9, 9))
        return _stack.size()

    with pytest.raises(RuntimeError, match="^the thread's stack is 65536 bytes: must be at least 262144"):
        in_a_thread_with_a_stack_of(65536, mapped).result()
    assert not dest.array.any()
    assert in_a_thread_with_a_stack_of(_stack.NEEDED, mapped).result() == _stack.NEEDED
    assert (dest.array == 200).all()
