#pragma once

#include <QObject>
#include <QString>

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
// An empty date field that takes the focus offers today as yyyy-mm-dd, selected, so that what the
// clerk types replaces it rather than being cut off by the full box. Every date text box goes
// through this.
void OfferToday(QLineEdit* box);
void CenterOnForm(QWidget* control, QWidget* form);
void ExpandAllNodes(QTreeWidget* tree);

} // namespace zq
