// Head counts kept by the database itself. The department tree, the room tree and the home page
// show how many persons of a state belong to each department, room, month of birth and month of
// hire; counted from the persons at every look these are a pass over the whole register, which a
// large company feels at every click. A trigger changes the counts in the same transaction as the
// persons, whoever writes them (screens, imports, the code cascade, other clients), so reading them
// is reading a few thousand rows.
//
// Values are kept exactly as stored (case and all), as the grouped count gave them: readers fold
// and match them as before. A moved person's counts change in key order, so that two clients
// moving persons crosswise never wait on each other's counts.

#include "Schema.h"

#include "Recordset.h"

namespace zq::schema {

namespace {

struct CountedKey {
    const char* key;    // fColumn in the table
    const char* column; // column of tRsBasic
    const char* value;  // the counted value, over the column's text (%1)
    const char* when;   // rows counted, over the column's text; nullptr for every row
    bool nullsApart = false; // keyed "v:" plus the key for the values, "n:" plus it for the nulls
};

// A person without a department still counts for the whole company, so every row has a department
// value; the other head keys count only rows that have one. The statistics screen's most counted
// fields are kept per value as stored, the empty text included, and their nulls apart ("v:" and
// "n:" plus the key), since its count lists a null as a value of its own. Every key costs each
// write of a person: few are kept.
constexpr CountedKey kKeys[] = {
    {"fbmcode", "fBmCode", "coalesce(%1,'')", nullptr},
    {"neckline", "neckline", "%1", "coalesce(%1,'')<>''"},
    {"birthmonth", "fBirthDay", "substr(%1,6,2)", "coalesce(%1,'')<>''"},
    {"hiremonth", "fSpday", "substr(%1,6,2)", "coalesce(%1,'')<>''"},
    {"fsex", "fSex", "coalesce(%1,'')", nullptr, true},
    {"fxl", "fXl", "coalesce(%1,'')", nullptr, true},
    {"fbmname", "fBmName", "coalesce(%1,'')", nullptr, true},
};

// The counted keys of the persons `row` refers to, each with the change `sign` (1 or -1, or the
// expression to sum), one select a key. `from` is the rows' source after "from", empty for a
// trigger's own row.
QStringList keyParts(const Dialect& d, const QString& row, const QString& from, const QString& sign) {
    QStringList parts;
    for (const CountedKey& k : kKeys) {
        const QString column = row + QLatin1Char('.') + QLatin1String(k.column);
        // The server's caseless text compared as stored; the file's columns ignore ASCII case
        // unless told otherwise.
        const QString text = d.isServer() ? column + QStringLiteral("::text") : column;
        QString value = QString::fromLatin1(k.value).arg(text);
        if (!d.isServer()) value = QLatin1Char('(') + value + QStringLiteral(") collate binary");
        const QString key = k.nullsApart ? QStringLiteral("case when %1 is null then 'n:%2' else 'v:%2' end")
                                               .arg(text, QLatin1String(k.key))
                                         : QLatin1Char('\'') + QLatin1String(k.key) + QLatin1Char('\'');
        QString part = QStringLiteral("select %1 as c,%2 as v,coalesce(%3.fzt,-1) as z,%4 as d")
                           .arg(key, value, row, sign);
        if (!from.isEmpty()) part += QStringLiteral(" from ") + from;
        if (k.when) part += QStringLiteral(" where ") + QString::fromLatin1(k.when).arg(text);
        parts << part;
    }
    return parts;
}

QString keyRows(const Dialect& d, const QString& row, const QString& from, const QString& sign) {
    return keyParts(d, row, from, sign).join(QStringLiteral(" union all "));
}

const QString kAddCount = QStringLiteral(
    " on conflict (fColumn,fValue,fzt) do update set fCount=tRsHeadCount.fCount+excluded.fCount");

// A person added or removed on the file database: one plain upsert a key. Its keys are distinct,
// so they need no grouping, which would cost a sort at every row.
QString applyEach(const Dialect& d, const QString& row, const QString& sign) {
    QStringList statements;
    for (const QString& part : keyParts(d, row, QString(), sign))
        statements << QStringLiteral("insert into tRsHeadCount (fColumn,fValue,fzt,fCount) ") + part +
                          (part.contains(QStringLiteral(" where ")) ? QString() : QStringLiteral(" where true")) +
                          kAddCount;
    return statements.join(QStringLiteral("; "));
}

// Adds the summed changes of `rows` (a union of keyRows) to the counts, in key order.
QString applyChanges(const QString& rows) {
    return QStringLiteral("insert into tRsHeadCount (fColumn,fValue,fzt,fCount) select c,v,z,sum(d) from (") + rows +
           QStringLiteral(") x where true group by c,v,z having sum(d)<>0 order by c,v,z") + kAddCount;
}

void dropTriggers(Connection& c) {
    for (const char* suffix : {"_i", "_u", "_d"})
        c.execute(c.dialect().isServer()
                      ? QStringLiteral("drop trigger if exists zqc_trsbasic%1 on tRsBasic").arg(QLatin1String(suffix))
                      : QStringLiteral("drop trigger if exists zqc_trsbasic%1").arg(QLatin1String(suffix)));
    if (c.dialect().isServer())
        for (const char* f : {"zqc_trsbasic", "zqc_trsbasic_added", "zqc_trsbasic_removed"})
            c.execute(QStringLiteral("drop function if exists %1()").arg(QLatin1String(f)));
}

void createTriggers(Connection& c) {
    const Dialect& d = c.dialect();
    const bool server = d.isServer();
    const QString o = server ? QStringLiteral("OLD") : QStringLiteral("old");
    const QString n = server ? QStringLiteral("NEW") : QStringLiteral("new");
    const QString added = keyRows(d, n, QString(), QStringLiteral("1"));
    const QString removed = keyRows(d, o, QString(), QStringLiteral("-1"));
    const QString moved = removed + QStringLiteral(" union all ") + added;
    // An update counts only when it changes a counted column, as stored.
    QStringList changed{(server ? QStringLiteral("%1.fzt is distinct from %2.fzt") : QStringLiteral("%1.fzt is not %2.fzt"))
                            .arg(o, n)};
    for (const CountedKey& k : kKeys) {
        const QString column = QLatin1String(k.column);
        changed << (server ? QStringLiteral("%1.%3::text is distinct from %2.%3::text")
                           : QStringLiteral("%1.%3 is not %2.%3 collate binary"))
                       .arg(o, n, column);
    }
    const QString when = changed.join(QStringLiteral(" or "));
    if (server) {
        // Persons added or removed are counted once a statement, over all its rows: counted a row at
        // a time, an import of many in one transaction changes the same count rows once a person,
        // and each change leaves a version the next must step over.
        const auto perStatement = [&c](const char* name, const char* event, const char* table, const QString& rows) {
            c.execute(QStringLiteral("create function %1() returns trigger language plpgsql as $zq$\n"
                                     "begin\n  %2;\n  return null;\nend $zq$")
                          .arg(QLatin1String(name), applyChanges(rows)));
            c.execute(QStringLiteral("create trigger zqc_trsbasic_%1 after %2 on tRsBasic referencing %3 table as "
                                     "zq_rows for each statement execute function %4()")
                          .arg(QString(QLatin1Char(event[0])), QLatin1String(event), QLatin1String(table), QLatin1String(name)));
        };
        perStatement("zqc_trsbasic_added", "insert", "new",
                     keyRows(d, QStringLiteral("r"), QStringLiteral("zq_rows r"), QStringLiteral("1")));
        perStatement("zqc_trsbasic_removed", "delete", "old",
                     keyRows(d, QStringLiteral("r"), QStringLiteral("zq_rows r"), QStringLiteral("-1")));
        c.execute(QStringLiteral("create function zqc_trsbasic() returns trigger language plpgsql as $zq$\n"
                                 "begin\n  %1;\n  return null;\nend $zq$")
                      .arg(applyChanges(moved)));
        c.execute(QStringLiteral("create trigger zqc_trsbasic_u after update on tRsBasic for each row when (%1) "
                                 "execute function zqc_trsbasic()")
                      .arg(when));
        return;
    }
    c.execute(QStringLiteral("create trigger zqc_trsbasic_i after insert on tRsBasic begin %1; end")
                  .arg(applyEach(d, n, QStringLiteral("1"))));
    c.execute(QStringLiteral("create trigger zqc_trsbasic_u after update on tRsBasic when %1 begin %2; end")
                  .arg(when, applyChanges(moved)));
    c.execute(QStringLiteral("create trigger zqc_trsbasic_d after delete on tRsBasic begin %1; end")
                  .arg(applyEach(d, o, QStringLiteral("-1"))));
}

void recountHeads(Connection& c) {
    const Dialect& d = c.dialect();
    // Rows of values nobody holds any more stay, at nought, as the triggers leave them.
    c.execute(QStringLiteral("update tRsHeadCount set fCount=0 where fCount<>0"));
    c.execute(QStringLiteral("insert into tRsHeadCount (fColumn,fValue,fzt,fCount) select c,v,z,sum(d) from (") +
              keyRows(d, QStringLiteral("r"), QStringLiteral("tRsBasic r"), QStringLiteral("1")) +
              QStringLiteral(") x where true group by c,v,z on conflict (fColumn,fValue,fzt) do update set "
                             "fCount=excluded.fCount"));
}

} // namespace

void pauseHeadCounts(Connection& c, bool paused) {
    // The file database counts a row in a few microseconds; the server's per-row call costs more
    // than the row itself.
    if (!c.dialect().isServer()) return;
    c.execute(QStringLiteral("alter table tRsBasic %1 trigger zqc_trsbasic_i")
                  .arg(paused ? QStringLiteral("disable") : QStringLiteral("enable")));
    if (!paused) recountHeads(c);
}

QStringList keptValueColumns() {
    QStringList columns;
    for (const CountedKey& k : kKeys)
        if (k.nullsApart) columns << QLatin1String(k.column);
    return columns;
}

void createHeadCounts(Connection& c) {
    const Dialect& d = c.dialect();
    if (!tableExists(c, QStringLiteral("tRsHeadCount"))) {
        c.execute(QStringLiteral("create table tRsHeadCount (fColumn %1 not null, fValue %2 not null, fzt %3 not null, "
                                 "fCount %4 not null)")
                      .arg(d.isServer() ? QStringLiteral("text") : QStringLiteral("varchar(12)"),
                           d.isServer() ? QStringLiteral("text") : QStringLiteral("text collate binary"),
                           d.intType(), d.bigIntType()));
        c.execute(QStringLiteral("create unique index ux_trsheadcount on tRsHeadCount (fColumn,fValue,fzt)"));
    }
    dropTriggers(c);
    createTriggers(c);
    recountHeads(c);
}

} // namespace zq::schema
