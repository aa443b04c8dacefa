"""Real hosts: runs them, and returns what comes out as arrays of (frames, height, width, 4) bytes, RGBA."""

import os
import subprocess

import numpy as np

FRAMES = 25
RATE = 25
MELT_TRIES = 4


def run(command, folder, seconds=120):
    """The host's output; a host that fails fails the test, with what it has said."""
    result = subprocess.run(
        [str(word) for word in command],
        cwd=folder,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        errors="replace",
        timeout=seconds,
        check=False,
    )
    assert result.returncode == 0, f"{' '.join(map(str, command))}\nends with {result.returncode}:\n{result.stdout}"
    return result.stdout


def run_until(done, command, folder, seconds=20):
    """The output of a melt that has done its work. Of the runs of melt 7.12 some in a hundred end, or hang, before a
    frame has been asked for, whatever they play: a run after which `done` is false of its output is made again."""
    for _ in range(MELT_TRIES):
        try:
            said = run(command, folder, seconds)
        except subprocess.TimeoutExpired as hanging:
            output = (hanging.stdout or b"").decode(errors="replace")
            said = f"{output}\nno end within {seconds} seconds"
            assert not done(output), f"{' '.join(map(str, command))}\ndoes its work, then hangs:\n{said}"
        else:
            if done(said):
                return said
    raise AssertionError(f"{' '.join(map(str, command))}\nhas done nothing in {MELT_TRIES} runs; the last one:\n{said}")


def has_written(path, least=1):
    return path.exists() and path.stat().st_size >= least


def read_frames(path, size):
    frames = np.fromfile(path, np.uint8)
    assert frames.size > 0 and frames.size % (size[0] * size[1] * 4) == 0, f"{path}: {frames.size} bytes"
    return frames.reshape(-1, size[1], size[0], 4)


def make_clip(path, source, size):
    """A clip of FRAMES frames that a codec has been over."""
    run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"{source}=size={size[0]}x{size[1]}:rate={RATE}"]
        + ["-frames:v", FRAMES, "-c:v", "mpeg4", "-q:v", 3, "-bitexact", path], path.parent)


def run_melt(size, arguments, out, folder, watch=(), seconds=20):
    """Plays the arguments into the file `out`."""
    profile = folder / f"profile_{size[0]}x{size[1]}"
    profile.write_text(
        f"description=test\nframe_rate_num={RATE}\nframe_rate_den=1\nwidth={size[0]}\nheight={size[1]}\nprogressive=1\n"
        f"sample_aspect_num=1\nsample_aspect_den=1\ndisplay_aspect_num={size[0]}\ndisplay_aspect_den={size[1]}\n"
        "colorspace=601\n"
    )
    consumer = [f"avformat:{out}", "f=rawvideo", "vcodec=rawvideo", "pix_fmt=rgba", "mlt_image_format=rgba"]
    command = [*watch, "melt", "-silent", "-profile", profile, *arguments, "-consumer", *consumer, "an=1", "real_time=-1"]
    out.unlink(missing_ok=True)
    run_until(lambda _: has_written(out), command, folder, seconds)


def melt(size, arguments, folder):
    out = folder / "melt.rgba"
    run_melt(size, arguments, out, folder)
    return read_frames(out, size)


def ffmpeg(size, clip, filters, folder):
    """The frames before and behind the filters, of one run."""
    before, behind = folder / "before.rgba", folder / "behind.rgba"
    graph = f"[0:v]format=rgba,split[a][b];[b]{filters},format=rgba[c]"
    raw = ["-f", "rawvideo"]
    run(["ffmpeg", "-v", "error", "-y", "-i", clip, "-filter_complex", graph]
        + ["-map", "[a]", *raw, before, "-map", "[c]", *raw, behind], folder)
    return read_frames(before, size), read_frames(behind, size)


def gstreamer_source(size, path):
    return ["filesrc", f"location={path}", "!", "rawvideoparse", "format=rgba", f"width={size[0]}",
            f"height={size[1]}", f"framerate={RATE}/1"]  # fmt: skip


def gstreamer(size, pipeline, folder):
    out = folder / "gstreamer.rgba"
    # A registry of its own: the user's stays as it is.
    os.environ["GST_REGISTRY"] = str(folder / "registry.bin")
    run(["gst-launch-1.0", "-q", *pipeline, "!", "filesink", f"location={out}"], folder)
    return read_frames(out, size)
