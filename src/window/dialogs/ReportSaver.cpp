#include "window/dialogs/ReportSaver.h"

#include <QMessageBox>
#include <QPushButton>

#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {
namespace {

QString tr(const char* text) { return QObject::tr(text); }

bool agrees(QWidget& window, const ReportMaker& reports) {
    QMessageBox box(QMessageBox::Information, tr("Save Report"), tr("What is in the report"),
                    QMessageBox::Save | QMessageBox::Cancel, &window);
    named(&box, "frmReport");
    QStringList lines;
    for (const auto& line : reports.contents()) lines.append(QString::fromStdString(line));
    box.setInformativeText(lines.join('\n'));
    box.setDefaultButton(QMessageBox::Save);
    box.button(QMessageBox::Save)->setObjectName("cmdOK");
    box.button(QMessageBox::Cancel)->setObjectName("cmdCancel");
    return box.exec() == QMessageBox::Save;
}

}  // namespace

QString saveReport(QWidget& window, const ReportMaker& reports, FileDialogs& files) {
    if (!agrees(window, reports)) return {};
    const auto path = files.placeFor(QString::fromStdString(reports.fileName()));
    if (path.isEmpty()) return {};
    const auto problem = reports.save(toPath(path));
    return problem.empty() ? tr("The report lies in %1.").arg(path)
                           : tr("The report could not be saved: %1.").arg(QString::fromStdString(problem));
}

}  // namespace corvane
