#include "adapters/qt/PlaceholderLineEdit.h"

#include <QFontMetrics>
#include <QInputMethodEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFrame>

namespace vellux {

namespace {
constexpr int kTextMargin = 2; // what QLineEdit itself leaves at both sides of its text
// Room for it is there before a line has one, so that lines are equally high, and nothing moves later.
const Placeholder kLargest = {"", "Helvetica-Oblique", 13};
} // namespace

void PlaceholderLineEdit::setPlaceholder(const std::optional<Placeholder>& placeholder) {
    if (placeholder == m_placeholder)
        return;
    m_placeholder = placeholder;
    describe();
    updateGeometry();
    update();
}

void PlaceholderLineEdit::setHint(const QString& strHint) {
    m_strHint = strHint;
    describe();
}

void PlaceholderLineEdit::describe() {
    QString strText = m_strHint;
    if (strText.isEmpty() && m_placeholder)
        strText = tr("For example %1").arg(QString::fromStdString(m_placeholder->strText));
    if (strText != accessibleDescription()) // each change is announced
        setAccessibleDescription(strText);
}

QFont PlaceholderLineEdit::fontOf(const Placeholder& placeholder) {
    const QString strName = QString::fromStdString(placeholder.strFontName);
    const QString strStyle = strName.section(QLatin1Char('-'), 1);
    QFont font(strName.section(QLatin1Char('-'), 0, 0));
    font.setItalic(strStyle.contains(QLatin1String("Oblique")) || strStyle.contains(QLatin1String("Italic")));
    font.setBold(strStyle.contains(QLatin1String("Bold")));
    if (placeholder.dPointSize > 0)
        font.setPointSizeF(placeholder.dPointSize);
    return font;
}

QColor PlaceholderLineEdit::colourOf(const Placeholder& placeholder, const QColor& ground) {
    const bool bDark = ground.lightnessF() < 0.5F;
    const auto component = [bDark](double dValue) { return static_cast<float>(bDark ? 1 - dValue : dValue); };
    return QColor::fromRgbF(component(placeholder.dRed), component(placeholder.dGreen),
                            component(placeholder.dBlue), static_cast<float>(placeholder.dAlpha));
}

QSize PlaceholderLineEdit::withPlaceholder(QSize size) const {
    const int nHeight = QFontMetrics(fontOf(m_placeholder.value_or(kLargest)), this).height();
    size.rheight() += qMax(0, nHeight - fontMetrics().height());
    return size;
}

QSize PlaceholderLineEdit::sizeHint() const {
    return withPlaceholder(QLineEdit::sizeHint());
}

QSize PlaceholderLineEdit::minimumSizeHint() const {
    return withPlaceholder(QLineEdit::minimumSizeHint());
}

void PlaceholderLineEdit::inputMethodEvent(QInputMethodEvent* pEvent) {
    m_bComposing = !pEvent->preeditString().isEmpty();
    QLineEdit::inputMethodEvent(pEvent);
}

void PlaceholderLineEdit::paintEvent(QPaintEvent* pEvent) {
    QLineEdit::paintEvent(pEvent);
    if (!m_placeholder || !displayText().isEmpty() || m_bComposing)
        return;
    QStyleOptionFrame option;
    initStyleOption(&option);
    QRect area = style()->subElementRect(QStyle::SE_LineEditContents, &option, this);
    area = area.marginsRemoved(textMargins()).adjusted(kTextMargin, 0, -kTextMargin, 0);
    const QFont font = fontOf(*m_placeholder);
    const QString strText =
        QFontMetrics(font, this)
            .elidedText(QString::fromStdString(m_placeholder->strText), Qt::ElideRight, area.width());
    QPainter painter(this);
    painter.setFont(font);
    painter.setPen(colourOf(*m_placeholder, palette().color(QPalette::Base)));
    painter.drawText(area, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip,
                     strText);
}

} // namespace vellux
