#include "Dialogue.h"
#include "protocol/HexProgrammer.h"
#include "support/FakeSystem.h"
#include "text/Text.h"

namespace corvane::tests {

/// Records by a letter, so that a row shows what goes over the line: "0" the one at address 0, "u" and "s" back to the
/// first segment and on to the second, "g" to the second by an address record of type 2, "e" the end.
const std::map<char, std::string> kRecords = {
    {'0', ":0400000001020304F2"}, {'a', ":0400100005060708D2"}, {'b', ":04002000090A0B0CB2"},
    {'c', ":040030000D0E0F1092"}, {'u', ":020000040000FA"},     {'s', ":020000040001F9"},
    {'g', ":020000021000EC"},     {'e', ":00000001FF"},
};

std::string recordsOf(const std::string& letters) {
    std::string all;
    for (const char letter : letters) all += kRecords.at(letter) + "\r";
    return all;
}

struct OutOfStep : Dialogue {
    /// A device that has been erased. Its first answer was to that; the first record has the second one.
    void connectErased(const models::Faults& faults = {}, std::uint32_t rate = 19200) {
        connect({.kind = models::Kind::boot, .baud = rate, .faults = faults});
        reopen(*device, std::to_string(rate) + ",N,8,1");
        ASSERT_TRUE(isp.ISP_Erase());
        programmer.beginDevice();
        heardBefore = device->log().bytesHeard;
    }

    /// The device does not hear this sending, counted from 1; of a negative one it only misses the ":".
    void lose(int sending, const std::string& wire) {
        const auto place = static_cast<std::size_t>(std::abs(sending)) - 1;
        const auto from = heardBefore + recordsOf(wire.substr(0, place)).size();
        const auto size = sending < 0 ? 1 : kRecords.at(wire.at(place)).size() + 1;
        for (std::size_t i = 1; i <= size; ++i) device->faults().add("drop-byte@" + std::to_string(from + i));
    }

    /// In letters, "?" for anything else.
    std::string sent() const {
        std::string letters;
        const auto heard = textOf(device->log().heard.at(device->options().baud)).substr(heardBefore);
        std::string_view line;
        for (Lines lines(heard); lines.next(line);) {
            char letter = '?';
            for (const auto& [name, record] : kRecords) letter = record == line ? name : letter;
            letters += letter;
        }
        return letters;
    }

    bool program(const std::string& letters) {
        return programmer.ISP_Program(Image("x.hex", recordsOf(letters), digest));
    }

    void expectMemory(const std::string& letters) const {
        EXPECT_EQ(models::comparison(device->flash(), models::imageOf(recordsOf(letters))), "memory equals image");
    }

    /// Tells of the record that was just taken.
    struct Watch : Progress {
        std::function<void()> onStep = [] {};
        void progress(std::int64_t, std::int64_t) override { onStep(); }
        void transferred(std::int64_t, std::int64_t) override {}
    };

