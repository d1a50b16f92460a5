#include "protocol/DeviceQuery.h"

#include <algorithm>

#include "protocol/Frame.h"

namespace corvane {

bool DeviceQuery::Query(std::uint8_t bFunction, Variant& vReplay, const Variant& vParam, std::uint8_t bMachine,
                        std::int32_t dwTimeout) {
    const BusyScope busy(session_);
    resetReply(vReplay);
    answered_ = false;
    const auto frame = requestFrame(bMachine, bFunction, vParam);
    if (!frame || !session_.comm->PortOpen()) return false;
    return exchange(*frame, dwTimeout, vReplay);
}

bool DeviceQuery::Query(std::uint8_t bFunction, std::int32_t dwTimeout) {
    Variant nothing;
    return Query(bFunction, nothing, {}, 0, dwTimeout);
}

bool DeviceQuery::exchange(const Bytes& frame, std::int32_t timeout, Variant& reply) {
    clsTimeout silence(session_.runtime);
    clsTimeout whole(session_.runtime);
    silence.Timeout(timeout);
    whole.Timeout(timeout + kLongestReplyOverrun);
    session_.discardInput();  // what comes before the question is no answer to it
    if (session_.cancel.isRequested() || !session_.send(frame)) return false;
    ReplyFrame received;
    while (!received.isComplete()) {
        if (silence.IsTimeout() || whole.IsTimeout() || session_.cancel.isRequested()) return false;
        session_.awaitInput();
        if (session_.comm->InBufferCount() < 1) {
            if (!session_.comm->PortOpen()) return false;
            continue;
        }
        const auto bytes = session_.takeInput();
        if (!received.isBegun())
            session_.noteStrays({bytes.begin(), std::find(bytes.begin(), bytes.end(), ReplyFrame::kStart)});
        if (!received.take(bytes)) silence.Reset();
    }
    answered_ = received.isCrcRight();
    if (!answered_) return false;
    convertReply(received.data(), reply);
    return received.isAccepted();
}

}  // namespace corvane
