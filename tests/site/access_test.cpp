// Why the site gave nothing, in each case: the kind, and the words that an operator reads.

#include <gtest/gtest.h>

#include "support/AppBench.h"

namespace corvane::tests {

using Kind = SiteFailure::Kind;

struct Access : ::testing::Test, protected fakes::AppBench {
    Access() {
        choices.server = "host";
        choices.userName = "u";
        choices.password = "p";
        reader.answers["ftp://u:p@host"].content = "listing";
        reader.answers["ftp://u:p@host/f/a.hex"].content = fakes::kImage;
    }

    void expect(Kind kind, const std::string& words) {
        EXPECT_EQ(site.failure().kind, kind) << site.failure().words;
        EXPECT_EQ(site.failure().words, words);
    }

    Choices choices;
    FTPDownload ftp{reader, runtime};
    SiteAccess site{{ftp, reader, runtime, choices, settings, folder, face, face}};
};

TEST_F(Access, LoginFailsWithItsOwnCauseAndLeavesNoConnection) {
    const std::tuple<ReadFailure::Kind, Kind, const char*> kLogins[] = {
        {ReadFailure::Kind::unreachable, Kind::unreachable, "the server host cannot be reached: why"},
        {ReadFailure::Kind::login, Kind::loginRefused, "the server did not accept user name and password: why"},
        {ReadFailure::Kind::refused, Kind::listingRefused,
         "the server accepted user name and password, but gives no listing: why"},
        {ReadFailure::Kind::brokenOff, Kind::brokenOff, "the dialogue with the server broke off: why"},
    };
    for (const auto& [read, kind, words] : kLogins) {
        reader.answers["ftp://u:p@host"] = {.content = "", .failure = {read, "why"}};
        EXPECT_FALSE(site.login());
        expect(kind, words);
        EXPECT_EQ(reader.calls.back(), "close");
    }
    reader.answers["ftp://u:p@host"].content = std::string((1 << 20) + 1, 'x');
    EXPECT_FALSE(site.login());
    expect(Kind::tooLong, "the server's listing is too long: it is longer than 1048576 bytes");
    EXPECT_FALSE(site.FTP_Download("/f/a.hex", folder.folder.at("a")));
    expect(Kind::noSession, "there is no session with the site");
    reader.answers["ftp://u:p@host"].content.pop_back();
    EXPECT_TRUE(site.login()) << "1 MiB is taken";
    choices.server = "h/st";
    EXPECT_FALSE(site.login());
    expect(Kind::noServer, "\"h/st\" can be no server's name");
}

TEST_F(Access, DownloadFailsWithItsOwnCause) {
    ASSERT_TRUE(site.login());
    const auto target = folder.folder.at("a");
    const auto download = [this](const std::string& name, const std::string& to) {
        EXPECT_FALSE(site.FTP_Download(name, to)) << name;
    };
    const auto check = [&](const std::string& fetched, const std::string& place) {
        return fakes::ScratchFolder::content(fetched) == fakes::kImage && place == target ? "it is another one" : "";
    };
    write("a", "old");
    EXPECT_FALSE(site.FTP_Download("/f/a.hex", target, {.check = check, .keepsOld = true}));
    expect(Kind::wrongContent, "it is another one");
    EXPECT_EQ(fakes::ScratchFolder::content(target), "old");
    EXPECT_FALSE(site.FTP_Download("/f/a.hex", target, {.mostBytes = 10}));
    expect(Kind::tooLong, "it is longer than 10 bytes, which is more than is taken");
    EXPECT_TRUE(folder.folder.names().empty()) << "neither it nor what was to be replaced";
    EXPECT_TRUE(site.FTP_Download("f/a.hex", target));
    expect(Kind::none, "");  // a cause does not outlive its operation
    download("/f/a.hex", "/proc/self/status");
    expect(Kind::oldFileStays, "the old /proc/self/status cannot be replaced: Operation not permitted");
    download("/f/", target);
    expect(Kind::unusableName, "\"/f/\" names a folder and no file");
    reader.answers["ftp://u:p@host/f/b.hex"] = {.content = "", .failure = {ReadFailure::Kind::refused, "550"}};
    download("/f/b.hex", target);
    expect(Kind::notGiven, "the server does not give it: 550");
    reader.answers["ftp://u:p@host/f/b.hex"] = {.content = "", .failure = {ReadFailure::Kind::storage, "no room"}};
    download("/f/b.hex", target);
    expect(Kind::notStored, "it could not be stored: no room");
    reader.answers["ftp://u:p@host/f/a.hex"].ends = false;
    runtime.at(runtime.ms() + 500, [this] { site.cancel(); });
    download("/f/a.hex", target);
    expect(Kind::cancelled, "it was cancelled");
    for (int i = 0; i < 2; ++i) {
        download("/f/a.hex", target);  // the first one until the idle watch ends it
        expect(Kind::sessionClosed,
               "the session with the site was closed, as it always is three minutes after the login");
    }
}

TEST_F(Access, NamesFromTheSiteLeadToFilesOfTheDownloadFolderOnly) {
    const std::pair<std::string, std::string> names[] = {{"/a.hex", "a.hex"},
                                                         {"b.hex", "b.hex"},
                                                         {"/f/a b%20#1?.hex", "a b%20#1?.hex"},
                                                         {"/f/gr\xF6\xDF.hex", "gr\xC3\xB6\xC3\x9F.hex"},
                                                         {"/f/..", ""},
                                                         {"", ""},
                                                         {"..\\..\\x", ""},
                                                         {"/f/a\x1b[2Jb", ""}};
    ASSERT_TRUE(site.login());
    for (const auto& [name, local] : names) {
        const auto path = name.starts_with('/') ? name : "/" + name;
        reader.answers["ftp://u:p@host" + path].content = name;
        reader.calls.clear();
        EXPECT_EQ(site.FTP_DownloadFirmware(name), local.empty() ? "" : folder.folder.at("Download/" + local));
        EXPECT_EQ(reader.calls.empty(), local.empty()) << name;
        EXPECT_EQ(site.failure().kind, local.empty() ? Kind::unusableName : Kind::none) << name;
        if (!local.empty()) EXPECT_EQ(fakes::ScratchFolder::content(folder.folder.at("Download/" + local)), name);
    }
    EXPECT_EQ(folder.folder.names(), std::vector<std::string>{"Download"});
    EXPECT_EQ(site.FTP_DownloadFirmware("/f/.."), "");
    expect(Kind::unusableName, "the site's name for it, \"/f/..\", may be no file's here");
}

TEST_F(Access, OffLineSaysWhatIsMissingOrAnother) {
    choices.offLine = true;
    EXPECT_EQ(site.FTP_DownloadFirmware("/f/a.hex"), folder.folder.at("Download/a.hex"));
    expect(Kind::notDownloaded, "a.hex does not lie in the Download folder");
    write("Download/a.hex", "x");
    EXPECT_EQ(site.FTP_DownloadFirmware("/f/a.hex", [](auto&, auto&) { return "another"; }), "");
    expect(Kind::wrongContent, "another");
}

TEST_F(Access, SessionWithAnotherServerOrAccountIsLeft) {
    for (auto* part : {&choices.server, &choices.userName, &choices.password}) {
        ASSERT_TRUE(site.login());
        EXPECT_TRUE(site.resume());
        const auto kept = *part;
        *part = "another";
        EXPECT_FALSE(site.resume() || site.isConnected());
        EXPECT_EQ(reader.calls.back(), "close");
        *part = kept;
    }
}

}  // namespace corvane::tests
