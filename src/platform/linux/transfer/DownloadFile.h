#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace corvane {

/// A file that is being filled under a name of its own, in the folder where it is to end up. It is gone when this
/// object ends, unless it was finished. Everything throws std::system_error.
class DownloadFile {
public:
    /// The file lies beside the target, where it first clears away what killed programs have left of theirs; without a
    /// target, in a folder for temporary files.
    explicit DownloadFile(const std::string& target);
    ~DownloadFile();
    DownloadFile(const DownloadFile&) = delete;
    DownloadFile& operator=(const DownloadFile&) = delete;

    void write(std::string_view bytes);

    /// Everything is stored; from here on the file belongs to the caller. Gives its path.
    std::string finish();

private:
    bool open(const std::filesystem::path& folder);

    std::string path_;
    int descriptor_ = -1;
};

}  // namespace corvane
