#include "hid/FakeVell.h"

#include <algorithm>
#include <cstdio>

namespace corvane {
namespace {

FakeVell* current = nullptr;

std::string hex(const Bytes& bytes) {
    std::string text;
    for (const auto byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, " %02X", byte);
        text += digits;
    }
    return text;
}

}  // namespace

/// The C functions of the library.
struct FakeVellCalls {
    static FakeVell& fake() { return *current; }
    static const char* lend(const std::string& text) {
        fake().lent_ = text;
        return fake().lent_.c_str();
    }

    static std::int32_t create(std::int32_t vendor, std::int32_t product) {
        char text[64];
        std::snprintf(text, sizeof text, "create %X %d", static_cast<unsigned>(vendor), product);
        fake().calls.push_back(text);
        return fake().createWorks ? 77 : 0;
    }
    static void destroy(std::int32_t handle) { fake().calls.push_back("destroy " + std::to_string(handle)); }
    static void setCallBackProc(std::int32_t, VellCallBack proc, std::intptr_t user) {
        fake().proc_ = proc;
        fake().user_ = user;
        fake().calls.push_back("callback");
    }
    static const char* getParamString(std::int32_t handle) {
        return lend(fake().param_ + (handle == 77 ? "" : " of " + std::to_string(handle)));
    }
    static std::int16_t service(std::int32_t) {
        const auto before = fake().control_.size();
        fake().arrive();
        return fake().control_.size() > before ? -1 : 0;
    }
    static void dispatch(std::int32_t) {
        for (; fake().notices_ > 0; --fake().notices_) fake().raise(4);
    }

    static std::int32_t numberOfDevice(std::int32_t) { return static_cast<std::int32_t>(fake().devices.size()); }
    static const char* enumDeviceName(std::int32_t, std::int32_t index) {
        return lend(fake().devices.at(static_cast<std::size_t>(index)).first);
    }
    static const char* enumDevice(std::int32_t, std::int32_t index) {
        return lend(fake().devices.at(static_cast<std::size_t>(index)).second);
    }
    static const char* getDevicePrefix(std::int32_t) { return lend(fake().prefix); }
    static void setDevicePrefix(std::int32_t, const char* prefix) { fake().prefix = prefix; }
    static std::int16_t addNewUSBID(std::int32_t, std::int32_t, std::int32_t) { return -1; }
    static std::int16_t deviceIsUSBID(std::int32_t, const char* device, std::int32_t vendor, std::int32_t product) {
        return vendor == 0x1209 && product == fake().productId && std::string(device) == "HID1" ? -1 : 0;
    }
    static std::int16_t getDeviceUSBID(std::int32_t, const char*, std::int32_t* vendor, std::int32_t* product) {
        *vendor = 0x1209;
        *product = fake().productId;
        return -1;
    }
    static const char* getDeviceText(std::int32_t, const char*) { return lend(fake().product); }
    static std::int16_t checkDevicesIsChanged(std::int32_t, std::int16_t raiseEvents) {
        if (raiseEvents) fake().raise(16, 1, "HID2 Kestrel");
        return -1;
    }
    static std::int16_t isReady(std::int32_t) { return -1; }

    static std::int16_t open(std::int32_t, const char* device) {
        fake().calls.push_back(std::string("open ") + device);
        fake().isOpen = fake().openWorks;
        fake().param_ = "no access";
        return fake().openWorks ? -1 : 0;
    }
    static void close(std::int32_t) {
        fake().calls.push_back("close");
        fake().isOpen = false;
    }
    static std::int16_t isOpen(std::int32_t) { return fake().isOpen ? -1 : 0; }
    static std::int32_t write(std::int32_t, const std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                              std::int32_t count) {
        EXPECT_TRUE(start == 0 && count == capacity);
        fake().written.insert(fake().written.end(), bytes, bytes + count);
        return count;
    }
    static std::int32_t bytesToRead(std::int32_t) { return static_cast<std::int32_t>(fake().toRead.size()); }
    static std::int32_t read(std::int32_t, std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                             std::int32_t count) {
        EXPECT_TRUE(start == 0 && count == 0);
        const auto taken = std::min<std::ptrdiff_t>(capacity, bytesToRead(0));
        std::copy_n(fake().toRead.begin(), taken, bytes);
        fake().toRead.erase(fake().toRead.begin(), fake().toRead.begin() + taken);
        return static_cast<std::int32_t>(taken);
    }
    static void discardReadBuffer(std::int32_t) { fake().calls.push_back("discard read"); }
    static void discardWriteBuffer(std::int32_t) { fake().calls.push_back("discard write"); }
    static std::int32_t getReadBufferSize(std::int32_t) { return fake().readSize; }
    static std::int32_t getWriteBufferSize(std::int32_t) { return fake().writeSize; }
    static void setReadBufferSize(std::int32_t, std::int32_t size) {
        fake().readSize = size;
        fake().calls.push_back("read size " + std::to_string(size));
    }
    static void setWriteBufferSize(std::int32_t, std::int32_t size) {
        fake().writeSize = size;
        fake().calls.push_back("write size " + std::to_string(size));
    }
    static std::int16_t yes(std::int32_t) { return -1; }
    static void setBreak(std::int32_t, std::int16_t state) { fake().calls.push_back("break " + std::to_string(state)); }

