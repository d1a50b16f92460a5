// What a device says: reply frames, lines, and all of it, prompts too, in the course of a whole update.

#include <utility>

#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "models/Frame.h"
#include "protocol/LineReader.h"
#include "support/Program.h"
#include "support/ScriptedPeer.h"

namespace corvane::fuzz {
namespace {

/// A device that says what the fuzzer likes: whenever the host has spoken and stopped, the next piece of the input. In
/// it 0xFF ends a piece, 0xFE makes a pause of the next byte times 20 ms, 0xFD begins a sound reply frame of a status
/// and data, 0xFC unplugs the device, 0xFB stands before a byte that is none of these. At the end of the input it is
/// unplugged.
struct Talker : fakes::ScriptedPeer {
    explicit Talker(Input& input) : input_(input) {}

    void hear(models::Micros now, const Bytes& bytes, std::uint32_t /*hostRate*/) override {
        if (!bytes.empty()) speaksAt_ = now + 2000;
    }

    std::optional<models::Micros> nextAt() const override {
        const auto next = ScriptedPeer::nextAt();
        return speaksAt_ && (!next || *speaksAt_ < *next) ? speaksAt_ : next;
    }

    Bytes speak(models::Micros now) override {
        if (speaksAt_ && *speaksAt_ <= now) {
            speaksAt_.reset();
            sayPiece(now / 1000);
        }
        return ScriptedPeer::speak(now);
    }

private:
    void sayPiece(std::int64_t ms) {
        if (input_.isEmpty()) unplugAt(0);
        Input piece(input_.upTo('\xFF'));
        Bytes bytes;
        std::optional<std::uint8_t> status;  // of the frame that the bytes are for
        const auto flush = [&] {
            if (bytes.size() > 255) bytes.resize(255);
            if (status) bytes = models::replyFrame(0, *std::exchange(status, std::nullopt), bytes);
            say(ms, std::exchange(bytes, {}));
        };
        while (!piece.isEmpty()) {
            const auto byte = piece.byte();
            if (byte == 0xFE || byte == 0xFD) flush();
            if (byte == 0xFE) {
                ms += piece.byte() * 20;
            } else if (byte == 0xFD) {
                status = piece.byte();
            } else if (byte == 0xFC) {
                unplugAt(0);
            } else {
                bytes.push_back(byte == 0xFB ? piece.byte() : byte);
            }
        }
        flush();
    }

    Input& input_;
    std::optional<models::Micros> speaksAt_;
};

/// An open port with such a device.
struct Bench : fakes::SerialBench {
    explicit Bench(std::string_view bytes) : input(bytes) { open(talker); }

    bool goesOn() const { return !input.isEmpty() && talker.isPlugged(); }

    Input input;
    Talker talker{input};
    fakes::RecordingFace face;
    Cancel cancel;
    DeviceSession session{runtime, face, port, cancel};
};

}  // namespace

void query(std::string_view bytes) {
    Bench bench(bytes);
    DeviceQuery query(bench.session);
    const std::vector<Variant> replies = {{}, Bytes{1}, std::uint8_t{1}, std::int16_t{1}, std::int32_t{1}, "x"};
    const std::vector<Variant> none = {{}, Bytes{}, std::uint8_t{0}, std::int16_t{0}, std::int32_t{0}};
    while (bench.goesOn()) {
        Variant reply = replies[bench.input.byte() % replies.size()];
        const auto start = bench.runtime.ms();
        const bool accepted = query.Query(1, reply, {}, 0, 300);
        require(bench.runtime.ms() - start <= 6000, "a query ends whatever the device says");
        require(!accepted || query.wasAnswered(), "no answer is no acceptance");
        require(query.wasAnswered() || std::holds_alternative<std::string>(reply) ||
                    std::count(none.begin(), none.end(), reply) == 1,
                "a reply that is none brings no data");
    }
}

void lines(std::string_view bytes) {
    Bench bench(bytes);
    LineReader reader(bench.session);
    while (bench.goesOn()) {
        const auto kind = bench.input.byte() % 4;
        bench.session.send(std::string("\x02V\r"));
        if (kind == 0) {
            const auto start = bench.runtime.ms();
            reader.wait_comm_empty();
            require(bench.runtime.ms() - start <= kLongestDrain + 20, "draining ends whatever the device says");
            continue;
        }
        const auto end = reader.wait_comm(0.3, kind == 1 ? "V" : "");
        const auto& line = bench.session.receivedLine;
        require(end == 0 || end == 6 || end == 13 || end == 21, "a line ends with CR, ACK, NAK or not at all");
        require(end != 13 || !line.empty(), "a line that was received is not empty");
        require(line.size() <= static_cast<std::size_t>(kLongestLine) + 4096, "a line has its limit");
        require(line.find_first_of("\r\x02\x06\x15") == std::string::npos, "what ends a line is not in it");
    }
}

void update(std::string_view bytes) {
    Input input(bytes);
    const bool force = input.byte() % 2;
    Talker talker(input);
    fakes::AppBench bench;
    bench.serial.plug(1, talker);
    bench.face.answers = {"one", "two"};
    fakes::Program program(bench);
    program.loadImage();
    bench.runtime.setPump(
        [&bench] { require(bench.runtime.ms() < 30 * 60 * 1000, "a run ends whatever the device says"); });
    const auto outcome = program.start(force);
    const auto verdict = program.updater.conclude(outcome);
    require(!bench.face.log.empty(), "a run says what happened");
    require((verdict.kind == Verdict::Kind::updated) == (outcome.end == RunEnd::updated), "run and verdict agree");
    require(outcome.end != RunEnd::updated || outcome.facts.repeatedRecords, "nothing is updated that was not erased");
    require(outcome.end != RunEnd::failed && outcome.end != RunEnd::failedMidway, "nothing unforeseen happens");
}

}  // namespace corvane::fuzz
