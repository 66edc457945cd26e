#pragma once

#include "services/ui/InputAidsUi.h"
#include "shell/DbError.h"
#include "shell/Prompts.h"

#include <QString>
#include <QWidget>

#include <utility>

namespace zq {

// The failure message of a save: "存盘错误!", with the reason when another client changed the row.
inline QString SaveErrorText(const ConflictError& e) {
    return QStringLiteral("存盘错误!\n\n") + e.message();
}
inline QString SaveErrorText() {
    return QStringLiteral("存盘错误!");
}

// Runs a save under the wait cursor. A database error has rolled the save back by the time it
// arrives here; the user hears the one message every screen gives for it, and the caller keeps its
// input for another try.
template <typename F> bool SaveOrTell(const QWidget* owner, F&& save) {
    try {
        Hourglass wait;
        std::forward<F>(save)();
        return true;
    } catch (const ConflictError& e) {
        // Another client got there first: say so, or the user would simply try again.
        ShowMsg(SaveErrorText(e), vbExclamation, owner->windowTitle());
        return false;
    } catch (const DbError&) {
        ShowMsg(SaveErrorText(), vbExclamation, owner->windowTitle());
        return false;
    }
}

} // namespace zq
