#include "window/Look.h"

#include <QApplication>
#include <QPalette>

namespace vellux::simulator {

namespace {

QPalette darkPalette() {
    const QColor ground(0x46, 0x48, 0x4d);
    const QColor text(0xe6, 0xe6, 0xe6);
    const QColor disabled(0x98, 0x9a, 0x9e);
    QPalette palette(ground.lighter(115), ground);
    palette.setColor(QPalette::Base, QColor(0x2c, 0x2d, 0x31));
    palette.setColor(QPalette::AlternateBase, ground);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, disabled);
    }
    palette.setColor(QPalette::Highlight, QColor(0x35, 0x74, 0xd6));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x6c, 0xa8, 0xff));
    return palette;
}

} // namespace

void prepareLook(Look look) {
    if (look == Look::Large)
        qputenv("QT_SCALE_FACTOR", "2");
}

void applyLook(Look look) {
    if (look == Look::Native)
        return;
    QApplication::setStyle("Fusion");
    if (look == Look::Dark)
        QApplication::setPalette(darkPalette());
}

} // namespace vellux::simulator
