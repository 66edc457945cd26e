#pragma once

#include <QString>
#include <memory>
#include <QStringList>
#include <QVector>
#include <QWidget>

class QTableView;

namespace zq {

struct PagedQuery;
class PagedRows;

class GridModel;
class GridView;
class GridDelegate;

// The spreadsheet grid of the screens. Rows and columns count from 1; row 0 is the header row
// (column captions) and column 0 the row-header column (row numbers, or a text set there).
// Everything takes the row first: text(row, col). Only the signals keep the order the screens'
// handlers take, column first: dblClick(col, row).
//
// The spreadsheet's names map onto these methods:
//   MaxRows, MaxCols   maxRows/setMaxRows, maxCols/setMaxCols
//   Row, Col           row/setRow, col/setCol: the cell pointer that text()/value() read and write
//   Text, Value        text/setText, value/setValue at the pointer, or at (row, col)
//   ActiveRow/Col      activeRow, activeCol, setActiveCell: the user's cursor, 0 when none
//   Action 0, 5, 7     action(code), or goToCell, deleteRow, insertRow
//   ColWidth, RowHeight colWidth/setColWidth (characters), rowHeight/setRowHeight (grid units)
//   block Lock         lockBlock, setLocked, isLocked
//   ReDraw             setRedraw
//
// Rows are held as one vector of texts each (GridModel), so a grid of 100,000 rows loads and
// scrolls quickly: loadRows() is one model reset, and with setRedraw(false) the per-cell writes send
// no change notices at all. A list longer than that is not held but read as it is shown
// (loadPaged, GridModelPaged). The view and the editors by cell type are in GridView.
class ZqGrid : public QWidget {
    Q_OBJECT
public:
    enum CellType { CellText = 0, CellDecimal = 2, CellInteger = 3 };
    enum Action { ActionGoToCell = 0, ActionDeleteRow = 5, ActionInsertRow = 7 };

    explicit ZqGrid(QWidget* parent = nullptr);
    ~ZqGrid() override;

    // Size. Shrinking drops the rows or columns beyond the new size with their contents.
    int maxRows() const;
    void setMaxRows(int rows);
    int maxCols() const;
    void setMaxCols(int cols);

    // The cell pointer and the cell it points at.
    int row() const { return m_row; }
    void setRow(int row) { m_row = row; }
    int col() const { return m_col; }
    void setCol(int col) { m_col = col; }
    QString text() const { return text(m_row, m_col); }
    bool setText(const QString& text) { return setText(m_row, m_col, text); }
    QString value() const { return value(m_row, m_col); }
    bool setValue(const QString& value) { return setValue(m_row, m_col, value); }

    // A cell as shown: a decimal cell with its places ("12.50"). Row 0 gives the caption of a
    // column, column 0 the text put into the row header (empty when it shows the row number).
    // Outside the grid: the empty text.
    QString text(int row, int col) const;
    // A cell's value: a number without trailing zeros ("12.5"), else as text().
    QString value(int row, int col) const;
    // Writes a cell. A number cell takes only a number or the empty text; anything else is refused
    // (false) and the cell keeps its value. Numbers are rounded to the cell's places.
    bool setText(int row, int col, const QString& text);
    bool setValue(int row, int col, const QString& value) { return setText(row, col, value); }
    // Columns 1 to maxCols() of a row as shown.
    QStringList rowTexts(int row) const;

    // The user's cursor; 0 when there is none. setActiveCell(-1, -1) clears it.
    int activeRow() const;
    int activeCol() const;
    void setActiveCell(int row, int col);

    // The spreadsheet's row actions, at the cell pointer. MaxRows stays as it is: inserting pushes
    // the last row out and deleting brings a blank row in at the end, so callers change maxRows
    // themselves (insert: grow first; delete: shrink after).
    void action(int code);
    void goToCell();
    void insertRow();
    void deleteRow();
    // Deletes a row and lowers MaxRows by one.
    void removeRow(int row);
    // Adds a row at the end and makes its first visible cell active.
    void appendRow();

    // Blanks every data cell, row headers included; rows, columns and captions stay.
    void clear();
    // Replaces all rows at once: MaxRows becomes rows.size(); each list holds columns 1, 2, ...
    // (texts beyond maxCols() are dropped; number columns refuse what is not a number by leaving
    // it empty). The active cell is cleared.
    void loadRows(QVector<QStringList> rows);
    // Replaces all rows by a list read on demand: the count now, the rows as they are shown or read,
    // in key ranges (see PagedRows), so that a list of a million persons opens at once and holds
    // little. Such rows are never edited; cells, finding, sorting, removing a row and reading every
    // row (printing) work as with loaded rows. loadRows() or setMaxRows() goes back to held rows.
    void loadPaged(PagedQuery query);
    // The same with a list counted already (to ask about its size first, say).
    void loadPaged(std::unique_ptr<PagedRows> rows);
    bool isPaged() const;
    // Sorts the rows ascending by the given columns, in turn (numbers by value). Stable.
    void sortRows(const QVector<int>& keyCols);
    // First row at or after `from` whose cell in `col` reads `text` exactly; 0 when none.
    int findRow(int col, const QString& text, int from = 1) const;

