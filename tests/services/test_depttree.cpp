#include "TestDb.h"

#include "services/HeadCounts.h"
#include "services/InputAids.h"
#include "services/ui/DeptTree.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

using namespace zq;
using test::exec;

namespace {

void node(const QString& table, const QString& code, const QString& name, int level = 0, int limit = 0) {
    exec(QStringLiteral("insert into %1 (fCode,fName,fYnxj,fLimited) values (?,?,?,?)").arg(table),
         {code, name, level, limit});
}

void person(const QString& code, int state, const QVariant& deptCode, const QVariant& room = QVariant()) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt,fBmCode,neckline) values (?,?,?,?,?)"),
         {code, QStringLiteral("某"), state,
          deptCode.isNull() ? QVariant(QMetaType::fromType<QString>()) : deptCode,
          room.isNull() ? QVariant(QMetaType::fromType<QString>()) : room});
}

// "child<parent" lines for every node below the root, in tree order.
QStringList shape(QTreeWidget& tree) {
    QStringList l;
    for (QTreeWidgetItemIterator it(&tree); *it; ++it)
        if ((*it)->parent()) l << NodeKey(*it).mid(1) + QLatin1Char('<') + NodeKey((*it)->parent()).mid(1);
    return l;
}

// The count a node text shows: the number after the last "共".
qint64 shownCount(const QString& text) {
    const int at = text.lastIndexOf(QStringLiteral("共"));
    return text.mid(at + 1, text.size() - at - 3).toLongLong();
}

// Every count of the tree equals the per-node statement.
void verifyCounts(QTreeWidget& tree, const QString& table, int state) {
    int nodes = 0;
    for (QTreeWidgetItemIterator it(&tree); *it; ++it, ++nodes) {
        const QString code = NodeKey(*it).mid(1);
        QCOMPARE(shownCount((*it)->text(0)), CountPersons(table, state, code).toLongLong());
    }
    QVERIFY(nodes > 0);
}

// The head counts the database keeps, and the same counted from the persons, as "key|value|state=n".
QStringList keptCounts() {
    QStringList l;
    for (Recordset rs(conn(), "select fColumn,fValue,fzt,fCount from tRsHeadCount where fCount<>0"); !rs.eof();
         rs.moveNext())
        l << QStringLiteral("%1|%2|%3=%4").arg(rs.text(0), rs.text(1), rs.text(2), rs.text(3));
    l.sort();
    return l;
}

QStringList countedNow() {
    const bool server = conn().dialect().isServer();
    const auto exact = [server](const char* column) {
        return server ? QStringLiteral("%1::text").arg(QLatin1String(column))
                      : QStringLiteral("%1 collate binary").arg(QLatin1String(column));
    };
    QStringList l;
    const struct {
        const char* key;
        QString value;
        QString when;
    } keys[] = {{"fbmcode", QStringLiteral("coalesce(%1,'')").arg(exact("fBmCode")), QStringLiteral("1=1")},
                {"neckline", exact("neckline"), QStringLiteral("coalesce(neckline,'')<>''")},
                {"birthmonth", QStringLiteral("substr(%1,6,2)").arg(exact("fBirthDay")), QStringLiteral("coalesce(fBirthDay,'')<>''")},
                {"hiremonth", QStringLiteral("substr(%1,6,2)").arg(exact("fSpday")), QStringLiteral("coalesce(fSpday,'')<>''")}};
    for (const auto& k : keys)
        for (Recordset rs(conn(), QStringLiteral("select %1,coalesce(fzt,-1),count(*) from tRsBasic where %2 group by %1,coalesce(fzt,-1)")
                                      .arg(k.value, k.when));
             !rs.eof(); rs.moveNext())
            l << QStringLiteral("%1|%2|%3=%4").arg(QLatin1String(k.key), rs.text(0), rs.text(1), rs.text(2));
    // The statistics' fields: each value as stored, and the nulls apart.
    for (const char* column : {"fSex", "fXl", "fBmName"}) {
        const QString key = QString::fromLatin1(column).toLower();
        for (Recordset rs(conn(), QStringLiteral("select %1,coalesce(fzt,-1),count(*) from tRsBasic where %2 is not "
                                                 "null group by %1,coalesce(fzt,-1)")
                                      .arg(exact(column), QLatin1String(column)));
             !rs.eof(); rs.moveNext())
            l << QStringLiteral("v:%1|%2|%3=%4").arg(key, rs.text(0), rs.text(1), rs.text(2));
        for (Recordset rs(conn(), QStringLiteral("select coalesce(fzt,-1),count(*) from tRsBasic where %1 is null "
                                                 "group by coalesce(fzt,-1)")
                                      .arg(QLatin1String(column)));
             !rs.eof(); rs.moveNext())
            l << QStringLiteral("n:%1||%2=%3").arg(key, rs.text(0), rs.text(1));
    }
    l.sort();
    return l;
}
} // namespace

