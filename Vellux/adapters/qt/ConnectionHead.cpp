#include "adapters/qt/ConnectionHead.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/FailureText.h"
#include "adapters/qt/FollowingText.h"
#include "adapters/qt/LampDrawing.h"
#include "app/Choices.h"
#include "app/ConnectionLog.h"
#include "app/Following.h"
#include "threads/Observable.h"
#include "ui_MainWindow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <initializer_list>

namespace vellux {

/// The widgets, which know nothing of the state.
class ConnectionHead::Panel : public QWidget {
public:
    explicit Panel(Ui::MainWindow& form)
        : m_reconnect(*form.buttonReconnect), m_always(*new QPushButton(this)), m_words(*form.labelFollowing),
          m_icon(*new QLabel(this)), m_why(*new QLabel(this)) {
        setObjectName(QStringLiteral("connectionHead"));
        m_always.setObjectName(QStringLiteral("buttonAlwaysReconnect"));
        m_always.setText(MainWindow::tr("Al&ways reconnect by itself"));
        m_always.setAutoDefault(true);
        m_icon.setObjectName(QStringLiteral("labelFollowingIcon"));
        m_why.setObjectName(QStringLiteral("labelWhyNotConnected"));
        m_why.setTextFormat(Qt::PlainText); // names come from the net
        for (QLabel* const pLabel : {&m_words, &m_why}) {
            pLabel->setWordWrap(true);
            pLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        }
        delete m_words.parentWidget()->layout()->replaceWidget(&m_words, this); // the old one's item

        auto* const pLines = new QGridLayout(this);
        pLines->setContentsMargins(0, 0, 0, 0);
        pLines->setColumnStretch(1, 1);
        pLines->setRowStretch(3, 1); // all lines at the top
        pLines->addWidget(&m_icon, 0, 0, Qt::AlignTop);
        pLines->addWidget(&m_words, 0, 1);
        pLines->addWidget(&m_why, 1, 1);
        auto* const pButtons = new QHBoxLayout;
        pButtons->addWidget(&m_reconnect);
        pButtons->addWidget(&m_always);
        pButtons->addStretch();
        pLines->addLayout(pButtons, 2, 1);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed); // no gaps in a window that is too high
        setTabOrder(&m_reconnect, &m_always);
        say({}, {}, false);
        m_reconnect.hide();
        m_always.hide();
    }

    struct Shown {
        QString strWords, strWhy;
        bool bLost = false;
        bool bReconnect = false, bAlways = false; ///< which buttons

        bool operator==(const Shown&) const = default;
    };

    void show(const Shown& shown) {
        if (shown == m_shown)
            return;
        m_shown = shown;
        QWidget& itsWindow = *window();
        const int nHeight = itsWindow.height();
        say(shown.strWords, shown.strWhy, shown.bLost);
        m_reconnect.setVisible(shown.bReconnect);
        m_always.setVisible(shown.bAlways);
        layout()->activate();
        itsWindow.layout()->activate(); // which makes it as high as it has to be
        if (itsWindow.height() > nHeight) {
            m_nGrown += itsWindow.height() - nHeight;
            m_nHeight = itsWindow.height();
        } else if (!shown.bLost && shown.strWhy.isEmpty()) {
            if (itsWindow.height() == m_nHeight) // nobody has given it another
                itsWindow.resize(itsWindow.width(), m_nHeight - m_nGrown);
            m_nGrown = 0;
        }
    }

