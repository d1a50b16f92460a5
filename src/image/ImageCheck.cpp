#include "image/ImageCheck.h"

#include <algorithm>
#include <cstdio>

#include "text/IntelHex.h"
#include "text/Text.h"

namespace corvane {
namespace {

/// The kinds of Intel HEX records. The last one is no standard type: boot loaders take it as a start of their own.
enum RecordType : std::uint8_t {
    kData = 0,
    kEnd = 1,
    kSegment = 2,
    kSegmentStart = 3,
    kUpper = 4,
    kLinearStart = 5,
    kOwnStart = 9
};

std::string hex(std::uint64_t value, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%0*llX", digits, static_cast<unsigned long long>(value));
    return text;
}

const char* faultText(HexFault fault) {
    switch (fault) {
        case HexFault::notHexadecimal:
            return "holds a character that is no hexadecimal digit";
        case HexFault::truncated:
            return "is cut off: fewer bytes than its length says";
        case HexFault::tooLong:
            return "has more bytes than its length says";
        case HexFault::noColon:
        case HexFault::none:
            break;
    }
    return "is no record";
}

/// Whether a record stands behind something else, say blanks or the mark that some text editors put at a file's start.
/// A line counts as a record only when the colon is its first character, so this one would not be sent.
bool hidesRecord(std::string_view line) {
    const auto colon = line.find(':');
    return colon != std::string_view::npos && parseHexRecord(line.substr(colon));
}

/// Where one data record lies.
struct Piece {
    std::uint64_t first;
    std::uint64_t bytes;
    std::size_t line;
};

/// Goes through an image's records in their order and notes what a device would make of them.
class Checker {
public:
    ImageReport check(std::string_view content) {
        std::string_view line;
        std::size_t number = 0;
        for (Lines lines(content); lines.next(line);) {
            ++number;
            if (!line.empty() && line.front() == ':') {
                takeLine(number, line);
            } else if (hidesRecord(line)) {
                find(number, "holds a record that does not begin the line, so it is never sent");
            }
        }
        finish();
        return std::move(report_);
    }

private:
    void find(std::size_t line, const std::string& text) { report_.findings.push_back({line, text}); }

    void takeLine(std::size_t number, std::string_view line) {
        ++report_.records;
        HexFault fault = HexFault::none;
        const auto record = parseHexRecord(line, &fault);
        if (!record) return find(number, faultText(fault));
        if (!record->checksumRight) find(number, "has a wrong checksum");
        if (endLine_ && record->type != kEnd) find(number, "stands behind the end record");
        takeRecord(number, *record);
    }

    void takeRecord(std::size_t number, const HexRecord& record) {
        switch (record.type) {
            case kData:
                takeStart(number, record);
                takeData(number, record);
                break;
            case kEnd:
                if (endLine_) find(number, "is a second end record");
                endLine_ = number;
                break;
            case kUpper:
                if (record.data.size() != 2) return find(number, "is an address record of a wrong length");
                upper_ = static_cast<std::uint32_t>(record.data[0] << 8 | record.data[1]);
                if (upper_ != 0) startLine_ = 0;
                break;
            case kSegment:
                find(number, "is an extended segment record: the record at address 0 is sent late, to another place");
                break;
            case kOwnStart:
                takeStart(number, record);
                break;
            case kSegmentStart:
            case kLinearStart:
                break;
            default:
                find(number, "has the unknown type " + std::to_string(record.type));
        }
    }

    /// The record at address 0 of the first segment is held back and sent after that segment's other records. Only
    /// one is: a second one takes its place, and the first is lost.
    void takeStart(std::size_t number, const HexRecord& record) {
        if (upper_ != 0 || record.address != 0) return;
        if (startLine_)
            find(number,
                 "is a second record at address 0: the one in line " + std::to_string(startLine_) + " is never sent");
        startLine_ = number;
    }

    void takeData(std::size_t number, const HexRecord& record) {
        const std::size_t size = record.data.size();
        if (size == 0) return;
        report_.bytes += size;
        if (record.address + size > 0x10000) find(number, "runs past the end of its 64 KiB segment");
        pieces_.push_back({static_cast<std::uint64_t>(upper_) << 16 | record.address, size, number});
    }

    void finish() {
        findOverlaps();
        std::stable_sort(report_.findings.begin(), report_.findings.end(),
                         [](const auto& a, const auto& b) { return a.line < b.line; });
        if (pieces_.empty()) find(0, "holds no data");
        if (!endLine_) find(0, "has no end record");
    }

    /// Sorts the pieces by address, joins neighbours to segments, and finds addresses that two records write to.
    void findOverlaps() {
        std::stable_sort(pieces_.begin(), pieces_.end(),
                         [](const Piece& a, const Piece& b) { return a.first < b.first; });
        std::size_t lastLine = 0;
        for (const auto& piece : pieces_) {
            auto& segments = report_.segments;
            const auto end = segments.empty() ? 0 : segments.back().first + segments.back().bytes;
            if (segments.empty() || piece.first > end) {
                segments.push_back({static_cast<std::uint32_t>(piece.first), piece.bytes});
                lastLine = piece.line;
                continue;
            }
            if (piece.first < end) {
                find(std::max(piece.line, lastLine), "writes to " + hex(piece.first, 5) + " again, as line " +
                                                         std::to_string(std::min(piece.line, lastLine)) + " did");
            }
            if (piece.first + piece.bytes <= end) continue;
            segments.back().bytes = piece.first + piece.bytes - segments.back().first;
            lastLine = piece.line;
        }
    }

    ImageReport report_;
    std::vector<Piece> pieces_;
    std::uint32_t upper_ = 0;
    std::size_t endLine_ = 0;
    std::size_t startLine_ = 0;  // of the record at address 0 that would be held back
};

}  // namespace

ImageReport checkImage(std::string_view content) { return Checker().check(content); }

std::string segmentText(const MemorySegment& segment) {
    return hex(segment.first, 5) + " to " + hex(segment.first + segment.bytes - 1, 5) + ", " +
           std::to_string(segment.bytes) + (segment.bytes == 1 ? " byte" : " bytes");
}

std::vector<std::string> findingLines(const std::vector<ImageFinding>& findings, std::size_t most) {
    std::vector<std::string> lines;
    for (const auto& finding : findings) {
        if (lines.size() == most) {
            lines.push_back("and " + std::to_string(findings.size() - most) + " more");
            break;
        }
        lines.push_back((finding.line ? "line " + std::to_string(finding.line) : std::string("the file")) + " " +
                        finding.text);
    }
    return lines;
}

}  // namespace corvane
