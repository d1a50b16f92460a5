#include "report/Dialogue.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "text/Number.h"

namespace corvane {
namespace {

using Kind = Exchange::Kind;

constexpr char kStart = 0x01, kAck = 0x06, kNak = 0x15;

std::uint32_t hexAt(const std::string& text, std::size_t at, std::size_t digits) {
    return at + digits <= text.size() ? hexNumber(std::string_view(text).substr(at, digits)).value_or(0) : 0;
}

Kind kindOf(const std::string& sent) {
    if (sent.empty()) return Kind::nothing;
    if (sent.front() == kStart) return Kind::request;
    if (sent.front() == ':') return Kind::record;
    return sent == "\r" ? Kind::carriageReturn : Kind::command;
}

std::string hexByte(char c) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    return {kDigits[byte >> 4], kDigits[byte & 15]};
}

std::string functionName(char function) {
    switch (function) {
        case 0x00:
            return "asks whether a login is wanted";
        case 0x01:
            return "asks for the version";
        case 0x03:
            return "gives the password";
        case 0x04:
            return "ends the session";
        case 0x1F:
            return "tells it to go into its boot loader";
        default:
            return "asks function " + hexByte(function);
    }
}

}  // namespace

std::int64_t Exchange::wireTime() const {
    constexpr std::int64_t kBitsOfMillion = 10LL * 1000000;  // ten bits a byte, in microseconds
    return rate ? static_cast<std::int64_t>(sent.size() + 1) * kBitsOfMillion / rate : 0;
}

std::vector<Exchange> dialogueOf(const std::vector<RecordedEvent>& events, const std::string& port) {
    std::vector<Exchange> all;
    std::uint32_t rate = 0, upper = 0;
    std::set<std::pair<std::uint32_t, std::string>> records;  // since the last erase
    for (const auto& event : events) {
        if (event.where != port) continue;
        if (event.what == "open" || event.what == "line") {
            rate = static_cast<std::uint32_t>(std::strtoul(event.bytes.c_str(), nullptr, 10));
        } else if (event.what == "sent" || event.what == "sent-secret") {
            Exchange exchange;
            exchange.kind = event.what == "sent" ? kindOf(event.bytes) : Kind::secret;
            exchange.at = event.at;
            exchange.rate = rate;
            exchange.sent = event.bytes;
            if (exchange.kind == Kind::command) records.clear();
            if (exchange.kind == Kind::record) {
                const auto type = hexAt(event.bytes, 7, 2);
                if (type == 4) upper = hexAt(event.bytes, 9, 4) << 16;
                if (type == 2) upper = hexAt(event.bytes, 9, 4) << 4;
                exchange.address = upper + hexAt(event.bytes, 3, 4);
                exchange.isRepeated = !records.insert({upper, event.bytes}).second;
            }
            all.push_back(std::move(exchange));
        } else if (event.what == "got" || event.what == "dropped") {
            if (all.empty()) all.emplace_back().at = event.at;
            auto& exchange = all.back();
            if (!exchange.firstAt) exchange.firstAt = event.at;
            exchange.lastAt = event.at;
            exchange.answer += event.bytes;
        }
    }
    return all;
}

std::string describedRequest(const Exchange& exchange) {
    const auto& sent = exchange.sent;
    switch (exchange.kind) {
        case Kind::request:
            return sent.size() > 3 ? functionName(sent[2]) : "a request that was cut";
        case Kind::secret:
            return "gives a password, which is left out";
        case Kind::carriageReturn:
            return "a carriage return: asks for the boot loader's prompt";
        case Kind::command:
            return "command " + escapedBytes(sent);
        case Kind::nothing:
            return "(nothing was sent)";
        case Kind::record:
            break;
    }
    char place[16];
    std::snprintf(place, sizeof place, "%08X", exchange.address);
    const auto type = hexAt(sent, 7, 2);
    if (type == 1) return "the end record";
    if (type != 0) return "record of type " + std::to_string(type);
    return "record at " + std::string(place) + ", " + std::to_string(hexAt(sent, 1, 2)) + " bytes" +
           (exchange.isRepeated ? ", again" : "");
}

std::string describedAnswer(const std::string& bytes) {
    if (bytes.empty()) return "silence";
    if (bytes == std::string(1, kAck)) return "ACK";
    if (bytes == std::string(1, kNak)) return "NAK";
    const auto start = bytes.find(kStart);
    if (start != std::string::npos && bytes.size() >= start + 6) {
        const bool isAccepted = bytes[start + 2] == kAck;
        const auto count =
            std::min<std::size_t>(static_cast<unsigned char>(bytes[start + 3]), bytes.size() - start - 4);
        const auto data = escapedBytes(std::string_view(bytes).substr(start + 4, count));
        return std::string("reply: ") + (isAccepted ? "accepted" : "refused") + (data.empty() ? "" : ", " + data) +
               (start ? ", behind " + escapedBytes(std::string_view(bytes).substr(0, start)) : "");
    }
    return escapedBytes(bytes);
}

}  // namespace corvane
