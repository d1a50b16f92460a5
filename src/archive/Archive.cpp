#include "archive/Archive.h"

#include <algorithm>
#include <memory>
#include <zip.h>

namespace corvane {
namespace {

struct Discard {
    void operator()(zip_t* zip) const { zip_discard(zip); }
    void operator()(zip_file_t* file) const { zip_fclose(file); }
    void operator()(zip_source_t* source) const { zip_source_free(source); }
};
template <typename T>
using Held = std::unique_ptr<T, Discard>;

/// Ends an error of the library's.
struct Error {
    Error() { zip_error_init(&error); }
    ~Error() { zip_error_fini(&error); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
    zip_error_t error{};
};

bool isPlainName(const std::string& name) {
    return !name.empty() && name.front() != '.' && name.size() < 100 &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                      c == '-' || c == '_';
           });
}

/// What the source holds once the zip over it was closed.
std::string contentOf(zip_source_t* source) {
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_source_stat(source, &stat) != 0 || zip_source_open(source) != 0) return {};
    std::string all(stat.size, '\0');
    const auto read = zip_source_read(source, all.data(), all.size());
    zip_source_close(source);
    return read == static_cast<zip_int64_t>(all.size()) ? all : std::string();
}

/// One file, as long as it stays within what is left. The size that the zip tells may be a lie.
bool readFile(zip_t* zip, zip_uint64_t index, std::size_t left, std::string& content, std::string& why) {
    const Held<zip_file_t> file(zip_fopen_index(zip, index, 0));
    if (!file) {
        why = std::string("is damaged: ") + zip_strerror(zip);
        return false;
    }
    char part[65536];
    for (;;) {
        const auto read = zip_fread(file.get(), part, sizeof part);
        if (read < 0) {
            why = "is damaged: a file in it cannot be unpacked";
            return false;
        }
        if (read == 0) return true;
        if (static_cast<std::size_t>(read) > left - content.size()) {
            why = "unpacks to more than a report can hold";
            return false;
        }
        content.append(part, static_cast<std::size_t>(read));
    }
}

}  // namespace

std::string packed(const std::vector<ArchivedFile>& files, std::string& why) {
    Error error;
    Held<zip_source_t> target(zip_source_buffer_create(nullptr, 0, 0, &error.error));
    if (!target) {
        why = zip_error_strerror(&error.error);
        return {};
    }
    Held<zip_t> zip(zip_open_from_source(target.get(), ZIP_TRUNCATE, &error.error));
    if (!zip) {
        why = zip_error_strerror(&error.error);
        return {};
    }
    zip_source_keep(target.get());  // the zip owns one reference now, this function keeps its own
    for (const auto& file : files) {
        auto* source = zip_source_buffer(zip.get(), file.content.data(), file.content.size(), 0);
        if (source && zip_file_add(zip.get(), file.name.c_str(), source, ZIP_FL_ENC_UTF_8) >= 0) continue;
        why = zip_strerror(zip.get());
        zip_source_free(source);
        return {};
    }
    if (zip_close(zip.get()) != 0) {
        why = zip_strerror(zip.get());
        return {};
    }
    (void)zip.release();  // closing has freed it
    auto all = contentOf(target.get());
    if (all.empty()) why = "the zip could not be made";
    return all;
}

std::optional<std::vector<ArchivedFile>> unpacked(std::string_view bytes, std::string& why,
                                                  const ArchiveLimits& limits) {
    Error error;
    Held<zip_source_t> source(zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error.error));
    if (!source) {
        why = zip_error_strerror(&error.error);
        return std::nullopt;
    }
    const Held<zip_t> zip(zip_open_from_source(source.get(), ZIP_RDONLY | ZIP_CHECKCONS, &error.error));
    if (!zip) {
        why = std::string("is no report, or not a whole one: ") + zip_error_strerror(&error.error);
        return std::nullopt;
    }
    (void)source.release();
    const auto count = zip_get_num_entries(zip.get(), 0);
    if (count < 0 || static_cast<std::size_t>(count) > limits.files) {
        why = "holds more files than a report can";
        return std::nullopt;
    }
    std::vector<ArchivedFile> files;
    std::size_t left = limits.bytes;
    for (zip_uint64_t i = 0; i < static_cast<zip_uint64_t>(count); ++i) {
        const char* name = zip_get_name(zip.get(), i, ZIP_FL_ENC_RAW);
        ArchivedFile file{name ? name : "", {}};
        if (!isPlainName(file.name)) {
            why = "holds a file with a name that no report has";
            return std::nullopt;
        }
        if (!readFile(zip.get(), i, left, file.content, why)) return std::nullopt;
        left -= file.content.size();
        files.push_back(std::move(file));
    }
    return files;
}

}  // namespace corvane
