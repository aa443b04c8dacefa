/// \file
/// Memory between two unreadable pages, so that a byte too many is a fault and not a matter of luck.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zepbmp::test {

/// Readable and writable bytes; the pages right before and right behind them are neither.
class FencedPages {
public:
    /// Rounds `bytes` up to whole pages.
    explicit FencedPages(size_t bytes);
    ~FencedPages();
    FencedPages(const FencedPages&) = delete;
    FencedPages& operator=(const FencedPages&) = delete;

    uint8_t* begin() const { return begin_; }
    uint8_t* end() const { return end_; }
    std::span<uint8_t> bytes() const { return {begin_, end_}; }

private:
    void* reserved_;
    uint8_t* begin_;
    uint8_t* end_;
};

/// Whether reading or writing the byte at `address` faults. It keeps its value.
bool read_faults(const void* address);
bool write_faults(void* address);

/// Room for `extent` bytes at one end of the pages: flush against the far page, right behind the near one, or `skew`
/// bytes off a 16-byte boundary near one of them.
uint8_t* place(const FencedPages& pages, size_t extent, bool at_end, int skew);
constexpr int kFlush = -1;

/// The `margin` bytes on both sides of [first, first + extent) and what lies between, as far as the pages reach.
std::span<uint8_t> around(const FencedPages& pages, const uint8_t* first, size_t extent, size_t margin = 80);

}  // namespace zepbmp::test
