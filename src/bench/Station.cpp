#include "bench/Station.h"

namespace corvane::bench {

Station::Station(Loop& loop, OpenWatch& watch, DeviceSpec spec, std::function<void()> portsChanged,
                 std::unique_ptr<models::ReplayThen> recorded)
    : Outlet(std::move(spec), std::move(recorded)), loop_(loop), watch_(watch), portsChanged_(std::move(portsChanged)) {
    plugIn();
    loop_.add(*this);
}

Station::~Station() {
    loop_.remove(*this);
    if (!pty_) return;
    loop_.unwatch(pty_->descriptor());
    watch_.unwatch(watchNumber_);
}

void Station::plugIn() {
    pty_ = std::make_unique<Pty>();
    watchNumber_ =
        watch_.watch(pty_->path(), [this](bool isHeld) { isHeld ? pty_->discardUnread() : pty_->release(); });
    loop_.watch(pty_->descriptor(), [this] { hear(); });
}

void Station::hear() {
    // First, so that a program's coming is known before anything that it has written.
    watch_.take();
    const Bytes bytes = pty_->read();
    const Micros now = loop_.now();
    wire().hear(now - pty_->carryingTime(), bytes, pty_->hostRate());
    checkPlug(now);
}

std::optional<Micros> Station::nextAt() const {
    if (!pty_) return comesBackAt_;
    const auto next = wire().nextAt();
    return next ? std::optional(*next - pty_->carryingTime()) : std::nullopt;
}

void Station::act(Micros now) {
    if (!pty_) {
        comesBackAt_.reset();
        device().plugIn(now);
        plugIn();
        portsChanged_();
        return;
    }
    // The pseudo-terminal takes a moment to carry a byte, so what the host is to have now was to be written a little
    // earlier.
    pty_->write(wire().speak(now + pty_->carryingTime()));
    wire().hear(now, {}, pty_->hostRate());
    checkPlug(now);
}

void Station::checkPlug(Micros now) {
    if (wire().isPlugged()) return;
    loop_.unwatch(pty_->descriptor());
    watch_.unwatch(watchNumber_);
    // Told first: a program that notices the end of its port finds it gone from the list too.
    const auto unplugged = std::move(pty_);
    if (spec().replugMs) comesBackAt_ = now + *spec().replugMs * 1000LL;
    portsChanged_();
}

}  // namespace corvane::bench
