#include "Controls.h"
#include "TestDb.h"

#include "services/InputAids.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/ConditionDialog.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>

using namespace zq;
using test::child;
using test::click;
using test::exec;

namespace {
void entry(const char* type, const char* code, const char* name) {
    exec(QStringLiteral("insert into briefDetail (briefType,BriefCode,BriefName) values ('%1','%2','%3')")
             .arg(QString::fromUtf8(type), QString::fromUtf8(code), QString::fromUtf8(name)));
}

void field(const char* table, int id, int order, const char* name, const char* caption, int selected,
           int dataType = 0, const char* brief = "", const char* width = "null") {
    exec(QStringLiteral("insert into RptListDetail (fTable,FieldID,OrderID,FieldName,FieldName_0,FieldName_1,"
                        "FieldSelected,FieldDataType,FieldBriefType,FieldGridWidth) "
                        "values ('%1',%2,%3,'%4','%5','%5',%6,%7,'%8',%9)")
             .arg(QString::fromUtf8(table))
             .arg(id)
             .arg(order)
             .arg(QString::fromUtf8(name), QString::fromUtf8(caption))
             .arg(selected)
             .arg(dataType)
             .arg(QString::fromUtf8(brief), QString::fromUtf8(width)));
}

QString one(const QString& sql) {
    Recordset rs(conn(), sql);
    return rs.eof() ? QStringLiteral("<none>") : rs.text(0);
}

QStringList column(const QString& sql) {
    QStringList l;
    for (Recordset rs(conn(), sql); !rs.eof(); rs.moveNext())
        l << rs.text(0);
    return l;
}

QStringList visibleRows(QTreeWidget* list) {
    QStringList l;
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        if (!list->topLevelItem(i)->isHidden())
            l << list->topLevelItem(i)->text(0) + QLatin1Char(' ') + list->topLevelItem(i)->text(1);
    return l;
}

void selectText(QComboBox* combo, const QString& text) {
    const int i = combo->findText(text);
    QVERIFY2(i >= 0, qPrintable(text));
    combo->setCurrentIndex(i);
}

// Adds one row of a condition through the editor.
void conditionRow(QWidget& d, const QString& join, const QString& caption, const QString& op,
                  const QString& value, const QString& value2 = QString()) {
    selectText(child<QComboBox>(d, "cboJoin"), join);
    selectText(child<QComboBox>(d, "cboField"), caption);
    selectText(child<QComboBox>(d, "cboOperator"), op);
    child<QComboBox>(d, "cboValue")->setEditText(value);
    child<QLineEdit>(d, "txtValue2")->setText(value2);
    click(d, "cmdAddRow");
}
} // namespace

class TestBriefDialog : public QObject {
    Q_OBJECT
private slots:
    void init() {
        test::freshDatabase();
        for (const char* t : {"brief", "briefDetail", "RptListDetail", "tRsBasic"})
            exec(QStringLiteral("delete from ") + QLatin1String(t));
        exec("insert into brief (briefType,BriefName) values ('0001','性别')");
        exec("insert into brief (briefType,BriefName) values ('0002','民族')");
        exec("insert into brief (briefType,BriefName) values ('0003','学历')");
        entry("0001", "01", "男");
        entry("0001", "02", "女");
        entry("0002", "01", "汉族");
        entry("0002", "02", "回族");
        entry("0002", "03", "满族");
        G().Language = 0;
        scriptPrompts();
    }
    void cleanup() { setBriefDriver(nullptr); }

    void modesWithoutADialog() {
        int shown = 0;
        setBriefDriver([&](BriefDialog&) { ++shown; });
        QCOMPARE(ShowBriefDialog("", "", 2), QString());
        QCOMPARE(ShowBriefDialog("tRsBasic", "0001", 4), QString());
        QCOMPARE(ShowBriefDialog("tRsBasic", "0001", 7), QString());
        QCOMPARE(shown, 0);
        // Without a driver, offscreen, the dialog is cancelled rather than waited for.
        setBriefDriver(nullptr);
        QCOMPARE(ShowBriefDialog("", "0001", 2), QString());
    }

