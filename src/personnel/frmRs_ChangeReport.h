#pragma once

#include "HistoryScreen.h"

class QComboBox;

namespace zq {

// 人事变动报表: the company's changes of a period, within a department branch and of one kind
// (department moves, posts, pay, hires, leavers) or all, with a count per kind; the rows are read
// a page at a time. A user with a department sees his own branch only. The supervisor alone may
// delete the history before a day (删除历史).
// Controls: cboDept, cboKind, cmdDelHistory, and those of HistoryScreen.
class frmRs_ChangeReport : public HistoryScreen {
    Q_OBJECT

public:
    explicit frmRs_ChangeReport(QWidget* parent = nullptr);
    // Asks the day and deletes the history before it.
    void deleteHistory();

protected:
    void load() override;
    void fill() override;
    QStringList printItems() const override;

private:
    QString branch() const;

    QComboBox* m_dept;
    QComboBox* m_kind;
};

} // namespace zq
