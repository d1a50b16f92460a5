#include "models/Flash.h"

#include <cstdio>

#include "text/IntelHex.h"
#include "text/Text.h"

namespace corvane::models {

void Flash::program(std::uint32_t address, std::uint8_t value) {
    auto [page, isNew] = pages_.try_emplace(address / kPage);
    if (isNew) page->second.fill(0xFF);
    page->second[address % kPage] &= value;
}

std::uint8_t Flash::at(std::uint32_t address) const {
    const auto page = pages_.find(address / kPage);
    return page == pages_.end() ? 0xFF : page->second[address % kPage];
}

std::map<std::uint32_t, std::uint8_t> Flash::contents() const {
    std::map<std::uint32_t, std::uint8_t> cells;
    for (const auto& [number, page] : pages_) {
        for (std::uint32_t i = 0; i < kPage; ++i) {
            if (page[i] != 0xFF) cells.emplace_hint(cells.end(), number * kPage + i, page[i]);
        }
    }
    return cells;
}

std::optional<Difference> firstDifference(const Flash& memory, const Flash& wanted) {
    std::optional<Difference> first;
    const auto differs = [&](std::uint32_t address) {
        if (!first || address < first->address) {
            first = Difference{address, memory.at(address), wanted.at(address), first ? first->cells : 0};
        }
        ++first->cells;
    };
    for (const auto& [address, value] : wanted.contents()) {
        if (memory.at(address) != value) differs(address);
    }
    for (const auto& [address, value] : memory.contents()) {
        if (wanted.at(address) == 0xFF) differs(address);
    }
    return first;
}

RecordWriter::Taken RecordWriter::take(std::string_view text) {
    if (text.find_first_of(" \t") != std::string_view::npos) return Taken::refused;  // a blank is no digit here
    const auto record = parseHexRecord(text);
    if (!record || !record->checksumRight) return Taken::refused;
    const auto& data = record->data;
    switch (record->type) {
        case 0:
            for (std::size_t i = 0; i < data.size(); ++i) {
                flash_.program(base_ + static_cast<std::uint16_t>(record->address + i), data[i]);
            }
            return Taken::stored;
        case 1:
            base_ = 0;
            return Taken::ended;
        case 2:
        case 4:
            if (data.size() != 2) return Taken::refused;
            base_ = static_cast<std::uint32_t>(data[0] << 8 | data[1]) << (record->type == 2 ? 4 : 16);
            return Taken::stored;
        case 3:
        case 5:
        case 9:
            return Taken::stored;
        default:
            return Taken::refused;
    }
}

Image imageOf(std::string_view hexFile) {
    Image image;
    RecordWriter writer(image.memory);
    Lines lines(hexFile);
    std::string_view line;
    for (std::size_t number = 1; lines.next(line); ++number) {
        if (line.empty() || line.front() != ':') continue;
        if (writer.take(line) == RecordWriter::Taken::refused) image.unsoundLines.push_back(number);
    }
    return image;
}

std::string comparison(const Flash& memory, const Image& image) {
    if (!image.unsoundLines.empty()) {
        return "memory cannot equal image: its line " + std::to_string(image.unsoundLines.front()) +
               " is no sound record";
    }
    const auto difference = firstDifference(memory, image.memory);
    if (!difference) return "memory equals image";
    char text[120];
    std::snprintf(text, sizeof text, "memory differs at 0x%05X: holds 0x%02X, image 0x%02X; differing cells: %zu",
                  difference->address, difference->held, difference->wanted, difference->cells);
    return text;
}

}  // namespace corvane::models
