#include "AdminTest.h"

#include "admin/Demo.h"
#include "admin/DemoAdmin.h"
#include "personnel/PersonBasicData.h"
#include "personnel/PersonImport.h"
#include "services/Spreadsheets.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDate>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::dropDatabase;
using test::newDatabase;
using test::whereArgs;

namespace {

constexpr int kPersons = 200;

double count(const QString& sql) {
    Recordset rs(conn(), sql);
    return rs.val(0);
}

demo::Summary fillDemo(quint32 seed, int persons = kPersons) {
    demo::Options o;
    o.persons = persons;
    o.seed = seed;
    return demo::fill(conn(), o);
}

// Every row of the tables, as sorted text: equal lists mean equal contents.
// Every row of the tables, as text; the papers' files stand beside each database, so their folder is
// left out.
QStringList contents(const QStringList& tables) {
    const QString folder = conn().settings().userPath + QStringLiteral(".docs/");
    QStringList rows;
    for (const QString& table : tables) {
        QSqlQuery q(conn().database());
        if (!q.exec(QStringLiteral("select * from %1").arg(table))) {
            QTest::qFail(qPrintable(table), __FILE__, __LINE__);
            return {};
        }
        while (q.next()) {
            QStringList values;
            for (int i = 0; i < q.record().count(); ++i)
                values << (q.value(i).isNull() ? QStringLiteral("<null>") : q.value(i).toString());
            rows << QString(table + QLatin1Char('|') + values.join(QLatin1Char('|')))
                        .replace(folder, QString());
        }
    }
    rows.sort();
    return rows;
}

// The rows of every table of the schema, one "table count" line each.
QStringList tableCounts() {
    QStringList out;
    for (const schema::Table& t : schema::tables())
        out << QStringLiteral("%1 %2").arg(t.name).arg(
            count(QStringLiteral("select count(*) from %1").arg(t.name)));
    return out;
}

// Runs zqrs-admin in process; gives the exit code and what it wrote.
int runAdmin(const QStringList& args, QString* out = nullptr, QString* err = nullptr) {
    QString o, e;
    QTextStream os(&o), es(&e);
    const int rc = admin::run(QStringList{QStringLiteral("zqrs-admin")} + args, os, es);
    if (out) *out = o;
    if (err) *err = e;
    return rc;
}

} // namespace

class TestDemo : public QObject {
    Q_OBJECT

private slots:
    void init() { test::freshDatabase(); }

    void smallCompanyHasWhatItSays() {
        const demo::Summary s = fillDemo(1);
        QCOMPARE(s.persons, qint64(kPersons));
        QCOMPARE(s.departments, qint64(demo::departmentCount(kPersons)));
        QCOMPARE(s.posts, 2 * s.departments);
        QCOMPARE(count("select count(*) from tRsBasic"), double(kPersons));
        QCOMPARE(count("select count(*) from tRs_Bm where fYnxj=0"), double(s.departments));
        QCOMPARE(count("select count(*) from tRs_Bm where fYnxj=1"), double(s.posts));
        qint64 total = 0;
        for (auto it = s.tables.begin(); it != s.tables.end(); ++it) {
            QCOMPARE(count(QStringLiteral("select count(*) from %1").arg(it.key())), double(it.value()));
            total += it.value();
            // Every table the generator owns gets rows, even in a small company.
            QVERIFY2(it.value() > 0, qPrintable(it.key()));
        }
        QCOMPARE(s.rows, total);
        QCOMPARE(s.tables.size(), 21);

        // Most serve; those who left have a date and a reason, those in service neither.
        QVERIFY(count("select count(*) from tRsBasic where fzt=1") > kPersons * 0.7);
        QVERIFY(count("select count(distinct fzt) from tRsBasic where fzt between 2 and 7") >= 2);
        QCOMPARE(count("select count(*) from tRsBasic where fzt<1 or fzt>7 or fzt is null"), 0.0);
        QCOMPARE(count("select count(*) from tRsBasic where fzt>1 and (leavetime='' or leavereason='')"),
                 0.0);
        QCOMPARE(count("select count(*) from tRsBasic where fzt=1 and (leavetime<>'' or leavereason<>'')"),
                 0.0);
        QVERIFY(count("select count(*) from tRsBasic where fzt>1 and leavetime<fSpday") == 0);
        // A blank box is '' as the screens write it, not null.
        QCOMPARE(count("select count(*) from tRsBasic where fTc is null or fZc is null"), 0.0);
    }

