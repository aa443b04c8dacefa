// One frame of a wipe: the night in a round hole of the day, with a soft edge.
#include "pictures.hpp"

static void wipe(const char* path) {
    zepbmp::Bitmap weights(kWidth, kHeight, zepbmp::Format::pwrw), frame(kWidth, kHeight, zepbmp::Format::rgbq);

    // A disc of radius 80 whose outer 30 pixels fade; around it the weight becomes 0.
    zepbmp::alpha_circle(weights, {.cx = kWidth / 2, .cy = kHeight / 2, .radius = 80, .feather = 30},
                         zepbmp::Ramp::cosine);
    zepbmp::compose(frame, day(), night(), weights);
    save(frame, path);
}

int main(int argc, char** argv) { return run(argc, argv, wipe); }
