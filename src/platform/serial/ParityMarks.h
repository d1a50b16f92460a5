#pragma once

#include "text/Variant.h"

namespace corvane {

/// Reads the marks that a tty puts where a byte had a parity error: FF 00 and the byte, with FF FF for a plain FF. A
/// mark may be cut anywhere between two reads.
class ParityMarks {
public:
    /// The bytes without marks, the replacement where an error was.
    Bytes removed(const std::uint8_t* data, std::size_t size, std::uint8_t replacement);

    void reset() { seen_ = Seen::none; }

private:
    enum class Seen { none, mark, error };

    Seen seen_ = Seen::none;
};

}  // namespace corvane
