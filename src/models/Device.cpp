#include "models/Device.h"

#include <algorithm>
#include <string_view>

#include "models/TarnApplication.h"
#include "models/TarnPlusApplication.h"

namespace corvane::models {
namespace {

constexpr Micros kMs = 1000;
constexpr Micros kForgetsAfter = 500 * kMs;  // a frame, command or record that has begun and does not go on
constexpr Micros kBabbleEvery = 10 * kMs;
constexpr Micros kTenBits = 10'000'000;  // divided by the rate it is a byte's time
constexpr int kMostGarbage = 16;         // times it is said until the device hears its own rate again
constexpr std::string_view kBabble = "tick ";

std::unique_ptr<Program> applicationOf(Board& board) {
    if (board.options.kind == Kind::tarnPlus) return std::make_unique<TarnPlusApplication>(board);
    if (board.options.kind == Kind::tarn) return std::make_unique<TarnApplication>(board);
    return nullptr;
}

}  // namespace

Device::Device(DeviceOptions options)
    : board_(std::move(options)),
      boot_(board_),
      application_(applicationOf(board_)),
      hostRate_(board_.options.baud),
      garbageLeft_(kMostGarbage) {
    if (board_.options.kind == Kind::babbling && !board_.faults.has(FaultKind::babble)) board_.faults.add("babble");
    for (std::uint32_t cell = 0; cell < 64; ++cell) board_.flash.program(cell, static_cast<std::uint8_t>(cell * 5));
    const bool hasBoot = board_.options.kind != Kind::silent && board_.options.kind != Kind::babbling;
    if (application_ && !board_.options.startsInBoot) {
        run(application_.get(), 0);
    } else if (hasBoot) {
        run(&boot_, 0);
    }
    checkBabble(0);
}

std::uint32_t Device::rate() const {
    return isInBoot() && board_.options.bootBaud ? board_.options.bootBaud : board_.options.baud;
}

void Device::run(Program* program, Micros now) {
    running_ = program;
    program->start(now);
}

void Device::plugIn(Micros now) {
    board_.isPlugged = true;
    board_.voice.hush();
    if (!running_) return;
    run(application_ && boot_.hasApplication() ? application_.get() : &boot_, now);
}

void Device::hear(Micros now, const Bytes& bytes, std::uint32_t hostRate) {
    hostRate_ = hostRate;
    checkBabble(now);
    for (const auto byte : bytes) {
        if (board_.isPlugged) hearByte(now, byte, hostRate);
    }
}

void Device::hearByte(Micros now, std::uint8_t byte, std::uint32_t hostRate) {
    auto& log = board_.log;
    auto& faults = board_.faults;
    const auto number = static_cast<std::uint32_t>(++log.bytesHeard);
    log.heard[hostRate].push_back(byte);
    if (faults.strike(FaultKind::unplugByte, number)) {
        board_.isPlugged = false;
        return;
    }
    if (!running_ || now < deafUntil_ || faults.strike(FaultKind::dropByte, number)) return;
    if (faults.strike(FaultKind::corruptByte, number)) byte ^= 0x40;
    if (hostRate != rate() || now - lastHeard_ > kForgetsAfter) running_->abandon();
    if (hostRate != rate()) return sayGarbage(now);
    lastHeard_ = now;
    garbageLeft_ = kMostGarbage;
    (isInBoot() ? log.boot : log.application).push_back(byte);
    switch (running_->hear(now, byte)) {
        case Next::goOn:
            break;
        case Next::enterBoot:
            ++log.switches;
            run(&boot_, now);
            break;
        case Next::startApplication:
            if (const auto* deaf = faults.strike(FaultKind::startDeaf)) deafUntil_ = now + deaf->amount * kMs;
            if (application_) run(application_.get(), now);
    }
}

void Device::sayGarbage(Micros now) {
    if (board_.options.wrongRate != WrongRate::garbage || garbageLeft_ == 0) return;
    --garbageLeft_;
    board_.voice.say(now, {0xFE, 0x80, 0xE0});
}

void Device::checkBabble(Micros now) {
    const bool babbles = board_.faults.find(FaultKind::babble, hostRate_) != nullptr;
    if (!babbles) babbleAt_.reset();
    if (babbles && !babbleAt_) babbleAt_ = now + kBabbleEvery;
}

std::optional<Micros> Device::nextAt() const {
    if (!board_.isPlugged) return std::nullopt;
    const auto says = board_.voice.nextAt();
    return says && babbleAt_ ? std::min(*says, *babbleAt_) : says ? says : babbleAt_;
}

Bytes Device::speak(Micros now) {
    if (!board_.isPlugged) return {};
    Bytes said = board_.voice.take(now);
    if (babbleAt_ && *babbleAt_ <= now) {
        // As much as the line carries in that time, so that it is never silent and nothing piles up.
        const Micros count = std::max<Micros>(1, hostRate_ * kBabbleEvery / kTenBits);
        for (Micros i = 0; i < count; ++i) {
            said.push_back(static_cast<std::uint8_t>(kBabble[babbled_++ % kBabble.size()]));
        }
        babbleAt_ = now + count * kTenBits / std::max<std::uint32_t>(hostRate_, 1);
    }
    return said;
}

}  // namespace corvane::models
