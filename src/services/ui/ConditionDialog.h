#pragma once

#include "BriefDialog.h"

#include <QStringList>
#include <QVector>

class QComboBox;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;

namespace zq {

// One row of a composed condition.
struct ConditionRow {
    QString join;  // "and" or "or": how the row joins the rows before it (ignored on the first)
    QString field; // column name
    bool numeric = false;
    QString op; // = <> > >= < <= like between
    QString value;
    QString value2; // upper bound of between
};

// The operators offered, in the order of the list.
const QStringList& conditionOperators();
// One term: "fsex='男'", "fage>=30", "fname like '%张%'"; between is written as two terms joined by
// "and". Throws DbError for a value with a quote.
QString conditionTerm(const ConditionRow& row);
// The condition of the rows for `table` alone, in the form callers splice after "And" and prefix
// with an alias term by term. Rows joined by "and" are plain terms; "or" binds looser than "and",
// so a condition with "or" keeps its groups together as one term: "fCode in (select fCode from
// table where ... or ...)".
QString composeCondition(const QString& table, const QVector<ConditionRow>& rows);

// Mode 3: compose a condition from the dictionary fields of a table.
class ConditionDialog : public BriefDialog {
public:
    // `start`, when given, is a leading term of the answer.
    ConditionDialog(const QString& table, const QString& start, QWidget* parent = nullptr);

    QString answer() const override;
    void accept() override;
    // Adds the row in the editor to the condition; false (with a message) when its value is refused.
    bool addRow();
    const QVector<ConditionRow>& rows() const { return m_rows; }

private:
    struct Field {
        QString name;
        QString caption;
        bool numeric;
        QString briefType;
    };

    void onFieldChanged();
    void onOperatorChanged();
    void removeRow();
    void refresh();

    QString m_table;
    QString m_start;
    QVector<Field> m_fields;
    QVector<ConditionRow> m_rows;
    QComboBox* m_join;
    QComboBox* m_field;
    QComboBox* m_op;
    QComboBox* m_value;
    QLineEdit* m_value2;
    QListWidget* m_list;
    QPlainTextEdit* m_preview;
};

} // namespace zq
