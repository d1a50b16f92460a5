#include <algorithm>

#include "vellio/Handles.h"
#include "vellio/vellio.h"

using namespace corvane::vellio;
using corvane::HidReport;
using corvane::kHidReportSize;

namespace {

constexpr std::int32_t kLargestBuffer = 1048576;
constexpr int kDiscardRounds = 8;  // a device that never stops sending must not hold the program here

/// The part of a caller's array that an operation works on.
template <typename Byte>
struct Part {
    Byte* bytes = nullptr;
    std::size_t size = 0;

    Part(Byte* array, std::int32_t capacity, std::int32_t start, std::int32_t count) {
        if (!array || capacity < 0 || !isIn(start, 0, capacity) || !isIn(count, 0, capacity - start)) return;
        bytes = array + start;
        size = static_cast<std::size_t>(count ? count : capacity - start);
    }
};

std::int32_t number(std::size_t count) { return static_cast<std::int32_t>(count); }

std::int32_t readFrom(Transport& transport, Channel& channel, Part<std::uint8_t> part) {
    transport.move();
    return number(channel.read(part.bytes, part.size));
}

/// Also what the system holds: an old reply that comes up later would be taken for the answer to the next question.
void discardFrom(Transport& transport, Channel& channel) {
    for (int round = 0; round < kDiscardRounds; ++round) {
        const bool news = transport.move();
        channel.discardRead();
        if (!news) return;
    }
}

/// Sends at once what can go, or all of it when the program wants to wait.
void push(Transport& transport) {
    transport.move();
    if (!transport.async) transport.connection().sendAll(transport.requestTimeout);
}

std::int32_t writeData(Transport& transport, Part<const std::uint8_t> part) {
    if (!transport.connection().isOpen() || part.size == 0) return 0;
    const auto taken = transport.connection().data().write(part.bytes, part.size);
    push(transport);
    return number(taken);
}

std::int16_t writeControl(Transport& transport, Part<const std::uint8_t> part) {
    if (!transport.connection().isOpen()) return kFalse;
    if (!transport.connection().control().writeMessage(part.bytes, part.size)) return kFalse;
    push(transport);
    return truth(transport.connection().isOpen());
}

/// Asks the device for one report and copies it out.
template <typename Request>
std::int16_t requestReport(std::int32_t hVell, Part<std::uint8_t> part, Request request) {
    return with(hVell, kFalse, [&](Transport& transport) {
        if (part.size < kHidReportSize) return kFalse;
        HidReport report{};
        report[0] = part.bytes[0];
        if (!request(transport, report)) return kFalse;
        std::copy(report.begin(), report.end(), part.bytes);
        return kTrue;
    });
}

template <typename Request>
std::int16_t handReport(std::int32_t hVell, Part<const std::uint8_t> part, Request request) {
    return with(hVell, kFalse, [&](Transport& transport) {
        if (part.size < kHidReportSize) return kFalse;
        HidReport report{};
        std::copy_n(part.bytes, kHidReportSize, report.begin());
        return truth(request(transport, report));
    });
}

bool inputReport(Transport& transport, HidReport& report) {
    return transport.connection().getInputReport(report, transport.requestTimeout);
}

bool feature(Transport& transport, HidReport& report) {
    return transport.connection().getFeature(report, transport.requestTimeout);
}

bool outputReport(Transport& transport, const HidReport& report) {
    return transport.connection().setOutputReport(report, transport.requestTimeout);
}

bool newFeature(Transport& transport, const HidReport& report) {
    return transport.connection().setFeature(report, transport.requestTimeout);
}

Part<std::uint8_t> whole(void* bytes, std::int32_t count) {
    return {static_cast<std::uint8_t*>(bytes), count, 0, count};
}

Part<const std::uint8_t> whole(const void* bytes, std::int32_t count) {
    return {static_cast<const std::uint8_t*>(bytes), count, 0, count};
}

}  // namespace

