#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "face/FirmwareRecord.h"

namespace corvane {

/// Reads firmware.inf line by line into the records of its complete sections whose names begin with "PGM", in file
/// order. What a section without all four keys leaves behind counts towards the next one.
class FirmwareListParser {
public:
    /// The keys of a section, as bits.
    enum Key : unsigned { kProduct = 1, kVersion = 2, kDesc = 4, kFile = 8, kAllKeys = 15 };

    /// Told when a "PGM" section ends: its name, the keys seen until then, and those among them that only an earlier,
    /// incomplete section had.
    std::function<void(const std::string& section, unsigned seen, unsigned carried)> onSection;

    std::vector<FirmwareRecord> parse(std::string_view content);

private:
    void takeLine(std::string_view line);
    void takeKey(std::string_view line);
    void closeSection();

    std::vector<FirmwareRecord> records_;
    FirmwareRecord current_;
    bool inside_ = false;
    unsigned seen_ = 0;
    unsigned carried_ = 0;
};

}  // namespace corvane
