// A wipe for interlaced video: each field is drawn for its own moment, so that the edge moves at twice the frame rate.
#include "pictures.hpp"

static void fields(const char* path) {
    const zepbmp::Bitmap from = day(), to = night();
    zepbmp::Bitmap weights(kWidth, kHeight, zepbmp::Format::pwrw), frame(kWidth, kHeight, zepbmp::Format::rgbq);

    float x = 60;
    for (const auto field : {zepbmp::Field::even, zepbmp::Field::odd}) {
        zepbmp::alpha_rect(weights, {x, 30.5f, 180, 120}, zepbmp::ShapeMode::maximum, field);
        zepbmp::compose(frame, from, to, weights, field);
        x += 12;  // half a frame later
    }
    save(frame, path);
}

int main(int argc, char** argv) { return run(argc, argv, fields); }
