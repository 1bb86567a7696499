#include "adapters/qt/LightHeader.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/LampDrawing.h"
#include "ui_MainWindow.h"

#include <QClipboard>
#include <QGuiApplication>

namespace vellux {

namespace {

// The kind of reports that a family takes; "" for none.
QString familyName(LightFamily family) {
    switch (family) {
    case LightFamily::FramedCode:
        return MainWindow::tr("framed colour codes");
    case LightFamily::PlainCode:
        return MainWindow::tr("plain colour codes");
    case LightFamily::Levels:
        return MainWindow::tr("red, green and blue levels");
    case LightFamily::None:
        break;
    }
    return {};
}

QString lightLine(const LightState& light) {
    switch (light.access) {
    case LightState::Access::NoLight:
        return MainWindow::tr("No light found.");
    case LightState::Access::NotPermitted:
        return MainWindow::tr("Light found, but you may not open it.");
    case LightState::Access::NotUsable:
        return MainWindow::tr("Light found, but it can't be opened.");
    case LightState::Access::Usable:
        break;
    }
    const QString strFamily = familyName(light.family);
    return strFamily.isEmpty() ? MainWindow::tr("Light found.")
                               : MainWindow::tr("Light found (%1).").arg(strFamily);
}

} // namespace

LightHeader::LightHeader(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form)
    : m_dependencies(dependencies), m_form(form), m_lamp(dependencies.mainThread, [this] { showLamp(); }),
      m_light(dependencies.mainThread, [this] { showLight(); }) {
    QObject::connect(m_form.buttonCopyRemedy, &QPushButton::clicked, &m_receiver,
                     [this] { QGuiApplication::clipboard()->setText(m_form.textFieldRemedy->text()); });
    m_observations[0] = m_dependencies.controller.lamp().observe([this] { m_lamp.ask(); });
    m_observations[1] = m_dependencies.controller.light().observe([this] { m_light.ask(); });
    showLamp();
    showLight();
}

void LightHeader::reserveRoom() {
    int nWidth = 0;
    for (const LightFamily family : {LightFamily::FramedCode, LightFamily::PlainCode, LightFamily::Levels}) {
        const QString strLine = lightLine({LightState::Access::Usable, family, 0, 0});
        nWidth = qMax(nWidth, m_form.labelLight->fontMetrics().horizontalAdvance(strLine));
    }
    m_form.labelLight->setMinimumWidth(nWidth);
}

void LightHeader::showLamp() {
    const LampState lamp = m_dependencies.controller.lamp().get();
    m_form.lampView->setLamp(lamp);
    m_form.labelLampName->setText(lampDescription(lamp));
}

void LightHeader::showLight() {
    const LightState light = m_dependencies.controller.light().get();
    const bool bToRemedy = light.access == LightState::Access::NotPermitted && m_dependencies.remedy;
    const QString strRemedy =
        bToRemedy ? QString::fromStdString(m_dependencies.remedy(light.nVendorID, light.nProductID))
                  : QString();
    m_form.labelLight->setText(lightLine(light));
    m_form.textFieldRemedy->setText(strRemedy);
    m_form.textFieldRemedy->setToolTip(strRemedy);
    m_form.textFieldRemedy->setCursorPosition(0);
    m_form.panelRemedy->setVisible(!strRemedy.isEmpty());
}

} // namespace vellux
