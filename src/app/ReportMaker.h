#pragma once

#include <vector>

#include "archive/Archive.h"
#include "platform/Platform.h"
#include "record/Tape.h"
#include "run/Verdict.h"
#include "settings/Choices.h"
#include "site/InfReader.h"

namespace corvane {

/// What a report is made of; all of it lives longer.
struct ReportSources {
    const Platform& platform;
    const Choices& choices;
    InfReader& inf;
    const Tape& tape;
};

/// Makes the file that somebody who was not there can read: the last run's recording, log and verdict, and what is
/// known of program, system, adapter, image and settings. No password is in it, and the image's file only where that is
/// asked for.
class ReportMaker {
public:
    static constexpr char kExtension[] = ".corvane-report";

    explicit ReportMaker(const ReportSources& sources) : s_(sources) {}

    /// A run has ended so.
    void concluded(const Outcome& outcome, const Verdict& verdict);

    /// Whether the image's file is to be in it, too.
    bool withImage = false;

    /// Whether there was a run to report.
    bool isThere() const { return !verdict_.headline.empty(); }

    /// What is in it and what is not, lines for whoever is about to pass it on.
    std::vector<std::string> contents() const;

    /// A name that tells when and where the run was.
    std::string fileName() const;

    /// The files of the report.
    std::vector<ArchivedFile> files() const;

    /// Writes them as one; the reason in words when that cannot be done.
    [[nodiscard]] std::string save(const std::string& path) const;

    /// The same in a folder, which is made when it is missing, under a name that tells when and where; that path stands
    /// in the second argument then.
    [[nodiscard]] std::string saveIn(const std::string& folder, std::string& path) const;

private:
    std::string about() const;
    std::string section() const;

    ReportSources s_;
    Outcome outcome_;
    Verdict verdict_;
    std::string time_;
    PortAdapter adapter_;
};

}  // namespace corvane
