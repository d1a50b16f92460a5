#include "record/RecordedSerial.h"

namespace corvane {

RecordedSerial::RecordedSerial(SerialControl& control, Tape& tape) : control_(control), tape_(tape) {
    control_.OnComm = [this] { onEvent(); };
}

RecordedSerial::~RecordedSerial() { control_.OnComm = nullptr; }

/// Does what is asked and takes it down, or the error that it ends with.
template <typename Step>
void RecordedSerial::noting(const char* what, const std::string& text, Step step) {
    try {
        step();
    } catch (const RuntimeError& error) {
        note("error", std::string(what) + " " + text + ": " + error.description());
        throw;
    }
    note(what, text);
}

void RecordedSerial::onEvent() {
    const auto code = control_.CommEvent();
    if (code != kSendEvent && code != kReceiveEvent) note("event", std::to_string(code));
    if (OnComm) OnComm();
}

bool RecordedSerial::PortOpen() {
    const bool isOpen = control_.PortOpen();
    if (isOpen_ && !isOpen) note("lost");
    isOpen_ = isOpen;
    return isOpen;
}

void RecordedSerial::PortOpen(bool open) {
    sightings_.clear();
    unsent_ = -1;
    if (!open) {
        isOpen_ = false;
        return noting("close", {}, [this] { control_.PortOpen(false); });
    }
    try {
        control_.PortOpen(true);
    } catch (const RuntimeError& error) {
        const auto failure = control_.openFailure();
        note("refused", std::to_string(static_cast<int>(failure.kind)) + " " + std::to_string(failure.systemError) +
                            " " + failure.path + ": " + error.description());
        throw;
    }
    isOpen_ = control_.PortOpen();
    if (isOpen_) note("open", control_.Settings());
}

void RecordedSerial::Settings(const std::string& settings) {
    if (!isOpen_) return control_.Settings(settings);  // it is noted when the port opens
    noting("line", settings, [&] { control_.Settings(settings); });
}

bool RecordedSerial::SetCommState(std::int32_t handle, const CommState& state) {
    const bool isTaken = control_.SetCommState(handle, state);
    const auto text = settingsTextOf(state).value_or("?");
    note(isTaken ? "line" : "error", isTaken ? text : "line " + text + ": refused");
    return isTaken;
}

/// When bytes could be seen, where that was before they were taken: the program may have waited for it.
void RecordedSerial::noteSightings() {
    for (const auto& sighting : sightings_) {
        if (sighting.at < tape_.now()) note("seen", std::to_string(sighting.at) + " " + std::to_string(sighting.count));
    }
    sightings_.clear();
}

Variant RecordedSerial::Input() {
    noteSightings();
    auto input = control_.Input();
    tape_.came("got", where(), bytesOf(input), tape_.now());
    return input;
}

std::int32_t RecordedSerial::InBufferCount() {
    const auto count = control_.InBufferCount();
    if (tape_.isOn() && count > (sightings_.empty() ? 0 : sightings_.back().count))
        sightings_.push_back({tape_.now(), count});
    return count;
}

/// What is dropped unread is taken down all the same: a stray answer is often what explains a run.
void RecordedSerial::InBufferCount(std::int32_t count) {
    if (count == 0 && tape_.isOn() && control_.InBufferCount() > 0) {
        noteSightings();
        const auto length = control_.InputLen();
        control_.InputLen(0);
        const auto dropped = bytesOf(control_.Input());
        control_.InputLen(length);
        tape_.came("dropped", where(), dropped, tape_.now());
    }
    control_.InBufferCount(count);
}

void RecordedSerial::Output(const Variant& data) {
    unsent_ = -1;
    try {
        control_.Output(data);
    } catch (const RuntimeError& error) {
        note("error", "send: " + error.description());
        throw;
    }
    tape_.sent(where(), bytesOf(data));
}

std::int32_t RecordedSerial::OutBufferCount() {
    const auto count = control_.OutBufferCount();
    if (count != unsent_) note("unsent", std::to_string(count));
    unsent_ = count;
    return count;
}

void RecordedSerial::OutBufferCount(std::int32_t count) {
    noting("drop-unsent", std::to_string(count), [&] { control_.OutBufferCount(count); });
}

void RecordedSerial::Break(bool on) {
    noting("break", on ? "on" : "off", [&] { control_.Break(on); });
}

void RecordedSerial::RTSEnable(bool on) {
    noting("rts", on ? "on" : "off", [&] { control_.RTSEnable(on); });
}

void RecordedSerial::DTREnable(bool on) {
    noting("dtr", on ? "on" : "off", [&] { control_.DTREnable(on); });
}

}  // namespace corvane
