#include "image/Image.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "platform/files/Files.h"
#include "text/Number.h"
#include "text/Profile.h"
#include "text/Text.h"

namespace corvane {
namespace {

ImageInfo infoOf(const std::string& content) {
    const Profile profile(content);
    const auto value = [&](std::string_view key) { return infValue(profile, "INFO", key, ""); };
    ImageInfo info;
    info.program = value("PGM");
    if (!info.program.empty()) info.version = value("VER"), info.date = value("BUD");
    return info;
}

std::vector<std::string_view> recordsOf(std::string_view content) {
    std::vector<std::string_view> records;
    std::string_view line;
    for (Lines lines(content); records.size() < Image::kMostStored && lines.next(line);) {
        if (line.substr(0, 1) == ":") records.push_back(line);
    }
    return records;
}

/// Reads a file to its end, or until there are more bytes than those. The system's error number when that fails, else
/// 0.
int read(const std::string& path, std::size_t most, std::string& bytes) {
    const auto close = [](std::FILE* file) { std::fclose(file); };
    errno = 0;
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"), close);
    if (!file) return errno;
    char block[65536];
    while (bytes.size() <= most) {
        const auto count = std::fread(block, 1, sizeof block, file.get());
        if (count == 0) break;
        bytes.append(block, count);
    }
    return std::ferror(file.get()) ? errno : 0;
}

}  // namespace

Image::Image() : content_(std::make_shared<Content>()) {}

Image::Image(std::string path, std::string bytes, Digest& digest) {
    const auto content = std::make_shared<Content>();
    content->path = std::move(path);
    content->bytes = std::move(bytes);  // stays where it is from now on, so that there can be views into it
    content->sha256 = digest.sha256(content->bytes);
    content->info = infoOf(content->bytes);
    content->records = recordsOf(content->bytes);
    content->report = checkImage(content->bytes);
    content_ = content;
}

std::string Image::name() const { return lastPart(path()); }

ImageProblem Image::emptiness() const {
    if (records().empty()) return {ImageProblem::Kind::empty, "holds no Intel HEX record"};
    if (report().bytes == 0) return {ImageProblem::Kind::empty, "holds no data"};
    return {};
}

ImageOrProblem loadImage(const std::string& path, Digest& digest, const ImageReading& how) {
    using Kind = ImageProblem::Kind;
    if (FolderExists(path)) return {std::nullopt, {Kind::unreadable, "is a folder"}};
    if (how.source == ImageSource::file && isSpecialFile(path)) {
        return {std::nullopt, {Kind::unreadable, "is no ordinary file"}};
    }
    std::string bytes;
    if (const int error = read(path, how.mostBytes, bytes)) {
        const auto kind = error == ENOENT ? Kind::missing : Kind::unreadable;
        return {std::nullopt, {kind, "cannot be read: " + std::generic_category().message(error)}};
    }
    if (bytes.size() > how.mostBytes) {
        return {std::nullopt,
                {Kind::tooLarge, "is larger than " + byteCount(static_cast<std::int64_t>(how.mostBytes))}};
    }
    return {Image(how.knownAs.empty() ? path : how.knownAs, std::move(bytes), digest), {}};
}

}  // namespace corvane
