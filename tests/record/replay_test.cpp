#include "models/Replay.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

#include "support/Program.h"
#include "support/hid/FakeHidBus.h"
#include "support/hid/VellModule.h"
#include "text/Text.h"

namespace corvane {
namespace {

using models::Replay;

/// All that a run leaves behind.
struct Left {
    int status;
    std::string verdict, log, recording;
};

Left runOver(fakes::AppBench& bench, models::Peer& peer, bool isHid = false) {
    models::HidReader hidReader(peer, {});
    fakes::ReaderPeer reader(hidReader, [&] { return bench.runtime.micros(); });
    fakes::FakeHidBus bus([&] { return bench.runtime.tick(); });
    if (isHid) {
        const auto& is = hidReader.options();
        bus.plug({"HID1", is.vendor, is.product, is.manufacturer, is.name, is.serialNumber}, reader);
        bench.modules.provide(bench.platform().hidLibrary, fakes::vellModule());
    } else {
        bench.serial.control.plug(1, peer);
        bench.serial.list(1);
    }
    bench.asksAfterwards(true);
    fakes::Program program(bench);
    program.loadImage();
    const auto outcome = program.start(true);
    return {exitStatus(outcome), joined(verdictLines(program.updater.conclude(outcome)), "\n"), bench.face.log,
            program.updater.recording()};
}

std::vector<RecordedEvent> eventsOf(const std::string& recording) {
    std::string why;
    const auto events = parseRecording(recording, why);
    EXPECT_TRUE(events) << why;
    return events.value_or(std::vector<RecordedEvent>());
}

/// The bytes of all events of a kind, in order: what was sent, say.
std::string allIn(const std::string& recording, const char* what = "sent") {
    std::string all;
    for (const auto& event : eventsOf(recording)) {
        if (event.what == what) all += event.bytes;
    }
    return all;
}

/// Empty when a replay of the run with this device ends as the run did, and does the same at the same times. Of a
/// device that never stops talking nobody sees each byte come, so there the times are off by less than one.
std::string difference(models::DeviceOptions options, bool isExact) {
    fakes::AppBench bench, again;
    models::Device device(std::move(options));
    const auto then = runOver(bench, device);
    Replay replay(eventsOf(then.recording), "COM1", Replay::Timing::absolute);
    const auto now = runOver(again, replay);
    if (replay.departure()) return "departs at byte " + std::to_string(replay.departure()->at);
    if (now.status != then.status || now.verdict != then.verdict) return now.verdict + " instead of " + then.verdict;
    if (now.log != then.log) return "another log: " + now.log;
    if (allIn(then.recording) != allIn(now.recording)) return "something else is sent";
    return !isExact || then.recording == now.recording ? "" : "it happens at other times";
}

/// Each fault of docs/device-bench.md, at the places where it does something else.
TEST(Replay, ARunWithAnyFaultEndsInTheSameWay) {
    const auto faults = split(
        " nak@2 nak@2x* nak@:00000001FFx* mute@2 mute@2x* dots@2 unplug@2 erase-nak erase-nakx* erase-mute"
        " erase-mutex* unplug-erase unplug-request unplug-request@1f unplug-byte@20 corrupt-byte@40"
        " drop-byte@40 crc@01 crc@00 crc@1f corrupt@4 corrupt@9 drop@4 drop@9 repeat@4 repeat@9 delay@9=700"
        " delay@9=4000 cut@4 cut@9 erase-slow=3000 refuse@1f=07 refuse@03 deaf@1f deaf@00 noise=fe80"
        " noise@9=06 pieces@3=3/20 prompt-pieces boot-deaf=500 banner=0d0a41 babble babble@19200 crc@03"
        " crc@04",
        ' ');  // the first one is none
    int equal = 0;
    for (const auto kind : {models::Kind::tarnPlus, models::Kind::tarn}) {
        for (const auto* password : {"", "quill"}) {
            if (kind == models::Kind::tarn && *password) continue;  // that kind knows no login
            for (const auto& fault : faults) {
                models::DeviceOptions options;
                options.kind = kind;
                if (*password) options.password = password;
                if (!fault.empty()) options.faults = {fault};
                const auto wrong = difference(options, !fault.starts_with("babble"));
                EXPECT_EQ(wrong, "") << fault << " " << static_cast<int>(kind) << " " << password;
                equal += wrong.empty();
            }
        }
    }
    RecordProperty("equal", equal);
}

TEST(Replay, ATakenOffReaderIsTakenOffAgain) {
    Replay replay({{0, "open", "HID1"}, {5, "sent", "HID1", "a"}, {9, "event", "HID1", "17 0"}}, "HID1",
                  Replay::Timing::recorded);
    replay.speak(0);
    EXPECT_TRUE(replay.isPlugged());
    replay.hear(100, {'a'}, 0);
    replay.speak(104);
    EXPECT_FALSE(replay.isPlugged());
}

/// Runs that were recorded earlier: the program must still do the same. CORVANE_RECORD in the environment makes the
/// recordings anew, for a change of the dialogue that is meant.
TEST(Replay, TheKeptRecordingsAreStillRight) {
    using models::Kind;
    const struct {
        const char* name;
        Kind kind;
        const char *password, *fault;
        bool isHid = false;
    } rows[] = {{"plain", Kind::tarnPlus, "", ""},
                {"password", Kind::tarnPlus, "quill", ""},
                {"tarn", Kind::tarn, "", ""},
                {"nak", Kind::tarnPlus, "", "nak@2"},
                {"nak-always", Kind::tarnPlus, "", "nak@2x*"},
                {"mute", Kind::tarnPlus, "", "mute@2"},
                {"doubled-answer", Kind::tarnPlus, "", "repeat@9"},
                {"late-answer", Kind::tarn, "", "delay@9=700"},
                {"erase-refused", Kind::tarnPlus, "", "erase-nakx*"},
                {"switch-refused", Kind::tarnPlus, "", "refuse@1f=07"},
                {"unplugged", Kind::tarnPlus, "", "unplug@2"},
                {"noise", Kind::tarnPlus, "", "noise=fe80"},
                {"hid-plain", Kind::tarnPlus, "quill", "", true},
                {"hid-tarn-nak", Kind::tarn, "", "nak@2", true},
                {"hid-erase-refused", Kind::tarnPlus, "", "erase-nakx*", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto path = std::string(CORVANE_RECORDINGS) + "/" + row.name + ".txt";
        fakes::AppBench bench;
        if (std::getenv("CORVANE_RECORD")) {
            models::DeviceOptions options;
            options.kind = row.kind;
            if (*row.password) options.password = row.password;
            if (*row.fault) options.faults.add(row.fault);
            models::Device device(options);
            std::ofstream(path, std::ios::binary) << runOver(bench, device, row.isHid).recording;
            continue;
        }
        const auto then = readFile(path);
        Replay replay(eventsOf(then), row.isHid ? "HID1" : "COM1",
                      row.isHid ? Replay::Timing::recorded : Replay::Timing::absolute);
        const auto now = runOver(bench, replay, row.isHid).recording;
        // A reader brings what it is given in reports of its own, a little later.
        for (const auto* what : {"sent", "log"}) EXPECT_EQ(allIn(then, what), allIn(now, what)) << what;
        if (row.isHid) continue;
        Lines before(then), after(now);
        std::string_view a, b;
        while (before.next(a) && after.next(b) && a == b) continue;
        EXPECT_EQ(a, b);
        EXPECT_EQ(then.size(), now.size());
    }
}

}  // namespace
}  // namespace corvane
