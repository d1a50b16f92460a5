#include "app/Updater.h"

namespace corvane {

Updater::Updater(const Platform& platform, const Face& face)
    : platform_(platform),
      serialPort_(platform.ports),
      session_(platform.runtime, face.log, serialPort_),
      query_(session_),
      scanner_(session_, serialPort_, hidPort_, face.password, face.panel),
      isp_(session_, face.password),
      programmer_(session_, face.progress),
      inf_(platform.profile, platform.folder),
      ftp_(platform.reader, platform.runtime),
      site_(ftp_, platform.reader, platform.runtime, choices, platform.settings, platform.folder, face.log,
            face.progress),
      selfUpdate_(inf_, platform.folder, site_, face.prompts),
      selection_(choices, platform.folder, platform.settings, face.prompts, face.log),
      run_({choices, session_, serialPort_, hidPort_, scanner_, isp_, programmer_, query_, site_, selfUpdate_,
            selection_, inf_, platform.folder, platform.launcher, reader_, face.view}) {
    serialPort_.Attach(&platform_.serial, &commEvent_);
    serialPort_.InputMode(1);
    serialPort_.CommPort("COM1");
}

Updater::~Updater() { shutDown(); }

void Updater::shutDown() {
    if (serialPort_.PortOpen()) serialPort_.PortOpen(false);
    if (hidPort_.PortOpen()) hidPort_.PortOpen(false);
    if (site_.isConnected()) site_.disconnect();
}

}  // namespace corvane
