#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/linux/QtSettingsStore.h"
#include "platform/linux/UserFolders.h"
#include "support/FakeSystem.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

void keepsTheContract(SettingsStore& store) {
    EXPECT_EQ(store.GetSetting("Corvane", "FTP", "Server", "default"), "default");
    const char* const saved[][4] = {{"Corvane", "FTP", "Server", "one"},
                                    {"Corvane", "Query", "Server", "two"},
                                    {"Other", "FTP", "Server", "three"},
                                    {"Corvane", "FTP", "Server", "four"},
                                    {"Corvane", "FTP", "Proxy", ""}};
    for (const auto& [application, section, key, value] : saved) {
        EXPECT_TRUE(store.SaveSetting(application, section, key, value));
        EXPECT_EQ(store.GetSetting(application, section, key, "default"), value);
    }
    EXPECT_EQ(store.GetSetting("Corvane", "Query", "Server", ""), "two");
    EXPECT_EQ(store.GetSetting("Other", "FTP", "Server", ""), "three");
    EXPECT_EQ(store.GetSetting("Corvane", "FTP", "UserName", ""), "");
    for (const std::string text :
         {"a,b;c=d", "\\n \\\\ \\", "\"quoted\"", "\"", "say \"hi\"", " blanks\t", "two\r\nlines", "#5", "[x]",
          "gr\xc3\xb6\xc3\x9f\x65r", "\xff\xfe", "100%", "@Invalid()", "\"a\\q\""}) {
        EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Password", text));
        EXPECT_EQ(store.GetSetting("Corvane", "FTP", "Password", "default"), text);
    }
}

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

TEST_F(QtSettingsStoreTest, KeepsTheContractAsTheFakeDoes) {
    fakes::FakeSettingsStore fake;
    keepsTheContract(fake);
    keepsTheContract(store);
}

TEST_F(QtSettingsStoreTest, HandWrittenValuesReadAsWritten) {
    folder.file("Corvane/Corvane.conf",
                "\xef\xbb\xbf; mine\n[FTP]\r\n  A = a, b ; c  \nB=C:\\new\\\"x\"\nC=\"a \\\"b\\\" \\\\ \\n\"\n"
                "D=\"x\" and \"y\"\nE=\"C:\\dir\"\nno value\n#F=1\nG=\n[Query]\nA=other\n");
    const std::pair<const char*, const char*> cases[] = {
        {"A", "a, b ; c"},
        {"B", "C:\\new\\\"x\""},
        {"C", "a \"b\" \\ \n"},
        {"D", "\"x\" and \"y\""},
        {"E", "\"C:\\dir\""},
        {"F", "default"},
        {"G", ""},
    };
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

TEST(UserFolders, FollowTheEnvironment) {
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
    setenv("XDG_CONFIG_HOME", "/tmp/config/", 1);
    EXPECT_EQ(userConfigFolder(), "/tmp/config");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    setenv("XDG_DATA_HOME", "", 1);
    setenv("HOME", "/home/op", 1);
    EXPECT_EQ(userConfigFolder(), "/home/op/.config");
    EXPECT_EQ(userDataFolder(), "/home/op/.local/share");
    setenv("HOME", home.c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_DATA_HOME");
}

}  // namespace
}  // namespace corvane
