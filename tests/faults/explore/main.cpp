#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <random>
#include <sstream>

#include "faults/explore/Attempt.h"

/// Runs updates over a line on which something happens to sendings and answers, and holds what the program says against
/// the device: "updated" must be true, and with one event at most it must be said. Exit status 1 when it does not hold.
///
/// Some things cannot be told apart: the program has sent and heard, in the same order, just what it sends and hears in
/// a run with fewer events that goes well, each answer at a time that a device somewhat slower would need (the program
/// believes no other). Such a run would have to fail with the good one; it is counted by itself.
///
///     explore_wire [--events N] [--every K] [--seconds S] [--port counting|blind|hid]   all combinations of up to N
///     explore_wire --random COUNT [--seed S] [--port ...]                               random ones, a larger image
///     explore_wire --replay "s3:lose a5:late600" [--random 1] --port ...                one run
///
/// --every K takes every K-th of the combinations of two and more.
namespace {

using namespace corvane::faults;
using Clock = std::chrono::steady_clock;
using Events = std::vector<Event>;

// The record of address 0 is held back until the address record, which is what a loss of power must not find half done.
constexpr char kFourRecords[] =
    ":0400000001020304F2\n:0400100005060708D2\n:020000040001F9\n:04002000090A0B0CB2\n:00000001FF\n";
constexpr const char* kPorts[] = {"counting", "blind", "hid"};

struct Options {
    int events = 2;
    long every = 1, random = 0, seconds = 0;
    unsigned seed = 1;
    std::string port, replay;
};

std::string textOf(const Events& events) {
    std::string text;
    for (const auto& event : events) text += (text.empty() ? "" : " ") + event.text();
    return text;
}

/// What can happen to a step.
Events possibleAt(const Step& step) {
    Events events;
    const auto add = [&](What what, int ms = 0) { events.push_back({step.side, step.number, what, ms}); };
    add(What::lose);
    add(What::damage);
    for (const int ms : {300, 600, 1400}) add(What::late, ms);
    for (const int ms : {0, 700}) add(What::twice, ms);
    add(What::restart);
    add(What::banner);
    if (step.side == 'a') {
        add(What::after);
        add(What::bannerAfter);
    } else {
        add(What::head);
        if (std::strcmp(step.content, "erase") == 0) {
            for (const int ms : {9000, 11000}) add(What::slow, ms);
        }
    }
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

std::string endOf(const Outcome& outcome) {
    return "status " + std::to_string(outcome.status) + (outcome.isRight ? "" : ", memory differs") +
           (outcome.isRunning ? "" : ", in its boot loader");
}

/// What has come out so far, with some examples of each way in which it did not succeed.
class Tally {
public:
    void take(const Outcome& outcome, bool hasDouble = false) {
        ++tried_;
        succeeded_ += outcome.isSuccess();
        doubles_ += hasDouble;
        wrong_ += outcome.isWrong() && !hasDouble;
        if (outcome.isSuccess()) return;
        const auto* kind = hasDouble ? "double " : outcome.isWrong() ? "WRONG  " : "failed ";
        auto& [count, examples] = groups_[kind + endOf(outcome)];
        if (count++ < 12) examples += "\n      \"" + textOf(outcome.struck) + "\"";
    }

    void print(const std::string& what) const {
        const double ms = 1000.0 * static_cast<double>(std::clock() - began_) / CLOCKS_PER_SEC;
        std::printf("%s: %ld tried, %ld updated, %ld failed, %ld not to be told apart, %ld WRONG; ", what.c_str(),
                    tried_, succeeded_, tried_ - succeeded_ - doubles_ - wrong_, doubles_, wrong_);
        std::printf("%.1f s of processor time, %.3f ms a run\n", ms / 1000, ms / static_cast<double>(tried_));
        for (const auto& [end, group] : groups_) {
            std::printf("  %ld %s%s\n", group.first, end.c_str(), group.second.c_str());
        }
        std::fflush(stdout);
    }

    bool isClean() const { return wrong_ == 0; }
    bool isPerfect() const { return succeeded_ == tried_; }

private:
    std::clock_t began_ = std::clock();
    long tried_ = 0, succeeded_ = 0, doubles_ = 0, wrong_ = 0;
    std::map<std::string, std::pair<long, std::string>> groups_;  // how many, with examples, by the end
};

/// Whether a run without one or two of the events goes well and looks just like this one to the program.
bool hasDouble(PortKind kind, const TestImage& image, const Outcome& outcome) {
    const auto& events = outcome.struck;
    for (std::size_t i = 0; i < events.size(); ++i) {
        for (std::size_t k = i; k < events.size(); ++k) {
            Events fewer;
            for (std::size_t at = 0; at < events.size(); ++at) {
                if (at != i && at != k) fewer.push_back(events[at]);
            }
            const auto other = attempt(kind, image, planOf(fewer));
            if (other.isSuccess() && other.conversation == outcome.conversation) return true;
        }
    }
    return false;
}

/// Every combination of so many events. Events are added in the order of the steps of the run without them, so each
/// combination comes once, and only where its events happen.
class Exploration {
public:
    Exploration(PortKind kind, const TestImage& image, const Options& options)
        : kind_(kind), image_(image), options_(options), begin_(Clock::now()) {}

    /// False when something did not hold.
    bool run(std::size_t depth) {
        depth_ = depth;
        count_ = 0;
        tally_ = {};
        progress_.clear();
        Events events;
        extend(events, 0);
        tally_.print(std::string(kPorts[static_cast<int>(kind_)]) + ", " + std::to_string(depth) + " events" +
                     (isLate() ? " (stopped at " + progress_ + ")" : ""));
        return tally_.isClean() && (depth > 1 || tally_.isPerfect());
    }

    bool isLate() const {
        return options_.seconds > 0 && Clock::now() - begin_ > std::chrono::seconds(options_.seconds);
    }

private:
    void extend(Events& events, std::size_t firstStep) {
        if (events.size() == depth_ && depth_ > 1 && ++count_ % options_.every != 0) return;
        const auto outcome = attempt(kind_, image_, planOf(events));
        if (events.size() == depth_)
            return tally_.take(outcome, outcome.isWrong() && hasDouble(kind_, image_, outcome));
        for (auto i = firstStep; i < outcome.steps.size(); ++i) {
            for (const auto& event : possibleAt(outcome.steps[i])) {
                if (isLate()) return;
                if (events.empty()) progress_ = event.text() + " of " + std::to_string(outcome.steps.size()) + " steps";
                events.push_back(event);
                extend(events, i + 1);
                events.pop_back();
            }
        }
    }

    PortKind kind_;
    const TestImage& image_;
    const Options& options_;
    Clock::time_point begin_;
    std::size_t depth_ = 0;
    long count_ = 0;
    std::string progress_;
    Tally tally_;
};

std::string record(const std::vector<unsigned>& bytes) {
    std::string text = ":";
    unsigned sum = 0;
    const auto add = [&text](unsigned byte) {
        char digits[8];
        std::snprintf(digits, sizeof digits, "%02X", byte & 0xFF);
        text += digits;
    };
    for (const auto byte : bytes) add(byte), sum += byte;
    add(-sum);
    return text + "\n";
}

/// 33 records of 16 bytes over 80 KiB.
std::string spreadRecords() {
    std::string text;
    for (unsigned i = 0; i < 33; ++i) {
        const unsigned address = i * 0xA00;
        if (address >= 0x10000 && address < 0x10A00) text += record({2, 0, 0, 4, 0, 1});
        std::vector<unsigned> bytes = {16, address >> 8 & 0xFF, address & 0xFF, 0};
        for (unsigned k = 0; k < 16; ++k) bytes.push_back((i * 7 + k * 5) % 251);
        text += record(bytes);
    }
    return text + record({0, 0, 0, 1});
}

Wire::Plan randomPlan(std::mt19937& random) {
    return [&random](const Step& step) -> std::optional<Event> {
        const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
        const int dice = below(1000);
        Event event{step.side, step.number, What::lose, 0};
        if (dice >= 81) return {};
        if (dice >= 80)
            event.what = below(2) ? What::banner : What::restart;
        else if (dice >= 60)
            event.what = What::damage;
        else if (dice >= 40)
            event = {step.side, step.number, What::late, 300 + below(1101)};
        else if (dice >= 20)
            event = {step.side, step.number, What::twice, below(2) * 700};
        return event;
    };
}

Options parsed(int argc, char** argv) {
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i], value = argv[i + 1];
        if (name == "--events") options.events = std::atoi(value.c_str());
        if (name == "--every") options.every = std::atol(value.c_str());
        if (name == "--seconds") options.seconds = std::atol(value.c_str());
        if (name == "--random") options.random = std::atol(value.c_str());
        if (name == "--seed") options.seed = static_cast<unsigned>(std::atol(value.c_str()));
        if (name == "--port") options.port = value;
        if (name == "--replay") options.replay = value;
    }
    return options;
}

