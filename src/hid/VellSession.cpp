#include "hid/VellSession.h"

namespace corvane {

void VellSession::load() {
    auto& loader = library.loader();
    const auto module = loader.open(library.path());
    present = module != nullptr;
    problem = module ? "" : loader.problem();
    if (!module) return;
    supportsAddNewUSBID = loader.lookUp(module, "vellAddNewUSBID") != nullptr;
    supportsGetDeviceUSBID = loader.lookUp(module, "vellGetDeviceUSBID") != nullptr;
    supportsFlushQueue = loader.lookUp(module, "vellFlushQueue") != nullptr;
    supportsCheckDevicesIsChanged = loader.lookUp(module, "vellCheckDevicesIsChanged") != nullptr;
    isPolled = loader.lookUp(module, "vellService") && loader.lookUp(module, "vellDispatch");
    create();
    loader.release(module);  // the bound operations have a reference of their own
}

void VellSession::create() {
    if (handle || !present) return;
    handle = library.create(vendorId, productId);
    problem = handle ? "" : library.path() + ": HID devices cannot be reached";
    if (handle) registerCallBack();
}

void VellSession::destroy() {
    library.destroy(handle);
    handle = 0;
}

void VellSession::end() {
    present = false;
    problem = "the HID library is not loaded";
}

bool VellSession::isExported(const std::string& name) {
    auto& loader = library.loader();
    auto module = loader.opened(library.path());
    if (!module) module = loader.open(library.path());
    if (!module) return false;
    const bool found = loader.lookUp(module, name) != nullptr;
    loader.release(module);
    return found;
}

}  // namespace corvane
