// The housing screen in its three states, and the master record's room picker.
#include "Controls.h"
#include "TestDb.h"

#include "assets/frmRs_House.h"
#include "assets/HouseData.h"
#include "personnel/frmRs_PersonBasic.h"
#include "services/ui/DeptTree.h"
#include "services/ui/Grid.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <memory>
#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTest>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

using namespace zq;
using test::exec;
using test::one;

namespace {

void room(const QString& code, const QString& name, int kind, int limit, const QString& note = {}) {
    exec(QStringLiteral(
             "insert into tRs_House (fCode,fName,fLimited,fColor,fYnxj,fDetail1) values (?,?,?,0,?,?)"),
         {code, name, limit, kind, note});
}

void resident(const QString& code, const QString& name, const QString& roomCode, int state = 1) {
    exec(QStringLiteral(
             "insert into tRsBasic (fCode,fName,fzt,fBmCode,neckline,fSex) values (?,?,?,'01',?,'男')"),
         {code, name, state, roomCode});
}

QTreeWidgetItem* node(QTreeWidget* tree, const QString& key) {
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        if (NodeKey(*it) == key) return *it;
    qFatal("no node %s", qPrintable(key));
}

} // namespace

class TestHouse : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;

    std::unique_ptr<frmRs_House> open(int state) {
        auto f = std::make_unique<frmRs_House>();
        f->setScreenState(state);
        f->show();
        return f;
    }
    static QTreeWidget* tree(QWidget& f) { return test::child<QTreeWidget>(f, "Tree1"); }
    static void pick(frmRs_House& f, const QString& key) {
        QTreeWidgetItem* n = node(tree(f), key);
        tree(f)->setCurrentItem(n);
        f.Tree1_NodeClick(n);
    }

