#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "face/Progress.h"
#include "image/Image.h"
#include "protocol/AnswerClock.h"
#include "protocol/LineReader.h"
#include "protocol/SendPlan.h"

namespace corvane {

/// Sends an Intel HEX image to a boot loader, a record at a time, each acknowledged.
///
/// An answer is one byte and does not say which record it is for. It is taken for the last one's when nothing else can
/// be owed: each record was answered once, none of the answers came with another one, before its record can have
/// crossed the line, or much later than this device needs. In a run without faults that is every record, and nothing is
/// sent or waited for beyond the given dialogue.
///
/// After anything else (a silence, a refusal, an answer at the wrong time, one too many) the line is left alone until
/// it has been silent for 1.5 s, so that nothing is owed any more. Then the record is sent again, and that answer is
/// proof. Records are stored where they say, so a repeated one does no harm; when the answers may have been out of
/// step, the record before it is repeated too. What that cannot mend ends the try, and mustEraseAgain tells how the
/// next one has to begin: a boot loader that has restarted (it says its prompt unasked; behind the first 64 KiB a
/// silence is enough) has forgotten the upper address and whatever it had not written yet, and a record that was heard
/// twice may have been written behind an address record that came between.
///
/// A line that is seen to double answers or to hold them back (a stray) may do so again unseen, just when a record is
/// lost. Then the whole image is sent once more before its last record, which is sent with nothing owed: chance would
/// have to strike the same record twice. A lone refusal, a lone loss and a slow device cost nothing of the kind. Once
/// anything has gone wrong on a line, it is also left silent before each address record, and before the end record of
/// an image of several segments: a record that is heard again behind one of those lands in the wrong place.
///
/// What nothing on the line shows: a boot loader that restarts without a word, within the first 64 KiB, and had part of
/// a page in a buffer (the record lost in it is repeated, the rest of the page is not); a record that the device hears
/// twice in a row while it never hears the next one; a second copy of a record or an answer, the first stray of the
/// run, that comes so late that its answer falls, by chance, into the 0.1 s behind another record whose own answer does
/// not come; such a copy of a record that is heard behind an address record while its answer is lost, when nothing
/// has gone wrong before; and one that is heard behind the end record while the restart is held back or spoilt, when
/// its answer is damaged too: one odd byte is what many devices say as they start. Each looks like an answer that took
/// a little longer, or like nothing at all.
class HexProgrammer {
public:
    HexProgrammer(DeviceSession& session, Progress& progress, Digest& digest)
        : session_(session),
          lines_(session),
          clock_(session.runtime),
          progress_(progress),
          digest_(digest),
          eraseEcho_(session.runtime) {}

    /// Programs an image, all of its ":" lines. False when a record failed three times or a runtime error occurred,
    /// whose description the log shows; nothing is sent after that. Opens no file.
    [[nodiscard]] bool ISP_Program(const Image& image);

    /// Programs an image file, read now. A file that cannot be read is the runtime error "File not found".
    [[nodiscard]] bool ISP_Program(const std::string& HexFile);

    /// Sends one record with up to three tries, logging them with bShowCode. Passes the port's errors on.
    [[nodiscard]] bool ProgramHex(const std::string& code, bool bShowCode);

    /// Whether nothing has come in after the last record counted as taken; to be asked a moment after ISP_Program.
    bool isQuiet();

    /// Whether what the last try has seen leaves the memory in doubt, so that only an erase makes a clean start.
    bool mustEraseAgain() const { return mustErase_; }

    /// Whether an answer that comes after the last record may mean harm: a command or record that was heard a second
    /// time, in another place than it belongs or after all others.
    bool mayBeDisturbed() { return isBeyond_ || !eraseEcho_.IsTimeout(); }

    /// The device has just acknowledged an erase that took so many ms. Had it heard the command twice, it would erase
    /// again, and answer again, within about that time.
    void erased(std::int32_t milliseconds);

    /// Records that had to be sent more than once since the last call of beginDevice.
    int repeatedRecords() const { return repeated_; }

    /// Another device follows: nothing is known of it yet. The rate says nothing about time behind a port without a
    /// line.
    void beginDevice(bool hasLine = true);

private:
    /// What came of sending a record once.
    enum class Found {
        taken,
        refused,
        silent,
        late,      ///< one answer, at a time when it may be another record's
        extra,     ///< more answers than records, or one that came too early: out of step
        prompted,  ///< the prompt, where an answer was due
        restarted,
    };

    bool sendImage(std::string_view content);
    bool sendStep(const SendStep& step);
    bool place(std::string_view address);
    bool mayRepeat() const;
    bool mayBeBehindEcho() const;
    bool isClear();
    bool mayGoOn();
    bool startOver();
    Found attempt(const std::string& code);
    void expectAnswer();
    void showProgress();
    bool isAskedFor() const;
    Found judge(std::uint8_t answer);
    Found judgeSettled(std::uint8_t answer);
    Found settle(Found found);

    DeviceSession& session_;
    LineReader lines_;
    AnswerClock clock_;
    Progress& progress_;
    Digest& digest_;
    clsTimeout eraseEcho_;  // runs as long as an erase that was heard twice may still be answered a second time
    int repeated_ = 0;
    std::optional<std::string> place_ =
        "";                        // the address record that the device works with; nothing when that is unknown
    bool isBegun_ = false;         // this try has sent a record
    bool isBeyond_ = false;        // and led the device out of the first segment
    bool isAnswered_ = false;      // some record of it was answered
    bool isSettled_ = false;       // nothing is owed
    bool wasSettled_ = false;      // when the last record was sent
    bool isEchoPossible_ = false;  // the last record was sent while a second erase might have been going on
    bool countsUnsent_ = true;     // unless the port reports bytes as unsent whose answer is there
    bool mustErase_ = false;
    bool looksAwake_ = true;  // for answers that are due
    bool hasStrays_ = false;  // this line has been seen to double answers or to hold them back
    bool isUneven_ = false;   // a record did not go well the first time
    bool isSecond_ = false;   // the image is being sent once more
    int doubts_ = 0;
    std::int64_t size_ = 0, shown_ = 0;       // of the image, and of that what the progress shows
    std::optional<std::int64_t> progressed_;  // what it does not show yet
    int lateTries_ = 0;                       // that ended with an answer that came late, behind the first segment
    Found last_ = Found::taken;
};

}  // namespace corvane
