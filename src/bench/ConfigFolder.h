#pragma once

#include <map>
#include <string>
#include <vector>

namespace corvane::bench {

/// One value of the settings file.
struct Setting {
    std::string section, key, value;
};

/// A private configuration folder, usable as XDG_CONFIG_HOME, in which a program sees the bench's ports and no others.
/// In it lies one for data, usable as XDG_DATA_HOME, so that practice gets into nobody's record of jobs.
class ConfigFolder {
public:
    /// Makes the folder (0700) where it does not exist; an empty path is a temporary one that is removed at the end.
    /// Throws std::runtime_error when it cannot be made, or when it holds somebody's own configuration.
    explicit ConfigFolder(std::string path);
    ~ConfigFolder();
    ConfigFolder(const ConfigFolder&) = delete;
    ConfigFolder& operator=(const ConfigFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string data() const { return path_ + "/data"; }

    /// Which port of the bench is where, replacing what was written before.
    void writePorts(const std::map<int, std::string>& paths) const;

    /// Writes the settings file anew; without settings only where there is none. The operator's keyring is left alone.
    void writeSettings(const std::vector<Setting>& settings) const;

private:
    bool isTemporary_;
    std::string path_;
};

/// Writes a file whole or not at all, readable by this user alone; throws std::runtime_error.
void writeWhole(const std::string& path, const std::string& text);

}  // namespace corvane::bench
