#include "outline.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

#include "error.h"

namespace zepbmp::transition {

namespace {

constexpr size_t kMostCorners = 10000;
constexpr std::uintmax_t kLargestFile = 1 << 20;
constexpr double kLargestNumber = 1e9;

// Of the farthest corner's distance. An outline that comes nearer to its centre would have to grow so far to cover a
// frame that its corners leave the coordinates that fill_polygon tells apart.
constexpr double kLeastRoom = 1.0 / 32;

constexpr double kLeastArea = 1e-9;  // of an outline whose corners lie within a distance of 1

constexpr std::string_view kBlanks = " \t\r";

/// Takes a number and the blanks around it off the front.
std::optional<double> take_number(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    double value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    const size_t length = end - rest.data();
    if (error != std::errc() || (length < rest.size() && kBlanks.find(rest[length]) == std::string_view::npos))
        return std::nullopt;
    rest.remove_prefix(length);
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    return value;
}

std::optional<OutlinePoint> parse_corner(std::string_view line) {
    const std::optional<double> x = take_number(line);
    const std::optional<double> y = x ? take_number(line) : std::nullopt;
    if (!y || !line.empty() || !(std::abs(*x) <= kLargestNumber) || !(std::abs(*y) <= kLargestNumber))
        return std::nullopt;
    return OutlinePoint{*x, *y};
}

/// Calls use(from, to) for every side.
template <class Use>
void each_side(const Outline& outline, Use use) {
    for (size_t i = 0; i < outline.size(); ++i)
        use(outline[i], outline[(i + 1) % outline.size()]);
}

void move_and_scale(Outline& outline, OutlinePoint origin, double scale) {
    for (OutlinePoint& point : outline)
        point = {(point.x - origin.x) * scale, (point.y - origin.y) * scale};
}

double farthest(const Outline& outline) {
    double distance = 0;
    for (const OutlinePoint& point : outline)
        distance = std::max(distance, std::hypot(point.x, point.y));
    return distance;
}

/// Nothing when the polygon has no area.
std::optional<OutlinePoint> centre_of_mass(const Outline& outline) {
    double area = 0, x = 0, y = 0;
    each_side(outline, [&](const OutlinePoint& from, const OutlinePoint& to) {
        const double part = from.x * to.y - to.x * from.y;
        area += part / 2;
        x += part * (from.x + to.x) / 6;
        y += part * (from.y + to.y) / 6;
    });
    return std::abs(area) > kLeastArea ? std::optional(OutlinePoint{x / area, y / area}) : std::nullopt;
}

/// Whether (0, 0) is inside, by the rule that a ray from it meets an odd number of sides.
bool encloses_centre(const Outline& outline) {
    bool inside = false;
    each_side(outline, [&](const OutlinePoint& from, const OutlinePoint& to) {
        if ((from.y > 0) != (to.y > 0) && from.x + (to.x - from.x) * from.y / (from.y - to.y) > 0)
            inside = !inside;
    });
    return inside;
}

double distance_to_side(const OutlinePoint& from, const OutlinePoint& to) {
    const double dx = to.x - from.x, dy = to.y - from.y;
    const double square = dx * dx + dy * dy;
    const double t = square > 0 ? std::clamp(-(from.x * dx + from.y * dy) / square, 0.0, 1.0) : 0;
    return std::hypot(from.x + t * dx, from.y + t * dy);
}

}  // namespace

Outline parse_outline(const std::string& text, const std::string& name) {
    const auto refuse = [&](const std::string& message) { throw Error(name + message, kExitRefused); };
    Outline outline;
    std::string_view rest = text;
    for (int number = 1; !rest.empty(); ++number) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        line = line.substr(0, line.find('#'));
        if (line.find_first_not_of(kBlanks) == std::string_view::npos)
            continue;
        const std::optional<OutlinePoint> corner = parse_corner(line);
        if (!corner)
            refuse(":" + std::to_string(number) + ": not a corner such as 0.25 0.5");
        if (outline.size() == kMostCorners)
            refuse(":" + std::to_string(number) + ": more than " + std::to_string(kMostCorners) + " corners");
        outline.push_back(*corner);
    }
    if (outline.size() < 3)
        refuse(": a polygon needs three corners, here " + std::string(outline.size() == 1 ? "is " : "are ") +
               std::to_string(outline.size()));

    move_and_scale(outline, OutlinePoint(outline.front()), 1);
    const double size = farthest(outline);
    if (size > 0)
        move_and_scale(outline, {0, 0}, 1 / size);
    const std::optional<OutlinePoint> centre = centre_of_mass(outline);
    if (!centre) {
        refuse(": the polygon has no area");
        return {};
    }
    move_and_scale(outline, *centre, 1);
    move_and_scale(outline, {0, 0}, 1 / farthest(outline));
    double room = 1;
    each_side(outline, [&](const OutlinePoint& from, const OutlinePoint& to) {
        room = std::min(room, distance_to_side(from, to));
    });
    if (!encloses_centre(outline))
        refuse(": the polygon does not enclose its centre of mass, so it cannot grow over the frame");
    if (room < kLeastRoom)
        refuse(": the polygon comes too near to its centre of mass, so it cannot grow over the frame");
    return outline;
}

Outline read_outline(const std::filesystem::path& path) {
    const auto refuse = [&](const std::string& reason) { throw Error(path.string() + ": " + reason, kExitRefused); };
    std::error_code failed;
    if (std::filesystem::is_directory(path, failed))
        refuse("is a folder");
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file)
        refuse(std::strerror(errno));
    std::string text(kLargestFile + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (file.bad())
        refuse("cannot be read");
    text.resize(static_cast<size_t>(file.gcount()));
    if (text.size() > kLargestFile)
        refuse("is too large for a list of corners");
    return parse_outline(text, path.string());
}

// The rectangle holds the points whose measure max(|x| / half_width, |y| / half_height) is at most 1, so the scale
// follows from the side that comes nearest by that measure. Along a side it is a broken line: its least value lies at
// an end, or where the side meets an axis or a diagonal.
double covering_scale(const Outline& outline, double half_width, double half_height) {
    double least = INFINITY;
    each_side(outline, [&](const OutlinePoint& from, const OutlinePoint& to) {
        const double x0 = from.x / half_width, y0 = from.y / half_height;
        const double dx = to.x / half_width - x0, dy = to.y / half_height - y0;
        const auto consider = [&](double t) {
            if (t >= 0 && t <= 1)
                least = std::min(least, std::max(std::abs(x0 + t * dx), std::abs(y0 + t * dy)));
        };
        consider(0);
        consider(1);
        consider(-x0 / dx);
        consider(-y0 / dy);
        consider((x0 - y0) / (dy - dx));
        consider(-(x0 + y0) / (dx + dy));
    });
    return 1 / least;
}

}  // namespace zepbmp::transition
