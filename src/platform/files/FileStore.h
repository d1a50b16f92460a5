#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace corvane {

/// A file that is being written.
class OutputFile {
public:
    virtual ~OutputFile() = default;
    virtual void write(std::string_view bytes) = 0;

    /// Why not everything could be written, in words; empty when it could.
    virtual std::string failure() const = 0;
};

/// Files that are written so that neither a killed program nor a full disk nor whoever may write to the same folder
/// does harm by it: nothing but an ordinary file is opened, no name can be guessed before, and where the program itself
/// has named a file a link in its place is not followed. Paths in the system's bytes. Each answer is empty when it was
/// done, else the reason in words.
class FileStore {
public:
    enum class Named { byProgram, byOperator };

    /// As long as it lives, no other program gets one for the same folder.
    class Lock {
    public:
        virtual ~Lock() = default;
    };

    virtual ~FileStore() = default;

    /// Waits for it a little; null when another program keeps it.
    virtual std::unique_ptr<Lock> lock(const std::string& folder) = 0;

    /// Makes a folder and those above it that are missing, all on the disk when this returns.
    [[nodiscard]] virtual std::string makeFolder(const std::string& path) = 0;

    /// The content, whole or not at all, is on the disk when this returns. The mode of a file that was there stays, and
    /// its owner as far as this user may give files away. One that the program has named is for this user alone when it
    /// is new, and takes the place of a link. Where the operator has named it, a new one is as open as the process
    /// makes files (umask), and a link stays: the file behind it is replaced.
    [[nodiscard]] virtual std::string replace(const std::string& path, std::string_view content, Named named) = 0;

    /// Takes a file away, if there is one; on the disk when this returns.
    [[nodiscard]] virtual std::string remove(const std::string& path) = 0;

    /// Adds to a file's end, all or nothing, the head first where the file is empty or new.
    [[nodiscard]] virtual std::string append(const std::string& path, std::string_view head, std::string_view text,
                                             Named named) = 0;

    /// Opens a file that the operator has named and empties it; null with the reason.
    [[nodiscard]] virtual std::unique_ptr<OutputFile> create(const std::string& path, std::string& why) = 0;

    /// Makes a new file of the program's own, for this user alone: START and END stand around what nobody can guess.
    /// What is written is handed to the system at once, and not waited for. The path stands in the argument then; null
    /// when it cannot be made.
    [[nodiscard]] virtual std::unique_ptr<OutputFile> createOwn(const std::string& start, const std::string& end,
                                                                std::string& path) = 0;
};

}  // namespace corvane
