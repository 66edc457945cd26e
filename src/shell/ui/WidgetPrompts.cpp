#include "WidgetPrompts.h"

#include "FileIcons.h"
#include "Fonts.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QHash>
#include <QInputDialog>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>

namespace zq {

namespace {
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
    if (!request.fileName.isEmpty()) {
        const QFileInfo fi(request.fileName);
        if (fi.absoluteDir().exists()) dlg->setDirectory(fi.absolutePath());
        dlg->selectFile(fi.fileName());
    }
    return dlg;
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
