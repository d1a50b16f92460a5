#include "vellio/Handles.h"
#include "vellio/vellio.h"

using namespace corvane::vellio;

namespace {

bool isId(std::int32_t id) { return id == kAnyId || isIn(id, 0, 0xFFFF); }

template <typename Text>
const char* textOf(std::int32_t hVell, const char* device, Text text) {
    return with(hVell, "", [&](Transport& transport) {
        const Device* found = device ? transport.devices().find(device) : nullptr;
        return found ? transport.lend(text(*found)) : "";
    });
}

}  // namespace

Handles& corvane::vellio::handles() {
    static Handles table;
    return table;
}

extern "C" {

std::int32_t vellCreate(std::int32_t vendorId, std::int32_t productId) {
    try {
        auto backend = isId(vendorId) && isId(productId) ? makeBackend() : nullptr;
        if (!backend) return 0;
        const std::int32_t hVell = handles().last + 1;
        handles().open[hVell] = std::make_shared<Transport>(hVell, std::move(backend), vendorId, productId);
        handles().last = hVell;
        return hVell;
    } catch (...) {
        return 0;
    }
}

void vellDestroy(std::int32_t hVell) {
    with(hVell, [hVell](Transport& transport) {
        transport.retire();
        transport.close();
        handles().open.erase(hVell);
    });
}

void vellSetCallBackProc(std::int32_t hVell, VellCallBack proc, std::intptr_t user) {
    with(hVell, [=](Transport& transport) { transport.callBack(proc, user); });
}

void vellSetCallBackWnd(std::int32_t hVell, std::int32_t window) {
    with(hVell, [=](Transport& transport) { transport.window = window; });
}

std::int32_t vellGetEvent(std::int32_t hVell) {
    return with(hVell, -1, [](Transport& transport) { return static_cast<std::int32_t>(transport.takeEvent()); });
}

const char* vellGetParamString(std::int32_t hVell) {
    return with(hVell, "", [](Transport& transport) { return transport.lend(transport.eventText()); });
}

std::int16_t vellService(std::int32_t hVell) {
    return with(hVell, kFalse, [](Transport& transport) { return truth(transport.service()); });
}

void vellDispatch(std::int32_t hVell) {
    with(hVell, [](Transport& transport) { transport.dispatch(); });
}

std::int32_t vellNumberOfDevice(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) {
        transport.look();
        return transport.devices().count();
    });
}

const char* vellEnumDeviceName(std::int32_t hVell, std::int32_t index) {
    return with(hVell, "", [index](Transport& transport) {
        const Device* device = transport.devices().at(index);
        return device ? transport.lend(transport.devices().nameOf(*device)) : "";
    });
}

const char* vellEnumDevice(std::int32_t hVell, std::int32_t index) {
    return with(hVell, "", [index](Transport& transport) {
        const Device* device = transport.devices().at(index);
        return device ? transport.lend(transport.devices().textOf(*device)) : "";
    });
}

const char* vellGetDevicePrefix(std::int32_t hVell) {
    return with(hVell, "", [](Transport& transport) { return transport.lend(transport.devices().prefix()); });
}

void vellSetDevicePrefix(std::int32_t hVell, const char* prefix) {
    with(hVell, [prefix](Transport& transport) {
        if (prefix) transport.devices().prefix(prefix);
    });
}

std::int16_t vellAddNewUSBID(std::int32_t hVell, std::int32_t vendorId, std::int32_t productId) {
    return with(hVell, kFalse, [=](Transport& transport) {
        if (!isId(vendorId) || !isId(productId)) return kFalse;
        transport.want(vendorId, productId);
        return kTrue;
    });
}

std::int16_t vellDeviceIsUSBID(std::int32_t hVell, const char* device, std::int32_t vendorId, std::int32_t productId) {
    return with(hVell, kFalse, [=](Transport& transport) {
        const Device* found = device ? transport.devices().find(device) : nullptr;
        return truth(found && hasIds(found->info, vendorId, productId));
    });
}

std::int16_t vellGetDeviceUSBID(std::int32_t hVell, const char* device, std::int32_t* vendorId,
                                std::int32_t* productId) {
    return with(hVell, kFalse, [=](Transport& transport) {
        const Device* found = device ? transport.devices().find(device) : nullptr;
        if (!found) return kFalse;
        if (vendorId) *vendorId = found->info.vendor;
        if (productId) *productId = found->info.product;
        return kTrue;
    });
}

const char* vellGetDeviceManufacturer(std::int32_t hVell, const char* device) {
    return textOf(hVell, device, [](const Device& found) { return found.info.manufacturer; });
}

const char* vellGetDeviceProduct(std::int32_t hVell, const char* device) {
    return textOf(hVell, device, [](const Device& found) { return found.info.name; });
}

const char* vellGetDeviceSerialNumber(std::int32_t hVell, const char* device) {
    return textOf(hVell, device, [](const Device& found) { return found.info.serialNumber; });
}

const char* vellGetDevicePath(std::int32_t hVell, const char* device) {
    return textOf(hVell, device, [](const Device& found) { return found.info.path; });
}

std::int16_t vellCheckDevicesIsChanged(std::int32_t hVell, std::int16_t raiseDeviceEvent) {
    return with(hVell, kFalse, [raiseDeviceEvent](Transport& transport) {
        transport.look();
        const bool changed = transport.takeChanged();
        if (raiseDeviceEvent) transport.dispatchDeviceEvents();
        return truth(changed);
    });
}

std::int32_t vellGetScanTiming(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) { return transport.scanTiming; });
}

void vellSetScanTiming(std::int32_t hVell, std::int32_t milliseconds) {
    with(hVell, [milliseconds](Transport& transport) {
        if (isIn(milliseconds, 0, kLongestWait)) transport.scanTiming = milliseconds;
    });
}

std::int16_t vellOpen(std::int32_t hVell, const char* device) {
    return with(hVell, kFalse,
                [device](Transport& transport) { return truth(transport.open(device ? device : std::string())); });
}

std::int16_t vellIsInUse(std::int32_t hVell) {
    return with(hVell, kFalse, [](Transport& transport) { return truth(transport.isInUse()); });
}

void vellClose(std::int32_t hVell) {
    with(hVell, [](Transport& transport) { transport.close(); });
}

std::int16_t vellIsOpen(std::int32_t hVell) {
    return with(hVell, kFalse, [](Transport& transport) { return truth(transport.connection().isOpen()); });
}

std::int16_t vellIsHIDIOReady(std::int32_t hVell) {
    return with(hVell, kFalse, [](Transport& transport) {
        transport.move();
        return truth(transport.connection().isOpen());
    });
}

}  // extern "C"
