#pragma once

#include <map>
#include <string>
#include <vector>

#include "report/Dialogue.h"

namespace corvane {

/// Sentences by the time at which what they tell of struck, and by its kind; the same words count, and of a kind only
/// the first few are told.
class FindingList {
public:
    void add(std::int64_t at, const std::string& kind, const std::string& words);

    std::vector<std::string> lines() const;

private:
    struct Finding {
        std::string kind, words;
        int times;
    };

    std::multimap<std::int64_t, Finding> found_;
};

/// The first bytes of what came, as a recording writes them.
std::string shortened(const std::string& bytes);

/// Whether this is the boot loader's prompt, or ends in it.
bool hasPrompt(const std::string& answer);

/// Whether a command of text is this one. "X" is two of them: the way into the boot loader, and there the erase.
bool isCommand(const Exchange& exchange, char command);

/// What went wrong between the boot loader's first prompt and the application's start.
void findInBootLoader(const std::vector<Exchange>& dialogue, FindingList& list);

}  // namespace corvane
