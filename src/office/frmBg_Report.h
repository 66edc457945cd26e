#pragma once

#include <memory>
#include <QDialog>
#include <QString>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QFrame;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

namespace zq {

class Recordset;

// "报告审批": a member of staff writes a report, up to four named checkers sign it off, each with
// a verdict and a short answer. The list holds the 30 newest reports the user may see.
class frmBg_Report : public QDialog {
    Q_OBJECT

public:
    explicit frmBg_Report(QWidget* parent = nullptr);
    ~frmBg_Report() override;

    void load();
    // Reloads the list under a filter and shows its first row. A failing statement throws DbError.
    void ShowList(const QString& filter);
    void ShowRecord();
    void ClearRecord();
    void SetEditMode(bool editing);
    void SetBrowseButtons(bool off);

    void cmdNews_Click(int index);
    void cmdAdd_Click();
    void cmdChg_Click();
    void cmdDel_Click();
    void cmdChk_Click();
    void cmdSeek_Click();
    void cmdPrint_Click();
    void cmdQuit_Click();
    void cmdOK_Click();
    void cmdCancel_Click();
    void cmdStaff_Click(int index);
    void cboPass_Click();
    void cmdChkOk_Click();
    void cmdChkCancel_Click();
    void cmdSeekOk_Click();
    void cmdSeekCancel_Click();
    void cmdPath_Click();
    void txtPath_LostFocus();
    void cmdDocOpen_Click();
    void cmdDocCopy_Click();

    // The seek condition in force, and the slot of the user on the shown report (0 none).
    QString filter() const { return m_filter; }
    int checkerNo() const { return m_checkerNo; }

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Esc presses the cancel button of the present state.
    void reject() override;

private:
    // The shown row's verdict of the signing checker, as stored.
    int storedVerdict() const;
    void buildPage();
    void buildCheckPanel();
    void buildSeekPanel();
    void setCancelButton(QPushButton* button);
    void refreshWeek(const QDate& date);
    // Reloads the list, telling the user instead of failing when the database refuses it.
    bool reloadList(const QString& filter);
    bool onRow() const;
    void showPanel(QFrame* panel);
    void hidePanel(QFrame* panel);

    bool m_loaded = false;
    std::unique_ptr<Recordset> m_rs;
    QString m_filter;
    int m_checkerNo = 0;
    QPushButton* m_cancelButton = nullptr;

    // Main page
    QLabel* m_lblDate;
    QDateEdit* m_dtpDate;
    QLabel* m_lblWeek;
    QLineEdit* m_txtTitle;
    QPlainTextEdit* m_txtContent;
    QLineEdit* m_txtFootnote1;
    QLineEdit* m_txtChecker[4];
    QToolButton* m_cmdStaff[2];
    QComboBox* m_cboDept;
    QLineEdit* m_txtPath;
    QToolButton* m_cmdPath;
    QToolButton* m_cmdDocOpen;
    QToolButton* m_cmdDocCopy;
    QCheckBox* m_chkNews;
    QToolButton* m_cmdNews[2];
    QPushButton* m_cmdAdd;
    QPushButton* m_cmdChg;
    QPushButton* m_cmdDel;
    QPushButton* m_cmdChk;
    QPushButton* m_cmdSeek;
    QPushButton* m_cmdPrint;
    QPushButton* m_cmdQuit;
    QPushButton* m_cmdOK;
    QPushButton* m_cmdCancel;
    QFrame* m_picAnswer;
    QPlainTextEdit* m_txtAnswer2;

    // Sign-off panel
    QFrame* m_fraCheck;
    QLabel* m_lblUserName;
    QComboBox* m_cboPass;
    QLabel* m_lblColor;
    QLineEdit* m_txtAnswer;
    QPushButton* m_cmdChkCancel;

    // Seek panel
    QFrame* m_fraSeek;
    QCheckBox* m_chkDate2;
    QDateEdit* m_dtpDate1;
    QDateEdit* m_dtpDate2;
    QCheckBox* m_chkTitle2;
    QLineEdit* m_txtTitle2;
    QCheckBox* m_chkContent2;
    QLineEdit* m_txtContent2;
    QCheckBox* m_chkFootSeek1;
    QLineEdit* m_txtFootSeek1;
    QCheckBox* m_chkFootSeek2;
    QLineEdit* m_txtFootSeek2;
    QCheckBox* m_chkDept;
    QComboBox* m_cboDept2;
    QCheckBox* m_chkNews2;
    QPushButton* m_cmdSeekCancel;
};

} // namespace zq
