// access/formats/excel/digest.h - MD5 and RC4, as encrypted workbooks use them.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace velnor::excel {

using Digest = std::array<std::uint8_t, 16>;
Digest md5(std::span<const std::uint8_t> data);

class Rc4 {
public:
    explicit Rc4(std::span<const std::uint8_t> key);
    std::uint8_t next();

private:
    std::array<std::uint8_t, 256> state_;
    std::uint8_t i_ = 0, j_ = 0;
};

}  // namespace velnor::excel
