#pragma once

#include "BriefDialog.h"

#include <QVector>

class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace zq {

// Modes 1 and 2: pick a brief list, or pick an entry of one list with type-to-filter. In mode 2 the
// dialog also keeps the list: add, rename, delete and reorder entries of briefDetail.
class BriefListDialog : public BriefDialog {
public:
    // mode 1: `code` is the list of all lists ("99999999"), or a list to start on; mode 2: the list.
    BriefListDialog(int mode, const QString& code, QWidget* parent = nullptr);

    // Mode 1: the code of the chosen list; mode 2: the name of the chosen entry.
    QString answer() const override;
    void accept() override;

    // Entry maintenance of mode 2, on the entry at `row` of the whole list. Each is saved at once.
    bool addEntry(const QString& name);
    bool renameEntry(int row, const QString& name);
    bool deleteEntry(int row);
    bool moveEntry(int row, int step);

private:
    struct Item {
        QString code;
        QString name;
    };

    void load(const QString& current);
    void applyFilter();
    int currentRow() const;
    void selectRow(int row);
    bool refuseQuote(const QString& text);
    QString listSql() const;
    QString nextCode() const;
    void saveFailed(const QString& current);

    void onAdd();
    void onRename();
    void onDelete();
    void onMove(int step);

    QString m_type;
    QVector<Item> m_items;
    QLineEdit* m_filter;
    QTreeWidget* m_list;
};

} // namespace zq
