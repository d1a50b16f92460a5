#pragma once

#include <cstdint>
#include <string>

#include "platform/ModuleLoader.h"
#include "vellio/vellio.h"

namespace corvane {

/// The HID library as a shared object that is loaded by path when one of its operations is first called. It holds one
/// reference to the module until it ends; it does not own the loader. Without the library, or without an operation, a
/// call does nothing and gives 0 or null.
class modVell {
public:
    modVell(ModuleLoader& loader, std::string path) : loader_(loader), path_(std::move(path)) {}
    ~modVell();
    modVell(const modVell&) = delete;
    modVell& operator=(const modVell&) = delete;

    ModuleLoader& loader() const { return loader_; }
    const std::string& path() const { return path_; }

private:
    template <typename Signature>
    class Operation;

    /// One operation of the library, looked up at its first call.
    template <typename Result, typename... Arguments>
    class Operation<Result(Arguments...)> {
    public:
        Operation(modVell& library, const char* name) : library_(library), name_(name) {}

        Result operator()(Arguments... arguments) {
            if (!address_) address_ = reinterpret_cast<Result (*)(Arguments...)>(library_.bind(name_));
            return address_ ? address_(arguments...) : Result();
        }

    private:
        modVell& library_;
        const char* name_;
        Result (*address_)(Arguments...) = nullptr;
    };

    void* bind(const char* name);

    ModuleLoader& loader_;
    std::string path_;
    ModuleLoader::Module module_ = nullptr;

public:
    Operation<decltype(vellCreate)> create{*this, "vellCreate"};
    Operation<decltype(vellDestroy)> destroy{*this, "vellDestroy"};
    Operation<decltype(vellSetCallBackProc)> setCallBackProc{*this, "vellSetCallBackProc"};
    Operation<decltype(vellGetParamString)> getParamString{*this, "vellGetParamString"};
    Operation<decltype(vellService)> service{*this, "vellService"};
    Operation<decltype(vellDispatch)> dispatch{*this, "vellDispatch"};

    Operation<decltype(vellNumberOfDevice)> numberOfDevice{*this, "vellNumberOfDevice"};
    Operation<decltype(vellEnumDeviceName)> enumDeviceName{*this, "vellEnumDeviceName"};
    Operation<decltype(vellEnumDevice)> enumDevice{*this, "vellEnumDevice"};
    Operation<decltype(vellGetDevicePrefix)> getDevicePrefix{*this, "vellGetDevicePrefix"};
    Operation<decltype(vellSetDevicePrefix)> setDevicePrefix{*this, "vellSetDevicePrefix"};
    Operation<decltype(vellAddNewUSBID)> addNewUSBID{*this, "vellAddNewUSBID"};
    Operation<decltype(vellDeviceIsUSBID)> deviceIsUSBID{*this, "vellDeviceIsUSBID"};
    Operation<decltype(vellGetDeviceUSBID)> getDeviceUSBID{*this, "vellGetDeviceUSBID"};
    Operation<decltype(vellGetDeviceManufacturer)> getDeviceManufacturer{*this, "vellGetDeviceManufacturer"};
    Operation<decltype(vellGetDeviceProduct)> getDeviceProduct{*this, "vellGetDeviceProduct"};
    Operation<decltype(vellGetDeviceSerialNumber)> getDeviceSerialNumber{*this, "vellGetDeviceSerialNumber"};
    Operation<decltype(vellGetDevicePath)> getDevicePath{*this, "vellGetDevicePath"};
    Operation<decltype(vellCheckDevicesIsChanged)> checkDevicesIsChanged{*this, "vellCheckDevicesIsChanged"};
    Operation<decltype(vellGetScanTiming)> getScanTiming{*this, "vellGetScanTiming"};
    Operation<decltype(vellSetScanTiming)> setScanTiming{*this, "vellSetScanTiming"};

    Operation<decltype(vellOpen)> open{*this, "vellOpen"};
    Operation<decltype(vellIsInUse)> isInUse{*this, "vellIsInUse"};
    Operation<decltype(vellClose)> close{*this, "vellClose"};
    Operation<decltype(vellIsOpen)> isOpen{*this, "vellIsOpen"};
    Operation<decltype(vellIsHIDIOReady)> isHIDIOReady{*this, "vellIsHIDIOReady"};

    Operation<decltype(vellWrite)> write{*this, "vellWrite"};
    Operation<decltype(vellBytesToWrite)> bytesToWrite{*this, "vellBytesToWrite"};
    Operation<decltype(vellDiscardWriteBuffer)> discardWriteBuffer{*this, "vellDiscardWriteBuffer"};
    Operation<decltype(vellGetWriteBufferSize)> getWriteBufferSize{*this, "vellGetWriteBufferSize"};
    Operation<decltype(vellSetWriteBufferSize)> setWriteBufferSize{*this, "vellSetWriteBufferSize"};
    Operation<decltype(vellRead)> read{*this, "vellRead"};
    Operation<decltype(vellBytesToRead)> bytesToRead{*this, "vellBytesToRead"};
    Operation<decltype(vellDiscardReadBuffer)> discardReadBuffer{*this, "vellDiscardReadBuffer"};
    Operation<decltype(vellGetReadBufferSize)> getReadBufferSize{*this, "vellGetReadBufferSize"};
    Operation<decltype(vellSetReadBufferSize)> setReadBufferSize{*this, "vellSetReadBufferSize"};
    Operation<decltype(vellGetAsyncIO)> getAsyncIO{*this, "vellGetAsyncIO"};
    Operation<decltype(vellSetAsyncIO)> setAsyncIO{*this, "vellSetAsyncIO"};
    Operation<decltype(vellGetBreak)> getBreak{*this, "vellGetBreak"};
    Operation<decltype(vellSetBreak)> setBreak{*this, "vellSetBreak"};
    Operation<decltype(vellGetCTSHolding)> getCTSHolding{*this, "vellGetCTSHolding"};

    Operation<decltype(vellWriteCtrl)> writeCtrl{*this, "vellWriteCtrl"};
    Operation<decltype(vellReadCtrl)> readCtrl{*this, "vellReadCtrl"};
    Operation<decltype(vellBytesToReadCtrl)> bytesToReadCtrl{*this, "vellBytesToReadCtrl"};
    Operation<decltype(vellDiscardReadCtrlBuffer)> discardReadCtrlBuffer{*this, "vellDiscardReadCtrlBuffer"};

    Operation<decltype(vellGetInputReport)> getInputReport{*this, "vellGetInputReport"};
    Operation<decltype(vellSetOutputReport)> setOutputReport{*this, "vellSetOutputReport"};
    Operation<decltype(vellGetFeature)> getFeature{*this, "vellGetFeature"};
    Operation<decltype(vellSetFeature)> setFeature{*this, "vellSetFeature"};
    Operation<decltype(vellGetNumberInputBuffers)> getNumberInputBuffers{*this, "vellGetNumberInputBuffers"};
    Operation<decltype(vellSetNumberInputBuffers)> setNumberInputBuffers{*this, "vellSetNumberInputBuffers"};
    Operation<decltype(vellFlushQueue)> flushQueue{*this, "vellFlushQueue"};
    Operation<decltype(vellGetIndexedString)> getIndexedString{*this, "vellGetIndexedString"};
};

/// What the library calls, defined beside the control: turns the user value back into the control and hands over the
/// other three.
extern "C" std::int32_t VellCallBackProc(std::int32_t hVell, std::intptr_t user, std::int32_t wParam,
                                         std::int32_t lParam);

}  // namespace corvane
