"""What real hosts make of the plug-ins: byte for byte the frames that the library draws of what the host hands out."""

import pathlib
import re

import hosts
import library
import numpy as np
import pytest

SIZE = (320, 240)
ODD_SIZE = (90, 50)  # lines of no whole 16 bytes
FFMPEG_SIZE = (96, 50)  # ffmpeg wants widths of whole 16 pixels: of other frames it hands out padded lines


@pytest.fixture(scope="session")
def clips(tmp_path_factory):
    folder = tmp_path_factory.mktemp("clips")
    for size in (SIZE, ODD_SIZE, FFMPEG_SIZE):
        for name, source in (("one", "testsrc2"), ("two", "mandelbrot")):
            hosts.make_clip(folder / f"{name}_{size[0]}.avi", source, size)
    return folder


def clip(clips, name, size=SIZE):
    return clips / f"{name}_{size[0]}.avi"


def assert_same(got, want):
    assert got.shape == want.shape
    assert not np.array_equal(want[0], want[-1]), "the clip stands still"
    for i, (one, other) in enumerate(zip(got, want)):
        if not np.array_equal(one, other):
            y, x = np.argwhere((one != other).any(axis=2))[0]
            pytest.fail(f"frame {i}, pixel ({x}, {y}): {one[y, x].tolist()} instead of {other[y, x].tolist()}")


# ---------------------------------------------------------------- melt


@pytest.fixture(scope="session")
def melt_sources(clips, tmp_path_factory):
    """The clips as melt hands them out."""
    folder = tmp_path_factory.mktemp("sources")
    return {
        (name, size): hosts.melt(size, [clip(clips, name, size)], folder)
        for name in ("one", "two")
        for size in (SIZE, ODD_SIZE)
    }


LAST = hosts.FRAMES - 1
PROGRESS = [i / LAST for i in range(hosts.FRAMES)]
ANIMATED = f"Progress=0=0;{LAST}=1"
MIXERS = {
    "dissolve": (["dissolve"], library.dissolve),
    "fly": (["fly"], library.fly),
    "circle": (["wipe"], library.wipe),
    "box": (
        ["wipe", "Shape=0.25", "Feather=0.2", "Cosine edge=1", "Centre across=0.25", "Centre down=0.625"],
        lambda a, b, p: library.wipe(a, b, p, "box", (0.25, 0.625), 0.2, True),
    ),
    "rounded box": (
        ["wipe", "Shape=0.5", "Feather=0.05", "Corner radius=0.75"],
        lambda a, b, p: library.wipe(a, b, p, "rounded box", feather=0.05, corner_radius=0.75),
    ),
    "sharp box": (
        ["wipe", "Shape=0.5", "Feather=0"],
        lambda a, b, p: library.wipe(a, b, p, "rounded box", feather=0),
    ),
    "band": (
        ["wipe", "Shape=0.75", "Band width=0.25", "Band colour=#ff8000"],
        lambda a, b, p: library.wipe(a, b, p, "band", band_width=0.25, band_color=(1, 128 / 255, 0)),
    ),
}


def melt_mixer(clips, size, effect, settings, folder):
    tracks = ["-track", clip(clips, "one", size), "-track", clip(clips, "two", size)]
    transition = ["-transition", f"frei0r.zepbmp_{effect}", "in=0", f"out={LAST}", "a_track=0", "b_track=1"]
    return hosts.melt(size, [*tracks, *transition, *settings], folder)


@pytest.mark.parametrize("name", MIXERS)
def test_melt_mixers(name, clips, melt_sources, tmp_path):
    (effect, *settings), draw = MIXERS[name]
    got = melt_mixer(clips, SIZE, effect, [ANIMATED, *settings], tmp_path)
    one, two = melt_sources["one", SIZE], melt_sources["two", SIZE]
    assert_same(got, np.stack([draw(a, b, p) for a, b, p in zip(one, two, PROGRESS)]))
    assert np.array_equal(got[0], one[0]) and np.array_equal(got[-1], two[-1])


@pytest.mark.parametrize("effect", ["dissolve", "fly", "wipe"])
def test_melt_mixers_of_any_size(effect, clips, melt_sources, tmp_path):
    got = melt_mixer(clips, ODD_SIZE, effect, [ANIMATED], tmp_path)
    one, two = melt_sources["one", ODD_SIZE], melt_sources["two", ODD_SIZE]
    draw = getattr(library, effect)
    assert_same(got, np.stack([draw(a, b, p) for a, b, p in zip(one, two, PROGRESS)]))