extern "C" {

std::int32_t vellWrite(std::int32_t hVell, const std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                       std::int32_t count) {
    return with(hVell, 0, [=](Transport& transport) { return writeData(transport, {bytes, capacity, start, count}); });
}

std::int32_t vellWritePtr(std::int32_t hVell, const void* bytes, std::int32_t count) {
    return with(hVell, 0, [=](Transport& transport) { return writeData(transport, whole(bytes, count)); });
}

std::int32_t vellBytesToWrite(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) {
        transport.move();
        return number(transport.connection().data().unsent());
    });
}

void vellDiscardWriteBuffer(std::int32_t hVell) {
    with(hVell, [](Transport& transport) { transport.connection().data().discardWrite(); });
}

std::int32_t vellRead(std::int32_t hVell, std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                      std::int32_t count) {
    return with(hVell, 0, [=](Transport& transport) {
        return readFrom(transport, transport.connection().data(), {bytes, capacity, start, count});
    });
}

std::int32_t vellReadPtr(std::int32_t hVell, void* bytes, std::int32_t count) {
    return with(hVell, 0, [=](Transport& transport) {
        return readFrom(transport, transport.connection().data(), whole(bytes, count));
    });
}

std::int32_t vellBytesToRead(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) {
        transport.move();
        return number(transport.connection().data().waiting());
    });
}

void vellDiscardReadBuffer(std::int32_t hVell) {
    with(hVell, [](Transport& transport) { discardFrom(transport, transport.connection().data()); });
}

std::int32_t vellGetWriteBufferSize(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) { return number(transport.connection().data().writeSize()); });
}

void vellSetWriteBufferSize(std::int32_t hVell, std::int32_t size) {
    with(hVell, [size](Transport& transport) {
        if (isIn(size, 1, kLargestBuffer)) transport.connection().data().writeSize(static_cast<std::size_t>(size));
    });
}

std::int32_t vellGetReadBufferSize(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) { return number(transport.connection().data().readSize()); });
}

void vellSetReadBufferSize(std::int32_t hVell, std::int32_t size) {
    with(hVell, [size](Transport& transport) {
        if (isIn(size, 1, kLargestBuffer)) transport.connection().data().readSize(static_cast<std::size_t>(size));
    });
}

std::int16_t vellGetAsyncIO(std::int32_t hVell) {
    return with(hVell, kFalse, [](Transport& transport) { return truth(transport.async); });
}

void vellSetAsyncIO(std::int32_t hVell, std::int16_t async) {
    with(hVell, [async](Transport& transport) { transport.async = async != 0; });
}

std::int16_t vellGetBreak(std::int32_t hVell) {
    return with(hVell, kFalse, [](Transport& transport) { return truth(transport.connection().breakState()); });
}

void vellSetBreak(std::int32_t hVell, std::int16_t state) {
    with(hVell, [state](Transport& transport) {
        transport.connection().breakState(state != 0);
        transport.move();
    });
}

std::int16_t vellGetCTSHolding(std::int32_t hVell) {
    return with(hVell, kFalse, [](Transport& transport) {
        transport.move();
        return truth(transport.connection().clearToSend());
    });
}

std::int16_t vellWriteCtrl(std::int32_t hVell, const std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                           std::int32_t count) {
    return with(hVell, kFalse, [=](Transport& transport) {
        return writeControl(transport, {bytes, capacity, start, count});
    });
}

std::int16_t vellWriteCtrlPtr(std::int32_t hVell, const void* bytes, std::int32_t count) {
    return with(hVell, kFalse, [=](Transport& transport) { return writeControl(transport, whole(bytes, count)); });
}

std::int32_t vellBytesToWriteCtrl(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) {
        transport.move();
        return number(transport.connection().control().unsent());
    });
}

void vellDiscardWriteCtrlBuffer(std::int32_t hVell) {
    with(hVell, [](Transport& transport) { transport.connection().control().discardWrite(); });
}

