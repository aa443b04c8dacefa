/// \file
/// bmp_map_polygon: which of its arguments is what.
#include "core/export.h"
#include "core/float_scope.h"
#include "mapping/polygon/polygon.h"

namespace zepbmp {
namespace {

uint32_t to_integer(const void* argument) { return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(argument)); }

__attribute__((noinline)) void map_polygon(const Target& target, const Bitmap* depth, const void* tex_a,
                                           const void* tex_b, const Polygon& polygon) {
    constexpr uint32_t kSolid = BMP_MAP_EXTRA | BMP_MAP_SOLID;
    if ((polygon.flags & kSolid) == kSolid) {
        draw_solid(target, to_integer(tex_a), static_cast<int32_t>(to_integer(tex_b)), polygon);
        return;
    }
    const bool tinted = polygon.flags & BMP_MAP_EXTRA;
    const void* const texture = tex_a && !tinted ? tex_a : tex_b;
    if (texture)
        draw_textured(target, depth, *static_cast<const Bitmap*>(texture), to_integer(tex_a), polygon);
}

}  // namespace
}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT void BMP_CALL bmp_map_polygon(Bitmap* dst, Bitmap* dst2, Bitmap* aux, const void* tex_a, const void* tex_b,
                                         const BmpVertex* vertices, int32_t count, uint32_t flags) {
    const Bitmap* const picture = dst ? dst : dst2;
    if (!picture || count < 1)
        return;
    const FloatScope scope;
    map_polygon({*picture, dst ? dst2 : nullptr}, aux, tex_a, tex_b, {vertices, count, flags});
}
