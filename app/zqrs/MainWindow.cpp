#include "MainWindow.h"

#include "office/NewsData.h"
#include "personnel/HomePage.h"
#include "resources/Texts.h"
#include "services/Lookups.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/ui/Commands.h"
#include "shell/ui/Fonts.h"
#include "shell/ui/LoginPassword.h"
#include "shell/ui/LogViewerDialog.h"
#include "shell/ui/PropertyBag.h"
#include "shell/ui/UserAdminDialog.h"
#include "shell/ui/zqRs.h"
#include "shell/Users.h"

#include <functional>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QSettings>
#include <QStatusBar>
#include <QVBoxLayout>

using zq::G;

namespace {
const QString kBagGroup = QStringLiteral("zqRs");

// The screens of the control, grouped as a personnel office thinks of its work: one entry a
// screen, even where the command table gives it several keys (each of which still works through
// Refresh). An entry runs the first of its keys that the company uses and the user may enter, and is
// named by the caption in tSysFunc of its first key in use, unless it names what it opens itself.
struct Entry {
    std::vector<const char*> keys;  // empty: a separator
    const char* caption0 = nullptr; // simplified, traditional
    const char* caption1 = nullptr;
};
struct Menu {
    const char* caption;
    std::vector<Entry> entries;
};

const std::vector<Menu>& menus() {
    static const std::vector<Menu> m = {
        {"人事档案(&R)", {{{"mnuRsManIn"}}, {{"mnuRsManOut"}}, {}, {{"mnuRsTotal"}}, {{"mnuRsHistory"}}}},
        {"组织机构(&G)", {{{"mnuRsbm", "mnuRsSysBm"}}, {{"mnuRsOrgChart"}}, {}, {{"mnuRsOthMove"}}}},
        {"资产设施(&A)",
         {{{"mnuRsOthHoldCard"}},
          {},
          {{"mnuRsOthLoanGoods"}},
          {{"mnuRsOthTools"}},
          {},
          {{"mnuRsHouseSet"}},
          {{"mnuRsHouseLook"}}}},
        {"办公事务(&F)",
         {{{"mnuOffice1", "mnuOA_Report"}},
          {{"mnuOffice2", "mnuOA_Meeting"}},
          {{"mnuOffice3", "mnuOA_News"}}}},
        {"文档资料(&D)", {{{"mnuWdFiler"}}, {{"mnuWdDept"}}, {{"mnuWdDict"}}}},
        // The second card prints the staff registration form of everyone in service.
        {"打印(&P)", {{{"mnuRsCard"}}, {{"mnuRsCard2"}, "职工登记表打印", "職工登記表打印"}}},
    };
    return m;
}

// Runs work on the control's database and closes it again, as a call of the control does.
void withDatabase(const QString& title, const std::function<void(zq::Connection&)>& work) {
    const zq::Globals& g = G();
    zq::OpenConn(g.SQLData, zq::conn(), g.UserPath, g.Password, g.UserID, g.Default);
    try {
        if (!zq::conn().isOpen()) throw zq::DbError(QStringLiteral("无法打开数据库: %1").arg(g.UserPath));
        work(zq::conn());
    } catch (const zq::DbError& e) {
        zq::ShowMsg(e.message(), zq::vbExclamation, title);
    }
    if (zq::conn().isOpen()) zq::conn().close();
}
} // namespace

