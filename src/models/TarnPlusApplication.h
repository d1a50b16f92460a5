#pragma once

#include "models/Board.h"
#include "models/Frame.h"

namespace corvane::models {

/// The application that answers binary requests: 0x00 login information, 0x01 version, 0x03 password, 0x04 end of
/// session, 0x1F switch into the boot loader. A device with a password demands a login before the switch.
class TarnPlusApplication : public Program {
public:
    explicit TarnPlusApplication(Board& board) : board_(board) {}

    void start(Micros now) override;
    Next hear(Micros now, std::uint8_t byte) override;
    void abandon() override { reader_.abandon(); }

private:
    struct Answer {
        std::uint8_t status;
        Bytes data;
        Next next = Next::goOn;
    };

    Answer answerTo(const Request& request);

    Board& board_;
    RequestReader reader_;
    bool isLoggedIn_ = false;
};

}  // namespace corvane::models
