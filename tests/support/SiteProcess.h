#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace corvane::fakes {

/// A server on loopback in a process of its own: one of the scripts of this folder, told by a JSON object what to be
/// (the script says how). Throws std::runtime_error when it does not start. The process ends with the object.
class SiteProcess {
public:
    SiteProcess(const std::string& script, const std::string& json);
    ~SiteProcess();
    SiteProcess(const SiteProcess&) = delete;
    SiteProcess& operator=(const SiteProcess&) = delete;

    /// "127.0.0.1:" and the port.
    const std::string& address() const { return address_; }

    /// Waits until so many events of that text have been recorded; False after ten seconds without.
    bool sees(const std::string& event, int times = 1);

    /// How many have been recorded until now.
    int count(const std::string& event);

    /// The server falls silent, though its machine still accepts connections; or answers again.
    void freeze() const;
    void thaw() const;

    /// The server is gone at once, as after a power loss.
    void kill();

private:
    bool readEvents(int waitMs);

    int stream_ = -1;  // its standard input and output
    pid_t process_ = -1;
    std::string text_, address_;
};

}  // namespace corvane::fakes
