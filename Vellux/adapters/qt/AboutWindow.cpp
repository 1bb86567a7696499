#include "adapters/qt/AboutWindow.h"

#include "adapters/qt/WindowActions.h"
#include "model/Colour.h"
#include "ui_AboutDialog.h"

namespace vellux {

AboutWindow::AboutWindow(WindowController& controller, const std::function<void()>& openLink)
    : m_controller(controller) {
    Ui::AboutDialog form;
    form.setupUi(this);
    form.emblem->setLamp({kColourGreen, false});
    form.labelName->setFont(headingFont(font()));
    form.labelVersion->setText(tr("Version %1").arg(QStringLiteral(VELLUX_VERSION)));
    connect(form.buttonWebSite, &QPushButton::clicked, this, openLink);
    connect(form.buttonClose, &QPushButton::clicked, this, &QDialog::reject);
    m_controller.windowDidLoad();
}

void AboutWindow::makeKeyAndOrderFront() {
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
