#include "InputAidsUi.h"

#include "resources/Texts.h"
#include "services/InputAids.h"
#include "shell/Prompts.h"

#include <QApplication>
#include <QClipboard>
#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QRegularExpression>
#include <QScreen>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace zq {

Hourglass::Hourglass() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

Hourglass::~Hourglass() {
    QApplication::restoreOverrideCursor();
}

namespace {

// What the numeric test of text boxes accepts: blanks, an optional sign, digits with one point,
// an optional exponent.
bool isNumeric(const QString& text) {
    static const QRegularExpression re(
        QStringLiteral("^\\s*[-+]?(\\d+\\.?\\d*|\\.\\d+)([eEdD][-+]?\\d+)?\\s*$"));
    return re.match(text).hasMatch();
}

QString clipboardText() {
    const QClipboard* cb = QGuiApplication::clipboard();
    return cb ? cb->text() : QString();
}

} // namespace

void FilterKeyInput(QLineEdit* box, int& keyCode, int& max, int& numeric) {
    if (keyCode >= 0 && keyCode < 32 && keyCode != 22) return;
    const int current = ByteLen(box->text()) - box->selectedText().size();
    QString insert;
    if (keyCode == 22) {
        insert = WithoutControlChars(clipboardText(), false); // what the box keeps of it
        if (ByteLen(insert) + current > max) {
            // Read without the language offset: this message stays simplified.
            ShowMsg(textById(144), 64, QString());
            keyCode = 0;
            return;
        }
    } else {
        if (current >= max || (keyCode < 0 && current == max - 1)) {
            keyCode = 0;
            return;
        }
        insert = QString(QChar(char16_t(keyCode < 0 ? -keyCode : keyCode)));
    }
    if (numeric == 0) return;

    const QString text = box->text();
    const int selStart = box->hasSelectedText() ? box->selectionStart() : box->cursorPosition();
    const int selLen = box->hasSelectedText() ? box->selectedText().size() : 0;
    const QString result = text.left(selStart) + insert + text.mid(selStart + selLen);
    if (keyCode != 22) {
        const QChar c = insert.at(0);
        if (c == QLatin1Char('-') &&
            (selStart != 0 || (result.size() > 1 && result[1] == QLatin1Char('-')))) {
            keyCode = 0;
            return;
        }
        const QChar lc = c.toLower();
        if (lc == QLatin1Char('e') || lc == QLatin1Char('d') || c == QLatin1Char(',')) {
            keyCode = 0;
            return;
        }
    }
    if (!isNumeric(result)) keyCode = 0;
}

KeyInputFilter::KeyInputFilter(QLineEdit* box, int max, bool numeric)
    : QObject(box)
    , m_box(box)
    , m_max(max)
    , m_numeric(numeric) {
    box->installEventFilter(this);
}

bool KeyInputFilter::allow(int key) {
    int max = m_max;
    int numeric = m_numeric ? -1 : 0;
    FilterKeyInput(m_box, key, max, numeric);
    return key != 0;
}

bool KeyInputFilter::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_box) return false;
    if (event->type() == QEvent::KeyPress) {
        auto* ke = static_cast<QKeyEvent*>(event);
        if (ke->matches(QKeySequence::Paste)) return !allow(22);
        const QString t = ke->text();
        if (t.isEmpty() || t[0].unicode() < 32 || (ke->modifiers() & Qt::ControlModifier)) return false;
        for (const QChar c : t)
            if (!allow(c.unicode() > 127 ? -int(c.unicode()) : int(c.unicode()))) return true;
        return false;
    }
    if (event->type() == QEvent::InputMethod) {
        auto* ie = static_cast<QInputMethodEvent*>(event);
        const QString commit = ie->commitString();
        if (commit.isEmpty()) return false;
        // Refused control characters go first, as the box would drop them: a NUL would read as a
        // swallowed key below and end the commit there.
        const QString t = WithoutControlChars(commit, false);
        // Checked character by character, as if typed one after the other.
        const QString before = m_box->text();
        const int cursor = m_box->cursorPosition();
        QString accepted;
        for (const QChar c : t) {
            if (!allow(c.unicode() > 127 ? -int(c.unicode()) : int(c.unicode()))) break;
            accepted += c;
            m_box->insert(QString(c));
        }
        if (accepted.size() == commit.size()) {
            m_box->setText(before);
            m_box->setCursorPosition(cursor);
            return false;
        }
        return true; // the accepted part stands inserted; the rest is swallowed
    }
    return false;
}

KeyInputFilter* attachKeyFilter(QLineEdit* box, int max, bool numeric) {
    return new KeyInputFilter(box, max, numeric);
}

namespace {

const char kDropsControls[] = "zqDropsControlChars";

// A user's edit of a line box: the text set again without the refused characters, the cursor where
// it was among the characters that stay, and the box still marked as changed by the user.
void cleanLine(QLineEdit* box) {
    const QString text = box->text();
    const QString clean = WithoutControlChars(text, false);
    if (clean.size() == text.size()) return;
    const int cursor = box->cursorPosition();
    const int keptBefore = int(WithoutControlChars(text.left(cursor), false).size());
    box->setText(clean);
    box->setCursorPosition(keptBefore);
    box->setModified(true);
}

// A text area has no signal for the user's edits alone, so any change is cleaned, in one undo step;
// the removal changes the text again, and that second pass finds nothing.
void cleanArea(QTextDocument* doc) {
    const QString text = doc->toPlainText(); // one character per document position
    QTextCursor cursor(doc);
    bool editing = false;
    for (qsizetype i = text.size() - 1; i >= 0; --i) {
        if (!IsRefusedControl(text[i], true)) continue;
        if (!editing) cursor.beginEditBlock();
        editing = true;
        cursor.setPosition(int(i));
        cursor.setPosition(int(i) + 1, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
    }
    if (editing) cursor.endEditBlock();
}

// Hooks every text box of the application as it is first polished (before it is first shown).
class ControlCharGuard : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Polish && watched->isWidgetType())
            DropControlChars(static_cast<QWidget*>(watched));
        return false;
    }
};

