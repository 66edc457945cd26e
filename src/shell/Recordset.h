#pragma once

#include "Connection.h"

#include <functional>
#include <memory>
#include <optional>
#include <QHash>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

namespace zq {

enum class Cursor { ForwardOnly = 0, Keyset = 1, Static = 3 };
enum class Lock { ReadOnly = 1, Optimistic = 3, BatchOptimistic = 4 };

// A recordset over one statement. Forward-only read-only sets stream; every other kind is read
// whole into memory, which gives moving back and writes. RecordCount is always the true count.
// Writes (AddNew, Update, Delete) go to the one table of the statement with bound values.
class Recordset {
public:
    Recordset(Connection& c, const QString& sql, Cursor cursor = Cursor::ForwardOnly,
              Lock lock = Lock::ReadOnly);
    ~Recordset();
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    bool eof() const { return m_eof; }
    bool bof() const { return m_bof; }
    int recordCount();
    void moveNext();
    void moveFirst();
    // Moves n rows from the current one (buffered sets only).
    void move(int n);
    // Row index of the current row (0-based), buffered sets only.
    int position() const { return m_pos; }

    int fieldCount() const { return m_names.size(); }
    QString fieldName(int i) const { return m_names.value(i); }
    // Index of a field, case-insensitive, or -1.
    int fieldIndex(const QString& name) const;

    QVariant value(int i) const;
    QVariant value(const QString& name) const;
    // A field read as text; null reads as "".
    QString text(int i) const;
    QString text(const QString& name) const;
    // A field read as a number through Val.
    double val(int i) const;
    double val(const QString& name) const;

    // Writes through the recordset.
    void addNew();
    void setValue(const QString& name, const QVariant& v);
    void setValue(int i, const QVariant& v);
    // Writes the current row now, or marks it for UpdateBatch. Optimistic: a changed column must
    // still hold what was read, and the write must reach exactly its row, else ConflictError.
    void update();
    void updateBatch();
    void deleteRow();
    // The table written to (the first name after "from").
    QString table() const { return m_table; }

    void close();

private:
    struct Row {
        QVector<QVariant> values;
        QVector<QVariant> original; // as read, kept from the first change on
        QVariant locator;
        QVector<bool> changed;
        bool isNew = false;
        bool dirty = false;
        bool deleted = false;
    };

    void openStreaming();
    void openBuffered();
    void fetchStreaming();
    void checkCurrent() const;
    const QVector<QVariant>& currentValues() const;
    void writeRow(Row& r);
    void syncPosition();

    Connection& m_c;
    QString m_sql;
    Cursor m_cursor;
    Lock m_lock;
    QString m_table;
    QStringList m_names;
    QHash<QString, int> m_index;
    bool m_eof = true;
    bool m_bof = true;
    std::optional<int> m_count;

    // Streaming
    std::unique_ptr<QSqlQuery> m_query;
    QVector<QVariant> m_current;

    // Buffered
    bool m_buffered = false;
    QVector<Row> m_rows;
    int m_pos = 0;
};

// A row as a screen read it, to tell at the save whether another client changed it meanwhile: the
// fields by lower-cased name, as text (null reads as empty). Empty when there was no row.
using RowSnapshot = QHash<QString, QString>;
RowSnapshot Snapshot(const Recordset& rs);
// Refuses with ConflictError when `now` has no current row, or when a field that both hold differs
// from what was loaded. An empty snapshot checks nothing.
void RequireUnchanged(const RowSnapshot& loaded, const Recordset& now);

// Every row of a statement on conn(), each field as text (nulls empty).
QVector<QStringList> ReadRows(const QString& sql);
// The same with values bound to the statement's ? markers.
QVector<QStringList> ReadRows(const QString& sql, const QVariantList& binds);
// Runs a statement with bound values and hands each row's values to `row`, forward only, so that
// nothing but the row in hand is held.
void VisitRows(const QString& sql, const QVariantList& binds,
               const std::function<void(const QSqlQuery&)>& row);

} // namespace zq
