#pragma once

#include "services/ui/InputAidsUi.h"
#include "shell/DbError.h"
#include "shell/Prompts.h"

#include <QString>
#include <QWidget>

#include <utility>

namespace zq {

// Runs a save under the wait cursor. A database error has rolled the save back by the time it
// arrives here; the user hears the one message every screen gives for it, and the caller keeps its
// input for another try.
template <typename F> bool SaveOrTell(const QWidget* owner, F&& save) {
    try {
        Hourglass wait;
        std::forward<F>(save)();
        return true;
    } catch (const DbError&) {
        ShowMsg(QStringLiteral("存盘错误!"), vbExclamation, owner->windowTitle());
        return false;
    }
}

} // namespace zq
