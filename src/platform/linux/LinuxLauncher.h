#pragma once

#include <set>

#include "platform/Launcher.h"
#include "platform/linux/events/LinuxRuntime.h"

namespace corvane {

/// Programs in a session of their own, without this one's standard input and signal settings, which live on when this
/// one ends. The runtime, not owned, tells when one has ended, so that none is left as a zombie.
class LinuxLauncher : public Launcher {
public:
    explicit LinuxLauncher(LinuxRuntime& runtime) : runtime_(runtime) {}
    ~LinuxLauncher() override;
    LinuxLauncher(const LinuxLauncher&) = delete;
    LinuxLauncher& operator=(const LinuxLauncher&) = delete;

    std::string fault(const std::string& path) override;
    std::string start(const std::string& path, const std::string& sha256,
                      const std::vector<Variable>& variables) override;

    /// Through xdg-open; an address that it would take for an option is refused.
    std::string open(const std::string& address) override;

private:
    std::string spawn(const std::string& program, const std::string& name, const std::string* argument,
                      const std::vector<Variable>& variables);
    void awaitEnd(int process);

    LinuxRuntime& runtime_;
    std::set<int> running_;  // descriptors that become readable when the process has ended
};

}  // namespace corvane