def test_melt_animates_everything(clips, melt_sources, tmp_path):
    settings = [ANIMATED, f"Centre across=0=0;{LAST}=1", f"Feather=0=0.5;{LAST}=0", f"Shape=0=0.75;{LAST}=0.75"]
    settings.append(f"Band width=0=0;{LAST}=1")
    got = melt_mixer(clips, SIZE, "wipe", settings, tmp_path)
    one, two = melt_sources["one", SIZE], melt_sources["two", SIZE]
    want = [
        library.wipe(a, b, p, "band", (p, 0.5), 0.5 + (0 - 0.5) * p, band_width=p)
        for a, b, p in zip(one, two, PROGRESS)
    ]
    assert_same(got, np.stack(want))


PINNED = ((0.125, 0.25), (0.875, 0), (1, 0.75), (0.25, 1.25))
NUMBERS = [
    f"{name} {way}={corner[i]}"
    for name, corner in zip(library.CORNERS, PINNED)
    for i, way in enumerate(("across", "down"))
]


def moving_pin(progress):
    return [(0.125 + 0.25 * progress, 0.25), *PINNED[1:]]


FILTERS = {
    "corner pin": (
        ["corner_pin", *NUMBERS, f"Top left across=0=0.125;{LAST}=0.375"],
        lambda frame, p: library.corner_pin(frame, moving_pin(p)),
    ),
    "corner pin on a colour": (
        ["corner_pin", *NUMBERS, "Transparent=0", "Background=#204060"],
        lambda frame, p: library.corner_pin(frame, PINNED, (32 / 255, 64 / 255, 96 / 255)),
    ),
    "spotlight": (
        ["spotlight", f"Radius=0=0.125;{LAST}=0.75", "Colour=#400080", "Centre across=0.25"],
        lambda frame, p: library.spotlight(frame, (0.25, 0.5), 0.125 + 0.625 * p, color=(64 / 255, 0, 128 / 255)),
    ),
    "interpolate": (["interpolate"], lambda frame, p: library.interpolate(frame)),
    "interpolate the lower field": (
        ["interpolate", "Lower field=1"],
        lambda frame, p: library.interpolate(frame, lower=True),
    ),
}


@pytest.mark.parametrize("name", FILTERS)
def test_melt_filters(name, clips, melt_sources, tmp_path):
    (effect, *settings), draw = FILTERS[name]
    arguments = [clip(clips, "one"), "-filter", f"frei0r.zepbmp_{effect}", "in=0", f"out={LAST}", *settings]
    got = hosts.melt(SIZE, arguments, tmp_path)
    assert_same(got, np.stack([draw(frame, p) for frame, p in zip(melt_sources["one", SIZE], PROGRESS)]))


@pytest.mark.parametrize("effect", ["corner_pin", "spotlight", "interpolate"])
def test_melt_takes_any_settings(effect, clips, tmp_path):
    settings = ["No such thing=7", "Radius=nan", "Feather=inf", "Darkness=-1e300", "Top left across=1e300", "99=1"]
    settings += ["Top right down=nan", "Bottom left across=-inf", "Colour=no colour", "Lower field=maybe", "-1=4"]
    arguments = [clip(clips, "one"), "-filter", f"frei0r.zepbmp_{effect}", *settings]
    assert hosts.melt(SIZE, arguments, tmp_path).shape[0] == hosts.FRAMES


@pytest.mark.parametrize("effect", ["dissolve", "fly", "wipe"])
def test_melt_takes_any_mixer_settings(effect, clips, tmp_path):
    settings = [f"Progress=0=-5;{LAST}=1e30", "No such thing=7", "Shape=99", "Feather=-inf", "Centre across=nan"]
    got = melt_mixer(clips, SIZE, effect, [*settings, "Band width=1e300", "Corner radius=-1"], tmp_path)
    assert got.shape[0] == hosts.FRAMES


def test_melt_knows_the_parameters(tmp_path):
    """Dialogs are made of this: names, explanations, ranges."""
    query = ["melt", "-query", "transition=frei0r.zepbmp_wipe"]
    text = hosts.run_until(lambda output: "title: zepbmp wipe" in output, query, tmp_path)
    for line in ("title: Progress", "title: Corner radius", "Colour of a circle's band",
                 "animation: yes", "type: color", "type: boolean", "default: 0.1"):  # fmt: skip
        assert line in text, text


# ---------------------------------------------------------------- ffmpeg


def positions(corners):
    return "|".join(f"{x}/{y}" for x, y in corners)


