/// \file
/// Storage of one call: on the stack up to a fixed size, above it one allocation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace zepbmp {

class Arena {
public:
    Arena() = default;
    ~Arena() {
        if (start_ != local_)
            std::free(start_);
    }
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    /// What an array takes up.
    template <class T>
    static constexpr uint64_t bytes(uint64_t count) {
        return (count * sizeof(T) + (kAlignment - 1)) / kAlignment * kAlignment;
    }

    /// Once, before the first array: makes room for that many bytes. False: memory is short.
    bool reserve(uint64_t bytes) {
        if (bytes <= sizeof local_)
            return true;
        if (bytes > SIZE_MAX)
            return false;
        start_ = next_ = static_cast<uint8_t*>(std::malloc(static_cast<size_t>(bytes)));
        return start_ != nullptr;
    }

    template <class T>
    T* array(uint64_t count) {
        T* const from = reinterpret_cast<T*>(next_);
        next_ += bytes<T>(count);
        return from;
    }

private:
    static constexpr size_t kAlignment = 8;  // malloc gives no more on every target

    alignas(kAlignment) uint8_t local_[size_t{48} << 10];
    uint8_t *start_ = local_, *next_ = local_;
};

}  // namespace zepbmp
