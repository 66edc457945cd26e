#pragma once

#include <QDialog>

class QCheckBox;
class QListWidget;

namespace zq {

// "职员列表": picks a serving employee. The choice goes back in CurPersonCode and CurPersonName,
// both empty after a cancel.
class frmRs_list : public QDialog {
    Q_OBJECT

public:
    explicit frmRs_list(QWidget* parent = nullptr);

    void load();
    void fillList();
    void cmdSel_Click();
    void cmdSelCancel_Click();

protected:
    void showEvent(QShowEvent* event) override;
    void reject() override;

private:
    bool m_loaded = false;
    QListWidget* m_lstLook;
    QCheckBox* m_chkDeptLimit;
};

} // namespace zq
