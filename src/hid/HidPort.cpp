#include "hid/HidPort.h"

#include <algorithm>
#include <cmath>

#include "hid/HidIdentifiers.h"
#include "text/Number.h"
#include "text/SettingsText.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr int kTries = 3;
constexpr int kRetryPause = 50;                // ms
constexpr int kStartPause = 150;               // ms that a reader needs after opening
constexpr int kClosePause = 50;                // ms
constexpr std::int32_t kSilentProductId = 21;  // takes no commands
constexpr char kSilentMark[] = "HID1";         // neither does one whose product text says this in brackets

/// The rate that a settings text names, the last one where there are several; 0 when it names none.
std::int32_t rateOf(const std::string& settings) {
    double rate = 0;
    for (const auto& field : split(settings, ',')) {
        const auto kind = settingsFieldOf(field);
        const bool isZero = kind == SettingsField::none && isNumeric(field);
        if (kind == SettingsField::rate || isZero) rate = std::trunc(leadingNumber(field));
    }
    return toLong(rate);
}

bool isMarkedSilent(const std::string& product) {
    const auto end = product.rfind(')');
    if (end == std::string::npos) return false;
    const auto start = product.rfind('(', end);
    if (start == std::string::npos) return false;
    return upperCase(trimmed(std::string_view(product).substr(start + 1, end - start - 1))) == kSilentMark;
}

}  // namespace

void HidPort::PortOpen(bool bPortOpen) {
    if (bPortOpen) {
        open();
    } else {
        close();
    }
}

void HidPort::open() {
    session_.create();
    channel_.KestrelCmdSetEnabled(true);
    auto& library = session_.library;
    const std::int32_t handle = session_.handle;
    openFailure_ = session_.problem;
    directionRead_ = false;
    if (!handle) return;
    if (!library.open(handle, commPort_.c_str())) {
        openFailure_ = vellText(library.getParamString(handle));
        session_.tell("refused", bytesOf(openFailure_));
        return;
    }
    session_.tell("open");
    if (!takesCommands()) channel_.KestrelCmdSetEnabled(false);
    Break(false);
    session_.registerCallBack();
    InBufferSize(inBufferSize_);
    OutBufferSize(outBufferSize_);
    if (channel_.KestrelCmdSetEnabled()) {
        runtime_.Sleep(kStartPause);
        directionRead_ = setRateAtOpening() && readDirection();
        if (directionRead_) return;
    }
    KestrelDefaultSerialTo = 0;
    KestrelDefaultPS2To = 1;
    KestrelDefaultHIDExTo = 1;
}

bool HidPort::takesCommands() {
    auto& library = session_.library;
    const auto known = [&](bool supported) { return supported && session_.handle; };
    if (known(session_.supportsAddNewUSBID) &&
        library.deviceIsUSBID(session_.handle, commPort_.c_str(), MakerVendorID, kSilentProductId)) {
        return false;
    }
    if (!known(session_.supportsGetDeviceUSBID)) return true;
    return !isMarkedSilent(vellText(library.getDeviceProduct(session_.handle, commPort_.c_str())));
}

bool HidPort::setRateAtOpening() {
    for (int i = 0; i < kTries && !cancel_.isRequested(); ++i) {
        commands_.KestrelDiscardBuffer();
        if (cancel_.isRequested()) return false;
        if (commands_.SetHIDBaudrate(commands_.baudRate())) return true;
        if (!channel_.IsSendHIDCmdNAK()) return false;
        runtime_.Sleep(kRetryPause);
    }
    return false;
}

bool HidPort::readDirection() {
    for (int i = 0; i < kTries && !cancel_.isRequested(); ++i) {
        if (commands_.GetKestrelDefaultIODirect(KestrelDefaultSerialTo, KestrelDefaultPS2To, KestrelDefaultHIDExTo)) {
            return true;
        }
        if (!channel_.IsSendHIDCmdNAK()) return false;
        runtime_.Sleep(kRetryPause);
        if (!cancel_.isRequested()) commands_.KestrelDiscardBuffer();
    }
    return false;
}

