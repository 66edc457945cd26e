#include "ArchiveFind.h"

#include "ArchiveData.h"
#include "services/ui/InputAidsUi.h"
#include "shell/DbError.h"
#include "shell/Prompts.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>

namespace zq {

ArchiveFind::ArchiveFind(QWidget* parent, std::function<QString()> classCode,
                         std::function<void(const QString&)> chosen)
    : QWidget(parent)
    , m_classCode(std::move(classCode))
    , m_chosen(std::move(chosen)) {
    setObjectName(QStringLiteral("fraFind"));
    m_txtFind = new QLineEdit(this);
    m_txtFind->setObjectName(QStringLiteral("txtFind"));
    m_txtFind->setPlaceholderText(QStringLiteral("查找文档: 名称或内容中的字词"));
    m_txtFind->setClearButtonEnabled(true);
    m_lblFound = new QLabel(this);
    m_lblFound->setObjectName(QStringLiteral("lblFound"));
    m_lstFound = new QListWidget(this);
    m_lstFound->setObjectName(QStringLiteral("lstFound"));
    m_lstFound->setWordWrap(true);
    m_lblFound->hide();
    m_lstFound->hide();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_txtFind);
    layout->addWidget(m_lblFound);
    layout->addWidget(m_lstFound, 1);
    connect(m_txtFind, &QLineEdit::returnPressed, this, &ArchiveFind::find);
    connect(m_txtFind, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (!text.trimmed().isEmpty()) return;
        // An emptied box gives the tree its room back.
        m_lblFound->hide();
        m_lstFound->hide();
    });
    connect(m_lstFound, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { m_chosen(item->data(Qt::UserRole).toString()); });
}

void ArchiveFind::find() {
    const QString words = m_txtFind->text().trimmed();
    if (words.isEmpty()) return;
    QVector<SearchHit> hits;
    try {
        Hourglass wait;
        hits = FindInArchive(words, m_classCode ? m_classCode() : QString());
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, window()->windowTitle());
        return;
    }
    m_lstFound->clear();
    for (const SearchHit& h : hits) {
        auto* item =
            new QListWidgetItem(h.name + QLatin1Char('\n') + QStringLiteral("    ") + h.line, m_lstFound);
        item->setData(Qt::UserRole, h.code);
        item->setToolTip(h.code);
    }
    m_lblFound->setText(hits.isEmpty() ? QStringLiteral("没有找到含有“%1”的文档").arg(words)
                                       : QStringLiteral("找到 %1 个文档").arg(hits.size()));
    m_lblFound->show();
    m_lstFound->setVisible(!hits.isEmpty());
}

} // namespace zq
