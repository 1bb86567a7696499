#include "adapters/qt/DetailsWindow.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/WindowActions.h"

#include <QClipboard>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QShowEvent>
#include <QSysInfo>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace vellux {

namespace {

enum Column { kTime, kRequest, kStatus, kDuration, kResult, kColumns };

constexpr int kVisibleExchanges = 12; // lines that the list is high at first
constexpr int kWidth = 60;            // of the window at first, in heights of a line

QString fromVariable(const char* strName) {
    const QString strValue = qEnvironmentVariable(strName);
    return strValue.isEmpty() ? DetailsWindow::tr("unknown") : strValue;
}

QString lightText(const LightNode& light) {
    const QString strLight = QStringLiteral("%1:%2 (%3)")
                                 .arg(light.nVendorID, 4, 16, QLatin1Char('0'))
                                 .arg(light.nProductID, 4, 16, QLatin1Char('0'))
                                 .arg(QString::fromStdString(light.strNode));
    return light.strRefusal.empty() ? DetailsWindow::tr("%1: may be opened").arg(strLight)
                                    : DetailsWindow::tr("%1: can't be opened (%2)")
                                          .arg(strLight, QString::fromStdString(light.strRefusal));
}

QString resultText(const ConnectionLog::Entry& entry) {
    const HttpExchange& exchange = entry.exchange;
    QStringList parts;
    if (!exchange.authenticationSchemes.empty()) {
        QStringList schemes;
        for (const std::string& strScheme : exchange.authenticationSchemes)
            schemes.append(QString::fromStdString(strScheme));
        parts.append(DetailsWindow::tr("asks for %1").arg(schemes.join(QStringLiteral(", "))));
    }
    if (isIdlePoll(exchange)) {
        parts.append(DetailsWindow::tr("nothing new"));
    } else if (const auto& error = exchange.error) {
        QString strFailure = DetailsWindow::tr(nameOf(error->failure));
        if (!error->strIssuer.empty()) // first, as the transport's words may be cut off
            strFailure += QStringLiteral(" (") +
                          DetailsWindow::tr("issuer: %1").arg(QString::fromStdString(error->strIssuer)) +
                          QLatin1Char(')');
        parts.append(strFailure + QStringLiteral(": ") + QString::fromStdString(error->strDescription));
    }
    if (entry.nCount > 1)
        parts.append(DetailsWindow::tr("%1 times").arg(entry.nCount));
    return parts.join(QStringLiteral("; "));
}

void showEntry(QTreeWidgetItem& item, const ConnectionLog::Entry& entry) {
    const HttpExchange& exchange = entry.exchange;
    const auto began =
        std::chrono::duration_cast<std::chrono::milliseconds>(exchange.began.time_since_epoch());
    item.setText(
        kTime, QDateTime::fromMSecsSinceEpoch(began.count()).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    item.setText(kRequest,
                 QString::fromStdString(exchange.strMethod + " " + exchange.strHost + exchange.strPath));
    item.setText(kStatus, exchange.nStatus == 0 ? QString() : QString::number(exchange.nStatus));
    item.setText(kDuration, QString::number(exchange.duration.count()));
    item.setText(kResult, resultText(entry));
    for (const Column column : {kStatus, kDuration})
        item.setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    for (const Column column : {kRequest, kResult}) // what a narrow column cuts off
        item.setToolTip(column, item.text(column));
}

} // namespace

DetailsWindow::DetailsWindow(QWidget& window, Dependencies dependencies)
    : QDialog(&window), m_dependencies(std::move(dependencies)),
      m_factsUpdate(m_dependencies.mainThread, [this] { showFacts(); }),
      m_exchangesUpdate(m_dependencies.mainThread, [this] { showExchanges(); }) {
    setObjectName(QStringLiteral("DetailsWindow"));
    setWindowTitle(tr("Details"));
    new QVBoxLayout(this);
    addFacts();
    m_pExchanges = new QTreeWidget;
    m_pExchanges->setObjectName(QStringLiteral("listExchanges"));
    m_pExchanges->setAccessibleName(tr("The latest requests to the server"));
    m_pExchanges->setRootIsDecorated(false);
    m_pExchanges->setUniformRowHeights(true);
    m_pExchanges->setTextElideMode(Qt::ElideMiddle); // what differs is at the ends of an address
    m_pExchanges->setHeaderLabels({tr("Time"), tr("Request"), tr("Status"), tr("ms"), tr("Result")});
    layout()->addWidget(m_pExchanges);
    auto* const pButtons = new QDialogButtonBox;
    QPushButton* const pCopy = pButtons->addButton(tr("Co&py"), QDialogButtonBox::ActionRole);
    pCopy->setObjectName(QStringLiteral("buttonCopyDetails"));
    pCopy->setAutoDefault(false); // Enter closes
    pCopy->setAccessibleName(tr("Copy all details"));
    pButtons->addButton(tr("&Close"), QDialogButtonBox::RejectRole)->setDefault(true);
    layout()->addWidget(pButtons);
    connect(pCopy, &QPushButton::clicked, this, [this] { QGuiApplication::clipboard()->setText(text()); });
    connect(pButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    const int nLine = fontMetrics().height(); // also what a frame may take
    resize(QSize(kWidth * nLine, sizeHint().height() + kVisibleExchanges * nLine / 2)
               .boundedTo(screen()->availableSize() - QSize(2, 3) * nLine));
    m_observations[0] = m_dependencies.log.observe(m_exchangesUpdate.asker());
    m_observations[1] = m_dependencies.controller.light().observe([this] { m_factsUpdate.ask(); });
}

std::vector<std::pair<QString, QString>> DetailsWindow::facts() const {
    QStringList lights;
    for (const LightNode& light : m_dependencies.lights())
        lights.append(lightText(light));
    return {
        {tr("Vellux"), QStringLiteral(VELLUX_VERSION)},
        {tr("Qt"), QString::fromLatin1(qVersion())},
        {tr("libcurl"), QString::fromStdString(m_dependencies.strTransport)},
        {tr("System"), QSysInfo::prettyProductName() + QStringLiteral(", ") + QStringLiteral("Linux ") +
                           QSysInfo::kernelVersion()},
        {tr("Desktop"), fromVariable("XDG_CURRENT_DESKTOP")},
        {tr("Session"),
         tr("%1, shown through %2").arg(fromVariable("XDG_SESSION_TYPE"), QGuiApplication::platformName())},
        {tr("Tray"), m_dependencies.isTrayThere() ? tr("there") : tr("none")},
        {tr("Lights"), lights.isEmpty() ? tr("none") : lights.join(QLatin1Char('\n'))},
    };
}

void DetailsWindow::addFacts() {
    auto* const pForm = new QFormLayout;
    for (const auto& [strTitle, strValue] : facts()) {
        auto* const pValue = new QLabel(strValue);
        pValue->setTextFormat(Qt::PlainText);
        pValue->setTextInteractionFlags(Qt::TextSelectableByMouse);
        pForm->addRow(tr("%1:").arg(strTitle), pValue);
        m_facts.push_back(pValue);
    }
    static_cast<QVBoxLayout*>(layout())->addLayout(pForm);
}

void DetailsWindow::showFacts() {
    if (!isVisible())
        return;
    const auto now = facts();
    for (std::size_t n = 0; n < m_facts.size(); ++n)
        m_facts[n]->setText(now[n].second);
}

// The lines are kept and written anew, so that a selection and a place in the list stay.
void DetailsWindow::showExchanges() {
    if (!isVisible())
        return;
    QScrollBar& bar = *m_pExchanges->verticalScrollBar();
    const bool bAtEnd = bar.value() == bar.maximum();
    const auto entries = m_dependencies.log.entries();
    int nRow = 0;
    for (const ConnectionLog::Entry& entry : entries) {
        if (nRow == m_pExchanges->topLevelItemCount())
            m_pExchanges->addTopLevelItem(new QTreeWidgetItem);
        showEntry(*m_pExchanges->topLevelItem(nRow++), entry);
    }
    for (const Column column : {kTime, kStatus, kDuration})
        m_pExchanges->resizeColumnToContents(column);
    if (bAtEnd)
        m_pExchanges->scrollToBottom();
}

QString DetailsWindow::text() const {
    QString strText;
    for (const auto& [strTitle, strValue] : facts())
        strText += tr("%1:").arg(strTitle) + QLatin1Char(' ') +
                   QString(strValue).replace(QLatin1Char('\n'), QStringLiteral(", ")) + QLatin1Char('\n');
    return strText + QLatin1Char('\n') + QString::fromStdString(m_dependencies.log.text());
}

void DetailsWindow::present() {
    bringToFront(*this);
}

void DetailsWindow::showEvent(QShowEvent* pEvent) {
    QDialog::showEvent(pEvent);
    if (pEvent->spontaneous())
        return;
    m_pExchanges->setFocus();
    showFacts();
    m_pExchanges->setColumnWidth(kRequest, 2 * width() / 5);
    showExchanges();
}

// A tray may have come or gone meanwhile.
void DetailsWindow::changeEvent(QEvent* pEvent) {
    if (pEvent->type() == QEvent::ActivationChange)
        showFacts();
    QDialog::changeEvent(pEvent);
}

} // namespace vellux
