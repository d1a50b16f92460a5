// The reader against a real FTP server on loopback: what the server sees, and what its faults lead to.

#include "platform/linux/transfer/CurlAsyncReader.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
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
        std::filesystem::create_directories(root_.at("home/upd"));
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

TEST_F(CurlAsyncReaderTest, LoginNeedsNoUsableFolderOfTheEnvironmentNorAFileInItsOwn) {
    serve(R"("home": {"upd": "/home/upd"}, "sizes": false)");
    reader();
    const char* before = std::getenv("TMPDIR");
    const std::string kept = before ? before : "";
    setenv("TMPDIR", local_.at("nowhere").c_str(), 1);
    const auto result = log_->read(address(""));
    before ? setenv("TMPDIR", kept.c_str(), 1) : unsetenv("TMPDIR");
    EXPECT_NE(ReadLog::taken(result), "");
    const auto sizeless = log_->read(address("/firmware/image.hex"));
    EXPECT_EQ(sizeless.bytesRead, 3000);
    EXPECT_EQ(sizeless.bytesMax + log_->progress.front().bytesMax, 0);
}

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
    auto& site = serve(R"("home": {"upd": "/home/upd"}, "anonymous": true)");
    reader();
    const struct {
        const char *user, *password, *path, *login, *content;
    } kReads[] = {
        {"upd", "pw", "/firmware/image.hex", "upd", nullptr},
        {"a@b/c:d %41", "p@x/y:z", "/firmware/image.hex", "a@b/c:d %41", nullptr},
        {"gr\xC3\xBCn \xE2\x82\xAC", " \xC3\xA4\xE2\x82\xAC#?", "/firmware/../firmware/image.hex",
         "gr\xC3\xBCn \xE2\x82\xAC", nullptr},
        {"", "", "/firmware/image.hex", "anonymous", nullptr},
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
    reader();
    FTPDownload ftp(*reader_, runtime_);
    ftp.HostName(site.address());
    ftp.Username("upd");
    ftp.Password("pw");
    EXPECT_TRUE(ftp.Connect());
    EXPECT_FALSE(ftp.GetFile("/firmware/nothing", local_.at("nothing")));
    EXPECT_TRUE(ftp.GetFile("/firmware/image.hex", local_.at("image.hex")));
    EXPECT_TRUE(ScratchFolder::content(local_.at("image.hex")) == everyByte());
    EXPECT_EQ(local_.names(), std::vector<std::string>{"image.hex"});
    EXPECT_EQ(site.count("login upd"), 1);
    EXPECT_EQ(site.count("QUIT"), 0);
    ftp.Disconnect();
    EXPECT_TRUE(site.sees("QUIT"));
    EXPECT_TRUE(ftp.Connect());
    ftp.Username("a@b/c:d %41");
    ftp.Password("p@x/y:z");
    EXPECT_TRUE(ftp.Connect());
    EXPECT_TRUE(site.sees("QUIT", 2));
}

TEST_F(CurlAsyncReaderTest, ServerSeesQuitHoweverTheSessionEnds) {
    root_.file("firmware/stalls", everyByte());
    auto& site = serve(R"("stall": {"/firmware/stalls": 1000})");
    reader();
    for (int quits = 1; quits <= 3; ++quits) {
        log_->clear();
        reader_->start(address("/firmware/stalls"), local_.at("stalls"));
        ASSERT_TRUE(log_->waitForProgress());
        if (quits == 1) reader_->cancel(std::nullopt);
        if (quits == 2) reader_->closeSession();
        if (quits == 3) log_.reset(), reader_.reset();
        EXPECT_TRUE(site.sees("QUIT", quits));
        EXPECT_TRUE(local_.names().empty());
    }
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
    for (const char* name : {"cut", "gone", "stalls", "silent", "mutters"}) root_.file(name, everyByte());
    auto& site = serve(R"("drop": {"/cut": [1000, "data"], "/gone": [1000, "both"]}, "stall": {"/stalls": 1000},
                          "silent": ["/silent", "/mutters"], "mutters": ["/mutters"])");
    reader({10000, 300});
    for (const char* name : {"/cut", "/gone", "/silent"}) {
        EXPECT_EQ(failure(address(name)).kind, ReadFailure::Kind::brokenOff) << name;
    }
    EXPECT_EQ(failure(address("/stalls")).words, "the server has fallen silent");
    EXPECT_TRUE(site.sees("silent /silent"));
    // Those words too many look like a confirmation that is there already, and the library is left waiting for it.
    EXPECT_EQ(failure(address("/mutters")).words, "the server did not confirm the transfer");
    EXPECT_EQ(log_->read(address("/firmware/image.hex"), local_.at("image.hex")).bytesRead, 3000);
}

