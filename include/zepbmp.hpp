/// \file
/// zepbmp for C++20: bitmaps that free themselves, types that cannot be mixed up, arguments that are checked.
///
/// Every operation is a function of the C library with its `bmp_` taken off; what it draws stands in zepbmp.h. Before
/// the C function is called, each duty of a caller that zepbmp.h names is checked, and so is what the C function would
/// silently draw nothing for: formats that do not belong together, what is not a number. A broken rule throws an
/// ArgumentError, and nothing has been touched then. std::bad_alloc is thrown where memory is short.
///
/// Three duties are left to the caller: one bitmap is not written by one call while another call uses it; map_rect has
/// some 110 KB of stack; the values in a mask, 0..4096 (A8: 0..128), because larger ones extrapolate.
///
///     #define ZEPBMP_CHECKS 0    before the header is included: nothing is checked
///
/// Sources with different settings can be linked together; a type of the one is no type of the other. Where exceptions
/// are compiled out, a broken rule is told on stderr and ends the program.
///
/// The C record is ::Bitmap, this header's class zepbmp::Bitmap: write the namespace, not `using namespace zepbmp`.
///
/// SPDX-License-Identifier: MIT
#ifndef ZEPBMP_HPP
#define ZEPBMP_HPP

#include <array>
#include <bit>
#include <charconv>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "zepbmp.h"

#ifndef ZEPBMP_CHECKS
#define ZEPBMP_CHECKS 1
#endif

#if defined(__cpp_exceptions) && ZEPBMP_CHECKS
#define ZEPBMP_SETTING checked
#elif defined(__cpp_exceptions)
#define ZEPBMP_SETTING unchecked
#elif ZEPBMP_CHECKS
#define ZEPBMP_SETTING checked_or_ended
#else
#define ZEPBMP_SETTING unchecked_or_ended
#endif

#if defined(__GNUC__)
#define ZEPBMP_COLD [[gnu::cold, gnu::noinline]]
#elif defined(_MSC_VER)
#define ZEPBMP_COLD __declspec(noinline)
#else
#define ZEPBMP_COLD
#endif