bool replay(PortKind kind, const TestImage& image, const std::string& text) {
    Events events;
    std::istringstream words(text);
    for (std::string word; words >> word;) events.push_back(Event::from(word).value());
    const auto outcome = attempt(kind, image, planOf(events));
    const auto begin = outcome.steps.empty() ? 0 : outcome.steps.front().at;
    for (const auto& step : outcome.steps) {
        std::printf("%9.3f s  %c%-3d %s\n", static_cast<double>(step.at - begin) / 1e6, step.side, step.number,
                    step.content);
    }
    std::printf("%s\n%s\n", outcome.log.c_str(), endOf(outcome).c_str());
    return !outcome.isWrong();
}

bool holds(PortKind kind, const Options& options) {
    const TestImage image(options.random ? spreadRecords() : kFourRecords);
    if (!options.replay.empty()) return replay(kind, image, options.replay);
    if (options.random) {
        Tally tally;
        std::mt19937 random(options.seed);
        for (long i = 0; i < options.random; ++i) {
            const auto outcome = attempt(kind, image, randomPlan(random));
            tally.take(outcome, outcome.isWrong() && hasDouble(kind, image, outcome));
        }
        tally.print(std::string(kPorts[static_cast<int>(kind)]) + ", random");
        return tally.isClean();
    }
    Exploration exploration(kind, image, options);
    bool good = true;
    for (int depth = 0; depth <= options.events && !exploration.isLate(); ++depth) {
        good = exploration.run(static_cast<std::size_t>(depth)) && good;
    }
    return good;
}

}  // namespace

int main(int argc, char** argv) try {
    const auto options = parsed(argc, argv);
    ::setenv("TMPDIR", "/dev/shm", 0);  // a run writes its journal
    bool good = true;
    for (const auto kind : {PortKind::counting, PortKind::blind, PortKind::hid}) {
        if (options.port.empty() || options.port == kPorts[static_cast<int>(kind)]) good = holds(kind, options) && good;
    }
    return good ? 0 : 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "explore_wire: %s\n", error.what());
    return 2;
}