private slots:
    void init() {
        test::freshDatabase();
        test::actAsSupervisor();
        m_prompts = &scriptPrompts();
        room("1", "一号楼", 0, 0);
        room("101", "101室", 1, 2, "带阳台");
        room("102", "102室", 2, 4);
        resident("001", "张三", "101");
        resident("002", "李四", "101");
        resident("003", "王五", "101");
        resident("004", "赵六", "101", 3); // left: neither counted nor listed
        resident("005", "钱七", "");
    }

    void treeCountsAndFlagsFullRooms() {
        auto f = open(1);
        QCOMPARE(f->windowTitle(), QStringLiteral("房间号设置"));
        test::child<QCheckBox>(*f, "chkTotalMan")->click();
        QTreeWidgetItem* full = node(tree(*f), "B101");
        QCOMPARE(full->text(0), QStringLiteral("101\t101室\t(限2人,共3人)"));
        QVERIFY(NodeOverQuota(full));
        QVERIFY(!NodeOverQuota(node(tree(*f), "B102")));
        QCOMPARE(node(tree(*f), "B1")->text(0), QStringLiteral("1\t一号楼\t(共3人)"));
        QVERIFY(full->foreground(0) != node(tree(*f), "B102")->foreground(0));
        pick(*f, "B101");
        QCOMPARE(test::child<QPlainTextEdit>(*f, "Text1")->toPlainText(), QStringLiteral("带阳台"));
        QCOMPARE(G().CurRoomCode, QStringLiteral("101"));
    }

    void aLargeDormitoryShowsWholeAndUncut() {
        // Sixty buildings of a hundred rooms: more than a tree that sizes its column by its rows.
        exec("insert into tRs_House (fCode,fName,fLimited,fColor,fYnxj) with recursive n(i) as (select 20 "
             "union all select i+1 from n where i<79) select cast(i as varchar(15)), cast(i as varchar(15)) "
             "|| '号楼', 0, 0, 0 from n");
        exec("insert into tRs_House (fCode,fName,fLimited,fColor,fYnxj) with recursive n(i) as (select 20000 "
             "union all select i+1 from n where i<79099) select cast(i as varchar(15)), cast(i as varchar(15)) "
             "|| '室', 4, 0, 1 from n where i % 1000 < 100");
        resident("006", "孙八", "79099");
        auto f = open(1);
        test::child<QCheckBox>(*f, "chkTotalMan")->click();
        QTreeWidget* t = tree(*f);
        int shown = 0;
        for (QTreeWidgetItem* it = t->topLevelItem(0); it; it = t->itemBelow(it))
            ++shown;
        QCOMPARE(shown, 1 + 3 + 60 + 6000);
        QTreeWidgetItem* last = node(t, "B79099");
        QCOMPARE(last->text(0), QStringLiteral("79099\t79099室\t(限4人,共1人)"));
        QCOMPARE(node(t, "B79")->text(0), QStringLiteral("79\t79号楼\t(共1人)"));
        QVERIFY(node(t, "B79")->isExpanded());
        // The column holds the widest row, measured once.
        const QFontMetrics fm(t->font());
        QString text = last->text(0);
        text.replace(QLatin1Char('\t'), QChar(0x3000));
        QVERIFY(t->header()->sectionSize(0) >= 2 * t->indentation() + fm.horizontalAdvance(text));
        // A class chosen and its notes shown, from the fields the nodes hold.
        pick(*f, "B79099");
        QCOMPARE(G().CurRoomCode, QStringLiteral("79099"));
        QCOMPARE(G().CurRoomName, QStringLiteral("79099室"));
    }

    void addChangeAndDelete() {
        auto f = open(1);
        test::click(*f, "cmdAdd");
        test::child<QCheckBox>(*f, "Check1")->setChecked(false);
        QCOMPARE(test::child<QLabel>(*f, "lblCode")->text(), QStringLiteral("分类编码"));
        test::child<QLineEdit>(*f, "TxtCode")->setText("2");
        test::child<QLineEdit>(*f, "TxtName")->setText("101室");
        test::click(*f, "cmdSave");
        // The name is checked before the code.
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("名称已存在。"));
        test::child<QLineEdit>(*f, "TxtCode")->setText("101");
        test::child<QLineEdit>(*f, "TxtName")->setText("二号楼");
        test::click(*f, "cmdSave");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("编号已存在。"));
        test::child<QLineEdit>(*f, "TxtCode")->setText("2");
        test::click(*f, "cmdSave");
        QCOMPARE(one("select fYnxj from tRs_House where fCode='2'").toInt(), 0);
        test::child<QCheckBox>(*f, "Check1")->setChecked(true);
        test::child<QRadioButton>(*f, "optMale(1)")->setChecked(true);
        test::child<QLineEdit>(*f, "TxtCode")->setText("201");
        test::child<QLineEdit>(*f, "TxtName")->setText("201室");
        test::click(*f, "cmdSave");
        QCOMPARE(one("select fYnxj from tRs_House where fCode='201'").toInt(), 2);
        QCOMPARE(one("select fLimited from tRs_House where fCode='201'").toDouble(), 0.0);
        QCOMPARE(node(tree(*f), "B201")->parent(), node(tree(*f), "B2"));
        test::click(*f, "cmdCancel");

        pick(*f, "B201");
        test::click(*f, "cmdChg");
        QVERIFY(test::child<QRadioButton>(*f, "optMale(1)")->isChecked());
        test::child<QLineEdit>(*f, "txtNumber")->setText("6");
        test::click(*f, "cmdSave");
        QCOMPARE(one("select fLimited from tRs_House where fCode='201'").toDouble(), 6.0);
        QCOMPARE(one("select count(*) from tSysLog where fText='修改住宿房间:201室'"), QStringLiteral("1"));

        // A room with residents goes without a warning; they keep their code.
        pick(*f, "B101");
        m_prompts->answer(vbYes);
        test::click(*f, "cmdDel");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("是否删除 住宿房间 ( 101室 ) ?"));
        QCOMPARE(one("select count(*) from tRs_House where fCode='101'"), QStringLiteral("0"));
        QCOMPARE(one("select neckline from tRsBasic where fCode='001'"), QStringLiteral("101"));
        QCOMPARE(one("select count(*) from tSysLog where fText='删除住宿房间:101室-101'"),
                 QStringLiteral("1"));
    }

    void lookUpListsServingResidents() {
        auto f = open(2);
        QCOMPARE(f->windowTitle(), QStringLiteral("住宿查询统计"));
        QVERIFY(test::child<QWidget>(*f, "cmdAdd")->isHidden());
        QVERIFY(!test::child<QWidget>(*f, "CmdlistOption")->isHidden());
        pick(*f, "B");
        QCOMPARE(test::child<QLabel>(*f, "lblList")->text(), QStringLiteral("==全部房间=="));
        QCOMPARE(f->grid()->maxRows(), 3);
        pick(*f, "B1");
        QCOMPARE(test::child<QLabel>(*f, "lblList")->text(), QStringLiteral("(一号楼)"));
        QCOMPARE(f->grid()->maxRows(), 3);
        QCOMPARE(f->grid()->text(1, 1), QStringLiteral("001"));
        pick(*f, "B102");
        QCOMPARE(f->grid()->maxRows(), 0);
        QVERIFY_THROWS_EXCEPTION(DbError, ReadResidents("fCode", "1'")); // a quote never reaches it
    }

    void masterRecordPicksARoom() {
        resident("010", "孙八", "");
        G().CurPersonCode = QStringLiteral("010");
        G().PersonEditMode = 2;
        bool closedByDoubleClick = false;
        bool pickerHidesEditing = false;
        QStringList shown, told;
        setModalRunner([&](QDialog& d) {
            d.show();
            auto& h = static_cast<frmRs_House&>(d);
            pickerHidesEditing = d.findChild<QWidget*>("cmdAdd")->isHidden();
            // Each room's kind and places left beside it; a pick that does not suit the person is
            // told in the status line.
            for (const char* key : {"B1", "B101", "B102"})
                shown << node(tree(h), QString::fromLatin1(key))->text(1) + '/' +
                             node(tree(h), QString::fromLatin1(key))->text(2);
            pick(h, "B101");
            told << h.status();
            pick(h, "B102");
            told << h.status();
            test::saveShot(d, "housing-picker");
            emit tree(h)->itemDoubleClicked(tree(h)->currentItem(), 0);
            closedByDoubleClick = d.result() == QDialog::Accepted;
            return d.result();
        });
        frmRs_PersonBasic basic;
        basic.show();
        basic.Label2_DblClick(48);
        setModalRunner({});
        QVERIFY(closedByDoubleClick);
        QVERIFY(pickerHidesEditing);
        QCOMPARE(shown, QStringList({"/", "男生/已满", "女生/空4位"}));
        QCOMPARE(told.at(0),
                 QStringLiteral("注意：101室 已住满（限2人）。 101室：男生房间，限2人，已住3人，已满"));
        QCOMPARE(told.at(1),
                 QStringLiteral(
                     "注意：102室 是女生房间，此员工性别为男。 102室：女生房间，限4人，已住0人，空4位"));
        QCOMPARE(test::child<QLineEdit>(basic, "Text2(48)")->text(), QStringLiteral("102"));
        // The person in hand stays.
        QCOMPARE(G().CurPersonCode, QStringLiteral("010"));
    }
};

ZQ_DB_TEST_MAIN(TestHouse)
#include "test_house.moc"