MainWindow::MainWindow(QSettings& settings, QWidget* parent)
    : QMainWindow(parent)
    , m_settings(settings)
    , m_control(new zqRs)
    , m_home(new zq::HomePage)
    , m_company(new QLabel)
    , m_user(new QLabel)
    , m_database(new QLabel)
    , m_news(new QLabel) {
    setObjectName(QStringLiteral("frmMain"));
    setFont(zq::uiFont());
    resize(960, 640);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    auto* title = new QLabel(QStringLiteral("人事管理系统"));
    title->setObjectName(QStringLiteral("lblTitle"));
    title->setAlignment(Qt::AlignCenter);
    title->setFont(zq::uiFont(28));
    title->setStyleSheet(QStringLiteral("color: #3a5a8c;"));
    layout->addWidget(title);
    layout->addWidget(m_home, 1);
    layout->addWidget(m_control);
    connect(m_home, &zq::HomePage::lineActivated, this, [this](const zq::HomeLine& line) {
        QVariantMap settings;
        if (line.menuKey.startsWith(QStringLiteral("mnuRsMan"), Qt::CaseInsensitive)) {
            settings.insert(QStringLiteral("RsState"), line.state);
            settings.insert(QStringLiteral("PresetFilter"), line.filter);
            settings.insert(QStringLiteral("PresetCaption"), line.label);
        }
        run(line.menuKey, 0, settings);
    });
    setCentralWidget(central);

    m_company->setObjectName(QStringLiteral("sbCompany"));
    m_user->setObjectName(QStringLiteral("sbUser"));
    m_database->setObjectName(QStringLiteral("sbDatabase"));
    m_news->setObjectName(QStringLiteral("sbNews"));
    for (QLabel* l : {m_company, m_user, m_database, m_news})
        l->setContentsMargins(6, 0, 18, 0);
    statusBar()->addWidget(m_company);
    statusBar()->addWidget(m_user);
    statusBar()->addWidget(m_database, 1);
    statusBar()->addPermanentWidget(m_news);
    m_news->hide();
    buildMenus();

    settings.beginGroup(kBagGroup);
    const bool placedBefore = !settings.childKeys().isEmpty();
    settings.endGroup();
    if (placedBefore) {
        zq::SettingsPropertyBag bag(settings, kBagGroup);
        m_control->ReadProperties(bag);
    } else {
        m_control->InitProperties();
    }
}

void MainWindow::buildMenus() {
    QMenu* system = menuBar()->addMenu(QStringLiteral("系统(&S)"));
    system->setObjectName(QStringLiteral("mnuSystem"));
    QAction* relogin = system->addAction(QStringLiteral("重新登录(&L)..."), this, &MainWindow::switchUser);
    relogin->setObjectName(QStringLiteral("mnuLogin"));
    m_changePassword =
        system->addAction(QStringLiteral("修改密码(&P)..."), this, &MainWindow::changePassword);
    m_changePassword->setObjectName(QStringLiteral("mnuPassword"));
    system->addSeparator();
    m_userAdmin = system->addAction(QStringLiteral("用户与权限(&U)..."), this, &MainWindow::openUserAdmin);
    m_userAdmin->setObjectName(QStringLiteral("mnuUsers"));
    m_log = system->addAction(QStringLiteral("操作日志(&G)..."), this, &MainWindow::openLog);
    m_log->setObjectName(QStringLiteral("mnuLog"));
    system->addSeparator();
    system->addAction(QStringLiteral("退出(&X)"), this, &QWidget::close)
        ->setObjectName(QStringLiteral("mnuExit"));

    for (const Menu& m : menus()) {
        QMenu* menu = menuBar()->addMenu(QString::fromUtf8(m.caption));
        menu->setToolTipsVisible(true);
        for (const Entry& e : m.entries) {
            if (e.keys.empty()) {
                menu->addSeparator();
                continue;
            }
            const QString key = QString::fromLatin1(e.keys.front());
            QAction* a = menu->addAction(key);
            a->setObjectName(key);
            a->setData(key);
            connect(a, &QAction::triggered, this, [this, a] { run(a->data().toString()); });
            m_items.insert(key, a);
        }
    }
}

QStringList MainWindow::entryKeys(const QString& key) {
    for (const Menu& m : menus())
        for (const Entry& e : m.entries)
            if (!e.keys.empty() && key.compare(QLatin1String(e.keys.front()), Qt::CaseInsensitive) == 0) {
                QStringList keys;
                for (const char* k : e.keys)
                    keys << QString::fromLatin1(k);
                return keys;
            }
    return {key};
}

