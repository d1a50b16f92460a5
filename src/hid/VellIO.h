#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <string>

#include "hid/HidCommandChannel.h"
#include "hid/HidIdentifiers.h"
#include "hid/HidPort.h"
#include "hid/ReaderCommands.h"
#include "hid/VellSession.h"
#include "platform/Cancel.h"
#include "platform/Runtime.h"

namespace corvane {

/// The control that shows USB HID readers as serial ports. It owns the binding to the HID library and one handle in it;
/// it owns neither the loader, the runtime nor the cancel. Without the library, a handle or an optional operation every
/// member returns 0, False or an empty text; RuntimeError overflow is all that it throws. A read returns the property,
/// a write of the same name sets it.
class VellIO : private PolledSource {
public:
    using PropertyBag = std::map<std::string, std::int32_t>;

    static constexpr std::int32_t kFixedSize = 480;  ///< twips

    VellIO(Runtime& runtime, ModuleLoader& loader, const std::string& libraryPath, const Cancel& cancel);

    /// Lets go of the library; the reader is told nothing (Terminate does that).
    ~VellIO() override;
    VellIO(const VellIO&) = delete;
    VellIO& operator=(const VellIO&) = delete;

    std::function<void()> OnComm;  ///< CommEvent says why
    /// 0 unplugged, 1 plugged in, 2 anything else about a device; its port name; its text.
    std::function<void(std::int32_t lEvent, const std::string& szPortName, const std::string& szDeviceName)> OnDevice;
    std::function<void(std::int32_t wParam, std::int32_t lParam)> OnVellProc;  ///< every event as it comes

    /// Tells what crosses the library's border, in the words of a recording.
    void watch(std::function<void(const char* what, const Bytes& bytes)> witness) {
        session_.witness = std::move(witness);
    }

    /// A message box with the critical-error icon.
    std::function<void(const std::string& message)> showCritical;

    /// The start: with bUserMode the program runs, else it is being designed and no library is touched.
    void ReadProperties(bool bUserMode, const PropertyBag& properties);
    void WriteProperties(PropertyBag& properties) const;

    /// The end: closes the reader in good order, which takes time and lets events run, and gives the handle
    /// back. There is no other one afterwards.
    void Terminate();

    /// The size stays 480 by 480 twips, whatever is asked for.
    void Resize(std::int32_t& width, std::int32_t& height) const { width = height = kFixedSize; }

    // The library and its devices.

    /// Why there is no library or no handle at run time; empty when there is.
    const std::string& libraryProblem() const { return session_.problem; }

    bool IsFunctionSupported(const std::string& szFunctionName);
    std::int32_t NumberOfCommPorts();
    std::string EnumCommPort(std::int32_t Index);    ///< port name at a zero-based place
    std::string EnumCommPortEx(std::int32_t Index);  ///< the same with the product
    bool IsMyCommPort(const std::string& szPortName);
    std::string DevicePrefix();
    void DevicePrefix(const std::string& szPrefix);

    bool AddNewUSBID(std::int32_t dwVendorID, std::int32_t dwProductID);
    bool DeviceIsUSBID(const std::string& szDevice, std::int32_t dwVendorID, std::int32_t dwProductID);
    bool GetDeviceUSBID(const std::string& szDevice, std::int32_t& pdwVendorID, std::int32_t& pdwProductID);
    std::string GetDeviceManufacturer(const std::string& szDevice);
    std::string GetDeviceProduct(const std::string& szDevice);
    std::string GetDeviceSerialNumber(const std::string& szDevice);
    std::string GetIndexedString(std::int32_t dwStringIndex);

    /// The node of a listed device, in the system's bytes; empty when a library does not tell.
    std::string devicePath(const std::string& szDevice);

    bool CheckDevicesIsChanged(bool bRaiseDeviceEvent);
    bool IsNewDevicePlugin();  ///< True once after a device was plugged in
    bool IsHIDIOReady();

    /// Single reports: the whole buffer, the report ID first.
    bool GetInputReport(Bytes& bReport);
    bool SetOutputReport(const Bytes& bReport);
    bool GetFeature(Bytes& bReport);
    bool SetFeature(const Bytes& bReport);
    bool GetNumberInputBuffers(std::int32_t& lCount);
    bool SetNumberInputBuffers(std::int32_t lCount);
    bool FlushQueue();