    void departmentsPostsAndRoomsHangTogether() {
        fillDemo(3, 3000);
        // Sixty departments for 3,000 persons, in three or four levels of two digits each.
        QCOMPARE(count("select count(*) from tRs_Bm where fYnxj=0"), 60.0);
        QVERIFY(count("select max(length(fCode)) from tRs_Bm where fYnxj=0") >= 6);
        // Each row below the top has its parent: the code less its last two digits.
        QCOMPARE(
            count("select count(*) from tRs_Bm a where length(a.fCode)>2 and not exists "
                  "(select 1 from tRs_Bm b where b.fYnxj=0 and b.fCode=substr(a.fCode,1,length(a.fCode)-2))"),
            0.0);
        QCOMPARE(count("select count(*) from (select fName from tRs_Bm group by fName having count(*)>1) d"),
                 0.0);
        // Persons belong to a department by code and name, and hold one of its posts.
        QCOMPARE(count("select count(*) from tRsBasic p where not exists (select 1 from tRs_Bm d where "
                       "d.fYnxj=0 and d.fCode=p.fBmCode and d.fName=p.fBmName)"),
                 0.0);
        QCOMPARE(count("select count(*) from tRsBasic p where not exists (select 1 from tRs_Bm d where "
                       "d.fYnxj=1 and d.fName=p.fRz and substr(d.fCode,1,length(p.fBmCode))=p.fBmCode "
                       "and length(d.fCode)=length(p.fBmCode)+2)"),
                 0.0);
        // A department has at most one head in service.
        QCOMPARE(count("select count(*) from (select fRz from tRsBasic where fzt=1 and fRz in (select fName "
                       "from tRs_Bm where fCode like '%91') group by fRz having count(*)>1) h"),
                 0.0);
        QVERIFY(count("select count(*) from tRs_Bm where fYnxj=0 and fLimited>0") > 0);
        // Lodgers live in rooms of their sex, within the beds of the room.
        QVERIFY(count("select count(*) from tRsBasic where neckline<>''") > 0);
        QCOMPARE(count("select count(*) from tRsBasic p where neckline<>'' and not exists (select 1 from "
                       "tRs_House h where h.fCode=p.neckline and h.fYnxj=(case when p.fSex='男' then 1 else "
                       "2 end))"),
                 0.0);
        QCOMPARE(count("select count(*) from tRs_House h where h.fYnxj>0 and h.fLimited < (select count(*) "
                       "from tRsBasic p where p.neckline=h.fCode)"),
                 0.0);
        QCOMPARE(count("select count(*) from tRsBasic where neckline<>'' and fzt<>1"), 0.0);
        // Every order moves a person from another department to his own.
        QCOMPARE(count("select count(*) from trsPersonMove m join tRsBasic p on p.fCode=m.fcode "
                       "where m.newdpt<>p.fBmName or m.olddpt=m.newdpt"),
                 0.0);
        QCOMPARE(count("select count(*) from trsPersonMove"),
                 count("select count(*) from tRsWork where fType=1 and newbm<>''"));
        // Some loans are still out.
        QVERIFY(count("select count(*) from trsLoanTools where backtime is null") > 0);
        QVERIFY(count("select count(*) from tRsLoanGoods where backtime is null") > 0);
    }

