#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace corvane {

/// Something without a descriptor to wait on, which has to be asked again and again (the HID library).
class PolledSource {
public:
    virtual ~PolledSource() = default;

    /// True while it wants to be served every millisecond of a wait, or every second one when it has been silent for a
    /// while; otherwise twice a second is enough.
    virtual bool isBusy() = 0;

    /// Moves data and queues events, never calls back. True when something new has come in.
    virtual bool service() = 0;

    /// Delivers the queued events.
    virtual void dispatch() = 0;
};

/// Time and events of the program's one thread. Bytes move inside every wait; handlers run only inside DoEvents, and
/// never inside one another. Nothing here fails.
class Runtime {
public:
    virtual ~Runtime() = default;

    /// Milliseconds since some moment; wraps after 2^32.
    virtual std::uint32_t tick() = 0;

    /// Microseconds since some moment; never goes back.
    virtual std::int64_t micros() const = 0;

    /// Seconds since midnight, with a fraction.
    virtual double secondsOfDay() = 0;

    /// The local date and time for people and records, "2026-11-24 21:40:07".
    virtual std::string timestamp() = 0;

    /// Waits its full time. Received bytes go into the ports' buffers meanwhile, transmit queues drain.
    virtual void Sleep(int ms) = 0;

    /// Waits until something new has come in at a port, a transfer or a timer, or until the time is over, which it may
    /// stretch to 10 ms when nothing stirs. For the polling loops: never shorter without news.
    virtual void WaitActivity(int ms) = 0;

    /// Something is likely to come in after so many microseconds, an answer to what has just been sent. It makes no
    /// wait shorter or longer; but a processor takes longer to wake up than a fast line to carry an answer, so the next
    /// wait for activity may look without sleeping for a moment then. Holds for what comes in next, or until told anew.
    virtual void expectNews(std::int64_t micros) = 0;

    /// Runs the handlers that are due, then the face's pump.
    virtual void DoEvents() = 0;

    /// What a face does with its own events: Qt's, or signals. Called at the end of each DoEvents.
    virtual void setPump(std::function<void()> pump) = 0;

    /// What a face rather does while the program waits for the other side, which then takes no time from the dialogue.
    /// Called at the start of each WaitActivity that finds nothing new; it may dispatch and so end that wait.
    virtual void setIdle(std::function<void()> idle) = 0;

    /// A handler called every so many milliseconds, from DoEvents. The number stops it again.
    virtual int startTimer(int ms, std::function<void()> due) = 0;
    virtual void stopTimer(int timer) = 0;

    /// Runs a handler in the next DoEvents; forget drops what an owner has posted and not seen run.
    virtual void post(const void* owner, std::function<void()> handler) = 0;
    virtual void forget(const void* owner) = 0;

    /// The source is not owned and must be removed before it ends.
    virtual void add(PolledSource& source) = 0;
    virtual void remove(PolledSource& source) = 0;
};

}  // namespace corvane