namespace zepbmp {
inline namespace ZEPBMP_SETTING {

inline constexpr bool kChecks = ZEPBMP_CHECKS;

inline constexpr int kWeightFull = 4096;   ///< of a PWRW bitmap's weights, and of a level
inline constexpr int kMaskFull = 128;      ///< of an A8 bitmap as a mask
inline constexpr int kStrengthFull = 255;  ///< of an A8 bitmap as the texture of a tint

// ---------------------------------------------------------------- errors

/// A rule that an argument breaks. what() reads
///     map_rect: dx1 is 2000, must lie inside the destination (0..1920)
/// and the parts can be had one by one, as long as the error lives.
class ArgumentError : public std::invalid_argument {
public:
    ArgumentError(const char* operation, const char* argument, std::string_view value, std::string_view rule)
        : std::invalid_argument(text(operation, argument, value, rule)),
          operation_(operation),
          argument_(argument),
          value_bytes_(value.size()) {}

    std::string_view operation() const noexcept { return operation_; }
    std::string_view argument() const noexcept { return argument_; }
    std::string_view value() const noexcept { return std::string_view(what()).substr(value_at(), value_bytes_); }
    std::string_view rule() const noexcept {
        return std::string_view(what()).substr(value_at() + value_bytes_ + kBeforeRule.size());
    }

private:
    static constexpr std::string_view kBeforeArgument = ": ", kBeforeValue = " is ", kBeforeRule = ", ";

    static std::string text(std::string_view operation, std::string_view argument, std::string_view value,
                            std::string_view rule) {
        std::string text;
        for (const std::string_view part :
             {operation, kBeforeArgument, argument, kBeforeValue, value, kBeforeRule, rule})
            text.append(part);
        return text;
    }
    size_t value_at() const noexcept {
        return operation_.size() + kBeforeArgument.size() + argument_.size() + kBeforeValue.size();
    }

    std::string_view operation_, argument_;  // literals
    size_t value_bytes_;
};

/// A bitmap that was moved away, or a null pointer.
class NullArgument : public ArgumentError {
    using ArgumentError::ArgumentError;
};
/// A bitmap's format does not suit the operation, or the other bitmaps.
class WrongFormat : public ArgumentError {
    using ArgumentError::ArgumentError;
};
/// A bitmap's size does not suit the other bitmaps.
class WrongSize : public ArgumentError {
    using ArgumentError::ArgumentError;
};
/// One bitmap in two places where they have to differ.
class NotDistinct : public ArgumentError {
    using ArgumentError::ArgumentError;
};
/// A number beyond its range, or not a number.
class OutOfRange : public ArgumentError {
    using ArgumentError::ArgumentError;
};
/// A choice that does not exist, or not together with the others.
class WrongChoice : public ArgumentError {
    using ArgumentError::ArgumentError;
};

// ---------------------------------------------------------------- choices

enum class Format : uint32_t {
    yuy2 = BMP_FMT_YUY2,    ///< pairs of pixels, Y0 U Y1 V
    rgbq = BMP_FMT_RGBQ,    ///< blue green red and a fourth byte
    pwrw = BMP_FMT_PWRW,    ///< 16-bit weights, 4096 = full
    quad3 = BMP_FMT_QUAD3,  ///< 4 bytes of no fixed meaning; as a depth buffer one float
    quad4 = BMP_FMT_QUAD4,  ///< the same
    quad5 = BMP_FMT_QUAD5,  ///< the same
    rgb8 = BMP_FMT_RGB8,    ///< palette indices
    a8 = BMP_FMT_A8,        ///< masks, 128 = full, or the strengths of a tint, 255 = full
};

/// How the picture was made. Of an interlaced source, map_polygon and map_rect can sample one field. Both interlaced
/// kinds are treated alike; the record's `interlace` tells them apart (1, 2), for the host's own use.
enum class Scan : uint32_t { progressive = 0, interlaced = 2, interlaced_2 = 3 };

/// A new bitmap's bytes. Only bytes that are written before they are read may be left as they come.
enum class Contents : uint32_t { as_allocated = 0, zero = BMP_CREATE_ZERO };

/// The lines that an operation touches.
enum class Field : uint32_t { both = 0, even = BMP_FIELD, odd = BMP_FIELD | BMP_FIELD_ODD };

/// One field of a source.
enum class Parity : uint32_t { even = 0, odd = BMP_FIELD_ODD };

/// draw_rect in an RGB8 bitmap.
enum class RectMode : uint32_t { bit_or = 16, bit_and = 32 };

/// draw_line.
enum class LineMode : uint32_t { set = 0x00, bit_or = 0x10, bit_and = 0x20, bit_xor = 0x30 };

/// What alpha_rect does with the weights that are there.
enum class ShapeMode : uint32_t { add = BMP_SHAPE_ADD, maximum = BMP_SHAPE_MAX };

/// The profile of alpha_circle's soft edge.
enum class Ramp : uint32_t { linear = 0, cosine = BMP_SHAPE_COSINE };

/// How map_polygon samples.
enum class Sampling : uint32_t {
    filtered = 0,                              ///< a box of the source, about as large as a destination pixel
    filtered_antialiased = BMP_MAP_ANTIALIAS,  ///< the same; edges are blended in by coverage
    nearest = BMP_MAP_NO_FILTER,               ///< the nearest pixel; of a tint's strengths a bilinear sample
};

// ---------------------------------------------------------------- checks

namespace detail {

[[noreturn]] ZEPBMP_COLD inline void short_of_memory() {
#if defined(__cpp_exceptions)
    throw std::bad_alloc();
#else
    std::fputs("zepbmp: out of memory\n", stderr);
    std::abort();
#endif
}

template <class Error>
[[noreturn]] ZEPBMP_COLD void refuse(const char* operation, const char* argument, std::string_view value,
                                     std::string_view rule) {
#if defined(__cpp_exceptions)
    throw Error(operation, argument, value, rule);
#else
    std::fprintf(stderr, "zepbmp: %s\n", Error(operation, argument, value, rule).what());
    std::abort();
#endif
}

template <class Number>
std::string text_of(Number value) {
    std::array<char, 64> digits;
    char* const end = digits.data() + digits.size();
    if constexpr (std::floating_point<Number>)
        if (value > -1e9 && value < 1e9 && (value <= -1e-3 || value >= 1e-3))  // 200000, not 2e+05
            return {digits.data(), std::to_chars(digits.data(), end, value, std::chars_format::fixed).ptr};
    return {digits.data(), std::to_chars(digits.data(), end, value).ptr};
}

inline std::string text_of_size(const ::Bitmap& bitmap) {
    return text_of(bitmap.width).append("x").append(text_of(bitmap.height));
}

/// Formats as bits.
using FormatSet = uint32_t;
template <class... Formats>
constexpr FormatSet set_of(Formats... formats) {
    return (... | (FormatSet{1} << static_cast<uint32_t>(formats)));
}
constexpr uint32_t kFormats = 8;

inline std::string_view name_of(uint32_t format) {
    constexpr std::string_view kNames[kFormats] = {"YUY2", "RGBQ", "PWRW", "QUAD3", "QUAD4", "QUAD5", "RGB8", "A8"};
    return format < kFormats ? kNames[format] : "unknown";
}

/// Whatever the compiler may assume about floats.
inline bool is_finite(float value) {
    constexpr uint32_t kExponent = 0x7f800000;
    return (std::bit_cast<uint32_t>(value) & kExponent) != kExponent;
}

/// The rules of one operation's arguments. Each function returns where the rule is kept.
class Check {
public:
    explicit constexpr Check(const char* operation) : operation_(operation) {}

    void exists(const char* argument, const void* pointer) const {
        if constexpr (kChecks)
            if (!pointer) [[unlikely]]
                refuse<NullArgument>(operation_, argument, "null", "must point to something");
    }

    void holds(const char* argument, const ::Bitmap* bitmap) const {
        if constexpr (kChecks)
            if (!bitmap) [[unlikely]]
                refuse<NullArgument>(operation_, argument, "empty", "must hold a bitmap, not one that was moved away");
    }

    /// Null is a bitmap, too: the pointer's owner was moved away.
    void has_format(const char* argument, const ::Bitmap* bitmap, FormatSet formats) const {
        if constexpr (kChecks) {
            holds(argument, bitmap);
            if (bitmap->format >= kFormats || (formats >> bitmap->format & 1) == 0) [[unlikely]]
                refuse_format(argument, bitmap->format, formats);
        }
    }

    void same_format(const char* argument, const ::Bitmap* bitmap, const ::Bitmap* as) const {
        has_format(argument, bitmap, FormatSet{1} << as->format);
    }

    void covers(const char* argument, const ::Bitmap* bitmap, const char* of, const ::Bitmap* other) const {
        if constexpr (kChecks)
            if (bitmap->width < other->width || bitmap->height < other->height) [[unlikely]]
                refuse_size(argument, bitmap, "must be at least as large as ", of, other);
    }

    void same_size(const char* argument, const ::Bitmap* bitmap, const char* of, const ::Bitmap* other) const {
        if constexpr (kChecks)
            if (bitmap->width != other->width || bitmap->height != other->height) [[unlikely]]
                refuse_size(argument, bitmap, "must be as large as ", of, other);
    }

    void same_pixel_bytes(const char* argument, const ::Bitmap* bitmap, const ::Bitmap* other) const {
        if constexpr (kChecks)
            if (bitmap->bytes_per_pixel != other->bytes_per_pixel) [[unlikely]]
                refuse<WrongFormat>(operation_, argument, name_of(bitmap->format),
                                    std::string("must have as many bytes a pixel as ").append(name_of(other->format)));
    }

    void distinct(const char* argument, const ::Bitmap* bitmap, const char* of, const ::Bitmap* other) const {
        if constexpr (kChecks)
            if (bitmap == other) [[unlikely]]
                refuse<NotDistinct>(operation_, argument, std::string("the same bitmap as ").append(of),
                                    "must be another one");
    }

    /// `low..high`, both ends included; `where` says what lies there.
    template <std::integral Number>
    constexpr void within(const char* argument, Number value, Number low, Number high, const char* where = "") const {
        if constexpr (kChecks)
            if (value < low || value > high) [[unlikely]]
                refuse_range(argument, text_of(value), text_of(low), text_of(high), where);
    }
    void within(const char* argument, float value, double low, double high, const char* where = "") const {
        if constexpr (kChecks)
            if (!is_finite(value) || value < low || value > high) [[unlikely]]
                refuse_range(argument, text_of(value), text_of(low), text_of(high), where);
    }

    void finite(const char* argument, float value) const {
        if constexpr (kChecks)
            if (!is_finite(value)) [[unlikely]]
                refuse<OutOfRange>(operation_, argument, text_of(value), "must be finite");
    }

    /// A finite number.
    void above(const char* argument, float value, float limit) const {
        if constexpr (kChecks)
            if (!is_finite(value) || !(value > limit)) [[unlikely]]
                refuse<OutOfRange>(operation_, argument, text_of(value),
                                   std::string("must be a finite number above ").append(text_of(limit)));
    }

    /// The choice is one of those given; a cast can make others.
    template <class Choice>
    void one_of(const char* argument, Choice choice, std::same_as<Choice> auto... choices) const {
        if constexpr (kChecks)
            if ((... && (choice != choices))) [[unlikely]]
                refuse_choice(argument, static_cast<uint32_t>(choice));
    }
    void valid(Field field) const { one_of("field", field, Field::both, Field::even, Field::odd); }

    void require(bool kept, const char* argument, const char* value, const char* rule) const {
        if constexpr (kChecks)
            if (!kept) [[unlikely]]
                refuse<WrongChoice>(operation_, argument, value, rule);
    }

private:
    [[noreturn]] ZEPBMP_COLD void refuse_format(const char* argument, uint32_t format, FormatSet formats) const {
        std::string rule = "must be ";
        const char* separator = "";
        for (uint32_t each = 0; each < kFormats; ++each)
            if (formats >> each & 1) {
                rule.append(separator).append(name_of(each));
                separator = " or ";
            }
        refuse<WrongFormat>(operation_, argument, name_of(format), rule);
    }

    [[noreturn]] ZEPBMP_COLD void refuse_size(const char* argument, const ::Bitmap* bitmap, std::string_view rule,
                                              const char* of, const ::Bitmap* other) const {
        refuse<WrongSize>(operation_, argument, text_of_size(*bitmap),
                          std::string(rule).append(of).append(" (").append(text_of_size(*other)).append(")"));
    }

    [[noreturn]] ZEPBMP_COLD void refuse_range(const char* argument, std::string_view value, std::string_view low,
                                               std::string_view high, std::string_view where) const {
        std::string rule = "must lie ";
        rule.append(where.empty() ? "within " : "inside ").append(where).append(where.empty() ? "" : " (");
        rule.append(low).append("..").append(high).append(where.empty() ? "" : ")");
        refuse<OutOfRange>(operation_, argument, value, rule);
    }

    [[noreturn]] ZEPBMP_COLD void refuse_choice(const char* argument, uint32_t choice) const {
        refuse<WrongChoice>(operation_, argument, text_of(choice), "must be one of the enumeration's values");
    }

    const char* operation_;
};

template <class Choice>
constexpr uint32_t bits(Choice choice) {
    return static_cast<uint32_t>(choice);
}

/// A whole number of 0..most that is no other kind of number. It is made of any integer; a fraction does not compile.
template <class Kind>
class Number {
public:
    explicit constexpr Number(std::integral auto value) : value_(static_cast<int>(value)) {
        using Wide = decltype(+value);  // holds `most`
        Check(Kind::kName).within("value", Wide{value}, Wide{0}, Wide{Kind::kMost});
    }
    constexpr int value() const { return value_; }
    friend constexpr auto operator<=>(Number, Number) = default;

private:
    int value_;
};

struct LevelKind {
    static constexpr const char* kName = "Level";
    static constexpr int kMost = kWeightFull;
};
struct WeightKind {
    static constexpr const char* kName = "Weight";
    static constexpr int kMost = kWeightFull;
};
struct PaletteIndexKind {
    static constexpr const char* kName = "PaletteIndex";
    static constexpr int kMost = 255;
};

}  // namespace detail

// ---------------------------------------------------------------- values

/// How far a whole call goes toward its second source, or toward its colour: 0..4096.
using Level = detail::Number<detail::LevelKind>;

/// A pixel of a weight map: 0..4096.
using Weight = detail::Number<detail::WeightKind>;

/// A pixel of an RGB8 bitmap: 0..255.
using PaletteIndex = detail::Number<detail::PaletteIndexKind>;

/// A pixel of an RGBQ bitmap, and its colour.
struct Rgbq {
    uint8_t blue = 0, green = 0, red = 0, fourth = 0;

    constexpr uint32_t packed() const {
        return blue | uint32_t{green} << 8 | uint32_t{red} << 16 | uint32_t{fourth} << 24;
    }
    static constexpr Rgbq unpacked(uint32_t word) {
        return {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word >> 16),
                static_cast<uint8_t>(word >> 24)};
    }
    friend constexpr bool operator==(const Rgbq&, const Rgbq&) = default;
};

/// The colour of a YUY2 bitmap's pixels; as it is, black in the full range.
struct Yuv {
    uint8_t y = 0, u = 128, v = 128;

