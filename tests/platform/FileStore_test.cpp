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

#include "platform/files/Files.h"
#include "platform/linux/files/LinuxFileStore.h"
#include "platform/linux/files/ProcProcesses.h"
#include "support/ScratchFolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;
using Named = FileStore::Named;

class LinuxFileStoreTest : public testing::Test {
protected:
    static std::string content(const std::string& path) { return fakes::ScratchFolder::content(path); }
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
    const auto pipe = folder.at("pipe"), link = folder.at("link"), full = std::string("/dev/full");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    fs::create_symlink(file, link);
    for (const auto& special : {pipe, full}) {
        EXPECT_EQ(create(special), "it is no ordinary file");
        EXPECT_EQ(store.append(special, "", "x", Named::byOperator), "it is no ordinary file");
    }
    EXPECT_EQ(store.append(link, "", "x", Named::byProgram), "it is a link");
    EXPECT_EQ(content(file), "old");
    EXPECT_EQ(store.append(link, "head", "er", Named::byOperator), "");
    EXPECT_EQ(content(file), "older");
    EXPECT_EQ(create(link), "");
    EXPECT_EQ(content(file), "new");
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
    const auto modeOf = [this](const char* name) {
        return static_cast<int>(fs::status(folder.at(name)).permissions());
    };
    fs::permissions(folder.file("site", ""), fs::perms(0664));
    fs::create_symlink("site", folder.at("link"));
    const auto before = umask(027);
    for (const char* name : {"new", "link"}) EXPECT_EQ(store.replace(folder.at(name), "x", Named::byOperator), "");
    EXPECT_EQ(store.replace(folder.at("own"), "x", Named::byProgram), "");
    umask(before);
    EXPECT_EQ(modeOf("site"), 0664);
    EXPECT_EQ(modeOf("new"), 0640);
    EXPECT_EQ(modeOf("own"), 0600);
}

TEST(Files, EachFolderInWhichOneWasMadeIsHandedOver) {
    fakes::ScratchFolder folder;
    std::vector<std::string> folders;
    for (const char* path : {"a/b/c", "a/d"})
        EXPECT_EQ(makeFolder(folder.at(path), [&](const std::string& in) { folders.push_back(in); }), "");
    EXPECT_EQ(folders, (Names{folder.path(), folder.at("a"), folder.at("a/b"), folder.at("a")}));
    EXPECT_EQ(makeFolder(folder.file("file", "") + "/x/y"), folder.at("file") + ": File exists");
}

TEST_F(LinuxFileStoreTest, WritesAllOrNothingAndClearsAwayWhatTheKilledLeft) {
    const auto gone = fork();
    if (gone == 0) _exit(0);
    waitpid(gone, nullptr, 0);
    folder.file(".corvane-" + std::to_string(gone) + "-abc.part", "half");
    const auto living = ".corvane-" + std::to_string(getppid()) + "-abc.part";
    folder.file(living, "half");
    fs::permissions(file, fs::perms(0640));
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit few{5, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &few);
    const auto replaced = store.replace(file, "too long", Named::byProgram),
               appended = store.append(file, "", "too long", Named::byProgram);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(replaced + appended, "File too largeFile too large");
    EXPECT_EQ(content(file), "old");
    EXPECT_EQ(store.replace(file, "long enough", Named::byProgram), "");
    EXPECT_EQ(content(file), "long enough");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
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

}  // namespace
}  // namespace corvane
