#include "services/ui/Grid.h"

#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

using namespace zq;

namespace {

QStringList column(const ZqGrid& grid, int col) {
    QStringList l;
    for (int r = 1; r <= grid.maxRows(); ++r)
        l << grid.text(r, col);
    return l;
}

// A grid of `rows` rows whose first column reads "a", "b", ...
void fill(ZqGrid& grid, int rows, int cols = 2) {
    grid.setMaxCols(cols);
    grid.setMaxRows(rows);
    for (int r = 1; r <= rows; ++r)
        grid.setText(r, 1, QString(QChar(u'a' + r - 1)));
}

// One row: a decimal column of two places, a whole-number column, a text column.
void numberColumns(ZqGrid& grid) {
    grid.setMaxCols(3);
    grid.setMaxRows(1);
    grid.setColType(1, ZqGrid::CellDecimal, 2);
    grid.setColType(2, ZqGrid::CellInteger);
}

QModelIndex at(const ZqGrid& grid, int row, int col) {
    return grid.view()->model()->index(row - 1, col - 1);
}

// Opens the editor of a cell as a key press would.
template <typename Editor> Editor* edit(ZqGrid& grid, int row, int col) {
    grid.setActiveCell(row, col);
    grid.view()->edit(at(grid, row, col));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // editors closed before
    return grid.view()->viewport()->findChild<Editor*>();
}

void key(ZqGrid& grid, Qt::Key k) {
    QTest::keyClick(grid.view(), k);
}

} // namespace

class TestGrid : public QObject {
    Q_OBJECT
private slots:
    void cellsAndPointer() {
        ZqGrid grid;
        grid.setMaxCols(3);
        grid.setMaxRows(2);
        grid.setRow(2);
        grid.setCol(3);
        QVERIFY(grid.setText(QStringLiteral("王五")));
        QCOMPARE(grid.text(2, 3), QStringLiteral("王五"));
        QCOMPARE(grid.value(), QStringLiteral("王五"));
        QCOMPARE(grid.rowTexts(2), QStringList({"", "", "王五"}));
        // Row 0 is the header, column 0 the row header.
        grid.setText(0, 2, QStringLiteral("姓名"));
        QCOMPARE(grid.headerText(2), QStringLiteral("姓名"));
        QCOMPARE(grid.view()->model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("姓名"));
        QCOMPARE(grid.view()->model()->headerData(0, Qt::Vertical).toString(), QStringLiteral("1"));
        grid.setText(1, 0, QStringLiteral("17"));
        QCOMPARE(grid.text(1, 0), QStringLiteral("17"));
        QCOMPARE(grid.view()->model()->headerData(0, Qt::Vertical).toString(), QStringLiteral("17"));
        QCOMPARE(grid.text(2, 0), QString());
        // Outside the grid nothing is read or written.
        QVERIFY(!grid.setText(3, 1, QStringLiteral("x")));
        QVERIFY(!grid.setText(1, 4, QStringLiteral("x")));
        QCOMPARE(grid.text(3, 1), QString());
        QCOMPARE(grid.text(-1, 1), QString());
        // Shrinking drops the contents; growing again gives blank cells.
        grid.setMaxRows(1);
        grid.setMaxCols(2);
        grid.setMaxRows(2);
        grid.setMaxCols(3);
        QCOMPARE(grid.text(2, 3), QString());
        QCOMPARE(grid.headerText(3), QString());
        QCOMPARE(grid.headerText(2), QStringLiteral("姓名"));
    }

    void rowActionsKeepMaxRows() {
        ZqGrid grid;
        fill(grid, 3);
        // Insert at 2: a blank row comes in, the last row is pushed out.
        grid.setRow(2);
        grid.action(ZqGrid::ActionInsertRow);
        QCOMPARE(column(grid, 1), QStringList({"a", "", "b"}));
        // As a caller inserts: grow first, then open the row.
        grid.setMaxRows(4);
        grid.setRow(1);
        grid.insertRow();
        QCOMPARE(column(grid, 1), QStringList({"", "a", "", "b"}));
        // Delete: the rows move up and a blank row comes in at the end; the caller shrinks.
        grid.setRow(2);
        grid.action(ZqGrid::ActionDeleteRow);
        QCOMPARE(column(grid, 1), QStringList({"", "", "b", ""}));
        grid.setMaxRows(3);
        grid.removeRow(1);
        QCOMPARE(column(grid, 1), QStringList({"", "b"}));
        // Out of range: nothing.
        grid.setRow(5);
        grid.deleteRow();
        grid.insertRow();
        QCOMPARE(grid.maxRows(), 2);
        // Action 0 moves the cursor to the pointer.
        grid.setRow(2);
        grid.setCol(2);
        grid.action(ZqGrid::ActionGoToCell);
        QCOMPARE(grid.activeRow(), 2);
        QCOMPARE(grid.activeCol(), 2);
        grid.setActiveCell(-1, -1);
        QCOMPARE(grid.activeRow(), 0);
        grid.appendRow();
        QCOMPARE(grid.maxRows(), 3);
        QCOMPARE(grid.activeRow(), 3);
        QCOMPARE(grid.activeCol(), 1);
    }

