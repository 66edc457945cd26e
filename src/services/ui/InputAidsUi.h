#pragma once

#include <functional>
#include <QObject>
#include <QString>

class QEvent;
class QLineEdit;
class QTreeWidget;
class QWidget;

namespace zq {

// The wait cursor for as long as it lives.
struct Hourglass {
    Hourglass();
    ~Hourglass();
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;
};

// The key filter of text boxes. keyCode is the typed character's code (negative for a double-byte
// character, 22 for paste); it becomes 0 when the key is swallowed.
void FilterKeyInput(QLineEdit* box, int& keyCode, int& max, int& numeric);

// Installs FilterKeyInput on a text box for typing, input-method commits and paste.
class KeyInputFilter : public QObject {
public:
    KeyInputFilter(QLineEdit* box, int max, bool numeric);
    void setMax(int max) { m_max = max; }
    void setNumeric(bool numeric) { m_numeric = numeric; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool allow(int key);
    QLineEdit* m_box;
    int m_max;
    bool m_numeric;
};

KeyInputFilter* attachKeyFilter(QLineEdit* box, int max, bool numeric = false);

// Makes a line box (QLineEdit) or text area (QTextEdit, QPlainTextEdit) drop what IsRefusedControl
// refuses from whatever is typed, committed by an input method, pasted or dropped into it; a text
// area also from text set by the program. Every text box of the application gets this by itself
// when it is first polished, so screens need not call it; other widgets are left alone.
void DropControlChars(QWidget* box);

// The file dialog through the prompt service: mode 1 opens an existing file, any other mode saves
// (asking before a new file is made). The empty text on cancel.
QString PickFile(qint16 mode, qint16 number, const QString& fileName, const QString& title,
                 const QString& filter);

void CenterForm(QWidget* form);
// Enter in the box moves on to the next field, as a tab key stroke would, instead of pressing the
// dialog's default button.
void SendTabOnEnter(QLineEdit* box);
// An empty box that takes the focus offers `text`, selected, so that what the clerk types replaces
// it rather than being added to it or cut off by the full box.
void OfferText(QLineEdit* box, const QString& text);
// An empty date field offers today as yyyy-mm-dd in that way. Every date text box goes through this.
void OfferToday(QLineEdit* box);

// A box that refuses to be left with what it holds (a quote, no number, no date). Only a move of
// the clerk's is judged (LeavingJudged on the focus-out event): not another window or a list that
// takes the focus for a while, and not the move of a box that refused and takes the focus back.
// RefuseLeaving tells the clerk once for a text and takes the focus back, selected, when the move
// under way has finished; left again with the same text the box lets the clerk go. So two boxes
// that refuse never hand the focus to each other for ever, and the clerk corrects them in any
// order; the save checks them again.
bool LeavingJudged(const QEvent* focusOut);
void RefuseLeaving(QLineEdit* box, const std::function<void()>& tell);
void CenterOnForm(QWidget* control, QWidget* form);
void ExpandAllNodes(QTreeWidget* tree);
// Shows a tree as ExpandAllNodes does, marking open only the nodes with children: with tens of
// thousands of leaves this saves a stored index and a signal per leaf. A child added to a leaf later
// stays folded, so it suits trees that are filled again after every change.
void ExpandAllBranches(QTreeWidget* tree);

} // namespace zq
