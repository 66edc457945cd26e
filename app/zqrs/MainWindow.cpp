#include "MainWindow.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Fonts.h"
#include "shell/ui/PropertyBag.h"
#include "shell/ui/zqRs.h"

#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QSettings>
#include <QStatusBar>
#include <QVBoxLayout>

namespace {
const QString kBagGroup = QStringLiteral("zqRs");

struct MenuItem {
    const char* caption;
    const char* key; // nullptr: a separator
};

struct Menu {
    const char* caption;
    std::vector<MenuItem> items;
};

// The menu keys of the control, grouped as the personnel office works.
const std::vector<Menu>& menus() {
    static const std::vector<Menu> m = {
        {"人事(&R)",
         {{"在职员工(&I)", "mnuRsManIn"},
          {"离职员工(&O)", "mnuRsManOut"},
          {nullptr, nullptr},
          {"人事统计(&T)", "mnuRsTotal"},
          {"人事调动(&M)", "mnuRsOthMove"}}},
        {"组织(&G)", {{"部门岗位(&B)", "mnuRsbm"}, {"部门岗位设置(&S)", "mnuRsSysBm"}}},
        {"资产(&A)",
         {{"证件管理(&C)", "mnuRsOthHoldCard"},
          {"物品借用(&G)", "mnuRsOthLoanGoods"},
          {"工具借用(&T)", "mnuRsOthTools"},
          {nullptr, nullptr},
          {"住房设置(&H)", "mnuRsHouseSet"},
          {"住房查询(&L)", "mnuRsHouseLook"}}},
        {"办公(&F)",
         {{"报告流转(&R)", "mnuOffice1"},
          {"会议安排(&M)", "mnuOffice2"},
          {"新闻通知(&N)", "mnuOffice3"},
          {nullptr, nullptr},
          {"办公报告", "mnuOA_Report"},
          {"办公会议", "mnuOA_Meeting"},
          {"办公通知", "mnuOA_News"}}},
        {"文档(&D)",
         {{"文档管理(&F)", "mnuWdFiler"}, {"部门职责(&B)", "mnuWdDept"}, {"企业词典(&D)", "mnuWdDict"}}},
        {"打印(&P)", {{"人事卡片(&1)", "mnuRsCard"}, {"人事卡片二(&2)", "mnuRsCard2"}}},
    };
    return m;
}
} // namespace

MainWindow::MainWindow(QSettings& settings, QWidget* parent)
    : QMainWindow(parent)
    , m_settings(settings)
    , m_control(new zqRs)
    , m_database(new QLabel)
    , m_user(new QLabel) {
    setWindowTitle(QStringLiteral("人事管理系统"));
    setFont(zq::uiFont());
    resize(900, 600);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    auto* title = new QLabel(QStringLiteral("人事管理系统"));
    title->setAlignment(Qt::AlignCenter);
    title->setFont(zq::uiFont(24));
    layout->addWidget(title);
    layout->addWidget(m_control);
    setCentralWidget(central);

    statusBar()->addWidget(m_database, 1);
    statusBar()->addPermanentWidget(m_user);
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
    system->addAction(QStringLiteral("退出(&X)"), this, &QWidget::close);
    for (const Menu& m : menus()) {
        QMenu* menu = menuBar()->addMenu(QString::fromUtf8(m.caption));
        for (const MenuItem& item : m.items) {
            if (!item.key) {
                menu->addSeparator();
                continue;
            }
            const QString key = QString::fromUtf8(item.key);
            QAction* a = menu->addAction(QString::fromUtf8(item.caption), this, [this, key] { run(key); });
            a->setObjectName(key);
        }
    }
}

void MainWindow::run(const QString& key, qint16 state) {
    try {
        m_control->Refresh(key, state);
    } catch (const zq::DbError& e) {
        zq::ShowMsg(e.message(), zq::vbExclamation);
    } catch (const std::exception& e) {
        zq::ShowMsg(QString::fromUtf8(e.what()), zq::vbExclamation);
    }
    updateStatus();
}

void MainWindow::updateStatus() {
    const zq::Globals& g = zq::G();
    const QString where = g.SQLData == 0 ? g.UserPath : QStringLiteral("%1 @ %2").arg(g.Default, g.UserPath);
    m_database->setText(QStringLiteral("数据库: %1").arg(where));
    m_user->setText(QStringLiteral("用户: %1").arg(g.UserName));
}

void MainWindow::closeEvent(QCloseEvent* event) {
    zq::SettingsPropertyBag bag(m_settings, kBagGroup);
    m_control->WriteProperties(bag);
    m_settings.sync();
    m_control->Terminate();
    event->accept();
}
