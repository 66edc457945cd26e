#pragma once

#include "shell/Rights.h"

namespace zq {

// The login and user component of the hidden holder: runs the login window modally.
class Login {
public:
    // Shows the login; false when the user gave up. `result` holds the present values on entry.
    bool run(const LoginRequest& request, LoginResult& result);
};

// Makes the login window the one the rights check uses when no one has logged in.
void installLoginWindow();

} // namespace zq
