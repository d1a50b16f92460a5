#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/Address.h"

namespace corvane {

/// A report about one read. In a completion with at least 1 byte, value is the path of a temporary file that now
/// belongs to the receiver; a failed read completes with 0 bytes and no file.
struct AsyncResult {
    std::int64_t bytesRead = 0;
    std::int64_t bytesMax = 0;  ///< 0 when the size is not known
    std::string propertyName;
    std::string value;
};

/// Why a read failed; the words are a part of a sentence, for people, in UTF-8.
struct ReadFailure {
    enum class Kind {
        none,
        noAddress,     ///< the address is none, or cannot be sent
        noFile,        ///< its path is that of a folder
        unreachable,   ///< there is no server, or no way to it
        login,         ///< the server does not accept user name and password
        refused,       ///< the server accepts the login and gives nothing
        brokenOff,     ///< it began and did not come to its end
        storage,       ///< what came could not be stored
        oldStays,      ///< what lies at its place cannot be replaced
        tooLong,       ///< it is longer than what was to be read
        notEncrypted,  ///< encryption is required, and there is none, or it does not work
        notVouched,    ///< encryption is required, and nobody who is trusted vouches for the server
    };
    Kind kind = Kind::none;
    std::string words{};

    explicit operator bool() const { return kind != Kind::none; }
};

/// How the site is reached: as the environment says, without a proxy, or through the proxy named; and whether the
/// dialogue and the data are encrypted (AUTH TLS).
struct SiteRoute {
    enum class Access { byDefault = 0, direct = 1, proxy = 2 };
    enum class Encryption {
        off,
        whenOffered,  ///< whoever vouches for the server, and without it where it does not work
        required      ///< with a certificate that is valid for the name; else no password is sent
    };
    Access access = Access::byDefault;
    std::string proxy{};
    Encryption encryption = Encryption::whenOffered;
    std::string authorities{};  ///< a file of certificates to trust, the system's bytes; empty for the system's own

    bool operator==(const SiteRoute&) const = default;
};

/// Reads what lies at addresses into temporary files without blocking; one read at a time. Reports come from DoEvents
/// only.
class AsyncReader {
public:
    virtual ~AsyncReader() = default;

    std::function<void(const AsyncResult&)> onProgress;
    std::function<void(const AsyncResult&)> onComplete;

    /// Starts a read, of a listing when the address is that of a folder; one that still runs ends as if it were
    /// cancelled. When the property name is a path, the temporary file lies in that path's folder, so that a rename
    /// puts it in place. Any failure shows as a completion with 0 bytes.
    virtual void start(const Address& address, const std::string& propertyName) = 0;

    /// Ends the read of that property (any read when none is given); nothing of it is reported afterwards.
    virtual void cancel(const std::optional<std::string>& propertyName) = 0;

    /// Cancels what is read and takes leave of the server; returns within 100 ms whatever the server does.
    virtual void closeSession() = 0;

    /// In force from the next connection on.
    virtual void route(const SiteRoute& route) = 0;

    /// How many bytes a read may bring, in force from the next one on; one that brings or announces more fails.
    virtual void mostBytes(std::int64_t most) = 0;

    /// What is to be known of the encryption of the present connection, a sentence in UTF-8; empty when nothing is.
    virtual std::string remark() const { return {}; }

    /// Why the last read failed; none when it did not.
    virtual ReadFailure failure() const = 0;
};

}  // namespace corvane
