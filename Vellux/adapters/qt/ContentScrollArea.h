// What scrolls where the screen is small.
#pragma once

#include <QScrollArea>

namespace vellux {

/// Shows its content whole where there is room, without a scroll bar, and lets it scroll where there is not.
/// Main thread.
class ContentScrollArea : public QScrollArea {
    Q_OBJECT
public:
    explicit ContentScrollArea(QWidget* pParent = nullptr) : QScrollArea(pParent) {}

    /// What the content needs to be shown whole.
    QSize sizeHint() const override;
    /// A few lines.
    QSize minimumSizeHint() const override;

signals:
    /// What the content needs may be different now. Nothing has scrolled yet.
    void contentChanged();

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;
};

} // namespace vellux
