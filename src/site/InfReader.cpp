#include "site/InfReader.h"

#include <utility>

#include "platform/ProgramInfo.h"
#include "platform/files/Files.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {

std::string InfReader::ReadInfValue(std::string_view section, std::string_view key, std::string_view byDefault,
                                    const std::string& file) const {
    const auto path = file.empty() ? folder_.resolve("\\" + std::string(kProgramTitle) + ".INF") : file;
    try {
        return infValue(Profile(readFile(path)), section, key, byDefault);
    } catch (const RuntimeError&) {
        return std::string(byDefault);
    }
}

void InfReader::take(std::string content, std::optional<Voucher> voucher) {
    distrust_.clear();
    information_.emplace(std::move(content), std::move(voucher));
}

void InfReader::forget() {
    information_.reset();
    distrust_.clear();
    if (trust_) trust_->begin();
}

const SiteInformation* InfReader::information() {
    if (!information_ && distrust_.empty()) load();
    return information_ ? &*information_ : nullptr;
}

void InfReader::load() {
    const auto path = informationPath();
    if (!FileExists(path)) return;
    try {
        auto content = readFile(path);
        Judgement judgement;
        if (trust()) judgement = trust_->judgeStored(content);
        distrust_ = judgement.fault;
        if (distrust_.empty()) take(std::move(content), std::move(judgement.voucher));
    } catch (const RuntimeError&) {
        return;  // it has gone, or may not be read
    }
}

}  // namespace corvane
