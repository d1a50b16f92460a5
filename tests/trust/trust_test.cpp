#include <gtest/gtest.h>

#include "support/SignedSite.h"
#include "text/Base64.h"
#include "text/Text.h"
#include "trust/Signature.h"
#include "trust/TrustedKeys.h"

namespace corvane {
namespace {

using fakes::signedFile;

/// The key of a file of minisign's, by its id.
std::string idOf(const std::string& keyFile) {
    std::string why;
    return PublicKey::parse(signedFile(keyFile), why).value().id;
}

class Trust : public ::testing::Test {
protected:
    Judgement judge(const std::string& content, const std::string& signature) {
        return TrustedKeys::load({{folder.path()}}).judge(check, content, signature, "firmware.inf");
    }

    SodiumSignatures check;
    fakes::ScratchFolder folder;
    const std::string list = signedFile("firmware.inf"), good = signedFile("good.minisig");
};

TEST_F(Trust, NamesWhoSignedInEitherOfMinisignsWays) {
    folder.file("stranger.pub", signedFile("stranger.pub"));
    folder.file("Acme Ltd.pub", signedFile("maker.pub"));
    for (const auto* name : {"good.minisig", "legacy.minisig", "timeless.minisig"}) {
        const auto judgement = judge(list, signedFile(name));
        ASSERT_TRUE(judgement.voucher) << name << ": " << judgement.fault;
        EXPECT_EQ(judgement.voucher->name, "Acme Ltd");
        EXPECT_EQ(judgement.voucher->keyId, idOf("maker.pub"));
        EXPECT_EQ(judgement.voucher->time.value_or(0), std::string(name) == "timeless.minisig" ? 0 : 1767225600);
    }
    EXPECT_EQ(judge(list, replaceAll(good, "\n", "\r\n")).fault, "");
    EXPECT_EQ(judge(list, signedFile("stranger.minisig")).voucher->name, "stranger");
    const auto line = split(signedFile("maker.pub"), '\n').at(1);
    EXPECT_EQ(TrustedKeys::load({{}, line}).judge(check, list, good, "firmware.inf").voucher->name, "maker");
}

TEST_F(Trust, RefusesEverythingElseWithItsCause) {
    folder.file("maker.pub", signedFile("maker.pub"));
    auto lines = split(good, '\n');
    const auto with = [&](std::size_t at, const std::string& text) {
        auto changed = lines;
        changed[at] = text;
        return joined(changed, "\n");
    };
    const auto stranger = split(signedFile("stranger.minisig"), '\n');
    // The maker's key id in front of the stranger's signature.
    const auto disguised = lines[1].substr(0, 14) + stranger[1].substr(14);
    const struct {
        std::string list, signature, fault;
    } kAttacks[] = {
        {list, "", "it is not signed"},
        {list + " ", good, "it is not what maker signed: it, or its signature, was replaced or changed"},
        {list, signedFile("older.minisig"),
         "it is not what maker signed: it, or its signature, was replaced or changed"},
        {list, signedFile("image.minisig"), "its signature is that of another file, image.hex"},
        {signedFile("image.hex"), signedFile("image.minisig"), "its signature is that of another file, image.hex"},
        {list, signedFile("stranger.minisig"),
         "it is signed with the unknown key " + idOf("stranger.pub") + "; those that are known here are maker " +
             idOf("maker.pub")},
        {list, with(1, disguised), "its signature is not maker's, or was changed: it only names that key"},
        {list, with(2, "trusted comment: timestamp:1999999999\tfile:firmware.inf"),
         "its signature was changed after maker had made it"},
        {list, with(3, stranger[3]), "its signature was changed after maker had made it"},
        {list, with(1, lines[1].substr(4)), "its signature is damaged: what should be the signature in it is none"},
        {list, with(1, "RX" + lines[1].substr(2)), "its signature is damaged: it is of a kind that is not known here"},
        {list, with(2, "comment: x"), "its signature is damaged: it is no signature file of minisign's"},
        {list, lines[0] + "\n" + lines[1] + "\n" + lines[2], "its signature is damaged: it is cut off"},
    };
    for (const auto& attack : kAttacks) {
        const auto judgement = judge(attack.list, attack.signature);
        EXPECT_FALSE(judgement.voucher) << attack.fault;
        EXPECT_EQ(judgement.fault, attack.fault);
    }
}

/// A key that cannot be used must not look like no key at all.
TEST_F(Trust, TellsOfKeysThatAreNone) {
    EXPECT_FALSE(TrustedKeys::load({{folder.path(), folder.at("none")}}).areThere());
    const auto text = signedFile("maker.pub");
    const std::pair<std::string, std::string> kFiles[] = {
        {"", "it holds no public key"},
        {text.substr(0, text.size() - 5), "it holds no public key"},
        {replaceAll(text, "\nRW", "\nRX"), "it is a key of a kind that is not known here"},
    };
    for (const auto& [content, why] : kFiles) {
        const auto path = folder.file("a.pub", content);
        const auto keys = TrustedKeys::load({{folder.path()}});
        EXPECT_TRUE(keys.areThere());
        EXPECT_EQ(keys.problems(), std::vector<std::string>{"The key " + path + " cannot be used: " + why + "."});
        EXPECT_EQ(keys.judge(check, list, good, "firmware.inf").fault,
                  "it is signed with the unknown key " + idOf("maker.pub") + "; no key that can be used is known here");
    }
    const auto notAFolder = folder.file("file", "");
    EXPECT_EQ(TrustedKeys::load({{notAFolder}}).problems(),
              std::vector<std::string>{"The folder of keys " + notAFolder + " cannot be read: Not a directory."});
}

TEST(TrustTexts, SayTimesAndBytes) {
    EXPECT_EQ(utcText(0), "1970-01-01 00:00:00 UTC");
    EXPECT_EQ(utcText(951868799), "2000-02-29 23:59:59 UTC");
    EXPECT_EQ(utcText(951868800), "2000-03-01 00:00:00 UTC");
    EXPECT_EQ(utcText(1767225600), "2026-01-01 00:00:00 UTC");
    EXPECT_EQ(fromBase64("/+8="), "\xFF\xEF");
    EXPECT_EQ(fromBase64("AAECAw=="), std::string("\0\1\2\3", 4));
    for (const auto* wrong : {"A", "AA", "A===", "AB==", "A=AA", "AA A", "AAA\n", "===="}) {
        EXPECT_EQ(fromBase64(wrong), std::nullopt) << wrong;
    }
}

}  // namespace
}  // namespace corvane
