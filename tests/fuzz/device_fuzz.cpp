// What a device says: reply frames, lines, prompts, and all of them in the course of a whole update.

#include "fuzz/Talker.h"
#include "fuzz/Targets.h"
#include "protocol/DeviceLogin.h"
#include "protocol/LineReader.h"
#include "support/Program.h"

namespace corvane::fuzz {
namespace {

/// An open port with such a device.
struct Bench {
    explicit Bench(Input& input) : talker(input) { serial.open(talker); }

    std::int64_t ms() const { return serial.runtime.ms(); }

    Talker talker;
    fakes::SerialBench serial;
    fakes::RecordingFace face;
    Cancel cancel;
    DeviceSession session{serial.runtime, face, serial.port, cancel};
};

bool isEmptyValue(const Variant& value) {
    const auto* bytes = std::get_if<Bytes>(&value);
    const auto* byte = std::get_if<std::uint8_t>(&value);
    const auto* integer = std::get_if<std::int16_t>(&value);
    const auto* number = std::get_if<std::int32_t>(&value);
    return !(bytes && !bytes->empty()) && !(byte && *byte) && !(integer && *integer) && !(number && *number);
}

}  // namespace

void query(std::string_view bytes) {
    constexpr std::int32_t kTimeout = 300;
    constexpr std::int64_t kLongest = 6000;
    Input input(bytes);
    Bench bench(input);
    DeviceQuery query(bench.session);
    const std::vector<Variant> replies = {{}, Bytes{1}, std::uint8_t{1}, std::int16_t{1}, std::int32_t{1}, "x"};
    while (!input.isEmpty() && bench.talker.isPlugged()) {
        Variant reply = replies[input.byte() % replies.size()];
        const auto start = bench.ms();
        const bool accepted = query.Query(1, reply, {}, 0, kTimeout);
        require(bench.ms() - start <= kLongest, "a query ends whatever the device says");
        require(!accepted || query.wasAnswered(), "no answer is no acceptance");
        require(query.wasAnswered() || isEmptyValue(reply), "a reply that is none brings no data");
    }
}

void lines(std::string_view bytes) {
    Input input(bytes);
    Bench bench(input);
    LineReader reader(bench.session);
    while (!input.isEmpty() && bench.talker.isPlugged()) {
        const auto kind = input.byte();
        bench.session.send(std::string("\x02V\r"));
        if (kind % 4 == 0) {
            const auto start = bench.ms();
            reader.wait_comm_empty();
            require(bench.ms() - start <= kLongestDrain + 20, "draining ends whatever the device says");
            continue;
        }
        const auto end = reader.wait_comm(0.3, kind % 4 == 1 ? "V" : "");
        const auto& line = bench.session.receivedLine;
        require(end == 0 || end == 6 || end == 13 || end == 21, "a line ends with CR, ACK, NAK or not at all");
        require(end != 13 || !line.empty(), "a line that was received is not empty");
        require(line.size() <= static_cast<std::size_t>(kLongestLine) + 4096, "a line has its limit");
        require(line.find_first_of("\r\x02\x06\x15") == std::string::npos, "what ends a line is not in it");
    }
}

void prompt(std::string_view bytes) {
    Input input(bytes);
    Bench bench(input);
    DeviceLogin login(bench.session, bench.face);
    const auto start = bench.ms();
    const bool found = login.DetectPrompt();
    require(bench.ms() - start <= 2 * (kLongestDrain + 200), "looking for a prompt ends whatever the device says");
    require(!found || bytes.find('>') != std::string_view::npos, "a prompt has a >");
    std::string version;
    if (login.GetVersion(version)) require(!version.empty(), "a version that was given is not empty");
    bench.face.answers = {"one", "two"};
    std::string password = "quill";
    (void)login.Login(password);
}

void update(std::string_view bytes) {
    constexpr std::int64_t kLongestRun = 30 * 60 * 1000;
    Input input(bytes);
    const bool force = input.byte() % 2;
    Talker talker(input);
    fakes::AppBench bench;
    bench.serial.plug(1, talker);
    bench.face.answers = {"one", "two"};
    fakes::Program program(bench);
    program.loadImage();
    bench.runtime.setPump(
        [&bench] { require(bench.runtime.ms() < kLongestRun, "a run ends whatever the device says"); });
    const auto outcome = program.start(force);
    const auto verdict = program.updater.conclude(outcome);
    require(!bench.face.log.empty(), "a run says what happened");
    require((verdict.kind == Verdict::Kind::updated) == (outcome.end == RunEnd::updated), "run and verdict agree");
    require(outcome.end != RunEnd::updated || outcome.facts.repeatedRecords, "nothing is updated that was not erased");
    require(outcome.end != RunEnd::failed && outcome.end != RunEnd::failedMidway, "nothing unforeseen happens");
}

}  // namespace corvane::fuzz
