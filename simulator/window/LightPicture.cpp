#include "window/LightPicture.h"

#include <QPainter>
#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <string_view>

namespace vellux::simulator {

namespace {

struct ColourRow {
    std::string_view strName;
    QRgb rgb;
};

constexpr std::array<ColourRow, 8> kColours = {{
    {"Red", 0xFFE02020},
    {"Green", 0xFF20B040},
    {"Yellow", 0xFFF0C020},
    {"Purple", 0xFF9030C0},
    {"Cyan", 0xFF20C8D8},
    {"Blue", 0xFF2050E0},
    {"White", 0xFFFAFAF0},
    {"Orange", 0xFFF08020},
}};

struct SpeedRow {
    std::string_view strName;
    int nHalfPeriod; // ms
};

constexpr std::array<SpeedRow, 4> kSpeeds = {{{"slow", 750}, {"medium", 350}, {"fast", 100}, {"unset", 350}}};

QColor colourOf(const std::string& strName) {
    if (strName.starts_with('#'))
        return QColor(QString::fromStdString(strName));
    const auto* const row = std::find_if(kColours.begin(), kColours.end(),
                                         [&](const ColourRow& each) { return each.strName == strName; });
    return row != kColours.end() ? QColor(row->rgb) : QColor(0x38, 0x38, 0x3C);
}

} // namespace

LightPicture::LightPicture(QWidget* parent) : QWidget(parent) {
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setSizePolicy(policy);
    connect(&m_half, &QTimer::timeout, this, [this] {
        m_bDarkHalf = !m_bDarkHalf;
        update();
    });
}

void LightPicture::setState(const LightState& state) {
    if (state == m_state)
        return;
    m_state = state;
    m_bDarkHalf = false;
    const auto* const row = std::find_if(kSpeeds.begin(), kSpeeds.end(), [&](const SpeedRow& each) {
        return each.strName == state.strFlashing;
    });
    if (row != kSpeeds.end())
        m_half.start(row->nHalfPeriod);
    else
        m_half.stop();
    setAccessibleName(QString::fromStdString("Light: " + state.text()));
    update();
}

QSize LightPicture::sizeHint() const {
    const int nSide = 9 * fontMetrics().height();
    return {nSide, nSide};
}

void LightPicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal dSide = 0.9 * std::min(width(), height());
    const QRectF disc(QPointF((width() - dSide) / 2, (height() - dSide) / 2), QSizeF(dSide, dSide));
    const QColor colour = colourOf(m_bDarkHalf ? "None" : m_state.strColour);
    QRadialGradient shine(disc.center() - QPointF(dSide / 6, dSide / 6), dSide * 0.65);
    shine.setColorAt(0, colour.lighter(150));
    shine.setColorAt(1, colour);
    painter.setBrush(shine);
    painter.setPen(QPen(palette().color(QPalette::Mid), dSide / 40));
    painter.drawEllipse(disc);
}

} // namespace vellux::simulator
