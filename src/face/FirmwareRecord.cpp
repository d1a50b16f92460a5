#include "face/FirmwareRecord.h"

#include "text/Text.h"

namespace corvane {

/// Whatever a file holds, the characters that separate fields and records do not get into a field.
std::string FirmwareRecord::encoded() const {
    std::string text;
    char end = 1;
    for (const auto* field : {&section, &product, &version, &description, &file}) {
        for (const char c : *field) {
            if (c < 0 || c > 5) text += c;
        }
        text += end++;
    }
    return text;
}

std::string GetField(std::string_view szRecord, int lIndex) {
    if (lIndex < 0 || lIndex > 4) return {};
    for (int end = 1; end <= lIndex; ++end) {
        const auto at = szRecord.find(static_cast<char>(end));
        if (at == std::string_view::npos) return {};
        szRecord.remove_prefix(at + 1);
    }
    return std::string(szRecord.substr(0, szRecord.find(static_cast<char>(lIndex + 1))));
}

std::string encodeRecords(const std::vector<FirmwareRecord>& records) {
    std::vector<std::string> encoded;
    for (const auto& record : records) encoded.push_back(record.encoded());
    return joined(encoded, std::string_view("\0", 1));
}

std::vector<FirmwareRecord> decodeRecords(std::string_view list) {
    std::vector<FirmwareRecord> records;
    if (list.empty()) return records;
    for (const auto& text : split(list, '\0')) {
        records.push_back(
            {GetField(text, 0), GetField(text, 1), GetField(text, 2), GetField(text, 3), GetField(text, 4)});
    }
    return records;
}

}  // namespace corvane
