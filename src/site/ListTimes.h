#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/files/FileStore.h"

namespace corvane {

/// When the signed lists were signed that were taken last from each server, so that nobody on the way can bring back an
/// old one. A file of lines, seconds since 1970, a tab, the server; other lines are passed over. Owns nothing.
class ListTimes {
public:
    ListTimes(std::string folder, FileStore& files) : folder_(std::move(folder)), files_(files) {}

    std::string path() const { return folder_ + "/signed-lists"; }

    /// Nothing when no signed list of this server has been taken yet.
    std::optional<std::int64_t> of(const std::string& server) const;

    /// Empty when it was kept, else why not, in words.
    [[nodiscard]] std::string keep(const std::string& server, std::int64_t time);

private:
    std::string folder_;
    FileStore& files_;
};

}  // namespace corvane