class TestDeptTree : public QObject {
    Q_OBJECT
private slots:
    void init() {
        test::freshDatabase();
        for (const char* t : {"tRs_Bm", "tRsBasic", "tRs_House"})
            exec(QStringLiteral("delete from ") + QLatin1String(t));
        G().CompName = QStringLiteral("示例公司");
    }

    void nestingByCodePrefix() {
        for (const char* c : {"01", "0101", "0102", "02", "010101", "0201", "03", "030101"})
            node("tRs_Bm", c, QStringLiteral("部门") + QLatin1String(c));
        QTreeWidget tree;
        FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 0, -1);
        QCOMPARE(shape(tree), QStringList({"01<", "0101<01", "010101<0101", "0102<01", "02<", "0201<02",
                                           "03<", "030101<03"}));
        QCOMPARE(tree.topLevelItemCount(), 1);
        QVERIFY(tree.topLevelItem(0)->isExpanded());
    }

    void climbsPastALeafToTheRoot() {
        node("tRs_Bm", "01", "a");
        node("tRs_Bm", "02", "b");
        node("tRs_Bm", "0201", "c");
        QTreeWidget tree;
        FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 0, -1);
        QCOMPARE(shape(tree), QStringList({"01<", "02<", "0201<02"}));
    }

    void emptyTableGivesTheRootAlone() {
        QTreeWidget tree;
        tree.addTopLevelItem(new QTreeWidgetItem(QStringList{"old"}));
        FillDeptTree(&tree, "tRs_Bm", "", -1, 1, 1, -1);
        QCOMPARE(tree.topLevelItemCount(), 1);
        QTreeWidgetItem* root = tree.topLevelItem(0);
        QCOMPARE(root->childCount(), 0);
        QVERIFY(root->isExpanded());
        QCOMPARE(NodeKey(root), QString("B"));
        QCOMPARE(NodeImage(root), int(ImageRoot));
        QCOMPARE(root->text(0), QString("示例公司\t(共0人)"));
    }

    void filteredParentsLeaveChildrenAtTheRoot() {
        node("tRs_Bm", "01", "岗位", 1);
        node("tRs_Bm", "0101", "部门", 0);
        node("tRs_Bm", "010101", "组", 0);
        node("tRs_Bm", "02", "工厂", 0);
        QTreeWidget tree;
        FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 0, 0); // posts left out
        QCOMPARE(shape(tree), QStringList({"0101<", "010101<0101", "02<"}));
        FillDeptTree(&tree, "tRs_Bm", "0101", 0, 1, 0, -1); // the prefix leaves out 01
        QCOMPARE(shape(tree), QStringList({"0101<", "010101<0101"}));
    }

    void nodeTextsAndImages() {
        node("tRs_Bm", " 01 ", "总部", 0, 5); // the code is trimmed
        node("tRs_Bm", "0101", "经理", 1, 0);
        node("tRs_Bm", "02", "工厂", 0, -3);
        for (int i = 0; i < 3; ++i)
            person(QStringLiteral("p%1").arg(i), 1, "0101");
        person("q", 2, "01");
        person("r", 1, "02");
        QTreeWidget tree;
        FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 1, -1);
        QTreeWidgetItem* root = tree.topLevelItem(0);
        QCOMPARE(root->text(0), QString("示例公司\t(共4人)"));
        QTreeWidgetItem* d01 = FindNode(&tree, "B01");
        QVERIFY(d01);
        QCOMPARE(d01->text(0), QString("总部\t(限5人,共3人)"));
        QCOMPARE(FindNode(&tree, "B0101")->text(0), QString("经理\t(共3人)"));
        QCOMPARE(FindNode(&tree, "B02")->text(0), QString("工厂\t(共1人)"));
        QCOMPARE(NodeImage(d01), int(ImageDept));
        QCOMPARE(NodeImage(FindNode(&tree, "B0101")), int(ImagePost));
        QVERIFY(!TreeImageIcon(ImageRoot).isNull() && !TreeImageIcon(ImageDept).isNull() &&
                !TreeImageIcon(ImagePost).isNull());

        FillDeptTree(&tree, "tRs_Bm", "", -1, 2, 1, -1); // the state counted follows the argument
        QCOMPARE(tree.topLevelItem(0)->text(0), QString("示例公司\t(共1人)"));
        const QString coded = FindNode(&tree, "B01")->text(0);
        QCOMPARE(coded, QString("01\t总部\t(限5人,共1人)"));
        QCOMPARE(SplitTabText(coded, 1), QString("01"));

        FillDeptTree(&tree, "tRs_Bm", "", -1, 1, 0, -1);
        QCOMPARE(tree.topLevelItem(0)->text(0), QString("示例公司"));
        QCOMPARE(FindNode(&tree, "B01")->text(0), QString("01\t总部"));
        QCOMPARE(FindNode(&tree, "B02")->text(0), QString("02\t工厂"));
    }

    void keyMapFollowsTheTree() {
        node("tRs_Bm", "01", "a");
        QTreeWidget tree;
        FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 0, -1);
        QTreeWidgetItem* d = FindNode(&tree, "B01");
        QTreeWidgetItem* doc = AddNode(&tree, d, "7R", "文档", ImagePost, 0);
        QCOMPARE(FindNode(&tree, "7R"), doc);
        QCOMPARE(doc->parent(), d);
        QVERIFY_THROWS_EXCEPTION(DbError, AddNode(&tree, nullptr, "B01", "dup", ImageDept));
        delete doc;
        QCOMPARE(FindNode(&tree, "7R"), nullptr);
        // A node added without AddNode is still found by its key.
        auto* plain = new QTreeWidgetItem(d, QStringList{"x"});
        plain->setData(0, Qt::UserRole, QStringLiteral("8R"));
        QCOMPARE(FindNode(&tree, "8R"), plain);
        tree.clear();
        QCOMPARE(FindNode(&tree, "B01"), nullptr);
    }

    void quoteInACodeFails() {
        node("tRs_Bm", "0'1", "a");
        QTreeWidget tree;
        FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 0, -1); // without counts the code enters no statement
        QVERIFY_THROWS_EXCEPTION(DbError, FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 1, -1));
    }

    // The counts of the grouped statement equal the per-node statement on awkward data: codes that
    // share prefixes, codes that extend no row, letters in either case, like wildcards and the
    // escape character in codes, letters beyond ASCII, blanks, nulls and persons in other states;
    // then once more with stored codes that the server lowers onto ASCII letters.
    void countsEqualThePerNodeStatement() {
        const QStringList codes = {"1",  "10",  "100", "11", "2",  "20x", "A1", "a10", "b", "1_",
                                   "1%", "1\\", "%",   "_",  "9 ", "k1",  "i2", "é",   "Éa"};
        for (const QString& c : codes)
            node("tRs_Bm", c, QStringLiteral("部门") + c, c.size() % 2);
        const QStringList values = {"1",    "10", "100", "101", "1000", "11x", "2", "20x", "20X",  "21",
                                    "3",    "A1", "a1",  "a10", "A10z", "b",   "B", "1_x", "1x",   "1%x",
                                    "1\\x", " 1", "1 ",  "",    "%",    "_",   "9", "9 ",  "9  x", "张三"};
        int n = 0;
        for (const QString& v : values)
            for (int state = 1; state <= 3; ++state)
                for (int k = 0; k <= (n % 3); ++k, ++n)
                    person(QStringLiteral("p%1").arg(n), state, v);
        person("pn1", 1, QVariant());
        person("pn2", 2, QVariant());
        QTreeWidget tree;
        for (int state : {1, 2, 3, 4}) {
            FillDeptTree(&tree, "tRs_Bm", "", 0, state, 1, -1);
            verifyCounts(tree, "tRs_Bm", state);
        }
        FillDeptTree(&tree, "tRs_Bm", "1", -1, 1, 1, -1);
        verifyCounts(tree, "tRs_Bm", 1);

        for (const QString& v : {QStringLiteral("\u212A1"), QStringLiteral("\u01302x"), QStringLiteral("éA"),
                                 QStringLiteral("ÉAx"), QStringLiteral("K1")})
            person(QStringLiteral("p%1").arg(++n), 1, v);
        FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 1, -1);
        verifyCounts(tree, "tRs_Bm", 1);
    }

    void otherTablesCountByNeckline() {
        node("tRs_House", "1", "一号楼");
        node("tRs_House", "101", "101室", 1, 4);
        node("tRs_House", "Ab", "A楼");
        person("p1", 1, "1", "101");
        person("p2", 1, "1", "1011");
        person("p3", 1, "101", "aB1");
        person("p4", 2, "101", "1");
        QTreeWidget tree;
        FillDeptTree(&tree, "tRs_House", "", -1, 1, 1, -1);
        verifyCounts(tree, "tRs_House", 1);
        QCOMPARE(FindNode(&tree, "B101")->text(0), QString("101\t101室\t(限4人,共2人)"));
    }

    void randomCodesAgree() {
        QRandomGenerator rng(20240517);
        const QString alphabet = QStringLiteral("01aA_%\\ 张");
        auto randomCode = [&](int maxLen) {
            QString s;
            const int len = 1 + int(rng.bounded(maxLen));
            for (int i = 0; i < len; ++i)
                s += alphabet[int(rng.bounded(alphabet.size()))];
            return s;
        };
        QSet<QString> used;
        {
            Transaction t(conn());
            for (int i = 0; i < 150; ++i) {
                const QString c = randomCode(4);
                const QString trimmed = c.trimmed().toLower(); // codes are unique case-blind
                if (trimmed.isEmpty() || used.contains(trimmed)) continue;
                used.insert(trimmed);
                node("tRs_Bm", c, QStringLiteral("n%1").arg(i), int(rng.bounded(2)));
            }
            for (int i = 0; i < 1500; ++i)
                person(QStringLiteral("r%1").arg(i), 1 + int(rng.bounded(3)), randomCode(6));
            t.commit();
        }
        QTreeWidget tree;
        FillDeptTree(&tree, "tRs_Bm", "", 0, 1, 1, -1);
        verifyCounts(tree, "tRs_Bm", 1);
    }

    // The counts follow every kind of write, whoever makes it, and a rolled-back one leaves them.
    void keptCountsFollowEveryChange() {
        person("a", 1, "0101", "r1");
        person("b", 1, "01");
        person("c", 1, QVariant(), "R1");
        person("d", 2, "01", "r1");
        exec("update tRsBasic set fBirthDay='1990-11-02', fSpday='2020-03-01' where fCode in ('a','b')");
        QCOMPARE(keptCounts(), countedNow());
        // Moves of department, room and state, one row and many at once, and case alone.
        exec("update tRsBasic set fBmCode='02', neckline='r2' where fCode='a'");
        exec("update tRsBasic set fzt=3 where fBmCode='01'");
        exec("update tRsBasic set fBmCode='0A' where fCode='c'");
        exec("update tRsBasic set fBmCode='0a', fBirthDay=null where fCode='c'");
        exec("update tRsBasic set fName='某某'"); // no counted column
        exec("update tRsBasic set fSex='男', fXl='ba' where fCode in ('a','c')");
        exec("update tRsBasic set fXl='BA', fBmName='' where fCode='c'");
        exec("update tRsBasic set fXl=null where fCode='a'");
        QCOMPARE(keptCounts(), countedNow());
        {
            Transaction t(conn());
            exec("update tRsBasic set fzt=1");
            exec("delete from tRsBasic where fCode='a'");
        } // rolled back
        QCOMPARE(keptCounts(), countedNow());
        exec("delete from tRsBasic where fzt=3");
        person("e", 1, "02", "r2");
        QCOMPARE(keptCounts(), countedNow());
        // Many persons added in one statement, as an import writes them, counted together.
        exec("insert into tRsBasic (fCode,fName,fzt,fBmCode,fSex,fBirthDay) values ('m1','甲',1,'01','男','1990-11-05'),"
             "('m2','乙',1,'01',null,null),('m3','丙',2,'02','女','1991-11-06')");
        exec("insert into tRsBasic (fCode,fName,fzt,fBmCode) select fCode || 'x',fName,fzt,fBmCode from tRsBasic "
             "where fCode like 'm%'");
        QCOMPARE(keptCounts(), countedNow());
        exec("delete from tRsBasic where fCode like 'm%'");
        QCOMPARE(keptCounts(), countedNow());
        HeadCounts rooms("tRs_House", 1);
        QCOMPARE(rooms.total(), 3);
        QCOMPARE(rooms.count("r"), CountPersons("tRs_House", 1, "r").toLongLong());
        QCOMPARE(rooms.count("r2"), 2);
        // A second client's writes are counted too.
        Connection other;
        other.open(conn().settings());
        other.execute("update tRsBasic set fBmCode='03' where fCode='e'");
        QCOMPARE(keptCounts(), countedNow());
    }

    void headCountsDirectly() {
        person("a", 1, "0101");
        person("b", 1, "01");
        person("c", 1, QVariant());
        person("d", 2, "01");
        HeadCounts heads("trs_bm", 1);
        QCOMPARE(heads.total(), 3);
        QCOMPARE(heads.count(""), 3);
        QCOMPARE(heads.count("01"), 2);
        QCOMPARE(heads.count("0101"), 1);
        QCOMPARE(heads.count("02"), 0);
        QCOMPARE(heads.count("0_"), 2); // settled by the database
        QCOMPARE(HeadCounts::classify("0101-张"), HeadCounts::Match::Caseless);
        QCOMPARE(HeadCounts::classify("A1"), HeadCounts::Match::AsciiLetters);
        QCOMPARE(HeadCounts::classify("1%"), HeadCounts::Match::Database);
        QCOMPARE(HeadCounts::classify("é1"), HeadCounts::Match::Database);
        QVERIFY(heads.inMemory("A1"));
        // A stored code with a character the server lowers onto "k" leaves letters to the database.
        person("e", 1, QStringLiteral("\u212A1"));
        HeadCounts odd("trs_bm", 1);
        QVERIFY(!odd.inMemory("k1"));
        QVERIFY(odd.inMemory("01"));
        QCOMPARE(odd.count("k1"), CountPersons("trs_bm", 1, "k1").toLongLong());
    }
};

ZQ_DB_TEST_MAIN(TestDeptTree)
#include "test_depttree.moc"
