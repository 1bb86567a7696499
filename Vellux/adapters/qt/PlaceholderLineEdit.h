// A line to type into, with an example of what belongs there.
#pragma once

#include "model/Controls.h"

#include <QColor>
#include <QFont>
#include <QLineEdit>

#include <optional>

namespace vellux {

/// Paints the placeholder, while the line is empty, in the placeholder's own font, size and colour. Main
/// thread.
class PlaceholderLineEdit : public QLineEdit {
    Q_OBJECT
public:
    explicit PlaceholderLineEdit(QWidget* pParent = nullptr) : QLineEdit(pParent) {}

    /// Absent for none.
    void setPlaceholder(const std::optional<Placeholder>& placeholder);

    /// What looks wrong about the text, for screen readers; "" for nothing. Else the placeholder is
    /// described.
    void setHint(const QString& strHint);

    /// Tall enough for the placeholder's font as well as for its own, with or without a placeholder.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    /// "Helvetica-Oblique" names a family and a slant; so does "Family-BoldItalic".
    static QFont fontOf(const Placeholder& placeholder);
    /// The placeholder's colour on a light background; on a dark one inverted.
    static QColor colourOf(const Placeholder& placeholder, const QColor& ground);

protected:
    void paintEvent(QPaintEvent* pEvent) override;
    void inputMethodEvent(QInputMethodEvent* pEvent) override;

private:
    QSize withPlaceholder(QSize size) const;
    void describe();

    std::optional<Placeholder> m_placeholder;
    QString m_strHint;
    bool m_bComposing = false; // an input method shows a text that is not yet in the line
};

} // namespace vellux
