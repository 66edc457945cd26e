#include "TestDb.h"

#include "services/PagedRows.h"
#include "services/Spreadsheets.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::exec;

namespace {

// Persons P0000.. over several pages: names repeat and some are missing, birthdays likewise, so
// that sorting meets ties and nulls.
constexpr int kPersons = 700;

void addPersons() {
    QStringList values;
    for (int i = 0; i < kPersons; ++i) {
        const QString name =
            i % 7 == 0 ? QStringLiteral("null") : QStringLiteral("'姓名%1'").arg(i % 50, 2, 10, QChar('0'));
        const QString birthday =
            i % 5 == 0 ? QStringLiteral("null")
                       : QStringLiteral("'19%1-01-%2'").arg(50 + i % 40).arg(1 + i % 28, 2, 10, QChar('0'));
        values << QStringLiteral("('P%1',%2,%3,%4,'%5')")
                      .arg(i, 4, 10, QChar('0'))
                      .arg(name, birthday)
                      .arg(i % 3 == 0 ? 2 : 1)
                      .arg(i % 2 ? QStringLiteral("01") : QStringLiteral("02"));
    }
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fBirthDay,fzt,fBmCode) values ") +
         values.join(QLatin1Char(',')));
}

PagedQuery persons(const QString& condition = QStringLiteral("a.fzt=1")) {
    PagedQuery q;
    q.columns = {QStringLiteral("a.fCode"), QStringLiteral("a.fName"), QStringLiteral("a.fBirthDay")};
    q.from = QStringLiteral("trsbasic a");
    q.condition = condition;
    q.key = QStringLiteral("a.fcode");
    return q;
}

QVector<QStringList> allOf(PagedRows& rows) {
    QVector<QStringList> all;
    for (int r = 1; r <= rows.count(); ++r)
        all << rows.row(r);
    return all;
}

// The same list read at once, in the order the engine gives (nulls where it puts them).
QVector<QStringList> readAtOnce(const QString& order, const QString& condition = QStringLiteral("a.fzt=1")) {
    QVector<QStringList> rows;
    for (Recordset rs(conn(), QStringLiteral("select a.fCode,a.fName,a.fBirthDay from trsbasic a where ") +
                                  condition + QStringLiteral(" order by ") + order);
         !rs.eof(); rs.moveNext())
        rows << QStringList{rs.text(0), rs.text(1), rs.text(2)};
    return rows;
}

} // namespace

class TestPagedRows : public QObject {
    Q_OBJECT

private slots:
    void init() {
        test::freshDatabase();
        addPersons();
    }

    void everyWayThroughTheListGivesTheSameRows() {
        const QVector<QStringList> expected = readAtOnce(QStringLiteral("a.fcode"));
        PagedRows rows(persons(), 4);
        QCOMPARE(rows.count(), int(expected.size()));
        // Forwards from the start, then backwards from the end, then jumps into the middle, each on
        // a list that has forgotten its pages.
        QCOMPARE(allOf(rows), expected);
        rows.refresh();
        for (int r = rows.count(); r >= 1; --r)
            QCOMPARE(rows.row(r), expected[r - 1]);
        rows.refresh();
        for (int r : {300, 170, 460, 1, int(expected.size()), 129, 128})
            QCOMPARE(rows.row(r), expected[r - 1]);
        QVERIFY(rows.row(0).isEmpty());
        QVERIFY(rows.row(rows.count() + 1).isEmpty());
    }

    void sortsWithTiesAndNullsAsTheEngineDoes() {
        PagedRows rows(persons(), 4);
        rows.sortByColumns({2, 3});
        QCOMPARE(allOf(rows), readAtOnce(QStringLiteral("a.fName,a.fBirthDay,a.fcode")));
        rows.sortBy({QStringLiteral("a.fBirthDay desc")});
        const QVector<QStringList> expected = readAtOnce(QStringLiteral("a.fBirthDay desc,a.fcode"));
        for (int r : {400, 1, rows.count(), 250, 251, 249})
            QCOMPARE(rows.row(r), expected[r - 1]);
        rows.refresh();
        for (int r = rows.count(); r >= 1; --r)
            QCOMPARE(rows.row(r), expected[r - 1]);
    }