    constexpr uint32_t packed() const { return uint32_t{y} << 16 | uint32_t{u} << 8 | v; }
    static constexpr Yuv unpacked(uint32_t word) {
        return {static_cast<uint8_t>(word >> 16), static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word)};
    }
    friend constexpr bool operator==(const Yuv&, const Yuv&) = default;
};

/// A Windows colour reference, 0x00BBGGRR.
struct ColorRef {
    uint8_t red = 0, green = 0, blue = 0;

    constexpr uint32_t packed() const { return red | uint32_t{green} << 8 | uint32_t{blue} << 16; }
    static constexpr ColorRef unpacked(uint32_t word) {
        return {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word >> 16)};
    }
    friend constexpr bool operator==(const ColorRef&, const ColorRef&) = default;
};

/// Two pixels of a YUY2 bitmap.
struct Yuy2Pair {
    uint8_t y0 = 0, u = 128, y1 = 0, v = 128;
    friend constexpr bool operator==(const Yuy2Pair&, const Yuy2Pair&) = default;
};

/// A colour that a bitmap's pixels can have.
template <class T>
concept PixelColor = std::same_as<T, Yuv> || std::same_as<T, Rgbq>;

/// In pixels and lines.
struct Point {
    int x = 0, y = 0;
};
struct Size {
    int width = 0, height = 0;
};
/// Columns left..right-1 of lines top..bottom-1.
struct Box {
    int left = 0, top = 0, right = 0, bottom = 0;
};

