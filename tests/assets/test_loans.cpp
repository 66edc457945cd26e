// The loan and certificate screens driven as the clerk would, on both engines.
#include "Controls.h"
#include "TestDb.h"

#include "assets/frmRs_Goods.h"
#include "assets/frmRs_Identify.h"
#include "assets/LoanData.h"
#include "personnel/PersonBrowserData.h"
#include "services/ui/Grid.h"
#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <memory>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QTest>

using namespace zq;
using test::click;
using test::exec;
using test::one;

namespace {

void person(const QString& code, const QString& name, int state = 1,
            const QString& dept = QStringLiteral("01")) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt,fBmCode) values (?,?,?,?)"),
         {code, name, state, dept});
}

void loan(const QString& table, const QString& code, const QString& goods, const QString& lent,
          const QVariant& back = {}) {
    exec(QStringLiteral("insert into %1 (fcode,fName,goodsname,geshu,price,Total,loantime,backtime) values "
                        "(?,?,?,1,2,2,?,?)")
             .arg(table),
         {code, QStringLiteral("张三"), goods, lent, back});
}

template <typename T = QWidget> T* w(QWidget& f, const QString& name) {
    return test::child<T>(f, name);
}

void setBox(QWidget& f, const QString& name, const QString& text) {
    w<QLineEdit>(f, name)->setText(text);
}

// Lets the moves of the focus under way, and what they put off until then, finish.
void settle() {
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

// A click of the clerk's into a box of an active window.
QLineEdit* clickInto(QWidget& f, const QString& name) {
    QLineEdit* box = w<QLineEdit>(f, name);
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(box->width() - 4, box->height() / 2));
    settle();
    return box;
}

void activate(QWidget& f) {
    f.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&f));
}

} // namespace

class TestLoans : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    ConnectionSettings m_settings;

    std::unique_ptr<frmRs_Goods> goods(int state) {
        auto f = std::make_unique<frmRs_Goods>();
        f->setState(state);
        f->show();
        return f;
    }
    void fillLoan(QWidget& f, const QString& code, const QString& name, const QString& what) {
        setBox(f, "Text3(0)", code);
        setBox(f, "Text3(1)", name);
        setBox(f, "Text3(2)", what);
        setBox(f, "Text3(4)", "2");
        setBox(f, "Text3(5)", "12.5");
        setBox(f, "Text3(6)", LoanSubtotal("2", "12.5"));
    }

