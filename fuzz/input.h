// A fuzz input, taken apart from its front: numbers, texts, and what is left.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

// The condition holds for every input; if not, the run stops here and the input is kept.
#define FUZZ_CHECK(condition) ((condition) ? static_cast<void>(0) : __builtin_trap())

namespace fuzz {

class Input {
public:
    Input(const uint8_t *data, size_t size) : at_(data), left_(size) {}

    uint8_t byte()
    {
        if (left_ == 0) {
            return 0;
        }
        left_ -= 1;
        return *at_++;
    }

    uint32_t word()
    {
        uint32_t value = 0;
        for (int shift = 0; shift < 32; shift += 8) {
            value |= static_cast<uint32_t>(byte()) << shift;
        }
        return value;
    }

    // Mostly small numbers, since ranges of commands are small; now and then any number, or one at an end.
    uint32_t number()
    {
        static constexpr uint32_t ends[] = {0,      1,          127,        128,        255,        256,
                                            0xFFFF, 0x10000,    0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF,
                                            0xFF00, 0xFFFFFF80, 0x10001,    65532};
        const uint8_t kind = byte();
        if (kind < 160) {
            return kind;
        }
        if (kind < 192) {
            return ends[kind % 16];
        }
        if (kind < 224) {
            return static_cast<uint32_t>(byte()) << 8 | byte();
        }
        return word();
    }

    std::vector<uint8_t> bytes(size_t most)
    {
        const size_t count = most < left_ ? most : left_;
        std::vector<uint8_t> result(at_, at_ + count);
        at_ += count;
        left_ -= count;
        return result;
    }

    std::vector<uint8_t> rest()
    {
        return bytes(left_);
    }

    // Up to the next NUL, which is taken away.
    std::string text()
    {
        const void *end = left_ > 0 ? memchr(at_, 0, left_) : nullptr;
        const size_t length = end != nullptr ? static_cast<size_t>(static_cast<const uint8_t *>(end) - at_) : left_;
        std::string result(reinterpret_cast<const char *>(at_), length);
        const size_t taken = end != nullptr ? length + 1 : length;
        at_ += taken;
        left_ -= taken;
        return result;
    }

    bool done() const
    {
        return left_ == 0;
    }

private:
    const uint8_t *at_;
    size_t left_;
};

// Bytes of a known pattern around a caller's buffer: what a call may not touch.
class Fenced {
public:
    static constexpr size_t fence = 32;
    static constexpr uint8_t pattern = 0xA5;

    explicit Fenced(size_t size) : bytes_(size + 2 * fence, pattern), size_(size) {}

    uint8_t *data()
    {
        return bytes_.data() + fence;
    }

    template <typename Element>
    Element *as()
    {
        return reinterpret_cast<Element *>(data());
    }

    // Whether everything but size bytes from first on still holds the pattern.
    bool intact_outside(size_t first, size_t size) const
    {
        for (size_t i = 0; i < bytes_.size(); ++i) {
            const bool inside = i >= fence + first && i < fence + first + size;
            if (!inside && bytes_[i] != pattern) {
                return false;
            }
        }
        return true;
    }

    bool intact_outside() const
    {
        return intact_outside(0, size_);
    }

private:
    std::vector<uint8_t> bytes_;
    size_t size_;
};

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