/// Positions between pixels, counted from the top left corner of pixel (0, 0).
struct FloatRect {
    float x = 0, y = 0, width = 0, height = 0;
};
struct FloatBox {
    float x0 = 0, y0 = 0, x1 = 0, y1 = 0;  ///< ends exclusive
};
struct CornerRadii {
    float x = 0, y = 0;
};
struct Circle {
    float cx = 0, cy = 0;  ///< pixels; line y covers y * aspect .. (y + 1) * aspect
    float radius = 0;      ///< outer one
    float feather = 0;     ///< width of the soft edge inside the radius; 0 or less: a hard edge, anti-aliased
    float aspect = 1;      ///< height of a line in pixels
};

/// A polygon's corner: u, v in the source, w = 1 / distance, x, y in the destination.
using Vertex = ::BmpVertex;

// ---------------------------------------------------------------- bitmaps

namespace detail {

template <Format F>
struct PixelType;
template <>
struct PixelType<Format::yuy2> {
    using Type = Yuy2Pair;
};
template <>
struct PixelType<Format::rgbq> {
    using Type = Rgbq;
};
template <>
struct PixelType<Format::pwrw> {
    using Type = uint16_t;
};
template <Format F>
requires(F == Format::quad3 || F == Format::quad4 || F == Format::quad5) struct PixelType<F> {
    using Type = uint32_t;
};
template <Format F>
requires(F == Format::rgb8 || F == Format::a8) struct PixelType<F> {
    using Type = uint8_t;
};

static_assert(sizeof(Rgbq) == 4 && sizeof(Yuy2Pair) == 4 && sizeof(Vertex) == 20);

constexpr FormatSet kColors = set_of(Format::yuy2, Format::rgbq);
constexpr FormatSet kQuads = set_of(Format::quad3, Format::quad4, Format::quad5);
constexpr FormatSet kMasks = set_of(Format::pwrw, Format::a8);

template <PixelColor Color>
constexpr FormatSet kFormatOf = set_of(std::same_as<Color, Yuv> ? Format::yuy2 : Format::rgbq);

constexpr int64_t bytes_per_pixel(Format format) {
    switch (format) {
        case Format::yuy2:
        case Format::pwrw: return 2;
        case Format::rgb8:
        case Format::a8: return 1;
        default: return 4;
    }
}

}  // namespace detail

/// What a row of a bitmap consists of: Yuy2Pair, Rgbq, uint16_t (PWRW), uint32_t (QUAD...) or uint8_t (RGB8, A8).
template <Format F>
using Pixel = typename detail::PixelType<F>::Type;

/// Owns a bitmap. Moved away, it is empty: it may be destroyed, assigned to, and asked whether it is.
class Bitmap {
public:
    /// A line's bytes stay below 2^31 - 15; in a 32-bit program, all lines' with their padding below 2^32 - 64.
    Bitmap(int width, int height, Format format, Scan scan = Scan::progressive, Contents contents = Contents::zero) {
        const detail::Check check("Bitmap");
        check.within("format", detail::bits(format), uint32_t{0}, detail::kFormats - 1);
        check_size(check, width, height, format);
        check.one_of("scan", scan, Scan::progressive, Scan::interlaced, Scan::interlaced_2);
        check.one_of("contents", contents, Contents::as_allocated, Contents::zero);
        record_.reset(
            bmp_create(width, height, static_cast<int32_t>(format), detail::bits(scan) | detail::bits(contents)));
        if (!record_) [[unlikely]]
            detail::short_of_memory();
    }

    /// Takes over what bmp_create made.
    static Bitmap adopt(::Bitmap* record) {
        const detail::Check check("Bitmap::adopt");
        check.exists("record", record);
        check.has_format("record", record, (detail::FormatSet{1} << detail::kFormats) - 1);
        check_size(check, record->width, record->height, static_cast<Format>(record->format));
        return Bitmap(record);
    }
    /// Gives up ownership: the caller calls bmp_destroy.
    [[nodiscard]] ::Bitmap* release() noexcept { return record_.release(); }

    bool empty() const noexcept { return !record_; }

    int width() const { return held("width").width; }
    int height() const { return held("height").height; }
    int pitch() const { return held("pitch").pitch; }  ///< bytes from a line to the next
    int bytes_per_pixel() const { return held("bytes_per_pixel").bytes_per_pixel; }
    Format format() const { return static_cast<Format>(held("format").format); }
    bool is_interlaced() const { return (held("is_interlaced").create_flags & detail::bits(Scan::interlaced)) != 0; }

    /// The C record, for calls of one's own; null where empty.
    ::Bitmap* record() noexcept { return record_.get(); }
    const ::Bitmap* record() const noexcept { return record_.get(); }

    /// A line's pixels. F is the bitmap's format. Of a YUY2 bitmap of odd width the last pair's second pixel lies in
    /// the padding.
    template <Format F>
    std::span<Pixel<F>> row(int y) {
        return row_of<Pixel<F>>("row", detail::set_of(F), y, F == Format::yuy2 ? 2 : 1);
    }
    template <Format F>
    std::span<const Pixel<F>> row(int y) const {
        return row_of<const Pixel<F>>("row", detail::set_of(F), y, F == Format::yuy2 ? 2 : 1);
    }
    /// The same of a depth buffer (QUAD3, QUAD4, QUAD5).
    std::span<float> depth_row(int y) { return row_of<float>("depth_row", detail::kQuads, y, 1); }
    std::span<const float> depth_row(int y) const { return row_of<const float>("depth_row", detail::kQuads, y, 1); }

