// A list to choose from, as this window wants it.
#pragma once

#include <QComboBox>
#include <QIcon>

namespace vellux {

/// Takes the wheel only with the focus, so that scrolling past it chooses nothing. While nothing is selected
/// it shows what is in force, in a grey that can be read on every palette. Main thread.
class ChoiceList : public QComboBox {
    Q_OBJECT
public:
    explicit ChoiceList(QWidget* pParent = nullptr);

    /// What to show while nothing is selected; "" for the form's placeholder.
    void setInForce(const QString& strText, const QIcon& icon);

    /// As wide as its entries, though the list is not.
    void showPopup() override;

protected:
    void wheelEvent(QWheelEvent* pEvent) override;
    void paintEvent(QPaintEvent* pEvent) override;

private:
    QString m_strInForce;
    QIcon m_inForce;
};

} // namespace vellux
