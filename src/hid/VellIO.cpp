#include "hid/VellIO.h"

#include <utility>

#include "text/Text.h"

namespace corvane {
namespace {

constexpr char kVendorProperty[] = "DefaultVendorID";
constexpr char kProductProperty[] = "DefaultProductID";

// The codes of a serial port control.
constexpr std::int32_t kSendEvent = 1;
constexpr std::int32_t kReceiveEvent = 2;
constexpr std::int32_t kClearToSendEvent = 3;
constexpr std::int32_t kReceiveOverflow = 1008;
constexpr std::int32_t kSendFull = 1010;

constexpr std::int32_t kDeviceRemoved = 0;
constexpr std::int32_t kDeviceAdded = 1;
constexpr std::int32_t kDeviceOther = 2;

std::int32_t propertyOr(const VellIO::PropertyBag& properties, const char* name, std::int32_t byDefault) {
    const auto found = properties.find(name);
    return found == properties.end() ? byDefault : found->second;
}

std::int32_t size(const Bytes& bytes) { return static_cast<std::int32_t>(bytes.size()); }

}  // namespace

VellIO::VellIO(Runtime& runtime, ModuleLoader& loader, const std::string& libraryPath, const Cancel& cancel)
    : runtime_(runtime),
      session_(loader, libraryPath),
      channel_(session_, runtime),
      commands_(channel_),
      port_(session_, channel_, commands_, runtime, cancel) {
    session_.vendorId = MakerVendorID;
    session_.productId = kReaderProductId;
    session_.user = reinterpret_cast<std::intptr_t>(this);
}

VellIO::~VellIO() { letGo(); }

void VellIO::letGo() {
    if (isServed_) runtime_.remove(*this);
    isServed_ = false;
    if (session_.handle) session_.destroy();
}

void VellIO::ReadProperties(bool bUserMode, const PropertyBag& properties) {
    userMode_ = bUserMode;
    session_.vendorId = propertyOr(properties, kVendorProperty, MakerVendorID);
    session_.productId = propertyOr(properties, kProductProperty, kReaderProductId);
    if (!userMode_) return;
    session_.load();
    if (session_.isPolled && !isServed_) {
        runtime_.add(*this);
        isServed_ = true;
    }
}

void VellIO::WriteProperties(PropertyBag& properties) const {
    properties[kVendorProperty] = session_.vendorId;
    properties[kProductProperty] = session_.productId;
}

void VellIO::Terminate() {
    if (session_.handle) {
        RTSEnable(false);
        Break(false);
        PortOpen(false);
    }
    letGo();
    session_.end();
}

bool VellIO::IsFunctionSupported(const std::string& szFunctionName) {
    return userMode_ && session_.isExported(szFunctionName);
}

std::int32_t VellIO::NumberOfCommPorts() {
    session_.create();
    return session_.handle ? session_.library.numberOfDevice(session_.handle) : 0;
}

std::string VellIO::EnumCommPort(std::int32_t Index) {
    session_.create();
    return session_.handle ? vellText(session_.library.enumDeviceName(session_.handle, Index)) : "";
}

std::string VellIO::EnumCommPortEx(std::int32_t Index) {
    session_.create();
    return session_.handle ? vellText(session_.library.enumDevice(session_.handle, Index)) : "";
}

bool VellIO::IsMyCommPort(const std::string& szPortName) { return isHidPortName(szPortName, DevicePrefix()); }

std::string VellIO::DevicePrefix() {
    return session_.handle ? vellText(session_.library.getDevicePrefix(session_.handle)) : "";
}

void VellIO::DevicePrefix(const std::string& szPrefix) {
    if (session_.handle) session_.library.setDevicePrefix(session_.handle, szPrefix.c_str());
}

bool VellIO::AddNewUSBID(std::int32_t dwVendorID, std::int32_t dwProductID) {
    return has(session_.supportsAddNewUSBID) && session_.library.addNewUSBID(session_.handle, dwVendorID, dwProductID);
}

bool VellIO::DeviceIsUSBID(const std::string& szDevice, std::int32_t dwVendorID, std::int32_t dwProductID) {
    return has(session_.supportsAddNewUSBID) &&
           session_.library.deviceIsUSBID(session_.handle, szDevice.c_str(), dwVendorID, dwProductID);
}

bool VellIO::GetDeviceUSBID(const std::string& szDevice, std::int32_t& pdwVendorID, std::int32_t& pdwProductID) {
    return has(session_.supportsGetDeviceUSBID) &&
           session_.library.getDeviceUSBID(session_.handle, szDevice.c_str(), &pdwVendorID, &pdwProductID);
}

std::string VellIO::GetDeviceManufacturer(const std::string& szDevice) {
    if (!has(session_.supportsGetDeviceUSBID)) return {};
    return vellText(session_.library.getDeviceManufacturer(session_.handle, szDevice.c_str()));
}

std::string VellIO::GetDeviceProduct(const std::string& szDevice) {
    if (!has(session_.supportsGetDeviceUSBID)) return {};
    return vellText(session_.library.getDeviceProduct(session_.handle, szDevice.c_str()));
}

std::string VellIO::GetDeviceSerialNumber(const std::string& szDevice) {
    if (!has(session_.supportsGetDeviceUSBID)) return {};
    return vellText(session_.library.getDeviceSerialNumber(session_.handle, szDevice.c_str()));
}

std::string VellIO::GetIndexedString(std::int32_t dwStringIndex) {
    if (!has(session_.supportsFlushQueue)) return {};
    return vellText(session_.library.getIndexedString(session_.handle, dwStringIndex));
}

std::string VellIO::devicePath(const std::string& szDevice) {
    return session_.handle ? vellText(session_.library.getDevicePath(session_.handle, szDevice.c_str())) : "";
}

bool VellIO::CheckDevicesIsChanged(bool bRaiseDeviceEvent) {
    if (!has(session_.supportsCheckDevicesIsChanged)) return false;
    const bool changed = session_.library.checkDevicesIsChanged(session_.handle, bRaiseDeviceEvent ? -1 : 0);
    throwKeptError();
    return changed;
}

bool VellIO::IsNewDevicePlugin() { return std::exchange(newDevice_, false); }

bool VellIO::IsHIDIOReady() {
    return has(session_.supportsCheckDevicesIsChanged) ? session_.library.isHIDIOReady(session_.handle) != 0
                                                       : PortOpen();
}

bool VellIO::GetInputReport(Bytes& bReport) {
    return has(session_.supportsFlushQueue) &&
           session_.library.getInputReport(session_.handle, bReport.data(), size(bReport), 0, 0);
}

bool VellIO::SetOutputReport(const Bytes& bReport) {
    return has(session_.supportsFlushQueue) &&
           session_.library.setOutputReport(session_.handle, bReport.data(), size(bReport), 0, 0);
}

bool VellIO::GetFeature(Bytes& bReport) {
    return has(session_.supportsFlushQueue) &&
           session_.library.getFeature(session_.handle, bReport.data(), size(bReport), 0, 0);
}

bool VellIO::SetFeature(const Bytes& bReport) {
    return has(session_.supportsFlushQueue) &&
           session_.library.setFeature(session_.handle, bReport.data(), size(bReport), 0, 0);
}

bool VellIO::GetNumberInputBuffers(std::int32_t& lCount) {
    return has(session_.supportsFlushQueue) && session_.library.getNumberInputBuffers(session_.handle, &lCount);
}

bool VellIO::SetNumberInputBuffers(std::int32_t lCount) {
    return has(session_.supportsFlushQueue) && session_.library.setNumberInputBuffers(session_.handle, lCount);
}

bool VellIO::FlushQueue() { return has(session_.supportsFlushQueue) && session_.library.flushQueue(session_.handle); }

void VellIO::DefaultVendorID(std::int32_t lNewValue) {
    if (mayChangeIdentifiers()) {
        session_.vendorId = lNewValue;
    } else {
        complain("The DefaultVederID property can't chagne at runtime!");
    }
}

void VellIO::DefaultProductID(std::int32_t lNewValue) {
    if (mayChangeIdentifiers()) {
        session_.productId = lNewValue;
    } else {
        complain("The ProductID property can't chagne at runtime!");
    }
}

void VellIO::DefaultHexVendorID(const std::string& szNewValue) { DefaultVendorID(identifierFromHex(szNewValue)); }

std::string VellIO::DefaultHexProductID() const {
    return session_.productId == kAnyProductId ? "(Any PID)" : hexIdentifier(session_.productId);
}

void VellIO::DefaultHexProductID(const std::string& szNewValue) {
    // "(Any PID)" is stored and then, read as a number, stored again as 0.
    if (equalsNoCase(szNewValue, "(ANY PID)")) DefaultProductID(kAnyProductId);
    DefaultProductID(identifierFromHex(szNewValue));
}

void VellIO::complain(const std::string& message) const {
    if (showCritical) showCritical(message);
}

std::int32_t VellIO::VellIOProc(std::int32_t hVell, std::int32_t wParam, std::int32_t lParam) {
    constexpr std::int32_t kData = 0, kWritten = 2, kControlData = 4, kControlWritten = 6;  // they say nothing new
    if (wParam != kData && wParam != kWritten && wParam != kControlData && wParam != kControlWritten)
        session_.tell("event", bytesOf(std::to_string(wParam) + " " + std::to_string(lParam)));
    const bool isControlNotice = wParam >= 4 && wParam <= 7;
    if (!(channel_.isExchanging() && isControlNotice) && OnVellProc) OnVellProc(wParam, lParam);
    switch (wParam) {
        case 0:
            raiseComm(kReceiveEvent);
            break;
        case 1:
            raiseComm(kReceiveOverflow);
            break;
        case 2:
            raiseComm(kSendEvent);
            break;
        case 3:
            raiseComm(kSendFull);
            break;
        case 4:
            channel_.onControlData();
            break;
        case 8:
        case 9:
        case 18:
            raiseDevice(kDeviceOther, hVell, lParam);
            break;
        case 16:
            newDevice_ = true;
            raiseDevice(kDeviceAdded, hVell, lParam);
            break;
        case 17:
            raiseDevice(kDeviceRemoved, session_.handle, lParam);
            break;
        case 35:
            raiseComm(kClearToSendEvent);
            break;
        default:
            break;
    }
    return 0;
}

void VellIO::raiseComm(std::int32_t event) {
    commEvent_ = event;
    if (OnComm) OnComm();
}

void VellIO::raiseDevice(std::int32_t event, std::int32_t hVell, std::int32_t parameter) {
    const std::string text = vellText(session_.library.getParamString(hVell));
    const auto number = static_cast<std::int64_t>(parameter) + 1;
    if (OnDevice) OnDevice(event, DevicePrefix() + std::to_string(number), text);
}

bool VellIO::service() { return session_.handle && session_.library.service(session_.handle); }

void VellIO::dispatch() {
    if (session_.handle) session_.library.dispatch(session_.handle);
    throwKeptError();
}

void VellIO::throwKeptError() {
    if (error_) std::rethrow_exception(std::exchange(error_, nullptr));
}

std::int32_t VellIO::ScanTiming() { return session_.handle ? session_.library.getScanTiming(session_.handle) : 0; }

void VellIO::ScanTiming(std::int32_t lScanTiming) {
    if (session_.handle) session_.library.setScanTiming(session_.handle, lScanTiming);
}

bool VellIO::AsyncIO() { return session_.handle && session_.library.getAsyncIO(session_.handle); }

void VellIO::AsyncIO(bool bAsyncIO) {
    if (session_.handle) session_.library.setAsyncIO(session_.handle, bAsyncIO ? -1 : 0);
}

std::int32_t VellCallBackProc(std::int32_t hVell, std::intptr_t user, std::int32_t wParam, std::int32_t lParam) {
    auto& control = *reinterpret_cast<VellIO*>(user);  // NOLINT(performance-no-int-to-ptr): a C interface's way
    try {
        return control.VellIOProc(hVell, wParam, lParam);
    } catch (...) {
        control.keepError(std::current_exception());  // it must not pass through the library's C frames
        return 0;
    }
}

}  // namespace corvane
