#include "models/Faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

#include "text/Number.h"

namespace corvane::models {
namespace {

enum class Place { none, record, reply, byte, function, rate, command };
enum class Value { none, ms, count, index, pieces, hex, text };
enum Need : bool { may = false, must = true };

struct Rule {
    FaultKind kind;
    std::string_view name;
    Place place;
    Need placeNeed;
    Value value;
    Need valueNeed;
    bool isHabit;
    std::uint32_t usual;  // the amount when no value is given
    std::string_view does;
};

constexpr std::array kRules{
    Rule{FaultKind::nak, "nak", Place::record, may, Value::none, may, false, 0, "refuses a record"},
    Rule{FaultKind::mute, "mute", Place::record, may, Value::none, may, false, 0, "stores a record, does not answer"},
    Rule{FaultKind::dots, "dots", Place::record, may, Value::count, may, false, 3,
         "says N dots, 0.3 s apart, before a record's answer"},
    Rule{FaultKind::unplug, "unplug", Place::record, may, Value::none, may, false, 0, "unplugged at a record"},
    Rule{FaultKind::eraseNak, "erase-nak", Place::none, may, Value::none, may, false, 0, "refuses to erase"},
    Rule{FaultKind::eraseMute, "erase-mute", Place::none, may, Value::none, may, false, 0, "erases, does not answer"},
    Rule{FaultKind::eraseSlow, "erase-slow", Place::none, may, Value::ms, must, true, 0, "erasing takes MS"},
    Rule{FaultKind::unplugErase, "unplug-erase", Place::none, may, Value::none, may, false, 0,
         "unplugged at the erase"},
    Rule{FaultKind::unplugRequest, "unplug-request", Place::function, may, Value::none, may, false, 0,
         "unplugged at a request"},
    Rule{FaultKind::unplugByte, "unplug-byte", Place::byte, must, Value::none, may, false, 0,
         "unplugged when byte K has come in"},
    Rule{FaultKind::corruptByte, "corrupt-byte", Place::byte, must, Value::none, may, false, 0,
         "byte K arrives changed"},
    Rule{FaultKind::dropByte, "drop-byte", Place::byte, must, Value::none, may, false, 0, "byte K never arrives"},
    Rule{FaultKind::crc, "crc", Place::function, may, Value::none, may, false, 0, "a reply with a wrong CRC"},
    Rule{FaultKind::refuse, "refuse", Place::function, must, Value::hex, may, true, 0,
         "refuses a function with these data bytes"},
    Rule{FaultKind::deaf, "deaf", Place::function, must, Value::none, may, true, 0, "does not answer a function"},
    Rule{FaultKind::noise, "noise", Place::reply, may, Value::hex, must, true, 0, "says these bytes before a reply"},
    Rule{FaultKind::pieces, "pieces", Place::reply, may, Value::pieces, must, true, 0, "a reply in N pieces, MS apart"},
    Rule{FaultKind::promptPieces, "prompt-pieces", Place::none, may, Value::ms, may, true, 20,
         "the prompt byte by byte, MS apart"},
    Rule{FaultKind::corrupt, "corrupt", Place::reply, may, Value::index, may, false, UINT32_MAX,
         "changes the byte at INDEX (the middle one) of a reply"},
    Rule{FaultKind::drop, "drop", Place::reply, may, Value::none, may, false, 0, "loses a reply"},
    Rule{FaultKind::repeat, "repeat", Place::reply, may, Value::none, may, false, 0, "says a reply twice"},
    Rule{FaultKind::delay, "delay", Place::reply, may, Value::ms, must, false, 0, "a reply MS late"},
    Rule{FaultKind::cut, "cut", Place::reply, may, Value::none, may, false, 0, "unplugged instead of a reply"},
    Rule{FaultKind::bootDeaf, "boot-deaf", Place::none, may, Value::ms, must, true, 0,
         "the boot loader hears nothing for MS after the switch"},
    Rule{FaultKind::startDeaf, "start-deaf", Place::none, may, Value::ms, must, true, 0,
         "the application hears nothing for MS after a restart"},
    Rule{FaultKind::banner, "banner", Place::none, may, Value::hex, must, true, 0,
         "the boot loader says these bytes when it starts"},
    Rule{FaultKind::babble, "babble", Place::rate, may, Value::none, may, true, 0, "never stops talking"},
    Rule{FaultKind::tarn, "tarn", Place::command, must, Value::text, must, true, 0,
         "answers a text command with this line and does nothing"},
};

/// A text on its way to a fault; every complaint names it.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    Fault fault() {
        const auto equals = text_.find('=');
        std::string_view head = text_.substr(0, equals);
        std::optional<std::string_view> value;
        if (equals != std::string_view::npos) value = text_.substr(equals + 1);
        const auto times = cutTimes(head);
        const auto at = head.find('@');
        const Rule& rule = ruleFor(head.substr(0, at));
        Fault fault;
        fault.kind = rule.kind;
        fault.times = times ? *times : rule.isHabit ? Fault::kAlways : 1;
        fault.amount = rule.usual;
        if (at != std::string_view::npos) {
            readPlace(rule, head.substr(at + 1), fault);
        } else if (rule.placeNeed == must) {
            complain("a place is missing");
        }
        if (value) {
            readValue(rule, *value, fault);
        } else if (rule.valueNeed == must) {
            complain("a value is missing");
        }
        return fault;
    }

private:
    [[noreturn]] void complain(const std::string& what) const {
        throw std::invalid_argument("fault \"" + std::string(text_) + "\": " + what);
    }

