#pragma once

#include <functional>
#include <QDialog>
#include <QString>
#include <QStringList>
#include <QVector>

class QBoxLayout;
class QCheckBox;
class QFrame;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace zq {

class ZqGrid;

// One column of a sub-record grid: the field, its header when the dictionary names none, its
// width in characters and the longest text its editor takes.
struct SubColumn {
    SubColumn(const QString& field, const QString& header, double width, int maxLength, bool hidden = false)
        : field(field)
        , header(header)
        , width(width)
        , maxLength(maxLength)
        , hidden(hidden) {}
    QString field;
    QString header;
    double width = 8;
    int maxLength = 0;
    bool hidden = false;
};

// A grid of the person's rows in one table, under a condition ("fType=0") or none.
struct SubGrid {
    SubGrid() = default;
    SubGrid(const QString& table, const QString& fieldList, const QString& condition,
            const QVector<SubColumn>& columns, bool appendOnDown, const QString& title)
        : table(table)
        , fieldList(fieldList)
        , condition(condition)
        , headerTable(table)
        , columns(columns)
        , appendOnDown(appendOnDown)
        , title(title)
        , logCaption(title) {}
    QString table;     // as the statements name it
    QString fieldList; // in column order, without fOrderID and fCode
    QString condition;
    QString headerTable; // the table of the header double click and the dictionary captions
    QVector<SubColumn> columns;
    bool appendOnDown = true; // Down on the last row appends a row (Enter on the last cell always does)
    QString title;            // the caption above it (Label1), also the print option
    QString logCaption;       // the caption of its log line when saved; none when empty
    int type = -1;            // 0 or 1: the value of the last column (fType) every row is saved with
    bool askCaptions = true;  // the dictionary's caption of each field replaces the design header
};

// The screens of a person's records (family, history, results, rewards, details): the person in
// hand (CurPersonCode) in view mode (PersonEditMode 0) or editing, a heading with code and name,
// one or two sub-record grids each with its insert and delete buttons, the save, the print panel
// and the back button. A screen states its grids and what it keeps beside them; loading, the
// grids' set-up, row keys, header captions, locking in view mode, the log line of a save and the
// print panel are done here once.
class PersonRecordScreen : public QDialog {
    Q_OBJECT
public:
    ZqGrid* grid(int i) const { return m_parts.value(i).grid; }
    // Handlers, public so that tests drive them as the clerk would.
    void cmdOK_Click();
    void cmdSetOk_Click();
    void showPrintPanel();

protected:
    // backName: the back button's control name ("cmdQuit", or "Command4"); printName likewise.
    PersonRecordScreen(const QString& caption, QWidget* parent,
                       const QString& backName = QStringLiteral("cmdQuit"),
                       const QString& printName = QStringLiteral("Command7"));

    // Adds a grid under its title; with two grids the buttons are numbered (cmdInsert1, ...).
    // labelName names the title label ("Label1(4)"). A partner grid gets the captions this grid's
    // header double click renames.
    ZqGrid* addGrid(const SubGrid& def, const QString& gridName, const QString& labelName);
    void pairHeaders(int a, int b);
    // The two grids of a history kept in one table by fType: 0 before the hire (Grid1, under
    // Label1(4)), 1 after it (Grid2, under Label1(0)). The last field is fType, hidden; a header
    // renamed in one grid is renamed in the other; the screen's caption heads the log line.
    void addTypedGrids(const QString& table, const QString& fieldList, const QVector<SubColumn>& before,
                       const QVector<SubColumn>& after, const QString& titleBefore,
                       const QString& titleAfter);
    // Where a screen puts what it shows beside its grids.
    QVBoxLayout* body() const { return m_body; }
    // The print panel offers each grid's title, and prints the chosen ones; a screen without the
    // panel prints its first grid at once under this title.
    void printDirectly(const QString& title) { m_directPrint = title; }
    // A further choice of the print panel, after the grids'; printPart gets its number.
    void addPrintOption(const QString& title) { m_extraPrint << title; }

    bool editing() const;
    // Loads the grids; a screen adds what it reads beside them.
    virtual void load();
    // The save of the screen; the default saves every grid and closes when the last one saved.
    virtual void save();
    // Saves grid i: the log line on success, the reason on failure. True when saved.
    bool saveGrid(int i);
    // The log line of a saved part of the record, under its caption.
    void logSaved(const QString& caption) const;
    // The items above a printout: code and name, and what a screen adds.
    virtual QStringList printItems(int part) const;
    virtual void printPart(int part);
    // Runs a handler, telling the user of a database error instead of leaving the screen.
    void guarded(const std::function<void()>& f);

    void showEvent(QShowEvent* event) override;
    // Esc closes the print panel first, then the screen.
    void reject() override;

    QString m_code; // the person in hand when the screen loaded
    QString m_name;

private:
    struct Part {
        SubGrid def;
        ZqGrid* grid = nullptr;
        QLabel* title = nullptr;
        QPushButton* insert = nullptr;
        QPushButton* remove = nullptr;
        int partner = -1;
    };
    void setUpGrid(Part& p);
    void headerDblClick(int part, int col, int row);
    void buildPrintPanel();

    bool m_loaded = false;
    QVector<Part> m_parts;
    QVBoxLayout* m_body;
    QBoxLayout* m_grids;
    QLabel* m_labCode;
    QLabel* m_labName;
    QPushButton* m_cmdOK;
    QPushButton* m_cmdPrint;
    QPushButton* m_cmdBack;
    QFrame* m_printPanel = nullptr;
    QVector<QCheckBox*> m_printChecks;
    QString m_directPrint;
    QStringList m_extraPrint;
};

} // namespace zq
