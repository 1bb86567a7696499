// A hint below each field of the sign-in that looks wrong.
#pragma once

#include "adapters/qt/MainWindow.h"
#include "threads/CoalescedUpdate.h"
#include "threads/Observers.h"

#include <QObject>

namespace Ui {
class MainWindow;
}

namespace vellux {

/// Shows the hints as long as Connect can be pressed, and gives them to screen readers as the field's
/// description. Changes nothing else. Main thread; destroyed after the last thread that writes the Connect
/// button has ended, and before the form's widgets.
class FieldHintLines {
public:
    FieldHintLines(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form);
    FieldHintLines(const FieldHintLines&) = delete;
    FieldHintLines& operator=(const FieldHintLines&) = delete;

private:
    void show();

    const MainWindow::Dependencies m_dependencies;
    Ui::MainWindow& m_form;
    CoalescedUpdate m_update;
    Observation m_observation;
    QObject m_receiver;
};

} // namespace vellux
