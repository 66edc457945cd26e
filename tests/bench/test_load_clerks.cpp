#include "TestDb.h"

#include "admin/Demo.h"
#include "clerks/ClerkLoad.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QTest>

using namespace zq;

namespace {

// The ledger's last save of a kind that was acknowledged.
const clerks::Save* lastSaved(const QVector<clerks::Save>& ledger, clerks::Save::Kind kind) {
    const clerks::Save* found = nullptr;
    for (const clerks::Save& s : ledger)
        if (s.kind == kind && s.outcome == clerks::Save::Outcome::Saved) found = &s;
    return found;
}

} // namespace

class TestLoadClerks : public QObject {
    Q_OBJECT
private slots:
    // Three clerks of their own processes on a small company: every acknowledged save is found
    // afterwards, and a save written over or deleted behind the ledger's back is counted lost.
    void clerksAtOnceLoseNothing() {
        const ConnectionSettings settings = test::freshDatabase();
        test::actAsSupervisor();
        demo::Options d;
        d.persons = 120;
        d.seed = 3;
        demo::fill(conn(), d);

        clerks::Options o;
        o.clients = 3;
        o.seconds = 4;
        o.thinkMs = 20; // no clerk pauses long: many saves meet on the same persons
        o.seed = 11;
        const clerks::Result r = clerks::runClerks(
            QStringLiteral(ZQ_BENCH_EXE),
            [&](int i) {
                return clerks::databaseArgs(settings)
                       << QStringLiteral("--client") << QStringLiteral("load.clerks:%1").arg(i)
                       << QStringLiteral("--seconds") << QString::number(o.seconds) << QStringLiteral("--think")
                       << QString::number(o.thinkMs) << QStringLiteral("--seed") << QString::number(o.seed);
            },
            o);
        QVERIFY2(r.errors.isEmpty(), qPrintable(r.errors.join(QLatin1Char('\n'))));
        QCOMPARE(r.failed, 0);
        QCOMPARE(r.lost, 0);
        QVERIFY(r.perKind.value(QStringLiteral("open")) > 0);
        QVERIFY(r.perKind.value(QStringLiteral("stats")) > 0);
        const clerks::Save* person = lastSaved(r.ledger, clerks::Save::Kind::Person);
        const clerks::Save* order = lastSaved(r.ledger, clerks::Save::Kind::Order);
        QVERIFY(person && order && lastSaved(r.ledger, clerks::Save::Kind::Grid) &&
                lastSaved(r.ledger, clerks::Save::Kind::Notice));

        // The person's field is written over by someone the ledger does not know.
        const int slash = person->key.lastIndexOf(QLatin1Char('/'));
        test::exec(QStringLiteral("update trsbasic set ") + person->key.mid(slash + 1) +
                       QStringLiteral("='unseen' where fCode=?"),
                   {person->key.left(slash)});
        QCOMPARE(clerks::countLost(r.ledger), 1);
        // An order is deleted.
        test::exec(QStringLiteral("delete from trsPersonMove where moveNmb=") + num(qint64(Val(order->key))));
        QCOMPARE(clerks::countLost(r.ledger), 2);
    }
};

ZQ_DB_TEST_MAIN(TestLoadClerks)
#include "test_load_clerks.moc"