    void identityCardsAreValidAndMatchThePerson() {
        fillDemo(5);
        Recordset rs(conn(), "select fSfz, fBirthDay, fSex from tRsBasic");
        QSet<QString> seen;
        int n = 0;
        for (; !rs.eof(); rs.moveNext(), ++n) {
            const QString card = rs.text(0);
            QVERIFY2(demo::idCardValid(card), qPrintable(card));
            QCOMPARE(card.mid(6, 8), QString(rs.text(1)).remove(QLatin1Char('-')));
            QCOMPARE(card.at(16).digitValue() % 2 == 1, rs.text(2) == QStringLiteral("男"));
            QVERIFY(!seen.contains(card));
            seen.insert(card);
        }
        QCOMPARE(n, kPersons);
        // The check itself: a published example, and a changed digit.
        QCOMPARE(demo::idCardCheckDigit(u"11010519491231002"), QLatin1Char('X'));
        QVERIFY(demo::idCardValid(u"11010519491231002X"));
        QVERIFY(!demo::idCardValid(u"11010519491231003X"));
        QVERIFY(!demo::idCardValid(u"1101051949123100"));
    }

    void sameSeedSameRowsOtherSeedOtherRows() {
        const QStringList tables = fillDemo(11).tables.keys();
        const QStringList first = contents(tables);
        test::freshDatabase();
        fillDemo(11);
        QCOMPARE(contents(tables), first);
        test::freshDatabase();
        fillDemo(12);
        const QStringList other = contents(tables);
        QCOMPARE(other.size() > 0, true);
        QVERIFY(other != first);
    }

    void valuesFitColumnsAndLists() {
        fillDemo(21, 1500);
        // No text longer than its column: the screens cut what they save to these sizes.
        for (const schema::Table& t : schema::tables())
            for (const schema::Column& c : t.columns)
                if (c.type == schema::Type::Text && c.size > 0)
                    QVERIFY2(count(QStringLiteral("select count(*) from %1 where length(%2)>%3")
                                       .arg(t.name, c.name)
                                       .arg(c.size)) == 0,
                             qPrintable(t.name + QLatin1Char('.') + c.name));
        // Dates are ISO days.
        for (const char* column : {"fBirthDay", "fSpday", "grudtime", "worktime", "contracttime"})
            QCOMPARE(count(QStringLiteral("select count(*) from tRsBasic where %1 not like '____-__-__'")
                               .arg(QLatin1String(column))),
                     0.0);
        // A value of a field with a brief list is one of the list's entries.
        Recordset rs(conn(),
                     "select fTable, FieldName, FieldBriefType from RptListDetail where "
                     "FieldBriefType<>'' and fTable in ('tRsBasic','trsLoanTools','tRsLoanGoods','trscard')");
        int checked = 0;
        for (; !rs.eof(); rs.moveNext(), ++checked) {
            const QString table = rs.text(0), field = rs.text(1);
            QVERIFY2(count(QStringLiteral("select count(*) from %1 where coalesce(%2,'')<>'' and %2 not in "
                                          "(select BriefName from briefDetail where briefType=%3)")
                               .arg(table, field, quoted(rs.text(2)))) == 0,
                     qPrintable(table + QLatin1Char('.') + field));
        }
        QVERIFY(checked > 10);
        // The leaving reason is the entry of the state.
        QCOMPARE(
            count("select count(*) from tRsBasic p where fzt>1 and leavereason <> (select BriefName from "
                  "briefDetail where briefType='rsstate' and BriefCode=" +
                  QStringLiteral("%1").arg(conn().dialect().isServer() ? "lpad((p.fzt-1)::text,2,'0')"
                                                                       : "printf('%02d',p.fzt-1)") +
                  ")"),
            0.0);
    }

