#include "adapters/qt/LightHeader.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/LampDrawing.h"
#include "ui_MainWindow.h"

#include <QClipboard>
#include <QGuiApplication>

namespace vellux {

namespace {

// What a light of the family can do; "" for none.
QString abilities(LightFamily family) {
    int nColours = 0;
    for (std::int32_t nColor = 0; nColor < kColourOff; ++nColor)
        nColours += canShow(nColor, family) ? 1 : 0;
    if (nColours == 0)
        return {};
    return takesCodes(family) ? MainWindow::tr("%1 colours").arg(nColours)
                              : MainWindow::tr("%1 colours, flashes by itself").arg(nColours);
}

QString lampWords(LightState::Access access, const LampState& lamp) {
    switch (access) {
    case LightState::Access::NoLight:
        return MainWindow::tr("No light");
    case LightState::Access::NotPermitted:
    case LightState::Access::NotUsable:
        return MainWindow::tr("No usable light");
    case LightState::Access::Usable:
        break;
    }
    return lampDescription(lamp);
}

QString lightLine(const LightState& light, const LampState& lamp) {
    switch (light.access) {
    case LightState::Access::NoLight:
        return lamp.nColor == kColourOff
                   ? MainWindow::tr("No light found.")
                   : MainWindow::tr("No light found. It would be %1.").arg(lampDescription(lamp).toLower());
    case LightState::Access::NotPermitted:
        return MainWindow::tr("Light found, but you may not open it.");
    case LightState::Access::NotUsable:
        return MainWindow::tr("Light found, but it can't be opened.");
    case LightState::Access::Usable:
        break;
    }
    const QString strAbilities = abilities(light.family);
    return strAbilities.isEmpty() ? MainWindow::tr("Light found.")
                                  : MainWindow::tr("Light found (%1).").arg(strAbilities);
}

// Vendor and product, as other tools write them; "" without a light.
QString usbIds(const LightState& light) {
    if (light.access == LightState::Access::NoLight)
        return {};
    return MainWindow::tr("USB %1:%2")
        .arg(light.nVendorID, 4, 16, QLatin1Char('0'))
        .arg(light.nProductID, 4, 16, QLatin1Char('0'));
}

} // namespace

LightHeader::LightHeader(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form)
    : m_dependencies(dependencies), m_form(form), m_update(dependencies.mainThread, [this] { show(); }) {
    QObject::connect(m_form.buttonCopyRemedy, &QPushButton::clicked, &m_receiver,
                     [this] { QGuiApplication::clipboard()->setText(m_form.textFieldRemedy->text()); });
    m_observations[0] = m_dependencies.controller.lamp().observe([this] { m_update.ask(); });
    m_observations[1] = m_dependencies.controller.light().observe([this] { m_update.ask(); });
    show();
}

void LightHeader::reserveRoom() {
    const auto width = [this](const LightState& light, const LampState& lamp) {
        return m_form.labelLight->fontMetrics().horizontalAdvance(lightLine(light, lamp));
    };
    int nWidth = 0;
    for (const LightFamily family : {LightFamily::FramedCode, LightFamily::PlainCode, LightFamily::Levels})
        nWidth = qMax(nWidth, width({LightState::Access::Usable, family, 0, 0}, {}));
    for (std::int32_t nColor = 0; nColor < kColourOff; ++nColor)
        nWidth = qMax(nWidth, width({}, {nColor, /*bFlashing=*/true}));
    m_form.labelLight->setMinimumWidth(nWidth);
}

void LightHeader::show() {
    const LightState light = m_dependencies.controller.light().get();
    const LampState lamp = m_dependencies.controller.lamp().get();
    const QString strWords = lampWords(light.access, lamp);
    const bool bUsable = light.access == LightState::Access::Usable;
    m_form.lampView->setLamp(bUsable ? lamp : LampState(), strWords);
    m_form.labelLampName->setText(strWords);
    m_form.labelLight->setText(lightLine(light, lamp));
    m_form.labelLight->setToolTip(usbIds(light));
    showRemedy(light);
}

void LightHeader::showRemedy(const LightState& light) {
    const bool bToRemedy = light.access == LightState::Access::NotPermitted && m_dependencies.remedy;
    const QString strRemedy =
        bToRemedy ? QString::fromStdString(m_dependencies.remedy(light.nVendorID, light.nProductID))
                  : QString();
    if (strRemedy == m_form.textFieldRemedy->text() && strRemedy.isEmpty() == m_form.panelRemedy->isHidden())
        return; // a selection in it stays
    m_form.textFieldRemedy->setText(strRemedy);
    m_form.textFieldRemedy->setToolTip(strRemedy);
    m_form.textFieldRemedy->setCursorPosition(0);
    m_form.panelRemedy->setVisible(!strRemedy.isEmpty());
}

} // namespace vellux
