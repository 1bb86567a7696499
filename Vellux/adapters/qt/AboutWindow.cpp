#include "adapters/qt/AboutWindow.h"

#include "adapters/qt/LampDrawing.h"
#include "adapters/qt/WindowActions.h"
#include "model/Colour.h"
#include "ui_AboutDialog.h"

#include <QWindow>

namespace vellux {

AboutWindow::AboutWindow(WindowController& controller, QWidget& mainWindow,
                         const std::function<void()>& openLink)
    : m_controller(controller), m_mainWindow(mainWindow) {
    Ui::AboutDialog form;
    form.setupUi(this);
    form.emblem->setLamp({kColourGreen, false}, lampDescription({kColourGreen, false}));
    form.labelName->setFont(headingFont(font()));
    form.labelVersion->setText(tr("Version %1").arg(QStringLiteral(VELLUX_VERSION)));
    connect(form.buttonWebSite, &QPushButton::clicked, this, openLink);
    connect(form.buttonClose, &QPushButton::clicked, this, &QDialog::reject);
    m_controller.windowDidLoad();
}

// Above the main window wherever a window can't ask to be above all. Not its child: the controller owns it.
void AboutWindow::makeKeyAndOrderFront() {
    winId(); // makes what has a transient parent
    windowHandle()->setTransientParent(m_mainWindow.windowHandle());
    if (!isVisible() && m_mainWindow.isVisible()) {
        adjustSize();
        move(m_mainWindow.frameGeometry().center() - rect().center());
    }
    bringToFront(*this);
}

void AboutWindow::orderOut() {
    hide();
}

void AboutWindow::setLevel(WindowLevel level) {
    setWindowLevel(*this, level);
}

void AboutWindow::done(int nResult) {
    if (m_controller.windowShouldClose(this))
        QDialog::done(nResult);
}

} // namespace vellux