    void numberCells() {
        ZqGrid grid;
        numberColumns(grid);
        QVERIFY(grid.setText(1, 1, QStringLiteral("12.5")));
        QCOMPARE(grid.text(1, 1), QStringLiteral("12.50"));
        QCOMPARE(grid.value(1, 1), QStringLiteral("12.5"));
        QVERIFY(grid.setValue(1, 1, QStringLiteral("3.14159")));
        QCOMPARE(grid.text(1, 1), QStringLiteral("3.14"));
        QVERIFY(grid.setText(1, 1, QStringLiteral("-0.001")));
        QCOMPARE(grid.text(1, 1), QStringLiteral("0.00"));
        QCOMPARE(grid.value(1, 1), QStringLiteral("0"));
        QVERIFY(!grid.setText(1, 1, QStringLiteral("12a")));
        QCOMPARE(grid.text(1, 1), QStringLiteral("0.00"));
        QVERIFY(grid.setText(1, 1, QString()));
        QCOMPARE(grid.value(1, 1), QString());
        QVERIFY(grid.setText(1, 2, QStringLiteral(" 12.7 ")));
        QCOMPARE(grid.text(1, 2), QStringLiteral("13"));
        QVERIFY(!grid.setText(1, 2, QStringLiteral("abc")));
        QCOMPARE(grid.view()->model()->data(at(grid, 1, 2), Qt::TextAlignmentRole).value<Qt::Alignment>() &
                     Qt::AlignRight,
                 Qt::AlignRight);
        // A text column turned into numbers takes their form; what is no number goes.
        grid.setMaxRows(2);
        grid.setText(1, 3, QStringLiteral("2.345"));
        grid.setText(2, 3, QStringLiteral("名"));
        grid.setColType(3, ZqGrid::CellDecimal, 1);
        QCOMPARE(column(grid, 3), QStringList({"2.3", ""}));
        // Bulk loads follow the same rule.
        grid.loadRows({{"1", "2", "x"}, {"y", "2.5", "4"}});
        QCOMPARE(grid.rowTexts(1), QStringList({"1.00", "2", ""}));
        QCOMPARE(grid.rowTexts(2), QStringList({"", "3", "4.0"}));
    }

    void editorsRefuseWhatIsNoNumber() {
        ZqGrid grid;
        numberColumns(grid);
        grid.setColMaxLength(3, 4);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        QSignalSpy changed(&grid, &ZqGrid::changed);

        auto* decimal = edit<QLineEdit>(grid, 1, 1);
        QVERIFY(decimal);
        QTest::keyClicks(decimal, QStringLiteral("a1b2.345x"));
        QCOMPARE(decimal->text(), QStringLiteral("12.34"));
        QTest::keyClick(decimal, Qt::Key_Return);
        QCOMPARE(grid.text(1, 1), QStringLiteral("12.34"));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.at(0), QVariantList({1, 1})); // col, row
        QCOMPARE(grid.activeCol(), 2);                 // Enter moves on

        auto* whole = edit<QLineEdit>(grid, 1, 2);
        QVERIFY(whole);
        QTest::keyClicks(whole, QStringLiteral("-7.5"));
        QCOMPARE(whole->text(), QStringLiteral("-75"));
        QTest::keyClick(whole, Qt::Key_Escape);
        QCOMPARE(grid.text(1, 2), QString());
        QCOMPARE(changed.size(), 1);

