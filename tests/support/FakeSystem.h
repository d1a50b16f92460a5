#pragma once

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include "platform/Digest.h"
#include "platform/Launcher.h"
#include "platform/PortInspector.h"
#include "platform/PowerSupply.h"
#include "platform/Processes.h"
#include "platform/SettingsStore.h"
#include "platform/SleepInhibitor.h"
#include "platform/files/FileStore.h"
#include "platform/files/Files.h"

namespace corvane::fakes {

/// 64 digits that differ where contents do, and that no cryptographer should look at.
class FakeDigest : public Digest {
public:
    std::map<std::string, std::string, std::less<>> known;  ///< digests that are to be others

    std::string sha256(std::string_view content) override {
        if (const auto found = known.find(content); found != known.end()) return found->second;
        const auto value = std::hash<std::string_view>()(content);
        char digits[65];
        std::snprintf(digits, sizeof digits, "%016zx%016zx%016zx%016zx", value, value * 31, value * 37, value * 41);
        return digits;
    }
};

/// Notes what keeps the computer awake.
class FakeInhibitor : public SleepInhibitor {
public:
    std::vector<std::string> reasons;
    bool isHeld = false;

    void hold(const std::string& reason) override {
        reasons.push_back(reason);
        isHeld = true;
    }
    void release() override { isHeld = false; }
};

class FakePowerSupply : public PowerSupply {
public:
    bool onBattery = false;
    bool isOnBattery() override { return onBattery; }
};

/// Notes what would have been started and shown. While a failure is set, that is the answer and nothing is noted.
class FakeLauncher : public Launcher {
public:
    std::vector<std::string> started;  ///< a path, and behind it each variable that it was given, " NAME=value"
    std::vector<std::string> shown;
    std::string digest;  ///< of what was to be started last
    std::string failure;
    std::string faultOfAll;  ///< of each program that somebody wants to start

    std::string fault(const std::string&) override { return faultOfAll; }

    std::string start(const std::string& path, const std::string& sha256,
                      const std::vector<Variable>& variables) override {
        digest = sha256;
        std::string text = path;
        for (const auto& [name, value] : variables) text.append(" ").append(name).append("=").append(value);
        if (failure.empty()) started.push_back(text);
        return failure;
    }

    std::string open(const std::string& address) override {
        if (failure.empty()) shown.push_back(address);
        return failure;
    }
};

/// Nodes as a test says.
class FakePortInspector : public PortInspector {
public:
    std::map<std::string, PortHolder> holders, lockers;
    std::set<std::string> probed, forbidden, missing;
    std::map<std::string, PortAdapter> adapters;

    PortAdapter adapterOf(const std::string& node) override { return adapters[node]; }
    bool isThere(const std::string& node) override { return missing.count(node) == 0; }
    bool mayUse(const std::string& node) override { return forbidden.count(node) == 0; }
    std::string userName() override { return "olive"; }
    std::string groupOf(const std::string&) override { return "dialout"; }
    std::optional<PortHolder> lockerOf(const std::string& node) override {
        const auto found = lockers.find(node);
        return found == lockers.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<PortHolder> holderOf(const std::string& node) override {
        const auto found = holders.find(node);
        return found == holders.end() ? std::nullopt : std::optional(found->second);
    }
    bool isProbedForModems(const std::string& node) override { return probed.count(node) > 0; }
};

/// Real files, without the real side's precautions. While a failure is set nothing can be written, and that is why.
class FakeFileStore : public FileStore {
public:
    std::string failure;

    std::unique_ptr<Lock> lock(const std::string&) override { return std::make_unique<Lock>(); }
    std::string makeFolder(const std::string& path) override { return corvane::makeFolder(path); }
    std::string replace(const std::string& path, std::string_view content, Named) override {
        return failure.empty() && !(std::ofstream(path, std::ios::binary) << content).flush() ? "no such folder"
                                                                                              : failure;
    }
    std::string remove(const std::string& path) override {
        std::error_code none;
        if (!failure.empty()) return failure;
        std::filesystem::remove(path, none);
        return none ? "no permission" : "";
    }
    std::string append(const std::string& path, std::string_view head, std::string_view text, Named) override {
        std::error_code none;
        const bool isNew = std::filesystem::file_size(path, none) == 0 || none;
        std::ofstream file(path, std::ios::binary | std::ios::app);
        if (failure.empty()) file << (isNew ? head : "") << text << std::flush;
        return failure.empty() && !file ? "no such folder" : failure;
    }
    std::unique_ptr<OutputFile> create(const std::string& path, std::string& why) override {
        auto file = std::make_unique<Stream>();
        file->stream.open(path, std::ios::binary);
        if (!file->stream) why = "no such folder";
        return file->stream ? std::move(file) : nullptr;
    }
    std::unique_ptr<OutputFile> createOwn(const std::string& start, const std::string& end,
                                          std::string& path) override {
        path = start + std::to_string(++made_) + end;
        std::string why;
        return failure.empty() ? create(path, why) : nullptr;
    }

private:
    int made_ = 0;

    struct Stream : OutputFile {
        std::ofstream stream;
        void write(std::string_view bytes) override { stream << bytes << std::flush; }
        std::string failure() const override { return stream ? "" : "no room"; }
    };
};

/// The test's own process and, beside it, those that it says are alive.
class FakeProcesses : public Processes {
public:
    ProcessMark self{1, "now"};
    std::vector<ProcessMark> others;

    ProcessMark own() override { return self; }
    bool isAlive(const ProcessMark& process) override {
        return process == self || std::find(others.begin(), others.end(), process) != others.end();
    }
};

/// A keyring in memory, by the settings' file.
class FakeSecretStore : public SecretStore {
public:
    explicit FakeSecretStore(bool locked) : isLocked(locked) {}

    std::map<std::string, std::string> values;
    bool isLocked;

    std::string load(const std::string& settingsFile) override { return isLocked ? "" : values[settingsFile]; }
    bool save(const std::string& settingsFile, const std::string& secret) override {
        if (!isLocked) values[settingsFile] = secret;
        return !isLocked;
    }
};

/// Settings in memory, by "application/section/key". As long as isReadOnly is set nothing can be saved.
class FakeSettingsStore : public SettingsStore {
public:
    std::map<std::string, std::string> values;
    std::map<std::string, std::string> before;  ///< what counts as long as nothing else is saved
    bool isReadOnly = false;
    FakeSecretStore keyring{true};

    SecretStore& secrets() override { return keyring; }

    std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                           const std::string& byDefault) override {
        const auto name = application + "/" + section + "/" + key;
        if (values.count(name)) return values[name];
        return before.count(name) ? before[name] : byDefault;
    }

    bool SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                     const std::string& value) override {
        if (!isReadOnly) values[application + "/" + section + "/" + key] = value;
        return !isReadOnly;
    }
};

}  // namespace corvane::fakes
