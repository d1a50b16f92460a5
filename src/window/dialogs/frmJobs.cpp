#include "window/dialogs/frmJobs.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "window/widgets/DialogLayout.h"
#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {
namespace {

constexpr std::size_t kMostJobs = 200;

QTableWidget* makeTable(const std::vector<std::string>& lines) {
    const QStringList heads = {QObject::tr("Time"),         QObject::tr("Port"),    QObject::tr("Device before"),
                               QObject::tr("Device after"), QObject::tr("Image"),   QObject::tr("SHA-256"),
                               QObject::tr("Repeated"),     QObject::tr("Verdict"), QObject::tr("Signed by")};
    auto* table = named(new QTableWidget(static_cast<int>(lines.size()), static_cast<int>(heads.size())), "tabJobs",
                        QObject::tr("Last jobs"), QObject::tr("A line for each run, the newest first"));
    table->setHorizontalHeaderLabels(heads);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setTabKeyNavigation(false);
    table->setCornerButtonEnabled(false);
    table->setWordWrap(false);
    table->setToolTip({});  // would cover the lines
    table->verticalHeader()->hide();
    for (int row = 0; row < table->rowCount(); ++row) {
        const auto fields = jobFields(lines[static_cast<std::size_t>(row)]);
        for (int column = 0; column < table->columnCount() && column < static_cast<int>(fields.size()); ++column) {
            const auto text = QString::fromStdString(fields[static_cast<std::size_t>(column)]);
            auto* item = new QTableWidgetItem(text);
            item->setToolTip(plainToolTip(text));
            table->setItem(row, column, item);
        }
    }
    constexpr int kWidest = 180, kDigest = 5, kDigestWidth = 90;
    table->resizeColumnsToContents();
    for (int column = 0; column < table->columnCount(); ++column)
        table->setColumnWidth(column, std::min(table->columnWidth(column), column == kDigest ? kDigestWidth : kWidest));
    return table;
}

}  // namespace

frmJobs::frmJobs(const JobRecord& jobs, QWidget* owner) : QDialog(owner) {
    named(this, "frmJobs");
    setWindowTitle(tr("Last Jobs"));
    auto* labRecord = new QLabel(tr("All of them: %1").arg(fromPath(jobs.path())));
    labRecord->setTextFormat(Qt::PlainText);
    labRecord->setWordWrap(true);
    labRecord->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    named(buttons->button(QDialogButtonBox::Close), "cmdCancel", tr("Close"), tr("Closes the list"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(makeTable(jobs.last(kMostJobs)), 1);
    layout->addWidget(labRecord);
    layout->addWidget(buttons);
    resizeOnScreen(*this, {760, 360});
}

}  // namespace corvane