    /// They can be set only at design time and without a handle; otherwise a message box says so.
    std::int32_t DefaultVendorID() const { return session_.vendorId; }
    void DefaultVendorID(std::int32_t lNewValue);
    std::int32_t DefaultProductID() const { return session_.productId; }
    void DefaultProductID(std::int32_t lNewValue);
    std::string DefaultHexVendorID() const { return hexIdentifier(session_.vendorId); }
    void DefaultHexVendorID(const std::string& szNewValue);
    std::string DefaultHexProductID() const;
    void DefaultHexProductID(const std::string& szNewValue);

    /// What the library's callback calls; handlers that throw are answered for in dispatch (keepError).
    std::int32_t VellIOProc(std::int32_t hVell, std::int32_t wParam, std::int32_t lParam);
    void keepError(std::exception_ptr error) { error_ = std::move(error); }

    // The command channel and the reader's commands.

    bool SendHIDCMD(std::uint8_t bCmd, const Bytes& bParams, Bytes& bResults) {
        return channel_.SendHIDCMD(bCmd, bParams, bResults);
    }
    bool SendHIDRawCmd(const Bytes& bRawCmds, Bytes& bResults) { return channel_.SendHIDRawCmd(bRawCmds, bResults); }
    void CancelHIDCommand() { channel_.CancelHIDCommand(); }
    bool IsBusy() const { return channel_.IsBusy(); }
    bool IsSendHIDCmdNAK() const { return channel_.IsSendHIDCmdNAK(); }
    bool IsCommandNotSupported() const { return channel_.IsCommandNotSupported(); }
    bool KestrelCmdSetEnabled() const { return channel_.KestrelCmdSetEnabled(); }
    void KestrelCmdSetEnabled(bool bIsEnabled) { channel_.KestrelCmdSetEnabled(bIsEnabled); }
    std::string GetHIDVersion() { return commands_.GetHIDVersion(); }
    bool SetHIDBaudrate(std::int32_t lBaudrate) { return commands_.SetHIDBaudrate(lBaudrate); }
    bool SetKestrelKeyCode(std::uint8_t bASCII, std::uint8_t bKeyCode, std::uint8_t bShift) {
        return commands_.SetKestrelKeyCode(bASCII, bKeyCode, bShift);
    }
    bool SetKestrelIODirect(std::int32_t bSerial, std::int32_t bPS2, std::int32_t bHIDEx) {
        return commands_.SetKestrelIODirect(bSerial, bPS2, bHIDEx);
    }
    bool GetKestrelDefaultIODirect(std::int32_t& bSerial, std::int32_t& bPS2, std::int32_t& bHIDEx) {
        return commands_.GetKestrelDefaultIODirect(bSerial, bPS2, bHIDEx);
    }
    bool KestrelDiscardBuffer() { return commands_.KestrelDiscardBuffer(); }
    bool KestrelGetRegister(std::int16_t iRegister, Bytes& bBuffer, std::int16_t iStart, std::int16_t iSize) {
        return commands_.KestrelGetRegister(iRegister, bBuffer, iStart, iSize);
    }
    bool KestrelSetRegister(std::int16_t iRegister, const Bytes& bBuffer, std::int16_t iStart, std::int16_t iSize) {
        return commands_.KestrelSetRegister(iRegister, bBuffer, iStart, iSize);
    }
    bool KestrelEraseFlash(std::int16_t iFlashPage) { return commands_.KestrelEraseFlash(iFlashPage); }
    bool KestrelIsKeyboardExist() const { return commands_.KestrelIsKeyboardExist(); }

    // The port.

    bool PortOpen() { return port_.PortOpen(); }
    void PortOpen(bool bPortOpen) { port_.PortOpen(bPortOpen); }
    const std::string& openFailure() const { return port_.openFailure(); }

