#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "face/Log.h"
#include "platform/Cancel.h"
#include "platform/Runtime.h"
#include "platform/clsTimeout.h"
#include "ports/clsIMScomm.h"
#include "text/RuntimeError.h"

namespace corvane {

/// What the operations of one dialogue with a device share. It owns none of what it refers to; the port is never null.
struct DeviceSession {
    /// What came in outside of any reply: the boot loader's answers to something before.
    struct Strays {
        bool hasAck = false;
        int bytes = 0;  ///< without NAK, since what is refused does nothing, and without the ends of lines
    };

    DeviceSession(Runtime& theRuntime, Log& theLog, clsIMScomm& port, Cancel& theCancel)
        : runtime(theRuntime), log(theLog), cancel(theCancel), comm(&port) {}

    Runtime& runtime;
    Log& log;
    Cancel& cancel;    ///< ends the question at hand, the scan and every wait
    clsIMScomm* comm;  ///< the current port, whichever kind it is

    /// False behind a port without a line of its own, whose rate says nothing about time; not set is True.
    std::function<bool()> hasLine;

    /// False where the processor is to sleep through every wait; not set is True.
    std::function<bool()> mayLookAwake;

    /// Told what is sent next when that is a secret, and nothing once it is over; not set where nobody takes anything
    /// down.
    std::function<void(const Bytes& secret)> veil;

    std::string protocolName;       ///< "TarnPlus" or "Tarn", set by the scan
    std::int32_t ispBaudRate = -1;  ///< the boot loader's rate; 0 keeps the settings, -1 tries 115200 too
    std::string receivedLine;       ///< what wait_comm collected
    std::string rememberedPort;     ///< where the next scan starts
    Strays strays;                  ///< since whoever asks set this back
    bool hasHeard = false;          ///< something has come in since whoever asks set this back
    bool loggedIn = false;          ///< the device has accepted a password
    std::int16_t busyDepth = 0;     ///< runs and queries in progress

    bool manualPort = false;  ///< a port button was clicked
    std::int16_t manualPortIndex = 0;

    /// Sends to the current port. False when the port is lost, which every operation but programming takes for silence.
    bool send(const Variant& data) const {
        try {
            comm->CommOutput(data);
            return true;
        } catch (const RuntimeError&) {
            return false;
        }
    }

    /// Lets a moment pass in which something may come in, unless something is there.
    void awaitInput() const {
        if (comm->InBufferCount() < 1) runtime.WaitActivity(1);
        runtime.DoEvents();
    }

    /// Takes what has come in, and remembers that something has.
    Bytes takeInput() {
        auto bytes = bytesOf(comm->CommInput());
        hasHeard = hasHeard || !bytes.empty();
        return bytes;
    }

    /// Notes bytes that are no part of a reply; so many of them were due.
    void noteStrays(const Bytes& bytes, int due = 0) {
        for (const auto byte : bytes) {
            strays.hasAck = strays.hasAck || byte == 6;
            if (byte != 21 && byte != '\r' && byte != '\n') ++strays.bytes;
        }
        strays.bytes -= due;
    }

    /// Drops what has come in and was not read.
    void discardInput() {
        try {
            if (comm->InBufferCount() > 0) noteStrays(takeInput());
            comm->InBufferCount(0);
        } catch (const RuntimeError&) {
            // A lost port holds nothing.
        }
    }
};

/// Counts an operation as busy for as long as it runs.
class BusyScope {
public:
    explicit BusyScope(DeviceSession& session) : session_(session) {
        if (session.busyDepth == std::numeric_limits<std::int16_t>::max()) throw RuntimeError::overflow();
        ++session.busyDepth;
    }
    ~BusyScope() { --session_.busyDepth; }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    DeviceSession& session_;
};

/// A device that never stops talking ends no wait by silence: these end them all the same.
constexpr std::int32_t kLongestDrain = 3000;         ///< ms, prompt detection and draining
constexpr std::int32_t kLongestReplyOverrun = 5000;  ///< ms beyond a query's own time-out
constexpr int kLongestLine = 4096;                   ///< bytes that one text reply may have

}  // namespace corvane
