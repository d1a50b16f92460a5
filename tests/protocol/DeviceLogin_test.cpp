#include "protocol/DeviceLogin.h"

#include <gtest/gtest.h>

#include "models/PacedLine.h"
#include "support/RecordingFace.h"
#include "support/ScriptedPeer.h"
#include "support/hid/PortBench.h"

namespace corvane {
namespace {

TEST(Password, IsEncodedByItsNeighbours) {
    EXPECT_EQ(EncodePassword("quill"), (Bytes{0x04, 0x1C, 0x05, 0x00, 0x6C}));
    EXPECT_EQ(EncodePassword("k"), (Bytes{'k'}));
    EXPECT_EQ(EncodePassword("\xE9z"), (Bytes{0x93, 'z'}));
    EXPECT_EQ(EncodePassword(""), Bytes());
}

class Login : public fakes::OverEachPort {
protected:
    models::Device& connect(models::DeviceOptions options) {
        device = std::make_unique<models::Device>(std::move(options));
        bench.open(*device);
        return *device;
    }

    bool logIn(std::string password = "quill") {
        const bool done = login.Login(password);
        typed = password;
        return done;
    }

    std::unique_ptr<models::Device> device;
    fakes::RecordingFace face;
    DeviceSession session{bench.runtime, face, bench.port};
    DeviceLogin login{session, face};
    std::string typed;
};

TEST_P(Login, NeedsNoPasswordWhenTheDeviceWantsNone) {
    connect({});
    session.loggedIn = true;
    EXPECT_TRUE(logIn());
    EXPECT_FALSE(session.loggedIn);
    EXPECT_EQ(device->log().requests.size(), 1U);
}

TEST_P(Login, OffersTheDefaultAndThenAsks) {
    models::DeviceOptions options;
    options.password = "sesame";
    connect(options);
    face.answers = {"wrong", "sesame"};
    EXPECT_TRUE(logIn());
    EXPECT_TRUE(session.loggedIn);
    EXPECT_EQ(typed, "sesame");
    const std::string question = "Password|Please type in password:|quill";
    EXPECT_EQ(face.questions, (std::vector<std::string>{question, question}));

    face.answers = {"wrong", ""};
    EXPECT_FALSE(logIn());
    EXPECT_FALSE(session.loggedIn);
    EXPECT_TRUE(logIn("sesame"));
}

TEST_P(Login, TakesRepliesOfThreeBytesOrMoreOnly) {
    fakes::ScriptedPeer peer;
    bench.open(peer);
    const std::string ask("\x01\x00\x00\x00\xC0\x71", 6);
    peer.answer(ask, std::string("\x01\x00\x06\x02\x00\x10\x84\x84", 8));
    EXPECT_FALSE(logIn());
    for (const auto& reply : {std::string("\x01\x00\x06\x03\x00\x10\x00\x9F\x85", 9),
                              std::string("\x01\x00\x06\x03\xFE\x10\x00\x6F\xE4", 9)}) {
        peer.answer(ask, reply);
        EXPECT_TRUE(logIn());
    }
    EXPECT_TRUE(face.questions.empty());
}

TEST_P(Login, WaitsFiveSecondsForTheDeviceAndThreeForItsOpinionOfThePassword) {
    fakes::ScriptedPeer peer;
    bench.open(peer);
    auto start = bench.runtime.ms();
    EXPECT_FALSE(logIn());
    EXPECT_GE(bench.runtime.ms() - start, 5000);
    EXPECT_LE(bench.runtime.ms() - start, 5010);
    EXPECT_TRUE(face.questions.empty());
    start = bench.runtime.ms();
    peer.answer(std::string("\x01\x00\x00\x00\xC0\x71", 6), std::string("\x01\x00\x06\x03\xFF\x10\x00\xAF\xB5", 9));
    EXPECT_FALSE(logIn());
    EXPECT_GE(bench.runtime.ms() - start, 3000);
    EXPECT_LE(bench.runtime.ms() - start, 3030);
    EXPECT_EQ(face.questions.size(), 1U);
}

TEST_P(Login, AsksNobodyForThePasswordOfALostDevice) {
    models::DeviceOptions options;
    options.password = "sesame";
    options.faults = {"unplug-request@03"};
    connect(options);
    EXPECT_FALSE(logIn());
    EXPECT_TRUE(face.questions.empty());
}

TEST_P(Login, ReadsTheVersionUpToItsEnd) {
    struct Case {
        std::string version;
        bool nul;
        bool found;
    };
    for (const auto& one : {Case{"TARN-R200 V5.1R23", true, true}, Case{"R\xE9 1", false, true}, Case{"", true, false},
                            Case{"", false, false}}) {
        models::DeviceOptions options;
        options.version = one.version;
        options.versionEndsInNul = one.nul;
        connect(options);
        std::string version;
        EXPECT_EQ(login.GetVersion(version), one.found);
        EXPECT_EQ(version, one.version);
        bench.port.PortOpen(false);
    }
}

TEST_P(Login, DetectsEachPromptAlsoInPieces) {
    for (const char* prompt : {"M51>", "AVR>", "ARM>"}) {
        models::DeviceOptions options;
        options.kind = models::Kind::boot;
        options.prompt = prompt;
        options.faults = {"prompt-pieces=60"};
        connect(options);
        EXPECT_TRUE(login.DetectPrompt()) << prompt;
        EXPECT_EQ(bench.port.InputMode(), 1);
        bench.port.PortOpen(false);
    }
}

TEST_P(Login, PollsForAPromptTwiceWithItsSilenceRestarted) {
    fakes::ScriptedPeer peer;
    bench.open(peer);
    std::int32_t mode = -1;
    const auto begin = bench.runtime.ms();
    bench.runtime.at(begin + 60, [&] { mode = bench.port.InputMode(); });
    EXPECT_FALSE(login.DetectPrompt());
    EXPECT_EQ(peer.heardText(), "\r\r");
    EXPECT_GE(bench.runtime.ms() - begin, 300);
    EXPECT_LE(bench.runtime.ms() - begin, 320);
    EXPECT_EQ(mode, 0);
    EXPECT_EQ(bench.port.InputMode(), 1);

    for (const int rest : {230, 260}) {  // within the silence of the first attempt, and in the second one
        const auto start = bench.runtime.ms();
        peer.say(start + 140, "A");
        peer.say(start + rest, "VR>");
        EXPECT_TRUE(login.DetectPrompt()) << rest;
    }
    peer.say(bench.runtime.ms() + 10, "ARM>");
    bench.runtime.Sleep(20);
    EXPECT_FALSE(login.DetectPrompt());  // it has said that to somebody else
    peer.say(bench.runtime.ms() + 60, "avr>");
    EXPECT_FALSE(login.DetectPrompt());
}

TEST_P(Login, GivesUpAnEndlessTalkerAndALostPort) {
    fakes::ScriptedPeer peer;
    bench.open(peer);
    auto start = bench.runtime.ms();
    for (int ms = 0; ms < 20000; ms += 20) peer.say(start + ms, "tick ");
    EXPECT_FALSE(login.DetectPrompt());
    EXPECT_GE(bench.runtime.ms() - start, 3000);
    EXPECT_LE(bench.runtime.ms() - start, 3060);
    start = bench.runtime.ms();
    bench.runtime.at(start + 70, [this] { session.cancel = true; });
    EXPECT_FALSE(login.DetectPrompt());
    EXPECT_LE(bench.runtime.ms() - start, 72);
    session.cancel = false;
    peer.unplugAt(bench.runtime.ms() + 70);
    start = bench.runtime.ms();
    EXPECT_FALSE(login.DetectPrompt());
    EXPECT_LE(bench.runtime.ms() - start, 130);
}

TEST_P(Login, DelaysItsTimeWhileEventsRun) {
    bool clicked = false;
    bench.runtime.at(500, [&] { clicked = true; });
    login.Delay(1000);
    EXPECT_TRUE(clicked);
    EXPECT_GE(bench.runtime.ms(), 1000);
    EXPECT_LE(bench.runtime.ms(), 1010);
}

CORVANE_OVER_EACH_PORT(Login);

}  // namespace
}  // namespace corvane