    // Column width in average characters of the grid font; 0 hides the column. col -1 sets every
    // column, and the width of columns added later. col 0 is the row-header column.
    double colWidth(int col) const;
    void setColWidth(int col, double width);
    bool isColHidden(int col) const;
    void setColHidden(int col, bool hidden);
    // Row height in grid units (points): row 0 is the header row; -1 sets every data row.
    double rowHeight(int row) const;
    void setRowHeight(int row, double height);
    QString headerText(int col) const { return text(0, col); }
    void setHeaderText(int col, const QString& caption) { setText(0, col, caption); }

    // Cell types by column (col -1: every column). Text cells are left-aligned; a multi-line text cell
    // wraps and its editor takes Ctrl+Enter for a new line. Number cells are right-aligned and
    // accept only digits, a sign and (decimal cells) a point with up to `decimals` places.
    CellType colType(int col) const;
    int colDecimals(int col) const;
    void setColType(int col, CellType type, int decimals = 0);
    bool isColMultiLine(int col) const;
    void setColMultiLine(int col, bool multiLine);
    // Longest text the editor of a column takes, in characters; 0 for no limit.
    int colMaxLength(int col) const;
    void setColMaxLength(int col, int length);

    // Block locking: a locked cell cannot be edited. -1 for row1 means all rows (and rows added
    // later), -1 for col1 all columns; -1 for row2 or col2 means up to the last. The latest
    // setting that covers a cell decides, so unlocking a column after locking the grid frees it.
    void lockBlock(int row1, int col1, int row2, int col2, bool locked = true);
    void setLocked(int row, int col, bool locked) { lockBlock(row, col, row, col, locked); }
    bool isLocked(int row, int col) const;
    // A read-only grid edits nothing, whatever its locks say.
    bool isReadOnly() const;
    void setReadOnly(bool readOnly);

    // Row headers numbered 1..n in the order shown, while the texts put into column 0 stay there as
    // the rows' keys (text(row, 0)) without being shown.
    bool numberedRows() const;
    void setNumberedRows(bool on);
    // A row's header as shown (and printed or exported): its number when rows are numbered or it
    // holds no text, else the text put there.
    QString rowHeaderText(int row) const;

    // Clicking selects whole rows.
    bool rowSelection() const;
    void setRowSelection(bool rows);
    // Enter on the last visible cell of the last row appends a row.
    bool appendOnEnter() const { return m_appendOnEnter; }
    void setAppendOnEnter(bool on) { m_appendOnEnter = on; }
    // Down on the last row appends a row.
    bool appendOnDown() const { return m_appendOnDown; }
    void setAppendOnDown(bool on) { m_appendOnDown = on; }

    // With redraw off the grid neither paints nor sends change notices, for filling cell by cell.
    bool redraw() const { return m_redraw; }
    void setRedraw(bool on);

    // Pixel sizes of the grid's units on its present font. A unit of width is the widest digit (a
    // Chinese character is two), so a width of 10 holds a date; a column shows at least its width,
    // and widens (up to 40 units) to hold its caption and the longest text loadRows gave it. Where
    // the columns leave room in the grid's width, the room goes first to columns whose longest text
    // is still cut, then to all in proportion, so that no text is cut beside empty space. colWidth()
    // keeps the width the columns were given.
    int colWidthPixels(double width) const;
    int rowHeightPixels(double height) const;

    QTableView* view() const;

signals:
    void clicked(int col, int row);
    // On a cell, or on a caption (row 0) or a row header (col 0).
    void dblClick(int col, int row);
    // The active cell moves; 0 stands for "none".
    void leaveCell(int col, int row, int newCol, int newRow);
    // The user changed a cell (programmatic writes send none).
    void changed(int col, int row);
    // Enter in the grid, before the cursor moves on.
    void enterPressed(int col, int row);
    void keyDown(int key, Qt::KeyboardModifiers modifiers);
    // The user dragged a column to a new width (in characters).
    void colWidthChanged(int col, double width);

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend class GridView;
    friend class GridDelegate;

    void onEnterKey();
    void onDownKey();
    void applyColumn(int col);
    void applyGeometry();
    int firstVisibleCol() const;
    int nextVisibleCol(int col) const;
    double charWidth() const;
    int cellPadding() const;
    int fitPixels(int col, bool capped = true) const;
    // Widens the shown columns to the view's width where they leave room; back to their own
    // widths where they do not.
    void spreadColumns();
    void scheduleSpread();

    GridModel* m_model = nullptr;
    GridView* m_view = nullptr;
    int m_row = 1;
    int m_col = 1;
    bool m_appendOnEnter = false;
    bool m_appendOnDown = false;
    bool m_redraw = true;
    bool m_settingGeometry = false;
    bool m_spread = false; // some columns are wider than their own widths
    bool m_spreadPending = false;
    double m_rowHeight = 12;
    double m_headerHeight = 14;
};

} // namespace zq
