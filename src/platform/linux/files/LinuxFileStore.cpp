#include "platform/linux/files/LinuxFileStore.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>
#include <utility>

#include "platform/linux/files/LeftFiles.h"
#include "platform/linux/files/StoredFolder.h"

namespace corvane {
namespace {

/// An open file, closed with the object.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor& operator=(Descriptor&&) = delete;

    int get() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

    /// Some file systems find out only here that there is no room.
    bool close() { return ::close(std::exchange(number_, -1)) == 0 || errno == EINTR; }

private:
    int number_;
};

std::string words(int error) { return error == ELOOP ? "it is a link" : std::strerror(error); }

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(file, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

/// Asks for a lock for two seconds; whoever keeps one for so long has been stopped.
bool waitForLock(int file) {
    constexpr int kTries = 200;
    constexpr timespec kPause{0, 10000000};
    for (int i = 0; i < kTries; ++i) {
        if (flock(file, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK && errno != EINTR) return true;  // a file system without locks is used without
        nanosleep(&kPause, nullptr);
    }
    return false;
}

/// Opens without waiting for the other end of a pipe. With a reason when it is no ordinary file, or none can be had.
Descriptor openOrdinary(const std::string& path, int flags, std::string& why) {
    Descriptor file(::open(path.c_str(), flags | O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666));
    struct stat status {};
    const bool isPipe = !file.isOpen() && errno == ENXIO;
    if (!isPipe && (!file.isOpen() || fstat(file.get(), &status) < 0)) {
        why = words(errno);
    } else if (isPipe || !S_ISREG(status.st_mode)) {
        why = "it is no ordinary file";
    }
    return file;
}

std::string folderOf(const std::string& path) {
    const auto folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// Gives a new file what the one before had, or what any other new file of the operator's would have.
bool setAccess(int file, const std::string& path, FileStore::Named named) {
    struct stat before {};
    if (lstat(path.c_str(), &before) == 0 && S_ISREG(before.st_mode)) {
        // Before the mode, of which it may take bits away. Whoever may give neither owner nor group away keeps both.
        constexpr auto kSame = static_cast<uid_t>(-1);
        static_cast<void>(fchown(file, before.st_uid, before.st_gid) == 0 || fchown(file, kSame, before.st_gid) == 0);
        return fchmod(file, before.st_mode & 07777) == 0;
    }
    if (named == FileStore::Named::byProgram) return true;  // it is this user's alone
    const auto mask = umask(0);
    umask(mask);
    return fchmod(file, 0666 & ~mask) == 0;
}

class HeldFolder : public FileStore::Lock {
public:
    explicit HeldFolder(Descriptor folder) : folder_(std::move(folder)) {}

private:
    Descriptor folder_;
};

class WrittenFile : public OutputFile {
public:
    explicit WrittenFile(Descriptor file) : file_(std::move(file)) {}

    void write(std::string_view bytes) override {
        if (failure_.empty() && !writeAll(file_.get(), bytes)) failure_ = words(errno);
    }
    std::string failure() const override { return failure_; }

private:
    Descriptor file_;
    std::string failure_;
};

}  // namespace

std::unique_ptr<FileStore::Lock> LinuxFileStore::lock(const std::string& folder) {
    Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!waitForLock(opened.get())) return nullptr;
    return std::make_unique<HeldFolder>(std::move(opened));
}

std::string LinuxFileStore::makeFolder(const std::string& path) { return makeStoredFolder(path); }

std::string LinuxFileStore::replace(const std::string& given, std::string_view content, Named named) {
    auto path = given;
    if (named == Named::byOperator && std::filesystem::is_symlink(given)) {
        std::error_code error;
        path = std::filesystem::canonical(given, error).string();
        if (error) return "it is a link to nothing: " + error.message();
    }
    const auto folder = folderOf(path);
    removeLeftFiles(folder);
    auto part = folder + "/" + partName("XXXXXX");
    Descriptor file(mkostemps(part.data(), 5, O_CLOEXEC));  // a name that nobody guesses, and never a link
    if (!file.isOpen()) return words(errno);
    const bool isThere = setAccess(file.get(), path, named) && writeAll(file.get(), content) &&
                         fsync(file.get()) == 0 && file.close() && ::rename(part.c_str(), path.c_str()) == 0;
    if (!isThere) {
        const int error = errno;
        ::unlink(part.c_str());
        return words(error);
    }
    storeFolder(folder);
    return {};
}

std::string LinuxFileStore::remove(const std::string& path) {
    if (::unlink(path.c_str()) < 0) return errno == ENOENT ? std::string() : words(errno);
    storeFolder(folderOf(path));
    return {};
}

std::string LinuxFileStore::append(const std::string& path, std::string_view head, std::string_view text, Named named) {
    std::string why;
    const auto file = openOrdinary(path, O_APPEND | (named == Named::byProgram ? O_NOFOLLOW : 0), why);
    if (!why.empty()) return why;
    if (!waitForLock(file.get())) return "another program keeps it";
    struct stat before {};
    if (fstat(file.get(), &before) < 0) return words(errno);
    const auto whole = (before.st_size == 0 ? std::string(head) : std::string()).append(text);
    if (writeAll(file.get(), whole)) return {};
    why = words(errno);
    if (ftruncate(file.get(), before.st_size) < 0) why += ", and a part of it stays there: " + words(errno);
    return why;
}

std::unique_ptr<OutputFile> LinuxFileStore::create(const std::string& path, std::string& why) {
    auto file = openOrdinary(path, 0, why);
    if (why.empty() && ftruncate(file.get(), 0) < 0) why = words(errno);
    return why.empty() ? std::make_unique<WrittenFile>(std::move(file)) : nullptr;
}

std::unique_ptr<OutputFile> LinuxFileStore::createOwn(const std::string& start, const std::string& end,
                                                      std::string& path) {
    auto name = start + "XXXXXX" + end;
    Descriptor file(mkostemps(name.data(), static_cast<int>(end.size()), O_CLOEXEC));
    if (!file.isOpen()) return nullptr;
    path = name;
    return std::make_unique<WrittenFile>(std::move(file));
}

}  // namespace corvane