TEST_F(CurlAsyncReaderTest, ServerThatIsNotThere) {
    auto& site = serve();
    reader({300, 10000});
    EXPECT_GE(log_->read(address("")).bytesRead, 1);
    site.kill();  // between login and download
    EXPECT_EQ(failure(address("/firmware/image.hex")).kind, ReadFailure::Kind::unreachable);

    // Nobody takes this connection, though the system has accepted it.
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in name{};
    socklen_t length = sizeof name;
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&name), length), 0);
    ASSERT_EQ(::listen(listener, 1), 0);
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&name), &length);
    const Address deaf{"upd", "pw", "127.0.0.1", ntohs(name.sin_port), "/firmware/image.hex"};
    EXPECT_EQ(failure(deaf).kind, ReadFailure::Kind::unreachable);
    ::close(listener);
}

TEST_F(CurlAsyncReaderTest, FullDiskIsAFailedRead) {
    serve();
    reader();
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{1000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &tight);
    const auto why = failure(address("/firmware/image.hex"));
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(why.kind, ReadFailure::Kind::storage);
    EXPECT_NE(why.words.find("File too large"), std::string::npos) << why.words;
}

TEST_F(CurlAsyncReaderTest, RouteDecidesAboutTheProxy) {
    using Access = SiteRoute::Access;
    auto& site = serve();
    SiteProcess proxy("http_proxy.py", "{}");
    ::setenv("ftp_proxy", proxy.address().c_str(), 1);
    ::setenv("no_proxy", "", 1);
    const auto asked = "GET ftp://upd:pw@" + site.address() + "/%2Ffirmware/image.hex";
    int expected = 0;
    const auto readBy = [&](const SiteRoute& route, bool isThroughProxy) {
        reader().route(route);
        EXPECT_EQ(log_->read(address("/firmware/image.hex")).bytesRead, 3000) << reader_->failure().words;
        expected += isThroughProxy;
        EXPECT_EQ(proxy.count(asked), expected);
        EXPECT_GE(log_->read(address("")).bytesRead, 1);
    };
    readBy({Access::byDefault, {}}, true);
    readBy({Access::proxy, {}}, true);  // chosen, and not named
    readBy({Access::direct, proxy.address()}, false);
    ::setenv("ftp_proxy", "127.0.0.1:1", 1);
    ::setenv("no_proxy", "*", 1);
    readBy({Access::proxy, proxy.address()}, true);
    readBy({Access::byDefault, {}}, false);
    ::unsetenv("ftp_proxy");
    ::unsetenv("no_proxy");
    // A session goes on by the way it was opened; the next one takes the new one.
    reader_->route({Access::proxy, proxy.address()});
    log_->read(address("/firmware/image.hex"));
    EXPECT_EQ(proxy.count(asked), expected);
    reader_->closeSession();
    log_->read(address("/firmware/image.hex"));
    EXPECT_EQ(proxy.count(asked), expected + 1);
}

TEST_F(CurlAsyncReaderTest, PageOfAProxyIsNoFile) {
    serve();
    for (const char* answer : {R"([404, "<html>"])", R"([503, "<html>"])", R"([302, "<html>elsewhere"])"}) {
        SiteProcess proxy("http_proxy.py", std::string(R"({"answer": )") + answer + "}");
        reader().route({SiteRoute::Access::proxy, proxy.address()});
        EXPECT_EQ(failure(address("/firmware/image.hex")).kind, ReadFailure::Kind::brokenOff);
        EXPECT_EQ(log_->read(address("")).bytesRead, 0);
    }
}

}  // namespace
}  // namespace corvane::fakes