private slots:
    void init() {
        m_settings = test::freshDatabase();
        test::actAsSupervisor();
        m_prompts = &scriptPrompts();
        person("001", "张三");
        person("002", "李四", 3);
    }

    void keysCrossOverWithTables() {
        QStringList seen;
        setModalRunner([&](QDialog& d) {
            d.show();
            auto& g = static_cast<frmRs_Goods&>(d);
            seen << QString::number(g.state()) + d.windowTitle() +
                        (w<QWidget>(d, "SBar1")->isHidden() ? QStringLiteral("-") : QStringLiteral("+"));
            return 0;
        });
        QVERIFY(runCommand(QStringLiteral("mnuRsOthLoanGoods"), 0));
        QVERIFY(runCommand(QStringLiteral("mnuRsOthTools"), 0));
        setModalRunner({});
        QCOMPARE(seen, QStringList({"1借领用工具设备-", "2借领用行政物品+"}));
        QCOMPARE(LoanTable(1), QStringLiteral("trsLoanTools"));
        QCOMPARE(LoanTable(2), QStringLiteral("tRsLoanGoods"));
        QCOMPARE(LoanModelKey(2), QStringLiteral("mnuRsOthTools"));
    }

    void entryRefusesBadInputAndSavesWhole() {
        auto f = goods(1);
        QCOMPARE(w<QLabel>(*f, "Label3(2)")->text(), QStringLiteral("物品名称"));
        QVERIFY(f->myFields().toLower().startsWith("fid,"));
        click(*f, "cmdAdd");
        QVERIFY(w<QWidget>(*f, "Pict")->isVisible());
        QVERIFY(!w<QWidget>(*f, "cmdSeek")->isEnabled());
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("工号不能为空！"));

        fillLoan(*f, "009", "王五", "扳手");
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("此工号不存在,请查证!"));
        fillLoan(*f, "001", "王五", "扳手");
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("此人工号与姓名不符,请查证!"));
        fillLoan(*f, "001", "张三", "扳手");
        setBox(*f, "Text3(4)", "abc");
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("数量必须为数字型!"));
        setBox(*f, "Text3(4)", "2");
        w<QDateEdit>(*f, "DTPStart")->setDate(QDate(2024, 5, 10));
        setBox(*f, "Text3(10)", "2024-05-09");
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("归还日期应大于领用日期!"));
        setBox(*f, "Text3(10)", "2024-13-40");
        click(*f, "cmdOk");
        QVERIFY(m_prompts->messages().last().startsWith(QStringLiteral("归还日期格式错误，应为")));
        setBox(*f, "Text3(10)", "");
        // A quote left in a box stops the save with the box's own message, and the box has the focus.
        setBox(*f, "Text3(11)", "O'Neil");
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("您不能输入单引号,请删除!"));
        QCOMPARE(one("select count(*) from trsLoanTools"), QStringLiteral("0"));

        setBox(*f, "Text3(11)", "");
        m_prompts->answer(vbYes);
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->shown().at(m_prompts->shown().size() - 2).title, QStringLiteral("必须明确"));
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘完毕!"));
        QCOMPARE(one("select loantime from trsLoanTools"), QStringLiteral("2024-05-10"));
        QCOMPARE(one("select count(*) from trsLoanTools where backtime is null"), QStringLiteral("1"));
        QCOMPARE(one("select Total from trsLoanTools").toDouble(), 25.0);
        // Ready for the next: the boxes are empty, the panel stays.
        QVERIFY(w<QLineEdit>(*f, "Text3(0)")->text().isEmpty());
        // The browser's leave check counts the tool still out.
        QCOMPARE(UnreturnedTools(QStringLiteral("001")), 1);

        // A person who has left is asked about; no saves nothing.
        fillLoan(*f, "002", "李四", "钳子");
        m_prompts->answer(vbYes);
        m_prompts->answer(vbNo);
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("李四 此人已离职,是否有权借领物品!"));
        QCOMPARE(one("select count(*) from trsLoanTools"), QStringLiteral("1"));
    }

    void amountBoxesTakeWhatIsTypedAndTabStaysInTheEntry() {
        auto f = goods(2);
        activate(*f);
        click(*f, "cmdAdd");
        setBox(*f, "Text3(0)", "001");
        setBox(*f, "Text3(1)", "张三");
        setBox(*f, "Text3(2)", "订书机");
        // A click into the empty quantity offers 0, selected: what is typed replaces it.
        QLineEdit* quantity = clickInto(*f, "Text3(4)");
        QCOMPARE(quantity->text(), QStringLiteral("0"));
        QCOMPARE(quantity->selectedText(), QStringLiteral("0"));
        QTest::keyClicks(quantity, "1");
        QCOMPARE(quantity->text(), QStringLiteral("1"));
        // Tab goes on to the price, not into the search panel above.
        QTest::keyClick(quantity, Qt::Key_Tab);
        settle();
        QCOMPARE(QApplication::focusWidget(), w<QWidget>(*f, "Text3(5)"));
        auto* price = w<QLineEdit>(*f, "Text3(5)");
        QCOMPARE(price->selectedText(), QStringLiteral("0.00"));
        QTest::keyClicks(price, "350");
        QTest::keyClick(price, Qt::Key_Tab);
        settle();
        QCOMPARE(QApplication::focusWidget(), w<QWidget>(*f, "Text3(6)"));
        QCOMPARE(price->text(), QStringLiteral("350.00"));
        QCOMPARE(w<QLineEdit>(*f, "Text3(6)")->text(), QStringLiteral("350.00"));
        // Enter, which sends Tab, follows the same order through the rest of the panel.
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        settle();
        QCOMPARE(QApplication::focusWidget(), w<QWidget>(*f, "Text3(7)"));
        QTest::keyClicks(QApplication::focusWidget(), "3");
        QCOMPARE(w<QLineEdit>(*f, "Text3(7)")->text(), QStringLiteral("3"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        settle();
        QCOMPARE(QApplication::focusWidget(), w<QWidget>(*f, "Text3(8)"));
        m_prompts->answer(vbYes);
        click(*f, "cmdOk");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘完毕!"));
        QCOMPARE(one("select geshu from tRsLoanGoods").toDouble(), 1.0);
        QCOMPARE(one("select price from tRsLoanGoods").toDouble(), 350.0);
        QCOMPARE(one("select Total from tRsLoanGoods").toDouble(), 350.0);
        QCOMPARE(one("select useyear from tRsLoanGoods").toDouble(), 3.0);
        // Ready for the next entry: a click into the empty price offers 0.00 selected too.
        clickInto(*f, "Text3(0)");
        clickInto(*f, "Text3(5)");
        QCOMPARE(price->selectedText(), QStringLiteral("0.00"));
        QTest::keyClicks(price, "12.5");
        QCOMPARE(price->text(), QStringLiteral("12.5"));
    }

    void subtotalLimits() {
        QCOMPARE(LoanSubtotal("2", "12.5"), QStringLiteral("25.00"));
        bool tooLarge = false;
        QCOMPARE(LoanSubtotal("1", "9999999999999", &tooLarge), QStringLiteral("9999999999999.00"));
        QVERIFY(!tooLarge);
        QCOMPARE(LoanSubtotal("2", "9999999999999", &tooLarge), QStringLiteral("99999999999.99"));
        QVERIFY(tooLarge);
    }

    void changeDeleteAndSeek() {
        loan("trsLoanTools", "001", "扳手", "2024-05-10");
        loan("trsLoanTools", "001", "钳子", "2024-03-01", "2024-04-01");
        // A loan of a person no longer on the register is never listed.
        loan("trsLoanTools", "077", "锤子", "2024-05-10");
        auto f = goods(1);
        ZqGrid* g = f->grid();
        click(*f, "cmdSeek");
        QCOMPARE(g->maxRows(), 2);
        // Newest loan first within a person; the key stands in column 0, the rows are counted 1..n.
        QCOMPARE(g->text(1, 3), QStringLiteral("扳手"));
        const QString key = g->text(1, 0);
        QVERIFY(!key.isEmpty());
        QCOMPARE(g->view()->model()->headerData(0, Qt::Vertical).toString(), QStringLiteral("1"));
        QCOMPARE(g->view()->model()->headerData(1, Qt::Vertical).toString(), QStringLiteral("2"));

        // The date range compares as dates on both engines.
        w<QCheckBox>(*f, "Check1(9)")->setChecked(true);
        w<QDateEdit>(*f, "DTPTime1")->setDate(QDate(2024, 2, 1));
        w<QDateEdit>(*f, "DTPTime2")->setDate(QDate(2024, 3, 31));
        // A range row without its upper value is dropped.
        w<QCheckBox>(*f, "Check1(5)")->setChecked(true);
        setBox(*f, "Text2(5)", "1");
        click(*f, "cmdSeek");
        QVERIFY(!w<QCheckBox>(*f, "Check1(5)")->isChecked());
        QCOMPARE(g->maxRows(), 1);
        QCOMPARE(g->text(1, 3), QStringLiteral("钳子"));
        w<QCheckBox>(*f, "Check1(9)")->setChecked(false);
        click(*f, "cmdSeek");

        // Not yet returned: no delete.
        g->setActiveCell(1, 2);
        click(*f, "cmdDEL");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("此物尚未归还,不能删除！"));
        // Returned on the loan day is accepted.
        click(*f, "cmdChg");
        QCOMPARE(w<QLineEdit>(*f, "Text3(5)")->text(), QStringLiteral("2.00"));
        setBox(*f, "Text3(10)", "2024-05-10");
        m_prompts->answer(vbYes);
        click(*f, "cmdOk");
        QCOMPARE(one("select backtime from trsLoanTools where fID=" + key), QStringLiteral("2024-05-10"));
        QVERIFY(!w<QWidget>(*f, "Pict")->isVisible());
        QCOMPARE(g->maxRows(), 2);
        QCOMPARE(UnreturnedTools(QStringLiteral("001")), 0);

        // A change made meanwhile by another client is not overwritten.
        g->setActiveCell(1, 2);
        click(*f, "cmdChg");
        exec("update trsLoanTools set demo='别人改过' where fID=" + key);
        m_prompts->answer(vbYes);
        click(*f, "cmdOk");
        QVERIFY(m_prompts->messages().last().startsWith(QStringLiteral("存盘错误!")));
        click(*f, "cmdCancel");

        m_prompts->answer(vbYes);
        g->setActiveCell(1, 2);
        click(*f, "cmdDEL");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("真的要删除物品名称为 扳手 的记录吗？"));
        QCOMPARE(one("select count(*) from trsLoanTools where fID=" + key), QStringLiteral("0"));
        QCOMPARE(g->maxRows(), 1);
    }

    void aLoanFindsItsPersonWhateverTheCaseOfTheCode() {
        person("K01", "柯一");
        loan("trsLoanTools", "k01", "卷尺", "2024-05-10");
        auto f = goods(1);
        click(*f, "cmdSeek");
        QCOMPARE(f->grid()->maxRows(), 1);
        QCOMPARE(f->grid()->text(1, 3), QStringLiteral("卷尺"));
    }

    void hundredRowsShowWithoutAsking() {
        for (int i = 0; i < 101; ++i)
            loan("tRsLoanGoods", "001", QStringLiteral("笔%1").arg(i), "2024-01-01",
                 i < 100 ? QVariant("2024-02-01") : QVariant());
        auto f = goods(2);
        w<QCheckBox>(*f, "Check1(10)")->setChecked(true);
        w<QDateEdit>(*f, "DTPTime3")->setDate(QDate(2024, 1, 1));
        w<QDateEdit>(*f, "DTPTime4")->setDate(QDate(2024, 2, 1));
        click(*f, "cmdSeek");
        QCOMPARE(f->grid()->maxRows(), 100);
        QVERIFY(m_prompts->messages().isEmpty());
        w<QCheckBox>(*f, "Check1(10)")->setChecked(false);
        m_prompts->answer(vbYes);
        click(*f, "cmdSeek");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("要列示的记录太多,是否增加过滤条件!"));
        QCOMPARE(f->grid()->maxRows(), 0);
        m_prompts->answer(vbNo);
        click(*f, "cmdSeek");
        QCOMPARE(f->grid()->maxRows(), 101);
        QCOMPARE(UnreturnedGoods(QStringLiteral("001")), 1);
        // A quote in a search box fails the search, not the screen.
        w<QCheckBox>(*f, "Check1(2)")->setChecked(true);
        setBox(*f, "Text2(2)", "笔'");
        click(*f, "cmdSeek");
        QCOMPARE(f->grid()->maxRows(), 101);
    }

    void longListsAreReadAsTheyAreShown() {
        // More loans than a page: each person's newest first, read page by page.
        person("003", "王五", 1, QString());
        for (int i = 0; i < 150; ++i)
            loan("tRsLoanGoods", "001", QStringLiteral("工作服"), QDate(2020, 1, 1).addDays(i).toString(Qt::ISODate),
                 i == 0 ? QVariant("2020-02-01") : QVariant());
        loan("tRsLoanGoods", "003", QStringLiteral("工作服"), "2024-01-01");
        loan("tRsLoanGoods", "001", QStringLiteral("雨衣"), "2024-01-01");
        auto f = goods(2);
        ZqGrid* g = f->grid();
        w<QCheckBox>(*f, "Check1(2)")->setChecked(true);
        setBox(*f, "Text2(2)", "工作服");
        m_prompts->answer(vbNo);
        click(*f, "cmdSeek");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("要列示的记录太多,是否增加过滤条件!"));
        QVERIFY(g->isPaged());
        QCOMPARE(g->maxRows(), 151);
        QCOMPARE(g->text(1, 10), QStringLiteral("2020-05-29"));
        QCOMPARE(g->text(150, 10), QStringLiteral("2020-01-01"));
        QCOMPARE(g->text(140, 3), QStringLiteral("工作服"));
        // Column 0 keeps the key, the row headers count 1..n.
        QCOMPARE(g->text(150, 0), one("select fID from tRsLoanGoods where loantime='2020-01-01'"));
        QCOMPARE(g->view()->model()->headerData(149, Qt::Vertical).toString(), QStringLiteral("150"));
        // The loan of a person without a department is counted but shows blank, its key too.
        QCOMPARE(g->text(151, 0), QString());
        QCOMPARE(g->text(151, 3), QString());

        // The returned loan far down the list is deleted and leaves the list.
        m_prompts->answer(vbYes);
        g->setActiveCell(150, 2);
        click(*f, "cmdDEL");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("真的要删除物品名称为 工作服 的记录吗？"));
        QCOMPARE(one("select count(*) from tRsLoanGoods where loantime='2020-01-01'"), QStringLiteral("0"));
        QCOMPARE(g->maxRows(), 150);
        QCOMPARE(g->text(150, 3), QString());
        QCOMPARE(g->text(149, 10), QStringLiteral("2020-01-02"));

        // Changing a row far down reads it by its key.
        g->setActiveCell(149, 2);
        click(*f, "cmdChg");
        QCOMPARE(w<QLineEdit>(*f, "Text3(2)")->text(), QStringLiteral("工作服"));
        QCOMPARE(w<QLineEdit>(*f, "Text3(5)")->text(), QStringLiteral("2.00"));
        click(*f, "cmdCancel");
    }

    void labelsKeepTheirBriefLists() {
        auto f = goods(1);
        f->Label_RightClick(8);
        QVERIFY(w<QWidget>(*f, "pictTag")->isVisible());
        setBox(*f, "txtLblTag", "zs");
        click(*f, "cmdItem");
        QCOMPARE(
            one("select fieldbrieftype from RptListDetail where ftable='trsLoanTools' and FieldName='lyxz'"),
            QStringLiteral("zs"));
        f->Label_RightClick(0);
        QVERIFY(!w<QWidget>(*f, "pictTag")->isVisible());
    }

    void certificatesOverwriteByPersonAndNumber() {
        auto f = std::make_unique<frmRs_Identify>();
        f->show();
        QCOMPARE(f->windowTitle(), QStringLiteral("持证管理"));
        // Inputs follow their ticks; a fee row offers 0.00.
        QVERIFY(!w<QLineEdit>(*f, "Text4(8)")->isEnabled());
        w<QCheckBox>(*f, "Check1(8)")->setChecked(true);
        QCOMPARE(w<QLineEdit>(*f, "Text4(8)")->text(), QStringLiteral("0.00"));
        w<QCheckBox>(*f, "Check1(8)")->setChecked(false);

        click(*f, "cmdAdd");
        setBox(*f, "Text3(0)", "001");
        setBox(*f, "Text3(1)", "张三");
        setBox(*f, "Text3(2)", "电工证");
        setBox(*f, "Text3(3)", "DG001");
        click(*f, "cmdSave");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("发证机关不能为空，请输入内容！"));
        setBox(*f, "Text3(4)", "安监局");
        setBox(*f, "Text3(8)", "abc");
        click(*f, "cmdSave");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("培训费用必须为数字型!"));
        setBox(*f, "Text3(8)", "");
        w<QDateEdit>(*f, "DTPStart")->setDate(QDate(2023, 6, 1));
        m_prompts->answer(vbYes);
        click(*f, "cmdSave");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘完毕!"));
        QCOMPARE(one("select pxfy from trscard where cardcode='DG001'").toDouble(), 0.0);
        QCOMPARE(one("select cardtime from trscard where cardcode='DG001'"), QStringLiteral("2023-06-01"));
        // The same number for the same person overwrites without a word.
        setBox(*f, "Text3(0)", "001");
        setBox(*f, "Text3(1)", "张三");
        setBox(*f, "Text3(2)", "高压电工证");
        setBox(*f, "Text3(3)", "DG001");
        setBox(*f, "Text3(4)", "安监局");
        setBox(*f, "Text3(8)", "300");
        m_prompts->answer(vbYes);
        click(*f, "cmdSave");
        QCOMPARE(one("select count(*) from trscard"), QStringLiteral("1"));
        QCOMPARE(one("select cardname from trscard"), QStringLiteral("高压电工证"));
        click(*f, "cmdSaveCancel");

        w<QCheckBox>(*f, "Check1(8)")->setChecked(true);
        w<QComboBox>(*f, "Combo2")->setCurrentText(">=");
        setBox(*f, "Text4(8)", "300");
        click(*f, "cmdSeek");
        QCOMPARE(f->grid()->maxRows(), 1);
        QCOMPARE(f->grid()->text(1, 6), QStringLiteral("2023-06-01"));
        f->Label_RightClick(1);
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("无须备选项目设置!"));

        m_prompts->answer(vbYes);
        f->grid()->setActiveCell(1, 1);
        click(*f, "cmdDEL");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("张三: 真的要删除证件号码为[DG001]的记录吗？"));
        QCOMPARE(one("select count(*) from trscard"), QStringLiteral("0"));
    }

    void twoQuotedBoxesLetTheClerkMoveAndCorrect() {
        exec("insert into trscard (fcode,fName,cardname,cardcode,cardjg,cardtime,pxfy) values "
             "('001','张三','O''Neil证','Q001','King''s局','2024-01-01',0)");
        auto f = std::make_unique<frmRs_Identify>();
        f->show();
        activate(*f);
        click(*f, "cmdSeek");
        f->grid()->setActiveCell(1, 1);
        click(*f, "cmdChg");
        settle();
        QCOMPARE(w<QLineEdit>(*f, "Text3(2)")->text(), QStringLiteral("O'Neil证"));
        m_prompts->clear();
        clickInto(*f, "Text3(2)");
        // From one quoted box into the other: the box left is refused once and takes the focus back.
        clickInto(*f, "Text3(4)");
        QCOMPARE(m_prompts->messages(), QStringList{QStringLiteral(" 您输入了单引号,请删除！")});
        QCOMPARE(QApplication::focusWidget(), w<QWidget>(*f, "Text3(2)"));
        QCOMPARE(w<QLineEdit>(*f, "Text3(2)")->selectedText(), QStringLiteral("O'Neil证"));
        // Told once: the clerk may go on to the other box, which is told once when he leaves it.
        clickInto(*f, "Text3(4)");
        QCOMPARE(QApplication::focusWidget(), w<QWidget>(*f, "Text3(4)"));
        QCOMPARE(m_prompts->messages().size(), 1);
        clickInto(*f, "Text3(2)");
        QCOMPARE(m_prompts->messages().size(), 2);
        QCOMPARE(QApplication::focusWidget(), w<QWidget>(*f, "Text3(4)"));
        clickInto(*f, "Text3(2)");
        QCOMPARE(QApplication::focusWidget(), w<QWidget>(*f, "Text3(2)"));
        QCOMPARE(m_prompts->messages().size(), 2);
        // The save still refuses a quote left behind.
        click(*f, "cmdSave");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral(" 您输入了单引号,请删除！"));
        QCOMPARE(one("select cardname from trscard"), QStringLiteral("O'Neil证"));
        // Corrected, it saves.
        setBox(*f, "Text3(2)", "奥尼尔证");
        setBox(*f, "Text3(4)", "国王局");
        m_prompts->answer(vbYes);
        click(*f, "cmdSave");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘完毕!"));
        QCOMPARE(one("select cardname||cardjg from trscard"), QStringLiteral("奥尼尔证国王局"));
    }

    void anotherClientsChangeToACertificateIsNotOverwritten() {
        exec("insert into trscard (fcode,fName,cardname,cardcode,cardjg,cardtime,pxfy) values "
             "('001','张三','电工证','DG001','安监局','2024-01-01',0)");
        auto f = std::make_unique<frmRs_Identify>();
        f->show();
        click(*f, "cmdSeek");
        Connection other;
        other.open(m_settings);
        other.execute("update trscard set cardjg='质监局' where cardcode='DG001'");
        f->grid()->setActiveCell(1, 1);
        click(*f, "cmdChg");
        setBox(*f, "Text3(2)", "高压电工证");
        m_prompts->answer(vbYes);
        click(*f, "cmdSave");
        QVERIFY2(m_prompts->messages().last().startsWith(
                     QStringLiteral("存盘错误!\n\n此记录在您打开之后已被他人修改")),
                 qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(one("select cardname||cardjg from trscard"), QStringLiteral("电工证质监局"));
        QVERIFY(w<QWidget>(*f, "Pict")->isVisible());
        QCOMPARE(w<QLineEdit>(*f, "Text3(2)")->text(), QStringLiteral("高压电工证"));
        click(*f, "cmdSaveCancel");

        // Searched again, the change goes in beside the other client's.
        click(*f, "cmdSeek");
        f->grid()->setActiveCell(1, 1);
        click(*f, "cmdChg");
        setBox(*f, "Text3(2)", "高压电工证");
        m_prompts->answer(vbYes);
        click(*f, "cmdSave");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘完毕!"));
        QCOMPARE(one("select cardname||cardjg from trscard"), QStringLiteral("高压电工证质监局"));

        // One deleted meanwhile is not made again.
        f->grid()->setActiveCell(1, 1);
        click(*f, "cmdChg");
        other.execute("delete from trscard where cardcode='DG001'");
        m_prompts->answer(vbYes);
        click(*f, "cmdSave");
        QVERIFY(m_prompts->messages().last().contains(QStringLiteral("已被他人修改或删除")));
        QCOMPARE(one("select count(*) from trscard"), QStringLiteral("0"));
        other.close();
    }

    void fiveHundredCertificatesShowWithoutAsking() {
        for (int i = 0; i < 501; ++i)
            exec(QStringLiteral("insert into trscard (fcode,fName,cardname,cardcode,cardtime) values "
                                "('001','张三','证',?,'2024-01-01')"),
                 {QStringLiteral("N%1").arg(i)});
        auto f = std::make_unique<frmRs_Identify>();
        f->show();
        w<QCheckBox>(*f, "Check1(3)")->setChecked(true);
        setBox(*f, "Text4(3)", "N1");
        click(*f, "cmdSeek");
        QVERIFY(m_prompts->messages().isEmpty());
        w<QCheckBox>(*f, "Check1(3)")->setChecked(false);
        m_prompts->answer(vbNo);
        click(*f, "cmdSeek");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("要列示的记录太多,是否增加过滤条件!"));
        QCOMPARE(f->grid()->maxRows(), 501);
    }
};

ZQ_DB_TEST_MAIN(TestLoans)
#include "test_loans.moc"
