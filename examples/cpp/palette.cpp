// Palette colours: a wheel of lines over rings, each pixel an index. Where display() shows the bitmap, Windows looks the
// colours up; here the example does.
#include <algorithm>
#include <array>

#include "pictures.hpp"

static void palette(const char* path) {
    zepbmp::Bitmap indices(kWidth, kHeight, zepbmp::Format::rgb8), frame(kWidth, kHeight, zepbmp::Format::rgbq);
    std::array<zepbmp::Rgbq, 256> colors;

    for (int i = 0; i < 256; ++i) {  // from blue to yellow
        const auto up = static_cast<uint8_t>(i), down = static_cast<uint8_t>(255 - i);
        colors[up] = {.blue = down, .green = up, .red = up};
        zepbmp::set_palette(indices, zepbmp::PaletteIndex(i), colors[up]);
    }
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            *indices.pointer(x, y) = static_cast<uint8_t>(((x - 160) * (x - 160) + (y - 90) * (y - 90)) / 64);
    for (int x = 0; x < kWidth; x += 20)
        zepbmp::draw_line(indices, {160, 90}, {x, 0}, zepbmp::PaletteIndex(255), zepbmp::LineMode::bit_xor);
    zepbmp::draw_rect(indices, {0, 150, kWidth, kHeight}, zepbmp::PaletteIndex(0xc0), zepbmp::RectMode::bit_and);

    for (int y = 0; y < kHeight; ++y)
        std::ranges::transform(indices.row<zepbmp::Format::rgb8>(y), frame.row<zepbmp::Format::rgbq>(y).begin(),
                               [&](uint8_t index) { return colors[index]; });
    save(frame, path);
}

int main(int argc, char** argv) { return run(argc, argv, palette); }
