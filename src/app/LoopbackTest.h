#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Runtime.h"
#include "ports/clsMSComm.h"

namespace corvane {

/// Tries out an adapter whose own output is wired to its input, without any device: what it can, and what it delays.
/// Owns nothing; the port is closed when it ends.
class LoopbackTest {
public:
    /// What became of every byte value at one setting of the line. Times in microseconds.
    struct Row {
        enum class Outcome { right, notTaken, lost, changed };

        std::string settings;
        Outcome outcome = Outcome::right;
        std::size_t sent = 0, received = 0;
        std::int64_t took = 0;
        std::int64_t wire = 0;   ///< what the line itself needs for them
        std::int64_t delay = 0;  ///< of a lone byte beyond what the line needs, half of them

        /// In words: "right", "the line does not take it", "3 of 256 bytes came back".
        std::string words() const;
    };

    struct Result {
        std::string problem{};   ///< why nothing could be tried, or not all of it; empty when all was
        bool isRefused = false;  ///< the port did not open
        std::vector<Row> rows{};
        bool rtsReachesCts = false, dtrReachesDsr = false, breakComesBack = false;

        bool isRight() const;
        bool hasComeBack() const;
    };

    LoopbackTest(clsMSComm& port, Runtime& runtime) : port_(port), runtime_(runtime) {}

    /// A row has been tried.
    std::function<void(const Row& row)> onRow;

    Result run(const std::string& port);

private:
    Row tryOut(const std::string& settings, std::uint32_t bitsOfAByte);
    Bytes exchanged(const Bytes& bytes, std::int64_t wire);
    std::int64_t usualDelay(std::int64_t wireOfAByte);
    void tryLines(Result& result);

    clsMSComm& port_;
    Runtime& runtime_;
};

}  // namespace corvane
