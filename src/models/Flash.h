#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/Variant.h"

namespace corvane::models {

/// A flash memory of 4 GiB: an erased cell reads 0xFF, and programming can only clear bits.
class Flash {
public:
    void erase() { pages_.clear(); }
    void program(std::uint32_t address, std::uint8_t value);
    std::uint8_t at(std::uint32_t address) const;

    /// Address and value of every cell that is not 0xFF.
    std::map<std::uint32_t, std::uint8_t> contents() const;

private:
    static constexpr std::uint32_t kPage = 4096;
    std::map<std::uint32_t, std::array<std::uint8_t, kPage>> pages_;  // by address / kPage
};

/// Where two memories differ first, what each holds there, and in how many cells they differ.
struct Difference {
    std::uint32_t address = 0;
    std::uint8_t held = 0xFF;
    std::uint8_t wanted = 0xFF;
    std::size_t cells = 0;
};
std::optional<Difference> firstDifference(const Flash& memory, const Flash& wanted);

/// Takes Intel HEX records into a memory, remembering the segment or upper address between them.
class RecordWriter {
public:
    enum class Taken { stored, ended, refused };

    explicit RecordWriter(Flash& flash) : flash_(flash) {}

    /// One record's text without its line end. Data (type 0) is programmed; 2 and 4 move the addresses that follow; 3,
    /// 5 and 9 are accepted and do nothing; 1 ends the image and takes the addresses back to 0. Refused, with nothing
    /// stored: what is no record, has a wrong length or checksum, or another type.
    Taken take(std::string_view text);

    void restart() { base_ = 0; }

private:
    Flash& flash_;
    std::uint32_t base_ = 0;
};

/// What an image file puts into an erased memory.
struct Image {
    Flash memory;
    std::vector<std::size_t> unsoundLines;  ///< numbers, from 1, of the ":" lines that are refused
};
Image imageOf(std::string_view hexFile);

/// "memory equals image", or where it differs:
/// "memory differs at 0x00010: holds 0xFF, image 0x3A; differing cells: 12".
std::string comparison(const Flash& memory, const Image& image);

}  // namespace corvane::models
