#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vellio/Connection.h"
#include "vellio/DeviceList.h"
#include "vellio/EventQueue.h"
#include "vellio/vellio.h"

namespace corvane::vellio {

/// What stands behind one handle: the devices, the open one, and the events that wait for delivery.
class Transport {
public:
    Transport(std::int32_t handle, std::unique_ptr<HidBackend> backend, std::int32_t vendor, std::int32_t product);

    DeviceList& devices() { return devices_; }
    Connection& connection() { return connection_; }

    /// Lists the devices of one more pair too.
    void want(std::int32_t vendor, std::int32_t product);

    bool open(const std::string& device);

    /// Whether the last opening failed because another program has the device.
    bool isInUse() const { return refusal_.isInUse; }
    void close() { connection_.close(); }

    /// Moves reports and looks for devices when it is time to; True when something new has come in.
    bool service();

    /// Moves reports only: a program that does not call vellService is driven so by its other calls. True when
    /// something new has come in.
    bool move() { return connection_.move(); }

    /// Compares with what is plugged in now.
    void look();

    /// True when a device has come or gone since the last call.
    bool takeChanged() { return std::exchange(changed_, false); }

    void callBack(VellCallBack proc, std::intptr_t user);
    void dispatch();              ///< all events that wait now; does nothing inside a callback
    void dispatchDeviceEvents();  ///< the same for events of devices only
    Code takeEvent();             ///< without a callback

    /// Nobody is called back from now on, not even by a delivery that is under way.
    void retire() { proc_ = nullptr; }

    const std::string& eventText() const { return eventText_; }

    /// Keeps a text for the caller of the C interface.
    const char* lend(std::string text);

    std::int32_t scanTiming = 500;       ///< ms
    std::int32_t requestTimeout = 1000;  ///< ms
    std::int32_t window = 0;
    bool async = true;

private:
    void notice();
    void apply(const std::vector<std::string>& gone);
    void deliver(bool devicesOnly);

    const std::int32_t handle_;
    std::unique_ptr<HidBackend> backend_;
    EventQueue events_;
    DeviceList devices_;
    Connection connection_;
    VellCallBack proc_ = nullptr;
    std::intptr_t user_ = 0;
    std::uint32_t lastLook_ = 0;
    Refusal refusal_;
    bool changed_ = false;
    bool delivering_ = false;
    std::string eventText_;
    std::string lent_;
};

}  // namespace corvane::vellio