    void pickAList() {
        QStringList seen;
        setBriefDriver([&](BriefDialog& d) {
            QCOMPARE(d.mode(), 1);
            auto* list = child<QTreeWidget>(d, "lstItems");
            seen = visibleRows(list);
            child<QLineEdit>(d, "txtFilter")->setText("民");
            QCOMPARE(visibleRows(list), QStringList({"0002 民族"}));
            d.accept();
        });
        QCOMPARE(ShowBriefDialog("", "99999999", 1), QString("0002"));
        QCOMPARE(seen, QStringList({"0001 性别", "0002 民族", "0003 学历"}));

        setBriefDriver([](BriefDialog& d) { d.reject(); });
        QCOMPARE(ShowBriefDialog("", "99999999", 1), QString());
        // A filter that hides everything chooses nothing.
        setBriefDriver([](BriefDialog& d) {
            child<QLineEdit>(d, "txtFilter")->setText("无此项");
            d.accept();
        });
        QCOMPARE(ShowBriefDialog("", "99999999", 1), QString());
    }

    void pickAnEntryWithTypeToFilter() {
        setBriefDriver([](BriefDialog& d) {
            d.show(); // offscreen: Enter reaches the default button of a shown dialog only
            auto* list = child<QTreeWidget>(d, "lstItems");
            QCOMPARE(visibleRows(list), QStringList({"01 汉族", "02 回族", "03 满族"}));
            QCOMPARE(d.answer(), QString("汉族")); // the first entry is current
            child<QLineEdit>(d, "txtFilter")->setText("03");
            QCOMPARE(visibleRows(list), QStringList({"03 满族"}));
            QTest::keyClick(child<QLineEdit>(d, "txtFilter"), Qt::Key_Return); // Enter takes it
        });
        QCOMPARE(ShowBriefDialog("", "0002", 2), QString("满族"));
    }

    void keepTheListInTheDialog() {
        ScriptedPrompts& p = scriptPrompts();
        setBriefDriver([&](BriefDialog& d) {
            auto* list = child<QTreeWidget>(d, "lstItems");
            p.answerInput(QString("未知"));
            click(d, "cmdAdd");
            QCOMPARE(visibleRows(list), QStringList({"01 男", "02 女", "03 未知"}));
            QCOMPARE(list->currentItem()->text(1), QString("未知"));

            click(d, "cmdUp"); // 未知 before 女: the two swap codes
            QCOMPARE(visibleRows(list), QStringList({"01 男", "02 未知", "03 女"}));
            QCOMPARE(list->currentItem()->text(1), QString("未知"));

            p.answerInput(QString("不详"));
            click(d, "cmdRename");
            p.answerInput(QString("it's")); // a quote is refused before any statement
            click(d, "cmdRename");
            QCOMPARE(p.messages().last(), QString("内容中不能含有单引号(')!"));

            list->setCurrentItem(list->topLevelItem(0));
            click(d, "cmdDown");
            QCOMPARE(visibleRows(list), QStringList({"01 不详", "02 男", "03 女"}));

            p.answer(vbNo);
            click(d, "cmdDelete"); // 男, kept on No
            p.answer(vbYes);
            click(d, "cmdDelete");
            QCOMPARE(visibleRows(list), QStringList({"01 不详", "03 女"}));
            d.accept();
        });
        QCOMPARE(ShowBriefDialog("", "0001", 2), QString("女"));
        QCOMPARE(column("select BriefCode || ' ' || BriefName from briefDetail where briefType='0001' order "
                        "by BriefCode"),
                 QStringList({"01 不详", "03 女"}));
        QCOMPARE(one("select count(*) from briefDetail where briefType='0002'"), QString("3"));
    }

