#pragma once

#include <string>

#include "models/Device.h"
#include "text/Number.h"

namespace corvane::models {

inline Bytes fromHex(std::string_view digits) {
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        bytes.push_back(static_cast<std::uint8_t>(hexNumber(digits.substr(at, 2)).value()));
    }
    return bytes;
}

inline std::string toHex(const Bytes& bytes) {
    std::string digits;
    for (const auto byte : bytes) {
        for (const auto half : {byte >> 4, byte & 15}) digits += "0123456789abcdef"[half];
    }
    return digits;
}

/// A host that talks to a peer in virtual time and writes down what it hears.
struct Talk {
    Peer& peer;
    std::uint32_t rate = 19200;
    Micros now = 0;

    /// Says the bytes (in hexadecimal), then listens for a while: "MS:HEX", one for each moment at which something came
    /// in, MS counted from the question.
    std::string timeline(std::string_view hex, Micros listenMs) {
        std::string heard;
        const Micros asked = now;
        peer.hear(now, fromHex(hex), rate);
        for (const Micros end = now + listenMs * 1000;;) {
            const auto next = peer.nextAt();
            if (!next || *next > end) {
                now = end;
                return heard;
            }
            now = std::max(now, *next);
            const Bytes bytes = peer.speak(now);
            if (bytes.empty()) continue;
            heard += (heard.empty() ? "" : " ") + std::to_string((now - asked) / 1000) + ":" + toHex(bytes);
        }
    }

    /// What comes at once.
    std::string ask(std::string_view hex) {
        const std::string heard = timeline(hex, 0);
        return heard.empty() ? "" : heard.substr(2);
    }

    /// The same for a line of text, which a CR ends.
    std::string line(const std::string& text) { return ask(toHex(bytesOf(text + "\r"))); }
};

}  // namespace corvane::models
