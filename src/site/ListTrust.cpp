#include "site/ListTrust.h"

#include <filesystem>

#include "platform/files/Files.h"
#include "text/RuntimeError.h"
#include "text/Text.h"
#include "trust/Signature.h"

namespace corvane {
namespace {

/// Empty for a file that is not there.
std::string contentOf(const std::string& path) {
    try {
        return readFile(path);
    } catch (const RuntimeError&) {
        return {};
    }
}

std::string textOf(const std::optional<std::int64_t>& time) {
    return time ? "was signed on " + utcText(*time) : "does not say when it was signed";
}

}  // namespace

ListTrust::ListTrust(SignatureCheck& check, KeyPlaces places, const ProgramFolder& folder, FileStore& files)
    : check_(check), places_(std::move(places)), folder_(folder), files_(files), times_(folder.dataPath(), files) {
    begin();
}

void ListTrust::begin() { keys_ = TrustedKeys::load(places_); }

Judgement ListTrust::judge(std::string_view list, std::string_view signature) const {
    return keys_.judge(check_, list, signature, kListName);
}

Judgement ListTrust::judge(std::string_view list, std::string_view signature, const std::string& server) const {
    auto judgement = judge(list, signature);
    const auto last = times_.of(server);
    if (judgement.voucher && last && judgement.voucher->time.value_or(0) < *last) {
        judgement.fault = "it is older than the last one from " + server + ": it " + textOf(judgement.voucher->time) +
                          ", that one on " + utcText(*last);
        judgement.voucher.reset();
    }
    return judgement;
}

Judgement ListTrust::judgeStored(std::string_view list) {
    auto judgement = judge(list, contentOf(storedPath()));
    if (judgement.voucher || !FileExists(incomingPath())) return judgement;
    auto other = judge(list, contentOf(incomingPath()));
    if (!other.voucher) return judgement;
    std::error_code ignored;  // then it serves from where it lies
    std::filesystem::rename(incomingPath(), storedPath(), ignored);
    return other;
}

std::string ListTrust::storedPath() const { return folder_.resolve("\\" + std::string(kSignatureName)); }
std::string ListTrust::incomingPath() const { return storedPath() + ".new"; }

void ListTrust::settle() {
    if (!FileExists(incomingPath())) return;
    judgeStored(contentOf(folder_.resolve("\\" + std::string(kListName))));
    deleteFile(incomingPath());
}

std::string ListTrust::keep(const std::string& signature, const Voucher& voucher, const std::string& server) {
    auto problem = files_.replace(storedPath(), signature, FileStore::Named::byProgram);
    if (!problem.empty())
        return "The signature of firmware.inf could not be kept (" + problem + "): off line it will count as unsigned.";
    deleteFile(incomingPath());
    problem = times_.keep(server, voucher.time.value_or(0));
    if (problem.empty()) return {};
    return "When firmware.inf was signed could not be kept in " + times_.path() + " (" + problem +
           "): an older one would be taken for a newer one next time.";
}

}  // namespace corvane