    void askBriefValueOverwritesTheField() {
        field("tRsBasic", 1, 1, "fMz", "民族", 1, 0, "0002");
        field("tRsBasic", 2, 2, "fName", "姓名", 1);
        setBriefDriver([](BriefDialog& d) {
            child<QLineEdit>(d, "txtFilter")->setText("回");
            d.accept();
        });
        QString f = "fMz";
        QCOMPARE(AskBriefValue(f), QString("回族"));
        QCOMPARE(f, QString("回族"));
        f = "fName"; // no list
        QCOMPARE(AskBriefValue(f), QString());
        QCOMPARE(f, QString("fName"));
        f = "fUnknown";
        QCOMPARE(AskBriefValue(f), QString());
        setBriefDriver([](BriefDialog& d) { d.reject(); });
        f = "fMz";
        QCOMPARE(AskBriefValue(f), QString());
        QCOMPARE(f, QString());
    }

    void composeACondition() {
        field("tRsBasic", 1, 3, "fName", "姓名", 1);
        field("tRsBasic", 2, 1, "fzt", "状态", 1, 3);
        field("tRsBasic", 3, 2, "fMz", "民族", 1, 0, "0002");
        field("tRsBasic", 4, 4, "fHidden", "", 1);
        exec("insert into tRsBasic (fCode,fName,fzt,fMz) values ('1','张三',1,'汉族')");
        exec("insert into tRsBasic (fCode,fName,fzt,fMz) values ('2','李四',1,'回族')");
        exec("insert into tRsBasic (fCode,fName,fzt,fMz) values ('3','张五',2,'回族')");
        exec("insert into tRsBasic (fCode,fName,fzt,fMz) values ('4','王六',3,'满族')");
        ScriptedPrompts& p = scriptPrompts();
        setBriefDriver([&](BriefDialog& d) {
            auto* fields = child<QComboBox>(d, "cboField");
            QCOMPARE(fields->count(), 3); // in OrderID order, the uncaptioned one left out
            QCOMPARE(fields->itemText(0), QString("状态"));
            selectText(fields, "民族");
            QCOMPARE(child<QComboBox>(d, "cboValue")->count(), 3); // the field's brief list

            conditionRow(d, "并且", "姓名", "like", "张*");
            conditionRow(d, "并且", "状态", "between", "1", "2");
            conditionRow(d, "并且", "民族", "=", "it's");
            QCOMPARE(p.messages().last(), QString("条件值中不能含有单引号(')!"));
            conditionRow(d, "并且", "状态", ">", "abc");
            QCOMPARE(p.messages().size(), 2); // a number is wanted
            QCOMPARE(child<QPlainTextEdit>(d, "txtPreview")->toPlainText(),
                     QString("fName like '张%' and fzt>=1 and fzt<=2"));
            d.accept(); // the refused value is still in the editor
            QCOMPARE(d.result(), int(QDialog::Rejected));
            child<QComboBox>(d, "cboValue")->setEditText("");
            d.accept();
        });
        const QString plain = ShowBriefDialog("trsbasic", "", 3);
        QCOMPARE(plain, QString("fName like '张%' and fzt>=1 and fzt<=2"));
        QCOMPARE(one("select count(*) from trsbasic a where a.fzt>0 And " + QualifyCondition(plain, "a", -1)),
                 QString("2"));

        setBriefDriver([&](BriefDialog& d) {
            conditionRow(d, "并且", "民族", "=", "回族");
            conditionRow(d, "并且", "状态", "=", "1");
            conditionRow(d, "或者", "民族", "<>", "回族");
            child<QComboBox>(d, "cboValue")->setEditText(""); // nothing pending
            d.accept();
        });
        const QString either = ShowBriefDialog("trsbasic", "", 3);
        QCOMPARE(either,
                 QString("fCode in (select fCode from trsbasic where fMz='回族' and fzt=1 or fMz<>'回族')"));
        // Spliced after another term, with the alias before each term, "or" still binds loosest.
        QCOMPARE(
            one("select count(*) from trsbasic a where a.fzt=1 And " + QualifyCondition(either, "a", -1)),
            QString("2"));
        QCOMPARE(one("select count(*) from trsbasic where fzt=2 And " + either), QString("0"));

        setBriefDriver([](BriefDialog& d) {
            conditionRow(d, "并且", "姓名", "=", "王六"); // typed, not added: OK takes it
            child<QComboBox>(d, "cboValue")->setEditText("李四");
            d.accept();
        });
        QCOMPARE(ShowBriefDialog("trsbasic", "fzt=1", 3), QString("fzt=1 and fName='王六' and fName='李四'"));
        setBriefDriver([](BriefDialog& d) { d.reject(); });
        QCOMPARE(ShowBriefDialog("trsbasic", "", 3), QString());
    }

