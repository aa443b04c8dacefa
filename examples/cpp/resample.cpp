// The day, resampled to a place between the pixels, over the night: at its borders the night shines through.
#include "pictures.hpp"

static void resample(const char* path) {
    zepbmp::Bitmap small(kWidth, kHeight, zepbmp::Format::rgbq), coverage(kWidth, kHeight, zepbmp::Format::pwrw);
    zepbmp::map_rect(small, coverage, {100.5f, 50.25f, 229, 122.5f}, day(), {0, 0, kWidth, kHeight});

    zepbmp::Bitmap frame(kWidth, kHeight, zepbmp::Format::rgbq);
    zepbmp::compose(frame, night(), small, coverage);
    save(frame, path);
}

int main(int argc, char** argv) { return run(argc, argv, resample); }
