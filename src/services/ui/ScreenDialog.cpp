#include "ScreenDialog.h"

#include "services/ui/InputAidsUi.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QEvent>

namespace zq {

ScreenDialog::ScreenDialog(QWidget* parent)
    : QDialog(parent) {}

bool ScreenDialog::guarded(const std::function<void()>& f) {
    try {
        f();
        return true;
    } catch (const DbError& e) {
        afterFailure();
        ShowMsg(e.message(), vbExclamation, windowTitle());
        return false;
    }
}

void ScreenDialog::showEvent(QShowEvent* event) {
    if (!m_loaded) {
        m_loaded = true;
        guarded([this] {
            OpenControlConn();
            CenterForm(this);
            load();
        });
    }
    QDialog::showEvent(event);
}

bool ScreenDialog::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate && m_loaded) OpenControlConn();
    return QDialog::event(event);
}

} // namespace zq
