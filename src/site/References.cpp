#include "site/References.h"

#include <algorithm>

#include "platform/files/Files.h"
#include "settings/StoredSettings.h"
#include "text/Cp1252.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// "mailto:" and the like; a path that looks so is taken for one, too.
bool hasScheme(std::string_view text) {
    const auto end = text.find_first_of(":/");
    return end != std::string_view::npos && text[end] == ':' && kLetters.find(text.front()) != std::string_view::npos;
}

bool isWebAddress(std::string_view text) {
    for (const std::string_view scheme : {"http://", "https://"}) {
        if (!startsWithNoCase(text, scheme) || text.size() == scheme.size()) continue;
        return text[scheme.size()] != '/' && std::all_of(text.begin(), text.end(), [](char c) {
                   return c > ' ' && c < 0x7F && c != '"' && c != '\\';
               });
    }
    return false;
}

/// What a kind of file is called, and what it begins with; nothing for a text, which holds no NUL.
struct Shown {
    std::string_view ending, start;
};
constexpr Shown kShown[] = {{".txt", ""},
                            {".htm", ""},
                            {".html", ""},
                            {".pdf", "%PDF-"},
                            {".png", "\x89PNG"},
                            {".jpg", "\xFF\xD8\xFF"},
                            {".jpeg", "\xFF\xD8\xFF"},
                            {".gif", "GIF8"},
                            {".bmp", "BM"}};

}  // namespace

ReferenceKind referenceKind(std::string_view target) {
    if (isWebAddress(target)) return ReferenceKind::web;
    if (target.empty() || hasScheme(target) || onOneLine(std::string(target)) != target) return ReferenceKind::none;
    return isSafeFileName(toUtf8(lastPart(target))) ? ReferenceKind::file : ReferenceKind::none;
}

bool isShowable(std::string_view name, std::string_view content) {
    for (const auto& [ending, start] : kShown) {
        const bool isCalledSo =
            name.size() > ending.size() && equalsNoCase(name.substr(name.size() - ending.size()), ending);
        if (!isCalledSo) continue;
        if (!start.empty()) return content.starts_with(start);
        return content.find('\0') == std::string_view::npos && !content.starts_with("#!");
    }
    return false;
}

References::Opened References::open(const std::string& target) {
    switch (referenceKind(target)) {
        case ReferenceKind::none:
            return {};
        case ReferenceKind::web:
            return {launcher_.open(target)};
        case ReferenceKind::file:
            break;
    }
    const auto path = target.starts_with('/') ? target : "/" + target;
    if (!StoredSettings(settings_).handsOverAddresses()) return fetch(path);
    Address address{choices_.userName, choices_.password, {}, 0, path};
    address.server(choices_.server);
    const auto fault = address.fault();
    return {fault.empty() ? launcher_.open(address.link()) : fault};
}

void References::setFetching(bool isFetching) {
    isFetching_ = isFetching;
    if (onFetching) onFetching();
}

References::Opened References::fetch(const std::string& path) {
    if (isFetching_) return {"another one is being fetched"};
    const auto folder = folder_.privateFolder();
    if (folder.empty()) return {"no folder could be made for it in " + folder_.dataPath()};
    const auto file = folder + "/" + toUtf8(lastPart(path));
    setFetching(true);
    const bool isFetched = site_.fetchReference(path, file);
    setFetching(false);
    if (!isFetched) return {site_.failure().words};
    try {
        if (isShowable(file, readFile(file))) return {launcher_.open(file)};
    } catch (const RuntimeError& error) {
        return {error.what()};
    }
    return {{}, file};
}

}  // namespace corvane
