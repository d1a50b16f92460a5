#pragma once

#include "platform/files/FileStore.h"

namespace corvane {

/// Over descriptors: a file is looked at after it was opened, so nothing can take its place in between.
class LinuxFileStore : public FileStore {
public:
    std::unique_ptr<Lock> lock(const std::string& folder) override;
    std::string makeFolder(const std::string& path) override;
    std::string replace(const std::string& given, std::string_view content, Named named) override;
    std::string remove(const std::string& path) override;
    std::string append(const std::string& path, std::string_view head, std::string_view text, Named named) override;
    std::unique_ptr<OutputFile> create(const std::string& path, std::string& why) override;
    std::unique_ptr<OutputFile> createOwn(const std::string& start, const std::string& end, std::string& path) override;
};

}  // namespace corvane
