#include "frmRs_PersonDetailSeek.h"

#include "PersonRecordsData.h"
#include "services/ui/InputAidsUi.h"
#include "shell/DbError.h"
#include "shell/Prompts.h"

#include <QCheckBox>
#include <QFocusEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

frmRs_PersonDetailSeek::frmRs_PersonDetailSeek(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmRs_PersonDetailSeek"));
    setWindowTitle(QStringLiteral("[其它资料]查询"));
    auto* fields = new QGridLayout;
    for (int i = 0; i < 4; ++i) {
        m_check[i] = new QCheckBox(QStringLiteral("其它资料%1").arg(i + 1), this);
        m_check[i]->setObjectName(QStringLiteral("Check1(%1)").arg(i));
        m_text[i] = new QLineEdit(this);
        m_text[i]->setObjectName(QStringLiteral("Text1(%1)").arg(i));
        m_text[i]->setMinimumWidth(240);
        m_text[i]->installEventFilter(this);
        SendTabOnEnter(m_text[i]);
        fields->addWidget(m_check[i], i, 0);
        fields->addWidget(m_text[i], i, 1);
        // Ticking a field goes on to its text.
        QLineEdit* text = m_text[i];
        connect(m_check[i], &QCheckBox::toggled, text, [text](bool on) {
            if (on) text->setFocus();
        });
    }
    auto* ok = new QPushButton(QStringLiteral("确定"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    auto* cancel = new QPushButton(QStringLiteral("取消>>"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    ok->setAutoDefault(false);
    cancel->setAutoDefault(false);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, &frmRs_PersonDetailSeek::cmdOK_Click);
    connect(cancel, &QPushButton::clicked, this, &frmRs_PersonDetailSeek::cmdCancel_Click);
}

void frmRs_PersonDetailSeek::showEvent(QShowEvent* event) {
    if (!m_loaded) {
        m_loaded = true;
        CenterForm(this);
        try {
            // Fields the dictionary does not name keep their design captions and still search.
            const QStringList captions = DetailCaptions();
            for (int i = 0; i < captions.size(); ++i)
                m_check[i]->setText(captions.at(i));
        } catch (const DbError& e) {
            ShowMsg(e.message(), vbExclamation, windowTitle());
        }
    }
    QDialog::showEvent(event);
}

bool frmRs_PersonDetailSeek::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut && LeavingJudged(event))
        for (QLineEdit* t : m_text)
            if (watched == t && t->text().contains(QLatin1Char('\''))) {
                RefuseLeaving(t, [] {
                    ShowMsg(QStringLiteral("查询条件中，不能包含：引号、单引号...等特殊符号！"), vbExclamation);
                });
                break;
            }
    return QDialog::eventFilter(watched, event);
}

void frmRs_PersonDetailSeek::cmdOK_Click() {
    QVector<bool> ticked;
    QStringList texts;
    for (int i = 0; i < 4; ++i) {
        ticked << m_check[i]->isChecked();
        texts << m_text[i]->text();
    }
    try {
        m_filter = DetailSeekFilter(ticked, texts);
    } catch (const DbError&) {
        // A quote in a ticked text: the search cannot be built.
        ShowMsg(QStringLiteral("查询条件中，不能包含：引号、单引号...等特殊符号！"), vbExclamation);
        return;
    }
    accept();
}

void frmRs_PersonDetailSeek::cmdCancel_Click() {
    m_filter.clear();
    reject();
}

} // namespace zq