    // The demo keeps every rule the record screen and the import enforce: its register exported
    // whole and imported back unchanged is taken row for row, through either kind of file.
    void demoRegisterImportsBackUnchanged() {
        fillDemo(22, 1500);
        QTemporaryDir dir;
        QStringList fields = BasicColumns();
        fields << QStringLiteral("fBmCode");
        QVector<SheetColumn> columns;
        for (const QString& f : fields)
            columns << SheetColumn{ImportCaption(f), CellKind::Text, 0, 10};
        for (const char* suffix : {"csv", "xlsx"}) {
            const QString file = dir.filePath(QStringLiteral("register.") + QLatin1String(suffix));
            QueryRowSource rows(
                columns, QStringLiteral("select %1 from tRsBasic order by fCode").arg(fields.join(',')));
            QCOMPARE(ExportRows(file, rows, QStringLiteral("员工名单")), 1500);
            const ImportCheck check = CheckImport(PrepareImport(file), true);
            QVERIFY2(check.error.isEmpty(), qPrintable(check.error));
            QStringList reasons;
            for (const RowIssue& i : check.issues)
                if (i.refused && reasons.size() < 5)
                    reasons << QStringLiteral("%1 %2: %3").arg(i.row).arg(i.code, i.reason);
            QVERIFY2(check.refused == 0,
                     qPrintable(QString::number(check.refused) + QLatin1Char('\n') + reasons.join('\n')));
            QCOMPARE(check.unchanged, 1500);
        }
    }

