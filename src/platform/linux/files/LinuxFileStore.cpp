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

/// A name that is to be there, or gone, after a failure of the power too.
void storeName(const std::string& folder) {
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) fsync(opened.get());  // some file systems cannot, and need not
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

std::string LinuxFileStore::replace(const std::string& path, std::string_view content) {
    const auto folder = folderOf(path);
    removeLeftFiles(folder);
    auto part = folder + "/" + partName("XXXXXX");
    Descriptor file(mkostemps(part.data(), 5, O_CLOEXEC));  // a name that nobody guesses, and never a link
    if (!file.isOpen()) return words(errno);
    struct stat before {};
    const bool keepsMode = lstat(path.c_str(), &before) == 0 && S_ISREG(before.st_mode);
    const bool isThere = (!keepsMode || fchmod(file.get(), before.st_mode & 07777) == 0) &&
                         writeAll(file.get(), content) && fsync(file.get()) == 0 && file.close() &&
                         ::rename(part.c_str(), path.c_str()) == 0;
    if (!isThere) {
        const int error = errno;
        ::unlink(part.c_str());
        return words(error);
    }
    storeName(folder);
    return {};
}

std::string LinuxFileStore::remove(const std::string& path) {
    if (::unlink(path.c_str()) < 0) return errno == ENOENT ? std::string() : words(errno);
    storeName(folderOf(path));
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

}  // namespace corvane
