#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <random>
#include <sstream>

#include "faults/explore/Wire.h"
#include "run/EndTable.h"
#include "support/AppBench.h"
#include "support/hid/FakeHidBus.h"
#include "support/hid/VellModule.h"

/// Runs updates over a line on which something happens to sendings and answers, and holds what the program says against
/// the device: "updated" must be true, and with one event at most it must be said. Exit status 1 when it does not hold.
///
/// Some things cannot be told apart: the program has sent and heard, in the same order, just what it sends and hears in
/// a run with fewer events that goes well, each answer at a time that a device somewhat slower would need (the program
/// believes no other). Such a run would have to fail with the good one; it is counted by itself.
///
///     explore_wire [--events N] [--every K] [--port counting|blind|hid]   all combinations of up to N
///     explore_wire --random COUNT [--seed S] [--port ...]                 random ones, a larger image
///     explore_wire --replay "s3:lose a5:late600" [--random 1] --port ...  one run
///
/// --every K takes every K-th of the combinations of two and more.
namespace corvane::faults::tests {

using Events = std::vector<Event>;
using Options = std::map<std::string, std::string>;

constexpr char kHead[] = "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n";
// The record of address 0 is held back until the address record, which is what a loss of power must not find half done.
constexpr char kFourRecords[] =
    ":0400000001020304F2\n:0400100005060708D2\n:020000040001F9\n:04002000090A0B0CB2\n:00000001FF\n";
constexpr char kLibrary[] = "VellIO.so";
constexpr Micros kSettles = 3'000'000;  // what is still under way when a run ends

/// A port counts the unsent bytes, reports none at all, as pseudo-terminals and most adapters do, or is a HID reader.
enum PortKind { counting, blind, hid };
constexpr const char* kPorts[] = {"counting", "blind", "hid"};

/// A serial control at a wire. It moves whole sendings where the fake control of the other tests moves bytes, which
/// makes a run ten times as fast.
struct WirePort : fakes::FakeSerialControl {
    WirePort(fakes::FakeRuntime& clock, Wire& wire, bool isBlind)
        : FakeSerialControl(clock), clock_(clock), wire_(wire), isBlind_(isBlind) {
        plug(1, wire);
    }

private:
    void send(const Bytes& bytes) override { wire_.hear(clock_.micros(), bytes, line().baudRate); }
    std::int32_t unsent() override { return isBlind_ ? 0 : wire_.unsent(clock_.micros()); }

    fakes::FakeRuntime& clock_;
    Wire& wire_;
    bool isBlind_;
};

/// A kind of port, an image, and the memory that it makes.
struct Subject {
    Subject(PortKind thePort, const std::string& records)
        : port(thePort), image("image.hex", kHead + records, digest), memory(models::imageOf(records).memory) {}

    PortKind port;
    fakes::FakeDigest digest;
    Image image;
    models::Flash memory;
};

/// One update of a device that runs its old application, by the program's whole workflow, in virtual time. All share
/// the program's folder: making one takes longer than a run.
struct Attempt : fakes::AppBench {
    Attempt(const Subject& subject, const Wire::Plan& plan, fakes::FakeProgramFolder& shared) : wire(plan) {
        asksAfterwards(true);
        runtime.stretchWaits(10);
        WirePort port(runtime, wire, subject.port == blind);
        models::HidReader hidReader(wire, {});
        fakes::ReaderPeer peer(hidReader, [this] { return runtime.micros(); });
        fakes::FakeHidBus bus([this] { return runtime.tick(); });
        if (subject.port == hid) {
            const auto& is = hidReader.options();
            bus.plug({"HID1", is.vendor, is.product, is.manufacturer, is.name, is.serialNumber}, peer);
            modules.provide(kLibrary, fakes::vellModule());
        } else {
            serial.list(1);
        }
        const Platform platform{runtime, port,      serial.map, modules, reader, settings,  shared,   launcher,
                                digest,  inspector, inhibitor,  power,   files,  processes, kLibrary, signatures};
        Updater updater(platform, face.face());
        updater.choices.offLine = updater.choices.useFile = true;
        updater.choices.image = subject.image;
        static_cast<void>(updater.journal().forget(updater.journal().left()));
        status = exitStatus(updater.run().run(false));
        updater.shutDown();
        conversation = wire.conversation();
        wire.speak(runtime.micros() + kSettles);
        isRight = !models::firstDifference(wire.device().flash(), subject.memory);
        isRunning = !wire.device().isInBoot();
    }

