#include "outline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "clips.h"
#include "error.h"

namespace zepbmp::transition {
namespace {

std::string refusal(const std::string& text) {
    try {
        parse_outline(text, "star.txt");
    } catch (const Error& error) {
        EXPECT_EQ(error.exit_code(), kExitRefused);
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << error.what();
        return error.what();
    }
    return "accepted";
}

TEST(OutlineTest, IsCentredAndReachesOne) {
    const Outline square = parse_outline("10 20\n30 20\n30 40\n10 40\n", "");
    ASSERT_EQ(square.size(), 4u);
    const double half = std::sqrt(0.5);
    const OutlinePoint want[] = {{-half, -half}, {half, -half}, {half, half}, {-half, half}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(square[i].x, want[i].x, 1e-12);
        EXPECT_NEAR(square[i].y, want[i].y, 1e-12);
    }
    const Outline triangle = parse_outline("0 0\n6 0\n0 3\n", "");  // centre of mass 2 1, farthest corner 6 0
    EXPECT_NEAR(triangle[1].x, 4 / std::hypot(4, 1), 1e-12);
    EXPECT_NEAR(triangle[1].y, -1 / std::hypot(4, 1), 1e-12);
}

TEST(OutlineTest, FormDecidesNotUnitPlaceOrDirection) {
    const Outline one = parse_outline("0 0\n1 0\n0.4 1", "");
    const Outline other = parse_outline("-500 7e2\n-500 1700\n-1500 1.1E3", "");  // turned by a quarter, 1000 times
    ASSERT_EQ(one.size(), other.size());
    for (size_t i = 0; i < one.size(); ++i) {
        EXPECT_NEAR(other[i].x, -one[i].y, 1e-12);
        EXPECT_NEAR(other[i].y, one[i].x, 1e-12);
    }
    const Outline backward = parse_outline("0.4 1\n1 0\n0 0\n", "");
    EXPECT_NEAR(backward[2].x, one[0].x, 1e-12);
    EXPECT_NEAR(backward[2].y, one[0].y, 1e-12);
}

TEST(OutlineTest, AllowsCommentsBlanksAndEveryLineEnding) {
    EXPECT_EQ(parse_outline("# a triangle\r\n\r\n  0\t0 \r\n1 0# right\r\n   \t\n-.5 1\n#0 0", "").size(), 3u);
}

TEST(OutlineTest, NamesTheBadLine) {
    for (const char* line :
         {"0.5", "0,5 1", "1 2 3", "x y", "1 nan", "inf 1", "1 1e10", "1 2x", "+1 2", "0x1 2", "1-2"})
        EXPECT_EQ(refusal(std::string("0 0\n\n# here\n") + line + "\n1 1\n"),
                  "star.txt:4: not a corner such as 0.25 0.5")
            << line;
    EXPECT_EQ(refusal("0 0\n1 0\n0 1\n0.5"), "star.txt:4: not a corner such as 0.25 0.5");
    std::string many;
    for (int i = 0; i < 10001; ++i)
        many += "0 1\n";
    EXPECT_EQ(refusal(many), "star.txt:10001: more than 10000 corners");
}

TEST(OutlineTest, RefusesWhatCannotCoverAFrame) {
    EXPECT_EQ(refusal(""), "star.txt: a polygon needs three corners, here are 0");
    EXPECT_EQ(refusal("1 1\n"), "star.txt: a polygon needs three corners, here is 1");
    EXPECT_EQ(refusal("1 1\n2 2\n"), "star.txt: a polygon needs three corners, here are 2");
    EXPECT_NE(refusal("1 1\n1 1\n1 1\n").find("has no area"), std::string::npos);
    EXPECT_NE(refusal("0 0\n1 1\n2 2\n3 3\n").find("has no area"), std::string::npos);
    EXPECT_NE(refusal("0 0\n4 0\n4 1\n1 1\n1 3\n4 3\n4 4\n0 4\n").find("does not enclose"), std::string::npos);
    EXPECT_NE(refusal("0 0\n100 0\n100 1\n0 1\n").find("too near"), std::string::npos);
    // Five sides that cross: by the rule of odd crossings the middle is outside.
    EXPECT_NE(refusal("0 -10\n6 8\n-10 -3\n10 -3\n-6 8\n").find("does not enclose"), std::string::npos);
}

TEST(OutlineTest, GrowsUntilItJustCovers) {
    const Outline square = parse_outline("0 0\n1 0\n1 1\n0 1\n", "");
    EXPECT_NEAR(covering_scale(square, 30, 20), 30 * std::sqrt(2), 1e-9);
    EXPECT_NEAR(covering_scale(square, 30, 50), 50 * std::sqrt(2), 1e-9);
    const Outline diamond = parse_outline("0 -1\n1 0\n0 1\n-1 0\n", "");
    EXPECT_NEAR(covering_scale(diamond, 30, 20), 50, 1e-9);
    // The notch from above reaches down to half the height over the centre of mass.
    const Outline notched = parse_outline("-4 -4\n-0.1 -4\n0 -2\n0.1 -4\n4 -4\n4 4\n-4 4\n", "");
    const double unit = notched[4].x / 4;
    EXPECT_NEAR(covering_scale(notched, 1, 10) * -notched[2].y, 10, 1e-9);
    EXPECT_LT(covering_scale(notched, 10, 1) * unit * 4, 10.1);
}

TEST(OutlineTest, ReadsAFileOrSaysWhyNot) {
    const ScratchFolder folder;
    std::ofstream(folder / "good.txt") << "0 0\n1 0\n0 1\n";
    EXPECT_EQ(read_outline(folder / "good.txt").size(), 3u);
    const auto message = [&](const std::string& name) -> std::string {
        try {
            read_outline(folder / name);
        } catch (const Error& error) {
            EXPECT_EQ(error.exit_code(), kExitRefused);
            return error.what();
        }
        return "accepted";
    };
    std::ofstream(folder / "bad.txt") << "0 0\n1\n";
    std::ofstream(folder / "large.txt") << std::string((1 << 20) + 1, '\n');
    std::filesystem::create_directory(folder / "folder");
    EXPECT_EQ(message("none.txt"), (folder / "none.txt").string() + ": No such file or directory");
    EXPECT_EQ(message("bad.txt"), (folder / "bad.txt").string() + ":2: not a corner such as 0.25 0.5");
    EXPECT_EQ(message("folder"), (folder / "folder").string() + ": is a folder");
    EXPECT_EQ(message("large.txt"), (folder / "large.txt").string() + ": is too large for a list of corners");
}

}  // namespace
}  // namespace zepbmp::transition
