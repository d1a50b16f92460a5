#include "window/dialogs/Help.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "platform/ProgramInfo.h"
#include "window/widgets/DialogLayout.h"
#include "window/widgets/Naming.h"
#include "window/widgets/ProgramIcon.h"

namespace corvane {
namespace {

constexpr char kManual[] = R"(
<h2>Updating a device</h2>
<ol>
<li><b>Connect the device</b> and switch it on. Its port shows under "Which device" as soon as it is plugged in. A port that
cannot be opened says why.</li>
<li><b>Say what to install.</b> On line: the maker's site, with the account that you have from the maker. Off line: what was
fetched earlier, or a file of your own; you can drop it on the window.</li>
<li><b>Press the large button.</b> The device is looked for at every port and rate, and asked what it is. Nothing on it changes
until you have agreed to a version. Whatever is unusual stands in that question.</li>
<li><b>Wait.</b> From the erase to the end the device has no firmware that works: do not unplug it, and do not switch anything
off. Cancel is not offered in that time, and closing the window waits.</li>
<li><b>Read the end.</b> "The device is updated" is said when every byte is in the device and it runs.</li>
</ol>
<h2>When something went wrong</h2>
<p>The window says what the device is now, and what to do. A device that was left in its boot loader is not lost: connect it,
leave it powered, and press <b>Rescue</b>. The program remembers such a device until it is well, also when the computer was
switched off meanwhile.</p>
<p><b>Force ISP</b> takes a device that sits in its boot loader and cannot say what it is. Choose the image that is made for it.</p>
<p><b>Save report</b> writes one file for whoever has to find the cause: every byte with its time, the log and what was said, and
no password.</p>
<h2>Many devices of one kind</h2>
<p>Tick <b>Then the next one</b>. After a device is updated, take it off and connect the next one; it is updated in the same way
without further questions. The first failure ends it, and Cancel does.</p>
<h2>Without a device</h2>
<p>Help, <b>Rehearse an update</b> shows the whole way with a simulated device. Nothing of it is kept.</p>
<h2>Keys</h2>
<table cellpadding="3">
<tr><td>Return</td><td>what the large button says</td></tr>
<tr><td>Esc</td><td>Cancel</td></tr>
<tr><td>Ctrl+S</td><td>saves the log</td></tr>
<tr><td>F1</td><td>this page</td></tr>
<tr><td>Ctrl+Q</td><td>ends the program</td></tr>
</table>
)";

QString tr(const char* text) { return QObject::tr(text); }

/// A page with a button that closes it.
void showPage(QWidget* owner, const char* name, const QString& title, const QString& html, QSize size) {
    QDialog page(owner);
    named(&page, name);
    page.setWindowTitle(title);
    auto* text = named(new QTextBrowser, "txtPage", title);
    text->setOpenExternalLinks(false);
    text->setOpenLinks(false);
    text->setTabChangesFocus(true);
    text->setHtml(html);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    named(buttons->button(QDialogButtonBox::Close), "cmdCancel", tr("Close"), tr("Closes the page"));
    QObject::connect(buttons, &QDialogButtonBox::rejected, &page, &QDialog::reject);
    auto* layout = new QVBoxLayout(&page);
    layout->addWidget(text, 1);
    layout->addWidget(buttons);
    resizeOnScreen(page, size);
    page.exec();
}

}  // namespace

void showManual(QWidget* owner) { showPage(owner, "frmManual", tr("Manual"), kManual, {620, 520}); }

void showAbout(QWidget* owner) {
    const auto html =
        QString("<h2>%1 %2</h2><p>%3</p><p>%4</p><p>%5</p>")
            .arg(kProgramTitle, QString::fromStdString(programVersion()),
                 tr("Updates the firmware of small devices on serial ports and behind USB readers."),
                 tr("Copyright 2026 the Corvane authors. MIT license: everybody may use, change and pass it on; there "
                    "is no warranty."),
                 tr("It stands on Qt %1, libcurl, hidapi, libudev, libzip, libsodium and libsecret, each under its own "
                    "license.")
                     .arg(qVersion()));
    showPage(owner, "frmAbout", tr("About %1").arg(kProgramTitle), html, {460, 260});
}

}  // namespace corvane
