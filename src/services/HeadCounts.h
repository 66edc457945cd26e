#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// Column of tRsBasic that ties a person to a node of a code table: fbmcode for the departments
// (trs_bm), neckline for every other table (the housing rooms use it).
QString PersonCodeColumn(const QString& table);

// Persons in state `state` (fzt) whose column begins with `code` (a like pattern "code%", so the
// count of a department holds its sub-departments); all persons in the state when the code is
// empty. One statement; the count as text.
QString CountPersons(const QString& table, qint32 state, const QString& code);

// The counts of CountPersons for many codes at once, from the head counts the database keeps
// instead of one statement per code. Every count equals what CountPersons gives for the code.
class HeadCounts {
public:
    // Reads the counts the database keeps of the persons in `state` by the table's column.
    HeadCounts(const QString& table, qint32 state);

    // All persons in the state: CountPersons(table, state, "").
    qint64 total() const { return m_total; }
    // Makes the counts of these codes available to count(). Codes the database must match itself
    // (with letters, which it compares without regard to case, or with like wildcards) are settled
    // here with one statement per few hundred such codes; the rest are matched in memory.
    void prepare(const QStringList& codes);
    // The count of one code; a code that prepare() did not see is matched now.
    qint64 count(const QString& code);

    // How a code can be matched: a plain prefix test for codes without letters; a prefix test with
    // ASCII letters folded, unless a stored code holds a character the server lowers onto one;
    // wildcards and other letters by the database.
    enum class Match { Caseless, AsciiLetters, Database };
    static Match classify(const QString& code);
    // True when count() settles the code in memory.
    bool inMemory(const QString& code) const;

private:
    qint64 prefixSum(const QString& code) const;

    QString m_table;
    QString m_column;
    qint32 m_state;
    qint64 m_total = 0;
    bool m_oddValues = false;
    QStringList m_values;     // non-null codes of the persons, ASCII letters folded, sorted
    QVector<qint64> m_prefix; // m_prefix[i]: persons of m_values[0..i-1]
    QHash<QString, qint64> m_settled;
};

} // namespace zq
