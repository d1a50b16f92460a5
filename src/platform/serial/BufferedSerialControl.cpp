#include "platform/serial/BufferedSerialControl.h"

#include <algorithm>
#include <system_error>

namespace corvane {
namespace {

constexpr std::uint8_t kEndOfFile = 0x1A;
constexpr auto kNoSuchHandle = static_cast<std::uint32_t>(std::errc::bad_file_descriptor);

void requireWithin(std::int32_t value, std::int32_t least, std::int32_t most) {
    if (value < least || value > most) throw PortError::invalidValue();
}

void requireAtLeast(std::int32_t value, std::int32_t least) {
    if (value < least) throw PortError::invalidValue();
}

PortError errorFor(OpenFailure::Kind kind) {
    const bool exists = kind == OpenFailure::Kind::inUse || kind == OpenFailure::Kind::noPermission;
    return exists ? PortError::alreadyOpen() : PortError::invalidPort();
}

}  // namespace

void BufferedSerialControl::requireClosed() const {
    if (condition_ == Condition::open) throw PortError::notWhileOpen();
}

void BufferedSerialControl::requireOpen() const {
    if (condition_ == Condition::lost) throw PortError::lost();
    if (condition_ == Condition::closed) throw PortError::onlyWhileOpen();
}

void BufferedSerialControl::CommPort(std::int16_t number) {
    requireClosed();
    if (number < 1) throw PortError::invalidPort();
    commPort_ = number;
}

void BufferedSerialControl::PortOpen(bool open) {
    if (open) {
        this->open();
    } else {
        close();
    }
}

void BufferedSerialControl::open() {
    if (condition_ == Condition::open) throw PortError::alreadyOpen();
    condition_ = Condition::closed;
    break_ = false;
    const auto state = parseSettingsText(settings_);
    failure_ = openLine();
    if (failure_.kind != OpenFailure::Kind::none) throw errorFor(failure_.kind);
    lastError_ = writeLine(state.value());
    if (lastError_) {
        closeLine();
        failure_.kind = OpenFailure::Kind::other;
        failure_.systemError = static_cast<int>(lastError_);
        throw PortError::invalidValue();
    }
    condition_ = Condition::open;
    applyHandShaking();
    applyControlLines();
}

void BufferedSerialControl::close() {
    if (condition_ == Condition::closed) throw PortError::notOpen();
    if (condition_ == Condition::open) closeLine();
    condition_ = Condition::closed;
    forgetLine();
}

void BufferedSerialControl::lineLost() {
    if (condition_ != Condition::open) return;
    closeLine();
    condition_ = Condition::lost;
    forgetLine();
}

void BufferedSerialControl::forgetLine() {
    inBuffer_.clear();
    break_ = false;
    raised_.clear();
    runtime_.forget(this);
}

void BufferedSerialControl::Settings(const std::string& settings) {
    const auto state = parseSettingsText(settings);
    if (!state || state->baudRate == 0) throw PortError::invalidValue();
    if (PortOpen()) {
        lastError_ = writeLine(*state);
        if (lastError_) throw PortError::invalidValue();
    }
    settings_ = settings;
}

bool BufferedSerialControl::GetCommState(std::int32_t handle, CommState& state) {
    lastError_ = PortOpen() && handle == CommID() ? readLine(state) : kNoSuchHandle;
    return lastError_ == 0;
}

bool BufferedSerialControl::SetCommState(std::int32_t handle, const CommState& state) {
    lastError_ = PortOpen() && handle == CommID() ? writeLine(state) : kNoSuchHandle;
    return lastError_ == 0;
}

Variant BufferedSerialControl::Input() {
    if (condition_ == Condition::closed) throw PortError::onlyWhileOpen();
    const auto wanted = inputLen_ > 0 ? static_cast<std::size_t>(inputLen_) : inBuffer_.size();
    const auto end = inBuffer_.begin() + static_cast<std::ptrdiff_t>(std::min(wanted, inBuffer_.size()));
    const Bytes taken(inBuffer_.begin(), end);
    inBuffer_.erase(inBuffer_.begin(), end);
    if (inputMode_ == 0) return textOf(taken);
    return taken;
}

void BufferedSerialControl::InBufferCount(std::int32_t count) {
    requireWithin(count, 0, 0);
    inBuffer_.clear();
    if (PortOpen()) discardUnread();
}

void BufferedSerialControl::InBufferSize(std::int32_t size) {
    requireClosed();
    requireAtLeast(size, 1);
    inBufferSize_ = size;
}

void BufferedSerialControl::InputLen(std::int32_t length) {
    requireAtLeast(length, 0);
    inputLen_ = length;
}

void BufferedSerialControl::InputMode(std::int32_t mode) {
    requireWithin(mode, 0, 1);
    inputMode_ = mode;
}

void BufferedSerialControl::Output(const Variant& data) {
    requireOpen();
    if (!std::holds_alternative<Bytes>(data) && !std::holds_alternative<std::string>(data)) {
        throw PortError::invalidValue();
    }
    const Bytes bytes = bytesOf(data);
    if (!bytes.empty()) send(bytes);
    requireOpen();
}

void BufferedSerialControl::OutBufferCount(std::int32_t count) {
    requireWithin(count, 0, 0);
    if (PortOpen()) discardUnsent();
}

void BufferedSerialControl::OutBufferSize(std::int32_t size) {
    requireClosed();
    requireAtLeast(size, 1);
    outBufferSize_ = size;
}

void BufferedSerialControl::RThreshold(std::int32_t count) {
    requireAtLeast(count, 0);
    rThreshold_ = count;
}

void BufferedSerialControl::SThreshold(std::int32_t count) {
    requireAtLeast(count, 0);
    sThreshold_ = count;
}

void BufferedSerialControl::Break(bool on) {
    requireOpen();
    break_ = on;
    applyBreak();
}

void BufferedSerialControl::RTSEnable(bool on) {
    rtsEnable_ = on;
    if (PortOpen()) applyControlLines();
}

void BufferedSerialControl::DTREnable(bool on) {
    dtrEnable_ = on;
    if (PortOpen()) applyControlLines();
}

void BufferedSerialControl::HandShaking(std::int32_t mode) {
    requireWithin(mode, 0, 3);
    handShaking_ = mode;
    if (!PortOpen()) return;
    applyHandShaking();
    applyControlLines();  // a line that the handshake held is the program's own again
}

void BufferedSerialControl::ParityReplace(const std::string& character) {
    if (character.size() > 1) throw PortError::invalidValue();
    parityReplace_ = character;
    if (PortOpen()) applyHandShaking();
}

void BufferedSerialControl::received(const std::uint8_t* data, std::size_t size) {
    bool overflow = false;
    bool endOfFile = false;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == 0 && nullDiscard_) continue;
        endOfFile = endOfFile || data[i] == kEndOfFile;
        if (inBuffer_.size() >= static_cast<std::size_t>(inBufferSize_)) {
            overflow = true;
            break;
        }
        inBuffer_.push_back(data[i]);
    }
    if (overflow) raise(kReceiveOverflow);
    if (endOfFile && eofEnable_) raise(kEofEvent);
    if (rThreshold_ > 0 && InBufferCount() >= rThreshold_) raise(kReceiveEvent);
}

void BufferedSerialControl::sent(std::int32_t leftBefore, std::int32_t leftNow) {
    if (leftBefore >= sThreshold_ && leftNow < sThreshold_) raise(kSendEvent);
}

void BufferedSerialControl::raise(CommEventCode code) {
    // One of a kind is enough: the handler looks at the port, which has the rest by then.
    if (std::find(raised_.begin(), raised_.end(), code) != raised_.end()) return;
    raised_.push_back(code);
    runtime_.post(this, [this, code] {
        std::erase(raised_, code);
        commEvent_ = code;
        const auto handler = OnComm;
        if (handler) handler();
    });
}

}  // namespace corvane