void HidPort::close() {
    if (!session_.isOpen()) return;
    // A reader that did not tell its direction is set to the usual one; but not after a cancel, when it may never have
    // been asked.
    if (channel_.KestrelCmdSetEnabled() && (directionRead_ || !cancel_.wasRequested())) {
        const auto giveBack = [this] {
            return commands_.SetKestrelIODirect(KestrelDefaultSerialTo, KestrelDefaultPS2To, KestrelDefaultHIDExTo);
        };
        if (!giveBack() && channel_.IsSendHIDCmdNAK()) {
            runtime_.Sleep(kRetryPause);
            commands_.KestrelDiscardBuffer();
            giveBack();
        }
    }
    session_.library.close(session_.handle);
    session_.tell("close");
    runtime_.Sleep(kClosePause);
}

void HidPort::Settings(const std::string& szSettings) {
    const std::int32_t rate = rateOf(szSettings);
    if (!PortOpen()) {
        commands_.baudRate(rate);
        return;
    }
    for (int i = 0; i < kTries && !cancel_.isRequested() && !commands_.SetHIDBaudrate(rate); ++i) {
        runtime_.Sleep(kRetryPause);
    }
}

std::int32_t HidPort::InBufferCount() { return session_.handle ? session_.library.bytesToRead(session_.handle) : 0; }

void HidPort::discardIn() {
    if (session_.handle) session_.library.discardReadBuffer(session_.handle);
}

std::int32_t HidPort::InBufferSize() {
    return session_.handle ? session_.library.getReadBufferSize(session_.handle) : 0;
}

void HidPort::InBufferSize(std::int32_t lInBufferSize) {
    inBufferSize_ = lInBufferSize;
    if (session_.handle) session_.library.setReadBufferSize(session_.handle, lInBufferSize);
}

std::int32_t HidPort::OutBufferCount() { return session_.handle ? session_.library.bytesToWrite(session_.handle) : 0; }

void HidPort::discardOut() {
    if (session_.handle) session_.library.discardWriteBuffer(session_.handle);
}

std::int32_t HidPort::OutBufferSize() {
    return session_.handle ? session_.library.getWriteBufferSize(session_.handle) : 0;
}

void HidPort::OutBufferSize(std::int32_t lOutBufferSize) {
    outBufferSize_ = lOutBufferSize;
    if (session_.handle) session_.library.setWriteBufferSize(session_.handle, lOutBufferSize);
}

Variant HidPort::CommInput() {
    Bytes bytes;
    if (PortOpen()) {
        std::int32_t count = session_.library.getReadBufferSize(session_.handle);
        if (InputLen != 0 && count > InputLen) count = InputLen;
        if (count > 0) {
            bytes.resize(static_cast<std::size_t>(count));
            const std::int32_t read = session_.library.read(session_.handle, bytes.data(), count, 0, 0);
            bytes.resize(static_cast<std::size_t>(std::clamp(read, 0, count)));
            session_.tell("got", bytes);
        }
    }
    if (InputMode == 1) return bytes;
    return textOf(bytes);
}

void HidPort::CommOutput(const Variant& vOutput) {
    const Bytes bytes = bytesOf(vOutput);
    if (bytes.empty() || !PortOpen()) return;
    const auto size = static_cast<std::int32_t>(bytes.size());
    session_.tell("sent", bytes);
    session_.library.write(session_.handle, bytes.data(), size, 0, size);
}

bool HidPort::Break() { return session_.handle && session_.library.getBreak(session_.handle); }

void HidPort::Break(bool bBreak) {
    if (session_.handle) session_.library.setBreak(session_.handle, bBreak ? -1 : 0);
}

bool HidPort::CTSHolding() { return session_.handle && session_.library.getCTSHolding(session_.handle); }

}  // namespace corvane
