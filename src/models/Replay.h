#pragma once

#include <optional>
#include <string>
#include <vector>

#include "models/Device.h"
#include "recording/Recording.h"

namespace corvane::models {

/// Where a program sent something else than it did when the run was recorded.
struct Departure {
    std::size_t at = 0;     ///< the byte, counted from 0, of all that was sent to this port
    std::string before;     ///< what both sent just before it
    std::string then, now;  ///< what the recorded program sent there, and what this one did
};

/// A device that does what the one in a recording did, as long as the program sends what it sent then; where that ends
/// it says nothing any more. What was left out because it was a secret may be anything in one frame.
class Replay : public Peer {
public:
    enum class Timing {
        recorded,  ///< each answer as long after what was sent before it as it was then
        fast,      ///< each as soon as that has come in
        absolute,  ///< each when it was seen then: for a clock that is as exact as the recorded one
    };

    /// The events of a run of which those of this port count.
    Replay(const std::vector<RecordedEvent>& events, const std::string& port, Timing timing);

    void hear(Micros now, const Bytes& bytes, std::uint32_t hostRate) override;
    std::optional<Micros> nextAt() const override;
    Bytes speak(Micros now) override;
    bool isPlugged() const override { return isPlugged_; }

    /// Where the program departed; nothing as long as it did not.
    const std::optional<Departure>& departure() const { return departure_; }

    /// Bytes that were sent then and have not come now, and the other way round what has come.
    std::size_t missing() const { return expected_.size() - heard_; }
    std::size_t heard() const { return heard_; }

private:
    struct Step {
        enum class Kind { says, vanishes, returns } kind;
        Micros at;           ///< in the recording
        Micros delay;        ///< since what was sent before it began
        std::size_t anchor;  ///< bytes that were sent before that began
        std::size_t sent;    ///< and when it was over
        Bytes bytes;
    };

    std::optional<Micros> dueAt(const Step& step) const;
    void depart(std::uint8_t byte);
    bool takesSecret(std::uint8_t byte);

    Timing timing_;
    std::vector<Step> steps_;
    std::size_t next_ = 0;
    std::vector<std::int16_t> expected_;  ///< what is sent; kSecret where a frame begins that was left out
    std::vector<Micros> heardAt_;         ///< by what of it has come
    std::size_t heard_ = 0;
    Bytes secret_;  ///< as much of such a frame as has come
    Bytes latest_;  ///< what came last, for people
    bool isPlugged_ = true;
    std::optional<Departure> departure_;
};

/// A replay that goes on as a device of that kind where the program departs. The device hears everything from the
/// start, so that it stands where the recorded one stood; without one the rest is silence.
class ReplayThen : public Peer {
public:
    ReplayThen(Replay replay, const std::optional<DeviceOptions>& then) : replay_(std::move(replay)) {
        if (then) device_.emplace(*then);
    }

    void hear(Micros now, const Bytes& bytes, std::uint32_t hostRate) override;
    std::optional<Micros> nextAt() const override;
    Bytes speak(Micros now) override;
    bool isPlugged() const override { return goesOn() ? device_->isPlugged() : replay_.isPlugged(); }

    const Replay& replay() const { return replay_; }

private:
    bool goesOn() const { return device_ && replay_.departure(); }

    Replay replay_;
    std::optional<Device> device_;
};

}  // namespace corvane::models