    /// Whether it failed because another program has the reader open.
    bool isInUse() { return session_.handle && session_.library.isInUse(session_.handle); }
    std::string CommPort() const { return port_.CommPort(); }
    void CommPort(const std::string& szCommPort) { port_.CommPort(szCommPort); }
    std::int32_t CommID() const { return session_.handle; }
    std::string Settings() const { return port_.Settings(); }
    void Settings(const std::string& szSettings) { port_.Settings(szSettings); }
    std::int32_t InBufferCount() { return port_.InBufferCount(); }
    void InBufferCount(std::int32_t /*lInBufferCount*/) { port_.discardIn(); }
    std::int32_t InBufferSize() { return port_.InBufferSize(); }
    void InBufferSize(std::int32_t lInBufferSize) { port_.InBufferSize(lInBufferSize); }
    std::int32_t OutBufferCount() { return port_.OutBufferCount(); }
    void OutBufferCount(std::int32_t /*lOutBufferCount*/) { port_.discardOut(); }
    std::int32_t OutBufferSize() { return port_.OutBufferSize(); }
    void OutBufferSize(std::int32_t lOutBufferSize) { port_.OutBufferSize(lOutBufferSize); }
    Variant CommInput() { return port_.CommInput(); }
    void CommOutput(const Variant& vOutput) { port_.CommOutput(vOutput); }
    std::int32_t CommEvent() const { return commEvent_; }
    bool Break() { return port_.Break(); }
    void Break(bool bBreak) { port_.Break(bBreak); }
    bool CTSHolding() { return port_.CTSHolding(); }
    bool CDHolding() const { return false; }
    bool DSRHolding() const { return false; }
    bool DTREnable() const { return false; }
    void DTREnable(bool /*bDTREnable*/) {}
    bool EOFEnable() const { return false; }
    void EOFEnable(bool /*bEOFEnable*/) {}
    bool NullDiscard() const { return false; }
    void NullDiscard(bool /*bNullDiscard*/) {}
    std::int32_t HandShaking() const { return 0; }
    void HandShaking(std::int32_t /*lHandshake*/) {}
    std::string ParityReplace() const { return {}; }
    void ParityReplace(const std::string& /*szParityReplace*/) {}
    std::int32_t InputLen() const { return port_.InputLen; }
    void InputLen(std::int32_t lInputLen) { port_.InputLen = lInputLen; }
    std::int32_t InputMode() const { return port_.InputMode; }
    void InputMode(std::int32_t lInputMode) { port_.InputMode = lInputMode; }
    std::int32_t RThreshold() const { return port_.RThreshold; }
    void RThreshold(std::int32_t lRThreshold) { port_.RThreshold = lRThreshold; }
    std::int32_t SThreshold() const { return port_.SThreshold; }
    void SThreshold(std::int32_t lSThreshold) { port_.SThreshold = lSThreshold; }
    bool RTSEnable() const { return port_.RTSEnable; }
    void RTSEnable(bool bRTSEnable) { port_.RTSEnable = bRTSEnable; }
    std::int32_t ScanTiming();
    void ScanTiming(std::int32_t lScanTiming);
    bool AsyncIO();
    void AsyncIO(bool bAsyncIO);

    /// The reader's direction as it was at opening; closing gives it back.
    std::int32_t KestrelDefaultSerialTo() const { return port_.KestrelDefaultSerialTo; }
    void KestrelDefaultSerialTo(std::int32_t lTo) { port_.KestrelDefaultSerialTo = lTo; }
    std::int32_t KestrelDefaultPS2To() const { return port_.KestrelDefaultPS2To; }
    void KestrelDefaultPS2To(std::int32_t lTo) { port_.KestrelDefaultPS2To = lTo; }
    std::int32_t KestrelDefaultHIDExTo() const { return port_.KestrelDefaultHIDExTo; }
    void KestrelDefaultHIDExTo(std::int32_t lTo) { port_.KestrelDefaultHIDExTo = lTo; }

private:
    bool isBusy() override { return session_.isOpen(); }
    bool service() override;
    void dispatch() override;

    bool has(bool supported) const { return supported && session_.handle; }
    bool mayChangeIdentifiers() const { return !userMode_ && !session_.handle; }
    void raiseComm(std::int32_t event);
    void raiseDevice(std::int32_t event, std::int32_t hVell, std::int32_t parameter);
    void complain(const std::string& message) const;
    void throwKeptError();
    void letGo();

    Runtime& runtime_;
    VellSession session_;
    HidCommandChannel channel_;
    ReaderCommands commands_;
    HidPort port_;
    bool userMode_ = false;
    bool isServed_ = false;  // registered with the runtime
    bool newDevice_ = false;
    std::int32_t commEvent_ = 0;
    std::exception_ptr error_;
};

}  // namespace corvane
