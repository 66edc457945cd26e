#pragma once

#include "services/Spreadsheets.h"
#include "services/ui/ScreenDialog.h"

#include <QStringList>

class QCheckBox;
class QDateEdit;
class QHBoxLayout;
class QLabel;

namespace zq {

class ZqGrid;

// The two screens of the change history share one shape: a row of filters over a read-only grid,
// a line of figures under it, and 查询, 打印, 导出Excel and 退出>>. The filter row starts with the
// period (chkDate, dtpFrom, dtpTo); a screen adds its own filters behind it.
// Controls: chkDate, dtpFrom, dtpTo, cmdSeek, Grid1, lblCount, cmdPrint, cmdExport, cmdQuit.
class HistoryScreen : public ScreenDialog {
    Q_OBJECT

public:
    HistoryScreen(const QString& caption, const QVector<SheetColumn>& columns, QWidget* parent = nullptr);

    ZqGrid* grid() const { return m_grid; }
    // Runs the filter and shows the rows.
    void seek();

protected:
    // The screen's rows for the filters on show.
    virtual void fill() = 0;
    // The item pairs printed above the list.
    virtual QStringList printItems() const { return {}; }
    QHBoxLayout* filters() const { return m_filters; }
    QHBoxLayout* buttons() const { return m_buttons; }
    QDate fromDay() const;
    QDate toDay() const;
    void setCount(const QString& text);
    void load() override { seek(); }

private:
    void print();

    QString m_caption;
    QHBoxLayout* m_filters;
    QHBoxLayout* m_buttons;
    QCheckBox* m_chkDate;
    QDateEdit* m_from;
    QDateEdit* m_to;
    ZqGrid* m_grid;
    QLabel* m_count;
};

} // namespace zq