    fakes::FakeDigest digest;
    Watch watch;
    HexProgrammer programmer{session, watch, digest};
    std::size_t heardBefore = 0;
};

TEST_P(OutOfStep, AnAnswerThatMayBeAnotherRecordsIsNotBelieved) {
    // faults: the second answer is the first record's
    // serial, hid: what is sent
    const std::tuple<const char*, models::Faults, std::vector<int>, std::string, std::string> cases[] = {
        {"late, and the next one lost", {"delay@2=600"}, {3}, "aabb0ab0e", "aabb0ab0e"},
        {"late twice, and the next one lost", {"delay@2=600", "delay@3=700"}, {3}, "aabb0e", "aabb0e"},
        {"late within its time, its repetition lost", {"delay@2=300"}, {2}, "aaab0e", "aaab0e"},
        {"just late enough", {"delay@2=110"}, {}, "aab0ab0e", "aab0ab0e"},
        {"just not", {"delay@2=90"}, {}, "ab0e", "ab0e"},
        // A HID reader may hand over the second copy later than the first.
        {"twice at once, and the next one lost", {"noise@2=06"}, {2}, "aaab0ab0e", "abab0ab0e"},
        {"twice, and the next one lost", {"noise@3=06", "pieces@3=2/5"}, {3}, "ab0b0ab0e", "ab0b0ab0e"},
        {"refused, and accepted at once", {"noise@3=15"}, {3}, "abaab0ab0e", "abaab0ab0e"},
        {"refused, a line of text, accepted", {"noise@3=1568690d", "pieces@3=5/20"}, {3}, "abaab0ab0e", "abaab0ab0e"},
        // Only a port that counts what it has not sent yet shows this before anything is known of the device's
        // pace.
        {"the erase's twice, the first one lost", {"noise@1=06", "pieces@1=2/25"}, {1}, "aab0ab0e", ""},
        {"one refused", {"nak@:04002000090A0B0CB2"}, {}, "abb0e", "abb0e"},
    };
    for (const auto& [name, faults, lost, serial, hid] : cases) {
        SCOPED_TRACE(name);
        const auto& wire = isHid() ? hid : serial;
        if (wire.empty()) continue;
        connectErased(faults);
        for (const int sending : lost) lose(sending, wire);
        EXPECT_TRUE(program("0abe") && programmer.isQuiet());
        EXPECT_EQ(sent(), wire);
        expectMemory("0abe");
    }
}

TEST_P(OutOfStep, ARestartOfTheBootLoaderEndsTheTry) {
    const std::string deaf = "boot-deaf=300", banner = "banner=0d0a4156523e";
    // restartsAtStep: 0: it does not
    // isDone: or the next try must erase
    const std::tuple<const char*, std::string, int, std::vector<std::string>, int, std::string, bool> cases[] = {
        {"its prompt where an answer was due", "0abce", 3, {deaf, banner}, 0, "ababc0e", true},
        {"its prompt before an answer", "0abce", 3, {banner}, 0, "ababc0e", true},
        {"not a word, first segment", "0abce", 3, {deaf}, 0, "abbc0e", true},
        {"not a word, behind it", "asbce", 4, {deaf}, 0, "asbc", false},
        {"none, but the prompt", "0abce", 0, {}, -3, "abcabc0e", true},
        {"none, but the prompt behind", "asbce", 0, {}, -4, "asbc", false},
    };
    for (const auto& [name, file, restartsAtStep, faults, lost, wire, isDone] : cases) {
        SCOPED_TRACE(name);
        connectErased();
        for (const auto& fault : faults) device->faults().add(fault);
        if (lost) lose(lost, wire);
        int steps = 0;
        watch.onStep = [&, at = restartsAtStep] {
            if (++steps != at) return;
            device->unplug();
            device->plugIn(bench.runtime.micros());
        };
        EXPECT_EQ(program(file), isDone);
        EXPECT_EQ(sent(), wire);
        EXPECT_EQ(programmer.mustEraseAgain(), !isDone);
        if (isDone) expectMemory(file);
    }
}

TEST_P(OutOfStep, APromptThatNoRecordHasAskedForIsARestart) {
    const auto first = bytesOf(recordsOf("a")), second = bytesOf(recordsOf("b")),
               prompt = bytesOf(std::string("\r\nAVR>"));
    for (const bool isBefore : {true, false}) {  // the second record is there
        auto& boot = connectPeer();
        boot.answer(first, {{1, {6}}, {2, isBefore ? prompt : Bytes()}});
        if (!isBefore) boot.answer(second, {{300, prompt}});
        programmer.beginDevice();
        EXPECT_FALSE(program("abce"));
        EXPECT_EQ(boot.heardText(), recordsOf("ab"));
        EXPECT_TRUE(programmer.mustEraseAgain());
    }
}

TEST_P(OutOfStep, EachRecordLandsInItsSegmentInTheNextTry) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"nak@:020000040000FAx3", "asaubce", "asauuu.uasaubce"},
        {"nak@:04002000090A0B0CB2x3", "agbe", "agbgbgb.uagbe"},
    };
    for (const auto& [fault, file, wire] : cases) {
        SCOPED_TRACE(file);
        connectErased();
        device->faults().add(fault);
        EXPECT_FALSE(program(file));
        EXPECT_FALSE(programmer.mustEraseAgain());
        const auto first = sent();
        EXPECT_TRUE(program(file));
        EXPECT_EQ(first + "." + sent().substr(first.size()), wire);
        expectMemory(file);
    }
    device->faults() = {"nak@:04002000090A0B0CB2x3"};
    EXPECT_FALSE(program("agbe"));
    const auto before = sent();
    programmer.beginDevice();  // another one stands in its first segment
    EXPECT_TRUE(program("ae"));
    EXPECT_EQ(sent().substr(before.size()), "ae");
}

TEST_P(OutOfStep, ASlowDeviceIsProgrammed) {
    const std::string longest = ":FF010000" + std::string(2 * 255, '0') + "00\r";
    for (const std::uint32_t rate : {9600U, 19200U}) {
        for (const char* delay : {"delayx*=510", "delayx*=540"}) {
            connectErased({delay}, rate);
            EXPECT_TRUE(program("0abce") && programmer.isQuiet());
            EXPECT_EQ(sent(), "aabbc0e");
        }
    }
    connectErased({}, 9600);
    EXPECT_TRUE(programmer.ISP_Program(Image("x.hex", longest, digest)));
    EXPECT_EQ(programmer.repeatedRecords(), 0);
}

TEST_P(OutOfStep, WhatMayBeHeardASecondTimeDoesNotLandElsewhere) {
    connectErased({"nak@:0400100005060708D2"});
    begin = bench.runtime.ms();
    EXPECT_TRUE(program("absce"));
    EXPECT_EQ(sent(), "aabsce");
    expectMs(4500, 4750);  // silence after the refusal, before the place changes and before the end

    connectErased({"nak@:020000040001F9", "repeat@4"});
    EXPECT_FALSE(program("asbce"));
    EXPECT_EQ(sent(), isHid() ? "assb" : "ass");  // a HID reader hands the copy over later
    EXPECT_TRUE(programmer.mustEraseAgain());

    connectErased();
    programmer.erased(300);  // a second erase would take "a" with it, and its answer would stand for that of "a"
    lose(2, "ab");
    EXPECT_TRUE(program("0abe"));
    EXPECT_EQ(sent(), "abab0e");
}

CORVANE_OVER_EACH_PORT(OutOfStep);

}  // namespace corvane::tests
