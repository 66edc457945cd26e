#include "BriefDialog.h"

#include "BriefListDialog.h"
#include "ColumnDialog.h"
#include "ConditionDialog.h"

#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"
#include "shell/ui/Fonts.h"

#include <memory>
#include <QApplication>
#include <QBoxLayout>
#include <QPushButton>

namespace zq {

namespace {
BriefDriver& driver() {
    static BriefDriver d;
    return d;
}

bool canShowWindows() {
    return qobject_cast<QApplication*>(QCoreApplication::instance()) &&
           QGuiApplication::platformName() != QLatin1String("offscreen");
}
} // namespace

BriefDialog::BriefDialog(int mode, const QString& title, QWidget* parent)
    : QDialog(parent)
    , m_mode(mode) {
    setWindowTitle(title);
    setFont(uiFont());
}

QPushButton* BriefDialog::addButton(QBoxLayout* row, const char* name, const QString& caption) {
    auto* b = new QPushButton(caption, this);
    b->setObjectName(QLatin1String(name));
    b->setAutoDefault(false);
    row->addWidget(b);
    return b;
}

QPushButton* BriefDialog::addOkCancel(QBoxLayout* row) {
    row->addStretch();
    QPushButton* ok = addButton(row, "cmdOK", QStringLiteral("确定"));
    QPushButton* cancel = addButton(row, "cmdCancel", QStringLiteral("取消"));
    connect(ok, &QPushButton::clicked, this, &BriefDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &BriefDialog::reject);
    return ok;
}

void setBriefDriver(BriefDriver d) {
    driver() = std::move(d);
}

QString ShowBriefDialog(const QString& table, const QString& code, qint32 mode) {
    // The lists live in the company's database: the one the control's settings name.
    OpenControlConn();

    std::unique_ptr<BriefDialog> dlg;
    switch (mode) {
    case 1:
        dlg = std::make_unique<BriefListDialog>(1, code, QApplication::activeWindow());
        break;
    case 2:
        if (code.isEmpty()) return {};
        dlg = std::make_unique<BriefListDialog>(2, code, QApplication::activeWindow());
        break;
    case 3:
        dlg = std::make_unique<ConditionDialog>(table, code, QApplication::activeWindow());
        break;
    case 5:
        dlg = std::make_unique<ColumnDialog>(table, QApplication::activeWindow());
        break;
    default:
        return {};
    }
    if (driver())
        driver()(*dlg);
    else if (canShowWindows())
        dlg->exec();
    return dlg->result() == QDialog::Accepted ? dlg->answer() : QString();
}

QString AskBriefValue(QString& fieldName) {
    Recordset rs(conn(),
                 QStringLiteral("select * from  RptListDetail where ftable='tRsBasic' and FieldName=") +
                     quoted(fieldName));
    if (rs.eof()) return {};
    const QString type = rs.text(QStringLiteral("fieldbrieftype"));
    if (type.isEmpty()) return {};
    fieldName = ShowBriefDialog(QString(), type, 2);
    return fieldName;
}

} // namespace zq
