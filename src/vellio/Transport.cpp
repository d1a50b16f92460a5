#include "vellio/Transport.h"

#include <utility>

namespace corvane::vellio {

Transport::Transport(std::int32_t handle, std::unique_ptr<HidBackend> backend, std::int32_t vendor,
                     std::int32_t product)
    : handle_(handle), backend_(std::move(backend)), connection_(events_), lastLook_(backend_->tick()) {
    devices_.want(vendor, product);
    devices_.update(backend_->devices(), {});  // these are no news
}

void Transport::want(std::int32_t vendor, std::int32_t product) {
    look();
    devices_.want(vendor, product);
    for (const auto& device : devices_.update(backend_->devices(), {}).come) {
        events_.add({Code::listed, device.number - 1, devices_.textOf(device)});
        changed_ = true;
    }
}

bool Transport::open(const std::string& device) {
    notice();  // or a device that was changed for another one would be taken for gone after it has been opened
    const Device* found = devices_.find(device);
    if (!found) {
        look();
        found = devices_.find(device);
    }
    refusal_ = {};
    if (!found) {
        eventText_ = "there is no device of that name";
        return false;
    }
    const Device* current = connection_.identity();
    if (current && current->info.path == found->info.path) return true;
    connection_.close();
    auto opened = backend_->open(found->info.path, refusal_);
    if (!opened) {
        eventText_ = refusal_.words;
        return false;
    }
    connection_.open(std::move(opened), *found, devices_.textOf(*found));
    return true;
}

bool Transport::service() {
    const bool wasOpen = connection_.isOpen();
    bool news = connection_.move();
    const bool lost = wasOpen && !connection_.isOpen();
    if (lost || backend_->tick() - lastLook_ >= static_cast<std::uint32_t>(scanTiming)) {
        lastLook_ = backend_->tick();
        const std::size_t before = events_.size();
        notice();
        news = news || events_.size() > before;
    }
    return news;
}

void Transport::look() {
    lastLook_ = backend_->tick();
    apply(backend_->changes().value_or(std::vector<std::string>()));
}

void Transport::notice() {
    if (const auto gone = backend_->changes()) apply(*gone);
}

void Transport::apply(const std::vector<std::string>& gone) {
    const auto changes = devices_.update(backend_->devices(), gone);
    for (const auto& device : changes.gone) {
        const Device* open = connection_.identity();
        if (open && open->info.path == device.info.path) connection_.close();
        events_.add({Code::unplugged, device.number - 1, devices_.textOf(device)});
    }
    for (const auto& device : changes.come) {
        events_.add({Code::plugged, device.number - 1, devices_.textOf(device)});
    }
    changed_ = changed_ || !changes.gone.empty() || !changes.come.empty();
}

void Transport::callBack(VellCallBack proc, std::intptr_t user) {
    proc_ = proc;
    user_ = user;
}

void Transport::dispatch() { deliver(false); }

void Transport::dispatchDeviceEvents() { deliver(true); }

void Transport::deliver(bool devicesOnly) {
    if (delivering_ || !proc_) return;
    delivering_ = true;
    // Events that the callbacks themselves cause wait for the next call, so that this one ends.
    for (std::size_t left = events_.size(); left > 0 && proc_; --left) {
        const auto event = devicesOnly ? events_.takeOfDevice() : events_.take();
        if (!event) break;
        eventText_ = event->text;
        proc_(handle_, user_, static_cast<std::int32_t>(event->code), event->parameter);
    }
    delivering_ = false;
}

Code Transport::takeEvent() {
    const auto event = events_.take();
    if (!event) return Code::none;
    eventText_ = event->text;
    return event->code;
}

const char* Transport::lend(std::string text) {
    lent_ = std::move(text);
    return lent_.c_str();
}

}  // namespace corvane::vellio
