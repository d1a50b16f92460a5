// The reader against a real FTP server on loopback: what it reports, what the server sees, and what its faults lead to.

#include "platform/linux/transfer/CurlAsyncReader.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "support/ScratchFolder.h"
#include "support/SiteProcess.h"

namespace corvane::fakes::tests {

const std::string kImage = "/firmware/image.hex";

/// 3000 bytes in which every value occurs.
std::string everyByte() {
    std::string bytes;
    for (int i = 0; i < 3000; ++i) bytes += static_cast<char>(i);
    return bytes;
}

struct CurlAsyncReaderTest : testing::Test {
    CurlAsyncReaderTest() {
        for (const char* name : {"image.hex", "gone", "stalls", "mutters"}) {
            root_.file(std::string("firmware/") + name, everyByte());
        }
        root_.file("firmware/empty", "");
        root_.file("firmware/a b%20#1?+;\\\xE4.hex", "odd");
        serve(R"("anonymous": true, "stall": {"/firmware/stalls": 1000})");
        limit({10000, 1000});
    }

    /// Starts a server in place of the last one; members of its description, in JSON.
    void serve(const std::string& members) {
        site_.emplace("ftp_site.py", R"({"root": ")" + root_.path() + R"(", "accounts":
            {"upd": "pw", "a@b/c:d %41": "p@x/y:z", "gr\u00fcn \u20ac": " \u00e4\u20ac#?"}, )" +
                                         members + "}");
    }

    /// A reader in place of the last one.
    void limit(const CurlAsyncReader::Limits& limits) {
        reader_.emplace(runtime_, limits);
        reader_->onProgress = [this](const AsyncResult& result) { progress_.push_back(result); };
        reader_->onComplete = [this](const AsyncResult& result) { completed_.push_back(result); };
    }

    Address address(const std::string& path, const std::string& user = "upd", const std::string& password = "pw") {
        Address address{user, password, {}, 0, path};
        address.server(site_->address());
        return address;
    }

    /// Lets the loop turn until there is such a report, for ten seconds at most.
    const AsyncResult& await(const std::vector<AsyncResult>& reports) {
        for (const auto start = runtime_.tick(); reports.empty() && runtime_.tick() - start < 10000;) {
            runtime_.WaitActivity(10);
            runtime_.DoEvents();
        }
        return reports.at(0);
    }

    /// A whole read: what it brought, or "(none)".
    std::string read(const Address& address, const std::string& property = "") {
        progress_.clear();
        completed_.clear();
        reader_->start(address, property.empty() ? target_ : property);
        return taken(await(completed_));
    }

    /// A read that must fail and leave nothing; why it failed.
    ReadFailure failure(const std::string& name) {
        EXPECT_EQ(read(address("/firmware/" + name)), "(none)");
        EXPECT_TRUE(local_.names().empty());
        return reader_->failure();
    }

    static std::string taken(const AsyncResult& result) {
        const auto content = ScratchFolder::content(result.value);
        std::filesystem::remove(result.value);
        return content;
    }

    ScratchFolder root_, local_;
    const std::string target_ = local_.at("image.hex");
    std::optional<SiteProcess> site_;
    LinuxRuntime runtime_;
    std::vector<AsyncResult> progress_, completed_;
    std::optional<CurlAsyncReader> reader_;
};

TEST_F(CurlAsyncReaderTest, FileComesBesideItsTarget) {
    local_.file("image.hex", "old");
    reader_->start(address(kImage), target_);
    const auto result = await(completed_);
    EXPECT_EQ(std::filesystem::path(result.value).parent_path(), local_.path());
    EXPECT_FALSE(reader_->failure());
    for (const auto& report : {result, progress_.back()}) {
        EXPECT_EQ(report.bytesRead + report.bytesMax, 6000);
        EXPECT_EQ(report.propertyName, target_);
    }
    EXPECT_TRUE(taken(result) == everyByte());
    EXPECT_EQ(ScratchFolder::content(target_), "old");
}

