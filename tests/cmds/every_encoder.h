// All command encoders as the public headers declare them, behind one way to call them: for what holds for every one.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace kit {

// What a parameter between the class word and the buffer is: a number, the caller's data, or the number of their bytes.
enum class Kind { number, data, size };

struct Value {
    uint32_t number = 0;
    const uint8_t *data = nullptr;
};

struct Encoder {
    std::string_view name;
    std::vector<Kind> parameters;
    int32_t (*call)(uint32_t printer_class, const Value *arguments, uint8_t *buf, uint32_t cap, uint32_t *len);

    bool takes_data() const;
    bool is(std::string_view short_name) const;
};

const std::vector<Encoder> &every_encoder();

// Numbers as callers have them, wrong ones included: mostly small, now and then at an end of 8, 16 or 32 bits.
class Numbers {
public:
    explicit Numbers(uint32_t seed) : random_(seed) {}
    uint32_t below(uint32_t limit);
    uint32_t any();

private:
    uint32_t any32();

    std::mt19937 random_;
};

}  // namespace kit
