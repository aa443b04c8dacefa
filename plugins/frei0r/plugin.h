/// \file
/// What an effect tells of itself; plugin.cpp makes the frei0r interface of it.
#pragma once

#include <array>
#include <cinttypes>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <variant>

#include "zepbmp.h"

extern "C" {
#include <frei0r.h>
}

namespace zepbmp::frei0r {

/// One alternative for each type of parameter that the interface has and the effects use.
using Value = std::variant<double, bool, f0r_param_color_t, f0r_param_position_t>;

struct Parameter {
    const char* name;
    const char* explanation;
    Value initial;     ///< its alternative is the parameter's type
    double least = 0;  ///< a number, or a position's coordinate, outside is held to the nearer end
    double most = 1;
};

// Corners and centres may lie outside the frame, whose own coordinates are 0..1.
constexpr double kLeastCoordinate = -1;
constexpr double kMostCoordinate = 2;

/// A place in the frame is three parameters: a position, and a number for each coordinate, for hosts that have no
/// positions or animate only numbers.
constexpr Parameter place(const char* name, const char* explanation, double x, double y) {
    return {name, explanation, f0r_param_position_t{x, y}, kLeastCoordinate, kMostCoordinate};
}
constexpr Parameter coordinate(const char* name, const char* explanation, double value) {
    return {name, explanation, value, kLeastCoordinate, kMostCoordinate};
}

constexpr size_t kMostParameters = 16;

/// The values that an instance's parameters have.
class Values {
public:
    explicit Values(std::span<const Parameter> parameters);

    size_t size() const { return parameters_.size(); }
    /// Takes what a host hands over, held to its range; what is not a number changes nothing.
    void set(size_t index, const void* host_value);
    void get(size_t index, void* host_value) const;

    double number(size_t index) const { return *std::get_if<double>(&values_[index]); }
    bool flag(size_t index) const { return *std::get_if<bool>(&values_[index]); }
    /// As a pixel in memory order red, green, blue, opaque.
    uint32_t color(size_t index) const;
    /// A place, in frame widths and heights. Of its coordinates, the numbers at `across` and the next index count where
    /// they have left their initial values, else those of the position.
    f0r_param_position_t point(size_t position, size_t across) const;

    /// Counts the changes: hosts set every value before every frame, and one that is there already changes nothing.
    uint64_t version() const { return version_; }

private:
    double moved(size_t index, double otherwise) const;

    std::span<const Parameter> parameters_;
    std::array<Value, kMostParameters> values_;
    uint64_t version_ = 0;
};

/// One effect for frames of one size, with what memory it needs. Frames are RGBQ bitmaps of that size whose bytes are
/// red, green, blue, alpha; `out` is none of `in`.
class Effect {
public:
    virtual ~Effect() = default;
    /// False where memory was short: then it is not drawn.
    virtual bool ready() const { return true; }
    virtual void draw(Bitmap& out, std::span<const Bitmap> in, const Values& values) = 0;
};

struct Plugin {
    const char* name;
    const char* explanation;
    int type;  ///< F0R_PLUGIN_TYPE_FILTER (one frame in) or F0R_PLUGIN_TYPE_MIXER2 (two)
    std::span<const Parameter> parameters;
    Effect* (*make)(int width, int height);  ///< with new; null where memory is short
};

template <class T>
Effect* make_effect(int width, int height) {
    return new (std::nothrow) T(width, height);
}

/// The library file's one effect.
extern const Plugin plugin;

struct DestroyBitmap {
    void operator()(Bitmap* bitmap) const { bmp_destroy(bitmap); }
};
using OwnedBitmap = std::unique_ptr<Bitmap, DestroyBitmap>;

inline OwnedBitmap make_bitmap(int width, int height, int32_t format) {
    return OwnedBitmap(bmp_create(width, height, format, BMP_CREATE_ZERO));
}

}  // namespace zepbmp::frei0r