    bool isSuccess() const { return status == 0 && isRight && isRunning; }
    /// "Updated" is said of a device that is not.
    bool isWrong() const { return status == 0 && !(isRight && isRunning); }
    std::string end() const {
        return "status " + std::to_string(status) + (isRight ? "" : ", memory differs") +
               (isRunning ? "" : ", in its boot loader");
    }

    Wire wire;
    int status = 0;  ///< what the program exits with
    bool isRight = false, isRunning = false;
    std::string conversation;
};

Attempt attempt(const Subject& subject, const Wire::Plan& plan) {
    static fakes::FakeProgramFolder folder;
    return Attempt(subject, plan, folder);
}

std::string textOf(const Events& events) {
    std::string text;
    for (const auto& event : events) text += (text.empty() ? "" : " ") + event.text();
    return text;
}

/// What can happen to a step.
Events possibleAt(const Step& step) {
    std::vector<std::pair<What, int>> all = {{What::lose, 0},    {What::damage, 0},  {What::late, 300},
                                             {What::late, 600},  {What::late, 1400}, {What::twice, 0},
                                             {What::twice, 700}, {What::restart, 0}, {What::banner, 0}};
    if (step.side == 'a') {
        all.insert(all.end(), {{What::after, 0}, {What::bannerAfter, 0}});
    } else {
        all.emplace_back(What::head, 0);
        if (std::strcmp(step.content, "erase") == 0) all.insert(all.end(), {{What::slow, 9000}, {What::slow, 11000}});
    }
    Events events;
    for (const auto& [what, ms] : all) events.push_back({step.side, step.number, what, ms});
    return events;
}

Wire::Plan planOf(const Events& events) {
    return [&events](const Step& step) -> std::optional<Event> {
        for (const auto& event : events) {
            if (event.side == step.side && event.number == step.number) return event;
        }
        return {};
    };
}

/// Whether a run without one or two of the events goes well and looks just like this one to the program.
bool hasDouble(const Subject& subject, const Attempt& run) {
    const auto& events = run.wire.struck();
    for (std::size_t i = 0; i < events.size(); ++i) {
        for (std::size_t k = i; k < events.size(); ++k) {
            Events fewer;
            for (std::size_t at = 0; at < events.size(); ++at) {
                if (at != i && at != k) fewer.push_back(events[at]);
            }
            const auto other = attempt(subject, planOf(fewer));
            if (other.isSuccess() && other.conversation == run.conversation) return true;
        }
    }
    return false;
}

/// What has come out so far, with some examples of each way in which it did not succeed.
class Tally {
public:
    explicit Tally(const Subject& subject) : subject_(subject) {}

    void take(const Attempt& run) {
        ++tried_;
        const bool isDouble = run.isWrong() && hasDouble(subject_, run);
        wrong_ += run.isWrong() && !isDouble;
        if (run.isSuccess()) return;
        const auto* kind = isDouble ? "not to be told apart, " : run.isWrong() ? "WRONG, " : "failed, ";
        auto& [count, examples] = groups_[kind + run.end()];
        failed_ += 1;
        if (count++ < 12) examples += "\n      \"" + textOf(run.wire.struck()) + "\"";
    }

    void print(const std::string& what) const {
        const double ms = 1000.0 * static_cast<double>(std::clock() - began_) / CLOCKS_PER_SEC;
        std::printf("%s, %s: %ld tried, %ld updated, %ld WRONG; %.3f ms of processor time a run\n",
                    kPorts[subject_.port], what.c_str(), tried_, tried_ - failed_, wrong_,
                    ms / static_cast<double>(tried_));
        for (const auto& [end, group] : groups_) {
            std::printf("  %ld %s%s\n", group.first, end.c_str(), group.second.c_str());
        }
        std::fflush(stdout);
    }

