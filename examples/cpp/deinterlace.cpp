// Rebuilds a frame from one field: the even lines show the day, the odd ones, which came later, already the night.
#include "pictures.hpp"

static void deinterlace(const char* path) {
    zepbmp::Bitmap interlaced = day(), frame(kWidth, kHeight, zepbmp::Format::rgbq);
    zepbmp::copy(interlaced, night(), zepbmp::Field::odd);
    zepbmp::interporate(frame, interlaced, zepbmp::Parity::even);
    save(frame, path);
}

int main(int argc, char** argv) { return run(argc, argv, deinterlace); }