TEST_F(CurlAsyncReaderTest, FailedReadCompletesWithNothing) {
    using Kind = ReadFailure::Kind;
    const std::tuple<const char*, Address, Kind> reads[] = {
        {"wrong password", address(kImage, "upd", "no"), Kind::login},
        {"missing file", address("/firmware/nothing"), Kind::refused},
        {"empty file", address("/firmware/empty"), Kind::refused},
        {"no folder for it", address(kImage), Kind::storage},
        {"command in the path", address(kImage + "\r\nQUIT"), Kind::noAddress},
        {"NUL", address(kImage, "upd", std::string("pw\0", 3)), Kind::noAddress},
        {"another host", Address{"upd", "pw", "x/" + site_->address(), 0, kImage}, Kind::noAddress},
    };
    for (const auto& [what, from, kind] : reads) {
        SCOPED_TRACE(what);
        const auto property = kind == Kind::storage ? local_.at("missing/image.hex") : target_;
        EXPECT_EQ(read(from, property), "(none)");
        EXPECT_EQ(completed_[0].propertyName + std::to_string(completed_[0].bytesRead), property + "0");
        EXPECT_EQ(reader_->failure().kind, kind);
        EXPECT_FALSE(reader_->failure().words.empty());
        EXPECT_TRUE(local_.names().empty());
    }
    EXPECT_TRUE(read(address(kImage)) == everyByte());
    EXPECT_FALSE(reader_->failure());
}

TEST_F(CurlAsyncReaderTest, CancelledReadIsNeverReported) {
    // However far it has come: not begun, connecting, logging in, transferring, or done and not yet reported.
    for (int rounds = 0; rounds < 20; ++rounds) {
        reader_->start(address(kImage), target_);
        for (int i = 0; i < rounds; ++i) runtime_.WaitActivity(10);
        reader_->cancel(rounds % 2 ? std::optional(target_) : std::nullopt);
        EXPECT_TRUE(local_.names().empty());
        runtime_.DoEvents();
    }
    EXPECT_TRUE(progress_.empty() && completed_.empty());
    reader_->start(address(kImage), target_);
    reader_->cancel(local_.at("other"));  // which is none of its
    EXPECT_TRUE(taken(await(completed_)) == everyByte());
    for (const bool closes : {true, false}) {  // or another read takes its place
        progress_.clear();
        reader_->start(address("/firmware/stalls"), local_.at("stalls"));
        await(progress_);
        if (closes) reader_->closeSession();
        EXPECT_TRUE(read(address(kImage)) == everyByte());
        EXPECT_EQ(completed_.size(), 1U);
        EXPECT_TRUE(local_.names().empty());
    }
}

TEST_F(CurlAsyncReaderTest, AccountsAndPathsArriveAsTheyAre) {
    const std::tuple<const char*, const char*, const char*, const char*, std::string> reads[] = {
        {"a@b/c:d %41", "p@x/y:z", "/firmware/image.hex", "a@b/c:d %41", everyByte()},
        {"gr\xC3\xBCn \xE2\x82\xAC", " \xC3\xA4\xE2\x82\xAC#?", "/firmware/../firmware/image.hex",
         "gr\xC3\xBCn \xE2\x82\xAC", everyByte()},
        {"", "pw", "/firmware/a b%20#1?+;\\\xE4.hex", "anonymous", "odd"},
    };
    for (const auto& [user, password, path, login, content] : reads) {
        EXPECT_TRUE(read(address(path, user, password)) == content) << reader_->failure().words;
        EXPECT_TRUE(site_->sees(std::string("login ") + login));
        EXPECT_TRUE(site_->sees(std::string("RETR ") + path));
    }
}

TEST_F(CurlAsyncReaderTest, OneLoginServesAllReadsUntilTheFarewell) {
    for (const auto& path : {std::string(), std::string("/firmware/nothing"), kImage}) read(address(path));
    EXPECT_EQ(site_->count("login upd") + site_->count("QUIT"), 1);
    read(address("", "a@b/c:d %41", "p@x/y:z"));
    EXPECT_TRUE(site_->sees("QUIT")) << "another account, another session";
    read(address(kImage));
    site_->freeze();
    reader_->closeSession();  // waiting for an answer here would take two minutes
    reader_->start(address(kImage), target_);
    runtime_.WaitActivity(10);
    reader_->cancel(std::nullopt);
    site_->thaw();
    EXPECT_TRUE(site_->sees("QUIT", 3));
    EXPECT_TRUE(local_.names().empty());
}

