#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;

namespace zq {

class ZqGrid;
struct MoveSearch;

// "调令管理": the transfer orders searched by any of twelve conditions, listed, deleted and printed;
// an order is added or changed in the transfer dialog.
class frmRs_PersonAssign : public QDialog {
    Q_OBJECT
public:
    explicit frmRs_PersonAssign(QWidget* parent = nullptr);

    ZqGrid* grid() const { return m_grid; }
    QCheckBox* check(const QString& name) const;
    QLineEdit* box(const QString& name) const;
    // Handlers, public so that tests drive them as the clerk would.
    void cmdSeek_Click();
    void cmdAdd_Click();
    void cmdChg_Click();
    void cmdDEL_Click();
    void cmdPrint_Click();
    void cmdStaff_Click();
    // Opens the master record of the active row's person, to change there what an order leaves.
    void cmdPerson_Click();
    // The line under the list: what the last save did and did not change.
    QString status() const;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void load();
    MoveSearch search() const;
    void guarded(void (frmRs_PersonAssign::*handler)());
    // After a save: the order in the list at once, active, and a word on the master record.
    void showSaved();

    bool m_loaded = false;
    ZqGrid* m_grid;
    QComboBox* m_cboOldUnit;
    QComboBox* m_cboNewUnit;
    QComboBox* m_cobOldDept;
    QComboBox* m_cobNewDept;
    QDateEdit* m_date[2];
    QLabel* m_lblStatus;
};

} // namespace zq
