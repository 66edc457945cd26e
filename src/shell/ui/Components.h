#pragma once

#include <memory>

namespace zq {

class Login;
class WidgetPrompts;

// The hidden holder of the components that services reach through one place: the prompts and the
// login now; the brief lists, printing and progress components join it. Created on first touch and
// released at the end of every Refresh, so each call starts with fresh components.
class Components {
public:
    static Components& instance();
    static bool exists();
    // Drops the holder and everything it owns.
    static void release();

    WidgetPrompts& prompts();
    Login& login();

    ~Components();

private:
    Components();

    std::unique_ptr<WidgetPrompts> m_prompts;
    std::unique_ptr<Login> m_login;
};

} // namespace zq
