#include "Commands.h"

#include "assets/frmRs_Goods.h"
#include "assets/frmRs_House.h"
#include "assets/frmRs_Identify.h"
#include "documents/frmWd_DeptDict.h"
#include "documents/frmWd_dict.h"
#include "documents/frmWd_Filer.h"
#include "office/frmBg_Meeting.h"
#include "office/frmBg_News.h"
#include "office/frmBg_Report.h"
#include "organisation/frmRs_Dept.h"
#include "organisation/frmRs_OrgChart.h"
#include "organisation/frmRs_PersonAssign.h"
#include "organisation/frmRs_PersonAssignOk.h"
#include "personnel/frmRs_ChangeReport.h"
#include "personnel/frmRs_Person.h"
#include "personnel/frmRs_PersonBasic.h"
#include "personnel/frmRs_PersonDetail.h"
#include "personnel/frmRs_PersonDetailSeek.h"
#include "personnel/frmRs_PersonFamily.h"
#include "personnel/frmRs_PersonHistory.h"
#include "personnel/frmRs_PersonList.h"
#include "personnel/frmRs_PersonResult.h"
#include "personnel/frmRs_PersonResume.h"
#include "personnel/frmRs_PersonReward.h"
#include "personnel/frmRs_PersonTrain.h"
#include "personnel/frmRs_PersonWork.h"
#include "printing/frmRs_list.h"
#include "printing/frmRs_PersonPnt.h"
#include "printing/frmRs_RptSet.h"
#include "printing/Print.h"
#include "shell/Globals.h"

#include <map>
#include <QDialog>
#include <QPointer>
#include <utility>