TEST_F(CurlAsyncReaderTest, FaultsOfAServerThatAnnouncesNoSizes) {
    serve(R"("sizes": false, "drop": {"/firmware/gone": [1000, "both"]}, "stall": {"/firmware/stalls": 1000},
             "silent": ["/firmware/mutters"], "mutters": ["/firmware/mutters"])");
    EXPECT_EQ(failure("gone").kind, ReadFailure::Kind::brokenOff);
    EXPECT_EQ(failure("stalls").words, "the server has fallen silent");
    // Those words too many look like a confirmation that is there already, and the library is left waiting for it.
    EXPECT_EQ(failure("mutters").words, "the server did not confirm the transfer");
    EXPECT_TRUE(read(address(kImage)) == everyByte());
    limit({10000, 10000, 300});
    EXPECT_EQ(failure("stalls").words, "it took too long");
    site_->kill();
    EXPECT_EQ(failure("image.hex").kind, ReadFailure::Kind::unreachable);
}

TEST_F(CurlAsyncReaderTest, WhatTheServerAnnouncesIsWhatItMustSend) {
    serve(R"("announces": {"/firmware/gone": 1000, "/firmware/stalls": 5000, "/firmware/mutters": 9000000000})");
    EXPECT_EQ(failure("gone").words, "the server sends more than the 1000 bytes that it announced");
    EXPECT_EQ(failure("stalls").words, "3000 of 5000 bytes have come");
    reader_->mostBytes(2999);
    const auto tooLong = failure("image.hex");
    EXPECT_EQ(tooLong.kind, ReadFailure::Kind::tooLong);
    EXPECT_EQ(tooLong.words, "it is longer than 2999 bytes");
    EXPECT_EQ(failure("mutters").kind, ReadFailure::Kind::tooLong) << "before it comes";
    reader_->mostBytes(3000);
    EXPECT_TRUE(read(address(kImage)) == everyByte());
}

TEST_F(CurlAsyncReaderTest, RouteDecidesAboutTheProxy) {
    using Access = SiteRoute::Access;
    SiteProcess proxy("http_proxy.py", "{}");
    const auto asked = "GET ftp://upd:pw@" + site_->address() + "/%2Ffirmware/image.hex";
    const std::string here = proxy.address(), nowhere = "127.0.0.1:1";
    const std::tuple<std::string, std::string, SiteRoute, bool> routes[] = {
        // ftp_proxy, no_proxy, is it used
        {here, "", {Access::byDefault, {}}, true},      {here, "", {Access::proxy, {}}, true},  // chosen, and not named
        {here, "", {Access::direct, here}, false},      {nowhere, "*", {Access::proxy, here}, true},
        {nowhere, "*", {Access::byDefault, {}}, false},
    };
    int expected = 0;
    for (const auto& [ftpProxy, noProxy, route, isThroughProxy] : routes) {
        ::setenv("ftp_proxy", ftpProxy.c_str(), 1);
        ::setenv("no_proxy", noProxy.c_str(), 1);
        reader_->closeSession();
        reader_->route(route);
        EXPECT_EQ(read(address(kImage)).size(), 3000U) << reader_->failure().words;
        EXPECT_EQ(proxy.count(asked), expected += isThroughProxy);
        EXPECT_NE(read(address("")), "(none)");
    }
    ::unsetenv("ftp_proxy");
    ::unsetenv("no_proxy");
    reader_->route({Access::proxy, here});  // from the next session on
    read(address(kImage));
    EXPECT_EQ(proxy.count(asked), expected);
    reader_->closeSession();
    read(address(kImage));
    EXPECT_EQ(proxy.count(asked), expected + 1);
}

struct Encrypted : CurlAsyncReaderTest {
    using Encryption = SiteRoute::Encryption;
    using Kind = ReadFailure::Kind;