    const Rule& ruleFor(std::string_view name) const {
        const auto* rule =
            std::find_if(kRules.begin(), kRules.end(), [&](const Rule& one) { return one.name == name; });
        if (rule == kRules.end()) complain("there is no fault \"" + std::string(name) + "\"");
        return *rule;
    }

    std::uint32_t number(std::string_view digits, const char* what) const {
        std::uint32_t value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error != std::errc() || end != digits.data() + digits.size()) {
            complain(std::string(what) + " \"" + std::string(digits) + "\" is no number");
        }
        return value;
    }

    /// Takes "x2" or "x*" off the end; neither a record nor a function nor a name ends like that.
    std::optional<int> cutTimes(std::string_view& head) const {
        const auto x = head.rfind('x');
        if (x == std::string_view::npos || x + 1 == head.size()) return std::nullopt;
        const auto digits = head.substr(x + 1);
        if (digits != "*" && digits.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
        head = head.substr(0, x);
        if (digits == "*") return Fault::kAlways;
        const auto times = number(digits, "the count");
        if (times == 0 || times > 1000000) complain("a count goes from 1 to 1000000, or is \"*\"");
        return static_cast<int>(times);
    }

    void readPlace(const Rule& rule, std::string_view place, Fault& fault) const {
        switch (rule.place) {
            case Place::none:
                complain("it has no place");
            case Place::command:
                fault.text = place;
                break;
            case Place::function: {
                const auto function = hexNumber(place);
                if (!function || *function > 0xFF)
                    complain("the function \"" + std::string(place) + "\" is not 0 to ff");
                fault.number = *function;
                break;
            }
            case Place::record:
                if (!place.empty() && place.front() == ':') {
                    fault.text = place;
                    break;
                }
                [[fallthrough]];
            case Place::reply:
            case Place::byte:
            case Place::rate:
                fault.number = number(place, "the place");
                if (*fault.number == 0) complain("a place counts from 1");
        }
        if (!fault.number && fault.text.empty()) complain("the place is empty");
    }

    void readValue(const Rule& rule, std::string_view value, Fault& fault) const {
        switch (rule.value) {
            case Value::none:
                complain("it has no value");
            case Value::text:
                fault.bytes.assign(value.begin(), value.end());
                return;
            case Value::hex:
                fault.bytes = hexBytes(value);
                return;
            case Value::pieces: {
                const auto slash = value.find('/');
                fault.amount = number(value.substr(0, slash), "the number of pieces");
                if (fault.amount == 0) complain("there is at least one piece");
                if (slash != std::string_view::npos) fault.gap = number(value.substr(slash + 1), "the gap");
                return;
            }
            case Value::ms:
            case Value::count:
            case Value::index:
                fault.amount = number(value, "the value");
        }
    }

    Bytes hexBytes(std::string_view digits) const {
        Bytes bytes;
        for (std::size_t at = 0; at < digits.size(); at += 2) {
            const auto byte = hexNumber(digits.substr(at, 2));
            if (!byte || at + 1 == digits.size()) complain("bytes are written as pairs of hexadecimal digits");
            bytes.push_back(static_cast<std::uint8_t>(*byte));
        }
        return bytes;
    }

    std::string_view text_;
};

