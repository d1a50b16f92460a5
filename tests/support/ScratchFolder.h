#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvane::fakes {

/// An empty folder of its own for a test; gone with the object.
class ScratchFolder {
public:
    ScratchFolder() = default;
    ~ScratchFolder() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path() const { return made().string(); }

    /// A path below the folder.
    std::string at(const std::string& name) const { return (made() / name).string(); }

    /// Writes a file, making the folders that lead to it.
    std::string file(const std::string& name, const std::string& content) const {
        const auto path = made() / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

    /// The names in the folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(made())) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    /// A file's bytes; "(none)" when it is not there.
    static std::string content(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        if (!file) return "(none)";
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    /// When it is first asked for: some tests make many that they do not need.
    const std::filesystem::path& made() const {
        if (!path_.empty()) return path_;
        auto name = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string();
        if (!::mkdtemp(name.data())) throw std::runtime_error("no scratch folder");
        return path_ = name;
    }

    mutable std::filesystem::path path_;
};

}  // namespace corvane::fakes
