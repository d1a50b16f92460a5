#pragma once

#include <map>

#include "models/Board.h"

namespace corvane::models {

/// The boot loader: CR asks for its prompt, STX "X" CR erases, STX "R" CR starts the application, a line that begins
/// with ":" is an Intel HEX record. Commands (except the restart) and records are answered by ACK or NAK.
class BootLoader : public Program {
public:
    explicit BootLoader(Board& board) : board_(board), writer_(board.flash) {}

    void start(Micros now) override;
    Next hear(Micros now, std::uint8_t byte) override;
    void abandon() override { line_.clear(); }

    /// After the power has come back: whether there is an application to start, that is, one whose end record has come
    /// in or which was started since the last erase.
    bool hasApplication() const { return isComplete_; }

private:
    Next obey(Micros now, const std::string& command);
    void prompt(Micros now);
    void erase(Micros now);
    Next restart();
    void takeRecord(Micros now, const std::string& text);
    void complete();
    std::uint32_t numberOf(const std::string& text);

    Board& board_;
    RecordWriter writer_;
    std::string line_;                              // from STX or ":" on
    std::map<std::string, std::uint32_t> numbers_;  // of the records since the last erase, by first appearance
    Micros deafUntil_ = 0;
    bool isComplete_ = true;
};

}  // namespace corvane::models
