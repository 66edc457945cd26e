#include "Components.h"

#include "Login.h"
#include "WidgetPrompts.h"

namespace zq {

namespace {
std::unique_ptr<Components>& holder() {
    static std::unique_ptr<Components> h;
    return h;
}
} // namespace

Components::Components() = default;
Components::~Components() = default;

Components& Components::instance() {
    auto& h = holder();
    if (!h) h.reset(new Components);
    return *h;
}

bool Components::exists() {
    return holder() != nullptr;
}

void Components::release() {
    holder().reset();
}

WidgetPrompts& Components::prompts() {
    if (!m_prompts) m_prompts = std::make_unique<WidgetPrompts>();
    return *m_prompts;
}

Login& Components::login() {
    if (!m_login) m_login = std::make_unique<Login>();
    return *m_login;
}

} // namespace zq
