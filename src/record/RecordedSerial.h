#pragma once

#include "platform/SerialControl.h"
#include "record/Tape.h"

namespace corvane {

/// Stands before a serial control, real or not, and takes down what crosses it. It changes nothing, and passes on every
/// error. It owns neither control nor tape.
class RecordedSerial : public SerialControl {
public:
    RecordedSerial(SerialControl& control, Tape& tape);
    ~RecordedSerial() override;
    RecordedSerial(const RecordedSerial&) = delete;
    RecordedSerial& operator=(const RecordedSerial&) = delete;

    std::int16_t CommPort() const override { return control_.CommPort(); }
    void CommPort(std::int16_t number) override { control_.CommPort(number); }
    bool PortOpen() override;
    void PortOpen(bool open) override;
    OpenFailure openFailure() const override { return control_.openFailure(); }
    bool hasLine() const override { return control_.hasLine(); }
    std::string Settings() const override { return control_.Settings(); }
    void Settings(const std::string& settings) override;
    std::int32_t CommID() override { return control_.CommID(); }
    bool GetCommState(std::int32_t handle, CommState& state) override { return control_.GetCommState(handle, state); }
    bool SetCommState(std::int32_t handle, const CommState& state) override;
    std::uint32_t GetLastError() const override { return control_.GetLastError(); }
    std::string FormatMessage(std::uint32_t code) const override { return control_.FormatMessage(code); }
    Variant Input() override;
    std::int32_t InBufferCount() override;
    void InBufferCount(std::int32_t count) override;
    std::int32_t InBufferSize() const override { return control_.InBufferSize(); }
    void InBufferSize(std::int32_t size) override { control_.InBufferSize(size); }
    std::int32_t InputLen() const override { return control_.InputLen(); }
    void InputLen(std::int32_t length) override { control_.InputLen(length); }
    std::int32_t InputMode() const override { return control_.InputMode(); }
    void InputMode(std::int32_t mode) override { control_.InputMode(mode); }
    void Output(const Variant& data) override;
    std::int32_t OutBufferCount() override;
    void OutBufferCount(std::int32_t count) override;
    std::int32_t OutBufferSize() const override { return control_.OutBufferSize(); }
    void OutBufferSize(std::int32_t size) override { control_.OutBufferSize(size); }
    std::int32_t RThreshold() const override { return control_.RThreshold(); }
    void RThreshold(std::int32_t count) override { control_.RThreshold(count); }
    std::int32_t SThreshold() const override { return control_.SThreshold(); }
    void SThreshold(std::int32_t count) override { control_.SThreshold(count); }
    std::int32_t CommEvent() const override { return control_.CommEvent(); }
    bool Break() const override { return control_.Break(); }
    void Break(bool on) override;
    bool RTSEnable() const override { return control_.RTSEnable(); }
    void RTSEnable(bool on) override;
    bool DTREnable() const override { return control_.DTREnable(); }
    void DTREnable(bool on) override;
    bool CDHolding() override { return control_.CDHolding(); }
    void CDHolding(bool on) override { control_.CDHolding(on); }
    bool CTSHolding() override { return control_.CTSHolding(); }
    void CTSHolding(bool on) override { control_.CTSHolding(on); }
    bool DSRHolding() override { return control_.DSRHolding(); }
    void DSRHolding(bool on) override { control_.DSRHolding(on); }
    bool EOFEnable() const override { return control_.EOFEnable(); }
    void EOFEnable(bool on) override { control_.EOFEnable(on); }
    std::int32_t HandShaking() const override { return control_.HandShaking(); }
    void HandShaking(std::int32_t mode) override { control_.HandShaking(mode); }
    bool NullDiscard() const override { return control_.NullDiscard(); }
    void NullDiscard(bool on) override { control_.NullDiscard(on); }
    std::string ParityReplace() const override { return control_.ParityReplace(); }
    void ParityReplace(const std::string& character) override { control_.ParityReplace(character); }

private:
    struct Sighting {
        std::int64_t at;
        std::int32_t count;
    };

    std::string where() const { return "COM" + std::to_string(control_.CommPort()); }
    void note(const char* what, std::string text = {}) { tape_.note(what, where(), std::move(text)); }
    void noteSightings();
    void onEvent();
    template <typename Step>
    void noting(const char* what, const std::string& text, Step step);

    SerialControl& control_;
    Tape& tape_;
    bool isOpen_ = false;
    std::int32_t unsent_ = -1;         // as it was asked for last
    std::vector<Sighting> sightings_;  // of bytes that were not taken yet
};

}  // namespace corvane
