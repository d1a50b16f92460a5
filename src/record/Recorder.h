#pragma once

#include "platform/Platform.h"
#include "record/RecordedFace.h"
#include "record/RecordedReader.h"
#include "record/RecordedSerial.h"

namespace corvane {

/// Watches a run from all sides: lends the workflow a platform and a face that take down what crosses them. Whoever
/// gave the real ones owns them.
class Recorder {
public:
    Recorder(const Platform& platform, const Face& face)
        : tape(platform.runtime),
          serial_(platform.serial, tape),
          reader_(platform.reader, tape),
          face_(face, tape),
          platform_(platform) {}

    Platform platform() {
        const auto& p = platform_;
        return {p.runtime, serial_,     p.ports,      p.modules,    reader_,     p.settings,
                p.folder,  p.launcher,  p.digest,     p.inspector,  p.inhibitor, p.power,
                p.files,   p.processes, p.hidLibrary, p.signatures, p.keys};
    }
    Face face() { return face_.face(); }

    Tape tape;

private:
    RecordedSerial serial_;
    RecordedReader reader_;
    RecordedFace face_;
    Platform platform_;
};

}  // namespace corvane
