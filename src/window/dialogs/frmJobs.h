#pragma once

#include <QDialog>

#include "run/JobRecord.h"

namespace corvane {

/// The last lines of the record of jobs, the newest first.
class frmJobs : public QDialog {
public:
    frmJobs(const JobRecord& jobs, QWidget* owner);
};

}  // namespace corvane
