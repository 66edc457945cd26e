#pragma once

#include "office/OfficeData.h"
#include "services/ui/NamedWidgets.h"
#include "shell/Recordset.h"

#include <memory>
#include <QDialog>
#include <QString>
#include <QStyle>

class QBoxLayout;
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

// What the report, meeting and notice screens share: a page showing one row of the 30 newest the
// user may see, stepping with an empty page at each end, adding and changing on the page, deleting,
// a seek panel whose condition stays for later reloads, and the reference document. The screens
// give their statements, their own fields and who may change a row.
class OfficeScreen : public QDialog {
    Q_OBJECT

public:
    // What sets one screen apart. `documents`: title, reference document, forwarding and the seek
    // rows on them; the captions of the seek rows of the two names (empty: none).
    struct Kind {
        QString objectName;
        QString caption;
        QString rows;         // what the list holds, for messages: "报告"
        QString emptyContent; // the message of a blank text
        QString deleteQuestion;
        bool documents = true;
        QString seekFoot1, seekFoot2;
        QString stepHint0, stepHint1;
    };
    ~OfficeScreen() override;

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
    void cmdSeek_Click();
    void cmdQuit_Click();
    void cmdOK_Click();
    void cmdCancel_Click();
    void cmdSeekOk_Click();
    void cmdSeekCancel_Click();
    void cmdPath_Click();
    void txtPath_LostFocus();
    void cmdDocOpen_Click();
    void cmdDocCopy_Click();

    // The seek condition in force.
    QString filter() const { return m_filter; }

protected:
    OfficeScreen(const Kind& kind, QWidget* parent);

    // ---- What each screen gives
    virtual QString listSql(const QString& filter) const = 0;
    // Report writes its sign-off through the list, so that one is kept writable.
    virtual Lock listLock() const { return Lock::ReadOnly; }
    // Shows the screen's own fields of the current row, and clears them.
    virtual void showFields(const Recordset& rs) = 0;
    virtual void clearFields() = 0;
    // After the shared buttons have their state: the screen's rights on the shown row (on a row).
    virtual void showRights(bool row) { Q_UNUSED(row); }
    // Who may change and delete rows at all (the notice board: the supervisor only).
    virtual bool mayChange() const { return true; }
    virtual void setEditFields(bool editing) = 0;
    virtual void setBrowseExtras(bool off) { Q_UNUSED(off); }
    // Adding: the page is clear; a screen may fill defaults.
    virtual void startAdding() {}
    // Runs before the transaction opens, so that no question waits inside it; false stops the save.
    virtual bool beforeSave(bool adding) {
        Q_UNUSED(adding);
        return true;
    }
    // Writes the row (id 0: new) inside the open transaction, and what goes with it.
    virtual void saveRow(int id, const RowSnapshot& loaded) = 0;
    virtual void deleteRow(int id) = 0;
    // The seek rows beyond the shared ones.
    virtual void seekExtras(office::SeekTerms& t) const { Q_UNUSED(t); }
    // The report reloads its list when the seek panel is left; the others keep it.
    virtual bool reloadOnSeekCancel() const { return false; }
    // The notice board keeps its step buttons on the page while the seek panel is up.
    virtual bool stepButtonsFollowPanels() const { return true; }

    // Runs as load reaches the list, before it is read (the report's column check, the board's
    // note that the user opened it).
    virtual void beforeList() {}

    // ---- Helpers for the screens' pages
    // Ends a screen's constructor: browse mode, Esc on cmdQuit.
    void ready();
    bool onRow() const;
    const Recordset* list() const { return m_rs.get(); }
    Recordset* list() { return m_rs.get(); }
    void setCancelButton(QPushButton* button);
    void showPanel(QFrame* panel);
    void hidePanel(QFrame* panel);
    // Reloads the list, telling the user instead of failing when the database refuses it.
    bool reloadList(const QString& filter);
    // Enter sends a tab in these.
    void tabOnEnter(std::initializer_list<QWidget*> widgets);
    // The page's rows, laid out by each screen.
    QBoxLayout* dateRow();
    QBoxLayout* titleRow();
    QBoxLayout* deptAndFileRow();
    QBoxLayout* buttonRow(std::initializer_list<QPushButton*> extra);

    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Esc presses the cancel button of the present state.
    void reject() override;

    const Kind m_kind;
    std::unique_ptr<Recordset> m_rs;
    QString m_filter;
    QPushButton* m_cancelButton = nullptr;
    bool m_loaded = false;

    // Main page; the title, document and forwarding controls are null on the notice board.
    QLabel* m_lblDate;
    QDateEdit* m_dtpDate;
    QLabel* m_lblWeek;
    QLineEdit* m_txtTitle = nullptr;
    QPlainTextEdit* m_txtContent;
    QComboBox* m_cboDept;
    QLineEdit* m_txtPath = nullptr;
    QToolButton* m_cmdPath = nullptr;
    QToolButton* m_cmdDocOpen = nullptr;
    QToolButton* m_cmdDocCopy = nullptr;
    QCheckBox* m_chkNews = nullptr;
    QToolButton* m_cmdNews[2];
    QPushButton* m_cmdAdd;
    QPushButton* m_cmdChg;
    QPushButton* m_cmdDel;
    QPushButton* m_cmdSeek;
    QPushButton* m_cmdQuit;
    QPushButton* m_cmdOK;
    QPushButton* m_cmdCancel;

    // Seek panel; the rows of title, names and forwarding are null on the notice board.
    QFrame* m_fraSeek;
    QCheckBox* m_chkDate2;
    QDateEdit* m_dtpDate1;
    QDateEdit* m_dtpDate2;
    QCheckBox* m_chkTitle2 = nullptr;
    QLineEdit* m_txtTitle2 = nullptr;
    QCheckBox* m_chkContent2;
    QLineEdit* m_txtContent2;
    QCheckBox* m_chkFootSeek1 = nullptr;
    QLineEdit* m_txtFootSeek1 = nullptr;
    QCheckBox* m_chkFootSeek2 = nullptr;
    QLineEdit* m_txtFootSeek2 = nullptr;
    QCheckBox* m_chkDept;
    QComboBox* m_cboDept2;
    QCheckBox* m_chkNews2 = nullptr;
    QPushButton* m_cmdSeekCancel;

private:
    void buildCommon();
    void buildSeekPanel();
    void refreshWeek(const QDate& date);
};

namespace office {

QPushButton* button(QWidget* parent, const char* name, const QString& caption);
QLineEdit* textBox(QWidget* parent, const char* name, int maxBytes = 0);
QDateEdit* datePicker(QWidget* parent, const char* name);
QString weekdayName(const QDate& d);
// The date of a row's fDate.
QDate rowDate(const Recordset& rs);

} // namespace office
} // namespace zq
