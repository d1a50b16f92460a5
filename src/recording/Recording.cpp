#include "recording/Recording.h"

#include <algorithm>
#include <charconv>

#include "text/Number.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr char kHead[] = "corvane-recording 1";
constexpr std::size_t kChunk = 65536;
constexpr std::int64_t kLongest = 1000000000000000;  // microseconds, some thirty years

/// What and where are words of these, so that nothing in them commands a terminal.
bool isOfWords(char c) { return c > 0x20 && c < 0x7F; }

std::optional<std::string> unescaped(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != ' ' && !isOfWords(text[i])) return std::nullopt;
        if (text[i] != '\\') {
            bytes += text[i];
            continue;
        }
        if (i + 3 >= text.size() || text[i + 1] != 'x') return std::nullopt;
        const auto value = hexNumber(text.substr(i + 2, 2));
        if (!value) return std::nullopt;
        bytes += static_cast<char>(*value);
        i += 3;
    }
    return bytes;
}

std::optional<RecordedEvent> eventOf(std::string_view line) {
    RecordedEvent event;
    const auto* end = line.data() + line.size();
    const auto [after, error] = std::from_chars(line.data(), end, event.at);
    if (error != std::errc() || event.at < 0 || event.at > kLongest || after == end || *after != ' ')
        return std::nullopt;
    auto rest = line.substr(static_cast<std::size_t>(after - line.data()) + 1);
    for (auto* word : {&event.what, &event.where}) {
        const auto blank = std::min(rest.find(' '), rest.size());
        *word = rest.substr(0, blank);
        if (word->empty() || !std::all_of(word->begin(), word->end(), isOfWords)) return std::nullopt;
        rest.remove_prefix(std::min(blank + 1, rest.size()));
    }
    auto bytes = unescaped(rest);
    if (!bytes) return std::nullopt;
    event.bytes = std::move(*bytes);
    return event;
}

}  // namespace

std::string escapedBytes(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F && c != '\\') {
            text += c;
        } else {
            text += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return text;
}

void Recording::clear() {
    chunks_.clear();
    size_ = forgotten_ = 0;
}

std::string_view Recording::add(const RecordedEvent& event) {
    auto where = event.where;
    std::replace_if(
        where.begin(), where.end(), [](char c) { return !isOfWords(c); }, '_');
    std::string line = std::to_string(event.at) + " " + event.what + " " + where;
    if (!event.bytes.empty()) line += " " + escapedBytes(event.bytes);
    line += '\n';
    if (chunks_.empty() || chunks_.back().size() + line.size() > kChunk) {
        chunks_.emplace_back();
        chunks_.back().reserve(kChunk);
    }
    size_ += line.size();
    chunks_.back() += line;
    while (size_ > most_ && chunks_.size() > 1) {
        size_ -= chunks_.front().size();
        forgotten_ += chunks_.front().size();
        chunks_.pop_front();
    }
    return std::string_view(chunks_.back()).substr(chunks_.back().size() - line.size());
}

std::string Recording::text() const {
    std::string text = std::string(kHead) + "\n";
    if (forgotten_) text += "0 forgotten - " + std::to_string(forgotten_) + "\n";
    for (const auto& chunk : chunks_) text += chunk;
    return text;
}

std::optional<std::vector<RecordedEvent>> parseRecording(std::string_view text, std::string& why) {
    std::vector<RecordedEvent> events;
    Lines lines(text);
    std::string_view line;
    if (!lines.next(line) || line != kHead) {
        why = "does not begin like a recording";
        return std::nullopt;
    }
    for (std::size_t number = 2; lines.next(line); ++number) {
        auto event = eventOf(line);
        if (!event) {
            why = "is damaged: line " + std::to_string(number) + " of the recording is none";
            return std::nullopt;
        }
        events.push_back(std::move(*event));
    }
    return events;
}

}  // namespace corvane
