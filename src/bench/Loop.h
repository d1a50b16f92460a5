#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <poll.h>
#include <vector>

#include "models/Peer.h"

namespace corvane::bench {

using models::Micros;

/// Something that acts at moments it knows ahead. Not owned by the loop.
class Timed {
public:
    virtual ~Timed() = default;
    virtual std::optional<Micros> nextAt() const = 0;
    virtual void act(Micros now) = 0;
};

/// Waits for descriptors and for moments, to a few microseconds: it sleeps until shortly before a moment and then looks
/// at the clock. Without descriptors that stir and moments that come it uses no processor time.
class Loop {
public:
    Loop();

    /// Microseconds since the loop was made.
    Micros now() const;

    /// Calls the handler whenever the descriptor can be read or has hung up. Handlers may watch and unwatch.
    void watch(int descriptor, std::function<void()> readable);
    void unwatch(int descriptor);

    void add(Timed& timed) { timed_.push_back(&timed); }
    void remove(Timed& timed) { std::erase(timed_, &timed); }

    /// Runs until stop is called, or until the moment has come; what is due or there already is handled in any case.
    void run(std::optional<Micros> until = std::nullopt);
    void stop() { stopped_ = true; }

private:
    void step(std::optional<Micros> until);
    void wait(std::optional<Micros> until);
    std::optional<Micros> nextAt() const;

    Micros start_;
    Micros listensUntil_ = 0;
    std::map<int, std::shared_ptr<std::function<void()>>> watches_;
    std::vector<Timed*> timed_;
    std::vector<pollfd> polled_;
    bool stopped_ = false;
};

}  // namespace corvane::bench
