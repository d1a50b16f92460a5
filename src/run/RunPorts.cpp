#include "run/RunPorts.h"

#include <functional>

namespace corvane {

std::string RunPorts::name() const {
    auto name = session_.comm->CommPort();
    const auto text = reader_.deviceText();
    if (name.empty() || text.compare(0, name.size(), name) != 0) return name;
    return name + " (F/W:" + reader_.firmwareText() + ")";
}

void RunPorts::close(RunView& view) {
    constexpr std::uint8_t kEndOfSession = 4;
    const auto keptApart = [&view](const std::function<void()>& step) {
        try {
            step();
        } catch (const std::exception& error) {
            view.advice(error.what());
        }
    };
    keptApart([&] {
        session_.comm = &serialPort_;
        if (serialPort_.PortOpen()) serialPort_.PortOpen(false);
    });
    session_.comm = &hidPort_;
    keptApart([&] {
        // A reader that does not answer this is closed all the same.
        if (hidPort_.PortOpen() && session_.loggedIn) (void)query_.Query(kEndOfSession, 3000);
    });
    keptApart([&] {
        if (hidPort_.PortOpen()) hidPort_.PortOpen(false);
    });
}

}  // namespace corvane
