// What the examples share: pictures to work on, and files to look at.
#pragma once

#include <zepbmp.hpp>

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

inline constexpr int kWidth = 320, kHeight = 180;

/// An RGBQ picture of kWidth x kHeight with a pattern of squares over what `color(x, y)` gives.
template <class Color>
zepbmp::Bitmap paint(Color color) {
    zepbmp::Bitmap bitmap(kWidth, kHeight, zepbmp::Format::rgbq);
    for (int y = 0; y < kHeight; ++y) {
        const auto row = bitmap.row<zepbmp::Format::rgbq>(y);
        for (int x = 0; x < kWidth; ++x) {
            const int light = (x / 16 + y / 16) % 2 * 16;
            const auto [red, green, blue] = color(x, y);
            row[static_cast<size_t>(x)] = {static_cast<uint8_t>(blue + light), static_cast<uint8_t>(green + light),
                                           static_cast<uint8_t>(red + light), 0};
        }
    }
    return bitmap;
}

struct RedGreenBlue {
    int red, green, blue;
};
inline zepbmp::Bitmap day() {
    return paint([](int x, int y) { return RedGreenBlue{70 + x / 2, 120 + y / 2, 230 - y}; });
}
inline zepbmp::Bitmap night() {
    return paint([](int x, int y) { return RedGreenBlue{10 + x / 8, 20, 40 + y / 4}; });
}

/// Writes an RGBQ bitmap as a PPM image.
inline void save(const zepbmp::Bitmap& bitmap, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << bitmap.width() << ' ' << bitmap.height() << "\n255\n";
    for (int y = 0; y < bitmap.height(); ++y)
        for (const zepbmp::Rgbq pixel : bitmap.row<zepbmp::Format::rgbq>(y))
            for (const uint8_t byte : {pixel.red, pixel.green, pixel.blue})
                file.put(static_cast<char>(byte));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

/// Runs an example with the file that it is to write; what goes wrong ends the program with a message and status 1.
template <class Example>
int run(int argc, char** argv, Example example) try {
    if (argc != 2)
        throw std::runtime_error("give the PPM file to write as the only argument");
    example(argv[1]);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