std::int32_t vellReadCtrl(std::int32_t hVell, std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                          std::int32_t count) {
    return with(hVell, 0, [=](Transport& transport) {
        return readFrom(transport, transport.connection().control(), {bytes, capacity, start, count});
    });
}

std::int32_t vellReadCtrlPtr(std::int32_t hVell, void* bytes, std::int32_t count) {
    return with(hVell, 0, [=](Transport& transport) {
        return readFrom(transport, transport.connection().control(), whole(bytes, count));
    });
}

std::int32_t vellBytesToReadCtrl(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) {
        transport.move();
        return number(transport.connection().control().waiting());
    });
}

void vellDiscardReadCtrlBuffer(std::int32_t hVell) {
    with(hVell, [](Transport& transport) { discardFrom(transport, transport.connection().control()); });
}

std::int16_t vellGetInputReport(std::int32_t hVell, std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                                std::int32_t count) {
    return requestReport(hVell, {bytes, capacity, start, count}, inputReport);
}

std::int16_t vellSetOutputReport(std::int32_t hVell, const std::uint8_t* bytes, std::int32_t capacity,
                                 std::int32_t start, std::int32_t count) {
    return handReport(hVell, {bytes, capacity, start, count}, outputReport);
}

std::int16_t vellGetFeature(std::int32_t hVell, std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                            std::int32_t count) {
    return requestReport(hVell, {bytes, capacity, start, count}, feature);
}

std::int16_t vellSetFeature(std::int32_t hVell, const std::uint8_t* bytes, std::int32_t capacity, std::int32_t start,
                            std::int32_t count) {
    return handReport(hVell, {bytes, capacity, start, count}, newFeature);
}

std::int16_t vellGetInputReportPtr(std::int32_t hVell, void* bytes, std::int32_t count) {
    return requestReport(hVell, whole(bytes, count), inputReport);
}

std::int16_t vellSetOutputReportPtr(std::int32_t hVell, const void* bytes, std::int32_t count) {
    return handReport(hVell, whole(bytes, count), outputReport);
}

std::int16_t vellGetFeaturePtr(std::int32_t hVell, void* bytes, std::int32_t count) {
    return requestReport(hVell, whole(bytes, count), feature);
}

std::int16_t vellSetFeaturePtr(std::int32_t hVell, const void* bytes, std::int32_t count) {
    return handReport(hVell, whole(bytes, count), newFeature);
}

std::int32_t vellGetRequestTimeout(std::int32_t hVell) {
    return with(hVell, 0, [](Transport& transport) { return transport.requestTimeout; });
}

void vellSetRequestTimeout(std::int32_t hVell, std::int32_t milliseconds) {
    with(hVell, [milliseconds](Transport& transport) {
        if (isIn(milliseconds, 1, kLongestWait)) transport.requestTimeout = milliseconds;
    });
}

std::int16_t vellGetNumberInputBuffers(std::int32_t hVell, std::int32_t* count) {
    return with(hVell, kFalse, [count](Transport& transport) {
        if (!count) return kFalse;
        *count = transport.connection().inputBuffers();
        return kTrue;
    });
}

std::int16_t vellSetNumberInputBuffers(std::int32_t hVell, std::int32_t count) {
    return with(hVell, kFalse, [count](Transport& transport) {
        if (!isIn(count, 2, 512)) return kFalse;
        transport.connection().inputBuffers(count);
        return kTrue;
    });
}

std::int16_t vellFlushQueue(std::int32_t hVell) {
    return with(hVell, kFalse, [](Transport& transport) { return truth(transport.connection().flush()); });
}

const char* vellGetIndexedString(std::int32_t hVell, std::int32_t index) {
    return with(hVell, "", [index](Transport& transport) {
        const Device* open = transport.connection().identity();
        if (!open || !isIn(index, 1, 3)) return "";
        const std::string* const texts[] = {&open->info.manufacturer, &open->info.name, &open->info.serialNumber};
        return transport.lend(*texts[index - 1]);
    });
}

}  // extern "C"
