#include "WidgetPrompts.h"

#include "FileIcons.h"
#include "Fonts.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHash>
#include <QInputDialog>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSpacerItem>
#include <QStandardPaths>

namespace zq {

namespace {
// The folder chosen last in a file dialog, for the next one: the user goes on where he was.
QString& lastFolder() {
    static QString folder;
    return folder;
}

QWidget* ownerWindow() {
    if (QWidget* w = QApplication::activeModalWidget()) return w;
    return QApplication::activeWindow();
}

struct ButtonLook {
    const char* caption;
    QMessageBox::ButtonRole role;
};

ButtonLook lookOf(int button) {
    switch (button) {
    case vbCancel:
        return {"取消", QMessageBox::RejectRole};
    case vbAbort:
        return {"中止(&A)", QMessageBox::RejectRole};
    case vbRetry:
        return {"重试(&R)", QMessageBox::AcceptRole};
    case vbIgnore:
        return {"忽略(&I)", QMessageBox::AcceptRole};
    case vbYes:
        return {"是(&Y)", QMessageBox::YesRole};
    case vbNo:
        return {"否(&N)", QMessageBox::NoRole};
    default:
        return {"确定", QMessageBox::AcceptRole};
    }
}

QMessageBox::Icon iconOf(int style) {
    switch (style & 0x70) {
    case vbCritical:
        return QMessageBox::Critical;
    case vbQuestion:
        return QMessageBox::Question;
    case vbExclamation:
        return QMessageBox::Warning;
    case vbInformation:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}
// The box sizes itself by its text; a short text under a long title would leave the title bar
// to cut the title ("借…"). The bar's buttons and the icon take their room beside it.
void makeRoomForTitle(QMessageBox& box) {
    constexpr int kTitleBarExtras = 160;
    const int wanted =
        QFontMetrics(box.font()).horizontalAdvance(box.windowTitle()) * 5 / 4 + kTitleBarExtras;
    if (auto* grid = qobject_cast<QGridLayout*>(box.layout()))
        grid->addItem(new QSpacerItem(wanted, 0, QSizePolicy::Minimum, QSizePolicy::Fixed), grid->rowCount(),
                      0, 1, grid->columnCount());
}

// Escape, or closing the window, must never answer "Yes" to a question.
int escapeButtonOf(const QVector<int>& buttons) {
    for (int b : {int(vbCancel), int(vbNo)})
        if (buttons.contains(b)) return b;
    return buttons.first();
}
} // namespace

int WidgetPrompts::message(const QString& text, int style, const QString& title) {
    QMessageBox box(ownerWindow());
    box.setFont(uiFont());
    box.setWindowTitle(title);
    box.setText(text);
    box.setIcon(iconOf(style));

    const QVector<int> buttons = buttonsOfStyle(style);
    QHash<QAbstractButton*, int> numberOf;
    QVector<QPushButton*> added;
    for (int b : buttons) {
        const ButtonLook look = lookOf(b);
        QPushButton* pb = box.addButton(QString::fromUtf8(look.caption), look.role);
        numberOf.insert(pb, b);
        added << pb;
        if (b == escapeButtonOf(buttons)) box.setEscapeButton(pb);
    }
    box.setDefaultButton(added.value(qMin((style >> 8) & 3, int(added.size()) - 1)));
    makeRoomForTitle(box);
    box.exec();
    // Closing the window without a button counts as its escape button.
    return numberOf.value(box.clickedButton(), escapeButtonOf(buttons));
}

std::optional<QString> WidgetPrompts::input(const QString& prompt, const QString& title,
                                            const QString& defaultText) {
    QInputDialog dlg(ownerWindow());
    dlg.setFont(uiFont());
    dlg.setWindowTitle(title);
    dlg.setLabelText(prompt);
    dlg.setTextValue(defaultText);
    dlg.setOkButtonText(QStringLiteral("确定"));
    dlg.setCancelButtonText(QStringLiteral("取消"));
    if (dlg.exec() != QDialog::Accepted) return std::nullopt;
    return dlg.textValue();
}

std::unique_ptr<QFileDialog> MakeFileDialog(const FileRequest& request, QWidget* parent) {
    auto dlg = std::make_unique<QFileDialog>(parent, request.title);
    dlg->setFont(uiFont());
    dlg->setOption(QFileDialog::DontUseNativeDialog);
    dlg->setIconProvider(&FileIcons());
    const bool save = request.mode == FileRequest::Save;
    dlg->setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dlg->setFileMode(!save && (request.flags & cdlOFNFileMustExist) ? QFileDialog::ExistingFile
                                                                    : QFileDialog::AnyFile);
    dlg->setOption(QFileDialog::DontConfirmOverwrite, !(request.flags & cdlOFNOverwritePrompt));
    const QStringList filters = fileFilters(request.filter);
    if (!filters.isEmpty()) {
        dlg->setNameFilters(filters);
        if (request.filterIndex >= 1 && request.filterIndex <= filters.size())
            dlg->selectNameFilter(filters[request.filterIndex - 1]);
    }
    // A bare name would be taken as relative to the working folder, which is wherever the program
    // was started from: only a name with a folder of its own says where to look.
    const QFileInfo fi(request.fileName);
    const bool ownFolder = !request.fileName.isEmpty() && request.fileName.contains(QLatin1Char('/')) &&
                           fi.absoluteDir().exists();
    dlg->setDirectory(ownFolder ? fi.absolutePath() : StartFolder());
    if (!request.fileName.isEmpty() && !fi.fileName().isEmpty()) dlg->selectFile(fi.fileName());
    QFileDialog* d = dlg.get();
    QObject::connect(d, &QFileDialog::accepted, d, [d] {
        const QString chosen = d->selectedFiles().value(0);
        lastFolder() = chosen.isEmpty() ? d->directory().absolutePath() : QFileInfo(chosen).absolutePath();
    });
    return dlg;
}

QString StartFolder() {
    if (!lastFolder().isEmpty() && QDir(lastFolder()).exists()) return lastFolder();
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (!documents.isEmpty() && QDir(documents).exists()) return documents;
    return QDir::homePath();
}

void ForgetLastFolder() {
    lastFolder().clear();
}

QString WidgetPrompts::file(const FileRequest& request) {
    const auto dlg = MakeFileDialog(request, ownerWindow());
    if (dlg->exec() != QDialog::Accepted) return QString();
    return dlg->selectedFiles().value(0);
}

bool WidgetPrompts::choosePrinter(QString& printerName) {
    QPrinter printer;
    if (!printerName.isEmpty()) printer.setPrinterName(printerName);
    QPrintDialog dlg(&printer, ownerWindow());
    dlg.setFont(uiFont());
    if (dlg.exec() != QDialog::Accepted) return false;
    printerName = printer.printerName();
    return true;
}

} // namespace zq
