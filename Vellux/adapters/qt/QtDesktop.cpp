#include "adapters/qt/QtDesktop.h"

#include "adapters/qt/AboutWindow.h"
#include "adapters/qt/MainWindow.h"

#include <QDesktopServices>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

#include <utility>

namespace vellux {

namespace {

constexpr int kAlertLetters = 52; // a line of an alert that is easy to read

QFont boldFont(QFont font) {
    font.setBold(true);
    return font;
}

// Gives the box the alert's texts, as plain text.
void describe(QMessageBox& box, const Alert& alert) {
    const QString strTitle = QString::fromStdString(alert.strMessageText);
    box.setWindowModality(Qt::ApplicationModal);
    box.setWindowFlag(Qt::WindowStaysOnTopHint); // never below an About window that it blocks
    box.setIcon(QMessageBox::Information);
    box.setWindowTitle(strTitle);
    box.setText(strTitle);
    box.setInformativeText(QString::fromStdString(alert.strInformativeText));
    for (QLabel* const pLabel : box.findChildren<QLabel*>()) {
        pLabel->setTextFormat(Qt::PlainText);
        if (pLabel->text() == strTitle)
            pLabel->setFont(boldFont(pLabel->font()));
        if (pLabel->text().isEmpty())
            continue;                                       // the icon's
        const QFontMetrics metrics = pLabel->fontMetrics(); // a box makes its labels as narrow as it can
        pLabel->setMinimumWidth(qMin(metrics.horizontalAdvance(pLabel->text()) + metrics.maxWidth() / 2,
                                     kAlertLetters * metrics.averageCharWidth()));
    }
    for (const std::string& strButton : alert.buttons)
        box.addButton(QString::fromStdString(strButton).replace(QLatin1String("&"), QLatin1String("&&")),
                      QMessageBox::AcceptRole);
    if (const auto buttons = box.buttons(); !buttons.isEmpty()) {
        box.setDefaultButton(qobject_cast<QPushButton*>(buttons.front()));
        box.setEscapeButton(buttons.back());
    }
}

} // namespace

QtDesktop::QtDesktop(MainWindow& window, Dependencies dependencies)
    : m_window(window), m_dependencies(std::move(dependencies)) {}

std::int32_t QtDesktop::runModal(const Alert& alert) {
    if (m_bEnding)
        return kAlertFirstButtonReturn;
    // No parent that is hidden: the alert would be hidden with it.
    const bool bSeen = m_window.isVisible() && !m_window.isMinimized();
    QMessageBox box(bSeen ? &m_window : nullptr);
    describe(box, alert);
    m_openAlerts.push_back(&box);
    box.exec();
    std::erase(m_openAlerts, &box);
    const auto nButton = static_cast<std::int32_t>(box.buttons().indexOf(box.clickedButton()));
    return kAlertFirstButtonReturn + (nButton > 0 ? nButton : 0);
}

Window* QtDesktop::mainWindow() {
    return &m_window;
}

std::unique_ptr<Window> QtDesktop::loadWindow(std::string_view strDescription, WindowController& controller) {
    if (strDescription != "AboutDialog")
        return nullptr;
    return std::make_unique<AboutWindow>(controller, m_window, m_dependencies.openWebSite);
}

void QtDesktop::openUrl(const std::string& strUrl) {
    const QUrl url(QString::fromStdString(strUrl));
    const QString strShown = url.isLocalFile() ? url.toLocalFile() : url.toDisplayString();
    if (url.isLocalFile() && !QFile::exists(strShown))
        m_window.setNotice(MainWindow::tr("There is no %1 on this computer.").arg(strShown));
    else if (!QDesktopServices::openUrl(url))
        m_window.setNotice(MainWindow::tr("No program could be found that opens %1.").arg(strShown));
    else
        m_window.setNotice({});
}

void QtDesktop::terminate() {
    if (std::exchange(m_bEnding, true))
        return;
    for (QMessageBox* const pAlert : m_openAlerts)
        pAlert->reject();
    m_dependencies.end();
}

std::optional<ProcessActivity> QtDesktop::beginActivityWithOptions(std::uint64_t,
                                                                   const std::string& strReason) {
    return m_dependencies.beginActivity ? m_dependencies.beginActivity(strReason) : std::nullopt;
}

} // namespace vellux
