#pragma once

#include <deque>
#include <functional>

#include "models/Device.h"

namespace corvane::faults {

using models::Micros;

/// What may happen to a sending or an answer. A restart comes instead of hearing the sending, or instead of the answer;
/// "after" right behind the answer. With a banner the boot loader says its prompt when it has started.
enum class What { lose, damage, head, late, twice, restart, banner, after, bannerAfter, slow };

/// One planted event, written SIDE NUMBER ":" WHAT MS, for example "s3:late600": the third sending from the erase on
/// comes 600 ms late; "a2:lose": the second answer is lost.
struct Event {
    char side = 's';
    int number = 0;
    What what = What::lose;
    int ms = 0;  ///< late: how much; twice: until the second copy, 0 right behind; slow: what an erase takes

    std::string text() const;
    static std::optional<Event> from(const std::string& text);
};

/// Something that was sent or answered, in order.
struct Step {
    char side;
    int number;
    const char* content;  ///< what the sending was, or what is answered
    Micros at;
};

/// A device that does right, with a boot loader and an application, at the end of a line that does what is planned.
/// Counts from the first erase on; before it nothing happens. Both directions keep their order, but for second copies
/// that come late. What comes while the device erases or programs waits until it is ready; what comes while it starts
/// is lost.
class Wire : public models::Peer {
public:
    /// What happens to this step, if anything.
    using Plan = std::function<std::optional<Event>(const Step&)>;

    explicit Wire(Plan plan);

    /// A whole sending, whose first byte leaves the port now or when the port is free.
    void hear(Micros now, const Bytes& bytes, std::uint32_t rate) override;
    std::optional<Micros> nextAt() const override;
    Bytes speak(Micros now) override;

    /// Bytes that the port still holds.
    int unsent(Micros now) const;

    const models::Device& device() const { return device_; }
    const std::vector<Step>& steps() const { return steps_; }
    const std::vector<Event>& struck() const { return struck_; }

    /// All that the program has sent and heard from the first erase on, in order and without times.
    const std::string& conversation() const { return conversation_; }

private:
    struct Message {
        Micros at;
        Bytes bytes;
        const char* content;
        std::optional<Event> event;  // that strikes at the device
    };

    const char* contentOf(const Bytes& bytes);
    Micros wireTime(std::size_t bytes) const;
    std::optional<Event> strike(char side, const char* content, Micros now);
    static void put(std::deque<Message>& way, Message message);
    void advance(Micros now);
    void takeIn(const Message& message, Micros now);
    void answer(Micros now, Bytes bytes, const char* content);
    void restart(Micros now, bool hasBanner);

    Plan plan_;
    models::Device device_;
    std::uint32_t rate_ = 19200;
    bool counts_ = false, isBeyond_ = false;
    int numbers_[2] = {0, 0};
    std::vector<Step> steps_;
    std::vector<Event> struck_;
    std::string conversation_;
    std::deque<Message> toDevice_, toHost_;
    Micros portFreeAt_ = 0, lastArrival_ = 0, lastAnswer_ = 0, busyUntil_ = 0, deafUntil_ = 0;
};

}  // namespace corvane::faults
