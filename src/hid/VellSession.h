#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "hid/modVell.h"
#include "text/Variant.h"

namespace corvane {

/// What the members of the VellIO control share: the library, what it can do, and the one handle in it.
class VellSession {
public:
    VellSession(ModuleLoader& loader, const std::string& libraryPath) : library(loader, libraryPath) {}

    modVell library;

    bool present = false;                                   ///< the library was found at the start
    std::string problem = "the HID library is not loaded";  ///< why there is no handle; empty when there is
    bool supportsAddNewUSBID = false;
    bool supportsGetDeviceUSBID = false;
    bool supportsFlushQueue = false;
    bool supportsCheckDevicesIsChanged = false;
    bool isPolled = false;  ///< it wants to be served (vellService, vellDispatch)

    /// Told what crosses the library's border, in the words of a recording; not set where nobody takes it down.
    std::function<void(const char* what, const Bytes& bytes)> witness;
    void tell(const char* what, const Bytes& bytes = {}) const {
        if (witness) witness(what, bytes);
    }

    std::int32_t handle = 0;
    std::int32_t vendorId = 0;   ///< for create
    std::int32_t productId = 0;  ///< -1 means any
    std::intptr_t user = 0;      ///< the control, as the callback gets it

    /// Looks whether the library is there and what it exports, then makes a handle.
    void load();

    /// Makes the handle when there is a library and no handle yet; may be tried again.
    void create();
    void destroy();

    /// No handle is made from now on.
    void end();
    void registerCallBack() { library.setCallBackProc(handle, VellCallBackProc, user); }

    /// True when the library exports that name; loaded for the question if need be.
    bool isExported(const std::string& name);

    bool isOpen() { return handle && library.isOpen(handle); }
};

/// A text of the library as an own one; null is empty.
inline std::string vellText(const char* text) { return text ? text : std::string(); }

}  // namespace corvane