void installControlCharGuard() {
    QCoreApplication* app = QCoreApplication::instance();
    app->installEventFilter(new ControlCharGuard(app));
}

} // namespace

// Runs when the application object is made; every screen links this file, so it is never left out.
Q_COREAPP_STARTUP_FUNCTION(installControlCharGuard)

void DropControlChars(QWidget* box) {
    if (box->property(kDropsControls).toBool()) return;
    if (auto* line = qobject_cast<QLineEdit*>(box))
        QObject::connect(line, &QLineEdit::textEdited, line, [line] { cleanLine(line); });
    else if (auto* edit = qobject_cast<QTextEdit*>(box))
        QObject::connect(edit, &QTextEdit::textChanged, edit, [edit] { cleanArea(edit->document()); });
    else if (auto* plain = qobject_cast<QPlainTextEdit*>(box))
        QObject::connect(plain, &QPlainTextEdit::textChanged, plain,
                         [plain] { cleanArea(plain->document()); });
    else
        return;
    box->setProperty(kDropsControls, true);
}

namespace {
// Swallows Enter, so that the dialog does not press its default button, and sends a tab instead.
class EnterAsTab : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key != Qt::Key_Return && key != Qt::Key_Enter) return false;
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QCoreApplication::sendEvent(watched, &tab);
        return true;
    }
};
} // namespace

void SendTabOnEnter(QLineEdit* box) {
    box->installEventFilter(new EnterAsTab(box));
}

void CenterForm(QWidget* form) {
    const QScreen* s = form->screen() ? form->screen() : QGuiApplication::primaryScreen();
    if (!s) return;
    const QRect r = s->availableGeometry();
    form->move(r.left() + (r.width() - form->width()) / 2, r.top() + (r.height() - form->height()) / 2);
}

void CenterOnForm(QWidget* control, QWidget* form) {
    const QRect inner = form->contentsRect();
    control->move(inner.left() + (inner.width() - control->width()) / 2,
                  inner.top() + (inner.height() - control->height()) / 2);
}

void ExpandAllNodes(QTreeWidget* tree) {
    // One pass of the view: expanding node by node lays a shown tree out again each time.
    tree->expandAll();
}

void ExpandAllBranches(QTreeWidget* tree) {
    // With a layout pending, the view only notes each node opened; the one layout that follows
    // walks the tree once.
    tree->setRootIndex(tree->rootIndex());
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        if ((*it)->childCount() > 0) (*it)->setExpanded(true);
}

} // namespace zq

namespace zq {

QString PickFile(qint16 mode, qint16 number, const QString& fileName, const QString& title,
                 const QString& filter) {
    Q_UNUSED(number) // handed over unchanged by every caller; the dialog here has no setting it maps to
    FileRequest r;
    r.mode = FileRequest::Open;
    r.flags = mode == 1 ? 4100 : 10244;
    r.title = title;
    r.filter = filter;
    r.fileName = fileName;
    const QString path = prompts().file(r);
    if (path.isEmpty()) return {};
    const QFileInfo fi(path);
    if (r.flags & cdlOFNFileMustExist) return fi.isFile() ? path : QString();
    if ((r.flags & cdlOFNPathMustExist) && !fi.absoluteDir().exists()) return {};
    if ((r.flags & cdlOFNCreatePrompt) && !fi.exists()) {
        const QString ask = fi.fileName() + QStringLiteral("\n该文件不存在。要创建该文件吗?");
        if (ShowMsg(ask, vbYesNo + vbExclamation, title) != vbYes) return {};
    }
    return path;
}

void OfferText(QLineEdit* box, const QString& text) {
    if (box->isReadOnly() || !box->text().isEmpty()) return;
    box->setText(text);
    box->selectAll();
    // A click that gave the focus goes on to place the caret; select again once it has.
    QTimer::singleShot(0, box, [box] {
        if (box->hasFocus()) box->selectAll();
    });
}

void OfferToday(QLineEdit* box) {
    OfferText(box, QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")));
}

namespace {
// The box whose refusal is taking the focus back, until it has.
QPointer<QLineEdit>& refusingBox() {
    static QPointer<QLineEdit> box;
    return box;
}
const char* const kToldText = "zqRefusedText";
} // namespace

bool LeavingJudged(const QEvent* focusOut) {
    const Qt::FocusReason r = static_cast<const QFocusEvent*>(focusOut)->reason();
    return r != Qt::ActiveWindowFocusReason && r != Qt::PopupFocusReason && !refusingBox();
}

void RefuseLeaving(QLineEdit* box, const std::function<void()>& tell) {
    const QVariant told = box->property(kToldText);
    if (told.isValid() && told.toString() == box->text()) return;
    box->setProperty(kToldText, box->text());
    refusingBox() = box;
    // Not inside the focus change: a message box or a new focus now would start another one.
    QTimer::singleShot(0, box, [box, tell] {
        refusingBox() = nullptr;
        // The panel closed meanwhile: nothing is left to correct.
        if (!box->isVisible()) return;
        refusingBox() = box;
        if (tell) tell();
        box->setFocus();
        box->selectAll();
        refusingBox() = nullptr;
    });
}

} // namespace zq
