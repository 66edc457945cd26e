#include "Prompts.h"

#include "Globals.h"

namespace zq {

QVector<int> buttonsOfStyle(int style) {
    switch (style & 7) {
    case vbOKCancel:
        return {vbOK, vbCancel};
    case vbAbortRetryIgnore:
        return {vbAbort, vbRetry, vbIgnore};
    case vbYesNoCancel:
        return {vbYes, vbNo, vbCancel};
    case vbYesNo:
        return {vbYes, vbNo};
    case vbRetryCancel:
        return {vbRetry, vbCancel};
    default:
        return {vbOK};
    }
}

QStringList fileFilters(const QString& filter) {
    QStringList out;
    const QStringList parts = filter.split(QLatin1Char('|'));
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        const QString text = parts[i].trimmed();
        QStringList globs = parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts);
        for (QString& g : globs)
            g = g.trimmed();
        out << QStringLiteral("%1 (%2)").arg(text, globs.join(QLatin1Char(' ')));
    }
    return out;
}

QStringList ScriptedPrompts::messages() const {
    QStringList out;
    for (const Shown& s : m_shown)
        if (s.kind == Kind::Message) out << s.text;
    return out;
}

void ScriptedPrompts::clear() {
    m_buttons.clear();
    m_inputs.clear();
    m_files.clear();
    m_printers.clear();
    m_shown.clear();
}

namespace {
// The next queued answer into `out`; false (and `out` untouched) when the queue is empty.
template <typename T> bool take(std::deque<T>& queue, T& out) {
    if (queue.empty()) return false;
    out = std::move(queue.front());
    queue.pop_front();
    return true;
}
} // namespace

int ScriptedPrompts::message(const QString& text, int style, const QString& title) {
    int button = buttonsOfStyle(style).first();
    take(m_buttons, button);
    m_shown.push_back({Kind::Message, text, style, title, QString::number(button)});
    return button;
}

std::optional<QString> ScriptedPrompts::input(const QString& prompt, const QString& title,
                                              const QString& defaultText) {
    std::optional<QString> answer = defaultText;
    take(m_inputs, answer);
    m_shown.push_back({Kind::Input, prompt, 0, title, answer.value_or(QString())});
    return answer;
}

QString ScriptedPrompts::file(const FileRequest& request) {
    QString answer;
    take(m_files, answer);
    m_shown.push_back({Kind::File, request.filter, request.flags, request.title, answer});
    return answer;
}

bool ScriptedPrompts::choosePrinter(QString& printerName) {
    std::optional<QString> answer = printerName;
    take(m_printers, answer);
    m_shown.push_back({Kind::Printer, printerName, 0, QString(), answer.value_or(QString())});
    if (!answer) return false;
    printerName = *answer;
    return true;
}

namespace {
struct Registry {
    std::shared_ptr<Prompts> installed;
    std::function<Prompts*()> provider;
    ScriptedPrompts fallback;
};

Registry& registry() {
    static Registry r;
    return r;
}

QString titleOrApp(const QString& title) {
    return title.isEmpty() ? G().AppTitle : title;
}
} // namespace

Prompts& prompts() {
    Registry& r = registry();
    if (r.installed) return *r.installed;
    if (r.provider)
        if (Prompts* p = r.provider()) return *p;
    return r.fallback;
}

void installPrompts(std::shared_ptr<Prompts> service) {
    registry().installed = std::move(service);
}

ScriptedPrompts& scriptPrompts() {
    auto s = std::make_shared<ScriptedPrompts>();
    ScriptedPrompts& ref = *s;
    installPrompts(std::move(s));
    return ref;
}

void setPromptProvider(std::function<Prompts*()> provider) {
    registry().provider = std::move(provider);
}

int ShowMsg(const QString& text, int style, const QString& title) {
    return prompts().message(text, style, titleOrApp(title));
}

std::optional<QString> InputBox(const QString& prompt, const QString& title, const QString& defaultText) {
    return prompts().input(prompt, titleOrApp(title), defaultText);
}

} // namespace zq
