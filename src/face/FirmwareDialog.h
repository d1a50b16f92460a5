#pragma once

#include <string>
#include <vector>

#include "face/FirmwareRecord.h"
#include "face/OperatorPrompts.h"

namespace corvane {

/// A version text as one number that sorts as versions do: V5.10R1 is 5.10001, above V5.9R1 at 5.09001.
double versionValue(std::string_view text);

/// The step from a device's version to an image's in words: "from V5.1R23 to V5.2R1, a newer version"; empty when one
/// of the texts holds no version.
std::string versionStep(std::string_view deviceVersion, std::string_view imageVersion);

/// The selection of an image: what it shows, which entry is preselected, and what a choice leads to. A face shows it
/// and calls select and ok; texts in Windows-1252. Owns nothing but its texts.
class FirmwareDialog {
public:
    struct Entry {
        std::string text;  ///< as the list shows it: "*" for another product, section, " - ", product
        FirmwareRecord record;
        bool isMarked() const { return !text.empty() && text.front() == '*'; }
    };

    struct Verdict {
        std::string text;
        bool isWarning = false;  ///< shown in red
    };

    /// How the selected entry stands to the device, for the eye.
    struct Comparison {
        enum class Kind { none, newer, same, older, otherProduct, unknown };

        Kind kind = Kind::none;
        std::string from, to;  ///< the versions; "?" where a text holds none
        std::string words;     ///< "a newer version"
    };

    FirmwareDialog(std::string port, std::string deviceVersion, const std::string& szROMList, bool isForced,
                   bool isFirmwareNotFound, const std::string& lastSection);

    /// The lines about the device that stand above the list, whatever it says of itself.
    std::string header() const;
    const std::vector<Entry>& entries() const { return entries_; }
    int selected() const { return selected_; }  ///< -1 when nothing is
    void select(int index);

    /// Lists only the entries whose text holds this one, in any case. An entry that is listed alone is selected; one
    /// that is listed no more is not selected any longer, and none takes its place.
    void find(std::string_view text);

    /// The entries that are listed, by their index; all of them before the first search.
    const std::vector<int>& found() const { return found_; }

    /// The selected entry's place among those that are listed, -1 when nothing is selected.
    int selectedPlace() const;

    std::string details() const;
    Verdict verdict() const;

    /// The step from the device's version to the selected entry's, in words.
    std::string step() const;
    Comparison comparison() const;

    /// The product that the selected entry says it is made for, or "unknown".
    std::string madeFor() const;

    /// What is unusual about the selected entry on this device, a sentence each; the question says it.
    std::vector<std::string> cautions() const;

    /// Who answers for the entries, in short and in full; both empty where nobody is asked for that.
    void vouching(const std::string& brief, const std::string& full) {
        vouching_ = brief;
        vouchingInFull_ = full;
    }
    const std::string& vouching() const { return vouching_; }

    /// Asks the question and, when the answer is OK, closes the dialog with the selected entry chosen.
    void ok(OperatorPrompts& prompts);

    bool isChosen() const { return chosen_; }

    /// Section name, blank, version of the chosen entry.
    std::string result() const;

private:
    int preselected(const std::string& lastSection) const;
    const Entry& entry() const { return entries_[static_cast<std::size_t>(selected_)]; }
    const FirmwareRecord& current() const { return entry().record; }

    std::string port_;
    std::string deviceVersion_;
    bool isFirmwareNotFound_;
    std::vector<Entry> entries_;
    std::vector<int> found_;
    int selected_ = -1;
    bool chosen_ = false;
    std::string vouching_, vouchingInFull_;
};

}  // namespace corvane
