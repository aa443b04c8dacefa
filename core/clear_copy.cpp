/// \file
/// bmp_clear, bmp_copy, bmp_interporate: whole lines, padding included, of any format.
#include "core/bitmap.h"
#include "core/export.h"
#include "core/kernel_tables.h"

namespace zepbmp {
namespace {

size_t line_bytes(const Bitmap& bitmap) { return static_cast<size_t>(static_cast<uint32_t>(bitmap.pitch)); }

void end_call(StoreKind store) {
    if (store == kStoreStreamed)
        line_kernels.end_stream();
}

}  // namespace
}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT void BMP_CALL bmp_clear(Bitmap* bitmap, uint32_t flags) {
    const FieldLines lines = field_lines(flags);
    int32_t count = lines.count(bitmap->height);
    if (count == 0)
        return;
    size_t bytes = line_bytes(*bitmap);
    const StoreKind store = store_kind(bytes * static_cast<size_t>(count));
    if (lines.step == 1) {  // one run of bytes
        bytes *= static_cast<size_t>(count);
        count = 1;
    }
    for (int32_t k = 0; k < count; ++k)
        line_kernels.fill[store](line_address(*bitmap, lines.first + k * lines.step), bytes, 0);
    end_call(store);
}

// The whole copy is sized by the source, the field copy by the destination.
BMP_EXPORT void BMP_CALL bmp_copy(Bitmap* destination, const Bitmap* source, uint32_t flags) {
    if (!(flags & BMP_FIELD)) {
        if (source->height <= 0)
            return;
        const size_t bytes = line_bytes(*source) * static_cast<size_t>(source->height);
        const StoreKind store = store_kind(2 * bytes);
        line_kernels.copy[store](destination->pixels, source->pixels, bytes);
        end_call(store);
        return;
    }
    const FieldLines lines = field_lines(flags);
    const int32_t count = lines.count(destination->height);
    const size_t bytes = line_bytes(*destination);
    const StoreKind store = store_kind(2 * bytes * static_cast<size_t>(count));
    for (int32_t k = 0; k < count; ++k) {
        const int32_t y = lines.first + k * lines.step;
        line_kernels.copy[store](line_address(*destination, y), line_address(*source, y), bytes);
    }
    end_call(store);
}

BMP_EXPORT void BMP_CALL bmp_interporate(Bitmap* destination, const Bitmap* source, uint32_t flags) {
    const int32_t height = destination->height;
    const auto first = static_cast<int32_t>(flags & BMP_FIELD_ODD);
    if (first >= height)
        return;
    const size_t bytes = line_bytes(*destination);
    const auto source_line = [&](int32_t y) {  // the destination's geometry serves both
        return source->pixels + static_cast<ptrdiff_t>(y) * destination->pitch;
    };
    const auto line = [&](int32_t y) { return line_address(*destination, y); };
    const StoreKind store = store_kind(bytes * static_cast<size_t>(height) * 3 / 2);
    const auto copy = line_kernels.copy[store];

    if (first == 1)
        copy(line(0), source_line(1), bytes);
    copy(line(first), source_line(first), bytes);
    int32_t last = first;  // the field's last line so far
    for (; last < height - 2; last += 2)
        line_kernels.interpolate[store](line(last + 1), line(last + 2), source_line(last), source_line(last + 2),
                                        bytes);
    if (last < height - 1)
        copy(line(last + 1), source_line(last), bytes);
    end_call(store);
}
