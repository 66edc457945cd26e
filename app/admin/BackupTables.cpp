// Tables of a company read, summed and copied row by row, the same way on both engines.

#include "BackupKit.h"

#include "DemoKit.h"

#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"
#include "shell/TextSearch.h"

#include <algorithm>
#include <cmath>
#include <QCryptographicHash>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QtEndian>

namespace zq::backup {

namespace {

// The word index: its documents are copied, their tokens made again on the target.
const QString kIndexTable = QStringLiteral("zq_findtext");
const QString kIndexTokens = QStringLiteral("ftokens");

QString errorOf(const QSqlQuery& q) {
    const QSqlError e = q.lastError();
    return e.databaseText().trimmed().isEmpty() ? e.text().trimmed() : e.databaseText().trimmed();
}

QSqlQuery run(Connection& c, const QString& sql) {
    QSqlQuery q(c.database());
    q.setForwardOnly(true);
    if (!q.exec(sql)) throw DbError(errorOf(q), sql);
    return q;
}

// Head counts the database keeps from the persons: made again on the target, not copied.
const QString kCountTable = QStringLiteral("tRsHeadCount");

bool isIndexTable(const QString& table) {
    return table.compare(kIndexTable, Qt::CaseInsensitive) == 0;
}

// A value in a form both engines give alike: whole numbers as digits whatever their column type,
// other numbers with every digit, texts and bytes with their length in front.
void appendValue(QByteArray& out, const QVariant& v) {
    if (v.isNull()) {
        out += 'N';
        return;
    }
    switch (v.typeId()) {
    case QMetaType::QByteArray: {
        const QByteArray b = v.toByteArray();
        out += 'B' + QByteArray::number(b.size()) + ':' + b;
        return;
    }
    case QMetaType::Bool:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
        out += 'I' + QByteArray::number(v.toLongLong()) + ';';
        return;
    case QMetaType::ULongLong:
        out += 'I' + QByteArray::number(v.toULongLong()) + ';';
        return;
    case QMetaType::Float:
    case QMetaType::Double: {
        const double d = v.toDouble();
        if (std::isfinite(d) && d == std::floor(d) && std::fabs(d) < 9e15)
            out += 'I' + QByteArray::number(qint64(d)) + ';';
        else
            out += 'R' + QByteArray::number(d, 'g', 17) + ';';
        return;
    }
    default: {
        const QByteArray t = v.toString().toUtf8();
        out += 'S' + QByteArray::number(t.size()) + ':' + t;
        return;
    }
    }
}

} // namespace

void RowSum::add(const QSqlQuery& q, int columns) {
    m_row.clear();
    for (int i = 0; i < columns; ++i)
        appendValue(m_row, q.value(i));
    // A sum of the rows' hashes: the order the engine gives them in does not matter.
    const QByteArray h = QCryptographicHash::hash(m_row, QCryptographicHash::Sha1);
    m_sum += qFromLittleEndian<quint64>(h.constData());
    ++m_rows;
}

QString RowSum::checksum() const {
    return QStringLiteral("%1").arg(m_sum, 16, 16, QLatin1Char('0'));
}

Tables companyTables(Connection& c) {
    Tables tables;
    if (c.dialect().isServer()) {
        QSqlQuery q = run(c, QStringLiteral("select table_name from information_schema.tables where "
                                            "table_schema=current_schema() and table_type='BASE TABLE'"));
        while (q.next())
            tables.push_back({q.value(0).toString(), {}, {}, 0, {}});
        for (TableImage& t : tables) {
            QSqlQuery cq = run(c, QStringLiteral("select column_name, udt_name from information_schema.columns "
                                                 "where table_schema=current_schema() and table_name=%1 "
                                                 "order by ordinal_position")
                                      .arg(quoted(t.name)));
            while (cq.next()) {
                t.columns << cq.value(0).toString();
                t.types << cq.value(1).toString();
            }
        }
    } else {
        QSqlQuery q = run(c, QStringLiteral("select name, sql from sqlite_master where type='table'"));
        QStringList names, virtualTables;
        while (q.next()) {
            const QString name = q.value(0).toString();
            if (q.value(1).toString().startsWith(QLatin1String("create virtual"), Qt::CaseInsensitive))
                virtualTables << name;
            names << name;
        }
        for (const QString& name : names) {
            // The engine's own tables, a virtual table and the tables that hold its contents.
            if (name.startsWith(QLatin1String("sqlite_"), Qt::CaseInsensitive)) continue;
            if (std::any_of(virtualTables.begin(), virtualTables.end(), [&](const QString& v) {
                    return name.compare(v, Qt::CaseInsensitive) == 0 ||
                           name.startsWith(v + QLatin1Char('_'), Qt::CaseInsensitive);
                }))
                continue;
            TableImage t{name, {}, {}, 0, {}};
            QSqlQuery cq = run(c, QStringLiteral("pragma table_info(%1)").arg(quoted(name)));
            while (cq.next()) {
                t.columns << cq.value(1).toString();
                t.types << cq.value(2).toString();
            }
            tables.push_back(t);
        }
    }
    Tables kept;
    for (TableImage& t : tables) {
        if (t.name.startsWith(QLatin1String("zq_backup"), Qt::CaseInsensitive)) continue;
        if (t.name.compare(kCountTable, Qt::CaseInsensitive) == 0) continue;
        if (isIndexTable(t.name)) {
            const qsizetype i = t.columns.indexOf(kIndexTokens, 0);
            if (i < 0) continue;
            t.columns.removeAt(i);
            t.types.removeAt(i);
        }
        kept.push_back(t);
    }
    std::sort(kept.begin(), kept.end(),
              [](const TableImage& a, const TableImage& b) { return a.name.toLower() < b.name.toLower(); });
    return kept;
}

QString selectAll(const TableImage& t) {
    return QStringLiteral("select ") + t.columns.join(QLatin1Char(',')) + QStringLiteral(" from ") + t.name;
}

void measure(Connection& c, Tables& tables, const Progress& progress) {
    for (TableImage& t : tables) {
        QSqlQuery q = run(c, selectAll(t));
        RowSum sum;
        const int n = int(t.columns.size());
        while (q.next())
            sum.add(q, n);
        if (q.lastError().isValid()) throw DbError(errorOf(q), selectAll(t));
        t.rows = sum.rows();
        t.checksum = sum.checksum();
        if (progress) progress(QStringLiteral("核对 %1  %2 行").arg(t.name, -20).arg(t.rows));
    }
}

QString difference(const Tables& expected, const Tables& found) {
    for (const TableImage& e : expected) {
        const auto f = std::find_if(found.begin(), found.end(), [&](const TableImage& t) {
            return t.name.compare(e.name, Qt::CaseInsensitive) == 0;
        });
        if (f == found.end()) return QStringLiteral("表 %1 不见了").arg(e.name);
        if (f->rows != e.rows)
            return QStringLiteral("表 %1 应有 %2 行, 实有 %3 行").arg(e.name).arg(e.rows).arg(f->rows);
        if (f->checksum != e.checksum)
            return QStringLiteral("表 %1 的校验和不符 (应为 %2, 实为 %3)").arg(e.name, e.checksum, f->checksum);
    }
    return {};
}

void copyRows(Connection& from, TableImage& t, Connection& to) {
    // A company's word index gets its tokens again; a backup file keeps the documents alone.
    const bool index =
        isIndexTable(t.name) && columnsOf(to, t.name).contains(kIndexTokens, Qt::CaseInsensitive);
    const qsizetype textColumn = index ? t.columns.indexOf(QStringLiteral("ftext"), 0) : -1;
    QStringList columns = t.columns;
    if (index) columns << kIndexTokens;
    demo::kit::Writer w(to, t.name, columns.join(QLatin1Char(',')));
    QSqlQuery q = run(from, selectAll(t));
    RowSum sum;
    const int n = int(t.columns.size());
    while (q.next()) {
        sum.add(q, n);
        for (int i = 0; i < n; ++i)
            w << q.value(i);
        if (index) {
            const QString text = textColumn >= 0 ? q.value(int(textColumn)).toString() : QString();
            w << QVariant(to.dialect().searchTokensValue(SearchTokens(text)));
        }
        w.row();
    }
    if (q.lastError().isValid()) throw DbError(errorOf(q), selectAll(t));
    w.finish();
    t.rows = sum.rows();
    t.checksum = sum.checksum();
}

void beginSnapshot(Connection& c) {
    // Not the connection's own transaction: this one only reads and must never wait for a writer.
    if (c.dialect().isServer()) {
        run(c, QStringLiteral("begin isolation level repeatable read read only"));
    } else {
        // In the write-ahead log the first read fixes what this reader sees until it ends.
        run(c, QStringLiteral("begin"));
        run(c, QStringLiteral("select count(*) from sqlite_master")).next();
    }
}

void endSnapshot(Connection& c) {
    if (c.isOpen()) QSqlQuery(c.database()).exec(QStringLiteral("rollback"));
}

QString portableType(const QString& declared, const Dialect& d) {
    const QString t = declared.toLower();
    if (t.contains(QLatin1String("int"))) {
        if (t.contains(QLatin1String("small")) || t == QLatin1String("int2")) return QStringLiteral("smallint");
        if (t.contains(QLatin1String("big")) || t == QLatin1String("int8")) return d.bigIntType();
        return d.intType();
    }
    if (t.contains(QLatin1String("real")) || t.contains(QLatin1String("floa")) ||
        t.contains(QLatin1String("doub")) || t.contains(QLatin1String("numeric")))
        return d.realType();
    if (t.contains(QLatin1String("blob")) || t.contains(QLatin1String("bytea"))) return d.blobType();
    return d.memoType();
}

QStringList columnsOf(Connection& c, const QString& table) {
    QSqlQuery q = run(c, QStringLiteral("select * from ") + table + QStringLiteral(" where 1=2"));
    QStringList names;
    const QSqlRecord r = q.record();
    for (int i = 0; i < r.count(); ++i)
        names << r.fieldName(i);
    return names;
}

} // namespace zq::backup
