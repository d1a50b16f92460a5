#pragma once

#include "app/ReportMaker.h"
#include "window/dialogs/FileDialogs.h"

namespace corvane {

/// Says what is in the report of the last run, asks where it shall lie, and saves it there. What went wrong, or where
/// it lies, a sentence to show; empty when the operator gave up.
QString saveReport(QWidget& window, const ReportMaker& reports, FileDialogs& files);

}  // namespace corvane
