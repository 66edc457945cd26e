#include "HomePage.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/ui/Fonts.h"

#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QVBoxLayout>

namespace zq {

namespace {
// The groups of lines, in the order a personnel office reads them.
struct Group {
    const char* title;
    QStringList ids;
};

const QVector<Group>& groups() {
    static const QVector<Group> g = {
        {"人员", {"serving", "hires", "leavers"}},
        {"近期提醒", {"contracts", "probation", "anniversaries", "birthdays"}},
        {"编制", {"overQuota"}},
    };
    return g;
}
} // namespace

HomePage::HomePage(QWidget* parent)
    : QWidget(parent)
    , m_heading(new QLabel(this))
    , m_notice(new QLabel(this))
    , m_body(new QWidget(this))
    , m_grid(new QGridLayout(m_body)) {
    setObjectName(QStringLiteral("HomePage"));
    m_heading->setObjectName(QStringLiteral("lblHomeHeading"));
    m_heading->setFont(uiFont(12));
    m_notice->setObjectName(QStringLiteral("lblHomeNotice"));
    m_notice->setWordWrap(true);
    m_grid->setHorizontalSpacing(32);
    m_grid->setVerticalSpacing(6);
    m_grid->setContentsMargins(28, 18, 28, 18);
    m_body->setObjectName(QStringLiteral("homeCard"));
    m_body->setAttribute(Qt::WA_StyledBackground);
    m_body->setMinimumWidth(360);
    m_body->setStyleSheet(QStringLiteral(
        "#homeCard { background: palette(base); border: 1px solid palette(mid); border-radius: 6px; }"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_heading, 0, Qt::AlignHCenter);
    layout->addWidget(m_notice, 0, Qt::AlignHCenter);
    layout->addWidget(m_body, 0, Qt::AlignHCenter);
    layout->addStretch();
}

void HomePage::reload(const QDate& today) {
    const Globals& g = G();
    m_summary = {};
    if (g.UserName.isEmpty() || g.UserPath.isEmpty()) {
        render(QStringLiteral("请先登录。"));
        return;
    }
    const bool wasOpen = conn().isOpen();
    OpenConn(g.SQLData, conn(), g.UserPath, g.Password, g.UserID, g.Default);
    QString notice;
    try {
        if (!conn().isOpen()) throw DbError(QStringLiteral("无法打开数据库: %1").arg(g.UserPath));
        m_summary = ReadHomeSummary(today);
    } catch (const DbError& e) {
        notice = QStringLiteral("无法读取首页数据: %1").arg(e.message());
    }
    if (!wasOpen && conn().isOpen()) conn().close();
    if (notice.isEmpty() && !m_summary.anyone)
        notice = QStringLiteral("您在员工档案中没有所属部门, 首页不列出人员。");
    render(notice);
    m_heading->setText(QStringLiteral("%1 · %2").arg(
        g.CompName, QLocale(QLocale::Chinese).toString(today, QStringLiteral("yyyy年M月d日 dddd"))));
}

void HomePage::render(const QString& notice) {
    m_notice->setText(notice);
    m_notice->setVisible(!notice.isEmpty());
    m_heading->setText(G().CompName);
    while (QLayoutItem* item = m_grid->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    int row = 0;
    for (const Group& group : groups()) {
        bool titled = false;
        for (int i = 0; i < m_summary.lines.size(); ++i) {
            const HomeLine& line = m_summary.lines.at(i);
            if (!group.ids.contains(line.id)) continue;
            if (!titled) {
                auto* title =
                    new QLabel(QStringLiteral("<b>%1</b>").arg(QString::fromUtf8(group.title)), m_body);
                title->setStyleSheet(
                    QStringLiteral("color: #3a5a8c; padding-top: %1px;").arg(row == 0 ? 0 : 8));
                m_grid->addWidget(title, row++, 0, 1, 2);
                titled = true;
            }
            auto* label = new QLabel(line.label, m_body);
            const QString figure =
                QLocale(QLocale::Chinese).toString(line.count) + QLatin1Char(' ') + line.unit;
            // Nothing to open behind a count of none.
            auto* count = new QLabel(
                line.count > 0 ? QStringLiteral("<a href=\"%1\">%2</a>").arg(i).arg(figure) : figure, m_body);
            count->setObjectName(QStringLiteral("home_%1_%2").arg(line.id).arg(line.state));
            count->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            connect(count, &QLabel::linkActivated, this, [this](const QString& link) {
                const int index = link.toInt();
                if (index >= 0 && index < m_summary.lines.size())
                    emit lineActivated(m_summary.lines.at(index));
            });
            m_grid->addWidget(label, row, 0);
            m_grid->addWidget(count, row++, 1);
        }
    }
}

} // namespace zq
