#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "app/FirmwareRecord.h"

namespace corvane {

/// Reads firmware.inf line by line into the records of its complete sections whose names begin with "PGM", in file
/// order. What a section without all four keys leaves behind counts towards the next one.
class FirmwareListParser {
public:
    /// Told when a section ends: its name, and whether a record came of it.
    std::function<void(const std::string& section, bool complete)> onSection;

    std::vector<FirmwareRecord> parse(std::string_view content);

private:
    void takeLine(std::string_view line);
    void takeKey(std::string_view line);
    void closeSection();

    std::vector<FirmwareRecord> records_;
    FirmwareRecord current_;
    bool inside_ = false;
    unsigned seen_ = 0;  // bits 1 PRODUCT, 2 VERSION, 4 DESC, 8 FILE
};

}  // namespace corvane