@pytest.mark.parametrize("size", [SIZE, FFMPEG_SIZE])
@pytest.mark.parametrize(
    "settings, draw",
    [
        (f"corner_pin:{positions(PINNED)}", lambda frame: library.corner_pin(frame, PINNED)),
        (
            f"corner_pin:{positions(PINNED)}|n|0.25/0.5/0.75",
            lambda frame: library.corner_pin(frame, PINNED, (0.25, 0.5, 0.75)),
        ),
        (
            "spotlight:0.25/0.75|0.5|0.25|0.875|1/0/0.5|n",
            lambda frame: library.spotlight(frame, (0.25, 0.75), 0.5, 0.25, 0.875, (1, 0, 0.5), False),
        ),
        ("interpolate", library.interpolate),
        ("interpolate:y", lambda frame: library.interpolate(frame, lower=True)),
        ("spotlight:nan/0.5|nan|1e300", lambda frame: library.spotlight(frame, feather=1)),
        (
            f"interpolate,frei0r=zepbmp_corner_pin:{positions(PINNED)},frei0r=zepbmp_spotlight",
            lambda frame: library.spotlight(library.corner_pin(library.interpolate(frame), PINNED)),
        ),
    ],
)
def test_ffmpeg_filters(size, settings, draw, clips, tmp_path):
    before, behind = hosts.ffmpeg(size, clip(clips, "one", size), f"frei0r=zepbmp_{settings}", tmp_path)
    assert len(before) == hosts.FRAMES
    assert_same(behind, np.stack([draw(frame) for frame in before]))


# ---------------------------------------------------------------- GStreamer


@pytest.fixture(scope="session")
def raw_clips(clips, tmp_path_factory):
    folder = tmp_path_factory.mktemp("raw")
    for name in ("one", "two"):
        raw = ["-pix_fmt", "rgba", "-f", "rawvideo", folder / name]
        hosts.run(["ffmpeg", "-v", "error", "-i", clip(clips, name), *raw], folder)
    return folder


def test_gstreamer_filter(raw_clips, tmp_path):
    element = ["frei0r-filter-zepbmp-spotlight", "centre-x=0.25", "radius=0.5", "colour-r=1", "darkness=0.5"]
    got = hosts.gstreamer(SIZE, [*hosts.gstreamer_source(SIZE, raw_clips / "one"), "!", *element], tmp_path)
    frames = hosts.read_frames(raw_clips / "one", SIZE)
    want = [library.spotlight(frame, (0.25, 0.5), 0.5, darkness=0.5, color=(1, 0, 0)) for frame in frames]
    assert_same(got, np.stack(want))


def test_gstreamer_mixer(raw_clips, tmp_path):
    mixer = ["frei0r-mixer-zepbmp-wipe", "name=mixer", "progress=0.375", "shape=0.75", "centre-down=0.25"]
    sources = []
    for i, name in enumerate(("one", "two")):
        sources += [*hosts.gstreamer_source(SIZE, raw_clips / name), "!", f"mixer.sink_{i}"]
    got = hosts.gstreamer(SIZE, [*sources, *mixer], tmp_path)
    one, two = (hosts.read_frames(raw_clips / name, SIZE) for name in ("one", "two"))
    want = [library.wipe(a, b, 0.375, "band", (0.5, 0.25)) for a, b in zip(one, two)]
    assert_same(got, np.stack(want))


# ---------------------------------------------------------------- the manual


def manual_commands():
    """The commands of docs/frei0r.md that start a host."""
    text = (pathlib.Path(__file__).parents[3] / "docs" / "frei0r.md").read_text()
    sections = re.findall(r"^## In (\w+)\n(.*?)(?=^## )", text, re.MULTILINE | re.DOTALL)
    blocks = [block for _, section in sections for block in re.findall(r"(?:^    .*\n)+", section, re.MULTILINE)]
    lines = "".join(blocks).replace("\\\n", " ").splitlines()
    return [" ".join(line.split("  #")[0].split()) for line in lines]


def test_manual_has_commands():
    assert {command.split()[0] for command in manual_commands()} == {"melt", "ffmpeg", "gst-launch-1.0"}


@pytest.mark.parametrize("command", manual_commands())
def test_manual(command, clips, tmp_path, monkeypatch):
    for name in ("one", "two"):
        (tmp_path / f"{name}.avi").symlink_to(clip(clips, name))
    monkeypatch.setenv("GST_REGISTRY", str(tmp_path / "registry.bin"))
    written = re.search(r"(\w+\.(mp4|rgba))$", command)

    def done(output):
        return hosts.has_written(tmp_path / written[1], 1000) if written else "title: zepbmp wipe" in output

    assert written or command.startswith("melt -query")
    if command.startswith("melt"):
        output = hosts.run_until(done, ["bash", "-c", command], tmp_path)
    else:
        output = hosts.run(["bash", "-c", command], tmp_path)
    assert done(output), output
    assert not re.search("error|fail|no such|unknown", output, re.IGNORECASE), output