    void route(Encryption encryption, const std::string& authorities) {
        reader_->route({.encryption = encryption, .authorities = authorities});
    }

    const std::string certificate_ = local_.path() + ".pem";
    const std::string tls_ =
        R"("tls": {"file": ")" + certificate_ + R"(", "patient": true, "name": "127.0.0.1", "days": 1)";
};

TEST_F(Encrypted, SessionsAreUsedAsFarAsTheyAreAskedForAndCanBeHad) {
    const std::string wrongName = R"("tls": {"file": ")" + certificate_ +
                                  R"(", "patient": true, "name": "127.0.0.9", "days": 1})",
                      expired = R"("tls": {"file": ")" + certificate_ + R"(", "name": "127.0.0.1", "days": -1})",
                      good = tls_ + "}", breaks = tls_ + R"(, "breaks": true})",
                      none = R"("auth": "530 Log in first.")", dropsOffer = R"("auth": "421 What?")",
                      mute = R"("auth": "")";
    constexpr auto kOff = Encryption::off, kTry = Encryption::whenOffered, kRequire = Encryption::required;
    const struct {
        const std::string& site;
        Encryption encryption;
        bool isTrusted;
        Kind failure;
        const char* remark;
        int encrypted;
    } cases[] = {
        {good, kRequire, true, Kind::none, "", 1},
        {good, kTry, true, Kind::none, "", 1},
        {good, kTry, false, Kind::none, "The session is encrypted, but nobody vouches for this server (", 1},
        {good, kOff, true, Kind::none, "", 0},
        {good, kRequire, false, Kind::notVouched, "", 0},
        {wrongName, kRequire, true, Kind::notVouched, "", 0},
        {wrongName, kTry, true, Kind::none, "The session is encrypted, but nobody vouches for this server (", 1},
        {expired, kRequire, true, Kind::notVouched, "", 0},
        {breaks, kRequire, true, Kind::notEncrypted, "", 0},
        {breaks, kTry, true, Kind::none, "The server offers encryption that does not work (", 0},
        {none, kRequire, false, Kind::notEncrypted, "", 0},
        {none, kTry, false, Kind::none, "", 0},
        {dropsOffer, kTry, false, Kind::none, "", 0},
        {mute, kTry, false, Kind::none, "", 0},
        {mute, kRequire, false, Kind::notEncrypted, "", 0},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.site + std::to_string(static_cast<int>(one.encryption)) + (one.isTrusted ? "trusted" : ""));
        serve(one.site);
        const bool isSilent = &one.site == &breaks || &one.site == &mute || &one.site == &dropsOffer;
        limit({.offerMs = isSilent ? 200 : 10000});
        route(one.encryption, one.isTrusted && std::filesystem::exists(certificate_) ? certificate_ : "");
        EXPECT_EQ(read(address(kImage)) == everyByte(), one.failure == Kind::none) << reader_->failure().words;
        EXPECT_EQ(reader_->failure().kind, one.failure) << reader_->failure().words;
        EXPECT_EQ(reader_->remark().substr(0, std::string(one.remark).size()), one.remark);
        EXPECT_EQ(reader_->remark().empty(), !*one.remark);
        EXPECT_EQ(read(address("/firmware/a b%20#1?+;\\\xE4.hex")) == "odd", one.failure == Kind::none);
        EXPECT_EQ(site_->count("login upd"), one.failure == Kind::none) << "one login for both";
        EXPECT_EQ(site_->count("PROT P"), one.encrypted);
    }
}

TEST_F(Encrypted, SessionWithDataInTheClearIsNoneWhereItIsRequiredAndASilentServerHoldsNobodyUp) {
    serve(tls_ + R"(, "control": true})");
    route(Encryption::required, certificate_);
    EXPECT_EQ(failure("image.hex").kind, Kind::notEncrypted);
    serve(tls_ + "}");
    EXPECT_TRUE(read(address(kImage)) == everyByte()) << reader_->failure().words;
    site_->freeze();
    const auto before = runtime_.tick();
    reader_->closeSession();
    EXPECT_LT(runtime_.tick() - before, 100U);
    site_->thaw();
}

}  // namespace corvane::fakes::tests
