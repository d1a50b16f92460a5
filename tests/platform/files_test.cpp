// What the program keeps in files: its own and the operator's, the settings, and the folders where they lie.

#include "platform/files/Files.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/LinuxProgramFolder.h"
#include "platform/linux/QtSettingsStore.h"
#include "platform/linux/UserFolders.h"
#include "platform/linux/files/LinuxFileStore.h"
#include "platform/linux/files/ProcProcesses.h"
#include "support/ScratchFolder.h"

namespace corvane::tests {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;
using Named = FileStore::Named;

std::string content(const std::string& path) { return fakes::ScratchFolder::content(path); }
fs::perms permissions(const std::string& path) { return fs::status(path).permissions(); }

/// The number of a process that is gone.
pid_t goneProcess() {
    const auto gone = fork();
    if (gone == 0) _exit(0);
    waitpid(gone, nullptr, 0);
    return gone;
}

/// As long as it lives no file can be made longer than that.
struct FullDisk {
    explicit FullDisk(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit few{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &few);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
    rlimit before{};
    void (*handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

struct LinuxFileStoreTest : testing::Test {
    std::string create(const std::string& path) {
        std::string why;
        const auto made = store.create(path, why);
        if (made) made->write("new");
        return why;
    }

    fakes::ScratchFolder folder;
    LinuxFileStore store;
    const std::string file = folder.file("file", "old");
};

TEST_F(LinuxFileStoreTest, OpensOrdinaryFilesOnlyAndFollowsTheOperatorsLinks) {
    const auto pipe = folder.at("pipe"), link = folder.at("link");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    fs::create_symlink(file, link);
    for (const auto& special : {pipe, std::string("/dev/full")}) {
        EXPECT_EQ(create(special), "it is no ordinary file");
        EXPECT_EQ(store.append(special, "", "x", Named::byOperator), "it is no ordinary file");
    }
    EXPECT_EQ(store.append(link, "", "x", Named::byProgram), "it is a link");
    EXPECT_EQ(store.append(link, "head", "er", Named::byOperator), "");
    EXPECT_EQ(content(file), "older");
    EXPECT_EQ(create(link), "");
    EXPECT_EQ(store.replace(link, "newer", Named::byOperator), "");
    EXPECT_EQ(content(file), "newer");
    EXPECT_EQ(store.replace(link, "own", Named::byProgram), "");
    EXPECT_EQ(content(file) + content(link), "newerown");
    EXPECT_FALSE(fs::is_symlink(link));
    fs::create_symlink(folder.at("none"), folder.at("lost"));
    EXPECT_EQ(store.replace(folder.at("lost"), "x", Named::byOperator),
              "it is a link to nothing: No such file or directory");
}

TEST_F(LinuxFileStoreTest, AReplacedFileStaysAsOpenAsItWas) {
    fs::permissions(folder.file("site", ""), fs::perms(0664));
    fs::create_symlink("site", folder.at("link"));
    const auto before = umask(027);
    for (const char* name : {"new", "link"}) EXPECT_EQ(store.replace(folder.at(name), "x", Named::byOperator), "");
    EXPECT_EQ(store.replace(folder.at("own"), "x", Named::byProgram), "");
    umask(before);
    EXPECT_EQ(permissions(folder.at("site")), fs::perms(0664));
    EXPECT_EQ(permissions(folder.at("new")), fs::perms(0640));
    EXPECT_EQ(permissions(folder.at("own")), fs::perms(0600));
}

TEST(Files, EachFolderInWhichOneWasMadeIsHandedOver) {
    fakes::ScratchFolder folder;
    Names folders;
    for (const char* path : {"a/b/c", "a/d"})
        EXPECT_EQ(makeFolder(folder.at(path), [&](const std::string& in) { folders.push_back(in); }), "");
    EXPECT_EQ(folders, (Names{folder.path(), folder.at("a"), folder.at("a/b"), folder.at("a")}));
    EXPECT_EQ(makeFolder(folder.file("file", "") + "/x/y"), folder.at("file") + ": File exists");
}

TEST_F(LinuxFileStoreTest, WritesAllOrNothingAndClearsAwayWhatTheKilledLeft) {
    folder.file(".corvane-" + std::to_string(goneProcess()) + "-abc.part", "half");
    const auto living = ".corvane-" + std::to_string(getppid()) + "-abc.part";
    folder.file(living, "half");
    fs::permissions(file, fs::perms(0640));
    {
        const FullDisk full(5);
        EXPECT_EQ(store.replace(file, "too long", Named::byProgram), "File too large");
        EXPECT_EQ(store.append(file, "", "too long", Named::byProgram), "File too large");
    }
    EXPECT_EQ(content(file), "old");
    EXPECT_EQ(store.replace(file, "long enough", Named::byProgram), "");
    EXPECT_EQ(content(file), "long enough");
    EXPECT_EQ(permissions(file), fs::perms(0640));
    EXPECT_EQ(folder.names(), (Names{living, "file"}));
    EXPECT_EQ(store.remove(file) + store.remove(file), "");
    EXPECT_EQ(store.remove(folder.path()), "Is a directory");
    EXPECT_EQ(folder.names(), Names{living});
}

TEST_F(LinuxFileStoreTest, AFolderIsOnesAlone) {
    const int other = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
    auto held = store.lock(folder.path());
    EXPECT_EQ(flock(other, LOCK_EX | LOCK_NB), -1);
    held.reset();
    EXPECT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    close(other);
}

TEST(ProcProcesses, TellAProcessFromALaterOneOfItsNumber) {
    ProcProcesses processes;
    const auto own = processes.own();
    EXPECT_EQ(own.number, getpid());
    EXPECT_TRUE(processes.isAlive(own));
    EXPECT_FALSE(processes.isAlive({own.number, own.start + "0"}) || processes.isAlive({own.number, ""}));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const auto ended = fork();
    if (ended == 0) {
        const auto start = processes.own().start;
        _exit(write(ends[1], start.data(), start.size()) < 0);
    }
    std::string start(100, '\0');
    start.resize(static_cast<std::size_t>(std::max<ssize_t>(0, read(ends[0], start.data(), start.size()))));
    siginfo_t how;
    waitid(P_PID, static_cast<id_t>(ended), &how, WEXITED | WNOWAIT);
    EXPECT_FALSE(processes.isAlive({ended, start})) << "nobody has asked yet how it ended";
    waitpid(ended, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
}

TEST(LinuxProgramFolder, FindsWhatIsThereWithoutRegardToCase) {
    const fakes::ScratchFolder folder;
    const LinuxProgramFolder program({folder.file("corvane", ""), "../nowhere", folder.at("data")});
    for (const char* file : {"download/R200.hex", "both.txt", "BOTH.txt"}) folder.file(file, "");
    EXPECT_EQ(program.path(), folder.path());
    const std::pair<const char*, const char*> cases[] = {
        {"\\Download\\r200.HEX", "/download/R200.hex"},
        {"\\Download\\", "/download"},
        {"/DOWNLOAD/New One.hex", "/download/New One.hex"},
        {"both.txt", "/both.txt"},
        {"Both.TXT", "/BOTH.txt"},
        {"\\..\\.\\etc\\passwd", "/etc/passwd"},
        {"", ""},
    };
    for (const auto& [given, found] : cases) EXPECT_EQ(program.resolve(given), folder.path() + found) << given;
    EXPECT_EQ(LinuxProgramFolder().path(), fs::read_symlink("/proc/self/exe").parent_path());
}

TEST(LinuxProgramFolder, InstalledCopiesUseTheUsersFolderAndAPrivateLibrary) {
    const fakes::ScratchFolder folder;
    const auto executable = folder.file("usr/bin/corvane", "");
    fs::create_directories(folder.at("usr/lib/corvane"));
    const auto data = folder.at("home/.local/share/Corvane");
    const LinuxProgramFolder installed({executable, "../lib/corvane", data});
    EXPECT_EQ(installed.path(), data);
    EXPECT_TRUE(fs::is_directory(data));
    EXPECT_EQ(LinuxProgramFolder({executable, "../lib/other", data}).path(), folder.at("usr/bin"));
    EXPECT_EQ(LinuxProgramFolder({folder.at("gone/corvane"), "../lib/corvane", data}).path(), data);

    unsetenv("CORVANE_VELLIO");
    EXPECT_EQ(installed.transportLibrary(), folder.at("usr/lib/corvane/VellIO.so"));
    folder.file("usr/bin/VellIO.so", "");
    EXPECT_EQ(installed.transportLibrary(), folder.at("usr/bin/VellIO.so"));
    setenv("CORVANE_VELLIO", "/opt/other.so", 1);
    EXPECT_EQ(installed.transportLibrary(), "/opt/other.so");
    unsetenv("CORVANE_VELLIO");
}

TEST(LinuxProgramFolder, PrivateFoldersAreThisUsersAndGoAfterTheirProgram) {
    const fakes::ScratchFolder folder;
    const LinuxProgramFolder program({folder.at("x"), "lib", folder.at("data")});
    const auto left = folder.file("data/fetched/" + std::to_string(goneProcess()) + "-abc/x.pdf", "");
    const auto one = program.privateFolder();
    EXPECT_NE(one, program.privateFolder());
    EXPECT_TRUE(fs::is_directory(one) && permissions(one) == fs::perms::owner_all);
    EXPECT_FALSE(fs::exists(fs::path(left).parent_path()));
    EXPECT_EQ(LinuxProgramFolder({folder.at("x"), "lib", "/proc/no"}).privateFolder(), "");
}

struct QtSettingsStoreTest : testing::Test {
    std::string value(const std::string& key) { return store.GetSetting("Corvane", "FTP", key, "default"); }
    bool save(const std::string& key, const std::string& text) {
        return store.SaveSetting("Corvane", "FTP", key, text);
    }

    fakes::ScratchFolder folder;
    NoSecretStore noKeyring;
    QtSettingsStore store{folder.path(), noKeyring};
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
    EXPECT_EQ(value("A") + "|" + value("B") + "|" + value("C"), "a, b ; c|C:\\new\\\"x\"|a \"b\" \\ \n");
    EXPECT_EQ(value("D") + "|" + value("E") + "|" + value("F") + "|" + value("G"),
              "\"x\" and \"y\"|\"C:\\dir\"|default|");
}

TEST_F(QtSettingsStoreTest, SavingKeepsWhatItDoesNotKnowForThisUserAlone) {
    EXPECT_TRUE(save("Server", "x"));
    EXPECT_EQ(permissions(folder.at("Corvane")), fs::perms(0700));
    EXPECT_EQ(permissions(file), fs::perms(0600));
    folder.file("Corvane/Corvane.conf", "top=1\n[Mine]\nkey=a,b\\c\n[FTP]\nServer=old\nOther= x \n");
    fs::permissions(file, fs::perms(0644));
    EXPECT_TRUE(save("Server", " new"));
    EXPECT_EQ(permissions(file), fs::perms(0600));
    EXPECT_EQ(content(file), "top=1\n\n[FTP]\nOther=x\nServer=\" new\"\n\n[Mine]\nkey=a,b\\c\n");
    EXPECT_EQ(folder.names(), Names{"Corvane"});
}

TEST_F(QtSettingsStoreTest, WhatCannotBeWrittenIsReportedAndNotKept) {
    EXPECT_TRUE(save("Server", "old"));
    {
        const FullDisk full(1);
        EXPECT_FALSE(save("Server", "new") || save("Proxy", "new"));
        EXPECT_EQ(value("Server") + value("Proxy"), "olddefault");
    }
    EXPECT_EQ(content(file), "[FTP]\nServer=old\n");
    folder.file("blocked", "");
    EXPECT_FALSE(QtSettingsStore(folder.at("blocked"), noKeyring).SaveSetting("Corvane", "FTP", "Server", "x"));
}

TEST_F(QtSettingsStoreTest, SaysWhatOthersMayReadAndWhatIsNoFile) {
    folder.file("Corvane/Corvane.conf", "[FTP]\nServer=old\n");
    fs::permissions(file, fs::perms(0640));
    EXPECT_TRUE(store.problems("Corvane", false).empty());
    EXPECT_EQ(store.problems("Corvane", true),
              Names{file + " was open to other users of this computer, and a password stands in it. Now it "
                           "is yours alone. If somebody may have read it, change the password."});
    EXPECT_EQ(permissions(file), fs::perms(0600));
    EXPECT_TRUE(store.problems("Corvane", true).empty());
    fs::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_FALSE(save("Server", "new") || value("Server") != "default");
    EXPECT_EQ(store.problems("Corvane", false),
              Names{file + " is no ordinary file: no settings are read or kept. Remove it."});
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

}  // namespace corvane::tests