    static std::int16_t writeCtrl(std::int32_t, const std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                                  std::int32_t count) {
        EXPECT_TRUE(start == 0 && count == 0);
        if (!fake().ctrlWorks) return 0;
        fake().sendPieces(Bytes(bytes, bytes + capacity));
        return -1;
    }
    static std::int32_t bytesToReadCtrl(std::int32_t) {
        fake().arrive();
        return static_cast<std::int32_t>(fake().control_.size());
    }
    static std::int32_t readCtrl(std::int32_t, std::uint8_t* bytes, std::int32_t capacity, std::int32_t, std::int32_t) {
        const auto taken = std::min<std::ptrdiff_t>(capacity, bytesToReadCtrl(0));
        auto& control = fake().control_;
        std::copy_n(control.begin(), taken, bytes);
        control.erase(control.begin(), control.begin() + taken);
        return static_cast<std::int32_t>(taken);
    }
    static void discardReadCtrlBuffer(std::int32_t) {
        fake().arrive();
        fake().control_.clear();
    }
};

FakeVell::FakeVell(fakes::FakeRuntime& runtime, fakes::FakeModuleLoader& loader)
    : runtime_(runtime), loader_(loader), before_(current) {
    current = this;
}

FakeVell::~FakeVell() { current = before_; }

void FakeVell::provide(const std::vector<std::string>& without) {
    using Calls = FakeVellCalls;
    const auto address = [](auto* function) { return reinterpret_cast<void*>(function); };
    fakes::FakeModuleLoader::Exports exports{
        {"vellCreate", address(&Calls::create)},
        {"vellDestroy", address(&Calls::destroy)},
        {"vellSetCallBackProc", address(&Calls::setCallBackProc)},
        {"vellGetParamString", address(&Calls::getParamString)},
        {"vellService", address(&Calls::service)},
        {"vellDispatch", address(&Calls::dispatch)},
        {"vellNumberOfDevice", address(&Calls::numberOfDevice)},
        {"vellEnumDeviceName", address(&Calls::enumDeviceName)},
        {"vellEnumDevice", address(&Calls::enumDevice)},
        {"vellGetDevicePrefix", address(&Calls::getDevicePrefix)},
        {"vellSetDevicePrefix", address(&Calls::setDevicePrefix)},
        {"vellAddNewUSBID", address(&Calls::addNewUSBID)},
        {"vellDeviceIsUSBID", address(&Calls::deviceIsUSBID)},
        {"vellGetDeviceUSBID", address(&Calls::getDeviceUSBID)},
        {"vellGetDeviceManufacturer", address(&Calls::getDeviceText)},
        {"vellGetDeviceProduct", address(&Calls::getDeviceText)},
        {"vellGetDeviceSerialNumber", address(&Calls::getDeviceText)},
        {"vellCheckDevicesIsChanged", address(&Calls::checkDevicesIsChanged)},
        {"vellIsHIDIOReady", address(&Calls::isReady)},
        {"vellFlushQueue", address(&Calls::yes)},
        {"vellOpen", address(&Calls::open)},
        {"vellClose", address(&Calls::close)},
        {"vellIsOpen", address(&Calls::isOpen)},
        {"vellWrite", address(&Calls::write)},
        {"vellBytesToRead", address(&Calls::bytesToRead)},
        {"vellRead", address(&Calls::read)},
        {"vellDiscardReadBuffer", address(&Calls::discardReadBuffer)},
        {"vellDiscardWriteBuffer", address(&Calls::discardWriteBuffer)},
        {"vellGetReadBufferSize", address(&Calls::getReadBufferSize)},
        {"vellGetWriteBufferSize", address(&Calls::getWriteBufferSize)},
        {"vellSetReadBufferSize", address(&Calls::setReadBufferSize)},
        {"vellSetWriteBufferSize", address(&Calls::setWriteBufferSize)},
        {"vellGetBreak", address(&Calls::yes)},
        {"vellSetBreak", address(&Calls::setBreak)},
        {"vellGetCTSHolding", address(&Calls::yes)},
        {"vellWriteCtrl", address(&Calls::writeCtrl)},
        {"vellBytesToReadCtrl", address(&Calls::bytesToReadCtrl)},
        {"vellReadCtrl", address(&Calls::readCtrl)},
        {"vellDiscardReadCtrlBuffer", address(&Calls::discardReadCtrlBuffer)},
    };
    for (const auto& name : without) exports.erase(name);
    loader_.provide(kPath, exports);
}

std::int32_t FakeVell::raise(std::int32_t code, std::int32_t parameter, const std::string& text) {
    param_ = text;
    return proc_(77, user_, code, parameter);
}

void FakeVell::sendPieces(const Bytes& frame) {
    commands.push_back(std::to_string(runtime_.ms()) + hex(frame));
    if (replies_.empty()) return;
    for (const auto& [ms, bytes] : replies_.front()) coming_.emplace(runtime_.micros() + ms * 1000, bytes);
    replies_.pop_front();
}

void FakeVell::arrive() {
    while (!coming_.empty() && coming_.begin()->first <= runtime_.micros()) {
        const auto& bytes = coming_.begin()->second;
        control_.insert(control_.end(), bytes.begin(), bytes.end());
        coming_.erase(coming_.begin());
        if (tellsControlData) ++notices_;
    }
}

}  // namespace corvane