    void chooseColumns() {
        field("tRs_Bm", -2, 1, "fCode", "编码", 1);
        field("tRs_Bm", -1, 2, "fName", "名称", 1);
        field("tRs_Bm", 3, 3, "fLimited", "编制", 1, 3, "", "12");
        field("tRs_Bm", 4, 4, "fRz", "类别", 0);
        field("tRs_Bm", 5, 5, "fColor", "", 1); // not in use: not offered
        setBriefDriver([](BriefDialog& d) {
            auto* grid = child<QTableWidget>(d, "grdColumns");
            QCOMPARE(grid->rowCount(), 4);
            QCOMPARE(grid->item(2, 0)->text(), QString("编制"));
            QCOMPARE(grid->item(2, 2)->text(), QString("12"));
            d.accept(); // nothing changed
        });
        QCOMPARE(ShowBriefDialog("tRs_Bm", "", 5), QString());

        ScriptedPrompts& p = scriptPrompts();
        setBriefDriver([&](BriefDialog& d) {
            auto* grid = child<QTableWidget>(d, "grdColumns");
            grid->item(2, 0)->setCheckState(Qt::Unchecked); // 编制 off
            grid->item(3, 0)->setCheckState(Qt::Checked);   // 类别 on
            grid->setCurrentCell(3, 0);
            click(d, "cmdUp"); // 类别 before 编制
            grid->item(2, 2)->setText("abc");
            d.accept(); // refused: the width is not a number
            QCOMPARE(d.result(), int(QDialog::Rejected));
            QCOMPARE(p.messages().size(), 1);
            grid->item(2, 2)->setText("15");
            d.accept();
        });
        QCOMPARE(ShowBriefDialog("tRs_Bm", "", 5), QString("fCode,fName,fRz"));
        QCOMPARE(
            column("select FieldName || ':' || FieldID || ':' || FieldSelected || ':' || "
                   "coalesce(cast(FieldGridWidth as integer),0) from RptListDetail where fTable='tRs_Bm' "
                   "order by FieldID"),
            QStringList({"fCode:-2:1:0", "fName:-1:1:0", "fRz:3:1:15", "fLimited:4:0:12", "fColor:5:1:0"}));

        setBriefDriver([&](BriefDialog& d) {
            auto* grid = child<QTableWidget>(d, "grdColumns");
            for (int r = 0; r < grid->rowCount(); ++r)
                grid->item(r, 0)->setCheckState(Qt::Unchecked);
            d.accept();
            QCOMPARE(d.result(), int(QDialog::Rejected)); // a grid needs a column
            d.reject();
        });
        QCOMPARE(ShowBriefDialog("tRs_Bm", "", 5), QString());
        QCOMPARE(one("select count(*) from RptListDetail where fTable='tRs_Bm' and FieldSelected=1"),
                 QString("4"));
    }
};

ZQ_DB_TEST_MAIN(TestBriefDialog)
#include "test_briefdialog.moc"
