#pragma once

#include <vector>

#include "platform/Runtime.h"
#include "platform/SerialControl.h"

namespace corvane {

/// What every serial control does alike, whatever system moves its bytes: it keeps and checks the properties, buffers
/// what is received and raises the events. A derived class opens the device and moves the bytes, and closes the device
/// in its own destructor. The runtime is not owned.
class BufferedSerialControl : public SerialControl {
public:
    explicit BufferedSerialControl(Runtime& runtime) : runtime_(runtime) {}
    ~BufferedSerialControl() override { runtime_.forget(this); }
    BufferedSerialControl(const BufferedSerialControl&) = delete;
    BufferedSerialControl& operator=(const BufferedSerialControl&) = delete;

    std::int16_t CommPort() const override { return commPort_; }
    void CommPort(std::int16_t number) override;
    bool PortOpen() override { return condition_ == Condition::open; }
    void PortOpen(bool open) override;
    OpenFailure openFailure() const override { return failure_; }
    std::string Settings() const override { return settings_; }
    void Settings(const std::string& settings) override;
    bool GetCommState(std::int32_t handle, CommState& state) override;
    bool SetCommState(std::int32_t handle, const CommState& state) override;
    std::uint32_t GetLastError() const override { return lastError_; }
    Variant Input() override;
    std::int32_t InBufferCount() override { return static_cast<std::int32_t>(inBuffer_.size()); }
    void InBufferCount(std::int32_t count) override;
    std::int32_t InBufferSize() const override { return inBufferSize_; }
    void InBufferSize(std::int32_t size) override;
    std::int32_t InputLen() const override { return inputLen_; }
    void InputLen(std::int32_t length) override;
    std::int32_t InputMode() const override { return inputMode_; }
    void InputMode(std::int32_t mode) override;
    void Output(const Variant& data) override;
    std::int32_t OutBufferCount() override { return PortOpen() ? unsent() : 0; }
    void OutBufferCount(std::int32_t count) override;
    std::int32_t OutBufferSize() const override { return outBufferSize_; }
    void OutBufferSize(std::int32_t size) override;
    std::int32_t RThreshold() const override { return rThreshold_; }
    void RThreshold(std::int32_t count) override;
    std::int32_t SThreshold() const override { return sThreshold_; }
    void SThreshold(std::int32_t count) override;
    std::int32_t CommEvent() const override { return commEvent_; }
    bool Break() const override { return break_; }
    void Break(bool on) override;
    bool RTSEnable() const override { return rtsEnable_; }
    void RTSEnable(bool on) override;
    bool DTREnable() const override { return dtrEnable_; }
    void DTREnable(bool on) override;
    using SerialControl::CDHolding;
    bool CDHolding() override { return PortOpen() && isHolding(LineInput::carrierDetect); }
    using SerialControl::CTSHolding;
    bool CTSHolding() override { return PortOpen() && isHolding(LineInput::clearToSend); }
    using SerialControl::DSRHolding;
    bool DSRHolding() override { return PortOpen() && isHolding(LineInput::dataSetReady); }
    bool EOFEnable() const override { return eofEnable_; }
    void EOFEnable(bool on) override { eofEnable_ = on; }
    std::int32_t HandShaking() const override { return handShaking_; }
    void HandShaking(std::int32_t mode) override;
    bool NullDiscard() const override { return nullDiscard_; }
    void NullDiscard(bool on) override { nullDiscard_ = on; }
    std::string ParityReplace() const override { return parityReplace_; }
    void ParityReplace(const std::string& character) override;

protected:
    enum class LineInput { carrierDetect, clearToSend, dataSetReady };

    /// Takes the device for this program alone. A failure leaves nothing open.
    virtual OpenFailure openLine() = 0;
    virtual void closeLine() = 0;

    /// 0, or the system's number of the error.
    virtual std::uint32_t readLine(CommState& state) = 0;
    virtual std::uint32_t writeLine(const CommState& state) = 0;

    /// Puts the properties of that name, as they are now, into force on the open line.
    virtual void applyControlLines() = 0;  ///< RTSEnable, DTREnable
    virtual void applyHandShaking() = 0;   ///< HandShaking, ParityReplace
    virtual void applyBreak() = 0;

    virtual bool isHolding(LineInput input) = 0;

    /// Queues bytes; reports a loss that it meets through lineLost.
    virtual void send(const Bytes& bytes) = 0;
    virtual std::int32_t unsent() = 0;
    virtual void discardUnsent() = 0;
    virtual void discardUnread() = 0;  ///< what the system holds and has not handed over

    /// For the derived class to tell what has happened on the line; handlers hear of it in the next DoEvents.
    void received(const std::uint8_t* data, std::size_t size);
    void sent(std::int32_t leftBefore, std::int32_t leftNow);
    void raise(CommEventCode code);
    void lineLost();

    Runtime& runtime() const { return runtime_; }

private:
    enum class Condition { closed, open, lost };

    void open();
    void close();
    void requireClosed() const;
    void requireOpen() const;
    void forgetLine();

    Runtime& runtime_;
    Condition condition_ = Condition::closed;
    OpenFailure failure_;
    std::uint32_t lastError_ = 0;
    Bytes inBuffer_;
    std::vector<CommEventCode> raised_;  // posted and not delivered yet
    std::int32_t commEvent_ = 0;
    std::int16_t commPort_ = 1;
    std::string settings_ = "19200,N,8,1";
    std::int32_t inBufferSize_ = 4096;
    std::int32_t outBufferSize_ = 512;
    std::int32_t inputLen_ = 0;
    std::int32_t inputMode_ = 0;
    std::int32_t rThreshold_ = 0;
    std::int32_t sThreshold_ = 0;
    std::int32_t handShaking_ = 0;
    bool break_ = false;
    bool rtsEnable_ = false;
    bool dtrEnable_ = true;
    bool eofEnable_ = false;
    bool nullDiscard_ = false;
    std::string parityReplace_ = "?";
};

}  // namespace corvane
