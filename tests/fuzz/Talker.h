#pragma once

#include <deque>
#include <utility>

#include "fuzz/Input.h"
#include "models/Frame.h"
#include "models/Peer.h"

namespace corvane::fuzz {

/// A device that says what the fuzzer likes: whenever the host has spoken and stopped, the next piece of the input. In
/// it 0xFF ends a piece, 0xFE makes a pause of the next byte times 20 ms, 0xFD begins a sound reply frame of a status
/// and data, 0xFC unplugs the device, 0xFB stands before a byte that is none of these. At the end of the input it is
/// unplugged.
class Talker : public models::Peer {
public:
    explicit Talker(Input& input) : input_(input) {}

    void hear(models::Micros now, const Bytes& bytes, std::uint32_t /*hostRate*/) override {
        if (!bytes.empty()) speaksAt_ = now + kPatience;
    }

    std::optional<models::Micros> nextAt() const override {
        if (!plugged_) return std::nullopt;
        std::optional<models::Micros> next = speaksAt_;
        if (!said_.empty() && (!next || said_.front().first < *next)) next = said_.front().first;
        return next;
    }

    Bytes speak(models::Micros now) override {
        if (speaksAt_ && *speaksAt_ <= now) {
            speaksAt_.reset();
            say(now);
        }
        Bytes bytes;
        while (!said_.empty() && said_.front().first <= now) {
            bytes.insert(bytes.end(), said_.front().second.begin(), said_.front().second.end());
            said_.pop_front();
        }
        return bytes;
    }

    bool isPlugged() const override { return plugged_; }

private:
    static constexpr models::Micros kPatience = 2000;
    static constexpr models::Micros kPause = 20000;

    void say(models::Micros at) {
        plugged_ = plugged_ && !input_.isEmpty();
        Input piece(input_.upTo('\xFF'));
        Bytes bytes;
        std::optional<std::uint8_t> status;  // of the frame that the bytes are for
        const auto flush = [&] {
            if (bytes.size() > 255) bytes.resize(255);
            if (status) bytes = models::replyFrame(0, *std::exchange(status, std::nullopt), bytes);
            if (!bytes.empty()) said_.emplace_back(at, std::exchange(bytes, {}));
        };
        while (!piece.isEmpty()) {
            const auto byte = piece.byte();
            if (byte == 0xFE) {
                flush();
                at += piece.byte() * kPause;
            } else if (byte == 0xFD) {
                flush();
                status = piece.byte();
            } else if (byte == 0xFC) {
                plugged_ = false;
            } else {
                bytes.push_back(byte == 0xFB ? piece.byte() : byte);
            }
        }
        flush();
    }

    Input& input_;
    std::optional<models::Micros> speaksAt_;
    std::deque<std::pair<models::Micros, Bytes>> said_;
    bool plugged_ = true;
};

}  // namespace corvane::fuzz