        auto* text = edit<QLineEdit>(grid, 1, 3);
        QVERIFY(text);
        QTest::keyClicks(text, QStringLiteral("abcdef"));
        QCOMPARE(text->text(), QStringLiteral("abcd"));
    }

    void multiLineCells() {
        ZqGrid grid;
        grid.setMaxCols(2);
        grid.setMaxRows(1);
        grid.setColMultiLine(1, true);
        grid.setColMaxLength(1, 6);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        auto* editor = edit<QPlainTextEdit>(grid, 1, 1);
        QVERIFY(editor);
        QTest::keyClicks(editor, QStringLiteral("ab"));
        QTest::keyClick(editor, Qt::Key_Return, Qt::ControlModifier);
        QTest::keyClicks(editor, QStringLiteral("cdefg"));
        QCOMPARE(editor->toPlainText(), QStringLiteral("ab\ncde"));
        QTest::keyClick(editor, Qt::Key_Return);
        QCOMPARE(grid.text(1, 1), QStringLiteral("ab\ncde"));
        QCOMPARE(grid.activeCol(), 2);
    }

    // A long remark is edited in a box of some lines, over the one-line row, inside the grid.
    void longTextIsEditedInABoxOfUsefulSize() {
        ZqGrid grid;
        grid.setMaxCols(3);
        grid.setMaxRows(8);
        grid.setColMultiLine(3, true);
        grid.resize(700, 300);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        auto* editor = edit<QPlainTextEdit>(grid, 8, 3);
        QVERIFY(editor);
        const QRect cell = grid.view()->visualRect(at(grid, 8, 3));
        QVERIFY2(editor->height() >= 5 * editor->fontMetrics().lineSpacing(),
                 qPrintable(QString::number(editor->height())));
        QVERIFY(editor->height() > 2 * cell.height());
        QVERIFY(editor->width() >= cell.width());
        // The last row's box opens upwards, and the last column's to the left: all of it on show.
        QVERIFY(grid.view()->viewport()->rect().contains(editor->geometry()));
        key(grid, Qt::Key_Escape);
    }

    // Columns narrower than the grid share its spare width, cut texts first; colWidth() stays the
    // width they were given. With no room they keep their own widths.
    void columnsUseTheGridsWidth() {
        ZqGrid grid;
        grid.setMaxCols(3);
        grid.setColWidth(-1, 6);
        const QString remark = QStringLiteral("这是一段很长的备注文字，需要比较宽的栏目才能完整显示出来。");
        grid.loadRows({{"1", "张三", remark}, {"2", "李四", "短"}});
        grid.resize(900, 200);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        QTest::qWait(20);
        QTableView* view = grid.view();
        const int room = view->viewport()->width();
        int total = 0;
        for (int c = 0; c < 3; ++c)
            total += view->columnWidth(c);
        QVERIFY2(qAbs(total - room) <= 3, qPrintable(QString("%1 of %2").arg(total).arg(room)));
        QVERIFY(view->columnWidth(2) >= view->fontMetrics().horizontalAdvance(remark));
        QCOMPARE(grid.colWidth(3), 6.0);
        // Narrow again: the columns go back to their own widths and the grid scrolls.
        grid.resize(150, 200);
        QTest::qWait(20);
        QCOMPARE(view->columnWidth(0), grid.colWidthPixels(6));
    }

    // Row headers count 1..n while column 0 keeps each row's key.
    void numberedRowsKeepTheirKeys() {
        ZqGrid grid;
        fill(grid, 3);
        for (int r = 1; r <= 3; ++r)
            grid.setText(r, 0, QString::number(100 - r));
        QAbstractItemModel* m = grid.view()->model();
        QCOMPARE(m->headerData(0, Qt::Vertical).toString(), QStringLiteral("99"));
        QCOMPARE(grid.rowHeaderText(1), QStringLiteral("99"));
        grid.setNumberedRows(true);
        QCOMPARE(grid.rowHeaderText(1), QStringLiteral("1")); // as printed and exported too
        QStringList shown;
        for (int r = 0; r < 3; ++r)
            shown << m->headerData(r, Qt::Vertical).toString();
        QCOMPARE(shown, QStringList({"1", "2", "3"}));
        QCOMPARE(grid.text(2, 0), QStringLiteral("98"));
        grid.sortRows({1});
        grid.removeRow(1);
        QCOMPARE(m->headerData(0, Qt::Vertical).toString(), QStringLiteral("1"));
        QCOMPARE(grid.text(1, 0), QStringLiteral("98"));
    }

    void locking() {
        ZqGrid grid;
        fill(grid, 3, 3);
        auto editable = [&](int r, int c) {
            return grid.view()->model()->flags(at(grid, r, c)) & Qt::ItemIsEditable;
        };
        QVERIFY(editable(1, 1));
        grid.lockBlock(-1, -1, -1, -1);
        QVERIFY(!editable(3, 3));
        // A later, narrower unlock wins where it applies.
        grid.lockBlock(-1, 2, -1, 2, false);
        QVERIFY(editable(1, 2));
        QVERIFY(!editable(1, 1));
        grid.setLocked(2, 2, true);
        QVERIFY(!editable(2, 2));
        grid.lockBlock(2, -1, 3, -1, false); // rows 2 and 3, all columns
        QVERIFY(editable(2, 2));
        QVERIFY(editable(3, 1));
        QVERIFY(!editable(1, 1));
        // Rows added later fall under the grid-wide and column locks.
        grid.setMaxRows(4);
        QVERIFY(grid.isLocked(4, 1));
        QVERIFY(grid.isLocked(4, 3));
        QVERIFY(editable(4, 2));
        // Read-only beats every unlock; locks survive it.
        grid.setReadOnly(true);
        QVERIFY(!editable(3, 1));
        grid.setReadOnly(false);
        QVERIFY(editable(3, 1));
        // A locked cell opens no editor and refuses typing, but the program still writes it.
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        grid.setActiveCell(1, 1);
        QTest::keyClicks(grid.view(), QStringLiteral("z"));
        QVERIFY(!grid.view()->viewport()->findChild<QLineEdit*>());
        QCOMPARE(grid.text(1, 1), QStringLiteral("a"));
        QVERIFY(grid.setText(1, 1, QStringLiteral("z")));
    }

    void enterAndDownAppendRows() {
        ZqGrid grid;
        fill(grid, 2, 3);
        grid.setColHidden(3, true);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        QSignalSpy enter(&grid, &ZqGrid::enterPressed);
        grid.setActiveCell(1, 2);
        key(grid, Qt::Key_Return);
        QCOMPARE(grid.activeRow(), 2);
        QCOMPARE(grid.activeCol(), 1);
        key(grid, Qt::Key_Return);
        key(grid, Qt::Key_Return); // last visible cell, no appending: stays
        QCOMPARE(grid.maxRows(), 2);
        QCOMPARE(grid.activeCol(), 2);
        QCOMPARE(enter.size(), 3);
        QCOMPARE(enter.at(2), QVariantList({2, 2}));
        grid.setAppendOnEnter(true);
        key(grid, Qt::Key_Return);
        QCOMPARE(grid.maxRows(), 3);
        QCOMPARE(grid.activeRow(), 3);
        QCOMPARE(grid.activeCol(), 1);
        // Down on the last row: plain move without the mode, a new row with it.
        key(grid, Qt::Key_Down);
        QCOMPARE(grid.maxRows(), 3);
        grid.setAppendOnDown(true);
        grid.setActiveCell(3, 2);
        key(grid, Qt::Key_Down);
        QCOMPARE(grid.maxRows(), 4);
        QCOMPARE(grid.activeRow(), 4);
        QCOMPARE(grid.activeCol(), 2);
    }

    void clicksReachTheScreens() {
        ZqGrid grid;
        fill(grid, 3);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        QSignalSpy dbl(&grid, &ZqGrid::dblClick);
        QSignalSpy leave(&grid, &ZqGrid::leaveCell);
        grid.lockBlock(-1, -1, -1, -1);
        // A double click on a widget comes without its press: the view wants the press first.
        const QPoint cell = grid.view()->visualRect(at(grid, 3, 2)).center();
        QTest::mouseClick(grid.view()->viewport(), Qt::LeftButton, {}, cell);
        QTest::mouseDClick(grid.view()->viewport(), Qt::LeftButton, {}, cell);
        QHeaderView* header = grid.view()->horizontalHeader();
        QTest::mouseDClick(
            header->viewport(), Qt::LeftButton, {},
            QPoint(header->sectionViewportPosition(1) + header->sectionSize(1) / 2, header->height() / 2));
        QCOMPARE(dbl.size(), 2);
        QCOMPARE(dbl.at(0), QVariantList({2, 3}));
        QCOMPARE(dbl.at(1), QVariantList({2, 0}));
        QVERIFY(!leave.isEmpty());
        QCOMPARE(leave.last().mid(2), QVariantList({2, 3}));
        grid.setActiveCell(1, 1);
        QCOMPARE(leave.last(), QVariantList({2, 3, 1, 1}));
    }

    void sizesInGridUnits() {
        ZqGrid grid;
        QCOMPARE(grid.font().family(), QStringLiteral("WenQuanYi Zen Hei"));
        grid.setColWidth(-1, 10.5);
        grid.setMaxCols(3);
        grid.setMaxRows(2);
        QCOMPARE(grid.colWidth(3), 10.5);
        QCOMPARE(grid.view()->columnWidth(2), grid.colWidthPixels(10.5));
        QVERIFY(grid.colWidthPixels(20) > grid.colWidthPixels(10));
        grid.setColWidth(1, 5);
        QCOMPARE(grid.view()->columnWidth(0), grid.colWidthPixels(5));
        // Width 0 hides; a width again shows.
        grid.setColWidth(2, 0);
        QVERIFY(grid.isColHidden(2));
        QVERIFY(grid.view()->isColumnHidden(1));
        grid.setColWidth(2, 4);
        QVERIFY(!grid.view()->isColumnHidden(1));
        grid.setColWidth(0, 3);
        QCOMPARE(grid.view()->verticalHeader()->width(), grid.colWidthPixels(3));
        // Heights: header row, every row, one row.
        grid.setRowHeight(0, 25);
        grid.setRowHeight(-1, 13);
        grid.setRowHeight(2, 60);
        QCOMPARE(grid.view()->horizontalHeader()->height(), grid.rowHeightPixels(25));
        QCOMPARE(grid.view()->rowHeight(0), grid.rowHeightPixels(13));
        QCOMPARE(grid.view()->rowHeight(1), grid.rowHeightPixels(60));
        QCOMPARE(grid.rowHeight(1), 13.0);
        QCOMPARE(grid.rowHeight(2), 60.0);
        QVERIFY(grid.rowHeightPixels(60) > grid.rowHeightPixels(25));
        // A bulk load rebuilds the view: the sizes stay.
        grid.loadRows({{"a"}, {"b"}});
        QCOMPARE(grid.view()->columnWidth(0), grid.colWidthPixels(5));
        QCOMPARE(grid.view()->rowHeight(1), grid.rowHeightPixels(13));
        QVERIFY(!grid.view()->isColumnHidden(1));
    }

    void userResizeIsReported() {
        ZqGrid grid;
        grid.setMaxCols(2);
        QSignalSpy widths(&grid, &ZqGrid::colWidthChanged);
        grid.setColWidth(1, 12);
        QVERIFY(widths.isEmpty());
        grid.view()->horizontalHeader()->resizeSection(1, grid.colWidthPixels(20));
        QCOMPARE(widths.size(), 1);
        QCOMPARE(widths.at(0).at(0).toInt(), 2);
        QVERIFY(qAbs(grid.colWidth(2) - 20) < 0.1);
    }

    void sortAndFind() {
        ZqGrid grid;
        grid.setMaxCols(2);
        grid.setColType(2, ZqGrid::CellInteger);
        grid.loadRows({{"b", "10"}, {"a", "9"}, {"b", "2"}, {"a", ""}});
        grid.sortRows({1, 2});
        QCOMPARE(column(grid, 1), QStringList({"a", "a", "b", "b"}));
        QCOMPARE(column(grid, 2), QStringList({"", "9", "2", "10"}));
        QCOMPARE(grid.findRow(1, QStringLiteral("b")), 3);
        QCOMPARE(grid.findRow(1, QStringLiteral("b"), 4), 4);
        QCOMPARE(grid.findRow(1, QStringLiteral("c")), 0);
        grid.clear();
        QCOMPARE(grid.maxRows(), 4);
        QCOMPARE(column(grid, 1), QStringList({"", "", "", ""}));
    }

    void hundredThousandRows() {
        ZqGrid grid;
        grid.setMaxCols(5);
        grid.setColType(3, ZqGrid::CellDecimal, 2);
        grid.resize(600, 400);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        const int n = 100000;
        QVector<QStringList> rows;
        rows.reserve(n);
        for (int i = 1; i <= n; ++i)
            rows.push_back(
                {QString::number(i), QStringLiteral("姓名%1").arg(i), QString::number(i * 1.5), {}, "x"});
        grid.loadRows(std::move(rows));
        QCOMPARE(grid.maxRows(), n);
        QCOMPARE(grid.view()->model()->rowCount(), n);
        QCOMPARE(grid.text(n, 2), QStringLiteral("姓名100000"));
        QCOMPARE(grid.text(n, 3), QStringLiteral("150000.00"));
        grid.setActiveCell(n, 1);
        QVERIFY(grid.view()->visualRect(at(grid, n, 1)).intersects(grid.view()->viewport()->rect()));

        // Cell by cell with redraw off, as the binding routines fill a grid.
        grid.setRedraw(false);
        grid.setMaxRows(0);
        grid.setMaxRows(n);
        for (int r = 1; r <= n; ++r) {
            grid.setRow(r);
            grid.setCol(1);
            grid.setValue(QString::number(n - r));
        }
        grid.setRedraw(true);
        QCOMPARE(grid.text(1, 1), QString::number(n - 1));
        QCOMPARE(grid.text(n, 3), QString());
        grid.setRow(n / 2);
        grid.deleteRow();
        QCOMPARE(grid.maxRows(), n);
        QCOMPARE(grid.text(n / 2, 1), QString::number(n / 2 - 1));
    }
};

QTEST_MAIN(TestGrid)
#include "test_grid.moc"
