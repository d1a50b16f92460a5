#include "bench/ReaderStation.h"

namespace corvane::bench {

ReaderStation::ReaderStation(Loop& loop, ReaderSocket& socket, DeviceSpec spec,
                             std::unique_ptr<models::ReplayThen> recorded)
    : Outlet(std::move(spec), std::move(recorded)),
      loop_(loop),
      socket_(socket),
      reader_(wire(), Outlet::spec().reader),
      path_(socket.add(reader_)) {
    loop_.add(*this);
}

ReaderStation::~ReaderStation() {
    loop_.remove(*this);
    socket_.remove(reader_);
}

std::string ReaderStation::remark() const {
    const auto count = reader_.commands().size();
    if (count == 0) return {};
    return "; its reader took " + std::to_string(count) + (count == 1 ? " command" : " commands") + ", rate " +
           std::to_string(reader_.baudRate()) + ", direction " + std::to_string(reader_.currentDirection());
}

std::optional<Micros> ReaderStation::nextAt() const {
    if (device().isPlugged() || !spec().replugMs) return std::nullopt;
    return comesBackAt_.value_or(0);
}

void ReaderStation::act(Micros now) {
    if (!comesBackAt_) {
        comesBackAt_ = now + *spec().replugMs * 1000LL;
        return;
    }
    comesBackAt_.reset();
    device().plugIn(now);
    reader_.restart();
    socket_.update();
}

}  // namespace corvane::bench
