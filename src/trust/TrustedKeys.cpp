#include "trust/TrustedKeys.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/files/Files.h"
#include "text/RuntimeError.h"
#include "text/Text.h"
#include "trust/Signature.h"

namespace corvane {
namespace {

constexpr std::string_view kEnding = ".pub";

}  // namespace

std::string signedText(const Voucher& voucher) {
    const auto when = voucher.time ? ", on " + utcText(*voucher.time) : std::string();
    return "Signed by " + voucher.name + ", key " + voucher.keyId + when + ".";
}

TrustedKeys TrustedKeys::load(const KeyPlaces& places) {
    TrustedKeys all;
    if (!places.makerKey.empty()) all.take("maker", places.makerKey, "the key that this program was built with");
    for (const auto& folder : places.folders) {
        std::error_code error;
        const std::filesystem::directory_iterator entries(folder, error);
        if (error && error != std::errc::no_such_file_or_directory)
            all.problems_.push_back("The folder of keys " + folder + " cannot be read: " + error.message() + ".");
        auto names = filesIn(folder);
        std::sort(names.begin(), names.end());
        for (const auto& name : names) {
            if (!name.ends_with(kEnding)) continue;
            const auto path = folder + "/" + name;
            const auto shown = onOneLine(name.substr(0, name.size() - kEnding.size()));
            try {
                all.take(shown, readFile(path), path);
            } catch (const RuntimeError&) {
                all.problems_.push_back("The key " + path + " cannot be read.");
            }
        }
    }
    return all;
}

void TrustedKeys::take(const std::string& name, std::string_view text, const std::string& place) {
    std::string why;
    if (auto key = PublicKey::parse(text, why)) {
        keys_.push_back({name, std::move(*key)});
    } else {
        problems_.push_back("The key " + place + " cannot be used: " + why + ".");
    }
}

Judgement TrustedKeys::judge(SignatureCheck& check, std::string_view content, std::string_view signature,
                             std::string_view fileName) const {
    if (signature.empty()) return {{}, "it is not signed"};
    std::string why;
    const auto parsed = Signature::parse(signature, why);
    if (!parsed) return {{}, "its signature is damaged: " + why};
    Judgement judgement{{}, unknownKey(parsed->keyId)};
    for (const auto& [name, key] : keys_) {
        if (key.id != parsed->keyId) continue;
        const bool isContent = parsed->isGenuine(check, key, content);
        const bool isComment = parsed->isCommentGenuine(check, key);
        const auto other = isComment ? onOneLine(parsed->fileName()) : std::string();
        if (!other.empty() && other != fileName) {
            judgement.fault = "its signature is that of another file, " + other;
        } else if (isContent && isComment) {
            return {Voucher{name, key.id, parsed->signedAt()}, {}};
        } else if (isContent) {
            judgement.fault = "its signature was changed after " + name + " had made it";
        } else if (isComment) {
            judgement.fault = "it is not what " + name + " signed: it, or its signature, was replaced or changed";
        } else {
            judgement.fault = "its signature is not " + name + "'s, or was changed: it only names that key";
        }
    }
    return judgement;
}

std::string TrustedKeys::unknownKey(const std::string& id) const {
    std::vector<std::string> names;
    for (const auto& [name, key] : keys_) names.push_back(name + " " + key.id);
    const auto known = names.empty() ? "no key that can be used is known here"
                                     : "those that are known here are " + joined(names, ", ");
    return "it is signed with the unknown key " + id + "; " + known;
}

}  // namespace corvane