namespace zq {

namespace {
std::vector<Command>& systemTable() {
    static std::vector<Command> table;
    return table;
}

std::vector<Command>* scopedTable = nullptr;

// The system rows and forms are registered once, into the system table even while a test's scope
// is in force, so that forms stay reachable by name.
void ensureRegistered() {
    static const bool registered = [] {
        std::vector<Command>* scope = std::exchange(scopedTable, nullptr);
        registerScreens();
        scopedTable = scope;
        return true;
    }();
    Q_UNUSED(registered);
}

std::vector<Command>& table() {
    ensureRegistered();
    return scopedTable ? *scopedTable : systemTable();
}

std::map<QString, FormFactory>& forms() {
    static std::map<QString, FormFactory> f;
    return f;
}

ModalRunner& runner() {
    static ModalRunner r;
    return r;
}
} // namespace

namespace {
// A screen other screens open by its name, which is its class's name.
template <typename Screen> void registerScreen(const char* name) {
    registerForm(QLatin1String(name), [](QWidget* parent) { return new Screen(parent); });
}

} // namespace

void registerScreens() {
    // Each screen area adds its rows here, in the order of the menu table; the first match wins.
    // Screens opened by other screens are also registered by name (registerForm).

    // The staff register opens on the state of its key: 1 in service, 2 left.
    for (const auto& [key, state] :
         {std::pair{QStringLiteral("mnuRsManIn"), 1}, std::pair{QStringLiteral("mnuRsManOut"), 2}})
        registerCommand(
            {key}, [] { return new frmRs_Person; },
            [state](QDialog& d, qint16) { d.setProperty("RsState", state); });
    registerScreen<frmRs_Person>("frmRs_Person");
    registerScreen<frmRs_PersonBasic>("frmRs_PersonBasic");
    // The record screens of a person, in the order of the register's choices, and its search.
    registerScreen<frmRs_PersonFamily>("frmRs_PersonFamily");
    registerScreen<frmRs_PersonResume>("frmRs_PersonResume");
    registerScreen<frmRs_PersonTrain>("frmRs_PersonTrain");
    registerScreen<frmRs_PersonResult>("frmRs_PersonResult");
    registerScreen<frmRs_PersonReward>("frmRs_PersonReward");
    registerScreen<frmRs_PersonWork>("frmRs_PersonWork");
    registerScreen<frmRs_PersonDetail>("frmRs_PersonDetail");
    registerScreen<frmRs_PersonDetailSeek>("frmRs_PersonDetailSeek");
    registerScreen<frmRs_PersonAssignOk>("frmRs_PersonAssignOk");
    // The change history: a person's from the register, the company's report from the menu.
    registerScreen<frmRs_PersonHistory>("frmRs_PersonHistory");
    registerCommand({QStringLiteral("mnuRsHistory")}, [] { return new frmRs_ChangeReport; });
    registerCommand({QStringLiteral("mnuRsOthMove")}, [] { return new frmRs_PersonAssign; });
    registerCommand({QStringLiteral("mnuRsTotal")}, [] { return new frmRs_PersonList; });
    registerScreen<frmRs_PersonList>("frmRs_PersonList");
    // The department register always opens on its own table.
    registerCommand(
        {QStringLiteral("mnuRsbm"), QStringLiteral("mnuRsSysBm")}, [] { return new frmRs_Dept; },
        [](QDialog& d, qint16) { d.setProperty("myTable", QStringLiteral("trs_bm")); });
    registerScreen<frmRs_Dept>("frmRs_Dept");
    registerCommand({QStringLiteral("mnuRsOrgChart")}, [] { return new frmRs_OrgChart; });
    registerScreen<frmRs_OrgChart>("frmRs_OrgChart");
    registerCommand({QStringLiteral("mnuRsOthHoldCard")}, [] { return new frmRs_Identify; });
    // The loan keys cross over with their tables: State chooses the table.
    for (const auto& [key, state] :
         {std::pair{QStringLiteral("mnuRsOthLoanGoods"), 1}, std::pair{QStringLiteral("mnuRsOthTools"), 2}})
        registerCommand(
            {key}, [] { return new frmRs_Goods; },
            [state](QDialog& d, qint16) { d.setProperty("State", state); });
    for (const auto& [key, state] :
         {std::pair{QStringLiteral("mnuRsHouseSet"), 1}, std::pair{QStringLiteral("mnuRsHouseLook"), 2}})
        registerCommand(
            {key}, [] { return new frmRs_House; },
            [state](QDialog& d, qint16) { d.setProperty("State", state); });
    registerScreen<frmRs_House>("frmRs_House");
    registerCommand({QStringLiteral("mnuOffice1"), QStringLiteral("mnuOA_Report")},
                    [] { return new frmBg_Report; });
    registerCommand({QStringLiteral("mnuWdFiler")}, [] { return new frmWd_Filer; });
    registerCommand({QStringLiteral("mnuWdDict")}, [] { return new frmWd_dict; });
    // The third argument of Refresh chooses the class of documents.
    registerCommand(
        {QStringLiteral("mnuWdDept")}, [] { return new frmWd_DeptDict; },
        [](QDialog& d, qint16 state) { d.setProperty("State", int(state)); });
    registerCommand({QStringLiteral("mnuOffice2"), QStringLiteral("mnuOA_Meeting")},
                    [] { return new frmBg_Meeting; });
    registerCommand({QStringLiteral("mnuOffice3"), QStringLiteral("mnuOA_News")},
                    [] { return new frmBg_News; });
    registerScreen<frmRs_RptSet>("frmRs_RptSet");
    registerScreen<frmRs_list>("frmRs_list");
    registerScreen<frmRs_PersonPnt>("frmRs_PersonPnt");

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

bool runCommand(const QString& key, qint16 state, const QVariantMap& extra) {
    const Command* c = findCommand(key);
    if (!c) return false;
    if (c->action) {
        c->action(state);
        return true;
    }
    QPointer<QDialog> screen = c->screen();
    if (!screen) return true;
    if (c->assign) c->assign(*screen, state);
    for (auto it = extra.constBegin(); it != extra.constEnd(); ++it)
        screen->setProperty(it.key().toUtf8().constData(), it.value());
    showModal(*screen);
    delete screen.data();
    return true;
}

void registerForm(const QString& name, FormFactory factory) {
    forms()[name] = std::move(factory);
}

bool hasForm(const QString& name) {
    ensureRegistered();
    return forms().count(name) > 0;
}

int openForm(const QString& name, QWidget* parent, const QVariantMap& settings) {
    if (!hasForm(name)) return -1;
    QPointer<QDialog> screen = forms()[name](parent);
    if (!screen) return -1;
    for (auto it = settings.begin(); it != settings.end(); ++it)
        screen->setProperty(it.key().toUtf8().constData(), it.value());
    const int result = showModal(*screen);
    delete screen.data();
    return result;
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
