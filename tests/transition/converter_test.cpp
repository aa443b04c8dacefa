#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "frame_converter.h"

namespace zepbmp::transition {
namespace {

FramePtr noise_frame(int width, int height, AVPixelFormat format, unsigned seed) {
    FramePtr frame = make_picture_frame(width, height, format);
    std::mt19937 random(seed);
    for (int plane = 0; plane < 3; ++plane) {
        const int lines = plane == 0 || format != AV_PIX_FMT_YUV420P ? height : (height + 1) / 2;
        if (!frame->data[plane])
            continue;
        for (int i = 0; i < frame->linesize[plane] * lines; ++i)
            frame->data[plane][i] = static_cast<uint8_t>(16 + random() % 220);
    }
    return frame;
}

FramePtr flat_rgb(int width, int height, uint32_t rgb) {
    FramePtr frame = make_picture_frame(width, height, AV_PIX_FMT_RGB24);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int k = 0; k < 3; ++k)
                frame->data[0][y * frame->linesize[0] + 3 * x + k] = static_cast<uint8_t>(rgb >> (16 - 8 * k));
    return frame;
}

// What no effect touches comes out of the two conversions as it went in.
TEST(Converter, WayThereAndBackIsExact) {
    const int width = 64, height = 48;
    for (bool fields : {false, true}) {
        const FramePtr before = noise_frame(width, height, AV_PIX_FMT_YUV420P, 5);
        Bitmap bitmap(width, height, Format::yuy2);
        FrameConverter converter(fields ? FrameConverter::Mode::kFields : FrameConverter::Mode::kWhole, width,
                                 AVCOL_SPC_SMPTE170M);
        converter.convert(*before, bitmap);
        const FramePtr after = make_picture_frame(width, height, AV_PIX_FMT_YUV420P);
        Scaler back;
        const PictureView from = view_of(bitmap, width, AVCOL_SPC_SMPTE170M);
        if (fields)
            back.convert_fields(from, view_of(*after));
        else
            back.convert(from, view_of(*after));
        for (int plane = 0; plane < 3; ++plane)
            for (int y = 0; y < (plane ? height / 2 : height); ++y)
                ASSERT_EQ(std::memcmp(before->data[plane] + y * before->linesize[plane],
                                      after->data[plane] + y * after->linesize[plane], plane ? width / 2 : width),
                          0)
                    << "fields " << fields << " plane " << plane << " line " << y;
    }
}

TEST(Converter, ScalingKeepsFieldsApart) {
    const FramePtr frame = make_picture_frame(64, 48, AV_PIX_FMT_YUV420P);
    for (int y = 0; y < 48; ++y)
        std::memset(frame->data[0] + y * frame->linesize[0], y % 2 ? 200 : 40, 64);
    for (int plane = 1; plane < 3; ++plane)
        for (int y = 0; y < 24; ++y)
            std::memset(frame->data[plane] + y * frame->linesize[plane], y % 2 ? 180 : 90, 32);
    Bitmap bitmap(96, 80, Format::yuy2);
    FrameConverter(FrameConverter::Mode::kFields, 96, AVCOL_SPC_SMPTE170M).convert(*frame, bitmap);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 96; ++x) {
            ASSERT_NEAR(bitmap.pointer(x, y)[0], y % 2 ? 200 : 40, 1) << x << " " << y;
            ASSERT_NEAR(bitmap.pointer(x, y)[1], y % 2 ? 180 : 90, 1) << x << " " << y;
        }
}

TEST(Converter, DeinterlacingRebuildsTheTopField) {
    const FramePtr frame = make_picture_frame(64, 48, AV_PIX_FMT_YUV422P);
    for (int y = 0; y < 48; ++y) {
        std::memset(frame->data[0] + y * frame->linesize[0], y % 2 ? 200 : 40, 64);
        for (int plane = 1; plane < 3; ++plane)
            std::memset(frame->data[plane] + y * frame->linesize[plane], 128, 32);
    }
    Bitmap bitmap(96, 60, Format::yuy2);
    FrameConverter(FrameConverter::Mode::kDeinterlace, 96, AVCOL_SPC_SMPTE170M).convert(*frame, bitmap);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 96; ++x)
            ASSERT_NEAR(bitmap.pointer(x, y)[0], 40, 1) << x << " " << y;
}

