#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "platform/linux/QtSettingsStore.h"
#include "platform/linux/UserFolders.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

class QtSettingsStoreTest : public testing::Test {
protected:
    std::string value(const std::string& key) { return store.GetSetting("Corvane", "FTP", key, "default"); }
    bool save(const std::string& key, const std::string& text) {
        return store.SaveSetting("Corvane", "FTP", key, text);
    }

    fakes::ScratchFolder folder;
    QtSettingsStore store{folder.path()};
    const std::string file = folder.at("Corvane/Corvane.conf");
};

TEST_F(QtSettingsStoreTest, GivesBackWhatWasSavedUnderItsThreeNames) {
    EXPECT_EQ(value("Server"), "default");
    const char* const saved[][3] = {
        {"Corvane", "FTP", "one"}, {"Corvane", "Query", "two"}, {"Other", "FTP", ""}, {"Corvane", "FTP", "four"}};
    for (const auto& [application, section, text] : saved) {
        EXPECT_TRUE(store.SaveSetting(application, section, "Server", text));
        EXPECT_EQ(store.GetSetting(application, section, "Server", "default"), text);
    }
    EXPECT_EQ(store.GetSetting("Corvane", "Query", "Server", ""), "two");
    for (const std::string text : {"a,b;c=d", "\\n \\\\ \\", "\"", "say \"hi\"", " blanks\t", "two\r\nlines", "#5",
                                   "[x]", "gr\xc3\xb6\xc3\x9f\x65r", "\xff\xfe", "100%", "@Invalid()", "\"a\\q\""}) {
        EXPECT_TRUE(save("Password", text));
        EXPECT_EQ(value("Password"), text);
    }
}

TEST_F(QtSettingsStoreTest, HandWrittenValuesReadAsWritten) {
    folder.file("Corvane/Corvane.conf",
                "\xef\xbb\xbf; mine\n[FTP]\r\n  A = a, b ; c  \nB=C:\\new\\\"x\"\nC=\"a \\\"b\\\" \\\\ \\n\"\n"
                "D=\"x\" and \"y\"\nE=\"C:\\dir\"\nno value\n#F=1\nG=\n[Query]\nA=other\n");
    const std::pair<const char*, const char*> cases[] = {{"A", "a, b ; c"},
                                                         {"B", "C:\\new\\\"x\""},
                                                         {"C", "a \"b\" \\ \n"},
                                                         {"D", "\"x\" and \"y\""},
                                                         {"E", "\"C:\\dir\""},
                                                         {"F", "default"},
                                                         {"G", ""}};
    for (const auto& [key, text] : cases) EXPECT_EQ(value(key), text) << key;
}

TEST_F(QtSettingsStoreTest, SavingKeepsWhatItDoesNotKnowForThisUserAlone) {
    const auto permissions = [&](const std::string& name) { return fs::status(name).permissions(); };
    const auto userOnly = fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_TRUE(save("Server", "x"));
    EXPECT_EQ(permissions(folder.at("Corvane")), fs::perms::owner_all);
    EXPECT_EQ(permissions(file), userOnly);
    folder.file("Corvane/Corvane.conf", "top=1\n[Mine]\nkey=a,b\\c\n[FTP]\nServer=old\nOther= x \n");
    fs::permissions(file, fs::perms(0644));
    EXPECT_TRUE(save("Server", " new"));
    EXPECT_EQ(permissions(file), userOnly);
    EXPECT_EQ(fakes::ScratchFolder::content(file), "top=1\n\n[FTP]\nOther=x\nServer=\" new\"\n\n[Mine]\nkey=a,b\\c\n");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"Corvane"});
}

TEST_F(QtSettingsStoreTest, WhatCannotBeWrittenIsReportedAndNotKept) {
    EXPECT_TRUE(save("Server", "old"));
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit none{1, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_FALSE(save("Server", "new") || save("Proxy", "new"));
    EXPECT_EQ(value("Server") + value("Proxy"), "olddefault");
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(fakes::ScratchFolder::content(file), "[FTP]\nServer=old\n");
    folder.file("blocked", "");
    EXPECT_FALSE(QtSettingsStore(folder.at("blocked")).SaveSetting("Corvane", "FTP", "Server", "x"));
}

TEST_F(QtSettingsStoreTest, SaysWhatOthersMayReadAndWhatIsNoFile) {
    folder.file("Corvane/Corvane.conf", "[FTP]\nServer=old\n");
    fs::permissions(file, fs::perms(0640));
    EXPECT_TRUE(store.problems("Corvane", false).empty());
    EXPECT_EQ(store.problems("Corvane", true),
              std::vector<std::string>{file +
                                       " was open to other users of this computer, and a password stands in it. Now it "
                                       "is yours alone. If somebody may have read it, change the password."});
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
    EXPECT_TRUE(store.problems("Corvane", true).empty());
    fs::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(value("Server"), "default");
    EXPECT_FALSE(save("Server", "new"));
    EXPECT_EQ(store.problems("Corvane", false),
              std::vector<std::string>{file + " is no ordinary file: no settings are read or kept. Remove it."});
}

TEST(UserFolders, FollowTheEnvironment) {
    setenv("XDG_CONFIG_HOME", "/tmp/config/", 1);
    EXPECT_EQ(userConfigFolder(), "/tmp/config");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    setenv("XDG_DATA_HOME", "", 1);
    const std::string home = std::getenv("HOME");
    EXPECT_EQ(userConfigFolder() + userDataFolder(), home + "/.config" + home + "/.local/share");
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_DATA_HOME");
}

}  // namespace
}  // namespace corvane