    void namesFoundByTheirStartSortAsTheColumnDoes() {
        // Letters of both cases after the start: the server sorts these rows by another expression
        // than the column's, which must give the column's caseless order.
        QStringList values;
        const QStringList tails = {QStringLiteral("b"), QStringLiteral("A"), QStringLiteral("a2"),
                                   QStringLiteral("B1"), QStringLiteral("_"), QStringLiteral("Z")};
        for (int i = 0; i < 300; ++i)
            values << QStringLiteral("('Q%1','姓名%2%3',1)").arg(i, 4, 10, QChar('0')).arg(i % 9).arg(tails[i % 6]);
        exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt) values ") + values.join(QLatin1Char(',')));
        const QString found = QStringLiteral("a.fzt=1 and a.fName like '姓名%'");
        PagedRows rows(persons(found), 4);
        rows.sortBy({QStringLiteral("a.fName desc")});
        const QVector<QStringList> expected = readAtOnce(QStringLiteral("a.fName desc,a.fcode"), found);
        QCOMPARE(rows.count(), int(expected.size()));
        for (int r : {300, 1, rows.count(), 129, 128, 400})
            QCOMPARE(rows.row(r), expected[r - 1]);
        rows.refresh();
        QCOMPARE(allOf(rows), expected);
        QCOMPARE(rows.findKey(expected[333].first()), 334);
    }

    void findsAndLeavesOutRowsByKey() {
        PagedRows rows(persons(QStringLiteral("a.fzt=1 and a.fBmCode like '01%'")), 4);
        const QVector<QStringList> expected =
            readAtOnce(QStringLiteral("a.fcode"), QStringLiteral("a.fzt=1 and a.fBmCode like '01%'"));
        const QString last = expected.last().first();
        QCOMPARE(rows.findKey(last), int(expected.size()));
        QCOMPARE(rows.findKey(expected[200].first()), 201);
        QCOMPARE(rows.findKey(QStringLiteral("P0000")), 0); // left, in another state
        QCOMPARE(rows.findKey(QStringLiteral("nobody")), 0);
        rows.sortByColumns({2});
        const QVector<QStringList> byName =
            readAtOnce(QStringLiteral("a.fName,a.fcode"), QStringLiteral("a.fzt=1 and a.fBmCode like '01%'"));
        QCOMPARE(rows.findKey(byName[150].first()), 151);

        const int before = rows.count();
        rows.exclude(byName[150].first());
        QCOMPARE(rows.count(), before - 1);
        QCOMPARE(rows.row(151), byName[151]);
        QCOMPARE(rows.findKey(byName[150].first()), 0);
        // A row deleted from the database while it is on show is still found where it stands.
        rows.row(1);
        exec(QStringLiteral("delete from trsbasic where fcode='") + byName[0].first() + QLatin1Char('\''));
        QCOMPARE(rows.findKey(byName[0].first()), 1);
    }

    void aGridShowsTheListAsIfItHeldIt() {
        ZqGrid held, onDemand;
        for (ZqGrid* g : {&held, &onDemand}) {
            g->setMaxCols(3);
            g->setColType(3, ZqGrid::CellText);
        }
        held.loadRows(readAtOnce(QStringLiteral("a.fcode")));
        onDemand.loadPaged(persons());
        QVERIFY(onDemand.isPaged());
        QCOMPARE(onDemand.maxRows(), held.maxRows());
        for (int r : {1, 2, 300, held.maxRows()})
            QCOMPARE(onDemand.rowTexts(r), held.rowTexts(r));
        const QString code = held.text(333, 1);
        QCOMPARE(onDemand.findRow(1, code), held.findRow(1, code));
        QCOMPARE(onDemand.findRow(2, held.text(333, 2), 300), held.findRow(2, held.text(333, 2), 300));
        // Export streams through every row and writes what the held grid writes.
        QTemporaryDir dir;
        for (ZqGrid* g : {&held, &onDemand}) {
            GridRowSource source(*g);
            QCOMPARE(WriteCsv(dir.filePath(g == &held ? "held.csv" : "paged.csv"), source),
                     qint64(held.maxRows()));
        }
        QFile a(dir.filePath("held.csv")), b(dir.filePath("paged.csv"));
        QVERIFY(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
        QCOMPARE(b.readAll(), a.readAll());
        // Nothing on demand is edited; removing a row leaves it out.
        QVERIFY(!onDemand.setText(5, 2, QStringLiteral("改")));
        QVERIFY(onDemand.isLocked(5, 2));
        onDemand.removeRow(333);
        held.removeRow(333);
        QCOMPARE(onDemand.maxRows(), held.maxRows());
        QCOMPARE(onDemand.rowTexts(333), held.rowTexts(333));
        // Sorting goes to the database; ties keep the code's order in both. Empty cells come first
        // in a held grid, where SQLite puts nulls; the server puts them last.
        held.sortRows({3});
        onDemand.sortRows({3});
        int nulls = 0;
        for (int r = 1; r <= held.maxRows(); ++r)
            nulls += held.text(r, 3).isEmpty() ? 1 : 0;
        QVERIFY(nulls > 0);
        const int shift = test::onServer() ? nulls : 0;
        for (int r : {1, 100, 101, held.maxRows() - nulls})
            QCOMPARE(onDemand.rowTexts(r), held.rowTexts(r + shift));
        // Held rows come back with loadRows or a new size.
        onDemand.setMaxRows(2);
        QVERIFY(!onDemand.isPaged());
        QVERIFY(onDemand.setText(1, 1, QStringLiteral("x")));
    }

    void aRefusedStatementLeavesTheGridAsItWas() {
        ZqGrid grid;
        grid.setMaxCols(3);
        grid.loadPaged(persons());
        const int rows = grid.maxRows();
        QVERIFY_THROWS_EXCEPTION(DbError, grid.loadPaged(persons(QStringLiteral("no_such_column=1"))));
        QCOMPARE(grid.maxRows(), rows);
        QVERIFY(grid.isPaged());
    }
};

ZQ_DB_TEST_MAIN(TestPagedRows)
#include "test_paged_rows.moc"
