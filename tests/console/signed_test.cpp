#include "ConsoleBench.h"
#include "text/Text.h"

namespace corvane::tests {

using fakes::signedFile;

/// A site whose list the maker has signed, and what somebody on the way makes of it.
struct SignedSite : ConsoleTest {
    SignedSite() {
        digest.known[signedFile("image.hex")] = fakes::kImageDigest;
        keys.file("ACME.pub", signedFile("maker.pub"));
        plug({.nextVersion = "TARN-R200 V5.2R1"});
        reader.answers["ftp://upd:@host"].content = "listing";
        list("firmware", "good");
        serve("/f/r200.hex", signedFile("image.hex"));
    }

    void serve(const std::string& path, const std::string& content) {
        reader.answers["ftp://upd:@host" + path].content = content;
    }
    void list(const std::string& name, const std::string& signature) {
        serve("/firmware/firmware.inf", signedFile(name + ".inf"));
        if (!signature.empty()) serve("/firmware/firmware.inf.minisig", signedFile(signature + ".minisig"));
    }
    int onLine(const std::vector<std::string>& more = {}) {
        std::vector<std::string> words = {"update", "--server", "host", "--user", "upd", "--yes"};
        words.insert(words.end(), more.begin(), more.end());
        return run(words);
    }
    bool isUntouched() const {
        return devices.front()->log().erases == 0 && !devices.front()->isInBoot() && launcher.started.empty();
    }
};

struct Attack {
    const char* sentence;
    void (*happens)(SignedSite& it);
    int status = 4;
};

constexpr char kChanged[] = "it is not what ACME signed: it, or its signature, was replaced or changed";

TEST_F(SignedSite, ChangesNoDeviceWhenSomebodyOnTheWayHasChangedIt) {
    const Attack attacks[] = {
        {"it is not signed (firmware.inf.minisig: the server does not give it: 550 none)",
         [](auto& it) {
             it.reader.answers["ftp://upd:@host/firmware/firmware.inf.minisig"] = {
                 .content = "", .failure = {ReadFailure::Kind::refused, "550 none"}};
         }},
        {kChanged,
         [](auto& it) { it.serve("/firmware/firmware.inf", replaceAll(signedFile("firmware.inf"), "one", "two")); }},
        {kChanged, [](auto& it) { it.list("firmware", "older"); }},
        {"its signature is that of another file, image.hex", [](auto& it) { it.list("firmware", "image"); }},
        {"it is signed with the unknown key ", [](auto& it) { it.list("firmware", "stranger"); }},
        {"its signature is damaged: it is cut off",
         [](auto& it) { it.serve("/firmware/firmware.inf.minisig", "<html>"); }},
        {"it is older than the last one from host: it was signed on 2025-01-01 00:00:00 UTC, that one on 2026-01-01",
         [](auto& it) { it.run({"images"}), it.list("older", "older"); }},
        {"it is older than the last one from host: it does not say when it was signed",
         [](auto& it) { it.run({"images"}), it.list("firmware", "timeless"); }},
        {"Not offered, since the signed list gives no SHA256 for it: PGM_R200.",
         [](auto& it) { it.list("bare", "bare"); }, 1},
        {"The image is not the one that firmware.inf means: its SHA-256 is ",
         [](auto& it) { it.serve("/f/r200.hex", replaceAll(fakes::kImage, "010203", "010204")); }},
    };
    settings.values = {{"Corvane/FTP/Server", "host"}, {"Corvane/FTP/UserName", "upd"}};
    for (const auto& attack : attacks) {
        SCOPED_TRACE(attack.sentence);
        reader.answers["ftp://upd:@host/firmware/firmware.inf.minisig"] = {};
        list("firmware", "good");
        serve("/f/r200.hex", signedFile("image.hex"));
        attack.happens(*this);
        EXPECT_EQ(onLine(), attack.status);
        EXPECT_TRUE(says(attack.sentence)) << err.text;
        EXPECT_TRUE(isUntouched());
    }
}

TEST_F(SignedSite, SaysWhoVouches) {
    for (const auto* signature : {"good", "legacy"}) {
        list("firmware", signature);
        EXPECT_EQ(onLine({"--json"}), 0) << err.text;
        EXPECT_TRUE(prints("\"signedBy\":\"ACME\"")) << out.text;
        EXPECT_TRUE(says("Signed by ACME, key ") && says(", on 2026-01-01 00:00:00 UTC.")) << err.text;
        EXPECT_TRUE(says("Not offered, since the signed list gives no SHA256 for it: PGM_BARE."));
    }
    EXPECT_TRUE(fakes::ScratchFolder::content(folder.dataPath() + "/jobs.csv").ends_with(",updated,ACME\r\n"));
    list("older", "older");
    EXPECT_EQ(onLine(), 4);
    EXPECT_EQ(onLine({"--accept-older-list"}), 0) << err.text;
}

TEST_F(SignedSite, IsVerifiedAgainFromTheDisk) {
    EXPECT_EQ(onLine(), 0) << err.text;
    const std::vector<std::string> offLine = {"update", "--offline", "--yes"};
    EXPECT_EQ(run(offLine), 0) << err.text;
    EXPECT_EQ(update(), 0);
    EXPECT_TRUE(says("The local file is TARN-R200 V5.2R1 as signed by ACME.")) << err.text;
    EXPECT_EQ(run({"update", "--yes", "--file", image(replaceAll(fakes::kImage, "V5.2R1", "V5.3R1"))}), 0);
    EXPECT_TRUE(says("The local file is not in the list that ACME signed.")) << err.text;
    const auto erases = devices.front()->log().erases;
    write("firmware.inf", replaceAll(signedFile("firmware.inf"), "one", "two"));
    EXPECT_EQ(run(offLine), 4);
    EXPECT_TRUE(says(kChanged)) << err.text;
    write("firmware.inf", signedFile("firmware.inf"));
    write("Download/r200.hex", replaceAll(fakes::kImage, "V5.2R1", "V5.2R2"));
    EXPECT_EQ(run(offLine), 4);
    EXPECT_EQ(devices.front()->log().erases, erases);
}

TEST_F(SignedSite, IsCheckedAsWhoKnowsTheKeyMeetsIt) {
    folder.folder.file("site/f/r200.hex", signedFile("image.hex"));
    const auto check = [this](const std::string& name, const std::string& signature) {
        folder.folder.file("site/firmware/firmware.inf", signedFile(name + ".inf"));
        folder.folder.file("site/firmware/firmware.inf.minisig", signedFile(signature + ".minisig"));
        return run({"check-site", folder.folder.at("site")});
    };
    EXPECT_EQ(check("older", "older"), 0) << out.text;
    EXPECT_TRUE(prints("Signed by ACME, key ")) << out.text;
    EXPECT_EQ(check("firmware", "good"), 1);
    EXPECT_TRUE(prints("[PGM_BARE] is not offered to who knows a key: the signed list gives no SHA256 for it\n"));
    EXPECT_FALSE(prints("[PGM_R200] is not")) << out.text;
    EXPECT_EQ(check("bare", "good"), 1);
    EXPECT_TRUE(prints("firmware.inf is not to be believed: " + std::string(kChanged))) << out.text;
}

TEST_F(SignedSite, StartsNoOtherProgramThanTheSignedOne) {
    digest.known["new program"] = split(split(signedFile("program.inf"), '\n')[3], '=')[1];
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"program", "another program", "", "its SHA-256 is "},
        {"program", "new program", "it is no program for this computer", "it is no program for this computer"},
        {"bare", "new program", "", "the signed list gives no SHA256 for it"},
    };
    for (const auto& [name, program, fault, sentence] : cases) {
        list(name, name);
        serve("/p", program);
        launcher.faultOfAll = fault;
        onLine({"--self-update"});
        EXPECT_TRUE(says(sentence)) << err.text;
        EXPECT_TRUE(launcher.started.empty());
    }
    launcher.faultOfAll.clear();
    list("program", "program");
    onLine({"--self-update"});
    EXPECT_EQ(launcher.started.size(), 1U);
}

}  // namespace corvane::tests
