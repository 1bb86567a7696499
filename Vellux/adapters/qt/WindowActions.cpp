#include "adapters/qt/WindowActions.h"

#include <QApplication>
#include <QRegularExpression>

namespace vellux {

namespace {
constexpr qreal kHeadingScale = 1.5;
} // namespace

void bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
    alertToFront();
}

bool alertToFront() {
    QWidget* const pAlert = QApplication::activeModalWidget();
    if (pAlert == nullptr)
        return false;
    pAlert->raise();
    pAlert->activateWindow();
    return true;
}

void setWindowLevel(QWidget& window, WindowLevel level) {
    const bool bOnTop = level == WindowLevel::ModalPanel;
    if (window.windowFlags().testFlag(Qt::WindowStaysOnTopHint) == bOnTop)
        return;
    const bool bVisible = window.isVisible();
    window.setWindowFlag(Qt::WindowStaysOnTopHint, bOnTop); // hides it
    window.setVisible(bVisible);
}

QString breakable(QString strText) {
    static const QRegularExpression separator(QStringLiteral("([/\\\\@])"));
    return strText.replace(separator, QStringLiteral("\\1\u200b"));
}

QFont headingFont(QFont font) {
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * kHeadingScale);
    else
        font.setPixelSize(qRound(font.pixelSize() * kHeadingScale));
    font.setBold(true);
    return font;
}

} // namespace vellux
