// The same host in C++. Exit status 0 when the picture is right and a wrong call is refused.
#include <cstdio>
#include <zepbmp.hpp>

int main() {
    constexpr int kWidth = 10, kHeight = 4;
    zepbmp::Bitmap frame(kWidth, kHeight, zepbmp::Format::yuy2), white(kWidth, kHeight, zepbmp::Format::yuy2);
    zepbmp::Bitmap weights(kWidth, kHeight, zepbmp::Format::pwrw);
    for (int y = 0; y < kHeight; ++y)
        for (uint8_t& byte : white.line(y))
            byte = 0xeb;
    zepbmp::alpha_rect(weights, {.x = 4, .y = 1, .width = 4, .height = 2}, zepbmp::ShapeMode::add);
    zepbmp::compose(frame, frame, white, weights);

    int wrong = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const bool inside = x >= 4 && x < 8 && y >= 1 && y < 3;
            wrong += *frame.pointer(x, y) != (inside ? 0xeb : 0);
        }
    std::printf("%d wrong pixels\n", wrong);

    try {
        zepbmp::compose(frame, weights, white, weights);
        std::puts("a source of another format is taken");
        return 1;
    } catch (const zepbmp::WrongFormat& error) {
        std::printf("refused: %s\n", error.what());
    }
    return wrong != 0;
}
