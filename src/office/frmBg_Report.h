#pragma once

#include "office/OfficeScreen.h"
#include "office/ReportData.h"

class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

namespace zq {

// "报告审批": a member of staff writes a report, up to four named checkers sign it off, each with
// a verdict and a short answer. The list holds the 30 newest reports the user may see; the
// supervisor and the author may change a report.
class frmBg_Report : public OfficeScreen {
    Q_OBJECT

public:
    explicit frmBg_Report(QWidget* parent = nullptr);

    void cmdChk_Click();
    void cmdPrint_Click();
    void cmdStaff_Click(int index);
    void cboPass_Click();
    void cmdChkOk_Click();
    void cmdChkCancel_Click();

    // The slot of the user on the shown report (0 none).
    int checkerNo() const { return m_checkerNo; }

protected:
    QString listSql(const QString& filter) const override { return report::ListSql(filter); }
    Lock listLock() const override { return Lock::Optimistic; }
    void beforeList() override;
    void showFields(const Recordset& rs) override;
    void clearFields() override;
    void showRights(bool row) override;
    void setEditFields(bool editing) override;
    void setBrowseExtras(bool off) override;
    void startAdding() override;
    bool beforeSave(bool adding) override;
    void saveRow(int id, const RowSnapshot& loaded) override;
    void deleteRow(int id) override { report::DeleteReport(id); }
    bool reloadOnSeekCancel() const override { return true; }
    void resizeEvent(QResizeEvent* event) override;

private:
    // The shown row's verdict of the signing checker, as stored.
    int storedVerdict() const;
    report::Report pageReport() const;
    void buildPage();
    void buildCheckPanel();

    int m_checkerNo = 0;
    bool m_forward = false; // the save forwards the report to the notices

    QLineEdit* m_txtFootnote1;
    QLineEdit* m_txtChecker[4];
    QToolButton* m_cmdStaff[2];
    QPushButton* m_cmdChk;
    QPushButton* m_cmdPrint;
    QFrame* m_picAnswer;
    QPlainTextEdit* m_txtAnswer2;

    // Sign-off panel
    QFrame* m_fraCheck;
    QLabel* m_lblUserName;
    QComboBox* m_cboPass;
    QLabel* m_lblColor;
    QLineEdit* m_txtAnswer;
    QPushButton* m_cmdChkCancel;
};

} // namespace zq
