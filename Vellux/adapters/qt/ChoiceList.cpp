#include "adapters/qt/ChoiceList.h"

#include <QAbstractItemView>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QWheelEvent>

namespace vellux {

namespace {

constexpr int kLetters = 8;
constexpr float kGrey = 0.7F; // of the text's colour; the rest is the ground's

QColor grey(const QPalette& palette) {
    const QColor text = palette.color(QPalette::ButtonText);
    const QColor ground = palette.color(QPalette::Button);
    const auto mixed = [](float flText, float flGround) { return kGrey * flText + (1 - kGrey) * flGround; };
    return QColor::fromRgbF(mixed(text.redF(), ground.redF()), mixed(text.greenF(), ground.greenF()),
                            mixed(text.blueF(), ground.blueF()));
}

} // namespace

ChoiceList::ChoiceList(QWidget* pParent) : QComboBox(pParent) {
    setFocusPolicy(Qt::StrongFocus); // the wheel does not bring the focus
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(kLetters);
}

void ChoiceList::setInForce(const QString& strText, const QIcon& icon) {
    m_strInForce = strText;
    m_inForce = icon;
    setAccessibleDescription(currentIndex() >= 0 || strText.isEmpty() ? QString()
                                                                      : tr("In force: %1").arg(strText));
    update();
}

void ChoiceList::showPopup() {
    view()->setMinimumWidth(view()->sizeHintForColumn(0) + 2 * view()->fontMetrics().averageCharWidth());
    QComboBox::showPopup();
}

void ChoiceList::wheelEvent(QWheelEvent* pEvent) {
    if (hasFocus())
        QComboBox::wheelEvent(pEvent);
    else
        pEvent->ignore(); // scrolls what the list stands in
}

void ChoiceList::paintEvent(QPaintEvent* pEvent) {
    if (currentIndex() >= 0) {
        QComboBox::paintEvent(pEvent);
        return;
    }
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.currentText = m_strInForce.isEmpty() ? placeholderText() : m_strInForce;
    option.currentIcon = m_inForce;
    QStylePainter painter(this);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    if (isEnabled())
        for (const auto role : {QPalette::ButtonText, QPalette::Text, QPalette::WindowText})
            option.palette.setColor(role, grey(option.palette));
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

} // namespace vellux
