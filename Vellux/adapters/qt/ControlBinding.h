// What ties a widget to the model of its control.
#pragma once

#include "model/Controls.h"
#include "threads/CoalescedUpdate.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace vellux {

/// Common part of the bindings: the widget shows its model's newest state, whichever thread wrote it. Main
/// thread; destroyed after the last thread that writes the model has ended, and before the widget.
class ControlBinding {
public:
    virtual ~ControlBinding() = default;
    ControlBinding(const ControlBinding&) = delete;
    ControlBinding& operator=(const ControlBinding&) = delete;

protected:
    ControlBinding(MainThread& mainThread, QWidget& widget, std::shared_ptr<Control> model);

    /// Last step of a binding's constructor: shows the model and observes it from now on.
    void begin();
    /// Shows everything but whether it is enabled. Writes nothing into the model.
    virtual void showContent() = 0;
    /// Whether a change of the widget comes from the model rather than from the user.
    bool isShowing() const { return m_bShowing; }
    /// The receiver of the widget's signals, so that none arrives after the binding's destruction.
    QObject* receiver() { return &m_receiver; }

private:
    void show();
    void showEnabled();

    QWidget& m_widget;
    QWidget* m_pLabel = nullptr; // whose buddy the widget is
    const std::shared_ptr<Control> m_model;
    bool m_bShowing = false;
    QPointer<QWidget> m_focusHeir; // who got the focus when this widget was disabled with it
    CoalescedUpdate m_update;
    QObject m_receiver;
    Observation m_observation;
};

} // namespace vellux