void MainWindow::loadCaptions() {
    // Captions of the modules in use, in the language; a module that is not in use is not offered.
    struct Module {
        QString caption;
        int serialNo = 0;
    };
    QHash<QString, Module> modules;
    const zq::Globals& g = G();
    if (!g.UserPath.isEmpty()) {
        const bool wasOpen = zq::conn().isOpen();
        zq::OpenConn(g.SQLData, zq::conn(), g.UserPath, g.Password, g.UserID, g.Default);
        try {
            if (zq::conn().isOpen())
                for (zq::Recordset rs(
                         zq::conn(),
                         QStringLiteral(
                             "select Model_Name,Model_Name%1,SerialNo from tSysFunc where NoUse_=0")
                             .arg(g.lang()));
                     !rs.eof(); rs.moveNext())
                    modules.insert(rs.text(0).toLower(), {rs.text(1), int(rs.val(2))});
        } catch (const zq::DbError&) {
            modules.clear(); // not a company database: nothing can be offered
        }
        if (!wasOpen && zq::conn().isOpen()) zq::conn().close();
    }
    const bool signedIn = !g.UserName.isEmpty();
    const auto ownCaption = [&g](const QString& first) -> QString {
        for (const Menu& m : menus())
            for (const Entry& e : m.entries)
                if (!e.keys.empty() && first == QLatin1String(e.keys.front()) && e.caption0)
                    return QString::fromUtf8(g.Language == 1 ? e.caption1 : e.caption0);
        return {};
    };
    for (auto it = m_items.constBegin(); it != m_items.constEnd(); ++it) {
        QAction* a = it.value();
        // The first key the user can use; failing that, the first the company uses, for the reason.
        QString chosen;
        QString reason;
        for (const QString& key : entryKeys(it.key())) {
            const Module m = modules.value(key.toLower());
            // Entering is the module's first right; with nobody signed in the login comes first.
            const bool refused = signedIn && m.serialNo > 0 && !zq::PowerAllows(m.serialNo);
            const bool built = zq::findCommand(key) != nullptr;
            const QString why = m.caption.isEmpty() ? QStringLiteral("本帐套未启用此功能")
                                : !built            ? QStringLiteral("此功能尚未提供")
                                : refused           ? QStringLiteral("无权使用此功能")
                                                    : QString();
            if (why.isEmpty()) {
                chosen = key;
                reason.clear();
                break;
            }
            if (chosen.isEmpty() ||
                (reason == QStringLiteral("本帐套未启用此功能") && !m.caption.isEmpty())) {
                chosen = key;
                reason = why;
            }
        }
        // The entry keeps one name whichever of its keys it runs: that of its first key in use.
        QString moduleCaption;
        for (const QString& key : entryKeys(it.key()))
            if (moduleCaption.isEmpty()) moduleCaption = modules.value(key.toLower()).caption;
        const QString own = ownCaption(it.key());
        const QString caption = !own.isEmpty() && !moduleCaption.isEmpty() ? own : moduleCaption;
        a->setText(caption.isEmpty() ? it.key() : caption);
        a->setData(chosen);
        a->setToolTip(reason.isEmpty() ? caption : reason);
        a->setEnabled(reason.isEmpty());
    }
}

void MainWindow::refresh() {
    // Messages before the first call of the control carry the title too.
    G().AppTitle = zq::LoadText(99);
    setWindowTitle(G().AppTitle);
    loadCaptions();
    updateStatus();
    updateUnread();
    m_home->reload();
}

void MainWindow::updateUnread() {
    const zq::Globals& g = G();
    m_unread = 0;
    if (!g.UserName.isEmpty() && !g.UserPath.isEmpty()) {
        const bool wasOpen = zq::conn().isOpen();
        zq::OpenConn(g.SQLData, zq::conn(), g.UserPath, g.Password, g.UserID, g.Default);
        try {
            if (zq::conn().isOpen()) {
                // The board limits a user to his department, as the count does.
                const QString prefix = g.isSupervisor() ? QString() : zq::GetUserDeptCode(g.UserName);
                m_unread = zq::news::UnreadCount(g.UserName, prefix);
            }
        } catch (const zq::DbError&) {
            m_unread = 0; // a database of before the count: nothing to tell
        }
        if (!wasOpen && zq::conn().isOpen()) zq::conn().close();
    }
    m_news->setText(QStringLiteral("新公告: %1 条").arg(m_unread));
    m_news->setToolTip(QStringLiteral("上次查看新闻公告以后发布的公告"));
    m_news->setVisible(m_unread > 0);
}

