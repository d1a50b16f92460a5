#include "support/hid/VellModule.h"

#include <dlfcn.h>
#include <sstream>

#include "vellio/vellio.h"

namespace corvane::fakes {
namespace {

constexpr char kNames[] =
    "vellAddNewUSBID vellBytesToRead vellBytesToReadCtrl vellBytesToWrite vellBytesToWriteCtrl "
    "vellCheckDevicesIsChanged vellClose vellCreate vellDestroy vellDeviceIsUSBID vellDiscardReadBuffer "
    "vellDiscardReadCtrlBuffer vellDiscardWriteBuffer vellDiscardWriteCtrlBuffer vellDispatch vellEnumDevice "
    "vellEnumDeviceName vellFlushQueue vellGetAsyncIO vellGetBreak vellGetCTSHolding vellGetDeviceManufacturer "
    "vellGetDevicePrefix vellGetDeviceProduct vellGetDeviceSerialNumber vellGetDeviceUSBID vellGetEvent "
    "vellGetFeature vellGetFeaturePtr vellGetIndexedString vellGetInputReport vellGetInputReportPtr "
    "vellGetNumberInputBuffers vellGetParamString vellGetReadBufferSize vellGetRequestTimeout "
    "vellGetScanTiming vellGetWriteBufferSize vellIsHIDIOReady vellIsOpen vellNumberOfDevice vellOpen vellRead "
    "vellReadCtrl vellReadCtrlPtr vellReadPtr vellService vellSetAsyncIO vellSetBreak vellSetCallBackProc "
    "vellSetCallBackWnd vellSetDevicePrefix vellSetFeature vellSetFeaturePtr vellSetNumberInputBuffers "
    "vellSetOutputReport vellSetOutputReportPtr vellSetReadBufferSize vellSetRequestTimeout vellSetScanTiming "
    "vellSetWriteBufferSize vellWrite vellWriteCtrl vellWriteCtrlPtr vellWritePtr";

}  // namespace

FakeModuleLoader::Exports vellModule() {
    // One of each of the library's files, or they would not be linked.
    FakeModuleLoader::Exports exports{{"vellCreate", reinterpret_cast<void*>(&vellCreate)},
                                      {"vellRead", reinterpret_cast<void*>(&vellRead)}};
    std::istringstream names(kNames);
    for (std::string name; names >> name;) exports[name] = dlsym(RTLD_DEFAULT, name.c_str());
    return exports;
}

}  // namespace corvane::fakes
