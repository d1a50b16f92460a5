#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "image/ImageCheck.h"
#include "platform/Digest.h"

namespace corvane {

/// What an image says about itself in its [INFO] section; texts in Windows-1252, empty where it says nothing. Without a
/// program the other two do not count.
struct ImageInfo {
    std::string program;  ///< PGM
    std::string version;  ///< VER
    std::string date;     ///< BUD

    /// "program version(date)", what the log and the selection say about it.
    std::string description() const { return program + " " + version + "(" + date + ")"; }
};

/// Why there is no image, or none that a device could run.
struct ImageProblem {
    enum class Kind {
        none,
        missing,     ///< nothing lies there
        unreadable,  ///< something does, and it is no file or cannot be read
        tooLarge,
        empty,  ///< a file without records, or without data in them
    };

    Kind kind = Kind::none;
    std::string words{};  ///< what follows the file's name, "cannot be read: Permission denied"; UTF-8

    explicit operator bool() const { return kind != Kind::none; }
};

/// An Intel HEX image as it was read: what is checked, asked about and sent is the same bytes, whatever becomes of the
/// file. A value that never changes; copies share the content and cost nothing.
class Image {
public:
    static constexpr std::size_t kMostStored = 32768;

    /// No image: no path, and nothing in it.
    Image();

    /// An image of bytes that have been read already. The path (the system's bytes) is only for words.
    Image(std::string path, std::string bytes, Digest& digest);

    bool isNone() const { return content_->path.empty(); }
    const std::string& path() const { return content_->path; }
    std::string name() const;  ///< the path's last part
    const std::string& bytes() const { return content_->bytes; }
    const std::string& sha256() const { return content_->sha256; }  ///< 64 lower-case hexadecimal digits
    const ImageInfo& info() const { return content_->info; }

    /// The ":" lines without their ends, the first 32768 of them. Views into this image.
    const std::vector<std::string_view>& records() const { return content_->records; }

    /// Findings, segments, and how many records and bytes of data there are, all of them.
    const ImageReport& report() const { return content_->report; }

    /// "holds no Intel HEX record" or "holds no data"; none when it holds some.
    ImageProblem emptiness() const;

private:
    struct Content {
        std::string path, bytes, sha256;
        ImageInfo info;
        std::vector<std::string_view> records;
        ImageReport report;
    };

    std::shared_ptr<const Content> content_;
};

/// An image, or why there is none.
struct ImageOrProblem {
    std::optional<Image> image;
    ImageProblem problem;  ///< none exactly when there is an image
};

/// What an image may be read from. A pipe gives what it holds once, a device perhaps without end, so neither can be an
/// operator's choice that is read again for each run.
enum class ImageSource { file, fileOrPipe };

/// How an image is read, beside where it lies.
struct ImageReading {
    static constexpr std::size_t kMostBytes = 64 << 20;

    std::size_t mostBytes = kMostBytes;  ///< a longer file is none, and is not read to its end
    ImageSource source = ImageSource::file;
    std::string knownAs{};  ///< its path for words, when it does not lie there yet; the one it is read from when empty
};

/// Reads an image file, the only function that does. Whatever can be read is an image here, also when nothing in it is
/// a record.
ImageOrProblem loadImage(const std::string& path, Digest& digest, const ImageReading& how = {});

}  // namespace corvane
