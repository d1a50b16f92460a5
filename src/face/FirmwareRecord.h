#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// One image on offer; texts in Windows-1252.
struct FirmwareRecord {
    std::string section;
    std::string product;
    std::string version;
    std::string description;
    std::string file;

    /// The record as one text: each field ended by its own control character, 1 to 5.
    std::string encoded() const;
};

/// A field of an encoded record, 0 the section name to 4 the file; empty for any other index.
std::string GetField(std::string_view szRecord, int lIndex);

/// Records joined by NUL, and back.
std::string encodeRecords(const std::vector<FirmwareRecord>& records);
std::vector<FirmwareRecord> decodeRecords(std::string_view list);

}  // namespace corvane
