#include "protocol/DeviceLogin.h"

#include "Dialogue.h"

namespace corvane::tests {

const std::string kAsk("\x01\x00\x00\x00\xC0\x71", 6);
const std::string kWantsPassword("\x01\x00\x06\x03\xFF\x10\x00\xAF\xB5", 9);

TEST(Password, IsEncodedByItsNeighbours) {
    EXPECT_EQ(EncodePassword("quill"), (Bytes{0x04, 0x1C, 0x05, 0x00, 0x6C}));
    EXPECT_EQ(EncodePassword("\xE9z"), (Bytes{0x93, 'z'}));
}

struct Login : Dialogue {
    bool logIn() { return login.Login(typed = "quill"); }

    std::string typed;
};

TEST_P(Login, OffersTheDefaultAndThenAsks) {
    connect({.password = "sesame"});
    face.answers = {"wrong", "sesame"};
    EXPECT_TRUE(logIn());
    EXPECT_TRUE(session.loggedIn);
    EXPECT_EQ(typed, "sesame");
    const std::string question = "Password|Please type in password:|quill";
    EXPECT_EQ(face.questions, (std::vector<std::string>{question, question}));
    EXPECT_FALSE(logIn());
    EXPECT_FALSE(session.loggedIn);
    connect({.password = "sesame", .faults = {"unplug-request@03"}});  // nobody is asked for a lost device's
    EXPECT_FALSE(logIn());
    EXPECT_EQ(face.questions.size(), 3U);
}

TEST_P(Login, TakesRepliesOfThreeBytesOrMoreAndWaitsThreeSecondsForAnOpinionOfThePassword) {
    connectPeer();
    const std::pair<std::string, bool> cases[] = {{std::string("\x01\x00\x06\x02\x00\x10\x84\x84", 8), false},
                                                  {std::string("\x01\x00\x06\x03\xFE\x10\x00\x6F\xE4", 9), true}};
    for (const auto& [reply, done] : cases) {
        peer->answer(kAsk, reply);
        EXPECT_EQ(logIn(), done);
    }
    EXPECT_TRUE(face.questions.empty());
    connectPeer().answer(kAsk, kWantsPassword);
    EXPECT_FALSE(logIn());
    expectMs(3000, 3030);
    EXPECT_EQ(face.questions.size(), 1U);
}

TEST_P(Login, ReadsTheVersionUpToItsEnd) {
    for (const std::string text : {"TARN-R200 V5.1R23", "R\xE9 1", ""}) {
        connect({.version = text, .versionEndsInNul = text[0] == 'T'});
        std::string version;
        EXPECT_EQ(login.GetVersion(version), !text.empty());
        EXPECT_EQ(version, text);
    }
}

TEST_P(Login, DetectsEachPromptAlsoInPieces) {
    for (const char* prompt : {"M51>", "AVR>", "ARM>"}) {
        auto options = bootLoader({"prompt-pieces=60"});
        options.prompt = prompt;
        connect(options);
        EXPECT_TRUE(login.DetectPrompt()) << prompt;
    }
    connectPeer();
    std::int32_t mode = -1;
    bench.runtime.at(begin + 60, [&] { mode = bench.port.InputMode(); });
    EXPECT_FALSE(login.DetectPrompt());
    EXPECT_EQ(peer->heardText(), "\r\r");
    EXPECT_EQ(mode, 0);
    EXPECT_EQ(bench.port.InputMode(), 1);
    for (const int rest : {230, 260}) {  // in the silence of the first attempt, and in the second one
        const auto start = bench.runtime.ms();
        peer->say(start + 140, "A");
        peer->say(start + rest, "VR>");
        EXPECT_TRUE(login.DetectPrompt()) << rest;
    }
    peer->say(bench.runtime.ms() + 10, "ARM>");
    bench.runtime.Sleep(20);
    EXPECT_FALSE(login.DetectPrompt());  // it has said that to somebody else
    peer->say(bench.runtime.ms() + 60, "avr>");
    EXPECT_FALSE(login.DetectPrompt());
}

TEST_P(Login, DelaysItsTimeWhileEventsRun) {
    bool clicked = false;
    bench.runtime.at(500, [&] { clicked = true; });
    login.Delay(1000);
    EXPECT_TRUE(clicked);
    expectMs(1000, 1010);
}

CORVANE_OVER_EACH_PORT(Login);

}  // namespace corvane::tests
