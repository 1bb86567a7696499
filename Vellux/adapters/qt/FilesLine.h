// A line that says when what the user sets can't be kept.
#pragma once

#include "adapters/qt/MainWindow.h"

#include <QObject>

namespace Ui {
class MainWindow;
}

namespace vellux {

/// Looks whether the settings files can be written: when it is made, and after each press on Connect. It only
/// looks; whoever writes them goes on without asking. Main thread; destroyed before the form's widgets.
class FilesLine {
public:
    FilesLine(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form);
    FilesLine(const FilesLine&) = delete;
    FilesLine& operator=(const FilesLine&) = delete;

private:
    void look();

    const MainWindow::Dependencies m_dependencies;
    Ui::MainWindow& m_form;
    QObject m_receiver;
};

} // namespace vellux
