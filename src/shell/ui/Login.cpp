#include "Login.h"

#include "Commands.h"
#include "Components.h"
#include "LoginDialog.h"

#include <QApplication>

namespace zq {

bool Login::run(const LoginRequest& request, LoginResult& result) {
    LoginDialog dlg(request, result, QApplication::activeWindow());
    return showModal(dlg) == QDialog::Accepted;
}

void installLoginWindow() {
    setLoginHook([](const LoginRequest& request, LoginResult& result) {
        return Components::instance().login().run(request, result);
    });
}

} // namespace zq