    /// All bytes of a line, padding included, whatever the format.
    std::span<uint8_t> line(int y) { return {line_at("line", y), static_cast<size_t>(record_->pitch)}; }
    std::span<const uint8_t> line(int y) const { return {line_at("line", y), static_cast<size_t>(record_->pitch)}; }

    /// The first byte of pixel (x, y).
    uint8_t* pointer(int x, int y) { return pixel_at("pointer", x, y); }
    const uint8_t* pointer(int x, int y) const { return pixel_at("pointer", x, y); }

private:
    struct Destroy {
        void operator()(::Bitmap* record) const noexcept { bmp_destroy(record); }
    };

    explicit Bitmap(::Bitmap* record) noexcept : record_(record) {}

    static void check_size(const detail::Check& check, int width, int height, Format format) {
        if constexpr (kChecks) {
            constexpr int64_t kPadding = 15;
            const int64_t bytes = detail::bytes_per_pixel(format);
            check.within("width", width, 0, static_cast<int>((INT32_MAX - kPadding) / bytes));
            int64_t lines = INT32_MAX;
            if constexpr (sizeof(void*) == 4) {
                const int64_t pitch = (bytes * width + kPadding) & ~kPadding, most = (int64_t{1} << 32) - 64 - 1;
                if (pitch > 0 && most / pitch < lines)
                    lines = most / pitch;
            }
            check.within("height", height, 0, static_cast<int>(lines));
        }
    }

    const ::Bitmap& held(const char* operation) const {
        detail::Check(operation).holds("bitmap", record_.get());
        return *record_;
    }
    uint8_t* pixel_at(const char* operation, int x, int y) const {
        const detail::Check check(operation);
        check.holds("bitmap", record_.get());
        check.within("x", x, 0, record_->width - 1, "the bitmap");
        check.within("y", y, 0, record_->height - 1, "the bitmap");
        return bmp_pointer(record_.get(), x, y);
    }
    uint8_t* line_at(const char* operation, int y) const {
        const detail::Check check(operation);
        check.holds("bitmap", record_.get());
        check.within("y", y, 0, record_->height - 1, "the bitmap");
        return record_->pixels + static_cast<ptrdiff_t>(y) * record_->pitch;
    }
    template <class Element>
    std::span<Element> row_of(const char* operation, detail::FormatSet formats, int y, int pixels) const {
        detail::Check(operation).has_format("bitmap", record_.get(), formats);
        uint8_t* const line = line_at(operation, y);
        return {reinterpret_cast<Element*>(line), static_cast<size_t>((int64_t{record_->width} + pixels - 1) / pixels)};
    }

    std::unique_ptr<::Bitmap, Destroy> record_;
};

// ---------------------------------------------------------------- fills, copies, blits

/// Any format.
inline void clear(Bitmap& bitmap, Field field = Field::both) {
    const detail::Check check("clear");
    check.holds("bitmap", bitmap.record());
    check.valid(field);
    bmp_clear(bitmap.record(), detail::bits(field));
}

/// Two bitmaps of one size, with as many bytes a pixel; they may be the same one.
inline void copy(Bitmap& destination, const Bitmap& source, Field field = Field::both) {
    const detail::Check check("copy");
    check.holds("destination", destination.record());
    check.holds("source", source.record());
    check.same_pixel_bytes("source", source.record(), destination.record());
    check.same_size("source", source.record(), "destination", destination.record());
    check.valid(field);
    bmp_copy(destination.record(), source.record(), detail::bits(field));
}

/// Copies a rectangle, clipped to both bitmaps, between bitmaps with as many bytes a pixel. Its edges fit 32 bits.
inline void blt(Bitmap& destination, Point dest, Size size, const Bitmap& source, Point src,
                Field field = Field::both) {
    const detail::Check check("blt");
    check.holds("destination", destination.record());
    check.holds("source", source.record());
    check.same_pixel_bytes("source", source.record(), destination.record());
    check.valid(field);
    constexpr int64_t kLeast = INT32_MIN, kMost = INT32_MAX;
    check.within("dest_x + width", int64_t{dest.x} + size.width, kLeast, kMost);
    check.within("dest_y + height", int64_t{dest.y} + size.height, kLeast, kMost);
    check.within("src_x + width", int64_t{src.x} + size.width, kLeast, kMost);
    check.within("src_y + height", int64_t{src.y} + size.height, kLeast, kMost);
    bmp_blt(destination.record(), dest.x, dest.y, size.width, size.height, source.record(), src.x, src.y,
            detail::bits(field));
}

/// Rebuilds a frame from one of its fields; in place, or from a bitmap at least as large, with as many bytes a pixel.
inline void interporate(Bitmap& destination, const Bitmap& source, Parity field) {
    const detail::Check check("interporate");
    check.holds("destination", destination.record());
    check.holds("source", source.record());
    check.same_pixel_bytes("source", source.record(), destination.record());
    check.covers("source", source.record(), "destination", destination.record());
    check.one_of("field", field, Parity::even, Parity::odd);
    bmp_interporate(destination.record(), source.record(), detail::bits(field));
}

// ---------------------------------------------------------------- drawing, colours

/// Fills a box, clipped to an RGBQ bitmap.
inline void draw_rect(Bitmap& bitmap, Box box, Rgbq color) {
    const detail::Check check("draw_rect");
    check.has_format("bitmap", bitmap.record(), detail::set_of(Format::rgbq));
    bmp_draw_rect(bitmap.record(), box.left, box.top, box.right, box.bottom, color.packed(), 0);
}

/// The same in a PWRW bitmap.
inline void draw_rect(Bitmap& bitmap, Box box, Weight weight) {
    const detail::Check check("draw_rect");
    check.has_format("bitmap", bitmap.record(), detail::set_of(Format::pwrw));
    bmp_draw_rect(bitmap.record(), box.left, box.top, box.right, box.bottom, static_cast<uint32_t>(weight.value()), 0);
}