    QPushButton& m_reconnect; // the form's
    QPushButton& m_always;

protected:
    void resizeEvent(QResizeEvent* pEvent) override {
        QWidget::resizeEvent(pEvent);
        fit();
    }
    void changeEvent(QEvent* pEvent) override {
        QWidget::changeEvent(pEvent);
        if (pEvent->type() == QEvent::FontChange && m_icon.isVisible())
            showIcon();
    }
    // The labels ask for what their text needs at the width that they have, and the window for no more: it is
    // as wide as the rest wants.
    bool hasHeightForWidth() const override { return false; }
    QSize sizeHint() const override { return minimumSizeHint(); }
    // Room for two lines of usual words and for the buttons side by side is always there, so that little has
    // to move.
    QSize minimumSizeHint() const override {
        constexpr int kLetters = 54;
        const QFontMetrics metrics = fontMetrics();
        const int nButtons = m_reconnect.sizeHint().width() + m_always.sizeHint().width();
        const int nWidth =
            qMax(kLetters * metrics.averageCharWidth(), iconSide() + nButtons + 2 * layout()->spacing());
        return QWidget::minimumSizeHint().expandedTo({nWidth, 2 * metrics.lineSpacing()});
    }

private:
    void say(const QString& strWords, const QString& strWhy, bool bLost) {
        // A screen reader announces a label's new text.
        m_words.setText(strWords);
        m_why.setText(strWhy);
        m_why.setVisible(!strWhy.isEmpty());
        QFont font = m_words.font();
        font.setBold(bLost);
        m_words.setFont(font);
        m_icon.setVisible(bLost);
        if (bLost)
            showIcon();
        fit();
    }
    int iconSide() const { return m_words.fontMetrics().height(); }
    void showIcon() {
        const int nSide = iconSide();
        m_icon.setPixmap(markIcon().pixmap(QSize(nSide, nSide), devicePixelRatioF()));
    }
    // A layout gives a label no more than one line unless it asks for more.
    void fit() {
        const int nIcon = m_icon.isVisibleTo(this) ? m_icon.sizeHint().width() + layout()->spacing() : 0;
        for (QLabel* const pLabel : {&m_words, &m_why}) {
            pLabel->setMinimumHeight(0); // else no label says that it needs less than before
            pLabel->setMinimumHeight(qMax(0, pLabel->heightForWidth(width() - nIcon))); // -1 without text
        }
    }

    QLabel& m_words; // the form's
    QLabel& m_icon;
    QLabel& m_why;
    Shown m_shown;
    int m_nGrown = 0;  // by how much the window had to grow, in pixels
    int m_nHeight = 0; // which it has had since
};

ConnectionHead::ConnectionHead(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form)
    : m_dependencies(dependencies), m_panel(*new Panel(form)),
      m_update(dependencies.mainThread, [this] { show(); }) {
    QObject::connect(&m_panel.m_reconnect, &QPushButton::clicked, &m_receiver,
                     [this] { m_dependencies.controller.reconnect(); });
    QObject::connect(&m_panel.m_always, &QPushButton::clicked, &m_receiver, [this] {
        m_dependencies.choices.update([](Choices& choices) { choices.bReconnect = true; });
        m_dependencies.controller.reconnect();
    });
    const auto ask = [this] { m_update.ask(); };
    m_observations[0] = m_dependencies.following.state().observe(ask);
    m_observations[1] = m_dependencies.choices.observe(ask);
    m_observations[2] = m_dependencies.log.observe(m_update.asker()); // the transport's thread ends later
    show();
}

void ConnectionHead::show() {
    assertMainThread(m_dependencies.mainThread);
    watchSignIn();
    const FollowingState state = m_dependencies.following.state().get();
    const bool bReconnect = m_dependencies.choices.get().bReconnect;
    const bool bEnded = state.phase == FollowingState::Phase::Ended;
    m_panel.show({followingText(state, {bReconnect, m_bSayingSince}),
                  whyNotConnected(state, m_dependencies.log), state.bLost, bEnded, bEnded && !bReconnect});
}

void ConnectionHead::watchSignIn() {
    const FollowingState state = m_dependencies.following.state().get();
    const bool bConnecting = state.phase == FollowingState::Phase::Connecting;
    if (bConnecting && state.signIn.since == m_signInBegan)
        return;
    m_bSayingSince = false;
    m_sayingSinceDue.reset();
    m_signInBegan = {};
    if (!bConnecting)
        return;
    m_signInBegan = state.signIn.since;
    m_sayingSinceDue = m_dependencies.timers.callAfter(kSayingSince, [this] {
        m_bSayingSince = true;
        show();
    });
}

} // namespace vellux
