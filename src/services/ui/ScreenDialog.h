#pragma once

#include <functional>
#include <QDialog>

namespace zq {

// A main screen's life: it opens the connection and loads itself the first time it shows, opens
// the connection again on each activation, and tells a database error of a handler in a message
// instead of throwing it at the event loop.
class ScreenDialog : public QDialog {
    Q_OBJECT

public:
    explicit ScreenDialog(QWidget* parent = nullptr);

protected:
    virtual void load() = 0;
    // Runs a handler; false when it failed with a database error, which the user was told.
    bool guarded(const std::function<void()>& f);
    // After a handler failed: state the screen must put right.
    virtual void afterFailure() {}
    bool loaded() const { return m_loaded; }

    void showEvent(QShowEvent* event) override;
    bool event(QEvent* event) override;

private:
    bool m_loaded = false;
};

} // namespace zq
