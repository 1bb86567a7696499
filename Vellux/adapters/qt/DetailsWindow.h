// What somebody who helps wants to know: versions, desktop, lights, and the latest exchanges.
#pragma once

#include "app/ConnectionLog.h"
#include "threads/CoalescedUpdate.h"
#include "threads/MainThread.h"
#include "threads/Observers.h"

#include <QDialog>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class QLabel;
class QTreeWidget;
class VelluxWindowUi;

namespace vellux {

/// A light as the device side describes it.
struct LightNode {
    std::string strNode; ///< "/dev/hidraw3"
    std::uint16_t nVendorID = 0;
    std::uint16_t nProductID = 0;
    std::string strRefusal; ///< why it can't be opened, in the system's words; "" when it can
};

/// Shows it all, the exchanges as they come, and copies it as text. It holds nothing secret: a ConnectionLog
/// has no password, token, header value or body. Modeless. Main thread.
class DetailsWindow : public QDialog {
    Q_OBJECT
public:
    struct Dependencies {
        MainThread& mainThread; ///< outlives the window, as controller and log do
        VelluxWindowUi& controller;
        ConnectionLog& log;
        std::string strTransport; ///< the version of libcurl
        std::function<bool()> isTrayThere;
        std::function<std::vector<LightNode>()> lights;
    };

    /// Hidden at first. It belongs to the window, which outlives it.
    DetailsWindow(QWidget& window, Dependencies dependencies);

    /// Shows it in front.
    void present();
    /// All of it as plain text.
    QString text() const;

protected:
    void showEvent(QShowEvent* pEvent) override;
    void changeEvent(QEvent* pEvent) override;

private:
    void addFacts();
    void showFacts();
    void showExchanges();
    /// A title and what is so, in the order of m_facts.
    std::vector<std::pair<QString, QString>> facts() const;

    const Dependencies m_dependencies;
    std::vector<QLabel*> m_facts; // these are the dialog's
    QTreeWidget* m_pExchanges = nullptr;
    CoalescedUpdate m_factsUpdate;
    CoalescedUpdate m_exchangesUpdate;
    Observation m_observations[2];
};

} // namespace vellux