/// Combines the indices of an RGB8 bitmap's box with `value`.
inline void draw_rect(Bitmap& bitmap, Box box, PaletteIndex value, RectMode mode) {
    const detail::Check check("draw_rect");
    check.has_format("bitmap", bitmap.record(), detail::set_of(Format::rgb8));
    check.one_of("mode", mode, RectMode::bit_or, RectMode::bit_and);
    bmp_draw_rect(bitmap.record(), box.left, box.top, box.right, box.bottom, static_cast<uint32_t>(value.value()),
                  detail::bits(mode));
}

/// A line in an RGB8 bitmap, without its last pixel. Both ends lie inside the bitmap.
inline void draw_line(Bitmap& bitmap, Point from, Point to, PaletteIndex value, LineMode mode = LineMode::set) {
    const detail::Check check("draw_line");
    check.has_format("bitmap", bitmap.record(), detail::set_of(Format::rgb8));
    check.one_of("mode", mode, LineMode::set, LineMode::bit_or, LineMode::bit_and, LineMode::bit_xor);
    const int right = bitmap.record()->width - 1, bottom = bitmap.record()->height - 1;
    check.within("x0", from.x, 0, right, "the bitmap");
    check.within("y0", from.y, 0, bottom, "the bitmap");
    check.within("x1", to.x, 0, right, "the bitmap");
    check.within("y1", to.y, 0, bottom, "the bitmap");
    bmp_draw_line(bitmap.record(), from.x, from.y, to.x, to.y, static_cast<uint32_t>(value.value()),
                  detail::bits(mode));
}

inline Rgbq translate_color(ColorRef color) { return Rgbq::unpacked(bmp_translate_color(nullptr, color.packed())); }
inline ColorRef translate_color(Rgbq color) { return ColorRef::unpacked(bmp_translate_color(nullptr, color.packed())); }

// ---------------------------------------------------------------- palette, display

/// Stores a colour in an RGB8 bitmap's colour table.
inline void set_palette(Bitmap& bitmap, PaletteIndex index, Rgbq color) {
    const detail::Check check("set_palette");
    check.has_format("bitmap", bitmap.record(), detail::set_of(Format::rgb8));
    bmp_set_palette(bitmap.record(), index.value(), color.packed());
    if (!bitmap.record()->dib_info) [[unlikely]]
        detail::short_of_memory();
}

/// Shows a bitmap on a Windows device context, and returns the number of lines that Windows has set. Other systems have
/// no device context: 0.
inline int display(void* device_context, Point dest, Size size, Bitmap& bitmap, int src_x = 0, int start_line = 0) {
    const detail::Check check("display");
#if defined(_WIN32)
    check.exists("device_context", device_context);
#endif
    check.holds("bitmap", bitmap.record());
    check.within("width", size.width, 0, INT32_MAX);
    check.within("height", size.height, 0, INT32_MAX);
    check.within("src_x", src_x, 0, bitmap.record()->width, "the bitmap");
    check.within("start_line", start_line, 0, INT32_MAX);
    const int lines =
        bmp_display(device_context, dest.x, dest.y, size.width, size.height, bitmap.record(), src_x, start_line);
    if (!bitmap.record()->dib_info) [[unlikely]]
        detail::short_of_memory();
    return lines;
}

// ---------------------------------------------------------------- composition

namespace detail {

/// A source of a composition has the destination's format and at least its size.
inline void check_source(const Check& check, const char* argument, const Bitmap& source, const Bitmap& dest) {
    check.same_format(argument, source.record(), dest.record());
    check.covers(argument, source.record(), "dest", dest.record());
}

inline void check_mask(const Check& check, const char* argument, const Bitmap& mask, FormatSet formats,
                       const Bitmap& dest) {
    check.has_format(argument, mask.record(), formats);
    check.covers(argument, mask.record(), "dest", dest.record());
}

}  // namespace detail

/// Mixes two YUY2 or RGBQ frames under a PWRW or A8 mask: src1 where it is 0, src2 where it is full. dest may be one of
/// them.
inline void compose(Bitmap& dest, const Bitmap& src1, const Bitmap& src2, const Bitmap& mask,
                    Field field = Field::both) {
    const detail::Check check("compose");
    check.has_format("dest", dest.record(), detail::kColors);
    detail::check_source(check, "src1", src1, dest);
    detail::check_source(check, "src2", src2, dest);
    detail::check_mask(check, "mask", mask, detail::kMasks, dest);
    check.valid(field);
    bmp_compose(dest.record(), src1.record(), src2.record(), mask.record(), detail::bits(field));
}

/// The same at one level for all pixels, and in any format.
inline void compose(Bitmap& dest, const Bitmap& src1, const Bitmap& src2, Level level, Field field = Field::both) {
    const detail::Check check("compose");
    check.holds("dest", dest.record());
    detail::check_source(check, "src1", src1, dest);
    detail::check_source(check, "src2", src2, dest);
    check.valid(field);
    bmp_compose(dest.record(), src1.record(), src2.record(), BMP_INTEGER(level.value()),
                detail::bits(field) | BMP_COMPOSE_LEVEL);
}

/// Mixes two frames and, where the two PWRW masks differ, a colour: src1 where both are 0, src2 where both are full.
template <PixelColor Color>
void compose_color(Bitmap& dest, const Bitmap& src1, const Bitmap& src2, const Bitmap& mask1, const Bitmap& mask2,
                   Color color, Field field = Field::both) {
    const detail::Check check("compose_color");
    check.has_format("dest", dest.record(), detail::kFormatOf<Color>);
    detail::check_source(check, "src1", src1, dest);
    detail::check_source(check, "src2", src2, dest);
    detail::check_mask(check, "mask1", mask1, detail::set_of(Format::pwrw), dest);
    detail::check_mask(check, "mask2", mask2, detail::set_of(Format::pwrw), dest);
    check.valid(field);
    bmp_compose_color(dest.record(), src1.record(), src2.record(), mask1.record(), mask2.record(), color.packed(),
                      detail::bits(field));
}

/// Mixes a colour with a frame: the colour where the PWRW mask is 0, the frame where it is full.
template <PixelColor Color>
void compose_color(Bitmap& dest, const Bitmap& src, const Bitmap& mask, Color color, Field field = Field::both) {
    const detail::Check check("compose_color");
    check.has_format("dest", dest.record(), detail::kFormatOf<Color>);
    detail::check_source(check, "src", src, dest);
    detail::check_mask(check, "mask", mask, detail::set_of(Format::pwrw), dest);
    check.valid(field);
    bmp_compose_color(dest.record(), src.record(), nullptr, mask.record(), nullptr, color.packed(),
                      detail::bits(field));
}

