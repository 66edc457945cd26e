#include "Controls.h"
#include "TestDb.h"

#include "services/Spreadsheets.h"

#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"
#include "shell/ui/LogViewerDialog.h"
#include "shell/ui/UserAdminDialog.h"
#include "shell/Users.h"

#include <functional>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::child;

namespace {
int rowOf(QTableWidget* grid, const QString& caption) {
    for (int r = 0; r < grid->rowCount(); ++r)
        if (grid->item(r, 0)->text() == caption) return r;
    return -1;
}

void tick(QTableWidget* grid, int row, int op, bool on) {
    grid->item(row, 1 + op)->setCheckState(on ? Qt::Checked : Qt::Unchecked);
}

QString power(const QString& name) {
    return findUser(conn(), name)->power;
}

QString ones(const QString& power) {
    QStringList at;
    for (int i = 0; i < power.size(); ++i)
        if (power[i] == '1') at << QString::number(i + 1);
    return at.join(',');
}
} // namespace

class TestUserAdmin : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        G().Language = 0;
        G().UserName = "系统管理员";
        G().ZgName = "系统管理员";
        QString p = noPower();
        p[199] = '1'; // a position no module owns: saving must leave it alone
        createUser(conn(), "张三", "pw", p, false);
        createUser(conn(), "系统管理员", "root", noPower(), true);
    }

    void cleanup() {
        setModalRunner({});
        installPrompts(nullptr);
    }

    void matrixWritesTheModulePositions() {
        conn().execute("insert into tSysFunc (SerialNo, Model_Name, Model_Name_0, Model_Name_1, SecondPass, "
                       "Password, NoUse_) values (348, 'mnuLast', '末模块', '末模塊', 0, '', 0)");
        conn().execute("insert into tSysFunc (SerialNo, Model_Name, Model_Name_0, Model_Name_1, SecondPass, "
                       "Password, NoUse_) values (-1, 'mnuFree', '自由模块', '自由模塊', 0, '', 0)");
        UserAdminDialog d(conn());
        QVERIFY(d.selectUser("张三"));
        auto* grid = child<QTableWidget>(d, "grdPower");
        QCOMPARE(grid->rowCount(), 25); // the seeded modules and the one at 348, not the free one
        QCOMPARE(grid->horizontalHeaderItem(4)->text(), QString("删除"));
        const int move = rowOf(grid, "调令管理");
        const int last = rowOf(grid, "末模块");
        QVERIFY(move >= 0 && last == grid->rowCount() - 1);
        QVERIFY(!(grid->item(last, 1 + 3)->flags() & Qt::ItemIsUserCheckable)); // 351 lies outside
        QVERIFY(grid->item(last, 1 + 2)->flags() & Qt::ItemIsUserCheckable);    // 350 does not

        tick(grid, move, 0, true);
        tick(grid, move, 3, true);
        tick(grid, last, 2, true);
        tick(grid, rowOf(grid, "在职员工档案"), 4, true);
        child<QPushButton>(d, "cmdSave")->click();
        QCOMPARE(ones(power("张三")), QString("5,26,29,200,350"));
        QCOMPARE(power("张三").size(), 350);

        tick(grid, move, 3, false);
        child<QPushButton>(d, "cmdSave")->click();
        QCOMPARE(ones(power("张三")), QString("5,26,200,350"));

        child<QPushButton>(d, "cmdNone")->click();
        child<QPushButton>(d, "cmdSave")->click();
        QCOMPARE(ones(power("张三")), QString("200"));
        child<QPushButton>(d, "cmdAll")->click();
        child<QPushButton>(d, "cmdSave")->click();
        QCOMPARE(power("张三").count('1'), 24 * 5 + 3 + 1);
        QVERIFY(m_prompts->shown().isEmpty());
    }

    void captionsFollowTheLanguage() {
        G().Language = 1;
        UserAdminDialog d(conn());
        QVERIFY(rowOf(child<QTableWidget>(d, "grdPower"), "調令管理") >= 0);
    }

    void supervisorMatrixIsFullAndLocked() {
        UserAdminDialog d(conn());
        QVERIFY(d.selectUser("系统管理员"));
        auto* grid = child<QTableWidget>(d, "grdPower");
        QCOMPARE(grid->item(0, 1)->checkState(), Qt::Checked);
        QVERIFY(!(grid->item(0, 1)->flags() & Qt::ItemIsUserCheckable));
        QVERIFY(!child<QPushButton>(d, "cmdSave")->isEnabled());
        QVERIFY(child<QCheckBox>(d, "chkSupervisor")->isChecked());
        QVERIFY(child<QLabel>(d, "lblPower")->text().contains("全部权限"));
    }

    void unsavedRightsAreOfferedBeforeLeaving() {
        UserAdminDialog d(conn());
        QVERIFY(d.selectUser("张三"));
        auto* grid = child<QTableWidget>(d, "grdPower");
        tick(grid, rowOf(grid, "调令管理"), 1, true);
        m_prompts->answer(vbYes);
        QVERIFY(d.selectUser("系统管理员"));
        QCOMPARE(m_prompts->messages(), QStringList("用户 张三 的权限已修改, 是否保存?"));
        QCOMPARE(ones(power("张三")), QString("27,200"));

        QVERIFY(d.selectUser("张三"));
        tick(grid, rowOf(grid, "调令管理"), 2, true);
        m_prompts->answer(vbNo);
        d.reject();
        QCOMPARE(ones(power("张三")), QString("27,200"));
    }

    void addRenameDisable() {
        UserAdminDialog d(conn());
        setModalRunner([](QDialog& dlg) {
            child<QLineEdit>(dlg, "txtName")->setText("周八");
            child<QLineEdit>(dlg, "txtPassword")->setText("p8");
            child<QLineEdit>(dlg, "txtRepeat")->setText("p8");
            child<QPushButton>(dlg, "cmdOK")->click();
            return dlg.result();
        });
        m_prompts->answer(vbYes); // no person of that name: add anyway
        child<QPushButton>(d, "cmdAdd")->click();
        QVERIFY(m_prompts->messages().value(0).contains("人事档案中没有姓名为\"周八\"的员工"));
        QVERIFY(findUser(conn(), "周八"));
        QCOMPARE(power("周八"), noPower());
        QCOMPARE(checkLogin(conn(), "周八", "p8"), LoginCheck::Ok);
        auto* list = child<QListWidget>(d, "lstUsers");
        QCOMPARE(list->currentItem()->text(), QString("周八"));

        m_prompts->answerInput(QString("周八八"));
        child<QPushButton>(d, "cmdRename")->click();
        QVERIFY(findUser(conn(), "周八八"));
        QVERIFY(!findUser(conn(), "周八"));

        child<QPushButton>(d, "cmdDisable")->click();
        QVERIFY(findUser(conn(), "周八八")->disabled);
        QCOMPARE(list->currentItem()->text(), QString("周八八  (已停用)"));
        QCOMPARE(child<QPushButton>(d, "cmdDisable")->text(), QString("启用"));

        setModalRunner([](QDialog& dlg) {
            child<QLineEdit>(dlg, "txtPassword")->setText("new");
            child<QLineEdit>(dlg, "txtRepeat")->setText("new");
            child<QPushButton>(dlg, "cmdOK")->click();
            return dlg.result();
        });
        child<QPushButton>(d, "cmdPassword")->click();
        setUserDisabled(conn(), "周八八", false);
        QCOMPARE(checkLogin(conn(), "周八八", "new"), LoginCheck::Ok);

        QStringList lines;
        for (const LogEntry& e : readLog(conn(), LogFilter()))
            lines.prepend(e.text);
        QCOMPARE(lines, QStringList({"新增用户 [周八]", "用户改名 [周八-周八八]", "停用用户 [周八八]",
                                     "重设密码 [周八八]"}));
    }

    void theLastSupervisorStays() {
        UserAdminDialog d(conn());
        QVERIFY(d.selectUser("系统管理员"));
        child<QPushButton>(d, "cmdDisable")->click();
        QCOMPARE(m_prompts->messages().last(), QString("不能停用正在使用系统的用户!"));
        child<QCheckBox>(d, "chkSupervisor")->click();
        QCOMPARE(m_prompts->messages().last(), QString("至少要保留一位可用的系统负责人!"));
        QVERIFY(findUser(conn(), "系统管理员")->supervisor);
        QVERIFY(child<QCheckBox>(d, "chkSupervisor")->isChecked());

        // With a second supervisor the first may step down.
        QVERIFY(d.selectUser("张三"));
        child<QCheckBox>(d, "chkSupervisor")->click();
        QVERIFY(findUser(conn(), "张三")->supervisor);
        QVERIFY(d.selectUser("系统管理员"));
        child<QCheckBox>(d, "chkSupervisor")->click();
        QVERIFY(!findUser(conn(), "系统管理员")->supervisor);
    }

    void logViewerFiltersAndExports() {
        const QString today = QDate::currentDate().toString(Qt::ISODate);
        const QString old = QDate::currentDate().addDays(-40).toString(Qt::ISODate);
        const auto line = [](const QString& time, const char* user, const char* module, const char* text) {
            conn().execute(
                QStringLiteral("insert into tSysLog (fTime, fUser, fModel, fText) values ('%1', '%2', "
                               "'%3', '%4')")
                    .arg(time, QString::fromUtf8(user), QString::fromUtf8(module), QString::fromUtf8(text)));
        };
        line(old + " 08:00:00", "张三", "mnuRsManIn", "在职员工档案");
        line(today + " 08:00:00", "张三", "mnuRsOthMove", "调令管理-新增");
        line(today + " 09:00:00", "李四", "mnuRsManIn", "增加员工记录 [0001-王五]");
        line(today + " 10:00:00", "张三", "", "登录");

        LogViewerDialog d(conn());
        auto* grid = child<QTableWidget>(d, "grdLog");
        QCOMPARE(grid->rowCount(), 3); // the last thirty days
        QCOMPARE(grid->item(0, 3)->text(), QString("登录"));
        QCOMPARE(grid->item(1, 2)->text(), QString("在职员工档案")); // the module's caption
        QCOMPARE(child<QLabel>(d, "lblCount")->text(), QString("共 3 条"));

        child<QDateEdit>(d, "dtpFrom")->setDate(QDate::currentDate().addDays(-60));
        auto* user = child<QComboBox>(d, "cboUser");
        user->setCurrentIndex(user->findText("张三"));
        child<QPushButton>(d, "cmdSeek")->click();
        QCOMPARE(grid->rowCount(), 3);
        QCOMPARE(grid->item(2, 0)->text(), old + " 08:00:00");
        child<QLineEdit>(d, "txtText")->setText("调令");
        child<QPushButton>(d, "cmdSeek")->click();
        QCOMPARE(grid->rowCount(), 1);
        child<QLineEdit>(d, "txtText")->setText("it's");
        child<QPushButton>(d, "cmdSeek")->click();
        QCOMPARE(m_prompts->messages().last(), QString("文本错误: 文本中不可含有<引号>或<单引号> !"));
        QCOMPARE(grid->rowCount(), 1);

        user->setCurrentIndex(0);
        child<QLineEdit>(d, "txtText")->clear();
        child<QPushButton>(d, "cmdSeek")->click();
        QTemporaryDir dir;
        const QString file = dir.filePath("日志.csv");
        m_prompts->answerFile(file);
        child<QPushButton>(d, "cmdExport")->click();
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray bytes = f.readAll();
        QVERIFY(bytes.startsWith("\xEF\xBB\xBF"));
        const QStringList rows = QString::fromUtf8(bytes.mid(3)).split("\r\n", Qt::SkipEmptyParts);
        QCOMPARE(rows.size(), 5);
        QCOMPARE(rows[0], QString("时间,用户,模块,内容"));
        QCOMPARE(rows[2], today + " 09:00:00,李四,在职员工档案,增加员工记录 [0001-王五]");
        QVERIFY(m_prompts->messages().last().startsWith("已导出 4 条记录"));
        // The default is a workbook; it reads back the same.
        m_prompts->answerFile(dir.filePath("日志"));
        child<QPushButton>(d, "cmdExport")->click();
        const SheetData sheet = ReadSpreadsheet(dir.filePath("日志.xlsx"));
        QVERIFY2(sheet.error.isEmpty(), qPrintable(sheet.error));
        QCOMPARE(sheet.rows.size(), 5);
        QCOMPARE(sheet.rows[2].cells().join(','), rows[2]);
    }
};

ZQ_DB_TEST_MAIN(TestUserAdmin)
#include "test_useradmin.moc"
