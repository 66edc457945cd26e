#pragma once

#include "GridModel.h"

#include <QStyledItemDelegate>
#include <QTableView>

namespace zq {

// The table view inside the grid: Enter and Down get the spreadsheet's meaning.
class GridView : public QTableView {
public:
    explicit GridView(ZqGrid* grid);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    ZqGrid* m_grid;
};

// Editors by cell type: number cells refuse what is not a number as it is typed; multi-line text
// cells edit in a text box where Enter still finishes the edit and Ctrl+Enter breaks the line. That
// box is not held to the height of its row: it opens over the cell at a size that shows some lines
// of a remark (kept inside the grid), and closes back into the one-line row.
class GridDelegate : public QStyledItemDelegate {
public:
    explicit GridDelegate(ZqGrid* grid);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
    // The room the long-text box takes over a cell of this rectangle, inside `area`.
    static QRect longTextRect(const QRect& cell, const QRect& area, const QFontMetrics& fm);

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    const GridModel::Column& column(const QModelIndex& index) const;

    ZqGrid* m_grid;
};

} // namespace zq
