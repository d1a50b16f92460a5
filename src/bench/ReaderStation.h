#pragma once

#include "bench/Loop.h"
#include "bench/Outlet.h"
#include "bench/ReaderSocket.h"

namespace corvane::bench {

/// One simulated device behind a HID reader that is listed at the socket. While the device is unplugged the reader is
/// not listed. Loop and socket must live longer.
class ReaderStation : public Outlet, public Timed {
public:
    ReaderStation(Loop& loop, ReaderSocket& socket, DeviceSpec spec,
                  std::unique_ptr<models::ReplayThen> recorded = nullptr);
    ~ReaderStation() override;

    std::string path() const override { return device().isPlugged() ? path_ : ""; }
    std::string remark() const override;
    const models::HidReader& reader() const { return reader_; }

    std::optional<Micros> nextAt() const override;
    void act(Micros now) override;

private:
    Loop& loop_;
    ReaderSocket& socket_;
    models::HidReader reader_;
    std::string path_;
    std::optional<Micros> comesBackAt_;
};

}  // namespace corvane::bench