TEST(Converter, BringsRangesAndMatricesTogether) {
    const int size = 32;
    Bitmap bitmap(size, size, Format::yuy2);
    const auto expect_first_pair = [&](int y, int u, int v) {
        EXPECT_NEAR(bitmap.pointer(8, 8)[0], y, 2);
        EXPECT_NEAR(bitmap.pointer(8, 8)[1], u, 2);
        EXPECT_NEAR(bitmap.pointer(8, 8)[3], v, 2);
    };
    FrameConverter to_601(FrameConverter::Mode::kWhole, size, AVCOL_SPC_SMPTE170M);
    to_601.convert(*flat_rgb(size, size, 0xffffff), bitmap);
    expect_first_pair(235, 128, 128);
    to_601.convert(*flat_rgb(size, size, 0xff0000), bitmap);
    expect_first_pair(81, 90, 240);
    FrameConverter to_709(FrameConverter::Mode::kWhole, size, AVCOL_SPC_BT709);
    to_709.convert(*flat_rgb(size, size, 0xff0000), bitmap);
    expect_first_pair(63, 102, 240);

    FramePtr red = make_picture_frame(size, size, AV_PIX_FMT_YUV444P);  // red by the first matrix
    const int codes[3] = {81, 90, 240};
    for (int plane = 0; plane < 3; ++plane)
        std::memset(red->data[plane], codes[plane], red->linesize[plane] * size);
    red->colorspace = AVCOL_SPC_SMPTE170M;
    to_709.convert(*red, bitmap);
    expect_first_pair(63, 102, 240);

    for (AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVJ420P}) {  // white in full range
        FramePtr white = make_picture_frame(size, size, format);
        for (int plane = 0; plane < 3; ++plane)
            std::memset(white->data[plane], plane ? 128 : 255, white->linesize[plane] * (plane ? size / 2 : size));
        white->color_range = AVCOL_RANGE_JPEG;
        to_601.convert(*white, bitmap);
        expect_first_pair(235, 128, 128);
    }
}

TEST(Converter, FillsOddSizesToTheLastPixel) {
    const FramePtr frame = make_picture_frame(33, 21, AV_PIX_FMT_YUV444P);
    for (int plane = 0; plane < 3; ++plane)
        std::memset(frame->data[plane], plane ? 128 : 170, frame->linesize[plane] * 21);
    for (int width : {33, 65, 31}) {
        Bitmap bitmap((width + 1) & ~1, 17, Format::yuy2);
        FrameConverter(FrameConverter::Mode::kWhole, width, AVCOL_SPC_SMPTE170M).convert(*frame, bitmap);
        for (int y = 0; y < 17; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_NEAR(bitmap.pointer(x, y)[0], 170, 1) << x << " " << y;
    }
}

TEST(Converter, RepeatsTheLastColumnInTheOddPixel) {
    for (AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUYV422, AV_PIX_FMT_GRAY8})
        for (int width : {33, 47}) {
            Bitmap bitmap(width + 1, 24, Format::yuy2);
            FrameConverter converter(FrameConverter::Mode::kWhole, width, AVCOL_SPC_SMPTE170M);
            converter.convert(*noise_frame(33, 24, format, 7), bitmap);
            for (int y = 0; y < 24; ++y)
                ASSERT_EQ(bitmap.pointer(width, y)[0], bitmap.pointer(width - 1, y)[0])
                    << "format " << format << " width " << width << " line " << y;
        }
}

TEST(Converter, GuessesTheMatrixByHeight) {
    EXPECT_EQ(known_matrix(AVCOL_SPC_UNSPECIFIED, 576), AVCOL_SPC_SMPTE170M);
    EXPECT_EQ(known_matrix(AVCOL_SPC_UNSPECIFIED, 1080), AVCOL_SPC_BT709);
    EXPECT_EQ(known_matrix(AVCOL_SPC_RGB, 480), AVCOL_SPC_SMPTE170M);
    EXPECT_EQ(known_matrix(AVCOL_SPC_BT709, 480), AVCOL_SPC_BT709);
}

}  // namespace
}  // namespace zepbmp::transition
