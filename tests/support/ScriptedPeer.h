#pragma once

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "models/Peer.h"

namespace corvane::fakes {

/// The far end of a line that says what the test has written down: at set times, or after it heard something.
class ScriptedPeer : public models::Peer {
public:
    /// So many ms after the last byte of a request, these bytes.
    using Replies = std::vector<std::pair<int, Bytes>>;

    void say(std::int64_t ms, const Bytes& bytes) { speech_.emplace(ms * 1000, bytes); }
    void say(std::int64_t ms, const std::string& text) { say(ms, bytesOf(text)); }

    /// Replies to the next request that ends like this; requests are answered in the order in which they were written.
    void answer(const Bytes& request, const Replies& replies) { answers_.push_back({request, replies}); }
    void answer(const std::string& request, const std::string& reply) {
        answer(bytesOf(request), {{1, bytesOf(reply)}});
    }

    void unplugAt(std::int64_t ms) { unplugAt_ = ms * 1000; }

    const Bytes& heard() const { return heard_; }
    std::string heardText() const { return textOf(heard_); }

    void hear(models::Micros now, const Bytes& bytes, std::uint32_t /*hostRate*/) override {
        for (const auto byte : bytes) {
            heard_.push_back(byte);
            const auto found = std::find_if(answers_.begin(), answers_.end(),
                                            [this](const auto& answer) { return endsWith(answer.first); });
            if (found == answers_.end()) continue;
            for (const auto& [ms, reply] : found->second) speech_.emplace(now + ms * 1000, reply);
            answers_.erase(found);
        }
    }

    std::optional<models::Micros> nextAt() const override {
        std::optional<models::Micros> next = unplugAt_;
        if (!speech_.empty() && (!next || speech_.begin()->first < *next)) next = speech_.begin()->first;
        return next;
    }

    Bytes speak(models::Micros now) override {
        if (unplugAt_ && *unplugAt_ <= now) {
            plugged_ = false;
            unplugAt_.reset();
        }
        Bytes said;
        while (!speech_.empty() && speech_.begin()->first <= now) {
            said.insert(said.end(), speech_.begin()->second.begin(), speech_.begin()->second.end());
            speech_.erase(speech_.begin());
        }
        return said;
    }

    bool isPlugged() const override { return plugged_; }

private:
    bool endsWith(const Bytes& request) const {
        return heard_.size() >= request.size() && std::equal(request.rbegin(), request.rend(), heard_.rbegin());
    }

    Bytes heard_;
    std::multimap<models::Micros, Bytes> speech_;
    std::vector<std::pair<Bytes, Replies>> answers_;
    std::optional<models::Micros> unplugAt_;
    bool plugged_ = true;
};

}  // namespace corvane::fakes