void MainWindow::updateStatus() {
    const zq::Globals& g = G();
    const bool loggedIn = !g.UserName.isEmpty();
    const QString where = g.SQLData == 0 ? g.UserPath : QStringLiteral("%1 @ %2").arg(g.Default, g.UserPath);
    m_company->setText(
        QStringLiteral("公司: %1").arg(g.CompName.isEmpty() ? QStringLiteral("-") : g.CompName));
    m_user->setText(!loggedIn          ? QStringLiteral("用户: (未登录)")
                    : g.isSupervisor() ? QStringLiteral("用户: %1 (系统负责人)").arg(g.UserName)
                                       : QStringLiteral("用户: %1").arg(g.UserName));
    m_database->setText(QStringLiteral("数据库: %1").arg(where.isEmpty() ? QStringLiteral("-") : where));
    m_changePassword->setEnabled(loggedIn);
    m_userAdmin->setEnabled(loggedIn && g.isSupervisor());
    m_log->setEnabled(loggedIn && g.isSupervisor());
}

bool MainWindow::login(const QString& userName) {
    G().UserName.clear();
    const bool ok = zq::StandAloneLogin(userName);
    refresh();
    if (ok && m_unread > 0)
        zq::ShowMsg(QStringLiteral("自您上次查看新闻公告以来, 又发布了 %1 条公告。").arg(m_unread),
                    zq::vbInformation);
    return ok;
}

void MainWindow::switchUser() {
    if (zq::conn().isOpen()) zq::conn().close();
    login();
}

void MainWindow::run(const QString& key, qint16 state, const QVariantMap& settings) {
    const QString before = G().UserName + QLatin1Char('|') + G().UserPath;
    try {
        // The host is in this module now; its log lines say so.
        m_control->setMyModel(key);
        if (zq::CheckModel(key, 0) != 0) m_control->Refresh(key, state, settings);
    } catch (const zq::DbError& e) {
        zq::ShowMsg(e.message(), zq::vbExclamation);
    } catch (const std::exception& e) {
        zq::ShowMsg(QString::fromUtf8(e.what()), zq::vbExclamation);
    }
    if (zq::conn().isOpen()) zq::conn().close();
    // The check may have logged someone in, perhaps to another account set.
    if (G().UserName + QLatin1Char('|') + G().UserPath != before) {
        refresh();
    } else {
        updateStatus();
        updateUnread();   // the board clears the count; reports and meetings may add to it
        m_home->reload(); // the screen may have changed what the figures count
    }
}

void MainWindow::changePassword() {
    const QString name = G().UserName;
    zq::PasswordDialog dlg(zq::PasswordDialog::Change, name, this);
    if (zq::showModal(dlg) != QDialog::Accepted) return;
    withDatabase(dlg.windowTitle(), [&](zq::Connection& c) {
        if (zq::checkLogin(c, name, dlg.oldPassword()) != zq::LoginCheck::Ok) {
            zq::ShowMsg(QStringLiteral("原密码不正确, 密码未修改!"), zq::vbExclamation, dlg.windowTitle());
            return;
        }
        zq::setUserPassword(c, name, dlg.password());
        zq::writeLog(c, name, QString(), QStringLiteral("修改密码"));
        zq::ShowMsg(QStringLiteral("密码已修改。"), zq::vbInformation, dlg.windowTitle());
    });
}

void MainWindow::openUserAdmin() {
    withDatabase(QStringLiteral("用户管理"), [this](zq::Connection& c) {
        zq::UserAdminDialog dlg(c, this);
        zq::showModal(dlg);
    });
    updateStatus();
}

void MainWindow::openLog() {
    withDatabase(QStringLiteral("操作日志"), [this](zq::Connection& c) {
        zq::LogViewerDialog dlg(c, this);
        zq::showModal(dlg);
    });
}

void MainWindow::closeEvent(QCloseEvent* event) {
    zq::SettingsPropertyBag bag(m_settings, kBagGroup);
    m_control->WriteProperties(bag);
    m_settings.sync();
    m_control->Terminate();
    event->accept();
}
