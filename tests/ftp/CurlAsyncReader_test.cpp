// The reader against a real FTP server on loopback: what the server sees, and what its faults lead to.

#include "platform/linux/transfer/CurlAsyncReader.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ftp/FTPDownload.h"
#include "ftp/ReadLog.h"
#include "support/SiteProcess.h"

namespace corvane::fakes {
namespace {

class CurlAsyncReaderTest : public testing::Test {
protected:
    CurlAsyncReaderTest() {
        root_.file("firmware/image.hex", everyByte());
        root_.file("firmware/a b%20#1?+;\\\xE4.hex", "odd");
    }

    /// Starts the server; the members of its description, in JSON, beside the root and the accounts.
    SiteProcess& serve(const std::string& members = {}) {
        site_.emplace(
            "ftp_site.py",
            R"({"root": ")" + root_.path() +
                R"(", "accounts": {"upd": "pw", "a@b/c:d %41": "p@x/y:z", "gr\u00fcn \u20ac": " \u00e4\u20ac#?"})" +
                (members.empty() ? "" : ", " + members) + "}");
        return *site_;
    }

    CurlAsyncReader& reader(const CurlAsyncReader::Limits& limits = CurlAsyncReader::Limits()) {
        reader_.emplace(runtime_, limits);
        log_.emplace(*reader_, runtime_);
        return *reader_;
    }

    Address address(const std::string& path, const std::string& user = "upd", const std::string& password = "pw") {
        Address address{user, password, {}, 0, path};
        address.server(site_->address());
        return address;
    }

    /// A read that must fail and leave nothing; why it failed.
    ReadFailure failure(const Address& address) {
        EXPECT_EQ(log_->read(address, local_.at("image.hex")).bytesRead, 0);
        EXPECT_TRUE(local_.names().empty());
        return reader_->failure();
    }

    ScratchFolder root_, local_;
    std::optional<SiteProcess> site_;
    LinuxRuntime runtime_;
    std::optional<CurlAsyncReader> reader_;
    std::optional<ReadLog> log_;
};

TEST_F(CurlAsyncReaderTest, ClearsAwayWhatKilledProgramsHaveLeft) {
    serve();
    reader();
    const auto gone = fork();
    if (gone == 0) _exit(0);
    waitpid(gone, nullptr, 0);
    std::vector<std::string> kept = {".corvane-" + std::to_string(getppid()) + "-0.part", ".corvane-x.part",
                                     ".corvane-" + std::to_string(gone) + "-0.hex"};
    std::sort(kept.begin(), kept.end());
    for (const auto& name : kept) local_.file(name, "");
    local_.file(".corvane-" + std::to_string(gone) + "-3.part", "half of it");
    EXPECT_EQ(ReadLog::taken(log_->read(address("/firmware/image.hex"), local_.at("image.hex"))), everyByte());
    EXPECT_EQ(local_.names(), kept);
}

TEST_F(CurlAsyncReaderTest, AccountsAndPathsArriveAsTheyAre) {
    auto& site = serve(R"("anonymous": true)");
    reader();
    const struct {
        const char *user, *password, *path, *login, *content;
    } kReads[] = {
        {"a@b/c:d %41", "p@x/y:z", "/firmware/image.hex", "a@b/c:d %41", nullptr},
        {"gr\xC3\xBCn \xE2\x82\xAC", " \xC3\xA4\xE2\x82\xAC#?", "/firmware/../firmware/image.hex",
         "gr\xC3\xBCn \xE2\x82\xAC", nullptr},
        {"", "pw", "/firmware/a b%20#1?+;\\\xE4.hex", "anonymous", "odd"},
    };
    for (const auto& read : kReads) {
        SCOPED_TRACE(std::string(read.user) + read.path);
        const int before = site.count(std::string("RETR ") + read.path);
        EXPECT_TRUE(ReadLog::taken(log_->read(address(read.path, read.user, read.password))) ==
                    (read.content ? read.content : everyByte()))
            << reader_->failure().words;
        EXPECT_TRUE(site.sees(std::string("login ") + read.login));
        EXPECT_TRUE(site.sees(std::string("RETR ") + read.path, before + 1));
    }
}

TEST_F(CurlAsyncReaderTest, OneLoginServesAllReadsUntilTheFarewell) {
    auto& site = serve();
    FTPDownload ftp(reader(), runtime_);
    ftp.HostName(site.address());
    ftp.Username("upd");
    ftp.Password("pw");
    EXPECT_TRUE(ftp.Connect());
    EXPECT_FALSE(ftp.GetFile("/firmware/nothing", local_.at("nothing")));
    EXPECT_TRUE(ftp.GetFile("/firmware/image.hex", local_.at("image.hex")));
    EXPECT_TRUE(ScratchFolder::content(local_.at("image.hex")) == everyByte());
    EXPECT_EQ(site.count("login upd") + site.count("QUIT"), 1);
    ftp.Username("a@b/c:d %41");
    ftp.Password("p@x/y:z");
    EXPECT_TRUE(ftp.Connect());
    EXPECT_TRUE(site.sees("QUIT")) << "another account, another session";
}