bool strikes(const Fault& fault, FaultKind kind, std::uint32_t number, std::string_view text) {
    if (fault.kind != kind || fault.times == 0) return false;
    return fault.number ? *fault.number == number : fault.text.empty() || fault.text == text;
}

constexpr std::string_view placeName(Place place) {
    switch (place) {
        case Place::none:
            return "";
        case Place::record:
            return "RECORD";
        case Place::reply:
        case Place::byte:
            return "K";
        case Place::function:
            return "FUNCTION";
        case Place::rate:
            return "BAUD";
        case Place::command:
            return "COMMAND";
    }
    return "";
}

constexpr std::string_view valueName(Value value) {
    switch (value) {
        case Value::none:
            return "";
        case Value::ms:
            return "MS";
        case Value::count:
            return "N";
        case Value::index:
            return "INDEX";
        case Value::pieces:
            return "N/MS";
        case Value::hex:
            return "HEX";
        case Value::text:
            return "LINE";
    }
    return "";
}

std::string optionally(Need need, char mark, std::string_view name) {
    std::string text(1, mark);
    text += name;
    if (need == must) return text;
    text.insert(text.begin(), '[');
    return text += ']';
}

}  // namespace

Faults::Faults(std::initializer_list<std::string_view> texts) {
    for (const auto text : texts) add(text);
}

void Faults::add(std::string_view text) { faults_.push_back(Reader(text).fault()); }

const Fault* Faults::find(FaultKind kind, std::uint32_t number, std::string_view text) const {
    const auto found = std::find_if(faults_.begin(), faults_.end(),
                                    [&](const Fault& fault) { return strikes(fault, kind, number, text); });
    return found == faults_.end() ? nullptr : &*found;
}

const Fault* Faults::strike(FaultKind kind, std::uint32_t number, std::string_view text) {
    const auto found = std::find_if(faults_.begin(), faults_.end(),
                                    [&](const Fault& fault) { return strikes(fault, kind, number, text); });
    if (found == faults_.end()) return nullptr;
    if (found->times > 0) --found->times;
    return &*found;
}

bool Faults::has(FaultKind kind) const {
    return std::any_of(faults_.begin(), faults_.end(), [kind](const Fault& fault) { return fault.kind == kind; });
}

std::string Faults::help() {
    std::string lines;
    for (const auto& rule : kRules) {
        std::string form(rule.name);
        if (rule.place != Place::none) form += optionally(rule.placeNeed, '@', placeName(rule.place));
        form += rule.isHabit ? "" : "[xN]";
        if (rule.value != Value::none) form += optionally(rule.valueNeed, '=', valueName(rule.value));
        form.resize(std::max<std::size_t>(form.size() + 1, 28), ' ');
        lines += "  " + form + std::string(rule.does) + "\n";
    }
    return lines;
}

}  // namespace corvane::models
