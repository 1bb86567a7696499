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
    QStringList lines; // a path has one of its own, as it can't be broken
    for (const auto& [strPath, bCredentials] : VelluxWindowUi::settingsFiles(m_dependencies.strDirectory)) {
        if (isWritable(strPath))
            continue;
        lines.append(bCredentials ? MainWindow::tr("Your sign-in will not be kept. This can't be written:")
                                  : MainWindow::tr("Your settings will not be kept. This can't be written:"));
        lines.append(QString::fromStdString(strPath));
    }
    m_form.labelFiles->setText(lines.join(QLatin1Char('\n')));
    m_form.labelFiles->setVisible(!lines.isEmpty());
}

} // namespace vellux
