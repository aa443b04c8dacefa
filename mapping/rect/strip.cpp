#include "mapping/rect/strip.h"

#include <algorithm>

namespace zepbmp {
namespace {

/// Whole pixels of a strip: at most what kernels take at once, all strips alike, and, but under large reductions, a
/// multiple of what the widest kernel draws together.
int32_t pixels_of_strip(const Axis& axis, const Extent& extent) {
    const int32_t reach = axis.unit / axis.step + 2;  // columns under a pixel, at most
    const int32_t blocks = (reach + kAreaBlockColumns - 1) / kAreaBlockColumns;
    const int64_t fitting = int64_t{kAreaColumns - 2} * axis.step / axis.unit;
    const auto most = static_cast<int32_t>(std::min({int64_t{kAreaPixels}, int64_t{kAreaBlocks / blocks}, fitting}));
    if (most < kAreaTogether)
        return std::max(most & ~1, 2);
    const int32_t all = std::max(extent.whole_end - extent.whole_begin, 1);
    const int32_t strips = (all - 1) / (most / kAreaTogether * kAreaTogether) + 1;
    const int32_t each = (all - 1) / strips + 1;
    return (each + kAreaTogether - 1) / kAreaTogether * kAreaTogether;
}

}  // namespace

Extent extent_of(const Axis& columns, int32_t width, int32_t together) {
    Extent extent;
    extent.end = std::min(columns.pixels(), width - columns.begin);
    const bool begins_whole = together == 1 && columns.first == columns.unit;
    const int32_t before = begins_whole ? 0 : 1 + (columns.begin + 1) % together;
    extent.whole_begin = std::min(before, extent.end);
    const int32_t left = columns.extent - std::min(columns.extent, columns.units_before(before));
    const int32_t whole = left / (together * columns.unit) * together;
    extent.whole_end = std::min(extent.whole_begin + whole, extent.end);
    return extent;
}

StripColumns::StripColumns(const Axis& axis, const Extent& extent, bool in_pairs)
    : axis_(axis), extent_(extent), in_pairs_(in_pairs), most_pixels_(pixels_of_strip(axis, extent)), strip_{} {}

bool StripColumns::next() {
    if (strip_.end >= extent_.end)
        return false;
    const bool first = strip_.end == 0;
    strip_.begin = strip_.end;
    strip_.whole_begin = first ? extent_.whole_begin : strip_.begin;
    strip_.whole_end = std::min(strip_.whole_begin + most_pixels_, extent_.whole_end);
    strip_.end = strip_.whole_end < extent_.whole_end ? strip_.whole_end : extent_.end;
    find_spans();
    return true;
}

void StripColumns::find_spans() {
    Cursor cursor(axis_.origin + axis_.units_before(strip_.begin), axis_.step, axis_.size);
    for (int32_t i = strip_.begin; i < strip_.end; ++i)
        spans_[i - strip_.begin] = cursor.take(axis_.cover(i));
    whole_ = {strip_.whole_end - strip_.whole_begin, span(strip_.whole_begin), axis_.step, nullptr, 0};
    if (!in_pairs_)
        return;
    const int64_t pair_step = 2 * int64_t{axis_.step};
    Cursor pair_cursor(axis_.origin + axis_.units_before(strip_.whole_begin), pair_step, (axis_.size + 1) / 2);
    for (int32_t i = 0; i < whole_.count / 2; ++i)
        pair_spans_[i] = pair_cursor.take(2 * axis_.unit);
    whole_.pair_spans = pair_spans_;
    whole_.inner_pair_weight = static_cast<int32_t>(std::min(pair_step, int64_t{INT32_MAX}));
}

}  // namespace zepbmp