// ---------------------------------------------------------------- shapes in weight maps

namespace detail {

/// From here on nothing would be drawn.
constexpr double kShapeLimit = 1 << 25;

inline void check_shape(const Check& check, const Bitmap& bitmap, const FloatRect& rect, Field field) {
    check.has_format("bitmap", bitmap.record(), set_of(Format::pwrw));
    check.valid(field);
    for (const auto& [argument, value] : {std::pair{"x", rect.x}, {"y", rect.y}})
        check.within(argument, value, -kShapeLimit, kShapeLimit);
    for (const auto& [argument, value] : {std::pair{"width", rect.width}, {"height", rect.height}})
        check.within(argument, value, 0, kShapeLimit);
}

}  // namespace detail

/// A rectangle with edges at 1/64 pixel in a PWRW bitmap.
inline void alpha_rect(Bitmap& bitmap, const FloatRect& rect, ShapeMode mode, Field field = Field::both) {
    const detail::Check check("alpha_rect");
    detail::check_shape(check, bitmap, rect, field);
    check.one_of("mode", mode, ShapeMode::add, ShapeMode::maximum);
    bmp_alpha_rect(bitmap.record(), rect.x, rect.y, rect.width, rect.height, 0, 0,
                   detail::bits(field) | detail::bits(mode));
}

/// The same with elliptical corners; the larger weight is kept.
inline void alpha_rect(Bitmap& bitmap, const FloatRect& rect, CornerRadii radii, Field field = Field::both) {
    const detail::Check check("alpha_rect");
    detail::check_shape(check, bitmap, rect, field);
    check.within("radius_x", radii.x, 0, detail::kShapeLimit);
    check.within("radius_y", radii.y, 0, detail::kShapeLimit);
    bmp_alpha_rect(bitmap.record(), rect.x, rect.y, rect.width, rect.height, radii.x, radii.y,
                   detail::bits(field) | BMP_SHAPE_ELLIPTIC | BMP_SHAPE_ELLIPTIC_PLAIN);
}

/// A disc in a PWRW bitmap, and 0 around it. A radius of 0 or less leaves only the 0.
inline void alpha_circle(Bitmap& bitmap, const Circle& circle, Ramp ramp = Ramp::linear, Field field = Field::both) {
    const detail::Check check("alpha_circle");
    check.has_format("bitmap", bitmap.record(), detail::set_of(Format::pwrw));
    check.valid(field);
    check.one_of("ramp", ramp, Ramp::linear, Ramp::cosine);
    constexpr double kLimit = 1 << 30;  // centre and radius together stay below 2^31
    check.within("cx", circle.cx, -kLimit, kLimit);
    check.within("cy", circle.cy, -kLimit, kLimit);
    check.within("radius", circle.radius, -kLimit, kLimit);
    check.finite("feather", circle.feather);
    check.above("aspect", circle.aspect, 0);
    bmp_alpha_circle(bitmap.record(), circle.cx, circle.cy, circle.radius, circle.feather, circle.aspect,
                     detail::bits(field) | detail::bits(ramp));
}

// ---------------------------------------------------------------- polygons

/// How far from 0 the x and y of a polygon's corner may lie; with anti-aliased edges y only to the second one.
inline constexpr float kPositionLimit = 1 << 19, kAntialiasedLineLimit = (1 << 19) / 3;

struct PolygonOptions {
    Field field = Field::both;
    Parity sampled = Parity::even;  ///< of an interlaced source, where both fields are drawn; else the drawn one
    Sampling sampling = Sampling::filtered;
    Bitmap* coverage = nullptr;  ///< becomes full where something is drawn: A8 or PWRW, at least as large as dst
    Bitmap* depth = nullptr;     ///< a float for each pixel, larger = nearer: QUAD3..QUAD5, at least as large as dst
};

struct FillOptions {
    Field field = Field::both;
    Bitmap* coverage = nullptr;  ///< as for PolygonOptions
};

namespace detail {

inline void check_vertices(const Check& check, std::span<const Vertex> vertices, bool sub_lines) {
    if constexpr (kChecks) {
        check.within("count", vertices.size(), size_t{0}, size_t{INT32_MAX});
        const double most_y = sub_lines ? kAntialiasedLineLimit : kPositionLimit;
        for (const Vertex& vertex : vertices) {
            check.within("x", vertex.x, -kPositionLimit, kPositionLimit);
            check.within("y", vertex.y, -most_y, most_y);
            check.finite("u", vertex.u);
            check.finite("v", vertex.v);
            check.above("w", vertex.w, 0);
        }
    }
}

inline void check_coverage(const Check& check, const Bitmap* coverage, const Bitmap& dst) {
    if (!coverage)
        return;
    check.has_format("coverage", coverage->record(), kMasks);
    check.covers("coverage", coverage->record(), "dst", dst.record());
    check.distinct("coverage", coverage->record(), "dst", dst.record());
}

inline ::Bitmap* record_of(Bitmap* bitmap) { return bitmap ? bitmap->record() : nullptr; }

inline void check_options(const Check& check, const Bitmap& dst, const Bitmap& source, const PolygonOptions& options) {
    check.distinct("source", source.record(), "dst", dst.record());
    check_coverage(check, options.coverage, dst);
    if (options.coverage)
        check.distinct("coverage", options.coverage->record(), "source", source.record());
    check.valid(options.field);
    check.one_of("sampled", options.sampled, Parity::even, Parity::odd);
    check.one_of("sampling", options.sampling, Sampling::filtered, Sampling::filtered_antialiased, Sampling::nearest);
}

inline uint32_t flags_of(const PolygonOptions& options) {
    const uint32_t sampled = options.field == Field::both ? bits(options.sampled) : 0;
    return bits(options.field) | sampled | bits(options.sampling);
}

}  // namespace detail