    bool isClean() const { return wrong_ == 0; }
    bool isPerfect() const { return failed_ == 0; }

private:
    const Subject& subject_;
    std::clock_t began_ = std::clock();
    long tried_ = 0, failed_ = 0, wrong_ = 0;
    std::map<std::string, std::pair<long, std::string>> groups_;  // how many, with examples, by the end
};

/// Every combination of so many events. Events are added in the order of the steps of the run without them, so each
/// combination comes once, and only where its events happen.
struct Exploration {
    const Subject& subject;
    std::size_t depth;
    long every;
    Tally tally{subject};
    long count = 0;
    Events events = {};

    void extend(std::size_t firstStep = 0) {
        if (events.size() == depth && depth > 1 && ++count % every != 0) return;
        const auto run = attempt(subject, planOf(events));
        if (events.size() == depth) return tally.take(run);
        for (auto i = firstStep; i < run.wire.steps().size(); ++i) {
            for (const auto& event : possibleAt(run.wire.steps()[i])) {
                events.push_back(event);
                extend(i + 1);
                events.pop_back();
            }
        }
    }
};

/// 33 records of 16 bytes over 80 KiB.
std::string spreadRecords() {
    std::string text;
    for (unsigned i = 0; i < 33; ++i) {
        if (i * 0xA00 >= 0x10000 && (i - 1) * 0xA00 < 0x10000) text += fakes::hexRecord(0, {0, 1}, 4);
        Bytes bytes;
        for (unsigned k = 0; k < 16; ++k) bytes.push_back(static_cast<std::uint8_t>((i * 7 + k * 5) % 251));
        text += fakes::hexRecord(i * 0xA00, bytes);
    }
    return text + fakes::hexRecord(0, {}, 1);
}

Wire::Plan randomPlan(std::mt19937& random) {
    return [&random](const Step& step) -> std::optional<Event> {
        const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
        const int dice = below(1000);
        if (dice > 80) return {};
        if (dice == 80) return Event{step.side, step.number, below(2) ? What::banner : What::restart};
        if (dice >= 60) return Event{step.side, step.number, What::damage};
        if (dice >= 40) return Event{step.side, step.number, What::late, 300 + below(1101)};
        if (dice >= 20) return Event{step.side, step.number, What::twice, below(2) * 700};
        return Event{step.side, step.number, What::lose};
    };
}

bool replay(const Subject& subject, const std::string& text) {
    Events events;
    std::istringstream words(text);
    for (std::string word; words >> word;) events.push_back(Event::from(word).value());
    const auto run = attempt(subject, planOf(events));
    const auto& steps = run.wire.steps();
    for (const auto& step : steps) {
        const auto seconds = static_cast<double>(step.at - steps.front().at) / 1e6;
        std::printf("%9.3f s  %c%-3d %s\n", seconds, step.side, step.number, step.content);
    }
    std::printf("%s\n%s\n", run.face.log.c_str(), run.end().c_str());
    return !run.isWrong();
}

bool holds(PortKind port, Options& options) {
    const auto number = [&options](const char* name, long byDefault) {
        return options.count(name) ? std::atol(options[name].c_str()) : byDefault;
    };
    const Subject subject(port, options.count("--random") ? spreadRecords() : kFourRecords);
    if (options.count("--replay")) return replay(subject, options["--replay"]);
    if (options.count("--random")) {
        Tally tally(subject);
        std::mt19937 random(static_cast<unsigned>(number("--seed", 1)));
        for (long i = 0; i < number("--random", 1); ++i) tally.take(attempt(subject, randomPlan(random)));
        tally.print("random");
        return tally.isClean();
    }
    bool good = true;
    for (long depth = 0; depth <= number("--events", 2); ++depth) {
        Exploration all{subject, static_cast<std::size_t>(depth), number("--every", 1)};
        all.extend();
        all.tally.print(std::to_string(depth) + " events");
        good = good && all.tally.isClean() && (depth > 1 || all.tally.isPerfect());
    }
    return good;
}

}  // namespace corvane::faults::tests

int main(int argc, char** argv) try {
    using namespace corvane::faults::tests;
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) options[argv[i]] = argv[i + 1];
    ::setenv("TMPDIR", "/dev/shm", 0);  // a run writes its journal
    bool good = true;
    for (const auto port : {counting, blind, hid}) {
        if (!options.count("--port") || options["--port"] == kPorts[port]) good = holds(port, options) && good;
    }
    return good ? 0 : 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "explore_wire: %s\n", error.what());
    return 2;
}
