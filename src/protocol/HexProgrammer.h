#pragma once

#include <string>
#include <string_view>

#include "face/Progress.h"
#include "image/Image.h"
#include "protocol/LineReader.h"

namespace corvane {

/// Sends an Intel HEX image to a boot loader, a record at a time, each acknowledged. The record at address 0 of the
/// first 64 KiB goes after the others of that segment, the end record last of all: a device that loses its power half
/// way then has no valid start and stays in its boot loader.
///
/// Answers carry no number. A late or doubled one puts answers and records out of step, which does no harm until a
/// record is refused: the refusal would then be taken for another record's, and the image would lack one. So a refusal
/// counts only when it comes alone, after its record was sent, and silence follows it; any other fails the whole try,
/// which is repeated from the first record.
class HexProgrammer {
public:
    HexProgrammer(DeviceSession& session, Progress& progress, Digest& digest)
        : session_(session), lines_(session), progress_(progress), digest_(digest) {}

    /// Programs an image, all of its ":" lines. False when a record failed three times or a runtime error occurred,
    /// whose description the log shows; nothing is sent after that. Opens no file.
    bool ISP_Program(const Image& image);

    /// Programs an image file, read now. A file that cannot be read is the runtime error "File not found".
    bool ISP_Program(const std::string& HexFile);

    /// Sends one record with up to three tries, logging them with bShowCode. Passes the port's errors on.
    bool ProgramHex(const std::string& code, bool bShowCode);

    /// Whether a refusal has come in after the last record counted as taken; to be asked a moment after ISP_Program.
    bool isRefusalLeft();

    /// Records that had to be sent more than once since the last call of beginDevice.
    int repeatedRecords() const { return repeated_; }

    /// Another device follows: nothing is known of it yet.
    void beginDevice() {
        repeated_ = 0;
        deviceUpper_ = 0;
    }

private:
    enum class Answer { none, accepted, refused, unclear };

    struct Held {
        std::string first;  ///< the record at address 0; empty when none is held
        std::string end;
    };

    bool sendImage(std::string_view image);
    bool takeRecord(const std::string& line, std::uint32_t& upper, Held& held);
    bool sendHeld(std::string& record);
    bool send(const std::string& line, std::uint32_t type);
    Answer awaitAnswer();
    bool isAnotherAnswerComing();

    DeviceSession& session_;
    LineReader lines_;
    Progress& progress_;
    Digest& digest_;
    int repeated_ = 0;
    std::uint32_t deviceUpper_ = 0;  // the upper address that the device may still work with
    bool isPlaced_ = false;          // this try has told the device where its first record goes
    bool wasSilent_ = false;         // some answer of this try was late or lost
};

}  // namespace corvane