    // The README names the demo logins of the usual demo company (2,000 persons, seed 1), with
    // their departments: they must be the ones the generator makes.
    void readmeNamesTheDemoLogins() {
        fillDemo(1, 2000);
        const QVector<demo::DemoLogin> logins = demo::addDemoUsers(conn());
        QCOMPARE(logins.size(), 3);
        QFile readme(QStringLiteral(QT_TESTCASE_SOURCEDIR "/../README.md"));
        QVERIFY(readme.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(readme.readAll());
        for (const demo::DemoLogin& l : logins) {
            Recordset rs(conn(), QStringLiteral("select b.fName from tRsBasic a left join tRs_Bm b on "
                                                "a.fBmCode=b.fCode where a.fName=") +
                                     quoted(l.name));
            const QString row = l.supervisor
                                    ? QStringLiteral("| %1 | %2 |").arg(l.name, l.password)
                                    : QStringLiteral("| %1 (%2) | %3 |").arg(l.name, rs.text(0), l.password);
            QVERIFY2(text.contains(row), qPrintable(row));
        }
    }

    void aSecondFillIsRefused() {
        fillDemo(1, 50);
        const double rows = count("select count(*) from tRsFamily");
        QVERIFY_THROWS_EXCEPTION(DbError, fillDemo(2, 50));
        QCOMPARE(count("select count(*) from tRsBasic"), 50.0);
        QCOMPARE(count("select count(*) from tRsFamily"), rows);
    }

    // A demo that fails midway (here: at the family rows) leaves every table as it was, and a second
    // run makes the company once, not twice.
    void aFailedDemoLeavesTheDatabaseAsItWas() {
        const ConnectionSettings s = conn().settings();
        const QStringList before = tableCounts();
        demo::Options o;
        o.persons = 300;
        o.seed = 3;
        o.progress = [](const QString& table, qint64) {
            if (table == QLatin1String("tRsFamily")) throw DbError(QStringLiteral("故障"));
        };
        QVERIFY_THROWS_EXCEPTION(DbError, demo::createDemoDatabase(s, o));
        QCOMPARE(tableCounts(), before);

        o.progress = {};
        const demo::Summary made = demo::createDemoDatabase(s, o);
        QCOMPARE(count("select count(*) from tRsBasic"), 300.0);
        QCOMPARE(count("select count(*) from tRs_Bm"), double(made.departments + made.posts));
        QCOMPARE(count("select count(*) from tSysUser"), double(made.logins.size()));
        QVERIFY(!made.logins.isEmpty());
    }

    // zqrs-admin demo killed while it writes leaves no company (or, had it just finished, the whole
    // one), and a run after it makes the company.
    void aKilledDemoLeavesNoneOrAll() {
        QTemporaryDir dir;
        QStringList where;
        const ConnectionSettings s = newDatabase(dir, QStringLiteral("killed"), where);
        const QStringList args = QStringList{QStringLiteral("demo")} + where +
                                 QStringList{"--persons", "2000", "--seed", "5", "--verbose"};
        const double rows = 3.0 * demo::departmentCount(2000); // departments and two posts each
        QProcess p;
        test::startAdmin(p, args);
        QVERIFY(p.waitForStarted());
        QByteArray seen;
        // Killed once the persons are written, with the records of each person still to come.
        while (!seen.contains("tRsBasic") && p.waitForReadyRead(60000))
            seen += p.readAllStandardOutput();
        QVERIFY2(seen.contains("tRsBasic"), seen.constData());
        p.kill();
        p.waitForFinished();

        double persons = 0;
        {
            Connection c;
            c.open(s);
            persons = Recordset(c, "select count(*) from tRsBasic").val(0);
            const double depts = Recordset(c, "select count(*) from tRs_Bm").val(0);
            const double users = Recordset(c, "select count(*) from tSysUser").val(0);
            QVERIFY2(persons == 0 || persons == 2000, qPrintable(QString::number(persons)));
            QCOMPARE(depts, persons == 0 ? 0.0 : rows);
            QCOMPARE(users > 0, persons > 0);
        }
        if (persons == 0) {
            QString out, err;
            QCOMPARE(test::runAdminProcess(args, &out, &err), int(admin::Ok));
            QVERIFY2(out.contains(QStringLiteral("2000 名员工")), qPrintable(out + err));
            Connection c;
            c.open(s);
            QCOMPARE(Recordset(c, "select count(*) from tRsBasic").val(0), 2000.0);
            QCOMPARE(Recordset(c, "select count(*) from tRs_Bm").val(0), rows);
        }
        dropDatabase(s);
    }

    void adminInitRefusesAnInitialisedDatabase() {
        QTemporaryDir dir;
        QStringList where;
        const ConnectionSettings s = newDatabase(dir, QStringLiteral("admin"), where);
        QString out, err;
        QCOMPARE(runAdmin(QStringList{QStringLiteral("init")} + where, &out, &err), int(admin::Ok));
        QVERIFY2(err.isEmpty(), qPrintable(err));
        QVERIFY(out.contains(QStringLiteral("已建立数据库")));

        // A mark of our own must outlive the refused second init.
        {
            Connection c;
            c.open(s);
            c.execute("insert into tRs_Bm (fCode,fName,fYnxj) values ('99','标记',0)");
        }
        QCOMPARE(runAdmin(QStringList{QStringLiteral("init")} + where, &out, &err), int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("未作任何改动")), qPrintable(err));
        QVERIFY(out.isEmpty());
        QCOMPARE(runAdmin(QStringList{QStringLiteral("demo")} + where +
                              QStringList{"--persons", "30", "--seed", "4"},
                          &out, &err),
                 int(admin::Ok));
        QVERIFY(out.contains(QStringLiteral("30 名员工")));
        QCOMPARE(runAdmin(QStringList{QStringLiteral("demo")} + where + QStringList{"--persons", "30"}, &out,
                          &err),
                 int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("已有 30 名员工")), qPrintable(err));
        {
            Connection c;
            c.open(s);
            Recordset rs(c, "select count(*) from tRs_Bm where fCode='99'");
            QCOMPARE(rs.val(0), 1.0);
            Recordset persons(c, "select count(*) from tRsBasic");
            QCOMPARE(persons.val(0), 30.0);
        }
        dropDatabase(s);
    }

    void adminUpgradeBringsAnOlderDatabaseUp() {
        const QStringList at = whereArgs(conn().settings());
        const QString latest = QString::number(schema::latestVersion());
        QString out, err;
        QCOMPARE(runAdmin(QStringList{QStringLiteral("upgrade")} + at, &out, &err), int(admin::Ok));
        QVERIFY2(out.contains(QStringLiteral("已是最新版本 ") + latest), qPrintable(out));

        // One version back (every step may run again): the steps above it run.
        if (schema::latestVersion() > 1) {
            conn().execute(
                QStringLiteral("update zq_schema set version=%1").arg(schema::latestVersion() - 1));
            QCOMPARE(runAdmin(QStringList{QStringLiteral("upgrade")} + at, &out, &err), int(admin::Ok));
            QVERIFY2(out.contains(QStringLiteral("升级到版本 ") + latest), qPrintable(out));
            QCOMPARE(schema::currentVersion(conn()), schema::latestVersion());
        }

        // Without a version the tables may be of any program, or seeded already: nothing is changed.
        const double modules = count("select count(*) from tSysFunc");
        conn().execute("delete from zq_schema");
        QCOMPARE(runAdmin(QStringList{QStringLiteral("upgrade")} + at, &out, &err), int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("未作任何改动")), qPrintable(err));
        QVERIFY(out.isEmpty());
        QCOMPARE(schema::currentVersion(conn()), 0);
        QCOMPARE(count("select count(*) from tSysFunc"), modules);

        // Neither is an empty database made a company database, nor a missing one made at all.
        QTemporaryDir dir;
        QStringList where;
        const ConnectionSettings other = newDatabase(dir, QStringLiteral("upgrade"), where);
        QCOMPARE(runAdmin(QStringList{QStringLiteral("upgrade")} + where, &out, &err), int(admin::Failed));
        QVERIFY(out.isEmpty());
        QVERIFY(!err.isEmpty());
        if (test::onServer()) {
            Connection a;
            a.open(test::serverSettings());
            a.execute(QStringLiteral("create database %1").arg(other.defaultDb));
        } else {
            QVERIFY(!QFileInfo::exists(other.userPath));
            QFile empty(other.userPath);
            QVERIFY(empty.open(QIODevice::WriteOnly));
        }
        QCOMPARE(runAdmin(QStringList{QStringLiteral("upgrade")} + where, &out, &err), int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("未作任何改动")), qPrintable(err));
        {
            Connection c;
            c.open(other);
            QVERIFY(!schema::tableExists(c, QStringLiteral("zq_schema")));
            QVERIFY(!schema::tableExists(c, QStringLiteral("tRsBasic")));
        }
        dropDatabase(other);
    }

    void adminCommandLineMistakes() {
        QString out, err;
        QCOMPARE(runAdmin({}, &out, &err), int(admin::Usage));
        QVERIFY(err.contains(QStringLiteral("用法")));
        QCOMPARE(runAdmin({"init"}, &out, &err), int(admin::Usage));
        QCOMPARE(runAdmin({"init", "--db", "a.db", "--server", "h", "--database", "d"}, &out, &err),
                 int(admin::Usage));
        QCOMPARE(runAdmin({"demo", "--db", "a.db"}, &out, &err), int(admin::Usage));
        QCOMPARE(runAdmin({"demo", "--db", "a.db", "--persons", "0"}, &out, &err), int(admin::Usage));
        QCOMPARE(runAdmin({"init", "--server", "h"}, &out, &err), int(admin::Usage));
        QCOMPARE(runAdmin({"frobnicate"}, &out, &err), int(admin::Usage));
        QCOMPARE(runAdmin({"--help"}, &out, &err), int(admin::Ok));
        QVERIFY(out.contains(QStringLiteral("zqrs-admin init --db")));
        QCOMPARE(runAdmin({"version"}, &out, &err), int(admin::Ok));
        QVERIFY(out.startsWith(QStringLiteral("zqrs-admin ")));
    }
};

ZQ_DB_TEST_MAIN(TestDemo)
#include "test_demo.moc"
