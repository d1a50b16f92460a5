#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/linux/QtSettingsStore.h"
#include "platform/linux/UserFolders.h"
#include "support/FakeSettingsStore.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

struct QtSide {
    fakes::ScratchFolder folder;
    QtSettingsStore store{folder.at("config")};
};

struct FakeSide {
    fakes::FakeSettingsStore store;
};

template <typename Side>
class SettingsStoreContract : public testing::Test {
protected:
    Side side;
};

using Sides = testing::Types<FakeSide, QtSide>;
TYPED_TEST_SUITE(SettingsStoreContract, Sides);

TYPED_TEST(SettingsStoreContract, KeepsValuesByApplicationSectionAndKey) {
    SettingsStore& store = this->side.store;
    EXPECT_EQ(store.GetSetting("Corvane", "FTP", "Server", "default"), "default");
    EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Server", "one"));
    EXPECT_TRUE(store.SaveSetting("Corvane", "Query", "Server", "two"));
    EXPECT_TRUE(store.SaveSetting("Other", "FTP", "Server", "three"));
    EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Server", "four"));
    EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Proxy", ""));
    EXPECT_EQ(store.GetSetting("Corvane", "FTP", "Server", "default"), "four");
    EXPECT_EQ(store.GetSetting("Corvane", "Query", "Server", ""), "two");
    EXPECT_EQ(store.GetSetting("Other", "FTP", "Server", ""), "three");
    EXPECT_EQ(store.GetSetting("Corvane", "FTP", "Proxy", "default"), "");
    EXPECT_EQ(store.GetSetting("Corvane", "FTP", "UserName", ""), "");
}

TYPED_TEST(SettingsStoreContract, EveryTextComesBack) {
    SettingsStore& store = this->side.store;
    for (const std::string text :
         {"a,b;c=d", "\\n \\\\ \\", "\"quoted\"", "\"", "say \"hi\"", " blanks\t", "two\r\nlines", "#5", "[x]",
          "gr\xc3\xb6\xc3\x9f\x65r", "\xff\xfe", "100%", "@Invalid()", "\"a\\q\""}) {
        EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Password", text));
        EXPECT_EQ(store.GetSetting("Corvane", "FTP", "Password", "default"), text);
    }
}

class QtSettingsStoreTest : public testing::Test {
protected:
    std::string write(const std::string& text) const { return folder.file("Corvane/Corvane.conf", text); }
    std::string value(const std::string& key) { return store.GetSetting("Corvane", "FTP", key, "default"); }

    fakes::ScratchFolder folder;
    QtSettingsStore store{folder.path()};
};

TEST_F(QtSettingsStoreTest, HandWrittenValuesReadAsWritten) {
    write(
        "\xef\xbb\xbf; mine\n[FTP]\r\n  A = a, b ; c  \nB=C:\\new\\\"x\"\nC=\"a \\\"b\\\" \\\\ \\n\"\nD=\"x\" and "
        "\"y\"\n"
        "E=\"C:\\dir\"\nno value\n#F=1\nG=\n[Query]\nA=other\n");
    const struct {
        const char* key;
        const char* value;
    } cases[] = {
        {"A", "a, b ; c"},
        {"B", "C:\\new\\\"x\""},
        {"C", "a \"b\" \\ \n"},
        {"D", "\"x\" and \"y\""},
        {"E", "\"C:\\dir\""},
        {"F", "default"},
        {"G", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(value(c.key), c.value) << c.key;
}

TEST_F(QtSettingsStoreTest, SavingKeepsWhatItDoesNotKnow) {
    const auto path = write("top=1\n[Mine]\nkey=a,b\\c\n[FTP]\nServer=old\nOther= x \n");
    EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Server", " new"));
    EXPECT_EQ(fakes::ScratchFolder::content(path), "top=1\n\n[FTP]\nOther=x\nServer=\" new\"\n\n[Mine]\nkey=a,b\\c\n");
}

TEST_F(QtSettingsStoreTest, FileIsForThisUserAlone) {
    const auto permissions = [&](const std::string& name) { return fs::status(folder.at(name)).permissions(); };
    EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Server", "x"));
    EXPECT_EQ(permissions("Corvane"), fs::perms::owner_all);
    EXPECT_EQ(permissions("Corvane/Corvane.conf"), fs::perms::owner_read | fs::perms::owner_write);
    fs::permissions(folder.at("Corvane/Corvane.conf"), fs::perms(0644));
    EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Server", "y"));
    EXPECT_EQ(permissions("Corvane/Corvane.conf"), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"Corvane"});
}

TEST_F(QtSettingsStoreTest, WhatCannotBeWrittenIsReportedAndNotKept) {
    EXPECT_TRUE(store.SaveSetting("Corvane", "FTP", "Server", "old"));
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit none{1, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_FALSE(store.SaveSetting("Corvane", "FTP", "Server", "new"));
    EXPECT_FALSE(store.SaveSetting("Corvane", "FTP", "Proxy", "new"));
    EXPECT_EQ(value("Server"), "old");
    EXPECT_EQ(value("Proxy"), "default");
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(fakes::ScratchFolder::content(folder.at("Corvane/Corvane.conf")), "[FTP]\nServer=old\n");
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
