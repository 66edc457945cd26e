#pragma once

#include "BriefDialog.h"

#include <QVector>

class QTableWidget;

namespace zq {

// Mode 5: the grid columns of a table. Tick a field to show it, move it up or down for the column
// order, type its width; OK writes FieldSelected, FieldID and FieldGridWidth of the dictionary.
class ColumnDialog : public BriefDialog {
public:
    ColumnDialog(const QString& table, QWidget* parent = nullptr);

    // The new field list ("fcode,fname,...") when something was written, else empty.
    QString answer() const override { return m_answer; }
    void accept() override;
    // Moves the row at `row` by `step` places.
    void moveRow(int row, int step);

private:
    struct Field {
        int position; // row of the dictionary statement
        QString name;
        QString caption;
        bool selected;
        int fieldId;
        QString width; // as stored; empty for null
    };

    QString sql() const;
    void fill();
    bool save();

    QString m_table;
    QVector<Field> m_fields; // in the order of the statement
    QTableWidget* m_grid;
    QString m_answer;
};

} // namespace zq
