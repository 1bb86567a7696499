#include "adapters/qt/FilesLine.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/WindowActions.h"
#include "support/Files.h"
#include "ui_MainWindow.h"

namespace vellux {

FilesLine::FilesLine(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form)
    : m_dependencies(dependencies), m_form(form) {
    // Also after an alert that the press has opened.
    QObject::connect(
        m_form.buttonConnect, &QPushButton::clicked, &m_receiver, [this] { look(); }, Qt::QueuedConnection);
    look();
}

void FilesLine::look() {
    QStringList lines, plain;
    for (const auto& [strPath, bCredentials] : VelluxWindowUi::settingsFiles(m_dependencies.strDirectory)) {
        if (isWritable(strPath))
            continue;
        const QString strLine = bCredentials
                                    ? MainWindow::tr("Your sign-in will not be kept: %1 can't be written.")
                                    : MainWindow::tr("Your settings will not be kept: %1 can't be written.");
        const QString strName = QString::fromStdString(strPath);
        lines.append(strLine.arg(breakable(strName)));
        plain.append(strLine.arg(strName));
    }
    m_form.labelFiles->setText(lines.join(QLatin1Char('\n')));
    m_form.labelFiles->setAccessibleName(plain.join(QLatin1Char('\n')));
    m_form.labelFiles->setVisible(!lines.isEmpty());
}

} // namespace vellux