/// Maps a source onto a polygon of a destination of its format: YUY2, RGBQ, or, without depth, PWRW.
inline void map_polygon(Bitmap& dst, const Bitmap& source, std::span<const Vertex> vertices,
                        const PolygonOptions& options = {}) {
    const detail::Check check("map_polygon");
    check.has_format("dst", dst.record(), detail::kColors | (options.depth ? 0 : detail::set_of(Format::pwrw)));
    check.same_format("source", source.record(), dst.record());
    detail::check_options(check, dst, source, options);
    const bool antialiased = options.sampling == Sampling::filtered_antialiased;
    if (options.depth) {
        check.has_format("depth", options.depth->record(), detail::kQuads);
        check.covers("depth", options.depth->record(), "dst", dst.record());
        check.require(!antialiased, "sampling", "filtered_antialiased",
                      "must be filtered or nearest with a depth buffer");
    }
    detail::check_vertices(check, vertices, antialiased);
    bmp_map_polygon(dst.record(), detail::record_of(options.coverage), detail::record_of(options.depth),
                    source.record(), nullptr, vertices.data(), static_cast<int32_t>(vertices.size()),
                    detail::flags_of(options));
}

/// Tints a polygon of a YUY2 or RGBQ destination through an A8 source, whose pixels say how far the picture goes toward
/// the colour; without depth, not anti-aliased.
template <PixelColor Color>
void tint_polygon(Bitmap& dst, const Bitmap& strength, Color color, std::span<const Vertex> vertices,
                  const PolygonOptions& options = {}) {
    const detail::Check check("tint_polygon");
    check.has_format("dst", dst.record(), detail::kFormatOf<Color>);
    check.has_format("strength", strength.record(), detail::set_of(Format::a8));
    detail::check_options(check, dst, strength, options);
    check.require(!options.depth, "depth", "a bitmap", "must be null: tints have no depth");
    check.require(options.sampling != Sampling::filtered_antialiased, "sampling", "filtered_antialiased",
                  "must be filtered or nearest");
    detail::check_vertices(check, vertices, false);
    bmp_map_polygon(dst.record(), detail::record_of(options.coverage), nullptr, BMP_INTEGER(color.packed()),
                    strength.record(), vertices.data(), static_cast<int32_t>(vertices.size()),
                    detail::flags_of(options) | BMP_MAP_EXTRA);
}

/// Fills a polygon of a YUY2 or RGBQ destination with a colour, anti-aliased.
template <PixelColor Color>
void fill_polygon(Bitmap& dst, Color color, Level level, std::span<const Vertex> vertices,
                  const FillOptions& options = {}) {
    const detail::Check check("fill_polygon");
    check.has_format("dst", dst.record(), detail::kFormatOf<Color>);
    detail::check_coverage(check, options.coverage, dst);
    check.valid(options.field);
    detail::check_vertices(check, vertices, true);
    bmp_map_polygon(dst.record(), detail::record_of(options.coverage), nullptr, BMP_INTEGER(color.packed()),
                    BMP_INTEGER(level.value()), vertices.data(), static_cast<int32_t>(vertices.size()),
                    detail::bits(options.field) | BMP_MAP_EXTRA | BMP_MAP_SOLID);
}

// ---------------------------------------------------------------- rectangles

namespace detail {

constexpr double kColumnLimit = 1 << 18, kLineLimit = 1 << 19;

/// Ends lie inside the bitmap; starts may lie outside.
inline void check_side(const Check& check, const char* start_name, float start, const char* end_name, float end,
                       double limit, int size, const char* where) {
    check.within(start_name, start, -limit, limit);
    check.within(end_name, end, 0, size < limit ? size : limit, where);
}

inline void check_rects(const Check& check, const Bitmap& dest, const FloatBox& to, const Bitmap& src,
                        const FloatBox& from, Field field) {
    check.same_format("src", src.record(), dest.record());
    check.distinct("src", src.record(), "dest", dest.record());
    check.valid(field);
    const ::Bitmap &d = *dest.record(), &s = *src.record();
    check_side(check, "dx0", to.x0, "dx1", to.x1, kColumnLimit, d.width, "the destination");
    check_side(check, "dy0", to.y0, "dy1", to.y1, kLineLimit, d.height, "the destination");
    check_side(check, "sx0", from.x0, "sx1", from.x1, kColumnLimit, s.width, "the source");
    check_side(check, "sy0", from.y0, "sy1", from.y1, kLineLimit, s.height, "the source");
    check.above("sx1", from.x1, from.x0);
    check.above("sy1", from.y1, from.y0);
}

}  // namespace detail

/// Resamples a rectangle of a YUY2 or RGBQ source onto one of a destination of its format; the coverage goes through a
/// PWRW weight map of the destination's size.
inline void map_rect(Bitmap& dest, Bitmap& weight_map, const FloatBox& to, const Bitmap& src, const FloatBox& from,
                     Field field = Field::both) {
    const detail::Check check("map_rect");
    check.has_format("dest", dest.record(), detail::kColors);
    check.has_format("weight_map", weight_map.record(), detail::set_of(Format::pwrw));
    check.same_size("weight_map", weight_map.record(), "dest", dest.record());
    detail::check_rects(check, dest, to, src, from, field);
    bmp_map_rect(dest.record(), weight_map.record(), to.x0, to.y0, to.x1, to.y1, src.record(), nullptr, from.x0,
                 from.y0, from.x1, from.y1, detail::bits(field));
}

/// The same between RGB8 bitmaps, which have no weight map: at the rectangle's edges a byte fades toward 0.
inline void map_rect(Bitmap& dest, const FloatBox& to, const Bitmap& src, const FloatBox& from,
                     Field field = Field::both) {
    const detail::Check check("map_rect");
    check.has_format("dest", dest.record(), detail::set_of(Format::rgb8));
    detail::check_rects(check, dest, to, src, from, field);
    bmp_map_rect(dest.record(), nullptr, to.x0, to.y0, to.x1, to.y1, src.record(), nullptr, from.x0, from.y0, from.x1,
                 from.y1, detail::bits(field));
}

}  // namespace ZEPBMP_SETTING
}  // namespace zepbmp

#undef ZEPBMP_SETTING
#undef ZEPBMP_COLD

#endif  // ZEPBMP_HPP
