#include "export_calls.h"

#include <type_traits>

#include "library.h"

namespace zepbmp::test {
namespace {

constexpr int kWidth = 74, kHeight = 10;

// Corners at odd places: turned, partly outside, with weights whose quotients are not exact.
constexpr BmpVertex kAffine[] = {{0.3f, 0.4f, 1, 2.7f, -1.2f},
                                 {61.1f, 1.3f, 1, 70.3f, 1.1f},
                                 {58.9f, 9.7f, 1, 66.1f, 11.3f},
                                 {1.7f, 8.8f, 1, -3.3f, 8.9f}};
constexpr BmpVertex kPerspective[] = {{0.3f, 0.4f, 0.7f, 2.7f, -1.2f},
                                      {73.1f, 1.3f, 1.1f, 40.3f, 1.1f},
                                      {71.9f, 9.7f, 1.3f, 36.1f, 8.3f},
                                      {1.7f, 8.8f, 0.9f, -3.3f, 8.9f}};

struct MapCall {
    Bitmap* dst;
    Bitmap* dst2;
    Bitmap* aux;
    const void* tex_a;
    const void* tex_b;
    uint32_t flags;
};

void map_polygon(Caller& call, const MapCall& a, std::span<const BmpVertex> polygon) {
    call(library().map_polygon, a.dst, a.dst2, a.aux, a.tex_a, a.tex_b, polygon.data(),
         static_cast<int32_t>(polygon.size()), a.flags);
}

// Rectangles whose starts are clipped, with quotients that are not exact.
struct RectPair {
    float dx0, dy0, dx1, dy1, sx0, sy0, sx1, sy1;
};
constexpr RectPair kReduced = {-1.3f, -0.7f, 31.7f, 4.9f, -3.3f, 0.4f, 73.1f, 9.7f};
constexpr RectPair kEnlarged = {-5.9f, 0.3f, 71.3f, 9.9f, 0.7f, -0.6f, 30.1f, 4.3f};
constexpr RectPair kSameScale = {2.3f, -1.7f, 70.3f, 7.3f, -0.9f, 0.1f, 67.1f, 9.1f};

void map_rect(Caller& call, const OwnedBitmap& dest, Bitmap* map, const OwnedBitmap& src, const RectPair& r,
              uint32_t flags) {
    call(library().map_rect, dest.get(), map, r.dx0, r.dy0, r.dx1, r.dy1, src.get(), nullptr, r.sx0, r.sy0, r.sx1,
         r.sy1, flags);
}

const ExportCall kCalls[] = {
    {"bmp_create and bmp_destroy",
     [](Caller& call, Scene& scene) {
         Bitmap* const bitmap = call(library().create, 77, 5, BMP_FMT_RGBQ, BMP_CREATE_ZERO | 3);
         for (const uint32_t word : {static_cast<uint32_t>(bitmap->width), static_cast<uint32_t>(bitmap->pitch),
                                     bitmap->fourcc, bitmap->interlace, static_cast<uint32_t>(bitmap->bytes_per_pixel)})
             scene.results.push_back(word);
         call(library().destroy, bitmap);
     }},
    {"bmp_pointer",
     [](Caller& call, Scene& scene) {
         const uint8_t* const pixel = call(library().pointer, scene.rgbq[0].get(), 5, 3);
         scene.results.push_back(static_cast<uint32_t>(pixel - scene.rgbq[0]->pixels));
     }},
    {"bmp_clear", [](Caller& call, Scene& scene) { call(library().clear, scene.yuy2[0].get(), BMP_FIELD); }},
    {"bmp_copy",
     [](Caller& call, Scene& scene) { call(library().copy, scene.yuy2[0].get(), scene.yuy2[1].get(), 0u); }},
    {"bmp_blt",
     [](Caller& call, Scene& scene) {
         call(library().blt, scene.rgbq[0].get(), 3, 1, 60, 8, scene.rgbq[1].get(), 5, 0, 0u);
     }},
    {"bmp_interporate",
     [](Caller& call, Scene& scene) { call(library().interporate, scene.rgbq[0].get(), scene.rgbq[1].get(), 1u); }},
    {"bmp_draw_rect",
     [](Caller& call, Scene& scene) {
         call(library().draw_rect, scene.rgbq[0].get(), 3, 1, 70, 9, 0x80402010u, 0u);
         call(library().draw_rect, scene.map.get(), -3, 1, 71, 99, 0x1234u, 0u);
         call(library().draw_rect, scene.rgb8[0].get(), 3, 1, 70, 9, 0x3cu, 16u);
         call(library().draw_rect, scene.rgb8[0].get(), 1, 0, 60, 9, 0xf0u, 32u);
     }},
    {"bmp_draw_line",
     [](Caller& call, Scene& scene) {
         call(library().draw_line, scene.rgb8[0].get(), 1, 1, 70, 8, 0x5au, 0x30u);
         call(library().draw_line, scene.rgb8[0].get(), 70, 4, 2, 4, 0x5au, 0x30u);
         call(library().draw_line, scene.rgb8[0].get(), 70, 9, 68, 0, 0x5au, 0x00u);
     }},
    {"bmp_translate_color",
     [](Caller& call, Scene& scene) {
         scene.results.push_back(call(library().translate_color, nullptr, 0x12345678u));
     }},
    {"bmp_set_palette",
     [](Caller& call, Scene& scene) {
         call(library().set_palette, scene.rgb8[0].get(), 200, 0x123456u);
         const auto* const header = static_cast<const uint32_t*>(scene.rgb8[0]->dib_info);
         scene.results.insert(scene.results.end(), header, header + (40 + 256 * 4) / 4);
     }},
    {"bmp_display",
     [](Caller& call, Scene& scene) {
         scene.results.push_back(
             static_cast<uint32_t>(call(library().display, nullptr, 1, 2, 30, 9, scene.rgbq[0].get(), 3, 4)));
     }},
    {"bmp_compose YUY2 16-bit",
     [](Caller& call, Scene& scene) {
         scene.results.push_back(static_cast<uint32_t>(call(library().compose, scene.yuy2[0].get(), scene.yuy2[1].get(),
                                                            scene.yuy2[2].get(), scene.weights[0].get(), 0u)));
     }},
    {"bmp_compose YUY2 8-bit",
     [](Caller& call, Scene& scene) {
         call(library().compose, scene.yuy2[0].get(), scene.yuy2[1].get(), scene.yuy2[2].get(), scene.mask.get(), 3u);
     }},
    {"bmp_compose RGBQ 16-bit",
     [](Caller& call, Scene& scene) {
         call(library().compose, scene.rgbq[0].get(), scene.rgbq[1].get(), scene.rgbq[2].get(), scene.weights[0].get(),
              0u);
     }},
    {"bmp_compose RGBQ 8-bit",
     [](Caller& call, Scene& scene) {
         call(library().compose, scene.rgbq[0].get(), scene.rgbq[1].get(), scene.rgbq[2].get(), scene.mask.get(), 2u);
     }},
    {"bmp_compose level",
     [](Caller& call, Scene& scene) {
         call(library().compose, scene.yuy2[0].get(), scene.yuy2[1].get(), scene.yuy2[2].get(), BMP_INTEGER(1234),
              BMP_COMPOSE_LEVEL);
     }},
    {"bmp_compose_color YUY2 band",
     [](Caller& call, Scene& scene) {
         scene.results.push_back(static_cast<uint32_t>(
             call(library().compose_color, scene.yuy2[0].get(), scene.yuy2[1].get(), scene.yuy2[2].get(),
                  scene.weights[0].get(), scene.weights[1].get(), 0x804020u, 0u)));
     }},
    {"bmp_compose_color YUY2",
     [](Caller& call, Scene& scene) {
         call(library().compose_color, scene.yuy2[0].get(), scene.yuy2[1].get(), nullptr, scene.weights[0].get(),
              nullptr, 0x804020u, 0u);
     }},
    {"bmp_compose_color RGBQ band",
     [](Caller& call, Scene& scene) {
         call(library().compose_color, scene.rgbq[0].get(), scene.rgbq[1].get(), scene.rgbq[2].get(),
              scene.weights[0].get(), scene.weights[1].get(), 0x804020u, 0u);
     }},
    {"bmp_compose_color RGBQ",
     [](Caller& call, Scene& scene) {
         call(library().compose_color, scene.rgbq[0].get(), scene.rgbq[1].get(), nullptr, scene.weights[0].get(),
              nullptr, 0x804020u, 0u);
     }},
    {"bmp_alpha_rect add",
     [](Caller& call, Scene& scene) {
         call(library().alpha_rect, scene.map.get(), 3.3f, 1.7f, 51.9f, 6.6f, 0.0f, 0.0f, 0u);
     }},
    {"bmp_alpha_rect maximum",
     [](Caller& call, Scene& scene) {
         call(library().alpha_rect, scene.map.get(), 3.3f, 1.7f, 51.9f, 6.6f, 0.0f, 0.0f, BMP_SHAPE_MAX);
     }},
    {"bmp_alpha_rect elliptical",
     [](Caller& call, Scene& scene) {
         call(library().alpha_rect, scene.map.get(), 3.3f, 0.7f, 63.9f, 8.6f, 40.1f, 7.3f,
              BMP_SHAPE_ELLIPTIC | BMP_SHAPE_ELLIPTIC_PLAIN);
     }},
    {"bmp_alpha_circle hard",
     [](Caller& call, Scene& scene) {
         call(library().alpha_circle, scene.map.get(), 37.3f, 5.1f, 29.7f, 0.0f, 1.0666667f, 0u);
     }},
    {"bmp_alpha_circle linear",
     [](Caller& call, Scene& scene) {
         call(library().alpha_circle, scene.map.get(), 37.3f, 17.1f, 29.7f, 23.3f, 3.0666667f, 0u);
     }},
    {"bmp_alpha_circle cosine",
     [](Caller& call, Scene& scene) {
         call(library().alpha_circle, scene.map.get(), 36.7f, 17.1f, 35.1f, 31.3f, 3.0666667f, BMP_SHAPE_COSINE);
     }},
    {"bmp_map_polygon nearest",
     [](Caller& call, Scene& scene) {
         map_polygon(call,
                     {scene.rgbq[0].get(), scene.map.get(), nullptr, scene.rgbq[1].get(), nullptr, BMP_MAP_NO_FILTER},
                     kAffine);
         map_polygon(call,
                     {scene.yuy2[0].get(), scene.mask.get(), nullptr, scene.yuy2[1].get(), nullptr, BMP_MAP_NO_FILTER},
                     kPerspective);
     }},
    {"bmp_map_polygon affine",
     [](Caller& call, Scene& scene) {
         map_polygon(call, {scene.rgbq[0].get(), nullptr, nullptr, scene.rgbq[1].get(), nullptr, 0}, kAffine);
         map_polygon(call, {scene.yuy2[0].get(), nullptr, nullptr, scene.yuy2[1].get(), nullptr, 0}, kAffine);
         map_polygon(call, {scene.map.get(), nullptr, nullptr, scene.weights[0].get(), nullptr, 0}, kAffine);
     }},
    {"bmp_map_polygon perspective",
     [](Caller& call, Scene& scene) {
         map_polygon(call, {scene.rgbq[0].get(), nullptr, nullptr, scene.rgbq[1].get(), nullptr, 0}, kPerspective);
         map_polygon(call, {scene.yuy2[0].get(), nullptr, nullptr, scene.yuy2[1].get(), nullptr, 0}, kPerspective);
         map_polygon(call, {scene.map.get(), nullptr, nullptr, scene.weights[0].get(), nullptr, 0}, kPerspective);
     }},
    {"bmp_map_polygon depth",
     [](Caller& call, Scene& scene) {
         map_polygon(call, {scene.rgbq[0].get(), nullptr, scene.depth.get(), scene.rgbq[1].get(), nullptr, 0},
                     kPerspective);
         map_polygon(call, {scene.yuy2[0].get(), nullptr, scene.depth.get(), scene.yuy2[1].get(), nullptr, 0}, kAffine);
     }},
    {"bmp_map_polygon tint",
     [](Caller& call, Scene& scene) {
         map_polygon(call,
                     {scene.rgbq[0].get(), nullptr, nullptr, BMP_INTEGER(0x204080), scene.mask.get(), BMP_MAP_EXTRA},
                     kAffine);
         map_polygon(call,
                     {scene.yuy2[0].get(), nullptr, nullptr, BMP_INTEGER(0x204080), scene.mask.get(), BMP_MAP_EXTRA},
                     kPerspective);
     }},
    {"bmp_map_polygon antialiased",
     [](Caller& call, Scene& scene) {
         map_polygon(call, {scene.rgbq[0].get(), nullptr, nullptr, scene.rgbq[1].get(), nullptr, BMP_MAP_ANTIALIAS},
                     kAffine);
         map_polygon(call,
                     {scene.yuy2[0].get(), scene.map.get(), nullptr, scene.yuy2[1].get(), nullptr, BMP_MAP_ANTIALIAS},
                     kPerspective);
         map_polygon(
             call, {scene.map.get(), nullptr, nullptr, scene.weights[0].get(), nullptr, BMP_MAP_ANTIALIAS | BMP_FIELD},
             kAffine);
     }},
    {"bmp_map_polygon solid",
     [](Caller& call, Scene& scene) {
         map_polygon(call,
                     {scene.rgbq[0].get(), scene.map.get(), nullptr, BMP_INTEGER(0x10204080), BMP_INTEGER(4096),
                      BMP_MAP_EXTRA | BMP_MAP_SOLID},
                     kAffine);
         map_polygon(call,
                     {scene.yuy2[0].get(), scene.mask.get(), nullptr, BMP_INTEGER(0x204080), BMP_INTEGER(1234),
                      BMP_MAP_EXTRA | BMP_MAP_SOLID},
                     kPerspective);
     }},
    {"bmp_map_rect RGB8",
     [](Caller& call, Scene& scene) {
         map_rect(call, scene.rgb8[0], nullptr, scene.rgb8[1], kReduced, 0);
         map_rect(call, scene.rgb8[0], nullptr, scene.rgb8[1], kEnlarged, BMP_FIELD);
     }},
    {"bmp_map_rect RGBQ",
     [](Caller& call, Scene& scene) {
         map_rect(call, scene.rgbq[0], scene.map.get(), scene.rgbq[1], kReduced, 0);
         map_rect(call, scene.rgbq[0], scene.map.get(), scene.rgbq[1], kEnlarged, BMP_FIELD | BMP_FIELD_ODD);
     }},
    {"bmp_map_rect YUY2",
     [](Caller& call, Scene& scene) {
         map_rect(call, scene.yuy2[0], scene.map.get(), scene.yuy2[1], kReduced, 0);
         map_rect(call, scene.yuy2[0], scene.map.get(), scene.yuy2[1], kEnlarged, BMP_FIELD);
         map_rect(call, scene.yuy2[0], scene.map.get(), scene.yuy2[1], kSameScale, 0);
     }},
};

}  // namespace

Scene::Scene(uint64_t seed) {
    Random random(seed);
    for (OwnedBitmap& bitmap : yuy2)
        bitmap = make_noise(kWidth, kHeight, BMP_FMT_YUY2, random.next());
    for (OwnedBitmap& bitmap : rgbq)
        bitmap = make_noise(kWidth, kHeight, BMP_FMT_RGBQ, random.next());
    for (OwnedBitmap& bitmap : weights) {
        bitmap = make_bitmap(kWidth, kHeight, BMP_FMT_PWRW);
        fill_weights(random, lines_of(bitmap.get()));
    }
    mask = make_bitmap(kWidth, kHeight, BMP_FMT_A8);
    fill_masks(random, lines_of(mask.get()));
    map = make_noise(kWidth, kHeight, BMP_FMT_PWRW, random.next());
    depth = make_bitmap(kWidth, kHeight, BMP_FMT_QUAD3);
    for (OwnedBitmap& bitmap : rgb8)
        bitmap = make_noise(kWidth, kHeight, BMP_FMT_RGB8, random.next());
}

std::vector<uint8_t> Scene::contents() const {
    std::vector<uint8_t> all;
    const auto add = [&](const OwnedBitmap& bitmap) {
        const std::span<uint8_t> lines = lines_of(bitmap.get());
        all.insert(all.end(), lines.begin(), lines.end());
    };
    for (const OwnedBitmap& bitmap : yuy2)
        add(bitmap);
    for (const OwnedBitmap& bitmap : rgbq)
        add(bitmap);
    for (const OwnedBitmap& bitmap : weights)
        add(bitmap);
    add(mask);
    add(map);
    add(depth);
    for (const OwnedBitmap& bitmap : rgb8)
        add(bitmap);
    for (const uint32_t word : results)
        for (int k = 0; k < 4; ++k)
            all.push_back(static_cast<uint8_t>(word >> 8 * k));
    return all;
}

std::span<const ExportCall> export_calls() { return kCalls; }

#if defined(__i386__)

namespace {

struct AfterCall {
    uint32_t stack_moved, ebx, esi;
};
constexpr uint32_t kEbx = 0x600df00d, kEsi = 0x5eed5eed;

extern "C" uint32_t call_words_with_stack(const void* function, const uint32_t* words, uint32_t count, uint32_t off,
                                          AfterCall* after) asm("zepbmp_test_call_words");

// Pushes the words from the last to the first on a stack that is `off` away from a multiple of 16 then, calls, notes
// what came back.
asm(R"(
    .text
    .globl zepbmp_test_call_words
zepbmp_test_call_words:
    pushl %ebp
    movl %esp, %ebp
    pushl %ebx
    pushl %esi
    pushl %edi
    movl 16(%ebp), %ecx
    leal (,%ecx,4), %edx
    negl %edx
    andl $15, %edx
    addl 20(%ebp), %edx
    andl $-16, %esp
    subl %edx, %esp
    movl 12(%ebp), %esi
1:  testl %ecx, %ecx
    jz 2f
    decl %ecx
    pushl (%esi,%ecx,4)
    jmp 1b
2:  movl %esp, %edi
    movl $0x600df00d, %ebx
    movl $0x5eed5eed, %esi
    call *8(%ebp)
    movl 24(%ebp), %edx
    movl %esp, %ecx
    subl %edi, %ecx
    movl %ecx, (%edx)
    movl %ebx, 4(%edx)
    movl %esi, 8(%edx)
    leal -12(%ebp), %esp
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    ret
)");

}  // namespace

uint32_t Caller::call_words(const void* function, std::span<const uint32_t> words) {
#if defined(_WIN32)
    const uint32_t moved = static_cast<uint32_t>(words.size_bytes());  // the callee removes its arguments
#else
    const uint32_t moved = 0;
#endif
    AfterCall after;
    const uint32_t result = call_words_with_stack(function, words.data(), static_cast<uint32_t>(words.size()),
                                                  static_cast<uint32_t>(off_), &after);
    kept_ = kept_ && after.stack_moved == moved && after.ebx == kEbx && after.esi == kEsi;
    return result;
}

#endif

}  // namespace zepbmp::test
