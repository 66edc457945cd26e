#include "HistoryScreen.h"

#include "printing/Print.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "services/ui/NamedWidgets.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

namespace {
QDateEdit* dateBox(QWidget* owner, const char* name, const QDate& date) {
    auto* d = named(new QDateEdit(date, owner), QLatin1String(name));
    d->setCalendarPopup(true);
    d->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    return d;
}
} // namespace

HistoryScreen::HistoryScreen(const QString& caption, const QVector<SheetColumn>& columns, QWidget* parent)
    : ScreenDialog(parent)
    , m_caption(caption)
    , m_filters(new QHBoxLayout)
    , m_buttons(new QHBoxLayout)
    , m_chkDate(named(new QCheckBox(QStringLiteral("日期从"), this), QStringLiteral("chkDate")))
    , m_from(dateBox(this, "dtpFrom", QDate::currentDate().addMonths(-1)))
    , m_to(dateBox(this, "dtpTo", QDate::currentDate()))
    , m_grid(named(new ZqGrid(this), QStringLiteral("Grid1")))
    , m_count(named(new QLabel(this), QStringLiteral("lblCount"))) {
    setWindowTitle(caption);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    resize(1100, 620);

    m_filters->addWidget(m_chkDate);
    m_filters->addWidget(m_from);
    m_filters->addWidget(new QLabel(QStringLiteral("到"), this));
    m_filters->addWidget(m_to);
    auto* seekButton = NamedButton(this, QStringLiteral("cmdSeek"), QStringLiteral("查询(&S)"));
    auto* printButton = NamedButton(this, QStringLiteral("cmdPrint"), QStringLiteral("打印(&P)"));
    auto* exportButton = NamedButton(this, QStringLiteral("cmdExport"), QStringLiteral("导出Excel"));
    auto* quit = NamedButton(this, QStringLiteral("cmdQuit"), QStringLiteral("退出>>"));

    m_grid->setMaxCols(int(columns.size()));
    for (int c = 1; c <= columns.size(); ++c) {
        m_grid->setHeaderText(c, columns[c - 1].caption);
        m_grid->setColWidth(c, columns[c - 1].width);
    }
    m_grid->setColWidth(0, 5);
    m_grid->setReadOnly(true);
    m_grid->setRowSelection(true);
    EnableGridExport(m_grid, caption);

    m_buttons->addWidget(m_count, 1);
    m_buttons->addWidget(printButton);
    m_buttons->addWidget(exportButton);
    m_buttons->addWidget(quit);

    auto* top = new QHBoxLayout;
    top->addLayout(m_filters, 1);
    top->addWidget(seekButton);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_grid, 1);
    layout->addLayout(m_buttons);

    const auto period = [this] {
        m_from->setEnabled(m_chkDate->isChecked());
        m_to->setEnabled(m_chkDate->isChecked());
    };
    period();
    connect(m_chkDate, &QCheckBox::toggled, this, period);
    connect(seekButton, &QPushButton::clicked, this, [this] { guarded([this] { seek(); }); });
    connect(printButton, &QPushButton::clicked, this, [this] { guarded([this] { print(); }); });
    connect(exportButton, &QPushButton::clicked, this, [this] { ExportGrid(m_grid, m_caption); });
    connect(quit, &QPushButton::clicked, this, &QDialog::reject);
}

QDate HistoryScreen::fromDay() const {
    return m_chkDate->isChecked() ? m_from->date() : QDate();
}

QDate HistoryScreen::toDay() const {
    return m_chkDate->isChecked() ? m_to->date() : QDate();
}

void HistoryScreen::setCount(const QString& text) {
    m_count->setText(text);
}

void HistoryScreen::seek() {
    m_grid->setRedraw(false);
    fill();
    m_grid->setRedraw(true);
}

void HistoryScreen::print() {
    PrintGrid(printItems(), m_grid, m_caption);
}

} // namespace zq
