#pragma once

#include "models/Board.h"

namespace corvane::models {

/// The older application: text commands between STX and CR, answered by lines between STX and CR. "D00" is a status,
/// "F" the version behind an "A", "X" the switch into the boot loader.
class TarnApplication : public Program {
public:
    explicit TarnApplication(Board& board) : board_(board) {}

    void start(Micros) override { abandon(); }
    Next hear(Micros now, std::uint8_t byte) override;
    void abandon() override { command_.reset(); }

private:
    Next obey(Micros now, const std::string& command);

    Board& board_;
    std::optional<std::string> command_;
};

}  // namespace corvane::models
