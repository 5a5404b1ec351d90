"""Classes derived in Python, their events, and calls from several threads."""

from __future__ import annotations

import gc
import threading
from typing import Any

import numpy as np
import pytest

import tqx

P = tqx.PictureTQX


class Factory(tqx.PictureFactoryTQX):
    """Notes what it is asked for."""

    def __init__(self, give: Any = None) -> None:
        self.asked: list[tuple[int, int, int]] = []
        self.give = give or P

    def NewPictureTQX(self, width: int, height: int, image_format: int) -> Any:
        self.asked.append((width, height, image_format))
        return self.give(width, height, image_format)


def test_a_factory_in_python_makes_the_pictures(photo: Any) -> None:
    photo.Factory = Factory()
    assert photo.Factory.asked == []
    result = photo.GammaFilter(None, 2.0)
    assert result.Width == 7 and photo.Factory.asked == [(7, 5, P.ImageFormatRGB)]


def test_its_attributes_live_as_long_as_the_host_holds_it(photo: Any) -> None:
    photo.Factory = Factory()
    first = id(photo.Factory.asked)
    gc.collect()
    photo.GammaFilter(None, 2.0)
    assert len(photo.Factory.asked) == 1 and id(photo.Factory.asked) == first
    assert type(photo.Factory) is Factory


def test_a_factory_that_refers_to_itself_keeps_its_attributes(photo: Any) -> None:
    factory = Factory()
    factory.itself = [factory]
    photo.Factory = factory
    del factory
    gc.collect()
    photo.GammaFilter(None, 2.0)
    assert len(photo.Factory.asked) == 1
    photo.Factory.itself.clear()
    photo.Factory = None


def test_the_global_factory(photo: Any) -> None:
    tqx.PictureFactoryTQX.SetFactory(Factory())
    try:
        assert photo.GammaFilter(None, 2.0).Valid
    finally:
        tqx.PictureFactoryTQX.SetFactory(None)


def test_what_a_handler_raises_leaves_the_call(photo: Any) -> None:
    def fail(*_: int) -> None:
        raise KeyError("made in Python")

    photo.Factory = Factory(fail)
    with pytest.raises(KeyError, match="made in Python") as caught:
        photo.GammaFilter(None, 2.0)
    assert any(entry.name == "fail" for entry in caught.traceback)
    assert photo.Clone().Valid


def test_a_handler_must_give_what_the_event_declares(photo: Any) -> None:
    photo.Factory = Factory(lambda *_: 3)
    with pytest.raises(TypeError, match="should give PictureTQX or None"):
        photo.GammaFilter(None, 2.0)
    photo.Factory = Factory(lambda *_: None)
    assert photo.GammaFilter(None, 2.0).Valid


def test_handlers_call_members(photo: Any) -> None:
    photo.Factory = Factory(lambda w, h, f: P.CreatePictureTQX(w, h, f).HMirror() or P(w, h, f))
    assert np.array_equal(photo.BoxBlurFilter(None, 0), photo)


def test_pictures_can_be_derived_from() -> None:
    class Named(P):
        def __init__(self, name: str) -> None:
            super().__init__(3, 2, P.ImageFormatRGB)
            self.name = name

    named = Named("a")
    assert named.Width == 3 and named.name == "a"
    assert named.ClipImage().Parent.name == "a"
    with pytest.raises(BufferError):
        view = np.asarray(named)
        named.Close()
    del view


def test_classes_that_can_not_be() -> None:
    with pytest.raises(TypeError, match="__slots__"):
        type("Slotted", (P,), {"__slots__": ("a",)})
    with pytest.raises(TypeError):
        tqx._native.Object()


def test_threads_take_turns() -> None:
    source = P(300, 200, P.ImageFormatRGB)
    np.asarray(source)[...] = np.random.default_rng(1).integers(0, 256, (200, 300, 3))
    source.Factory = Factory()
    expected = source.BoxBlurFilter(None, 3).tobytes()
    results: list[bytes] = []

    def work() -> None:
        for _ in range(20):
            results.append(source.BoxBlurFilter(None, 3).tobytes())

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert not any(thread.is_alive() for thread in threads)
    assert len(results) == 80 and set(results) == {expected}
    source.Factory = None


def test_other_threads_run_during_a_long_call() -> None:
    picture = P(1200, 1200, P.ImageFormatRGB)
    ticks: list[int] = []
    done = threading.Event()

    def tick() -> None:
        while not done.wait(0.001):
            ticks.append(1)

    thread = threading.Thread(target=tick)
    thread.start()
    picture.OilFilter(None, 16, 4)
    count = len(ticks)
    done.set()
    thread.join()
    assert count > 0


def test_garbage_of_another_thread_waits_for_the_call() -> None:
    picture = P(1200, 1200, P.ImageFormatRGB)
    thread = threading.Thread(target=lambda: picture.OilFilter(None, 16, 4))
    others = [P(8, 8, P.ImageFormatG) for _ in range(50)]
    thread.start()
    while others:
        others.pop()
    thread.join()
    assert picture.Width == 1200
