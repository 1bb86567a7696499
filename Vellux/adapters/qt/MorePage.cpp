#include "adapters/qt/MorePage.h"

#include "adapters/qt/WindowActions.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace vellux {

namespace {

QCheckBox* addBox(QVBoxLayout& layout, const char* strName, const QString& strText) {
    auto* const pBox = new QCheckBox(strText);
    pBox->setObjectName(QLatin1String(strName));
    layout.addWidget(pBox);
    return pBox;
}

QLabel* addTrouble(QVBoxLayout& layout, const char* strName) {
    auto* const pLabel = new QLabel;
    pLabel->setObjectName(QLatin1String(strName));
    pLabel->setTextFormat(Qt::PlainText);
    pLabel->setWordWrap(true);
    pLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    pLabel->hide();
    layout.addWidget(pLabel);
    return pLabel;
}

// What is wrong is also what a screen reader says of the box.
void say(QLabel& label, const QString& strText, std::initializer_list<QCheckBox*> boxes) {
    label.setText(strText);
    label.setVisible(!strText.isEmpty());
    for (QCheckBox* const pBox : boxes)
        pBox->setAccessibleDescription(strText);
    if (QWidget& dialog = *label.window(); dialog.isVisible())
        dialog.adjustSize();
}

} // namespace

MorePage::MorePage(QWidget& window, Dependencies dependencies)
    : QDialog(&window), m_dependencies(std::move(dependencies)),
      m_update(m_dependencies.mainThread, [this] { showChoices(); }) {
    setObjectName(QStringLiteral("MorePage"));
    setWindowTitle(tr("More"));
    auto* const pLayout = new QVBoxLayout(this);
    m_pReconnect = addBox(*pLayout, "buttonReconnectByItself", tr("&Reconnect by itself"));
    m_pLightOff = addBox(*pLayout, "buttonLightOffUnreached",
                         tr("&Light off while the server is not reached for more than a minute"));
    m_pChoicesTrouble = addTrouble(*pLayout, "labelChoicesTrouble");
    m_pAutostart = addBox(*pLayout, "buttonAutostart", tr("&Start at login, hidden"));
    m_pAutostartTrouble = addTrouble(*pLayout, "labelAutostartTrouble");
    pLayout->addStretch();
    auto* const pButtons = new QDialogButtonBox;
    QPushButton* const pClose = pButtons->addButton(tr("&Close"), QDialogButtonBox::RejectRole);
    pClose->setDefault(true);
    pLayout->addWidget(pButtons);
    connect(pButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    addChoice(&Choices::bReconnect, m_pReconnect);
    addChoice(&Choices::bLightOffWhenNotReached, m_pLightOff);
    connect(m_pAutostart, &QCheckBox::clicked, this, &MorePage::setAutostart);
    m_observation = m_dependencies.choicesFile.choices().observe([this] { m_update.ask(); });
}

void MorePage::addChoice(bool Choices::*choice, QCheckBox* pBox) {
    connect(pBox, &QCheckBox::clicked, this, [this, choice](bool bOn) {
        m_dependencies.choicesFile.choices().update([&](Choices& choices) { choices.*choice = bOn; });
    });
}

void MorePage::setAutostart(bool bOn) {
    const auto strTrouble = m_dependencies.autostart.setOn(bOn);
    m_pAutostart->setChecked(m_dependencies.autostart.isOn());
    say(*m_pAutostartTrouble,
        strTrouble ? tr("%1 can't be written: %2.")
                         .arg(QString::fromStdString(m_dependencies.autostart.strPath),
                              QString::fromStdString(*strTrouble))
                   : QString(),
        {m_pAutostart});
}

void MorePage::showChoices() {
    ChoicesFile& file = m_dependencies.choicesFile;
    const Choices choices = file.choices().get();
    m_pReconnect->setChecked(choices.bReconnect);
    m_pLightOff->setChecked(choices.bLightOffWhenNotReached);
    say(*m_pChoicesTrouble,
        file.isStored() ? QString()
                        : tr("This holds until Vellux ends: %1 can't be written.").arg(file.path()),
        {m_pReconnect, m_pLightOff});
}

void MorePage::present() {
    showChoices();
    m_pAutostart->setChecked(m_dependencies.autostart.isOn());
    say(*m_pAutostartTrouble, {}, {m_pAutostart});
    if (!isVisible())
        adjustSize();
    bringToFront(*this);
}

} // namespace vellux
