#pragma once

#include "services/ui/ScreenDialog.h"

#include <QDialog>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QFrame;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QStatusBar;

namespace zq {

struct PagedQuery;

class Recordset;
class ZqGrid;
struct EntryCheck;

// The screens of a person's items kept in one table (loans, certificates): a search panel of check
// boxes over a grid, the entry panel that adds and changes a row, and the small panel that ties an
// entry label to a brief list. Each screen states its rows, boxes and statements.
class SeekEntryScreen : public ScreenDialog {
    Q_OBJECT

public:
    ZqGrid* grid() const { return m_grid; }
    void cmdSeek_Click();
    void cmdAdd_Click();
    void cmdChg_Click();
    void cmdDEL_Click();
    void cmdPrint_Click();
    void cmdCancel_Click();
    void cmdStaff_Click();
    void cmdStaff2_Click();
    void Label_DblClick(int index);
    void Label_RightClick(int index);
    void cmdItemSel_Click();
    void cmdItem_Click();
    void cmdItemCancel_Click();
    virtual void cmdOk_Click() = 0;

protected:
    SeekEntryScreen(QWidget* parent, const char* objectName, const QString& labelName, const char* okName,
                    const char* cancelName);

    // Building, from the constructor of a screen.
    QLineEdit* seekBox(const QString& name, int maxLength);
    QDateEdit* seekDate(const QString& name);
    QComboBox* seekOperators(const QString& name);
    // The search row `index`: its check box Check1(index) and its inputs, the first of them the box
    // the staff picker fills for rows 0 and 1.
    void addSeekRow(int index, const QList<QWidget*>& inputs);
    QLineEdit* addEntryBox(int index, int maxLength);
    QDateEdit* addEntryDate(int index, const QString& name);
    void finishLayout();

    // What differs.
    virtual QString modelKey() const = 0;
    virtual QString table() const = 0;
    // The entry fields in label order, for the brief types.
    virtual const QStringList& fields() const = 0;
    // The statement of the ticked rows; throws DbError when a value cannot enter it.
    virtual QString seekSql() { return {}; }
    // A search read as it is shown instead: true with the list taken apart in `query`. Throws as
    // seekSql().
    virtual bool seekPaged(PagedQuery& query) {
        (void)query;
        return false;
    }
    virtual int rowLimit() const = 0;
    // Writes the rows of an opened search into the grid.
    virtual void fillGrid(Recordset& rs) { (void)rs; }
    // Prepares the panel for a new row, or for the active grid row (false stops).
    virtual void startAdding() = 0;
    virtual bool startChanging() = 0;
    virtual void deleteActive() = 0;
    // Unticks rows with empty inputs; false stops the search.
    virtual bool prepareSeek() { return true; }
    // The name look-up of Enter in box 0 finds serving persons only.
    virtual bool servingOnlyLookup() const { return false; }
    // Labels whose right click needs no brief list.
    virtual void keyLabelRightClick() {}
    // Leaving an entry box: what refuses its text (the message), empty when nothing does.
    virtual QString entryLeft(int index) {
        (void)index;
        return {};
    }
    // Enter in an entry box before the focus moves on.
    virtual void entryEnter(int index) { (void)index; }
    virtual void entryFocused(int index) { (void)index; }
    virtual QString quoteMessage() const = 0;
    virtual int quoteStyle() const = 0;
    // Inputs of a row follow its tick.
    bool m_inputsFollowTicks = false;

    void setEntryMode(bool entry);
    void clearEntry();
    QString entryText(int index) const;
    void setEntryText(int index, const QString& text);
    bool tell(const QString& message, int style = 48);
    // Tells what stops a save and goes to its box; true when nothing does.
    bool passes(const EntryCheck& check);
    // A quote left in an entry box stops the save with the message of leaving it.
    bool entryFreeOfQuotes();
    bool confirm(const QString& message, const QString& title = {});
    QLineEdit* entryBox(int index) const { return m_text3.value(index); }
    QLabel* label(int index) const { return m_labels.value(index); }
    QStringList captions() const;
    void loadCaptions();
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override;

    QMap<int, QCheckBox*> m_check1;
    QMap<int, QList<QWidget*>> m_seekInputs;
    QMap<int, QLineEdit*> m_text3;
    QMap<int, QDateEdit*> m_entryDates;
    QMap<int, QLabel*> m_labels;
    QString m_labelName;
    ZqGrid* m_grid;
    QFrame* m_seekPanel;
    QGridLayout* m_seekGrid;
    QFrame* m_pict;
    QGridLayout* m_entryGrid;
    QFrame* m_pictTag;
    QLineEdit* m_txtLblTag;
    QPushButton* m_cmdSeek;
    QPushButton* m_cmdAdd;
    QPushButton* m_cmdChg;
    QPushButton* m_cmdDEL;
    QPushButton* m_cmdPrint;
    QPushButton* m_cmdQuit;
    QPushButton* m_cmdStaff;
    QPushButton* m_cmdStaff2;
    QPushButton* m_cmdOk;
    QPushButton* m_cmdCancel;
    QStatusBar* m_sbar;
    int m_mode = 0; // 1 add, 2 change
    int m_tagLabel = -1;

private:
    // The count in the status bar, and whether to list `n` matches: none is told, too many asked.
    bool listMatches(int n);
    void wireBox(QLineEdit* box);
    void orderTabs();
};

} // namespace zq
