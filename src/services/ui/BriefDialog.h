#pragma once

#include <functional>
#include <QDialog>
#include <QString>

class QBoxLayout;
class QPushButton;

namespace zq {

// The dialogs behind ShowBriefDialog, one per mode. Each gives its answer once accepted.
class BriefDialog : public QDialog {
public:
    BriefDialog(int mode, const QString& title, QWidget* parent = nullptr);
    int mode() const { return m_mode; }
    // What ShowBriefDialog gives back after the dialog was accepted.
    virtual QString answer() const = 0;

protected:
    // A button named for tests, added to a row of buttons; Enter never presses it by default.
    QPushButton* addButton(QBoxLayout* row, const char* name, const QString& caption);
    // "确定" (cmdOK, accept) and "取消" (cmdCancel, reject) closing a row of buttons.
    QPushButton* addOkCancel(QBoxLayout* row);

private:
    int m_mode;
};

// The brief lists and the choices built on the dictionary, by mode:
//  1  pick a brief list (the code "99999999" lists all lists): its code;
//  2  pick an entry of the list `code`, which the dialog also maintains: the entry's name
//     (nothing is shown for an empty code);
//  3  compose a condition on the fields of `table`: the condition for that table alone, with
//     `code`, when given, as a leading term;
//  5  choose the grid columns of `table` (FieldSelected, FieldID, FieldGridWidth): non-empty when
//     something changed.
// Other modes do nothing. Cancel gives the empty text.
QString ShowBriefDialog(const QString& table, const QString& code, qint32 mode);

// The brief list of a field of tRsBasic, offered through mode 2. The field name is overwritten
// with the answer, which is also the result; empty when the field has no list.
QString AskBriefValue(QString& fieldName);

// How ShowBriefDialog runs its dialog. By default it is modal; a driver (tests, scripted runs)
// receives the dialog instead, sets its controls and accepts or rejects it, and must not block.
// Without a driver and without a screen to show it on (offscreen), the dialog is cancelled at once.
using BriefDriver = std::function<void(BriefDialog&)>;
void setBriefDriver(BriefDriver driver);

} // namespace zq
