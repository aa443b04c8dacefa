#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zepbmp::transition {

struct OutlinePoint {
    double x;  // to the right
    double y;  // down, in the same unit
};

/// A closed polygon around its centre of mass, which is (0, 0). Its farthest corner is at a distance of 1.
using Outline = std::vector<OutlinePoint>;

/// Reads a polygon: a corner "x y" on each line, in any unit; text behind '#' and empty lines count for nothing. Throws
/// Error (kExitRefused) with file and line when a line is none of these, or when the polygon can't grow over a frame:
/// it needs three corners, an area, and a centre of mass that it encloses with some room.
Outline read_outline(const std::filesystem::path& path);

/// The same of a text; `name` stands in messages.
Outline parse_outline(const std::string& text, const std::string& name);

/// The factor by which an outline grows until it covers a rectangle around its centre.
double covering_scale(const Outline& outline, double half_width, double half_height);

}  // namespace zepbmp::transition
