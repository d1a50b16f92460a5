#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/Variant.h"

namespace corvane::models {

/// What can go wrong. Where one says "place", it strikes at that place, or anywhere when none is given.
enum class FaultKind {
    nak,            ///< a record is refused; place: its number or its text
    mute,           ///< a record is stored and not answered; place as above
    dots,           ///< so many dots come, 0.3 s apart, before a record's answer; place as above
    unplug,         ///< unplugged when a record has come in; place as above
    eraseNak,       ///< an erase is refused
    eraseMute,      ///< an erase is done and not answered
    eraseSlow,      ///< an erase takes so many ms
    unplugErase,    ///< unplugged when the erase command has come in
    unplugRequest,  ///< unplugged when a request has come in; place: its function
    unplugByte,     ///< unplugged when a byte has come in; place: its number
    corruptByte,    ///< a byte arrives changed; place: its number
    dropByte,       ///< a byte never arrives; place: its number
    crc,            ///< a reply's CRC is wrong; place: the function
    refuse,         ///< a function is refused with these data bytes; place: the function
    deaf,           ///< a function gets no answer; place: the function
    noise,          ///< these bytes come before a reply; place: the reply's number
    pieces,         ///< a reply comes in so many pieces, so many ms apart; place: the reply's number
    promptPieces,   ///< the prompt comes byte by byte, so many ms apart
    corrupt,        ///< a byte of a reply (its index, else the middle one) is changed; place: the reply's number
    drop,           ///< a reply is lost; place: its number
    repeat,         ///< a reply comes twice; place: its number
    delay,          ///< a reply is so many ms late; place: its number
    cut,            ///< unplugged instead of a reply; place: its number
    bootDeaf,       ///< the boot loader hears nothing for so many ms after the switch
    startDeaf,      ///< the application hears nothing for so many ms after a restart
    banner,         ///< the boot loader says these bytes when it starts
    babble,         ///< talks without end; place: the only host rate at which it does
    tarn,           ///< another line answers a text command, which then does nothing; place: the command
};

/// One fault as it was ordered.
struct Fault {
    static constexpr int kAlways = -1;

    FaultKind kind = FaultKind::nak;
    std::optional<std::uint32_t>
        number;                ///< the place: a record's, reply's or byte's number from 1, a function, a rate
    std::string text;          ///< the place: a record's or command's text
    int times = 1;             ///< how often it still strikes
    std::uint32_t amount = 0;  ///< ms, pieces, dots, or an index
    std::uint32_t gap = 0;     ///< ms between pieces
    Bytes bytes;               ///< noise, banner, data, or a line
};

/// The faults of one device, each written NAME[@PLACE][xTIMES][=VALUE], for example "nak@5x2", "delay@7=300",
/// "refuse@1f=e4", "noise=fe80", "pieces=3/50"; TIMES may be "*". A fault without TIMES strikes once when it is an
/// event (a record refused, a reply lost) and always when it is a habit (noise, pieces, a slow erase).
class Faults {
public:
    Faults() = default;

    /// Throws like add.
    Faults(std::initializer_list<std::string_view> texts);

    /// Throws std::invalid_argument with what is wrong with the text.
    void add(std::string_view text);
    void add(Fault fault) { faults_.push_back(std::move(fault)); }

    /// The fault that strikes at this place, counted as having struck; null when none does. Valid until the next add.
    const Fault* strike(FaultKind kind, std::uint32_t number = 0, std::string_view text = {});

    /// The same without counting.
    const Fault* find(FaultKind kind, std::uint32_t number = 0, std::string_view text = {}) const;

    /// Whether there is one of this kind, wherever it strikes.
    bool has(FaultKind kind) const;

    /// One line for each kind: how it is written and what it does.
    static std::string help();

private:
    std::vector<Fault> faults_;
};

}  // namespace corvane::models
