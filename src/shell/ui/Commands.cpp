#include "Commands.h"

#include "printing/Print.h"
#include "shell/Globals.h"

#include <QDialog>
#include <QPointer>

namespace zq {

namespace {
std::vector<Command>& systemTable() {
    static std::vector<Command> table;
    return table;
}

std::vector<Command>* scopedTable = nullptr;

std::vector<Command>& table() {
    if (scopedTable) return *scopedTable;
    static const bool registered = (registerScreens(), true);
    Q_UNUSED(registered);
    return systemTable();
}

ModalRunner& runner() {
    static ModalRunner r;
    return r;
}
} // namespace

void registerScreens() {
    // Each screen area adds its rows here, in the order of the menu table; the first match wins.

    // The two card keys print at once instead of showing a screen, the supervisor's way (3) or
    // the user's (1).
    const auto cards = [](const QString& templateKey, const QString& sheetKey) {
        return [templateKey, sheetKey](qint16) {
            G().showmode = 1;
            PrintPersonCard(G().isSupervisor() ? 3 : 1, templateKey, sheetKey, QStringLiteral("fZt=1"));
        };
    };
    registerAction({QStringLiteral("mnuRsCard")},
                   cards(QStringLiteral("RsCard"), QStringLiteral("RsCard_01")));
    registerAction({QStringLiteral("mnuRsCard2")},
                   cards(QStringLiteral("RsCard2"), QStringLiteral("RsCard2_01")));
}

void registerCommand(const QStringList& keys, std::function<QDialog*()> screen,
                     std::function<void(QDialog&, qint16)> assign) {
    (scopedTable ? *scopedTable : systemTable()).push_back({keys, std::move(screen), std::move(assign), {}});
}

void registerAction(const QStringList& keys, std::function<void(qint16)> action) {
    (scopedTable ? *scopedTable : systemTable()).push_back({keys, {}, {}, std::move(action)});
}

const Command* findCommand(const QString& key) {
    for (const Command& c : table())
        for (const QString& k : c.keys)
            if (k.compare(key, Qt::CaseInsensitive) == 0) return &c;
    return nullptr;
}

bool runCommand(const QString& key, qint16 state) {
    const Command* c = findCommand(key);
    if (!c) return false;
    if (c->action) {
        c->action(state);
        return true;
    }
    QPointer<QDialog> screen = c->screen();
    if (!screen) return true;
    if (c->assign) c->assign(*screen, state);
    showModal(*screen);
    delete screen.data();
    return true;
}

void setModalRunner(ModalRunner r) {
    runner() = std::move(r);
}

int showModal(QDialog& screen) {
    return runner() ? runner()(screen) : screen.exec();
}

CommandTableScope::CommandTableScope()
    : m_previous(scopedTable) {
    scopedTable = &m_table;
}

CommandTableScope::~CommandTableScope() {
    scopedTable = m_previous;
}

} // namespace zq