TEST_F(CurlAsyncReaderTest, SilentServerIsLeftWithoutWaiting) {
    auto& site = serve();
    reader();
    log_->read(address("/firmware/image.hex"));
    site.freeze();
    reader_->closeSession();  // waiting for an answer here would take two minutes
    reader_->start(address("/firmware/image.hex"), local_.at("image.hex"));
    log_->round();
    reader_->cancel(std::nullopt);
    site.thaw();
    EXPECT_TRUE(site.sees("QUIT"));
    EXPECT_TRUE(local_.names().empty());
}

TEST_F(CurlAsyncReaderTest, FaultsOfTheServerAreFailedReads) {
    for (const char* name : {"gone", "stalls", "mutters"}) root_.file(name, everyByte());
    auto& site = serve(R"("sizes": false, "drop": {"/gone": [1000, "both"]}, "stall": {"/stalls": 1000},
                          "silent": ["/mutters"], "mutters": ["/mutters"])");
    reader({10000, 300});
    EXPECT_EQ(failure(address("/gone")).kind, ReadFailure::Kind::brokenOff);
    EXPECT_EQ(failure(address("/stalls")).words, "the server has fallen silent");
    reader({10000, 10000, 300});
    EXPECT_EQ(failure(address("/stalls")).words, "it took too long");
    // Those words too many look like a confirmation that is there already, and the library is left waiting for it.
    EXPECT_EQ(failure(address("/mutters")).words, "the server did not confirm the transfer");
    EXPECT_EQ(log_->read(address("/firmware/image.hex"), local_.at("image.hex")).bytesRead, 3000);
    site.kill();
    EXPECT_EQ(failure(address("/firmware/image.hex")).kind, ReadFailure::Kind::unreachable);
}

TEST_F(CurlAsyncReaderTest, WhatTheServerAnnouncesIsWhatItMustSend) {
    for (const char* name : {"more", "fewer", "endless"}) root_.file(name, everyByte());
    serve(R"("announces": {"/more": 1000, "/fewer": 5000, "/endless": 9000000000})");
    reader();
    EXPECT_EQ(failure(address("/more")).words, "the server sends more than the 1000 bytes that it announced");
    EXPECT_EQ(failure(address("/fewer")).words, "3000 of 5000 bytes have come");
    reader_->mostBytes(2999);
    const auto tooLong = failure(address("/firmware/image.hex"));
    EXPECT_EQ(tooLong.kind, ReadFailure::Kind::tooLong);
    EXPECT_EQ(tooLong.words, "it is longer than 2999 bytes");
    EXPECT_EQ(failure(address("/endless")).kind, ReadFailure::Kind::tooLong) << "before it comes";
    reader_->mostBytes(3000);
    EXPECT_EQ(log_->read(address("/firmware/image.hex"), local_.at("image.hex")).bytesMax, 3000);
}

TEST_F(CurlAsyncReaderTest, RouteDecidesAboutTheProxy) {
    using Access = SiteRoute::Access;
    auto& site = serve();
    SiteProcess proxy("http_proxy.py", "{}");
    const auto asked = "GET ftp://upd:pw@" + site.address() + "/%2Ffirmware/image.hex";
    const std::string here = proxy.address(), nowhere = "127.0.0.1:1";
    const struct {
        std::string ftpProxy, noProxy;
        SiteRoute route;
        bool isThroughProxy;
    } kRoutes[] = {
        {here, "", {Access::byDefault, {}}, true},      {here, "", {Access::proxy, {}}, true},  // chosen, and not named
        {here, "", {Access::direct, here}, false},      {nowhere, "*", {Access::proxy, here}, true},
        {nowhere, "*", {Access::byDefault, {}}, false},
    };
    int expected = 0;
    for (const auto& one : kRoutes) {
        ::setenv("ftp_proxy", one.ftpProxy.c_str(), 1);
        ::setenv("no_proxy", one.noProxy.c_str(), 1);
        reader().route(one.route);
        EXPECT_EQ(log_->read(address("/firmware/image.hex")).bytesRead, 3000) << reader_->failure().words;
        EXPECT_EQ(proxy.count(asked), expected += one.isThroughProxy);
        EXPECT_GE(log_->read(address("")).bytesRead, 1);
    }
    ::unsetenv("ftp_proxy");
    ::unsetenv("no_proxy");
    // A session goes on by the way it was opened; the next one takes the new one.
    reader_->route({Access::proxy, here});
    log_->read(address("/firmware/image.hex"));
    EXPECT_EQ(proxy.count(asked), expected);
    reader_->closeSession();
    log_->read(address("/firmware/image.hex"));
    EXPECT_EQ(proxy.count(asked), expected + 1);
}

}  // namespace
}  // namespace corvane::fakes
